#include "Simulator/LaserHead.h"

#include <algorithm>

namespace Simulator {
namespace {
using std::chrono::milliseconds;
using Minutes = std::chrono::minutes;
using FractionalHours = std::chrono::duration<double, std::chrono::hours::period>;

constexpr milliseconds kUsualWarmup = Minutes(1);
constexpr double kMaxLevel = 100.0;
constexpr int kMaxSleepMinutes = 99;
} // namespace

LaserHead::LaserHead() : m_warmupDuration(kUsualWarmup) {}

void LaserHead::start()
{
    m_mode = Mode::Warmup;
    m_warmupLeft = m_warmupDuration;
    m_hostLevels.fill(0.0);
    closeAllShutters();
    acknowledgeFault();
    hostWasActive();
    advance(milliseconds::zero());
}

void LaserHead::stop()
{
    m_mode = Mode::Off;
    closeAllShutters();
}

bool LaserHead::requestRun()
{
    if (hasFault() || (m_mode != Mode::Idle && m_mode != Mode::Run)) {
        return false;
    }
    m_mode = Mode::Run;
    return true;
}

bool LaserHead::requestIdle()
{
    if (m_mode != Mode::Idle && m_mode != Mode::Run) {
        return false;
    }
    m_mode = Mode::Idle;
    return true;
}

void LaserHead::setWarmupDuration(milliseconds duration)
{
    m_warmupDuration = std::max(duration, milliseconds::zero());
    m_warmupLeft = std::min(m_warmupLeft, m_warmupDuration);
    advance(milliseconds::zero());
}

void LaserHead::advance(milliseconds time)
{
    // In pieces, so that a long time counts hours only up to the moment when the lasers went dark.
    while (true) {
        const milliseconds piece = std::min(time, untilNextChange());
        step(piece);
        time -= piece;
        if (time <= milliseconds::zero()) {
            return;
        }
    }
}

milliseconds LaserHead::untilNextChange() const
{
    if (m_mode == Mode::Warmup) {
        return m_warmupLeft;
    }
    if (m_mode == Mode::Run && m_sleepMinutes > 0) {
        return std::max(Minutes(m_sleepMinutes) - m_idleTime, milliseconds::zero());
    }
    return milliseconds::max();
}

void LaserHead::step(milliseconds time)
{
    for (int channel = 0; channel < kChannelCount; ++channel) {
        if (isEmitting(channel)) {
            m_openTime.at(channel) += time;
        }
    }
    if (m_mode == Mode::Warmup) {
        m_warmupLeft -= time;
        if (m_warmupLeft <= milliseconds::zero()) {
            m_mode = Mode::Idle;
        }
    } else if (m_mode == Mode::Run) {
        m_idleTime += time;
        if (m_sleepMinutes > 0 && m_idleTime >= Minutes(m_sleepMinutes)) {
            m_mode = Mode::Idle;
        }
    }
}

void LaserHead::setFault(const QByteArray& text, bool held)
{
    const QByteArray words = text.simplified();
    m_fault = words.isEmpty() ? QByteArray("Unknown cause") : words;
    m_faultHeld = held;
    closeAllShutters();
    if (m_mode == Mode::Run) {
        m_mode = Mode::Idle;
    }
}

void LaserHead::clearFault()
{
    m_fault.clear();
    m_faultHeld = false;
}

void LaserHead::acknowledgeFault()
{
    if (!m_faultHeld) {
        clearFault();
    }
}

void LaserHead::setWarning(const QByteArray& text)
{
    m_warning = text.simplified();
}

bool LaserHead::setHostLevel(int channel, double percent)
{
    if (!(percent >= 0.0 && percent <= kMaxLevel)) { // not-a-number fails every comparison
        return false;
    }
    m_hostLevels.at(channel) = percent;
    return true;
}

double LaserHead::level(int channel) const
{
    return m_intensitySource == Source::Host ? m_hostLevels.at(channel) : m_analogInputs.at(channel);
}

void LaserHead::setShutterSource(Source source)
{
    // What the host set long ago must not open by itself when the inputs let go.
    if (source != m_shutterSource) {
        closeAllShutters();
    }
    m_shutterSource = source;
}

bool LaserHead::setHostShutter(int channel, bool open)
{
    if (m_shutterSource != Source::Host || (open && hasFault())) {
        return false;
    }
    m_hostOpen.at(channel) = open;
    return true;
}

bool LaserHead::isShutterOpen(int channel) const
{
    if (m_mode == Mode::Off || hasFault()) {
        return false;
    }
    if (m_shutterSource == Source::Host) {
        return m_hostOpen.at(channel);
    }
    return m_ttlHigh.at(channel) != m_ttlInverted.at(channel);
}

bool LaserHead::isEmitting(int channel) const
{
    return m_mode == Mode::Run && isShutterOpen(channel);
}

bool LaserHead::setSleepMinutes(int minutes)
{
    if (minutes < 0 || minutes > kMaxSleepMinutes) {
        return false;
    }
    m_sleepMinutes = minutes;
    hostWasActive();
    return true;
}

double LaserHead::hours(int channel) const
{
    return FractionalHours(m_openTime.at(channel)).count();
}

void LaserHead::setHours(int channel, double hours)
{
    m_openTime.at(channel) = std::chrono::round<milliseconds>(FractionalHours(hours));
}

void LaserHead::restoreDefaults()
{
    m_intensitySource = Source::Host;
    setShutterSource(Source::Host);
    closeAllShutters();
    m_hostLevels.fill(0.0);
    m_ttlInverted.fill(false);
    m_sleepMinutes = 0;
    m_speckle = true;
}

} // namespace Simulator
