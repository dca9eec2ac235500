#include "settings/PortChooser.h"

#include "device/SerialPorts.h"
#include "forms/FormWidgets.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QEvent>
#include <QLabel>
#include <QSignalBlocker>

PortChooser::PortChooser(QWidget& dialog)
    : QObject(&dialog), m_state(formWidget<QLabel>(dialog, "labelComStatus")),
      m_ports(formWidget<QComboBox>(dialog, "comboBoxComPort"))
{
    m_ports->view()->installEventFilter(this);
}

void PortChooser::showConnected(const QString& portName)
{
    showState(tr("Device connected on %1").arg(portName), QStringLiteral("color:green"));
    listPorts(portName);
}

void PortChooser::showDisconnected(const QString& portName)
{
    showState(tr("Device disconnected on %1").arg(portName), QStringLiteral("color:red"));
}

void PortChooser::showState(const QString& text, const QString& styleSheet)
{
    m_state->setText(text);
    m_state->setStyleSheet(styleSheet);
}

void PortChooser::listPorts(const QString& portName)
{
    m_portToSelect = portName;
    if (m_ports->view()->isVisible()) {
        m_rebuildLater = true;
    } else {
        rebuild();
    }
}

void PortChooser::rebuild()
{
    m_rebuildLater = false;
    const QSignalBlocker blocker(m_ports);
    m_ports->clear();
    const QList<SerialPortEntry> ports = SerialPorts::available();
    for (const SerialPortEntry& port : ports) {
        m_ports->addItem(port.name);
    }
    m_ports->setCurrentIndex(m_ports->findText(m_portToSelect, Qt::MatchExactly | Qt::MatchCaseSensitive));
}

QString PortChooser::portAt(int index) const
{
    return m_ports->itemText(index);
}

bool PortChooser::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Hide && m_rebuildLater) {
        // Later: the choice that closed the list is told by its place in it.
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (m_rebuildLater) {
                    listPorts(m_portToSelect);
                }
            },
            Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}
