#pragma once

#include "settings/SystemConfigFields.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The calibration file: a picture of the editor's cells in JSON.
namespace CalibrationFile {
/// @p columnHeaders are the seven header texts of the Novalum table, under which its channels are written.
QByteArray toJson(const SystemConfigTexts& texts, const QStringList& columnHeaders);
/// Fills @p texts with what the document holds; members that are missing become 0, channels that are missing
/// are left alone. False, and nothing changes, when the document is no object.
bool fromJson(const QByteArray& json, const QStringList& columnHeaders, SystemConfigTexts& texts);
/// Writes the file whole or not at all, in a folder that is made where it is missing. False when that fails;
/// a file that was there before is then as it was.
bool write(const QString& pathName, const QByteArray& json);
} // namespace CalibrationFile
