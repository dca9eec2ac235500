#include "device/Device.h"

#include "device/DevicePrivate.h"

#include <QAbstractEventDispatcher>

Device::Private::Private(Device& device) : q(&device)
{
    connect(&line, &SerialLine::received, q, [this](const QByteArray& chunk) { onReceived(chunk); });
    connect(&line, &SerialLine::aboutToClose, q, [this] { onAboutToClose(); });
    connect(&line, &SerialLine::failed, q, &Device::portError);
    connect(&line, &SerialLine::openFailureChanged, q, &Device::openFailureChanged);
    connect(&connectionTimer, &QTimer::timeout, q, &Device::checkConnectionStatus);
    connect(&transactionTimer, &QTimer::timeout, q, [this] { onResponseTimeout(); });
    connect(&busyTimer, &QTimer::timeout, q, [this] { onBusyTimeout(); });
    connect(&pollTimer, &QTimer::timeout, q, &Device::pollDevice);
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, q,
            [this] { onAboutToSleep(); });
    for (QTimer* timer : {&transactionTimer, &busyTimer, &pollTimer})
        timer->setTimerType(Qt::PreciseTimer);
    connectionTimer.start(connectionInterval);
}

Device::Device(QObject* parent) : QObject(parent), d(std::make_unique<Private>(*this))
{
    qRegisterMetaType<FunctionalMode_t>("FunctionalMode_t");
}

Device::~Device()
{
    // Whoever listens is likely to be on its way out too.
    blockSignals(true);
    d->line.close();
}

bool Device::isOpen() const
{
    return d->line.isOpen();
}

QString Device::portName() const
{
    return d->portName;
}

void Device::shutDown()
{
    d->shutDown = true;
    d->line.close();
    d->stopTimers();
}

bool Device::isShutDown() const
{
    return d->shutDown;
}

bool Device::isWaiting() const
{
    return !d->waits.isEmpty() || d->busyWaits > 0 || d->switching || d->identifying > 0;
}

DeviceMode Device::deviceMode() const
{
    return d->deviceMode;
}

int Device::deviceNumber() const
{
    return d->deviceNumber;
}

bool Device::isApplicationConnected() const
{
    return isOpen() && d->deviceMode == DeviceMode::Application;
}

const ImageVersion& Device::runningVersion() const
{
    return d->identity.running;
}

const ImageVersion& Device::applicationVersion() const
{
    return d->identity.application;
}

const ImageVersion& Device::loaderVersion() const
{
    return d->identity.loader;
}

bool Device::applicationValid() const
{
    return d->identity.applicationValid;
}

bool Device::loaderValid() const
{
    return d->identity.loaderValid;
}

const NecselControllerInfo& Device::necselController() const
{
    return d->identity.necsel;
}

bool Device::faultState() const
{
    return d->poll.fault;
}

bool Device::warningState() const
{
    return d->poll.warning;
}
