#pragma once

#include "settings/RestingButtons.h"

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
/// image; reset and switch, which would leave it without a valid record, not while one is being written
/// either.
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

    void setRecordWriting(bool writing) { m_recordWriting = writing; }
    bool isRecordWriting() const { return m_recordWriting; }

private:
    bool mayCommand() const;
    void setSwitching(bool switching);
    void showText(const QString& text);
    QString runningText() const;

    QPointer<Device> m_device;
    QPointer<Update> m_update;
    RestingButtons m_buttons;
    QList<QLabel*> m_lines;
    bool m_switching = false;
    bool m_recordWriting = false;
};
