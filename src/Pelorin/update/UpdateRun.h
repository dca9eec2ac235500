#pragma once

#include "device/DeviceTypes.h"
#include "device/FirmwareVersion.h"

#include <QFile>
#include <QPointer>
#include <QString>

class Device;
class QMessageBox;
class QWidget;
class Update;

/// One run of the firmware update, step by step. A step that fails has told the user why, and ends the run;
/// the device stays in the image that it runs then, and another run goes on from there.
class UpdateRun
{
public:
    /// Of the update's device. The update may go while a box is open, and takes the boxes along.
    explicit UpdateRun(Update& update);
    ~UpdateRun();
    UpdateRun(const UpdateRun&) = delete;
    UpdateRun& operator=(const UpdateRun&) = delete;

    void run();

private:
    /// An image of the release as the check found it.
    struct Image
    {
        QFile file;
        int lineCount = 0;
        FirmwareVersion version;
    };
    using Switch = int (Device::*)();

    // What needs no device; these tell whether the run goes on.
    bool isConnected();
    bool unpackRelease();
    bool findImages();
    bool checkLoader();
    bool checkApplication();
    bool checkImage(Image& image, const char* cannotOpen, const char* isInvalid);

    // What changes the device; these return an UpdateResult code.
    void updateDevice();
    int enterLoader();
    int updateLoader();
    int startLoaderUpdater();
    int returnToLoader();
    int programLoader();
    int switchTo(DeviceMode wanted, Switch command, const char* noTransition, const char* wrongImage);
    bool restartInto(Switch command);
    int program(Image& image, const char* title);

    void startApplication();
    void awaitLaserController();
    void showStatus(const QString& text);

    int failed(const char* text);
    void tellResult(int result);
    void warn(const QString& text);
    DeviceMode mode() const;

    QPointer<Update> m_update;
    QPointer<Device> m_device;
    QPointer<QWidget> m_window;
    QString m_archivePath;
    Image m_loader;
    Image m_updater;
    Image m_application;
    QPointer<QMessageBox> m_status;
};
