#include "QsLog2_1_0/QsLog.h"
#include "device/SerialPorts.h"
#include "support/LogCapture.h"
#include "support/ScriptedBench.h"
#include "support/SimulatedBench.h"

#include <QSerialPort>
#include <QTest>

using namespace std::chrono_literals;

namespace {
QStringList listedNames()
{
    QStringList names;
    const auto ports = SerialPorts::available();
    for (const SerialPortEntry& port : ports) {
        names.append(port.name);
    }
    return names;
}

/// Sends the line through a serial port as the program has it, and returns what comes back.
QByteArray ask(QSerialPort& port, const QByteArray& line)
{
    port.write(line + '\n');
    QByteArray answer;
    const bool came = QTest::qWaitFor([&] {
        answer.append(port.readAll());
        return answer.endsWith('\n');
    });
    return came ? answer : QByteArray();
}
} // namespace

/// The tools of the other tests are worth nothing if they are wrong themselves.
class tst_Benches : public QObject
{
    Q_OBJECT

private slots:
    void portsAreListedWhilePlugged();
    void otherPortsAreListedInTheirPlace();
    void twoBenchesAreListedInOrder();
    void platformListReturns();
    void simulatedBenchTalksToASerialPort();
    void scriptedBenchAnswers();
    void scriptedBenchRecords();
    void logCaptureKeepsLines();
};

void tst_Benches::portsAreListedWhilePlugged()
{
    SimulatedBench bench;
    QVERIFY(bench.illuminator().isPlugged());
    auto ports = SerialPorts::available();
    QCOMPARE(ports.size(), 1);
    QCOMPARE(ports.first().name, bench.portName());
    QVERIFY(ports.first().vendorId == quint16(0x2F26));
    QVERIFY(ports.first().productId == quint16(0x3A98));
    QVERIFY(SerialPorts::isIlluminator(ports.first()));

    bench.illuminator().unplug();
    QCOMPARE(listedNames(), QStringList());
    QVERIFY(bench.illuminator().plug(QStringLiteral("ttyVYR4")));
    bench.ports().setUsbIdentifiers(quint16(0x2F26), std::nullopt);
    ports = SerialPorts::available();
    QCOMPARE(ports.size(), 1);
    QVERIFY(ports.first().name.endsWith(QStringLiteral("/ttyVYR4")));
    QVERIFY(!SerialPorts::isIlluminator(ports.first()));
}

void tst_Benches::otherPortsAreListedInTheirPlace()
{
    ScriptedBench bench;
    bench.ports().addPortInFront({QStringLiteral("ttyS0"), std::nullopt, std::nullopt});
    bench.ports().addPortBehind({QStringLiteral("ttyUSB0"), quint16(0x0403), quint16(0x6001)});
    QCOMPARE(listedNames(),
             (QStringList{QStringLiteral("ttyS0"), bench.portName(), QStringLiteral("ttyUSB0")}));
    bench.ports().removeAddedPorts();
    QCOMPARE(listedNames(), QStringList{bench.portName()});
}

void tst_Benches::twoBenchesAreListedInOrder()
{
    ScriptedBench first;
    {
        const SimulatedBench second;
        QCOMPARE(listedNames(), (QStringList{first.portName(), second.portName()}));
        QVERIFY(first.portName() != second.portName());
    }
    QCOMPARE(listedNames(), QStringList{first.portName()});
}

void tst_Benches::platformListReturns()
{
    const QStringList before = listedNames();
    QString name;
    {
        const SimulatedBench bench;
        name = bench.portName();
        QVERIFY(listedNames().contains(name));
    }
    QCOMPARE(listedNames(), before);
    QVERIFY(!listedNames().contains(name));
}

void tst_Benches::simulatedBenchTalksToASerialPort()
{
    SimulatedBench bench;
    QSerialPort port(bench.portName());
    port.setBaudRate(QSerialPort::Baud19200);
    QVERIFY2(port.open(QIODevice::ReadWrite), qPrintable(port.errorString()));
    QCOMPARE(ask(port, "f_mode?"), QByteArray("f_mode=idle\n"));
    QCOMPARE(ask(port, "goloader"), QByteArray("done\n"));
    QCOMPARE(ask(port, "v"), QByteArray("Loader V1.5.0\n"));
    QCOMPARE(ask(port, "goapp"), QByteArray("done\n"));
    QCOMPARE(ask(port, "f_mode?"), QByteArray("f_mode=idle\n")); // warm at once after every start
}

void tst_Benches::scriptedBenchAnswers()
{
    ScriptedBench bench;
    bench.setAnswer("v", "VYRApp V1.2.3\n");
    bench.setAnswers("fault?", QList<QByteArray>{"FAULT: x\n", "ok\n"});
    bench.setAnswers({{"a", "1\n"}, {"b", "2\n"}});
    bench.setResponder([](const QByteArray& line) -> std::optional<Simulator::Answer> {
        if (line.startsWith("wf:")) {
            return Simulator::Answer{"Wrote\n", 0ms};
        }
        return std::nullopt;
    });
    QSerialPort port(bench.portName());
    QVERIFY(port.open(QIODevice::ReadWrite));
    QCOMPARE(ask(port, "v"), QByteArray("VYRApp V1.2.3\n"));
    QCOMPARE(ask(port, "fault?"), QByteArray("FAULT: x\n"));
    QCOMPARE(ask(port, "fault?"), QByteArray("ok\n"));
    QCOMPARE(ask(port, "fault?"), QByteArray("ok\n"));
    QCOMPARE(ask(port, "a"), QByteArray("1\n"));
    QCOMPARE(ask(port, "b"), QByteArray("2\n"));
    QCOMPARE(ask(port, "wf:S1"), QByteArray("Wrote\n"));
    QCOMPARE(ask(port, "unknown\n\nb"), QByteArray("2\n")); // silence without a default
    bench.setDefaultAnswer("what?\n");
    QCOMPARE(ask(port, "unknown"), QByteArray("what?\n"));
    QCOMPARE(ask(port, "\n\na"), QByteArray("1\n")); // empty lines never get it
}

void tst_Benches::scriptedBenchRecords()
{
    ScriptedBench bench;
    QSerialPort port(bench.portName());
    QVERIFY(port.open(QIODevice::ReadWrite));
    port.write("one\ntwo\n\none\n");
    QVERIFY(bench.waitForLine("one", 2));
    QCOMPARE(bench.lines(), (QList<QByteArray>{"one", "two", "", "one"}));
    QCOMPARE(bench.count("one"), 2);
    QCOMPARE(bench.count("three"), 0);
    QVERIFY(!bench.waitForLine("three", 1, 20ms));
    const auto before = bench.received().last().at;
    QTest::qWait(15); // two lines that far apart must not bear the same time
    port.write("later\n");
    QVERIFY(bench.waitForLine("later"));
    QVERIFY(bench.received().last().at >= before + 14ms);
    bench.clearReceived();
    QVERIFY(bench.received().isEmpty());
}

void tst_Benches::logCaptureKeepsLines()
{
    const auto levelBefore = QsLogging::Logger::instance().level();
    {
        LogCapture log(QsLogging::LogLevel::Debug);
        QsLogging::Logger::instance().write(QStringLiteral("first line"), QsLogging::LogLevel::Info);
        QsLogging::Logger::instance().write(QStringLiteral("second line"), QsLogging::LogLevel::Error);
        QCOMPARE(log.lines(), (QStringList{QStringLiteral("first line"), QStringLiteral("second line")}));
        QCOMPARE(log.lines(QsLogging::LogLevel::Error), QStringList{QStringLiteral("second line")});
        QCOMPARE(log.count(QStringLiteral("line")), 2);
        QCOMPARE(log.count(QStringLiteral("line"), QsLogging::LogLevel::Info), 1);
        QCOMPARE(log.count(QStringLiteral("LINE")), 0);
        QVERIFY(log.contains(QStringLiteral("second")));
        QVERIFY(QsLogging::Logger::instance().level() == QsLogging::LogLevel::Debug);
        log.clear();
        QVERIFY(log.lines().isEmpty());
    }
    QVERIFY(QsLogging::Logger::instance().level() == levelBefore);
    QVERIFY(!QsLogging::Logger::instance().hasDestinationOfType(QStringLiteral("capture")));
}

QTEST_GUILESS_MAIN(tst_Benches)
#include "tst_Benches.moc"
