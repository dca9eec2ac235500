// How long the system record takes to read, against the time that its bytes need at 19200 baud and the device
// to think: the rest is what the link and the system add. Prints figures, judges nothing.

#include "BenchWindow.h"
#include "LineFigures.h"
#include "device/Device.h"

#include <QCoreApplication>

namespace {
constexpr int readings = 20;
constexpr std::chrono::milliseconds gapBetweenReadings{50};
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    Bench::SimulatorThread simulator;
    Bench::listPort(simulator.portName());
    Device device;
    device.checkConnectionStatus();
    device.setPolling(false);

    Bench::LineFigures figures;
    for (int i = 0; i < readings; ++i) {
        Bench::pause(gapBetweenReadings);
        simulator.takeTraffic();
        SystemConfigBytes record{};
        int code = DeviceResult::NotOpen;
        const Bench::Seconds time = Bench::timed([&] { code = device.readSystemConfig(record.data()); });
        if (code != DeviceResult::Ok) {
            return 1;
        }
        figures.add(time, simulator.takeTraffic());
    }
    Bench::Table::printHead();
    figures.print(QStringLiteral("system record"));
    return 0;
}
