#include "update/UpdateRun.h"

#include "QsLog2_1_0/QsLog.h"
#include "boxes/ChooseFile.h"
#include "boxes/TellUser.h"
#include "compat/QtVersion.h"
#include "device/Device.h"
#include "update/FirmwareImage.h"
#include "update/Update.h"
#include "update/UpdateResult.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSettings>
#include <QStringBuilder>
#include <QTimer>
#include <QWidget>

#include <chrono>

namespace {
constexpr char browsePathKey[] = "Browse Path";
/// A laser controller that takes longer goes on by itself.
constexpr std::chrono::milliseconds laserControllerLimit{30000};
/// How late the end of that is noticed at most; the device itself tells nothing.
constexpr std::chrono::milliseconds lookEvery{50};

constexpr char loaderIsDamaged[] = "Loader failed CRC check. Send back to factory for reprogramming.";
constexpr char noTransitionToLoader[] = "Error transitioning to loader.";
constexpr char noJumpToLoader[] = "Error - Unable to jump to loader.";
} // namespace

UpdateRun::UpdateRun(Update& update) : m_update(&update), m_device(update.m_device), m_window(update.window())
{
}

UpdateRun::~UpdateRun()
{
    delete m_status;
}

void UpdateRun::run()
{
    if (isConnected() && unpackRelease() && findImages() && checkLoader() && checkApplication()) {
        updateDevice();
        QS_INFO() << "End programming FLASH";
    }
}

bool UpdateRun::isConnected()
{
    if (m_device && m_device->isOpen()) {
        return true;
    }
    warn(QStringLiteral("Please connect to device"));
    return false;
}

bool UpdateRun::unpackRelease()
{
    const QString lastPath =
        QtVersion::storedText(m_update->m_store->value(QLatin1String(browsePathKey), QDir::homePath()));
    m_archivePath = chooseFile(m_window, QFileDialog::AcceptOpen,
                               QStringLiteral("Please select a firmware file archive."), lastPath,
                               QStringLiteral("7zip files (*.7z)"));
    // An empty path goes the same way: the step tells that there is no such file.
    if (m_update && m_update->extractArchive(m_archivePath)) {
        return m_update != nullptr;
    }
    warn(m_archivePath.isEmpty() ? QStringLiteral("Invalid archive file.")
                                 : QStringLiteral("Archive file not found."));
    return false;
}

bool UpdateRun::findImages()
{
    struct Place
    {
        Image& image;
        FirmwareRole role;
        const char* isMissing;
    };
    const Place places[] = {
        {m_loader, FirmwareRole::Loader, "Unable to find loader firmware file."},
        {m_updater, FirmwareRole::LoaderUpdater, "Unable to find loader updater firmware file."},
        {m_application, FirmwareRole::Application, "Unable to find application firmware file."},
    };
    const QString folder = QFileInfo(m_archivePath).absolutePath();
    for (const Place& place : places) {
        const char* const fileName = firmwareImageKinds.at(static_cast<std::size_t>(place.role)).fileName;
        place.image.file.setFileName(folder % QLatin1Char('/') % QLatin1String(fileName));
        if (!place.image.file.exists()) {
            warn(QLatin1String(place.isMissing));
            return false;
        }
    }
    return true;
}

bool UpdateRun::checkLoader()
{
    if (!checkImage(m_loader, "Unable to open the loader firmware file.", "Invalid loader firmware file.")) {
        return false;
    }
    m_update->m_store->setValue(QLatin1String(browsePathKey), QtVersion::storable(m_archivePath));
    return true;
}

bool UpdateRun::checkApplication()
{
    return checkImage(m_application, "Unable to open firmware file.", "Invalid firmware file.");
}

bool UpdateRun::checkImage(Image& image, const char* cannotOpen, const char* isInvalid)
{
    if (!image.file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        warn(QLatin1String(cannotOpen));
        return false;
    }
    image.lineCount = Update::checkFirmwareFile(image.file, image.version);
    if (image.lineCount == 0) {
        warn(QLatin1String(isInvalid));
    }
    return image.lineCount != 0;
}

void UpdateRun::updateDevice()
{
    // Whatever was asked before must be answered: its reply would be taken for that of the next question.
    const bool isAtRest = m_device && m_device->waitWhileBusy() == DeviceResult::Ok;
    if (!isAtRest || mode() == DeviceMode::NotIdentified) {
        warn(QStringLiteral("Error communicating with device."));
        return;
    }
    int result = enterLoader();
    if (result == UpdateResult::Ok) {
        result = updateLoader();
    }
    if (result == UpdateResult::Ok) {
        result = program(m_application, "Programming the Application");
    }
    if (result == UpdateResult::Ok) {
        startApplication();
    } else {
        tellResult(result);
    }
}

/// Ends in the loader, or in a loader updater beside a loader that does not work: that one can be mended.
int UpdateRun::enterLoader()
{
    if (mode() == DeviceMode::Loader) {
        return UpdateResult::Ok;
    }
    if (m_device->isLoaderValid()) {
        return switchTo(DeviceMode::Loader, &Device::goLoader, noTransitionToLoader, noJumpToLoader);
    }
    return mode() == DeviceMode::LoaderUpdater ? int(UpdateResult::Ok) : failed("Loader failed CRC check.");
}

int UpdateRun::updateLoader()
{
    const bool isDamaged = mode() == DeviceMode::LoaderUpdater;
    m_update->saveCalibrationBackup();
    if (!m_update || !m_device) {
        return UpdateResult::Canceled;
    }
    if (!isDamaged && m_device->loaderVersion().version == m_loader.version) {
        return UpdateResult::Ok;
    }
    if (mode() != DeviceMode::LoaderUpdater) {
        const int result = startLoaderUpdater();
        if (result != UpdateResult::Ok) {
            return result;
        }
    }
    return programLoader();
}

int UpdateRun::startLoaderUpdater()
{
    if (!checkImage(m_updater, "Unable to open loader updater file.",
                    "Invalid loader updater firmware file.")) {
        return m_updater.file.isOpen() ? failed(noTransitionToLoader) : int(UpdateResult::UpdaterNotOpened);
    }
    int result = returnToLoader();
    if (result == UpdateResult::Ok) {
        result = program(m_updater, "Programming the Loader Updater");
    }
    if (result != UpdateResult::Ok) {
        return result;
    }
    // The loader updater lies where the application was.
    if (!m_device->isApplicationValid()) {
        return failed("Loader Updater failed CRC check. Send back to factory for reprogramming.");
    }
    return switchTo(DeviceMode::LoaderUpdater, &Device::goApp, "Error transitioning to loader updater.",
                    "Error - Unable to jump to loader updater.");
}

/// The device may have restarted since the run saw it in the loader.
int UpdateRun::returnToLoader()
{
    if (mode() == DeviceMode::Loader) {
        return UpdateResult::Ok;
    }
    if (mode() != DeviceMode::Application) {
        return failed(noTransitionToLoader);
    }
    if (!m_device->isLoaderValid()) {
        warn(QLatin1String(loaderIsDamaged));
        return failed(noTransitionToLoader);
    }
    return switchTo(DeviceMode::Loader, &Device::goLoader, noTransitionToLoader, noJumpToLoader);
}

int UpdateRun::programLoader()
{
    const int result = program(m_loader, "Programming the Loader");
    if (!m_device || !m_device->isLoaderValid()) {
        return failed(loaderIsDamaged);
    }
    const int switched =
        switchTo(DeviceMode::Loader, &Device::goLoader, noTransitionToLoader, noJumpToLoader);
    return switched == UpdateResult::Ok ? result : switched;
}

int UpdateRun::switchTo(DeviceMode wanted, Switch command, const char* noTransition, const char* wrongImage)
{
    if (!restartInto(command)) {
        return failed(noTransition);
    }
    return mode() == wanted ? int(UpdateResult::Ok) : failed(wrongImage);
}

bool UpdateRun::restartInto(Switch command)
{
    m_update->m_touched = true;
    return (m_device->*command)() == DeviceResult::Ok;
}

int UpdateRun::program(Image& image, const char* title)
{
    if (!m_update) {
        return UpdateResult::Canceled;
    }
    return m_update->programFlash(image.file, image.lineCount, QLatin1String(title));
}

void UpdateRun::startApplication()
{
    showStatus(QStringLiteral("Restarting application. Please wait..."));
    // The first answer may still be that of before the programming.
    m_device->isApplicationValid();
    if (!m_device || !m_device->isApplicationValid()) {
        delete m_status;
        warn(QStringLiteral("Error - Application failed CRC check after programming."));
        return;
    }
    if (!restartInto(&Device::goApp)) {
        delete m_status;
        warn(QStringLiteral("Error transitioning to application."));
        return;
    }
    awaitLaserController();
    delete m_status;
    if (m_window) {
        tellUser(m_window, QMessageBox::Information, QStringLiteral("Update complete!"));
    }
}

/// After a new application the device may reprogram its laser controller before it is of use.
void UpdateRun::awaitLaserController()
{
    if (mode() != DeviceMode::UpdatingLaserController) {
        return;
    }
    if (m_status) {
        m_status->setText(QStringLiteral("Completing firmware update. Please wait..."));
    }
    QTimer wakes; // the event loop, which may have nothing to do for the rest of the time
    wakes.start(lookEvery);
    QElapsedTimer elapsed;
    elapsed.start();
    while (m_device && !m_device->isShutDown() && mode() != DeviceMode::Application &&
           !elapsed.hasExpired(laserControllerLimit.count() - 1)) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void UpdateRun::showStatus(const QString& text)
{
    m_status = new QMessageBox(QMessageBox::Information, QStringLiteral("Firmware Update"), text,
                               QMessageBox::NoButton, m_window);
    m_status->setStandardButtons(QMessageBox::NoButton);
    m_status->setWindowModality(Qt::NonModal);
    m_status->show();
}

int UpdateRun::failed(const char* text)
{
    warn(QLatin1String(text));
    return UpdateResult::NotSwitched;
}

void UpdateRun::tellResult(int result)
{
    if (result == UpdateResult::Canceled) {
        warn(QStringLiteral("User canceled programming."));
    } else {
        warn(QStringLiteral("Error updating firmware.  Error %1").arg(result));
    }
}

void UpdateRun::warn(const QString& text)
{
    // A box would keep a program alive whose window has been closed meanwhile.
    if (m_window && (!m_device || !m_device->isShutDown())) {
        tellUser(m_window, QMessageBox::Warning, text);
    }
}

DeviceMode UpdateRun::mode() const
{
    return m_device ? m_device->deviceMode() : DeviceMode::NotIdentified;
}
