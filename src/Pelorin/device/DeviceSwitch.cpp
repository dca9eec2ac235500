#include "device/DevicePrivate.h"

#include <QScopedValueRollback>

int Device::goLoader()
{
    return d->switchImage("goloader");
}

int Device::goApp()
{
    return d->switchImage("goapp");
}

int Device::Private::switchImage(const char* command)
{
    if (switching)
        return DeviceResult::Busy;
    if (!q->isOpen())
        return DeviceResult::NotOpen;
    const QScopedValueRollback<bool> guard(switching, true);
    const QDeadlineTimer deadline(switchTimeout);
    const int closeCountBefore = closeCount;
    const int deviceNumberBefore = deviceNumber;
    // It would be taken for the new image's.
    if (!awaitReplyOfOthers())
        return DeviceResult::NotOpen;
    const int result = q->sendGoCommand(command);
    if (closeCount != closeCountBefore)
        return awaitReconnection(deadline, deviceNumberBefore);
    // The answer may be all that is missing; nobody knows what runs, and the connection check finds out.
    if (result == DeviceResult::NoReplyToSwitch)
        setMode(DeviceMode::NotIdentified);
    if (result != DeviceResult::Ok)
        return result;
    runConnectionSequence();
    return closeCount == closeCountBefore ? int(DeviceResult::Ok)
                                          : awaitReconnection(deadline, deviceNumberBefore);
}

/// A device that restarts may leave the bus for a while; the scan finds it again.
int Device::Private::awaitReconnection(const QDeadlineTimer& deadline, int deviceNumberBefore)
{
    const QScopedValueRollback<int> allowed(reopenAllowedAt, identifying);
    const auto isIdentified = [this] { return q->isOpen() && deviceMode != DeviceMode::NotIdentified; };
    // The connection timer wakes the sleep at least once a second.
    sleepWhile([&] { return !shutDown && !deadline.hasExpired() && !isIdentified(); });
    if (shutDown)
        return DeviceResult::NotOpen;
    // Another device in its place has not switched anything.
    return isIdentified() && deviceNumber == deviceNumberBefore ? DeviceResult::Ok
                                                                : DeviceResult::NoReplyToSwitch;
}
