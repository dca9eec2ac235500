#pragma once

#include <QObject>

#include <atomic>
#include <chrono>
#include <thread>

namespace Bench {

/// Knocks at the event loop of the thread that made it, one knock at a time, and keeps the longest time until
/// it was let in. A loop that waits is there at once, nested loops included; one that works keeps it waiting.
class LoopWatch : public QObject
{
public:
    LoopWatch();
    ~LoopWatch() override;

    LoopWatch(const LoopWatch&) = delete;
    LoopWatch& operator=(const LoopWatch&) = delete;
    LoopWatch(LoopWatch&&) = delete;
    LoopWatch& operator=(LoopWatch&&) = delete;

    /// In milliseconds: the longest wait, and the most that the thread worked between two knocks. The first
    /// contains what other processes took from it, the second does not.
    double longestHold() const { return m_longestHold; }
    double longestWork() const { return m_longestWork; }
    int knocks() const { return m_knocks; }

    bool event(QEvent* event) override;

private:
    void run();

    std::atomic<bool> m_end{false};
    std::atomic<bool> m_outside{false};
    std::chrono::steady_clock::time_point m_knockedAt;
    double m_longestHold = 0.0;
    double m_longestWork = 0.0;
    double m_workedUntil = 0.0;
    int m_knocks = 0;
    std::thread m_thread;
};

} // namespace Bench
