#include "device/DeviceFixture.h"

#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;
using QsLogging::LogLevel;

/// A wait that the end of the program finds; returns the operation's code.
using Wait = std::function<int(Device&, ScriptedBench&)>;
Q_DECLARE_METATYPE(Wait)

class tst_DeviceShutDown : public ConnectedTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void endsEveryWait_data();
    void endsEveryWait();
    void endsWaitsInsideWaits();
    void duringTheOpeningLeavesNothingOpen();
    void leavesNothingRunning();
    void endsTheEventLoopsProgram();
};

namespace {
void row(const char* title, int code, const QList<QByteArray>& lines, const Wait& wait)
{
    QTest::newRow(title) << wait << code << lines;
}

void addExchanges()
{
    row("transaction", -40010, {"temps"}, [](Device& device, ScriptedBench&) {
        QString reply;
        return device.transaction("temps\n", reply);
    });
    row("product record", -40010, {"clear"}, [](Device& device, ScriptedBench&) {
        device.clearFaults();
        ProductConfig record;
        return device.readProductConfig(record);
    });
    row("busy wait", -40010, {"clear"}, [](Device& device, ScriptedBench&) {
        device.clearFaults();
        return device.waitWhileBusy();
    });
    row("drain", -40010, {"a", "b"}, [](Device& device, ScriptedBench& bench) {
        bench.setAnswer("a", "ok\n", 50ms);
        later(10ms, [&device] {
            for (const char* command : {"b\n", "c\n", "d\n"})
                device.sendOrEnqueue(command);
        });
        QString reply;
        device.transaction("a\n", reply);
        return device.drainQueue();
    });
    row("poll tick", 0, {"shutter?"}, [](Device& device, ScriptedBench&) {
        device.pollDevice();
        return 0;
    });
}

void addSwitches()
{
    row("go command", -40010, {"goloader"},
        [](Device& device, ScriptedBench&) { return device.sendGoCommand("goloader"); });
    row("switch to the loader", -40010, {"goloader"},
        [](Device& device, ScriptedBench&) { return device.goLoader(); });
    row("switch that waits for the line", -40010, {"clear"}, [](Device& device, ScriptedBench&) {
        device.clearFaults();
        return device.goApp();
    });
    row("switch that waits for the port", -40010, {"goapp"}, [](Device& device, ScriptedBench& bench) {
        later(100ms, [&bench] { bench.wire().unplug(); });
        return device.goApp();
    });
    row("identification", 0, {"v"}, [](Device& device, ScriptedBench&) {
        device.selectPort({});
        device.checkConnectionStatus();
        return 0;
    });
}
} // namespace

void tst_DeviceShutDown::endsEveryWait_data()
{
    QTest::addColumn<Wait>("wait");
    QTest::addColumn<int>("code");
    QTest::addColumn<QList<QByteArray>>("lines");

    addExchanges();
    addSwitches();
}

void tst_DeviceShutDown::endsEveryWait()
{
    QFETCH(const Wait, wait);
    QFETCH(const QList<QByteArray>, lines);
    m_bench->setResponder([](const QByteArray& line) -> std::optional<Simulator::Answer> {
        return line == "a" ? std::optional<Simulator::Answer>() : Simulator::Answer{};
    });
    const LogCapture log;
    std::optional<Stopwatch> watch;
    later(300ms, [&] {
        m_device->shutDown();
        watch.emplace();
    });
    QTEST(wait(*m_device, *m_bench), "code");
    QVERIFY(watch.has_value()); // it was the shut-down that ended it
    QVERIFY(watch->elapsed() < 200ms);
    QCOMPARE(m_bench->lines(), lines);
    QVERIFY(!m_device->isOpen());
    QVERIFY(!log.contains(QStringLiteral("Write timeout error.")));
    listenFor(100ms);
    QCOMPARE(m_bench->lines(), lines);
}

void tst_DeviceShutDown::endsWaitsInsideWaits()
{
    m_bench->setResponder([](const QByteArray&) { return Simulator::Answer{}; });
    int busyCode = 0;
    int goCode = 0;
    later(50ms, [&] { busyCode = m_device->waitWhileBusy(); });
    later(100ms, [&] { goCode = m_device->goLoader(); });
    later(150ms, [&] { m_device->shutDown(); });
    const Stopwatch watch;
    m_device->pollDevice();
    QVERIFY(watch.elapsed() < 500ms);
    QCOMPARE(busyCode, -40010);
    QCOMPARE(goCode, -40010);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"shutter?"});
}

/// The port reports while it opens, and whoever hears that may end the link.
void tst_DeviceShutDown::duringTheOpeningLeavesNothingOpen()
{
    Device device;
    QObject::connect(&device, &Device::portError, &device, &Device::shutDown);
    m_device->selectPort({}); // gives the port away
    device.checkConnectionStatus();
    QVERIFY(!device.isOpen());
    listenFor(100ms);
    QCOMPARE(m_bench->lines(), QList<QByteArray>());
    Device next;
    QVERIFY(connectWithoutPoll(next)); // nobody holds the port any more
}

void tst_DeviceShutDown::leavesNothingRunning()
{
    m_device->setPolling(true);
    m_device->shutDown();
    const Announcements heard(*m_device);
    const LogCapture log(LogLevel::Trace);
    QCOMPARE(m_device->clearFaults(), -40010);
    QCOMPARE(m_device->goLoader(), -40010);
    QCOMPARE(m_device->waitWhileBusy(), -40010);
    QString reply;
    QCOMPARE(m_device->transaction("v\n", reply), -40010);
    m_device->setPolling(true);
    m_device->checkConnectionStatus();
    m_device->shutDown();
    listenFor(1300ms); // a check and several polls would have come
    QVERIFY(!m_device->isOpen());
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(heard.all, QStringList());
    QCOMPARE(m_bench->received().size(), 0);
}

/// The window closes, the loop is told to quit, and it does although a wait is the innermost one.
void tst_DeviceShutDown::endsTheEventLoopsProgram()
{
    m_bench->setAnswer("goloader", {});
    int code = 0;
    later(10ms, [&] { code = m_device->goLoader(); });
    QEventLoop loop;
    later(100ms, [&] {
        m_device->shutDown();
        loop.quit();
    });
    const Stopwatch watch;
    loop.exec();
    QVERIFY(watch.elapsed() < 500ms);
    QCOMPARE(code, -40010);
}

QTEST_GUILESS_MAIN(tst_DeviceShutDown)
#include "tst_DeviceShutDown.moc"
