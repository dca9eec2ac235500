#include "device/DeviceFixture.h"

#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;

/// "goloader" and "goapp": the device restarts into another image, on the same port or on a new one.
class tst_DeviceSwitch : public ConnectedTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void loaderOnTheSamePort();
    void applicationOnTheSamePort();
    void portComesBack_data();
    void portComesBack();
    void anotherDeviceComesInstead_data();
    void anotherDeviceComesInstead();
    void portGoesAfterTheAnswer();
    void earlierAnswerIsNotTheSwitchs();
    void secondSwitchIsRefused();
    void switchInsideAPollTickEndsTheTick_data();
    void switchInsideAPollTickEndsTheTick();
    void switchInsideADrainLeavesTheRestQueued();
    void switchFromAListenerOfTheConnection();
    void shortWriteLeavesThePollOn();
    void switchFreesALineThatAShortWriteTook();
    void ticksDuringTheSwitchKeepThePort();

private:
    void restartInto(void (*answers)(ScriptedBench&), Milliseconds away, const QString& name);
};

namespace {
void becomeLoader(ScriptedBench& bench)
{
    bench.setDefaultAnswer({});
    answerAsLoader(bench);
}

void becomeApplication(ScriptedBench& bench)
{
    answerAsApplication(bench, "2.7.1");
}
} // namespace

/// From now: unplugged, `away` later back under `name` with the new image.
void tst_DeviceSwitch::restartInto(void (*answers)(ScriptedBench&), Milliseconds away, const QString& name)
{
    later(30ms, [this] { m_bench->wire().unplug(); });
    later(30ms + away, [this, answers, name] {
        answers(*m_bench);
        QVERIFY(m_bench->wire().plug(name));
    });
}

void tst_DeviceSwitch::loaderOnTheSamePort()
{
    m_device->setPolling(true);
    QVERIFY(m_bench->waitForLine("shutter?"));
    m_bench->setResponder([this](const QByteArray& line) -> std::optional<Simulator::Answer> {
        if (line != "goloader")
            return std::nullopt;
        becomeLoader(*m_bench);
        return Simulator::Answer{"ok\n", 600ms};
    });
    const Announcements heard(*m_device);
    QCOMPARE(m_device->goLoader(), 0);
    QCOMPARE(m_device->deviceMode(), DeviceMode::Loader);
    QVERIFY(!m_device->isApplicationConnected());
    QCOMPARE(m_device->runningVersion().version.toString(), QStringLiteral("1.4.7"));
    QCOMPARE(heard.count(QStringLiteral("connected")), 1);
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 0);
    const auto lines = m_bench->lines();
    QCOMPARE(lines.mid(lines.indexOf("goloader")),
             (QList<QByteArray>{"goloader", "v", "reset_cause", "v", "v?a", "v?l", "isloadervalid",
                                "isappvalid"}));
    listenFor(400ms);
    QCOMPARE(m_bench->lines().last(), QByteArray("isappvalid")); // polled no more
}

void tst_DeviceSwitch::applicationOnTheSamePort()
{
    becomeLoader(*m_bench);
    m_device->selectPort({});
    QVERIFY(connectWithoutPoll(*m_device));
    QCOMPARE(m_device->deviceMode(), DeviceMode::Loader);
    m_bench->clearReceived();
    m_bench->setResponder([this](const QByteArray& line) -> std::optional<Simulator::Answer> {
        if (line != "goapp")
            return std::nullopt;
        becomeApplication(*m_bench);
        return Simulator::Answer{"ok\n", 50ms};
    });
    const Announcements heard(*m_device);
    QCOMPARE(m_device->goApp(), 0);
    QCOMPARE(heard.all, QStringList{QStringLiteral("connected ") + m_bench->portName()});
    QVERIFY(m_device->isApplicationConnected());
    QCOMPARE(m_device->runningVersion().version.toString(), QStringLiteral("2.7.1"));
    QVERIFY(m_bench->waitForLine("shutter?")); // and polled again
}

void tst_DeviceSwitch::portComesBack_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("under the same name") << "ttyVYR0";
    QTest::newRow("under another name") << "ttyVYR3";
}

void tst_DeviceSwitch::portComesBack()
{
    QFETCH(const QString, name);
    m_bench->setAnswer("goloader", {});
    restartInto(becomeLoader, 300ms, name);
    int secondCode = 0;
    later(150ms, [&] { secondCode = m_device->goApp(); }); // while the port is away
    const Announcements heard(*m_device);
    const LogCapture log;
    const Stopwatch watch;
    QCOMPARE(m_device->goLoader(), 0);
    QVERIFY(watch.elapsed() < 2500ms);
    QCOMPARE(secondCode, -40013);
    QCOMPARE(m_device->deviceMode(), DeviceMode::Loader);
    QVERIFY(m_device->portName().endsWith(name));
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 1);
    QCOMPARE(heard.count(QStringLiteral("connected")), 1);
    QCOMPARE(errorMessages(log), QStringList{QStringLiteral("Serial port error ResourceError")});
}

void tst_DeviceSwitch::anotherDeviceComesInstead_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<bool>("isAnother");

    QTest::newRow("the same") << QStringLiteral("A1") << QStringLiteral("A1") << false;
    QTest::newRow("another") << QStringLiteral("A1") << QStringLiteral("B2") << true;
    QTest::newRow("no number any more") << QStringLiteral("A1") << QString() << false;
}

/// Whatever was begun with the device that was told to switch must not go on with the other one.
void tst_DeviceSwitch::anotherDeviceComesInstead()
{
    QFETCH(const QString, before);
    QFETCH(const QString, after);
    QFETCH(const bool, isAnother);
    m_bench->ports().setSerialNumber(before);
    m_device->selectPort({});
    QVERIFY(connectWithoutPoll(*m_device));
    const int number = m_device->deviceNumber();
    m_bench->setAnswer("goloader", {});
    m_bench->ports().setSerialNumber(after);
    restartInto(becomeLoader, 100ms, QStringLiteral("ttyVYR0"));
    QCOMPARE(m_device->goLoader(), isAnother ? -40011 : 0);
    QCOMPARE(m_device->deviceMode(), DeviceMode::Loader);
    QCOMPARE(m_device->deviceNumber(), isAnother ? number + 1 : number);
}

void tst_DeviceSwitch::portGoesAfterTheAnswer()
{
    // The device acknowledges first and leaves the bus while it is being identified.
    m_bench->setResponder([this](const QByteArray& line) -> std::optional<Simulator::Answer> {
        if (line != "goloader")
            return std::nullopt;
        m_bench->setAnswer("v", {});
        restartInto(becomeLoader, 200ms, QStringLiteral("ttyVYR0"));
        return Simulator::Answer{"ok\n", {}};
    });
    const Announcements heard(*m_device);
    QCOMPARE(m_device->goLoader(), 0);
    QCOMPARE(m_device->deviceMode(), DeviceMode::Loader);
    QCOMPARE(heard.count(QStringLiteral("connected")), 1);
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 1);
}

void tst_DeviceSwitch::earlierAnswerIsNotTheSwitchs()
{
    m_bench->setAnswer("clear", "cleared\n", 100ms);
    m_bench->setAnswer("goapp", "ok\n", 100ms);
    QCOMPARE(m_device->clearFaults(), 0);
    const Announcements heard(*m_device);
    QCOMPARE(m_device->goApp(), 0);
    QCOMPARE(heard.chunks.mid(0, 3), (QByteArrayList{"cleared\n", "ok\n", "VYRApp V2.7.0\n"}));
    QCOMPARE(m_bench->lines().mid(0, 3), (QList<QByteArray>{"clear", "goapp", "v"}));
}

void tst_DeviceSwitch::secondSwitchIsRefused()
{
    m_bench->setAnswer("goloader", "ok\n", 100ms);
    QList<int> codes;
    later(50ms, [&] { codes = {m_device->goApp(), m_device->goLoader()}; });
    QCOMPARE(m_device->goLoader(), 0);
    QCOMPARE(codes, (QList<int>{-40013, -40013}));
    QCOMPARE(m_bench->count("goapp"), 0);
    QCOMPARE(m_bench->count("goloader"), 1);
}

void tst_DeviceSwitch::switchInsideAPollTickEndsTheTick_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("lastLine");

    QTest::newRow("to the loader") << QByteArray("goloader") << QByteArray("isappvalid");
    QTest::newRow("to the application") << QByteArray("goapp") << QByteArray("necsel_controller_sn");
}

void tst_DeviceSwitch::switchInsideAPollTickEndsTheTick()
{
    QFETCH(const QByteArray, command);
    QFETCH(const QByteArray, lastLine);
    m_bench->setAnswer("fault?", "ok\n", 50ms);
    m_bench->setResponder([this](const QByteArray& line) -> std::optional<Simulator::Answer> {
        if (line == "goloader")
            becomeLoader(*m_bench);
        return std::nullopt;
    });
    m_bench->setAnswers({{"goloader", "ok\n"}, {"goapp", "ok\n"}});
    int code = -1;
    connect(&m_bench->wire(), &Simulator::Wire::lineReceived, this, [&](const QByteArray& line) {
        if (line == "fault?")
            later(10ms, [&] { code = command == "goapp" ? m_device->goApp() : m_device->goLoader(); });
    });
    m_device->pollDevice();
    QCOMPARE(code, 0);
    QCOMPARE(m_bench->lines().mid(0, 4), (QList<QByteArray>{"shutter?", "fault?", command, "v"}));
    QCOMPARE(m_bench->lines().constLast(), lastLine);
}

void tst_DeviceSwitch::switchInsideADrainLeavesTheRestQueued()
{
    m_bench->setAnswer("temps", "temps:\n", 30ms);
    later(5ms, [&] {
        QCOMPARE(m_device->clearFaults(), 0);
        QCOMPARE(m_device->setSpeckle(true), 0);
    });
    QCOMPARE(m_device->sendCommand("temps"), 0);
    m_bench->setAnswer("clear", "ok\n", 50ms);
    int code = -1;
    connect(&m_bench->wire(), &Simulator::Wire::lineReceived, this, [&](const QByteArray& line) {
        if (line == "clear")
            later(10ms, [&] { code = m_device->goLoader(); });
        if (line == "goloader")
            answerAsLoader(*m_bench);
    });
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(code, 0);
    QCOMPARE(m_device->deviceMode(), DeviceMode::Loader);
    QCOMPARE(m_bench->count("speckle=on"), 0);
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(m_bench->count("speckle=on"), 1);
}

void tst_DeviceSwitch::switchFromAListenerOfTheConnection()
{
    m_bench->setAnswer("goloader", {});
    m_device->selectPort({});
    QList<int> codes;
    const auto switchOnce = [this, &codes] {
        if (m_device->deviceMode() == DeviceMode::Application) {
            restartInto(becomeLoader, 100ms, QStringLiteral("ttyVYR0"));
            codes.append(m_device->goLoader());
        }
    };
    connect(m_device.get(), &Device::deviceConnected, this, switchOnce);
    m_device->checkConnectionStatus();
    QCOMPARE(codes, QList<int>{0});
    QCOMPARE(m_device->deviceMode(), DeviceMode::Loader);
}

void tst_DeviceSwitch::shortWriteLeavesThePollOn()
{
    m_device->setPolling(true);
    m_bench->wire().setStalled(true);
    QCOMPARE(m_device->goLoader(), -40006);
    m_bench->wire().setStalled(false);
    m_bench->wire().sendUnsolicited("hello\n"); // frees the line
    QVERIFY(m_bench->waitForLine("shutter?"));
    QCOMPARE(m_bench->count("goloader"), 0);
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
}

/// No reply and no time-out is to be waited for then.
void tst_DeviceSwitch::switchFreesALineThatAShortWriteTook()
{
    m_bench->wire().setStalled(true);
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), -40006);
    m_bench->wire().setStalled(false);
    QCOMPARE(m_device->transaction("temps\n", reply), -40013);
    QCOMPARE(m_device->goApp(), 0);
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
}

/// A device that is not identified is closed by the next check, but not while its answer is due.
void tst_DeviceSwitch::ticksDuringTheSwitchKeepThePort()
{
    m_bench->setAnswer("v?l", "x\n");
    m_device->selectPort({});
    QVERIFY(!connectWithoutPoll(*m_device));
    QCOMPARE(m_device->deviceMode(), DeviceMode::NotIdentified);
    m_bench->setAnswer("goloader", "ok\n", 1200ms);
    m_bench->setAnswer("v?l", "Loader V1.4.7\n");
    const Announcements heard(*m_device);
    QCOMPARE(m_device->goLoader(), 0);
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 0);
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
}

QTEST_GUILESS_MAIN(tst_DeviceSwitch)
#include "tst_DeviceSwitch.moc"
