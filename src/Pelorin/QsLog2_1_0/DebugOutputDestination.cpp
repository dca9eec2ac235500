#include "QsLog2_1_0/DebugOutputDestination.h"

#include <cstdio>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

namespace QsLogging {

void DebugOutputDestination::write(const QString& message, LogLevel /*level*/)
{
#ifdef Q_OS_WIN
    OutputDebugStringW(reinterpret_cast<const wchar_t*>(message.utf16()));
    OutputDebugStringW(L"\n");
#endif
    static_cast<void>(std::fprintf(stderr, "%s\n", qPrintable(message)));
    static_cast<void>(std::fflush(stderr));
}

} // namespace QsLogging
