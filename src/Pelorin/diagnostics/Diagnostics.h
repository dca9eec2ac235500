#pragma once

#include "diagnostics/DiagnosticsTexts.h"

#include <QString>

class Device;

/// Where the contents of a diagnostics archive come from.
struct DiagnosticsSources
{
    QString programVersion;
    const Device* device = nullptr; ///< may stay null
    KnownIdentity identity;
    QString logFile;      ///< the backups are those that stand beside it
    QString settingsFile; ///< brought to the disk by the caller
    QString remark;       ///< of the caller, for the README; empty for none
};

/// Writes one archive with the log, the settings, versions, the list of serial ports and a README that tells
/// of all that. Nothing is sent to the device. It takes the event loop for some tenths of a second, as no
/// more than the end of each log file is read. What cannot be read is left out and named in the README. False
/// when the archive cannot be written: @p error says why, and what was at @p path stays.
bool saveDiagnostics(const QString& path, const DiagnosticsSources& sources, QString& error);
