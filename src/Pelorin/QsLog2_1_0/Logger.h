#pragma once

#include "QsLog2_1_0/Destination.h"
#include "QsLog2_1_0/LogLevel.h"

#include <QMutex>

#include <atomic>
#include <vector>

namespace QsLogging {

bool isLogged(LogLevel level);

/// The process-wide list of destinations and the level that decides which statements are made at all.
class Logger
{
public:
    /// Created on the first call, from whichever thread; destroyed at process exit, after which nothing
    /// is logged any more.
    static Logger& instance();

    /// Statements below `level` are not evaluated from now on. Takes no lock. Initially Info.
    void setLevel(LogLevel level);
    LogLevel level() const;

    /// Appends a destination; a null pointer is a mistake that trips an assertion and is otherwise ignored.
    void addDestination(const DestinationPtr& destination);
    /// Removes the first entry that is this very object; without one nothing happens.
    void removeDestination(const DestinationPtr& destination);
    /// True if any destination's type() equals `typeText`.
    bool hasDestinationOfType(const QString& typeText) const;

    /// Hands one finished line to every destination in the order they were added, whatever its level:
    /// filtering is the caller's. An exception of a destination passes through. What a destination logs
    /// while it is written to is dropped, because it would wait for itself.
    void write(const QString& message, LogLevel level);

private:
    Logger();
    ~Logger();
    Q_DISABLE_COPY_MOVE(Logger)

    friend bool isLogged(LogLevel level);

    /// Above every level: the state after the logger is gone.
    static constexpr int silent = static_cast<int>(LogLevel::Off) + 1;

    // Outlives the destinations, which are declared after it; the basic one locks without a call.
    mutable QBasicMutex m_mutex;
    // Static and constant-initialised, so that a filtered statement costs one load and no call, and so that
    // it may still be asked when static objects are torn down.
    static inline std::atomic<int> s_level{static_cast<int>(LogLevel::Info)};
    std::vector<DestinationPtr> m_destinations;
};

/// True if the logger's level lets statements of `level` through.
inline bool isLogged(LogLevel level)
{
    return Logger::s_level.load(std::memory_order_relaxed) <= static_cast<int>(level);
}

} // namespace QsLogging
