// Whether the program grows while it polls: memory, open files and objects before and after ten thousand
// polls. Prints figures, judges nothing.

#include "BenchTools.h"
#include "BenchWindow.h"
#include "SimulatorProcess.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"

#include <QApplication>
#include <QDir>
#include <QFile>

#include <malloc.h>
#include <unistd.h>

namespace {
constexpr int warmUpTicks = 500;
constexpr int ticks = 10'000;

struct Sizes
{
    double residentKib = 0;
    double openFiles = 0;
    double objects = 0;
};

/// After what the allocator only holds in reserve was given back.
double residentKib()
{
    ::malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QByteArray pages = file.readLine().split(' ').value(1);
    return pages.toDouble() * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1024.0;
}

/// The link is no child of the window, the application's own objects are children of neither.
Sizes sizesNow(const PelorinMainWindow& window)
{
    const QDir files(QStringLiteral("/proc/self/fd"));
    const auto entries = files.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    const auto objects = window.findChildren<QObject*>().size() +
                         window.device()->findChildren<QObject*>().size() +
                         qApp->findChildren<QObject*>().size();
    return {residentKib(), static_cast<double>(entries.size()), static_cast<double>(objects)};
}

/// How many polls were answered.
int poll(Device& device, int times)
{
    int answered = 0;
    QObject context;
    QObject::connect(&device, &Device::receivedDataFromDevice, &context,
                     [&](const QByteArray& data) { answered += data.startsWith("f_mode=") ? 1 : 0; });
    for (int i = 0; i < times; ++i) {
        device.pollDevice();
    }
    return answered;
}

bool measure(PelorinMainWindow& window)
{
    Bench::SimulatorProcess simulator(false);
    simulator.command("warmup 0");
    Bench::listPort(simulator.portName());
    if (simulator.portName().isEmpty() || !Bench::waitUntilSettled(window)) {
        return false;
    }
    poll(*window.device(), warmUpTicks);

    const Sizes before = sizesNow(window);
    const int answered = poll(*window.device(), ticks);
    const Sizes after = sizesNow(window);
    Bench::Table::printRow(QStringLiteral("memory after 10,000 polls, before"), after.residentKib,
                           before.residentKib, "KiB", "no growth");
    Bench::Table::printRow(QStringLiteral("open files after 10,000 polls, before"), after.openFiles,
                           before.openFiles, "", "no growth");
    Bench::Table::printRow(QStringLiteral("objects after 10,000 polls, before"), after.objects,
                           before.objects, "", "no growth");
    Bench::Table::printNote(QStringLiteral("%1 of %2 polls were answered").arg(answered).arg(ticks));
    return answered > 0;
}
} // namespace

int main(int argc, char** argv)
{
    const Bench::Home home;
    Bench::listPort({});
    Bench::Table::printHead();
    return Bench::runInProgram(argc, argv, measure);
}
