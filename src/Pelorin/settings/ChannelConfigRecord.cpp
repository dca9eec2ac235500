#include "settings/ChannelConfigRecord.h"

#include <QByteArray>

#include <algorithm>
#include <cstddef>

namespace {
// The record: a header, then an entry of these bytes per channel and one in reserve.
constexpr int headerSize = 4;
constexpr int entrySize = 12;
constexpr int enabledOffset = 0;
constexpr int typeOffset = 1;
constexpr int nameOffset = 2;
constexpr int nameSize = 4;
constexpr int redOffset = 6;
constexpr int greenOffset = 7;
constexpr int blueOffset = 8;
constexpr int secondaryOffset = 9;
constexpr int primaryOffset = 10;
static_assert(headerSize + channelCount * entrySize == channelConfigSize);

constexpr int customType = 8;

/// A type that is not known yet keeps its name and color as a custom one.
int knownType(int type)
{
    return type >= 0 && type < customType ? type : customType;
}

int knownChannel(int index)
{
    return index >= 0 && index < channelCount ? index : 0;
}

QString nameOf(const quint8* bytes)
{
    const quint8* end = std::find(bytes, bytes + nameSize, 0);
    return QString::fromLatin1(reinterpret_cast<const char*>(bytes), static_cast<int>(end - bytes));
}

ChannelConfigEntry entryOf(const quint8* bytes)
{
    ChannelConfigEntry entry;
    entry.enabled = bytes[enabledOffset] != 0;
    entry.type = knownType(bytes[typeOffset]);
    entry.name = nameOf(bytes + nameOffset);
    entry.red = bytes[redOffset];
    entry.green = bytes[greenOffset];
    entry.blue = bytes[blueOffset];
    entry.secondary = bytes[secondaryOffset] != 0;
    entry.primary = knownChannel(bytes[primaryOffset]);
    return entry;
}

void store(const ChannelConfigEntry& entry, quint8* bytes)
{
    bytes[enabledOffset] = entry.enabled ? 1 : 0;
    bytes[typeOffset] = static_cast<quint8>(knownType(entry.type));
    const QByteArray name = entry.name.left(nameSize).toLatin1().leftJustified(nameSize, '\0', true);
    std::copy(name.begin(), name.end(), bytes + nameOffset);
    bytes[redOffset] = entry.red;
    bytes[greenOffset] = entry.green;
    bytes[blueOffset] = entry.blue;
    bytes[secondaryOffset] = entry.secondary ? 1 : 0;
    bytes[primaryOffset] = static_cast<quint8>(knownChannel(entry.primary));
}

constexpr int placeOf(std::size_t channel)
{
    return headerSize + static_cast<int>(channel) * entrySize;
}
} // namespace

ChannelConfigEntries ChannelConfigRecord::decode(const ChannelConfigBytes& record)
{
    ChannelConfigEntries entries;
    for (std::size_t channel = 0; channel < entries.size(); ++channel)
        entries[channel] = entryOf(record.data() + placeOf(channel));
    return entries;
}

ChannelConfigBytes ChannelConfigRecord::encode(const ChannelConfigEntries& entries,
                                               const ChannelConfigBytes& base)
{
    ChannelConfigBytes record = base;
    for (std::size_t channel = 0; channel < entries.size(); ++channel)
        store(entries[channel], record.data() + placeOf(channel));
    return record;
}
