#pragma once

#include "BenchTools.h"
#include "Simulator/ModelTypes.h"
#include "SimulatorThread.h"

#include <QString>

#include <functional>
#include <vector>

class Device;

namespace Bench {

/// Exchanges with the device, each against the time that its bytes need at 19200 baud and the device to
/// think.
class LineFigures
{
public:
    explicit LineFigures(Simulator::Image image = Simulator::Image::Application) : m_image(image) {}
    /// Does an exchange that many times, each of them after the line has fallen silent; false when it returns
    /// false, or nothing went over the line.
    bool measure(SimulatorThread& simulator, int times, const std::function<bool()>& exchange);
    /// One row of a table and a note on how many exchanges stand behind it.
    void print(const QString& exchangeName, const char* goal = "<= 1.1 (ratio)") const;

private:
    void add(Seconds exchange, const SimulatorThread::Traffic& traffic);

    Simulator::Image m_image;    ///< that the device runs meanwhile
    std::vector<double> m_times; // milliseconds, as the next one
    std::vector<double> m_lineTimes;
    std::vector<double> m_ratios;
    qint64 m_bytes = 0;
    qsizetype m_lines = 0;
};

/// A whole benchmark, of one exchange with an application that is connected and not polled: its figures, as a
/// table of one row. Returns what main() does: 1 when the device is not found or the exchange returns false.
int measureExchange(int argc, char** argv, const QString& name, int times,
                    const std::function<bool(Device&)>& exchange);

} // namespace Bench
