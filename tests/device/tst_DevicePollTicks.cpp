#include "device/DeviceFixture.h"

#include <QTest>

#include <algorithm>
#include <vector>

using namespace DeviceTest;
using namespace std::chrono_literals;
using QsLogging::LogLevel;
using Simulator::WireFault;

/// How ticks run beside everything else that uses the line. Each test begins with a device that has no fault
/// and no warning, told.
class tst_DevicePollTicks : public PollTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void tickDuringATransactionDoesNothing();
    void tickIsNotEntered();
    void tickOfAnotherDeviceIsHeldOff();
    void commandsGivenDuringATickGoOutInIt();
    void ticksAreTraced();
    void pollRunsFourTimesASecond();
    void pollCanBeSuspended();
    void listenerMayCloseTheLink();
    void replyOfAnEndedConnectionTellsNothing();
    void lateRepliesTellNothingFalse_data();
    void lateRepliesTellNothingFalse();
    void manyTicksInARow();
};

void tst_DevicePollTicks::tickDuringATransactionDoesNothing()
{
    m_bench->setAnswer("temps", "temps:\n", 60ms);
    const LogCapture log(LogLevel::Trace);
    later(10ms, [&] {
        QCOMPARE(m_device->clearFaults(), 0); // queued
        m_device->pollDevice();
    });
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(log.count(QStringLiteral("** Start Poll **")), 0);
    listenFor(50ms);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"temps"});
    // And the next one runs: nothing was left set.
    tick();
    QCOMPARE(m_bench->lines().mid(1, 2), (QList<QByteArray>{"clear", "shutter?"}));
}

void tst_DevicePollTicks::tickIsNotEntered()
{
    // The nested tick comes between two queries of the outer one, when the line is free.
    connect(m_device.get(), &Device::shutterChanged, this, [this] { m_device->pollDevice(); });
    m_bench->setAnswer("shutter?", "shutter:open\n");
    tick();
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"shutter?", "fault?", "f_mode?", "int_mode?"}));
}

void tst_DevicePollTicks::tickOfAnotherDeviceIsHeldOff()
{
    m_bench->ports().setUsbIdentifiers({}, {});
    ScriptedBench other;
    answerAsApplication(other);
    Device second;
    QVERIFY(connectWithoutPoll(second));
    QCOMPARE(second.portName(), other.portName());
    other.clearReceived();
    connect(m_device.get(), &Device::shutterChanged, &second, &Device::pollDevice);
    m_bench->setAnswer("shutter?", "shutter:open\n");
    tick();
    QCOMPARE(other.received().size(), 0);
    second.pollDevice();
    QVERIFY(other.count("shutter?") == 1);
}

void tst_DevicePollTicks::commandsGivenDuringATickGoOutInIt()
{
    m_bench->setAnswer("shutter?", "shutter:closed\n", 30ms);
    m_bench->setAnswer("f_mode?", "f_mode=idle\n", 30ms);
    later(10ms, [this] {
        QCOMPARE(m_device->setSpeckle(true), 0);
        QCOMPARE(m_device->setSpeckle(false), 0);
    });
    later(50ms, [this] { QCOMPARE(m_device->clearFaults(), 0); });
    const LogCapture log(LogLevel::Trace);
    tick();
    QCOMPARE(log.count(QStringLiteral("Enqueue ")), 3);
    QCOMPARE(m_bench->lines(),
             (QList<QByteArray>{"shutter?", "fault?", "speckle=on", "speckle=off", "f_mode?", "int_mode?"}));
    m_bench->clearReceived();
    tick();
    QCOMPARE(m_bench->lines().mid(0, 2), (QList<QByteArray>{"clear", "shutter?"}));
}

void tst_DevicePollTicks::ticksAreTraced()
{
    for (int i = 0; i < 3; ++i)
        tick();
    m_bench->setAnswers(
        {{"fault?", "FAULT: traced\n"}, {"warn?", "WARN: traced\n"}, {"f_mode?", "f_mode=run\n"}});
    const LogCapture log(LogLevel::Trace);
    tick();
    QStringList texts = messages(log.lines(LogLevel::Trace));
    const auto isTraffic = [](const QString& text) {
        return text.contains(QStringLiteral(" device ")) && text.contains(QLatin1Char('"'));
    };
    texts.erase(std::remove_if(texts.begin(), texts.end(), isTraffic), texts.end());
    QCOMPARE(texts, (QStringList{QStringLiteral("** Start Poll **"),
                                 QStringLiteral("Device sending change in fault state = true"),
                                 QStringLiteral("Device sending change in functional mode = 2"),
                                 QStringLiteral("Device sending change in warning state = true"),
                                 QStringLiteral("** End Poll **")}));
}

void tst_DevicePollTicks::pollRunsFourTimesASecond()
{
    m_device->setPolling(true);
    QVERIFY(m_bench->waitForLine("shutter?", 10));
    QList<Milliseconds> times;
    for (const auto& received : m_bench->received()) {
        if (received.line == "shutter?")
            times.append(received.at);
    }
    // A busy machine makes a tick late and the period behind it as much shorter; the middle one is neither.
    std::vector<Milliseconds> periods;
    for (int i = 1; i < times.size(); ++i) {
        periods.push_back(times[i] - times[i - 1]);
    }
    const auto middle = periods.begin() + static_cast<std::ptrdiff_t>(periods.size() / 2);
    std::nth_element(periods.begin(), middle, periods.end());
    QVERIFY2(*middle > 220ms && *middle < 280ms, qPrintable(QString::number(middle->count())));
}

void tst_DevicePollTicks::pollCanBeSuspended()
{
    m_device->setPolling(true);
    QVERIFY(m_bench->waitForLine("shutter?"));
    m_device->setPolling(false);
    QCOMPARE(m_device->waitWhileBusy(), 0);
    m_bench->clearReceived();
    listenFor(400ms);
    QCOMPARE(m_bench->received().size(), 0);
}

void tst_DevicePollTicks::listenerMayCloseTheLink()
{
    m_bench->setAnswer("shutter?", "shutter:open\n");
    connect(m_device.get(), &Device::shutterChanged, this, [this] { m_device->selectPort({}); });
    const LogCapture log(LogLevel::Trace);
    tick();
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"shutter?"});
    QCOMPARE(log.count(QStringLiteral("** End Poll **")), 1);
    QCOMPARE(errorMessages(log), QStringList());
    connectAnew();
    QVERIFY(!tick().isEmpty()); // the guard is not left set
}

void tst_DevicePollTicks::replyOfAnEndedConnectionTellsNothing()
{
    m_bench->setAnswer("shutter?", "shutter:open\n");
    runWithTheReplyTo(*m_device, *m_bench, "shutter?",
                      [this] { m_device->selectPort(QStringLiteral("other")); });
    QCOMPARE(tick(), QStringList{QStringLiteral("disconnected other")});
}

void tst_DevicePollTicks::lateRepliesTellNothingFalse_data()
{
    QTest::addColumn<QByteArray>("late");

    for (const char* line : {"shutter?", "fault?", "f_mode?", "int_mode?"})
        QTest::newRow(line) << QByteArray(line);
}

void tst_DevicePollTicks::lateRepliesTellNothingFalse()
{
    QFETCH(const QByteArray, late);
    // A reply that comes while the next question is out is taken for its answer, but for that tick only.
    m_bench->wire().addFault({WireFault::Kind::LateReply, 1, late, 1510ms, 0, {}});
    QCOMPARE(tick(), QStringList());
    listenFor(50ms);
    m_bench->clearReceived();
    QCOMPARE(tick(), QStringList());
    // In step again: each change is told, and by its own question.
    m_bench->setAnswer("shutter?", "shutter:closed,open\n");
    m_bench->setAnswer("f_mode?", "f_mode=run\n");
    QCOMPARE(tick(), (QStringList{QStringLiteral("shutters 01000000"), QStringLiteral("mode 2")}));
}

/// Bytes wait in the system at every question; throwing them away must not look like trouble of the port.
void tst_DevicePollTicks::manyTicksInARow()
{
    constexpr int ticks = 10000;
    connect(m_device.get(), &Device::receivedDataFromDevice, this, [this](const QByteArray& chunk) {
        if (chunk.startsWith("f_mode"))
            m_bench->wire().sendUnsolicited("noise\n");
    });
    const LogCapture log(LogLevel::Warn);
    for (int i = 0; i < ticks; ++i)
        m_device->pollDevice();
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(m_heard->all, QStringList());
    QCOMPARE(m_bench->count("shutter?"), ticks);
    QCOMPARE(m_bench->count("int_mode?"), ticks);
    QVERIFY(m_device->isOpen());
}

QTEST_GUILESS_MAIN(tst_DevicePollTicks)
#include "tst_DevicePollTicks.moc"
