#pragma once

#include "BenchTools.h"
#include "Simulator/ModelTypes.h"
#include "SimulatorThread.h"

#include <QString>

#include <vector>

namespace Bench {

/// Exchanges with the device, each against the time that its bytes need at 19200 baud and the device to
/// think.
class LineFigures
{
public:
    explicit LineFigures(Simulator::Image image = Simulator::Image::Application) : m_image(image) {}
    void add(Seconds exchange, const SimulatorThread::Traffic& traffic);
    /// One row of a table and a note on how many exchanges stand behind it.
    void print(const QString& exchangeName, const char* goal = "<= 1.1 (ratio)") const;
    qint64 bytes() const { return m_bytes; }

private:
    Simulator::Image m_image;    ///< that the device runs meanwhile
    std::vector<double> m_times; // milliseconds, as the next one
    std::vector<double> m_lineTimes;
    std::vector<double> m_ratios;
    qint64 m_bytes = 0;
    qsizetype m_lines = 0;
};

} // namespace Bench
