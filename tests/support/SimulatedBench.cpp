#include "support/SimulatedBench.h"

namespace {
constexpr std::chrono::milliseconds kRestartTime{40};
} // namespace

SimulatedBench::SimulatedBench()
{
    m_illuminator.setRestartTime(kRestartTime);
    m_illuminator.model().lasers().setWarmupDuration(std::chrono::milliseconds::zero());
    m_illuminator.plug();
}
