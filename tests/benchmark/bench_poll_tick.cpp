// How long one poll of the device takes, against the time that its bytes need at 19200 baud and the device
// to think: the rest is what the link and the system add. Prints figures, judges nothing.

#include "BenchTools.h"
#include "BenchWindow.h"
#include "Simulator/IlluminatorModel.h"
#include "SimulatorThread.h"
#include "device/Device.h"

#include <QCoreApplication>

#include <algorithm>
#include <vector>

namespace {
constexpr int ticks = 60;
constexpr double bitsPerByte = 10.0;
constexpr double baudRate = 19200.0;
constexpr std::chrono::milliseconds gapBetweenTicks{50};

/// The device's own time for these lines, told by a device of the same make.
Bench::Seconds thinkTime(const QList<QByteArray>& lines)
{
    Simulator::IlluminatorModel model;
    Bench::Seconds sum{0};
    for (const QByteArray& line : lines) {
        sum += model.handle(line).thinkTime;
    }
    return sum;
}

struct Figures
{
    std::vector<double> tickTimes; // milliseconds, as the next one
    std::vector<double> lineTimes;
    std::vector<double> ratios;
    qint64 bytes = 0;
    qsizetype lines = 0;

    void add(Bench::Seconds tick, const Bench::SimulatorThread::Traffic& traffic)
    {
        const qint64 tickBytes = traffic.bytesReceived + traffic.bytesSent;
        const Bench::Seconds onLine(static_cast<double>(tickBytes) * bitsPerByte / baudRate);
        const double line = (onLine + thinkTime(traffic.lines)).count() * 1e3;
        tickTimes.push_back(tick.count() * 1e3);
        lineTimes.push_back(line);
        ratios.push_back(tickTimes.back() / line);
        bytes += tickBytes;
        lines += traffic.lines.size();
    }
};

void print(const Figures& figures)
{
    Bench::Table::printHead();
    Bench::Table::printRow(QStringLiteral("poll tick, time of its bytes and of the device"),
                           Bench::median(figures.tickTimes), Bench::median(figures.lineTimes), "ms",
                           "<= 1.1 (ratio)");
    Bench::Table::printNote(
        QStringLiteral("%1 ticks with %2 queries and %3 bytes; ratio of a tick: median %4, "
                       "worst %5")
            .arg(figures.ratios.size())
            .arg(figures.lines)
            .arg(figures.bytes)
            .arg(Bench::median(figures.ratios), 0, 'f', 4)
            .arg(*std::max_element(figures.ratios.begin(), figures.ratios.end()), 0, 'f', 4));
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    Bench::SimulatorThread simulator;
    Bench::listPort(simulator.portName());
    Device device;
    device.checkConnectionStatus();
    device.setPolling(false);
    if (!device.isApplicationConnected()) {
        return 1;
    }

    Figures figures;
    for (int i = 0; i < ticks; ++i) {
        Bench::pause(gapBetweenTicks);
        simulator.takeTraffic();
        const Bench::Seconds tick = Bench::timed([&device] { device.pollDevice(); });
        figures.add(tick, simulator.takeTraffic());
    }
    print(figures);
    return figures.bytes > 0 ? 0 : 1;
}
