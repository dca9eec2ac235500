#include "device/DevicePrivate.h"
#include "device/Records.h"
#include "device/Replies.h"

#include <algorithm>

/// What is queued goes first, however long it takes: a mere wait for the poll to send it would take a slow
/// device, or one whose poll rests, for a silent one.
int Device::Private::awaitIdleLine() const
{
    if (!q->isOpen())
        return DeviceResult::NotOpen;
    if (switchPending)
        return DeviceResult::Busy;
    const int connection = closeCount;
    if (!awaitReplyOfOthers())
        return DeviceResult::NotOpen;
    if (mayPoll())
        q->drainQueue();
    const int code = q->waitWhileBusy();
    return connection == closeCount ? code : int(DeviceResult::NotOpen);
}

/// One transaction of several on the same connection. A wait or a box around it may hold it up after its
/// reply for as long as it takes to plug in another device, which must not get the rest.
int Device::Private::recordStep(const QByteArray& command, QString& reply, int connection) const
{
    const int code = connection == closeCount ? q->transaction(command, reply) : int(DeviceResult::NotOpen);
    return connection == closeCount ? code : int(DeviceResult::NotOpen);
}

int Device::Private::checkRecord(const char* question, int connection) const
{
    QString reply;
    const int code = recordStep(QByteArray(question) + '\n', reply, connection);
    if (code != DeviceResult::Ok)
        return code;
    return Replies::isYes(reply) ? int(DeviceResult::Ok) : int(DeviceResult::RecordNotValid);
}

/// A record that was not written whole is not marked valid.
int Device::Private::writeRecord(quint32 address, const quint8* bytes, int size, const char* markValid) const
{
    const int connection = closeCount;
    if (!awaitReplyOfOthers())
        return DeviceResult::NotOpen;
    QString reply;
    const QList<QByteArray> commands = Records::writeCommands(address, bytes, size);
    for (const QByteArray& command : commands) {
        const int code = recordStep(command, reply, connection);
        if (code != DeviceResult::Ok)
            return code;
        if (!Records::tellsWrote(reply))
            return DeviceResult::MarkerMissing;
    }
    return recordStep(QByteArray(markValid) + '\n', reply, connection);
}

int Device::Private::readMemory(quint32 address, quint8* bytes, int size, int connection) const
{
    for (int offset = 0; offset < size; offset += Records::readChunkSize) {
        const int chunk = std::min(Records::readChunkSize, size - offset);
        QString reply;
        int code = recordStep(Records::readCommand(address + static_cast<quint32>(offset), chunk), reply,
                              connection);
        if (code == DeviceResult::Ok)
            code = Records::bytesOf(reply, bytes + offset, chunk);
        if (code != DeviceResult::Ok)
            return code;
    }
    return DeviceResult::Ok;
}

int Device::readSystemConfig(quint8* buffer)
{
    if (!isOpen() || buffer == nullptr)
        return DeviceResult::NotOpen;
    const int connection = d->closeCount;
    int code = d->awaitIdleLine();
    if (code == DeviceResult::Ok)
        code = d->checkRecord("issysconfigvalid", connection);
    if (code != DeviceResult::Ok)
        return code;
    SystemConfigBytes record{};
    const quint32 address =
        isVersionAboveConfigLimit() ? Records::systemConfigAddress : Records::olderSystemConfigAddress;
    code = d->readMemory(address, record.data(), systemConfigSize, connection);
    if (code != DeviceResult::Ok)
        return code;
    d->systemConfig = record;
    std::copy(record.begin(), record.end(), buffer);
    return DeviceResult::Ok;
}

int Device::writeSystemConfig(const quint8* buffer)
{
    if (!isOpen() || buffer == nullptr)
        return DeviceResult::NotOpen;
    SystemConfigBytes record{};
    std::copy_n(buffer, systemConfigSize, record.begin());
    const int code =
        d->writeRecord(Records::systemConfigAddress, record.data(), systemConfigSize, "setsysconfigvalid");
    if (code == DeviceResult::Ok)
        d->systemConfig = record;
    return code;
}

int Device::readChannelConfig(quint8* buffer)
{
    if (!isOpen() || buffer == nullptr)
        return DeviceResult::NotOpen;
    const int connection = d->closeCount;
    if (d->awaitIdleLine() != DeviceResult::Ok)
        return DeviceResult::NotOpen;
    // Whatever keeps the device from confirming the record, it counts as not valid.
    if (d->checkRecord("ischanconfigvalid", connection) != DeviceResult::Ok)
        return DeviceResult::RecordNotValid;
    QString reply;
    ChannelConfigBytes record{};
    int code = d->recordStep(QByteArrayLiteral("chan_config\n"), reply, connection);
    if (code == DeviceResult::Ok)
        code = Records::bytesOf(reply, record.data(), channelConfigSize);
    if (code != DeviceResult::Ok)
        return code;
    d->channelConfig = record;
    std::copy(record.begin(), record.end(), buffer);
    return DeviceResult::Ok;
}

int Device::writeChannelConfig(const quint8* buffer)
{
    if (!isOpen() || buffer == nullptr)
        return DeviceResult::NotOpen;
    ChannelConfigBytes record{};
    std::copy_n(buffer, channelConfigSize, record.begin());
    const int code =
        d->writeRecord(Records::channelConfigAddress, record.data(), channelConfigSize, "setchanconfigvalid");
    if (code == DeviceResult::Ok)
        d->channelConfig = record;
    return code;
}

int Device::readProductConfig(ProductConfig& record)
{
    const int connection = d->closeCount;
    int code = d->awaitIdleLine();
    QString reply;
    if (code == DeviceResult::Ok)
        code = d->recordStep(QByteArrayLiteral("prod_config\n"), reply, connection);
    return code == DeviceResult::Ok ? Replies::productConfig(reply, record) : code;
}

int Device::writeProductConfig(const ProductConfig& record)
{
    const int connection = d->closeCount;
    if (!isOpen() || !d->awaitReplyOfOthers())
        return DeviceResult::NotOpen;
    QString reply;
    return d->recordStep(Records::writeProductConfig(record), reply, connection);
}

const std::optional<SystemConfigBytes>& Device::knownSystemConfig() const
{
    return d->systemConfig;
}

const std::optional<ChannelConfigBytes>& Device::knownChannelConfig() const
{
    return d->channelConfig;
}
