#pragma once

#include "device/DeviceTypes.h"
#include "device/FirmwareVersion.h"

#include <QString>

/// How replies of the device are understood. Every function is pure and total: any text in gives a
/// DeviceResult code out. On a non-zero result the output is as it was, except where noted. Lists with
/// more items than there are channels are read up to the eighth item, shorter ones fill what they have.
namespace Replies {
int functionalMode(const QString& reply, FunctionalMode_t& mode);
int sleepTime(const QString& reply, quint8& minutes);
int intensitySource(const QString& reply, ControlSource& source);
int fault(const QString& reply, StateReport& report);   ///< the message is replaced on every result
int warning(const QString& reply, StateReport& report); ///< the message is replaced on every result
int hours(const QString& reply, OperatingHours& hours);
int shutterStates(const QString& reply, ShutterStates& states);
int ttlInvertStates(const QString& reply, TtlInvertStates& states);
int intensityLevels(const QString& reply, IntensityLevels& levels);
int temperatures(const QString& reply, Temperatures& readings);
int imageVersion(const QString& reply, ImageVersion& image);
bool isYes(const QString& reply);
bool tellsFirmwareUpdate(const QString& reply);
/// The text behind `key` and "=": false, and nothing stored, when the reply lacks the key.
bool keyedText(const QString& reply, const QString& key, QString& text);
int productConfig(const QString& reply, ProductConfig& record);
} // namespace Replies
