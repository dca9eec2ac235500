#include "device/DeviceFixture.h"

#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;
using QsLogging::LogLevel;

/// What the link is doing when the cable is pulled; returns the operation's code.
using Activity = std::function<int(Device&, ScriptedBench&)>;
Q_DECLARE_METATYPE(Activity)
Q_DECLARE_METATYPE(Milliseconds)

class tst_DeviceUnplug : public PluggedTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void unplugged_data();
    void unplugged();
    void unpluggedDuringIdentification_data();
    void unpluggedDuringIdentification();
    void unpluggedInTheListenersOfTheConnection();
    void replugged_data();
    void replugged();
    void vanishesAHundredTimes();
    void twoDevices();
    void errorTextSurvivesTheClosing();
};

namespace {
/// The whole second after is listened to where the link was left to itself, less where it was busy.
void row(const char* title, int code, const Activity& activity)
{
    QTest::newRow(title) << activity << code << (code == 0 ? 1000ms : 400ms);
}

void pull(ScriptedBench& bench, Milliseconds delay)
{
    later(delay, [&bench] { bench.wire().unplug(); });
}

void addExchanges()
{
    row("idle", 0, [](Device& device, ScriptedBench& bench) {
        pull(bench, 10ms);
        return waitUntil([&device] { return !device.isOpen(); }) ? 0 : 1;
    });
    row("idle after an exchange", 0, [](Device& device, ScriptedBench& bench) {
        device.sendCommand("temps");
        pull(bench, 100ms);
        return waitUntil([&device] { return !device.isOpen(); }) ? 0 : 1;
    });
    row("transaction", -40010, [](Device& device, ScriptedBench& bench) {
        bench.setAnswer("temps", {});
        pull(bench, 50ms);
        QString reply;
        return device.transaction("temps\n", reply);
    });
    row("answer just sent", -40010, [](Device& device, ScriptedBench& bench) {
        bench.setResponder([&bench](const QByteArray&) {
            bench.wire().unplug();
            return Simulator::Answer{"lost\n", {}};
        });
        QString reply;
        return device.transaction("temps\n", reply);
    });
    row("written to a device that is gone", -40010, [](Device& device, ScriptedBench& bench) {
        bench.wire().unplug();
        QString reply;
        return device.transaction("temps\n", reply);
    });
    row("set on a device that is gone", -40010, [](Device& device, ScriptedBench& bench) {
        bench.wire().unplug();
        return device.clearFaults();
    });
}

void addLongerWaits()
{
    row("busy wait", -40010, [](Device& device, ScriptedBench& bench) {
        bench.setAnswer("clear", {});
        device.clearFaults();
        pull(bench, 50ms);
        return device.waitWhileBusy();
    });
    row("switch of the image", -40010, [](Device& device, ScriptedBench& bench) {
        bench.setAnswer("goloader", {});
        pull(bench, 50ms);
        return device.sendGoCommand("goloader");
    });
    row("drain", -40010, [](Device& device, ScriptedBench& bench) {
        bench.setAnswer("temps", "temps:\n", 30ms);
        bench.setAnswer("speckle=on", {});
        later(5ms, [&device] {
            device.clearFaults();
            device.setSpeckle(true);
            device.setSpeckle(false);
        });
        device.sendCommand("temps");
        pull(bench, 50ms);
        return device.drainQueue();
    });
}

void addPolls()
{
    for (const char* line : {"shutter?", "fault?", "f_mode?", "int_mode?"}) {
        row(QByteArray("poll at " + QByteArray(line)).constData(), 0,
            [line](Device& device, ScriptedBench& bench) {
                bench.setAnswer(line, {});
                pull(bench, 50ms);
                device.pollDevice();
                return device.isOpen() ? 1 : 0;
            });
    }
    row("running poll", 0, [](Device& device, ScriptedBench& bench) {
        device.setPolling(true);
        if (!bench.waitForLine("int_mode?", 2))
            return 1;
        bench.wire().unplug();
        return waitUntil([&device] { return !device.isOpen(); }) ? 0 : 1;
    });
}
} // namespace

void tst_DeviceUnplug::unplugged_data()
{
    QTest::addColumn<Activity>("activity");
    QTest::addColumn<int>("code");
    QTest::addColumn<Milliseconds>("quiet");

    addExchanges();
    addLongerWaits();
    addPolls();
}

/// One line of the log, one announcement, no storm, no processor time afterwards.
void tst_DeviceUnplug::unplugged()
{
    QFETCH(const Activity, activity);
    QFETCH(const Milliseconds, quiet);
    Device device;
    QVERIFY(connectWithoutPoll(device));
    const QString port = device.portName();
    const Announcements heard(device);
    const LogCapture log(LogLevel::Debug);
    const Stopwatch watch;
    QTEST(activity(device, *m_bench), "code");
    QVERIFY(watch.elapsed() < 1200ms);
    QVERIFY(!device.isOpen());
    QCOMPARE(device.deviceMode(), DeviceMode::NotIdentified);
    m_bench->clearReceived();
    const auto before = cpuTime();
    listenFor(quiet);
    const auto used = cpuTime() - before;
    qInfo("%d ms of processor time in the %d ms after", int(used.count()), int(quiet.count()));
    QVERIFY2(used < quiet / 10, qPrintable(QStringLiteral("%1 ms of processor time").arg(used.count())));
    QCOMPARE(errorMessages(log), QStringList{QStringLiteral("Serial port error ResourceError")});
    QCOMPARE(log.count(QStringLiteral("**Port Closed**")), 1);
    QCOMPARE(heard.count(QStringLiteral("disconnected ") + port), 1);
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 1);
    QCOMPARE(heard.count(QStringLiteral("error")), 1);
    QCOMPARE(heard.count(QStringLiteral("connected")), 0);
    QCOMPARE(m_bench->received().size(), 0);
}

void tst_DeviceUnplug::unpluggedDuringIdentification_data()
{
    QTest::addColumn<QByteArray>("line");

    for (const char* line : {"v", "reset_cause", "v?a", "v?l", "isloadervalid", "isappvalid",
                             "necsel_controller_ver", "necsel_controller_sn"})
        QTest::newRow(line) << QByteArray(line);
}

void tst_DeviceUnplug::unpluggedDuringIdentification()
{
    QFETCH(const QByteArray, line);
    m_bench->setAnswer(line, {});
    connect(&m_bench->wire(), &Simulator::Wire::lineReceived, this, [&](const QByteArray& received) {
        if (received == line)
            later(20ms, [this] { m_bench->wire().unplug(); });
    });
    Device device;
    const Announcements heard(device);
    const LogCapture log;
    const Stopwatch watch;
    device.checkConnectionStatus();
    QVERIFY(watch.elapsed() < 500ms);
    QVERIFY(!device.isOpen());
    QCOMPARE(device.deviceMode(), DeviceMode::NotIdentified);
    listenFor(300ms);
    QCOMPARE(errorMessages(log), QStringList{QStringLiteral("Serial port error ResourceError")});
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 1);
    QCOMPARE(heard.count(QStringLiteral("connected")), 0);
    QCOMPARE(log.count(QStringLiteral("Unable to get")) + log.count(QStringLiteral("CRC")), 0);
    QCOMPARE(m_bench->lines().last(), line); // nothing was asked after that
}

/// Whoever heard of the connection may be waiting for a reply when it ends.
void tst_DeviceUnplug::unpluggedInTheListenersOfTheConnection()
{
    m_bench->setAnswer("temps", {});
    Device device;
    const Announcements heard(device);
    int code = 0;
    connect(&device, &Device::deviceConnected, this, [&] {
        later(20ms, [this] { m_bench->wire().unplug(); });
        QString reply;
        code = device.transaction("temps\n", reply);
    });
    device.checkConnectionStatus();
    QCOMPARE(code, -40010);
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 1);
    m_bench->clearReceived();
    listenFor(400ms);
    QCOMPARE(m_bench->received().size(), 0);
}

void tst_DeviceUnplug::replugged_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("under the same name") << "ttyVYR0";
    QTest::newRow("under another name") << "ttyVYR1";
}

void tst_DeviceUnplug::replugged()
{
    QFETCH(const QString, name);
    Device device;
    device.checkConnectionStatus();
    QVERIFY(m_bench->waitForLine("shutter?"));
    const Announcements heard(device);
    m_bench->wire().unplug();
    QVERIFY(waitUntil([&] { return heard.count(QStringLiteral("disconnected")) == 1; }, 1000ms));
    QVERIFY(m_bench->wire().plug(name));
    m_bench->clearReceived();
    QVERIFY(waitUntil([&] { return heard.count(QStringLiteral("connected")) == 1; }, 2000ms));
    QVERIFY(device.isApplicationConnected());
    QCOMPARE(device.portName(), m_bench->portName());
    QVERIFY(device.portName().endsWith(name));
    QVERIFY(m_bench->waitForLine("shutter?"));
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 1);
}

void tst_DeviceUnplug::vanishesAHundredTimes()
{
    Device device;
    const Announcements heard(device);
    int filesBefore = 0;
    for (int i = 0; i < 101; ++i) {
        QVERIFY(m_bench->wire().plug());
        device.checkConnectionStatus();
        QVERIFY(device.isApplicationConnected());
        if (i % 2 == 0)
            device.pollDevice();
        m_bench->wire().unplug();
        QVERIFY(waitUntil([&] { return !device.isOpen(); }));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (i == 0)
            filesBefore = openFileCount();
    }
    QCOMPARE(openFileCount(), filesBefore);
    QCOMPARE(heard.count(QStringLiteral("connected")), 101);
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 101);
}

/// The link stays with its device while the other one comes and goes.
void tst_DeviceUnplug::twoDevices()
{
    ScriptedBench second;
    answerAsApplication(second);
    Device device;
    QVERIFY(connectWithoutPoll(device));
    const Announcements heard(device);
    second.wire().unplug();
    device.checkConnectionStatus();
    QVERIFY(second.wire().plug());
    device.checkConnectionStatus();
    QCOMPARE(heard.all, QStringList());
    QCOMPARE(second.received().size(), 0);
    m_bench->wire().unplug();
    QVERIFY(waitUntil([&] { return device.portName() == second.portName(); }, 3s));
    QVERIFY(waitUntil([&] { return device.isApplicationConnected(); }));
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 1);
    QCOMPARE(heard.count(QStringLiteral("connected")), 1);
}

void tst_DeviceUnplug::errorTextSurvivesTheClosing()
{
    Device device;
    QVERIFY(connectWithoutPoll(device));
    QStringList order;
    connect(&device, &Device::deviceDisconnected, this,
            [&] { order.append(QStringLiteral("disconnected")); });
    connect(&device, &Device::portError, this, [&](const QString& text) { order.append(text); });
    m_bench->wire().unplug();
    QVERIFY(waitUntil([&] { return order.size() == 2; }));
    QCOMPARE(order[0], QStringLiteral("disconnected"));
    QVERIFY2(order[1] == qt_error_string(EIO) || order[1] == qt_error_string(EAGAIN), qPrintable(order[1]));
}

QTEST_GUILESS_MAIN(tst_DeviceUnplug)
#include "tst_DeviceUnplug.moc"
