#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>

class ArchiveExtractor;
class Device;
class QFile;
class QSettings;
class QWidget;
struct FirmwareVersion;

/// The firmware update of the connected device. While a run is in progress everybody else stays off the line.
/// The settings store is borrowed and outlives the object; the window is its parent and that of all its
/// boxes.
class Update : public QObject
{
    Q_OBJECT

public:
    /// Marks the update as in progress for as long as it lives, whichever way the run ends. Only the
    /// outermost of several tells of the end.
    class InProgress
    {
    public:
        explicit InProgress(Update& update);
        ~InProgress();
        InProgress(const InProgress&) = delete;
        InProgress& operator=(const InProgress&) = delete;

    private:
        QPointer<Update> m_update;
    };

    Update(QWidget* topLevelWindow, QSettings* store);

    bool isInProgress() const { return m_inProgress; }
    /// What the user is told while a run is in progress.
    static QString inProgressText();
    /// For whoever is about to use the line: true, and actionRefused() is emitted, while a run has it.
    bool refusesAction();

    /// The whole run, from the choice of a release to the running application. Comes back when the user has
    /// closed the last box; @p device, which may be null, must outlive that.
    void firmwareUpdate(Device* device);

    // --- Steps of a run, each with boxes and log lines of its own ------------------------------------------
    /// Unpacks a release into its folder; see ArchiveStep::run().
    bool extractArchive(const QString& archivePath);
    /// Checks an open image; see checkFirmwareFile() in FirmwareImage.h.
    static int checkFirmwareFile(QFile& file, FirmwareVersion& version);
    /// Programs an open image into the device of the run; an UpdateResult code, LineNotSent without a device.
    int programFlash(QFile& file, int lineCount, const QString& title);
    /// Asks for a copy of the calibration under a name that tells the time and the application's version.
    void saveCalibrationBackup();

signals:
    void started(); ///< a run has the line for itself from here on
    /// Somebody wanted to use the line that a run has for itself; nothing was sent.
    void actionRefused();
    /// Asks for a copy of the device's calibration in the file @p pathName.
    void saveSettingsInfo(const QString& pathName);
    /// A run is over, and the line is free again. @p touched tells that the device was restarted or
    /// identified anew meanwhile, which nobody else did anything about.
    void finished(bool touched);

private:
    friend class UpdateRun;

    QWidget* window() const;

    QSettings* m_store;
    QPointer<Device> m_device;                     ///< of the run
    std::shared_ptr<ArchiveExtractor> m_extractor; ///< which goes on when the update goes
    bool m_inProgress = false;
    bool m_touched = false; ///< the device, by this run
};
