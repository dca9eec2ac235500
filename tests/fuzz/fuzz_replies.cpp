// Any bytes as a reply of the device, to every parser of replies. Each gives one of its codes and leaves
// values of its range.

#include "FuzzInput.h"
#include "settings/ChannelConfigRecord.h"
#include "settings/SystemConfigRecord.h"
#include "support/ReplyParsers.h"

namespace {
void requireLength(int code)
{
    require(code == DeviceResult::Ok || code == DeviceResult::WrongLength);
}

/// A record that is taken has all its bytes; whatever they are, the editors can show them.
void tryRecords(const QString& reply)
{
    SystemConfigBytes system{};
    for (const int size :
         {Records::readChunkSize, systemConfigSize % Records::readChunkSize, systemConfigSize})
        requireLength(Records::bytesOf(reply, system.data(), size));
    SystemConfigRecord::toTexts(system);
    ChannelConfigBytes channels{};
    requireLength(Records::bytesOf(reply, channels.data(), channelConfigSize));
    const ChannelConfigBytes once =
        ChannelConfigRecord::encode(ChannelConfigRecord::decode(channels), channels);
    require(ChannelConfigRecord::encode(ChannelConfigRecord::decode(once), once) == once);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = fuzzInput(data, size);
    for (const QString& reply : {QString::fromUtf8(bytes), QString::fromLatin1(bytes)}) {
        require(ReplyParsers(reply).fault() == nullptr);
        tryRecords(reply);
    }
    return 0;
}
