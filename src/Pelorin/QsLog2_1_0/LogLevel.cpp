#include "QsLog2_1_0/LogLevel.h"

#include <array>

namespace QsLogging {

QLatin1String textForLevel(LogLevel level)
{
    switch (level) {
    case LogLevel::Trace:
        return QLatin1String("TRACE");
    case LogLevel::Debug:
        return QLatin1String("DEBUG");
    case LogLevel::Info:
        return QLatin1String("INFO ");
    case LogLevel::Warn:
        return QLatin1String("WARN ");
    case LogLevel::Error:
        return QLatin1String("ERROR");
    case LogLevel::Fatal:
        return QLatin1String("FATAL");
    case LogLevel::Off:
        return QLatin1String("");
    }
    Q_ASSERT_X(false, "QsLogging::textForLevel", "bad log level");
    return QLatin1String("INFO ");
}

LogLevel levelFromText(const QString& text, bool* ok)
{
    constexpr std::array levels = {LogLevel::Trace, LogLevel::Debug, LogLevel::Info,
                                   LogLevel::Warn,  LogLevel::Error, LogLevel::Fatal};
    for (const LogLevel level : levels) {
        if (text.startsWith(textForLevel(level))) {
            if (ok != nullptr) {
                *ok = true;
            }
            return level;
        }
    }
    if (ok != nullptr) {
        *ok = false;
    }
    return LogLevel::Off;
}

} // namespace QsLogging
