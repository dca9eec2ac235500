#include "LoopWatch.h"

#include "BenchTools.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>

namespace {
constexpr std::chrono::milliseconds knockEvery{1};
constexpr auto knock = QEvent::User;

double threadWorkMs()
{
    return Bench::threadProcessorTime().count() * 1e3;
}
} // namespace

Bench::LoopWatch::LoopWatch() : m_workedUntil(threadWorkMs()), m_thread([this] { run(); }) {}

Bench::LoopWatch::~LoopWatch()
{
    m_end = true;
    m_thread.join();
}

void Bench::LoopWatch::run()
{
    while (!m_end) {
        std::this_thread::sleep_for(knockEvery);
        if (m_outside) {
            continue;
        }
        m_knockedAt = std::chrono::steady_clock::now();
        m_outside = true;
        QCoreApplication::postEvent(this, new QEvent(knock), Qt::HighEventPriority);
    }
}

bool Bench::LoopWatch::event(QEvent* event)
{
    if (event->type() != knock) {
        return QObject::event(event);
    }
    const std::chrono::duration<double, std::milli> held = std::chrono::steady_clock::now() - m_knockedAt;
    const double worked = threadWorkMs();
    m_longestHold = std::max(m_longestHold, held.count());
    m_longestWork = std::max(m_longestWork, worked - m_workedUntil);
    m_workedUntil = worked;
    ++m_knocks;
    m_outside = false;
    return true;
}
