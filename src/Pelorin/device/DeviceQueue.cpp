#include "QsLog2_1_0/QsLog.h"
#include "device/DevicePrivate.h"

#include <QScopedValueRollback>

namespace {
/// Set while a queue is sent, whichever device it belongs to.
bool& draining()
{
    static bool flag = false;
    return flag;
}
} // namespace

int Device::sendOrEnqueue(const QByteArray& command)
{
    if (!isOpen())
        return DeviceResult::NotOpen;
    if (d->isLineBusy()) {
        d->enqueue(command);
        return DeviceResult::Ok;
    }
    if (d->commandQueue.isEmpty())
        return d->sendDirectly(command);
    // The older ones go first.
    d->enqueue(command);
    drainQueue();
    return DeviceResult::Ok;
}

/// What is left in the queue when a command fails, or when the port closes, waits for the next drain.
int Device::drainQueue()
{
    if (d->isLineBusy() || (draining() && !d->isHeldUp()))
        return DeviceResult::Ok;
    if (!isOpen())
        return DeviceResult::NotOpen;
    const QScopedValueRollback<bool> guard(draining(), true);
    const bool hadCommands = !d->commandQueue.isEmpty();
    if (hadCommands)
        QS_TRACE() << "Sending Queued Commands";
    int result = DeviceResult::Ok;
    const int generation = d->generation;
    while (result == DeviceResult::Ok && generation == d->generation && !d->commandQueue.isEmpty())
        result = d->sendQueued(d->commandQueue.takeFirst());
    if (hadCommands)
        QS_TRACE() << "Done Sending Queued Commands";
    return result;
}

void Device::Private::enqueue(const QByteArray& command)
{
    trace("Enqueue ", command);
    commandQueue.append(command);
}

int Device::Private::sendDirectly(const QByteArray& command)
{
    q->flushInput();
    trace("To device ->", command);
    startResponseTimer(responseTimeout);
    const qint64 written = q->writeCommand(command);
    if (!q->isOpen())
        return DeviceResult::NotOpen;
    if (written == command.size())
        return DeviceResult::Ok;
    QS_ERROR() << "Write command error.";
    inTransaction = false;
    return DeviceResult::WriteFailed;
}

int Device::Private::sendQueued(const QByteArray& command)
{
    q->flushInput();
    const int turn = startResponseTimer(responseTimeout);
    trace("Q:To device ->", command);
    switch (writeAndWait(command, turn, nullptr)) {
    case End::Answered:
        return DeviceResult::Ok;
    case End::ShortWrite:
        QS_ERROR() << "Q:Write command error.";
        return DeviceResult::WriteFailed;
    case End::TimedOut:
        QS_ERROR() << "Q:Write timeout error.";
        return DeviceResult::NoReply;
    case End::Closed:
        break;
    }
    return DeviceResult::NotOpen;
}
