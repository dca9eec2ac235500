#include "mainwindow/OpenFailureNotice.h"

#include "update/Update.h"

#include <QStatusBar>

OpenFailureNotice::OpenFailureNotice(QStatusBar* bar, const Update* update, QObject* parent)
    : QObject(parent), m_bar(bar), m_update(update)
{
    m_returnTimer.setSingleShot(true);
    m_returnTimer.setInterval(othersStay);
    connect(&m_returnTimer, &QTimer::timeout, this, &OpenFailureNotice::show);
    connect(bar, &QStatusBar::messageChanged, this, &OpenFailureNotice::onMessageChanged);
    connect(update, &Update::finished, this, &OpenFailureNotice::show);
}

QString OpenFailureNotice::text(const QString& portName, OpenFailure cause)
{
    switch (cause) {
    case OpenFailure::Denied:
#ifdef Q_OS_LINUX
        return tr("No permission for port %1: join the group dialout, then log in again.").arg(portName);
#else
        return tr("No permission for port %1: ask the administrator for it.").arg(portName);
#endif
    case OpenFailure::Busy:
        // Often this is a system service that has a look at every new port and lets go of it by itself.
        return tr("Port %1 is in use: close the program that uses it. Trying again...").arg(portName);
    case OpenFailure::Gone:
        return tr("No device behind port %1: unplug it, then plug it in again.").arg(portName);
    case OpenFailure::Other:
        return tr("Port %1 cannot be opened: unplug the device, then plug it in again.").arg(portName);
    case OpenFailure::None:
        break;
    }
    return {};
}

void OpenFailureNotice::tell(const QString& portName, OpenFailure cause)
{
    m_text = text(portName, cause);
    if (isStanding()) {
        show();
    } else {
        m_returnTimer.stop();
    }
}

void OpenFailureNotice::show()
{
    if (isStanding() && !m_update->isInProgress()) {
        m_bar->showMessage(m_text);
    }
}

void OpenFailureNotice::onMessageChanged(const QString& message)
{
    if (isStanding() && message != m_text) {
        m_returnTimer.start();
    } else {
        m_returnTimer.stop();
    }
}
