#pragma once

#include "device/DeviceTypes.h"
#include "settings/SystemConfigFields.h"

/// The device's system record and the texts of the editor's cells. Both directions are pure and total.
namespace SystemConfigRecord {
SystemConfigTexts toTexts(const SystemConfigBytes& record);
/// A text that does not parse, or an integer outside its field's width, counts as 0; an 8-bit field takes the
/// low byte of a 16-bit number. Bytes that no cell covers are those of @p base, except the 32-bit number at
/// offset 8, which becomes 8.
SystemConfigBytes fromTexts(const SystemConfigTexts& texts, const SystemConfigBytes& base);
} // namespace SystemConfigRecord
