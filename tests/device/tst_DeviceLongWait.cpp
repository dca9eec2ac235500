#include "device/DeviceFixture.h"

#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;
using QsLogging::LogLevel;

/// The longest wait of all takes its whole time, so both ways into it share one test: a device that stays
/// silent, and another one that leaves and does not come back.
class tst_DeviceLongWait : public QObject
{
    Q_OBJECT

private slots:
    void switchWithoutAnswer();
};

void tst_DeviceLongWait::switchWithoutAnswer()
{
    ScriptedBench awayBench;
    answerAsApplication(awayBench);
    awayBench.setAnswer("goloader", {});
    Device away;
    QVERIFY(connectWithoutPoll(away));
    awayBench.ports().setUsbIdentifiers(1, 2); // so that the second link finds its own device
    ScriptedBench silentBench;
    answerAsApplication(silentBench);
    silentBench.setAnswer("goapp", {});
    Device silent;
    QVERIFY(connectWithoutPoll(silent));
    awayBench.ports().setUsbIdentifiers(0x2F26, 0x3A98);
    silent.setPolling(true);

    const LogCapture log(LogLevel::Debug);
    int awayCode = 0;
    Milliseconds awayTime{0};
    later(100ms, [&] {
        later(100ms, [&] { awayBench.wire().unplug(); });
        silentBench.ports().setUsbIdentifiers(0x03EB, 0x2404);
        const Stopwatch watch;
        awayCode = away.goLoader();
        awayTime = watch.elapsed();
    });
    const auto cpuBefore = cpuTime();
    const Stopwatch watch;
    QCOMPARE(silent.goApp(), -40011);
    QVERIFY2(watch.elapsed() >= 44900ms && watch.elapsed() < 47s,
             qPrintable(QString::number(watch.elapsed().count())));
    QVERIFY(cpuTime() - cpuBefore < 1s);
    away.shutDown(); // it would take the port that the other one gives up
    // The answer may be all that was missing: who it is now is asked anew, and then it is polled as before.
    QVERIFY(silent.isOpen());
    QCOMPARE(silent.deviceMode(), DeviceMode::NotIdentified);
    QTRY_VERIFY(silent.isApplicationConnected());
    const int asked = silentBench.count("shutter?");
    QVERIFY(silentBench.waitForLine("shutter?", asked + 1));

    QCOMPARE(awayCode, -40011);
    QVERIFY2(awayTime >= 44900ms && awayTime < 47s, qPrintable(QString::number(awayTime.count())));
    QVERIFY(!away.isOpen());
    QVERIFY(!log.contains(QStringLiteral("Write timeout error.")));
}

QTEST_GUILESS_MAIN(tst_DeviceLongWait)
#include "tst_DeviceLongWait.moc"
