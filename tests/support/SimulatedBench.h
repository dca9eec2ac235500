#pragma once

#include "Simulator/SimulatedIlluminator.h"
#include "support/PortRegistration.h"

/// An illuminator on the desk of a test: listed as the illuminator's port while plugged, unpaced, warmed up
/// at once after every start and quick to restart. Plugged at once.
class SimulatedBench
{
public:
    SimulatedBench();

    Simulator::SimulatedIlluminator& illuminator() { return m_illuminator; }
    Simulator::Wire& wire() { return m_illuminator.wire(); }
    Simulator::IlluminatorModel& model() { return m_illuminator.model(); }
    PortRegistration& ports() { return m_ports; }
    QString portName() const { return m_illuminator.portName(); }

private:
    Simulator::SimulatedIlluminator m_illuminator;
    PortRegistration m_ports{m_illuminator.wire()};
};
