#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class Device;
class QSettings;
class QWidget;
class SystemInfoPage;
class Update;

/// What the button "Save Diagnostics" does: it asks for a file and writes into it what helps to find the
/// cause of a problem. It works at either level, with and without a device, and leaves the line alone; while
/// an update runs it is refused, as the run would have to wait for the user to close the file dialog.
class DiagnosticsSaver : public QObject
{
    Q_OBJECT

public:
    /// Finds its button below @p dialog, which owns it. @p page outlives every click; @p device and @p update
    /// may be null and may go.
    DiagnosticsSaver(QWidget& dialog, const SystemInfoPage& page, Device* device, Update* update,
                     QSettings* store, QString programVersion);

signals:
    /// The settings are about to be copied: whoever keeps some outside the store puts them there now.
    void settingsWanted();

private:
    void save();
    QString askForPath();

    QWidget& m_dialog;
    const SystemInfoPage& m_page;
    QPointer<Device> m_device;
    QPointer<Update> m_update;
    QSettings* m_store;
    QString m_programVersion;
};
