#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

class Device;
class QLabel;
class QWidget;
class Update;

/// The service commands, and the lines that tell which image the device runs; both stand on two tabs. A
/// command does nothing without a connection, while an update runs and while the device restarts into another
/// image.
class ServicePage : public QObject
{
    Q_OBJECT

public:
    /// Finds its widgets below @p dialog, which owns it; the link and the update are borrowed.
    ServicePage(QWidget& dialog, Device* device, Update* update);

    void resetDevice();
    void restoreDefaults();
    /// Into the loader, or from there back into the application. Waits for the device, up to 45 s, and even
    /// the dialog may go meanwhile.
    void switchImage();
    /// Tells what runs now, unless a switch has not come to its end.
    void showRunning();
    /// A switch has not come to its end.
    bool isSwitching() const { return m_switching; }

private:
    bool mayCommand() const;
    void setSwitching(bool switching);
    void parkFocus();
    void returnFocus();
    void showText(const QString& text);
    QString runningText() const;

    QWidget& m_dialog;
    QWidget* m_tabs;
    QPointer<Device> m_device;
    QPointer<Update> m_update;
    QList<QWidget*> m_buttons;
    QList<QLabel*> m_lines;
    QPointer<QWidget> m_focusBefore;
    bool m_switching = false;
};
