#pragma once

#include "device/DeviceTypes.h"

#include <QColor>
#include <QString>

#include <array>

/// What distinguishes one channel from the next before anybody has changed a setting.
struct ChannelDescriptor
{
    const char* wavelength;    ///< nanometres without unit, also the channel's name on the wire
    const char* defaultColour; ///< "RRGGBB"
};

namespace ChannelTable {
/// In the order in which the device and every list of channels count them.
constexpr std::array<ChannelDescriptor, channelCount> descriptors{{
    {"405", "4900bc"},
    {"445", "0019ff"},
    {"470", "0099ff"},
    {"520", "24ff00"},
    {"528", "41ff00"},
    {"555", "a3ff00"},
    {"640", "ff2500"},
    {"730", "bc0000"},
}};

// All of these count channels from 0.
QString wavelength(int index);
QString defaultName(int index); ///< the wavelength with its unit, "405nm"
QColor defaultColour(int index);
QString settingsGroup(int index); ///< "Channel1" to "Channel8"

/// Six hexadecimal digits "RRGGBB" as an opaque colour; a pair that is no hexadecimal number counts as 0.
QColor colourFromText(const QString& text);
/// The same six digits in lower case; whether the colour is opaque is not told.
QString colourToText(const QColor& colour);
} // namespace ChannelTable
