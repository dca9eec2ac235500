#include "Simulator/Climate.h"

#include <cmath>

namespace Simulator {
namespace {
constexpr double kRoomTemperature = 22.0;
constexpr double kPi = 3.14159265358979323846;
constexpr double kRippleDegrees = 0.15;
constexpr double kRippleSeconds = 40.0;
constexpr double kHeatSeconds = 45.0; // time constant of the modules' temperatures
constexpr double kDriveSeconds = 1.5; // time constant of what the board drives: fan, heater, current

/// Where the readings would end if nothing changed any more.
Readings goal(Mode mode, double lightPercent)
{
    switch (mode) {
    case Mode::Off:
        return {kRoomTemperature, kRoomTemperature, kRoomTemperature, 0.0, 0.0, 0.0};
    case Mode::Warmup:
        return {30.0, 28.0, 28.0, 15.0, 80.0, 0.5};
    case Mode::Idle:
        return {31.0, 28.5, 28.0, 25.0, 20.0, 1.2};
    case Mode::Run:
        return {33.0 + lightPercent * 0.01,
                30.0 + lightPercent * 0.008,
                29.5 + lightPercent * 0.008,
                40.0 + lightPercent * 0.06,
                5.0,
                2.0 + lightPercent * 0.012};
    }
    return {};
}

void approach(double& value, double target, double seconds, double timeConstant)
{
    value += (target - value) * (1.0 - std::exp(-seconds / timeConstant));
}
} // namespace

Climate::Climate() : m_smooth(goal(Mode::Off, 0.0)) {}

void Climate::advance(std::chrono::milliseconds time, Mode mode, double lightPercent)
{
    const double seconds = std::chrono::duration<double>(time).count();
    const Readings target = goal(mode, lightPercent);
    approach(m_smooth.necsel, target.necsel, seconds, kHeatSeconds);
    approach(m_smooth.novalum1, target.novalum1, seconds, kHeatSeconds);
    approach(m_smooth.novalum2, target.novalum2, seconds, kHeatSeconds);
    approach(m_smooth.laserFan, target.laserFan, seconds, kDriveSeconds);
    approach(m_smooth.heater, target.heater, seconds, kDriveSeconds);
    approach(m_smooth.laserCurrent, target.laserCurrent, seconds, kDriveSeconds);
    m_age += time;
}

Readings Climate::readings() const
{
    const double turns = std::chrono::duration<double>(m_age).count() / kRippleSeconds;
    const double ripple = kRippleDegrees * std::sin(2.0 * kPi * turns);
    Readings readings = m_smooth;
    readings.necsel += ripple;
    readings.novalum1 -= ripple;
    readings.novalum2 += ripple / 2.0;
    return readings;
}

} // namespace Simulator
