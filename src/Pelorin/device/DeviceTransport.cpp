#include "QsLog2_1_0/QsLog.h"
#include "device/DevicePrivate.h"

#include <QScopedValueRollback>
#include <QTime>

#include <algorithm>

namespace {
/// The reply as text; a device that sends a NUL byte ends its reply there.
QString textOf(const QByteArray& reply)
{
    return QString::fromUtf8(reply.constData(), static_cast<int>(qstrnlen(reply.constData(), reply.size())));
}
} // namespace

qint64 Device::writeCommand(const QByteArray& bytes)
{
    if (!isOpen())
        return -1;
    d->inTransaction = true;
    return d->line.write(bytes);
}

void Device::flushInput()
{
    d->line.discardInput();
}

void Device::writeRaw(const QByteArray& bytes)
{
    if (isOpen())
        d->line.write(bytes);
}

int Device::transaction(const QByteArray& command, QString& reply)
{
    if (!isOpen())
        return DeviceResult::NotOpen;
    if (d->isLineBusy())
        return DeviceResult::Busy;
    flushInput();
    const int turn = d->startResponseTimer(Private::responseTimeout);
    Private::trace("To device ->", command);
    QByteArray answer;
    switch (d->writeAndWait(command, turn, &answer)) {
    case Private::End::Answered:
        reply = textOf(answer);
        return DeviceResult::Ok;
    case Private::End::ShortWrite:
        QS_ERROR() << "Write command error.";
        return DeviceResult::WriteFailed;
    case Private::End::TimedOut:
        QS_ERROR() << "Write timeout error.";
        return DeviceResult::NoReply;
    case Private::End::Closed:
        break;
    }
    return DeviceResult::NotOpen;
}

int Device::sendCommand(const char* text)
{
    if (!isOpen())
        return DeviceResult::Ok;
    QString reply;
    const int code = transaction(QByteArray(text) + '\n', reply);
    if (code == DeviceResult::Ok)
        QS_INFO() << reply;
    return code;
}

int Device::sendGoCommand(const char* text)
{
    if (!isOpen())
        return DeviceResult::NotOpen;
    if (d->switchPending)
        return DeviceResult::Busy;
    const QScopedValueRollback<bool> pending(d->switchPending, true);
    const int turn = d->startResponseTimer(Private::switchTimeout);
    switch (d->writeAndWait(QByteArray(text) + '\n', turn, nullptr)) {
    case Private::End::Answered:
        return DeviceResult::Ok;
    case Private::End::ShortWrite:
        return DeviceResult::WriteFailed;
    case Private::End::TimedOut:
        return DeviceResult::NoReplyToSwitch;
    case Private::End::Closed:
        break;
    }
    return DeviceResult::NotOpen;
}

/// Ends with the reply, its time-out or the connection; false when it is the connection that has ended, as
/// there may be another one by then.
bool Device::Private::awaitReplyOfOthers() const
{
    const int closeCountBefore = closeCount;
    sleepWhile(
        [&] { return inTransaction && transactionTimer.isActive() && closeCount == closeCountBefore; });
    return closeCount == closeCountBefore;
}

int Device::waitWhileBusy()
{
    if (!isOpen())
        return DeviceResult::NotOpen;
    // A queue that is being sent further up the stack cannot go on before this returns; to wait for it would
    // end in taking a healthy device for a silent one.
    const auto isStuck = [this] { return !d->waits.isEmpty() && d->isQueueDue(); };
    if (isStuck())
        return DeviceResult::Busy;
    d->awaitSignOfLife();
    d->busyTimedOut = false;
    const int closeCount = d->closeCount;
    // A device that goes on talking while its queue does not get shorter is no silent one either.
    const QDeadlineTimer limit(10 * Private::busyTimeout);
    ++d->busyWaits;
    Private::sleepWhile([&] {
        const bool timedOut = d->busyTimedOut || d->busyDeadline.hasExpired() || limit.hasExpired();
        return d->isBusy() && !timedOut && !isStuck() && closeCount == d->closeCount;
    });
    --d->busyWaits;
    const bool closed = closeCount != d->closeCount;
    // The timer goes on: the device stays unidentified until it is found anew.
    if (!closed && (d->busyTimedOut || (d->isBusy() && d->busyDeadline.hasExpired())))
        return DeviceResult::NoReply;
    if (d->busyWaits == 0)
        d->busyTimer.stop();
    if (closed)
        return DeviceResult::NotOpen;
    return d->isBusy() ? DeviceResult::Busy : DeviceResult::Ok;
}

/// Where nothing is polled nothing drains the queue either; it waits for the application.
bool Device::Private::isQueueDue() const
{
    return mayPoll() && !commandQueue.isEmpty();
}

/// Whatever runs inside a busy wait can have the line for longer than the wait, as long as the device
/// answers.
void Device::Private::awaitSignOfLife()
{
    busyTimer.start(busyTimeout);
    busyDeadline.setRemainingTime(busyTimeout);
}

/// Returns the number of this start, which stopResponseTimer() asks for.
int Device::Private::startResponseTimer(std::chrono::milliseconds timeout)
{
    transactionTimer.start(timeout);
    return ++timerTurn;
}

void Device::Private::stopResponseTimer(int turn)
{
    // A command that was sent meanwhile relies on the timer, and so does a wait around this one.
    const bool waitedFor =
        std::any_of(waits.begin(), waits.end(), [](const ReplyWait* wait) { return wait->pending; });
    if (turn == timerTurn && !waitedFor)
        transactionTimer.stop();
}

void Device::Private::trace(const char* arrow, const QByteArray& bytes)
{
    QS_TRACE() << QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz")).toLatin1().constData()
               << arrow << bytes;
}

/// Needs the response timer running under `turn`, and stops it at the end.
Device::Private::End Device::Private::writeAndWait(const QByteArray& command, int turn, QByteArray* reply)
{
    ReplyWait wait;
    waits.append(&wait);
    const qint64 written = q->writeCommand(command);
    if (!q->isOpen())
        wait.pending = false; // the write, or what came before it, found the device gone
    else if (written != command.size())
        wait = {false, End::ShortWrite, {}};
    sleepWhile([&wait] { return wait.pending; });
    waits.removeOne(&wait);
    if (wait.end == End::ShortWrite)
        startResponseTimer(responseTimeout); // frees the line again where no reply comes
    else
        stopResponseTimer(turn);
    if (reply)
        *reply = wait.reply;
    return wait.end;
}

void Device::Private::endWaits(End end, const QByteArray& reply)
{
    for (ReplyWait* wait : qAsConst(waits)) {
        if (wait->pending)
            *wait = {false, end, reply};
    }
}

void Device::Private::onReceived(const QByteArray& chunk)
{
    endWaits(End::Answered, chunk);
    if (busyWaits > 0)
        awaitSignOfLife();
    trace("From device <-", chunk);
    // The port does not tell of further bytes before this is over, so nobody may wait for a reply in here.
    inTransaction = true;
    QByteArray data = chunk;
    emit q->receivedDataFromDevice(data);
    inTransaction = false;
    // Whoever holds up the busy wait longer than that does not make a silent device of one that has answered.
    if (!isBusy())
        busyTimer.stop();
}

void Device::Private::onResponseTimeout()
{
    endWaits(End::TimedOut);
    QS_TRACE() << "Timed out waiting for response";
    inTransaction = false;
}

void Device::Private::onBusyTimeout()
{
    busyTimedOut = true;
    QS_TRACE() << "Timed out waiting for busy";
    setMode(DeviceMode::NotIdentified);
    inTransaction = false;
}

void Device::Private::onAboutToClose()
{
    ++closeCount;
    ++generation;
    QS_INFO() << "**Port Closed**";
    pollTimer.stop();
    transactionTimer.stop();
    endWaits(End::Closed);
    inTransaction = false;
    stayedPort.clear();
    setMode(DeviceMode::NotIdentified);
    emit q->deviceDisconnected(portName);
}

/// A message box that opens at a click inside a wait keeps whoever waits from going on for as long as the
/// user leaves it open. The screen must follow the device all the same, and what is queued must be sent, so
/// another tick and another drain take the place of those that wait. A wait's own loop does not sleep once it
/// is over.
void Device::Private::onAboutToSleep()
{
    if (!waits.isEmpty() && !waits.last()->pending)
        waits.last()->heldUp = true;
}

void Device::Private::stopTimers()
{
    for (QTimer* timer : {&connectionTimer, &transactionTimer, &busyTimer, &pollTimer})
        timer->stop();
}
