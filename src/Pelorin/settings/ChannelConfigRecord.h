#pragma once

#include "device/DeviceTypes.h"

#include <QString>

#include <array>

/// What lies behind one schematic channel.
struct ChannelConfigEntry
{
    bool enabled = true;
    int type = 0; ///< 0 to 7: 405, 445, 470, 520, 528, 555, 640, 730 nm; 8: custom
    QString name; ///< at most four Latin-1 characters
    quint8 red = 0;
    quint8 green = 0;
    quint8 blue = 0;
    bool secondary = false; ///< driven together with its primary channel
    int primary = 0;        ///< 0 to 7
};

/// In schematic order, which is that of the table's columns.
using ChannelConfigEntries = std::array<ChannelConfigEntry, channelCount>;

/// The device's channel record. Both directions are pure and total.
namespace ChannelConfigRecord {
/// A type beyond the range becomes custom, a primary channel beyond it 0.
ChannelConfigEntries decode(const ChannelConfigBytes& record);
/// The bytes that belong to no entry are those of @p base.
ChannelConfigBytes encode(const ChannelConfigEntries& entries, const ChannelConfigBytes& base);
} // namespace ChannelConfigRecord
