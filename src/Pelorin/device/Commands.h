#pragma once

#include "device/DeviceTypes.h"

#include <QByteArray>
#include <QString>

/// The setting commands as they go over the wire, each one line with its line feed. A builder whose
/// argument the device does not accept returns an empty array.
namespace Commands {
/// `wireName` is the channel's wavelength without unit; `percent` must be finite; two decimals are sent.
QByteArray setIntensity(const QString& wireName, float percent);
QByteArray setShutter(const QString& wireName, bool open);
QByteArray setTtlInvert(const QString& wireName, bool inverted);
QByteArray setIntensityMode(int source); ///< 0 external, 1 host; empty for anything else
QByteArray setShutterMode(int source);   ///< 0 external, 1 host; empty for anything else
QByteArray setSpeckle(bool on);
QByteArray setFunctionalMode(int mode); ///< idle (1) or run (2); empty for anything else
QByteArray setSleepTime(quint16 minutes);
QByteArray clearFaults();
QByteArray resetDevice();
QByteArray restoreDefaults();
} // namespace Commands
