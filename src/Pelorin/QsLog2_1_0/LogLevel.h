#pragma once

#include <QLatin1String>
#include <QString>

namespace QsLogging {

/// How grave a log line is. The logger lets a statement through when its own level is at most the
/// statement's; Off as the logger's level silences everything but statements made at Off itself.
enum class LogLevel : int {
    Trace = 0,
    Debug = 1,
    Info = 2,
    Warn = 3,
    Error = 4,
    Fatal = 5,
    Off = 6,
};

/// The five characters a line of this level starts with ("INFO " has its blank); empty for Off. Any other
/// value is a mistake of the caller: it trips an assertion and, where those are off, counts as Info.
QLatin1String textForLevel(LogLevel level);

/// The level whose five-character text `text` starts with, exactly and in capitals. Anything else is Off,
/// and sets `*ok` to false; `ok` may be null.
LogLevel levelFromText(const QString& text, bool* ok = nullptr);

} // namespace QsLogging
