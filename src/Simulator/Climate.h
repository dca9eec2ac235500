#pragma once

#include "Simulator/ModelTypes.h"

#include <chrono>

namespace Simulator {

/// What the service readings show: temperatures in degrees Celsius, fan and heater in percent of their
/// power, the laser current in amperes.
struct Readings
{
    double necsel = 0.0;
    double novalum1 = 0.0;
    double novalum2 = 0.0;
    double laserFan = 0.0;
    double heater = 0.0;
    double laserCurrent = 0.0;
};

/// Heat in the housing. Readings move towards what the mode and the light demand, with a small slow ripple
/// so that nothing stands still. No chance is involved: the same past gives the same readings.
class Climate
{
public:
    Climate();

    /// `lightPercent` is the sum of the levels of all channels that emit, 0 to 800.
    void advance(std::chrono::milliseconds time, Mode mode, double lightPercent);
    Readings readings() const;

private:
    Readings m_smooth;
    std::chrono::milliseconds m_age{0};
};

} // namespace Simulator
