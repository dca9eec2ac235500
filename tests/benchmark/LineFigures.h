#pragma once

#include "BenchTools.h"
#include "SimulatorThread.h"

#include <QString>

#include <vector>

namespace Bench {

/// Exchanges with the device, each against the time that its bytes need at 19200 baud and the device to
/// think.
class LineFigures
{
public:
    void add(Seconds exchange, const SimulatorThread::Traffic& traffic);
    /// A table with its head, one row and a note on how many exchanges stand behind it.
    void print(const QString& exchangeName) const;
    qint64 bytes() const { return m_bytes; }

private:
    std::vector<double> m_times; // milliseconds, as the next one
    std::vector<double> m_lineTimes;
    std::vector<double> m_ratios;
    qint64 m_bytes = 0;
    qsizetype m_lines = 0;
};

} // namespace Bench
