#pragma once

#include <QString>

#include <memory>

class QSettings;

/// Where the program keeps its log and the backups of calibrations: "Tarnwick/VYR" in the user's documents
/// folder, without a slash at its end. It need not exist.
QString dataFolder();

/// The log of the program in that folder; its older parts have ".1" and so on behind this name.
QString logFileIn(const QString& folder);

/// The user's settings store. A file that cannot be understood is copied to "<file>.unreadable" (with a
/// number behind it where that name is taken) before anything is written over it.
std::unique_ptr<QSettings> openSettingsStore();

/// Brings what was written to the disk. False, with an error in the log, when that did not work; what the
/// file held before is then put back.
bool flushSettings(QSettings& store);
