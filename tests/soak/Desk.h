#pragma once

#include "Simulator/SimulatedIlluminator.h"
#include "support/PortRegistration.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QTime>

class PelorinMainWindow;

namespace Soak {

/// The desk with the illuminator on it, and the comparison of what the window shows with what it is in.
class Desk
{
public:
    Desk();

    Simulator::SimulatedIlluminator& illuminator() { return m_illuminator; }
    Simulator::LaserHead& lasers() { return m_illuminator.model().lasers(); }
    Simulator::Wire& wire() { return m_illuminator.wire(); }
    /// Polls that the device has answered, by the question that each of them asks once.
    int polls() const { return m_polls; }

    /// What went over it last, in both directions, with the time of day.
    QStringList lastLines() const;

    /// What the window shows otherwise than the device is; empty when all is as it must be.
    QString difference(PelorinMainWindow& window);

private:
    void noteLine(const char* arrow, const QByteArray& bytes);
    QString expectedWord() const;
    QString channelDifference(PelorinMainWindow& window, int channel);

    Simulator::SimulatedIlluminator m_illuminator;
    PortRegistration m_ports{m_illuminator.wire()};
    int m_polls = 0;
    QList<QPair<QTime, QByteArray>> m_lastLines;
};

} // namespace Soak
