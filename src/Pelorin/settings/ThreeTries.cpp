#include "settings/ThreeTries.h"

#include <QPointer>

#include <utility>

namespace {
constexpr int tries = 3;
constexpr std::chrono::seconds interval{1};
} // namespace

ThreeTries::ThreeTries(std::function<bool()> attempt, QObject* parent)
    : QObject(parent), m_attempt(std::move(attempt))
{
    m_timer.setSingleShot(true);
    // A coarse one may come 5 % early.
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ThreeTries::tryOnce);
}

void ThreeTries::start()
{
    // Not right here: a try waits for the device, and whoever asks for it may have something to show first.
    startAfter(std::chrono::milliseconds(0));
}

void ThreeTries::startLater()
{
    startAfter(interval);
}

void ThreeTries::stop()
{
    ++m_run;
    m_timer.stop();
}

void ThreeTries::startAfter(std::chrono::milliseconds time)
{
    ++m_run;
    m_left = tries;
    m_timer.start(time);
}

void ThreeTries::tryOnce()
{
    const int run = m_run;
    const QPointer<ThreeTries> self(this);
    --m_left;
    const bool done = m_attempt();
    if (!self) {
        return;
    }
    if (m_follower != nullptr) {
        m_follower->start();
    }
    if (run == m_run && !done && m_left > 0) {
        m_timer.start(interval);
    }
}
