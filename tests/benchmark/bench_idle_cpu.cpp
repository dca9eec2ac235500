// What the connected program costs while nobody touches it, and what waiting for a reply costs: processor
// time, against the same polls and waits done by spinning. Prints figures, judges nothing.

#include "BenchTools.h"
#include "BenchWindow.h"
#include "SimulatorProcess.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"

#include <QCoreApplication>
#include <QSerialPort>

#include <algorithm>
#include <array>
#include <vector>

namespace {
constexpr std::chrono::seconds idleTime{20};
constexpr std::chrono::seconds spinningTime{10};
constexpr std::chrono::milliseconds pollInterval{250};
constexpr std::chrono::milliseconds replyLimit{1500};
constexpr std::chrono::milliseconds commandTakesEffect{300};
constexpr int silentRounds = 3;

/// In percent of one core, over a time in which the program is left alone.
double idlePercent(Device& device)
{
    int replies = 0;
    int polls = 0;
    QObject context;
    QObject::connect(&device, &Device::receivedDataFromDevice, &context, [&](const QByteArray& data) {
        ++replies;
        polls += data.startsWith("f_mode=") ? 1 : 0;
    });
    const auto start = Bench::Clock::now();
    const Bench::Seconds used = Bench::processorTimed([] { Bench::pause(idleTime); });
    const Bench::Seconds time = Bench::since(start);
    Bench::Table::printNote(QStringLiteral("%1 polls with %2 replies in %3 s")
                                .arg(polls)
                                .arg(replies)
                                .arg(time.count(), 0, 'f', 2));
    return 100.0 * used.count() / time.count();
}

void spinFor(std::chrono::milliseconds time)
{
    const auto start = Bench::Clock::now();
    while (Bench::since(start) < time) {
        QCoreApplication::processEvents();
    }
}

void askSpinning(QSerialPort& port, const char* query)
{
    port.write(query);
    port.flush();
    QByteArray reply;
    const auto start = Bench::Clock::now();
    while (!reply.endsWith('\n') && Bench::since(start) < replyLimit) {
        QCoreApplication::processEvents();
        reply += port.readAll();
    }
}

/// The same polls, at the same interval, by a link that spins while it waits for a reply; -1 without a port.
double spinningPercent(const QString& portName)
{
    constexpr std::array<const char*, 4> queries{"shutter?\n", "fault?\n", "f_mode?\n", "int_mode?\n"};
    QSerialPort port(portName);
    port.setBaudRate(QSerialPort::Baud19200);
    if (!port.open(QIODevice::ReadWrite)) {
        return -1.0;
    }
    const auto start = Bench::Clock::now();
    const Bench::Seconds used = Bench::processorTimed([&] {
        while (Bench::since(start) < spinningTime) {
            const auto tick = Bench::Clock::now();
            for (const char* query : queries) {
                askSpinning(port, query);
            }
            const auto left = pollInterval - (Bench::Clock::now() - tick);
            const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(left);
            Bench::pause(std::max(rest, std::chrono::milliseconds(0)));
        }
    });
    return 100.0 * used.count() / Bench::since(start).count();
}

/// Milliseconds of processor time for one wait of 1500 ms, and for as long a spin.
void compareSilence(Device& device, Bench::SimulatorProcess& simulator)
{
    device.setPolling(false);
    device.waitWhileBusy();
    simulator.command("noreply * forever");
    Bench::pause(commandTakesEffect);
    std::vector<double> waiting;
    std::vector<double> spinning;
    bool silent = true;
    Bench::interleave(
        silentRounds,
        [&] {
            QString reply;
            const auto used = Bench::processorTimed(
                [&] { silent = silent && device.transaction("f_mode?\n", reply) == DeviceResult::NoReply; });
            waiting.push_back(used.count() * 1e3);
        },
        [&] {
            const auto used = Bench::processorTimed([] { spinFor(replyLimit); });
            spinning.push_back(used.count() * 1e3);
        });
    simulator.command("good");
    if (!silent) {
        Bench::Table::printNote(QStringLiteral("NOT VALID: the device was to be silent and was not"));
    }
    Bench::Table::printRow(QStringLiteral("CPU of a 1500 ms wait for a silent device, spinning"),
                           Bench::median(waiting), Bench::median(spinning), "ms", "<= 0.02 (ratio)");
}

bool measure(PelorinMainWindow& window)
{
    Bench::SimulatorProcess simulator(true);
    const QString port = simulator.portName();
    Bench::listPort(port);
    if (port.isEmpty() || !Bench::waitUntilSettled(window)) {
        return false;
    }
    const double idle = idlePercent(*window.device());
    compareSilence(*window.device(), simulator);

    Bench::listPort({});
    if (!Bench::waitUntil([&window] { return !window.device()->isOpen(); })) {
        return false;
    }
    const double spinning = spinningPercent(port);
    Bench::Table::printRow(QStringLiteral("CPU while connected and polling, spinning in each wait"), idle,
                           spinning, "%", "<= 2 %");
    return spinning > 0.0;
}
} // namespace

int main(int argc, char** argv)
{
    const Bench::Home home;
    Bench::listPort({});
    Bench::Table::printHead();
    return Bench::runInProgram(argc, argv, measure);
}
