#include "Simulator/LaserController.h"

#include <QStringBuilder>

#include <algorithm>

namespace Simulator {
namespace {
constexpr int kProgressStepPercent = 20;
constexpr int kComplete = 100;
} // namespace

void LaserController::startUpdate(std::chrono::milliseconds duration)
{
    m_pendingUpdate.reset();
    m_updating = true;
    m_duration = std::max(duration, std::chrono::milliseconds(1));
    m_elapsed = std::chrono::milliseconds::zero();
    m_toldPercent = -1;
}

void LaserController::applicationStarted()
{
    if (m_pendingUpdate) {
        startUpdate(*m_pendingUpdate);
    }
}

void LaserController::applicationStopped()
{
    if (m_updating) {
        m_pendingUpdate = m_duration;
    }
    m_updating = false;
}

int LaserController::percentDone() const
{
    return static_cast<int>(std::min(m_elapsed, m_duration) * kComplete / m_duration);
}

QByteArray LaserController::progressText() const
{
    return "Firmware Update of laser controller " + QByteArray::number(percentDone()) + '%';
}

bool LaserController::advance(std::chrono::milliseconds time, QList<QByteArray>& messages)
{
    if (!m_updating) {
        return false;
    }
    m_elapsed += time;
    const int step = percentDone() / kProgressStepPercent * kProgressStepPercent;
    if (step > m_toldPercent) {
        m_toldPercent = step;
        messages.append(progressText() + '\n');
    }
    if (m_elapsed < m_duration) {
        return false;
    }
    m_updating = false;
    return true;
}

} // namespace Simulator
