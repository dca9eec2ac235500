#include "LineFigures.h"

#include "BenchWindow.h"
#include "Simulator/IlluminatorModel.h"
#include "device/Device.h"

#include <QCoreApplication>

#include <algorithm>

namespace {
constexpr double bitsPerByte = 10.0;
constexpr double baudRate = 19200.0;
constexpr std::chrono::milliseconds gapBetweenExchanges{50};

/// The device's own time for these lines, told by a device of the same make.
Bench::Seconds thinkTime(const QList<QByteArray>& lines, Simulator::Image image)
{
    Simulator::IlluminatorModel model;
    model.boot(image, {});
    Bench::Seconds sum{0};
    for (const QByteArray& line : lines) {
        sum += model.handle(line).thinkTime;
    }
    return sum;
}
} // namespace

bool Bench::LineFigures::measure(SimulatorThread& simulator, int times, const std::function<bool()>& exchange)
{
    for (int i = 0; i < times; ++i) {
        pause(gapBetweenExchanges);
        simulator.takeTraffic();
        bool done = false;
        const Seconds time = timed([&] { done = exchange(); });
        if (!done) {
            return false;
        }
        add(time, simulator.takeTraffic());
    }
    return m_bytes > 0;
}

void Bench::LineFigures::add(Seconds exchange, const SimulatorThread::Traffic& traffic)
{
    const qint64 bytes = traffic.bytesReceived + traffic.bytesSent;
    const Seconds onLine(static_cast<double>(bytes) * bitsPerByte / baudRate);
    const double line = (onLine + thinkTime(traffic.lines, m_image)).count() * 1e3;
    m_times.push_back(exchange.count() * 1e3);
    m_lineTimes.push_back(line);
    m_ratios.push_back(m_times.back() / line);
    m_bytes += bytes;
    m_lines += traffic.lines.size();
}

void Bench::LineFigures::print(const QString& exchangeName, const char* goal) const
{
    Table::printRow(exchangeName + QStringLiteral(", time of its bytes and of the device"), median(m_times),
                    median(m_lineTimes), "ms", goal);
    if (m_ratios.empty()) {
        return;
    }
    Table::printNote(
        QStringLiteral("%1 exchanges with %2 lines and %3 bytes; ratio of one: median %4, worst %5")
            .arg(m_ratios.size())
            .arg(m_lines)
            .arg(m_bytes)
            .arg(median(m_ratios), 0, 'f', 4)
            .arg(*std::max_element(m_ratios.begin(), m_ratios.end()), 0, 'f', 4));
}

int Bench::measureExchange(int argc, char** argv, const QString& name, int times,
                           const std::function<bool(Device&)>& exchange)
{
    const QCoreApplication application(argc, argv);
    SimulatorThread simulator;
    listPort(simulator.portName());
    Device device;
    device.checkConnectionStatus();
    device.setPolling(false);
    LineFigures figures;
    if (!device.isApplicationConnected() ||
        !figures.measure(simulator, times, [&] { return exchange(device); })) {
        return 1;
    }
    Table::printHead();
    figures.print(name);
    return 0;
}
