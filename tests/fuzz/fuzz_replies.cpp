// Any bytes as a reply of the device, to every parser of replies. Each gives one of its codes and leaves
// values of its range.

#include "FuzzInput.h"
#include "device/Records.h"
#include "device/Replies.h"
#include "device/ResultCodes.h"
#include "settings/ChannelConfigRecord.h"
#include "settings/SystemConfigRecord.h"

#include <algorithm>
#include <array>

namespace {
bool isOneOf(int code, std::initializer_list<int> codes)
{
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

void tryStates(const QString& reply)
{
    FunctionalMode_t mode = FunctionalModeIdle;
    quint8 minutes = 0;
    ControlSource source{};
    StateReport report;
    OperatingHours numbers{};
    ShutterStates flags{};
    Temperatures readings;
    ImageVersion image;
    ProductConfig record;
    const std::array<int, 12> codes{
        Replies::functionalMode(reply, mode),     Replies::sleepTime(reply, minutes),
        Replies::intensitySource(reply, source),  Replies::fault(reply, report),
        Replies::warning(reply, report),          Replies::hours(reply, numbers),
        Replies::intensityLevels(reply, numbers), Replies::shutterStates(reply, flags),
        Replies::ttlInvertStates(reply, flags),   Replies::temperatures(reply, readings),
        Replies::imageVersion(reply, image),      Replies::productConfig(reply, record)};
    for (const int code : codes)
        require(isOneOf(code, {DeviceResult::Ok, -40009, -40015}));
    require(isOneOf(mode, {0, 1, 2}));
    require(minutes <= 99);
    require(isOneOf(static_cast<int>(source), {0, 1}));
    require(!report.message.contains(QLatin1Char('\n')));
    require(Records::writeProductConfig(record).startsWith("prod_config:"));
}

/// A record that is taken has all its bytes; whatever they are, the editors can show them.
void tryRecords(const QString& reply)
{
    SystemConfigBytes system{};
    for (const int size :
         {Records::readChunkSize, systemConfigSize % Records::readChunkSize, systemConfigSize})
        require(isOneOf(Records::bytesOf(reply, system.data(), size),
                        {DeviceResult::Ok, DeviceResult::WrongLength}));
    SystemConfigRecord::toTexts(system);
    ChannelConfigBytes channels{};
    require(isOneOf(Records::bytesOf(reply, channels.data(), channelConfigSize),
                    {DeviceResult::Ok, DeviceResult::WrongLength}));
    const ChannelConfigBytes once =
        ChannelConfigRecord::encode(ChannelConfigRecord::decode(channels), channels);
    require(ChannelConfigRecord::encode(ChannelConfigRecord::decode(once), once) == once);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = fuzzInput(data, size);
    for (const QString& reply : {QString::fromUtf8(bytes), QString::fromLatin1(bytes)}) {
        tryStates(reply);
        tryRecords(reply);
        Replies::isYes(reply);
        Replies::tellsFirmwareUpdate(reply);
        Records::tellsWrote(reply);
        QString text;
        Replies::keyedText(reply, QStringLiteral("sleep"), text);
    }
    return 0;
}
