#include "QsLog2_1_0/Logger.h"

#include <algorithm>
#include <mutex>

namespace QsLogging {
namespace {

thread_local bool isWritingOnThisThread = false;

/// Marks the thread as being inside Logger::write, also when a destination throws.
class WriteMark
{
public:
    WriteMark() { isWritingOnThisThread = true; }
    ~WriteMark() { isWritingOnThisThread = false; }

private:
    Q_DISABLE_COPY_MOVE(WriteMark)
};

} // namespace

Logger& Logger::instance()
{
    static Logger logger;
    return logger;
}

Logger::Logger()
{
    m_destinations.reserve(2); // the log file and the debugger's output
}

Logger::~Logger()
{
    s_level.store(silent, std::memory_order_relaxed);
}

void Logger::setLevel(LogLevel level)
{
    s_level.store(static_cast<int>(level), std::memory_order_relaxed);
}

LogLevel Logger::level() const
{
    return static_cast<LogLevel>(s_level.load(std::memory_order_relaxed));
}

void Logger::addDestination(const DestinationPtr& destination)
{
    Q_ASSERT(destination.data());
    if (destination.isNull()) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    m_destinations.push_back(destination);
}

void Logger::removeDestination(const DestinationPtr& destination)
{
    // Released only after the lock, as the destructor of a destination may want to log.
    DestinationPtr removed;
    const std::lock_guard lock(m_mutex);
    const auto found = std::find(m_destinations.begin(), m_destinations.end(), destination);
    if (found == m_destinations.end()) {
        return;
    }
    removed = *found;
    m_destinations.erase(found);
}

bool Logger::hasDestinationOfType(const QString& typeText) const
{
    const std::lock_guard lock(m_mutex);
    return std::any_of(m_destinations.begin(), m_destinations.end(),
                       [&typeText](const DestinationPtr& entry) { return entry->type() == typeText; });
}

void Logger::write(const QString& message, LogLevel level)
{
    if (isWritingOnThisThread) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    const WriteMark mark;
    for (const DestinationPtr& destination : m_destinations) {
        destination->write(message, level);
    }
}

} // namespace QsLogging
