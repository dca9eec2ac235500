#pragma once

#include <QObject>
#include <QString>

class QComboBox;
class QLabel;
class QWidget;

/// The line above the tabs: whether the device is connected and where, and the list of serial ports.
class PortChooser : public QObject
{
    Q_OBJECT

public:
    /// Finds its widgets below @p dialog, which owns it.
    explicit PortChooser(QWidget& dialog);

    void showConnected(const QString& portName);
    void showDisconnected(const QString& portName);
    /// Lists the ports that there are now, and selects @p portName where it is among them. While the user has
    /// the list open it is left alone until it closes: another port under the mouse would be the one taken.
    void listPorts(const QString& portName);
    QString portAt(int index) const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showState(const QString& text, const QString& styleSheet);
    void rebuild();

    QLabel* m_state;
    QComboBox* m_ports;
    QString m_portToSelect;
    bool m_rebuildLater = false;
};
