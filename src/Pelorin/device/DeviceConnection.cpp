#include "QsLog2_1_0/QsLog.h"
#include "device/DevicePrivate.h"

#include <QScopedValueRollback>

#include <algorithm>

namespace {
// Firmware above these knows the channel record and keeps the system record at its newer address.
constexpr FirmwareVersion loaderConfigLimit{1, 4, 6};
constexpr FirmwareVersion configLimit{2, 6, 2};
} // namespace

void Device::selectPort(const QString& portName)
{
    d->portName = portName;
    if (!isOpen())
        return;
    QS_WARN() << "Closing the previous port";
    d->line.close();
}

void Device::checkConnectionStatus()
{
    if (d->shutDown)
        return;
    const QList<SerialPortEntry> ports = SerialPorts::available();
    const UsbIdentifiers usual = SerialPorts::illuminators.front();
    for (const SerialPortEntry& port : ports) {
        QS_INFO() << "Found vendorID: " << port.vendorId.value_or(0)
                  << "prodID: " << port.productId.value_or(0) << "Matching to:" << usual.vendorId
                  << usual.productId;
    }
    if (isOpen())
        d->watchOpenPort(ports);
    else
        d->openFirstIlluminator(ports);
}

void Device::Private::watchOpenPort(const QList<SerialPortEntry>& ports)
{
    if (!SerialPorts::isListedIlluminator(ports, line.portName())) {
        QS_INFO() << "Device not communicating.  Closing port";
        setMode(DeviceMode::NotIdentified);
        line.close();
        return;
    }
    // A device that is being asked who it is has not answered yet; nor has one that changes its image.
    const bool answerDue = identifying > reopenAllowedAt || switchPending;
    if (deviceMode != DeviceMode::NotIdentified || answerDue)
        return;
    line.close();
    stayedPort = line.portName();
}

void Device::Private::openFirstIlluminator(const QList<SerialPortEntry>& ports)
{
    if (!SerialPorts::isListedIlluminator(ports, stayedPort))
        stayedPort.clear();
    // An identification that has lost its port must come to its end first.
    if (line.isChanging() || identifying > reopenAllowedAt)
        return;
    const auto found = std::find_if(ports.begin(), ports.end(), SerialPorts::isIlluminator);
    if (found == ports.end()) {
        line.forgetOpenFailure();
        return;
    }
    QS_INFO() << "Product match on port" << found->name;
    portName = found->name;
    if (!line.open(found->name)) {
        QS_INFO() << "Error opening device";
        setMode(DeviceMode::NotIdentified);
        return;
    }
    if (shutDown) {
        line.close(); // a listener ended the link while the port was being opened
        return;
    }
    portName = found->name;
    countDevice(*found);
    QS_INFO() << "Successfully opened device" << found->name;
    runConnectionSequence();
}

/// A device that was silent for a while, or left the bus to change its image, is still the same, unless its
/// serial number tells that somebody has plugged in another one meanwhile.
void Device::Private::countDevice(const SerialPortEntry& port)
{
    const bool isAnother =
        !usbSerialNumber.isEmpty() && !port.serialNumber.isEmpty() && usbSerialNumber != port.serialNumber;
    usbSerialNumber = port.serialNumber;
    if ((switching || stayedPort == port.name) && !isAnother)
        return;
    ++deviceNumber;
    systemConfig.reset();
    channelConfig.reset();
}

/// Ends early, and tells nobody, when the port closes meanwhile.
void Device::Private::runConnectionSequence()
{
    const QScopedValueRollback<int> depth(identifying, identifying + 1);
    const int closeCountBefore = closeCount;
    ++generation;
    inTransaction = false;
    poll.enabled = true;
    pollTimer.stop();
    busyTimer.stop();
    setMode(DeviceMode::NotIdentified);
    identity = {};
    identify();
    if (closeCount != closeCountBefore)
        return;
    if (poll.enabled && mayPoll())
        pollTimer.start(pollInterval);
    poll.forceEmit = true;
    poll.warningReported = false;
    emit q->deviceConnected(portName);
}

void Device::Private::identify()
{
    ImageVersion ignored; // the first query only wakes the line
    q->getVersion("v", ignored);
    q->sendCommand("reset_cause");
    if (q->getVersion("v", identity.running) == DeviceResult::Ok)
        identifyStoredImages();
    else if (q->isOpen())
        QS_INFO() << "Unable to get running version information";
}

void Device::Private::identifyStoredImages()
{
    if (q->getVersion("v?a", identity.application) != DeviceResult::Ok) {
        if (!q->isOpen())
            return;
        QS_INFO() << "Unable to get application version information";
        setMode(DeviceMode::NotIdentified);
        q->getNecselControllerInfo(identity.necsel);
        return;
    }
    if (q->getVersion("v?l", identity.loader) != DeviceResult::Ok) {
        if (q->isOpen())
            QS_INFO() << "Unable to get loader version information";
        return;
    }
    identity.loaderValid = q->isLoaderValid();
    if (!identity.loaderValid && q->isOpen())
        QS_INFO() << "Loader CRC is invalid";
    identity.applicationValid = q->isApplicationValid();
    if (!identity.applicationValid && q->isOpen())
        QS_INFO() << "Application CRC is invalid";
    if (q->isOpen())
        tellRunningImage();
}

void Device::Private::tellRunningImage()
{
    const QString kind = identity.running.kind;
    const QString version = identity.running.version.toString();
    if (kind == QLatin1String("Loader")) {
        setMode(DeviceMode::Loader);
        QS_INFO() << "Running the loader version" << version;
    } else if (kind == QLatin1String("VYRApp")) {
        setMode(DeviceMode::Application);
        QS_INFO() << "Running the application version" << version;
        q->getNecselControllerInfo(identity.necsel);
    } else if (kind == QLatin1String("LoaderUpdater")) {
        setMode(DeviceMode::LoaderUpdater);
        QS_INFO() << "Running the loader updater version" << version;
    } else {
        setMode(DeviceMode::Other);
        QS_INFO() << "Running version" << version;
    }
}

void Device::setUpdatingLaserController()
{
    d->setMode(DeviceMode::UpdatingLaserController);
    setPolling(false);
}

void Device::Private::setMode(DeviceMode mode)
{
    deviceMode = mode;
    if (mayPoll())
        return;
    ++generation; // a tick that is under way ends too
    pollTimer.stop();
}

/// The loader images do not answer status queries, and a device that programs its laser controller is left
/// alone.
bool Device::Private::mayPoll() const
{
    return deviceMode != DeviceMode::Loader && deviceMode != DeviceMode::LoaderUpdater &&
           deviceMode != DeviceMode::UpdatingLaserController;
}

bool Device::isVersionAboveConfigLimit() const
{
    const FirmwareVersion limit = d->deviceMode == DeviceMode::Loader ? loaderConfigLimit : configLimit;
    return d->identity.running.version > limit;
}
