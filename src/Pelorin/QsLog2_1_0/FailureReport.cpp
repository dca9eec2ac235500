#include "QsLog2_1_0/FailureReport.h"

#include <cstdio>

namespace QsLogging {

void reportFailure(const QString& text)
{
    // Where standard error is gone too there is nobody left to tell.
    static_cast<void>(std::fputs(text.toLocal8Bit().constData(), stderr));
    static_cast<void>(std::fflush(stderr));
}

} // namespace QsLogging
