#include "QsLog2_1_0/FunctorDestination.h"

namespace QsLogging {

FunctorDestination::FunctorDestination(LogFunction function) : m_function(function) {}

void FunctorDestination::write(const QString& message, LogLevel level)
{
    if (m_function != nullptr) {
        m_function(message, level);
    }
    if (level > LogLevel::Trace) {
        Q_EMIT logMessageReady(message, static_cast<int>(level));
    }
}

} // namespace QsLogging
