// What the link adds to an exchange of command and reply: a transaction over a pseudo-terminal that answers
// at once, against write, poll and read on an equal one. Prints figures, judges nothing.

#include "BenchTools.h"
#include "BenchWindow.h"
#include "Responder.h"
#include "device/Device.h"

#include <QCoreApplication>
#include <QSerialPort>

#include <functional>
#include <vector>

namespace {
// Short blocks: where the system has the threads run changes all the time, and must befall all alike.
constexpr int blocks = 200;
constexpr int exchangesPerBlock = 10;
const char* const command = "f_mode?\n";
const char* const expectedReply = "f_mode=idle\n";

/// Microseconds per exchange, those of them in which this thread worked, and how many exchanges went wrong.
struct Figures
{
    std::vector<double> times;
    std::vector<double> work;
    int failures = 0;

    void runBlock(const std::function<bool()>& exchange)
    {
        for (int i = 0; i < exchangesPerBlock; ++i) {
            const Bench::Seconds workBefore = Bench::threadProcessorTime();
            const auto start = Bench::Clock::now();
            const bool good = exchange();
            times.push_back(Bench::since(start).count() * 1e6);
            work.push_back((Bench::threadProcessorTime() - workBefore).count() * 1e6);
            failures += good ? 0 : 1;
        }
    }
};

bool connectWithoutPoll(Device& device, const QString& portName)
{
    Bench::listPort(portName);
    device.checkConnectionStatus();
    device.setPolling(false);
    return device.isApplicationConnected();
}

/// The port class and the event loop alone: what of the link's time is theirs.
bool askBarePort(QSerialPort& port)
{
    QByteArray reply;
    port.write(command);
    port.flush();
    while (!reply.endsWith('\n')) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        reply += port.readAll();
    }
    return reply == expectedReply;
}

void print(const char* name, const Figures& measured, const Figures& baseline, const char* goal)
{
    Bench::Table::printRow(QLatin1String(name), Bench::median(measured.times), Bench::median(baseline.times),
                           "us", goal);
    Bench::Table::printRow(QStringLiteral("  of which the asking thread worked"),
                           Bench::median(measured.work), Bench::median(baseline.work), "us", "-");
    Bench::Table::printNote(QStringLiteral("%1 and %2 exchanges, %3 and %4 failed")
                                .arg(measured.times.size())
                                .arg(baseline.times.size())
                                .arg(measured.failures)
                                .arg(baseline.failures));
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const Bench::Responder responder(3);
    Device device;
    QSerialPort barePort(responder.portName(1));
    const Bench::PlainLine line(responder.portName(2));
    if (!connectWithoutPoll(device, responder.portName(0)) || !barePort.open(QIODevice::ReadWrite)) {
        return 1;
    }

    Figures transactions;
    Figures barePortExchanges;
    Figures plainExchanges;
    QString reply;
    const auto transaction = [&] {
        return device.transaction(command, reply) == DeviceResult::Ok &&
               reply == QLatin1String(expectedReply);
    };
    Bench::interleave(
        blocks, [&] { transactions.runBlock(transaction); },
        [&] {
            barePortExchanges.runBlock([&] { return askBarePort(barePort); });
            plainExchanges.runBlock([&] { return line.ask(command) == expectedReply; });
        });
    Bench::Table::printHead();
    print("transaction, write/poll/read loop", transactions, plainExchanges, "<= 2 (ratio)");
    print("  for comparison: bare serial port class, the same loop", barePortExchanges, plainExchanges, "-");
    return 0;
}
