#pragma once

#include <memory>

class QSettings;

/// The user's settings store. A file that cannot be understood is copied to "<file>.unreadable" (with a
/// number behind it where that name is taken) before anything is written over it.
std::unique_ptr<QSettings> openSettingsStore();

/// Brings what was written to the disk. False, with an error in the log, when that did not work; what the
/// file held before is then put back.
bool flushSettings(QSettings& store);
