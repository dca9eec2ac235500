// How long one poll of the device takes, against the time that its bytes need at 19200 baud and the device
// to think: the rest is what the link and the system add. Prints figures, judges nothing.

#include "BenchWindow.h"
#include "LineFigures.h"
#include "device/Device.h"

#include <QCoreApplication>

namespace {
constexpr int ticks = 60;
constexpr std::chrono::milliseconds gapBetweenTicks{50};
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

    Bench::LineFigures figures;
    for (int i = 0; i < ticks; ++i) {
        Bench::pause(gapBetweenTicks);
        simulator.takeTraffic();
        const Bench::Seconds tick = Bench::timed([&device] { device.pollDevice(); });
        figures.add(tick, simulator.takeTraffic());
    }
    Bench::Table::printHead();
    figures.print(QStringLiteral("poll tick"));
    return figures.bytes() > 0 ? 0 : 1;
}
