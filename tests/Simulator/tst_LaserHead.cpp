#include "Simulator/LaserHead.h"

#include <QTest>

#include <cmath>
#include <limits>

using namespace Simulator;
using namespace std::chrono_literals;

namespace {
LaserHead idleHead()
{
    LaserHead head;
    head.setWarmupDuration(0ms);
    head.start();
    return head;
}

LaserHead runningHead()
{
    LaserHead head = idleHead();
    head.requestRun();
    return head;
}
} // namespace

class tst_LaserHead : public QObject
{
    Q_OBJECT

private slots:
    void warmsUp();
    void warmUpCanBeCutShort();
    void runIsRefusedDuringWarmUp();
    void startForgetsLevelsAndShutters();
    void darkWhileNothingRuns();

    void faultDropsRunAndClosesEverything();
    void faultBlocksRunAndOpening();
    void acknowledgingHelpsUnlessHeld();
    void faultTextIsOneLine_data();
    void faultTextIsOneLine();
    void faultCoversTheInputs();

    void shuttersFollowTheInputs_data();
    void shuttersFollowTheInputs();
    void hostCannotMoveShuttersOfTheInputs();
    void shuttersAreClosedWhenTheHostIsBack();
    void levelsComeFromTheirSource();
    void levelBounds_data();
    void levelBounds();

    void hoursCountOnlyLight();
    void hoursStopWhenItSleeps();
    void hoursCanBeSet();
    void sleepBounds_data();
    void sleepBounds();
    void noSleepAtZero();
    void defaults();
};

void tst_LaserHead::warmsUp()
{
    LaserHead head;
    QVERIFY(head.mode() == Mode::Off);
    head.setWarmupDuration(2s);
    head.start();
    QVERIFY(head.mode() == Mode::Warmup);
    head.advance(1999ms);
    QVERIFY(head.mode() == Mode::Warmup);
    head.advance(1ms);
    QVERIFY(head.mode() == Mode::Idle);
}

void tst_LaserHead::warmUpCanBeCutShort()
{
    LaserHead head;
    head.setWarmupDuration(1min);
    head.start();
    head.advance(1s);
    head.setWarmupDuration(5s);
    QVERIFY(head.mode() == Mode::Warmup);
    head.setWarmupDuration(0ms);
    QVERIFY(head.mode() == Mode::Idle);
}

void tst_LaserHead::runIsRefusedDuringWarmUp()
{
    LaserHead head;
    head.setWarmupDuration(1s);
    QVERIFY(!head.requestRun());
    QVERIFY(!head.requestIdle());
    head.start();
    QVERIFY(!head.requestRun());
    QVERIFY(!head.requestIdle());
    QVERIFY(head.mode() == Mode::Warmup);
    head.advance(1s);
    QVERIFY(head.requestRun());
    QVERIFY(head.requestRun());
    QVERIFY(head.mode() == Mode::Run);
    QVERIFY(head.requestIdle());
    QVERIFY(head.mode() == Mode::Idle);
}

void tst_LaserHead::startForgetsLevelsAndShutters()
{
    LaserHead head = runningHead();
    QVERIFY(head.setHostLevel(3, 50.0));
    QVERIFY(head.setHostShutter(3, true));
    head.setTtlInverted(3, true);
    QVERIFY(head.setSleepMinutes(7));
    head.start();
    QCOMPARE(head.level(3), 0.0);
    QVERIFY(!head.isShutterOpen(3));
    QVERIFY(head.isTtlInverted(3));
    QCOMPARE(head.sleepMinutes(), 7);
    QVERIFY(head.mode() == Mode::Idle);
}

void tst_LaserHead::darkWhileNothingRuns()
{
    LaserHead head = runningHead();
    head.setHostShutter(0, true);
    head.stop();
    QVERIFY(!head.isShutterOpen(0));
    QVERIFY(!head.isEmitting(0));
    head.setShutterSource(Source::External);
    head.setTtlInput(0, true);
    head.advance(1h);
    QVERIFY(!head.isShutterOpen(0));
    QCOMPARE(head.hours(0), 0.0);
}

void tst_LaserHead::faultDropsRunAndClosesEverything()
{
    LaserHead head = runningHead();
    for (int channel = 0; channel < kChannelCount; ++channel) {
        QVERIFY(head.setHostShutter(channel, true));
    }
    QVERIFY(head.isEmitting(7));
    head.setFault("Interlock open");
    QVERIFY(head.mode() == Mode::Idle);
    for (int channel = 0; channel < kChannelCount; ++channel) {
        QVERIFY(!head.isShutterOpen(channel));
        QVERIFY(!head.isEmitting(channel));
    }
    head.acknowledgeFault();
    for (int channel = 0; channel < kChannelCount; ++channel) {
        QVERIFY(!head.isShutterOpen(channel)); // nothing opens by itself
    }
}

void tst_LaserHead::faultBlocksRunAndOpening()
{
    LaserHead head = idleHead();
    head.setFault("Over temperature");
    QVERIFY(!head.requestRun());
    QVERIFY(head.mode() == Mode::Idle);
    QVERIFY(!head.setHostShutter(2, true));
    QVERIFY(head.setHostShutter(2, false));
    head.acknowledgeFault();
    QVERIFY(head.setHostShutter(2, true));
    QVERIFY(head.requestRun());
}

void tst_LaserHead::acknowledgingHelpsUnlessHeld()
{
    LaserHead head = idleHead();
    head.setFault("Interlock open", true);
    head.acknowledgeFault();
    QCOMPARE(head.fault(), QByteArray("Interlock open"));
    head.start();
    QVERIFY(head.hasFault());
    head.clearFault();
    QVERIFY(!head.hasFault());
    head.setFault("Glitch");
    head.start();
    QVERIFY(!head.hasFault());
}

void tst_LaserHead::faultTextIsOneLine_data()
{
    QTest::addColumn<QByteArray>("given");
    QTest::addColumn<QByteArray>("kept");
    QTest::newRow("plain") << QByteArray("Fan 2") << QByteArray("Fan 2");
    QTest::newRow("lines") << QByteArray("a\nb\r\n c ") << QByteArray("a b c");
    QTest::newRow("empty") << QByteArray("") << QByteArray("Unknown cause");
    QTest::newRow("blanks") << QByteArray("  \n ") << QByteArray("Unknown cause");
}

void tst_LaserHead::faultTextIsOneLine()
{
    QFETCH(QByteArray, given);
    LaserHead head = idleHead();
    head.setFault(given);
    QTEST(head.fault(), "kept");
    QVERIFY(head.hasFault());
    head.setWarning(given);
    QCOMPARE(head.warning(), given.simplified());
}

void tst_LaserHead::faultCoversTheInputs()
{
    LaserHead head = idleHead();
    head.setShutterSource(Source::External);
    head.setTtlInput(1, true);
    QVERIFY(head.isShutterOpen(1));
    head.setFault("Door");
    QVERIFY(!head.isShutterOpen(1));
    head.clearFault();
    QVERIFY(head.isShutterOpen(1));
    QVERIFY(!head.isEmitting(1)); // until somebody asks for run again
}

void tst_LaserHead::shuttersFollowTheInputs_data()
{
    QTest::addColumn<bool>("high");
    QTest::addColumn<bool>("inverted");
    QTest::addColumn<bool>("open");
    QTest::newRow("low") << false << false << false;
    QTest::newRow("high") << true << false << true;
    QTest::newRow("low, inverted") << false << true << true;
    QTest::newRow("high, inverted") << true << true << false;
}

void tst_LaserHead::shuttersFollowTheInputs()
{
    QFETCH(bool, high);
    QFETCH(bool, inverted);
    LaserHead head = runningHead();
    head.setTtlInput(4, high);
    head.setTtlInverted(4, inverted);
    QVERIFY(!head.isShutterOpen(4)); // the host is in control
    head.setShutterSource(Source::External);
    QTEST(head.isShutterOpen(4), "open");
    QTEST(head.isEmitting(4), "open");
    QVERIFY(!head.isShutterOpen(5));
}

void tst_LaserHead::hostCannotMoveShuttersOfTheInputs()
{
    LaserHead head = idleHead();
    head.setShutterSource(Source::External);
    QVERIFY(!head.setHostShutter(0, true));
    QVERIFY(!head.setHostShutter(0, false));
    QVERIFY(!head.isShutterOpen(0));
}

void tst_LaserHead::shuttersAreClosedWhenTheHostIsBack()
{
    LaserHead head = idleHead();
    head.setHostShutter(0, true);
    head.setTtlInput(1, true);
    head.setShutterSource(Source::Host); // no change, nothing closes
    QVERIFY(head.isShutterOpen(0));
    head.setShutterSource(Source::External);
    QVERIFY(!head.isShutterOpen(0));
    QVERIFY(head.isShutterOpen(1));
    head.setShutterSource(Source::Host);
    QVERIFY(!head.isShutterOpen(0));
    QVERIFY(!head.isShutterOpen(1));
}

void tst_LaserHead::levelsComeFromTheirSource()
{
    LaserHead head = idleHead();
    head.setAnalogInput(0, 77.5);
    QCOMPARE(head.level(0), 0.0);
    QVERIFY(head.setHostLevel(0, 20.0));
    QCOMPARE(head.level(0), 20.0);
    head.setIntensitySource(Source::External);
    QCOMPARE(head.level(0), 77.5);
    QVERIFY(head.setHostLevel(0, 30.0));
    QCOMPARE(head.level(0), 77.5);
    head.setAnalogInput(0, std::numeric_limits<double>::quiet_NaN());
    QVERIFY(std::isnan(head.level(0)));
    head.setIntensitySource(Source::Host);
    QCOMPARE(head.level(0), 30.0);
}

void tst_LaserHead::levelBounds_data()
{
    QTest::addColumn<double>("percent");
    QTest::addColumn<bool>("taken");
    QTest::newRow("zero") << 0.0 << true;
    QTest::newRow("full") << 100.0 << true;
    QTest::newRow("below") << -0.01 << false;
    QTest::newRow("above") << 100.01 << false;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << false;
    QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN() << false;
}

void tst_LaserHead::levelBounds()
{
    QFETCH(double, percent);
    QFETCH(bool, taken);
    LaserHead head = idleHead();
    QVERIFY(head.setHostLevel(6, 42.0));
    QCOMPARE(head.setHostLevel(6, percent), taken);
    QCOMPARE(head.level(6), taken ? percent : 42.0);
}

void tst_LaserHead::hoursCountOnlyLight()
{
    LaserHead head = idleHead();
    head.setHostShutter(0, true);
    head.advance(1h);
    QCOMPARE(head.hours(0), 0.0); // open, but idle
    head.requestRun();
    head.advance(90min);
    QCOMPARE(head.hours(0), 1.5);
    QCOMPARE(head.hours(1), 0.0);
    head.setHostShutter(0, false);
    head.advance(1h);
    QCOMPARE(head.hours(0), 1.5);
}

void tst_LaserHead::hoursStopWhenItSleeps()
{
    LaserHead head = runningHead();
    head.setSleepMinutes(30);
    head.setHostShutter(0, true);
    head.advance(10h); // in one go
    QVERIFY(head.mode() == Mode::Idle);
    QCOMPARE(head.hours(0), 0.5);
}

void tst_LaserHead::hoursCanBeSet()
{
    LaserHead head = runningHead();
    head.setHours(2, 1234.5);
    QCOMPARE(head.hours(2), 1234.5);
    head.setHostShutter(2, true);
    head.advance(30min);
    QCOMPARE(head.hours(2), 1235.0);
    head.restoreDefaults();
    QCOMPARE(head.hours(2), 1235.0);
}

void tst_LaserHead::sleepBounds_data()
{
    QTest::addColumn<int>("minutes");
    QTest::addColumn<bool>("taken");
    QTest::newRow("never") << 0 << true;
    QTest::newRow("longest") << 99 << true;
    QTest::newRow("negative") << -1 << false;
    QTest::newRow("too long") << 100 << false;
}

void tst_LaserHead::sleepBounds()
{
    QFETCH(int, minutes);
    QFETCH(bool, taken);
    LaserHead head = idleHead();
    QVERIFY(head.setSleepMinutes(5));
    QCOMPARE(head.setSleepMinutes(minutes), taken);
    QCOMPARE(head.sleepMinutes(), taken ? minutes : 5);
}

void tst_LaserHead::noSleepAtZero()
{
    LaserHead head = runningHead();
    head.advance(1000h);
    QVERIFY(head.mode() == Mode::Run);
    // Time that went by before the timer was set does not count against it.
    QVERIFY(head.setSleepMinutes(10));
    head.advance(9min);
    QVERIFY(head.mode() == Mode::Run);
    head.hostWasActive();
    head.advance(9min);
    QVERIFY(head.mode() == Mode::Run);
    head.advance(1min);
    QVERIFY(head.mode() == Mode::Idle);
}

void tst_LaserHead::defaults()
{
    LaserHead head = runningHead();
    head.setIntensitySource(Source::External);
    head.setShutterSource(Source::External);
    head.setTtlInput(0, true);
    head.setTtlInverted(5, true);
    head.setHostLevel(1, 10.0);
    head.setSleepMinutes(12);
    head.setSpeckle(false);
    head.restoreDefaults();
    QVERIFY(head.intensitySource() == Source::Host);
    QVERIFY(head.shutterSource() == Source::Host);
    QVERIFY(!head.isShutterOpen(0));
    QVERIFY(!head.isTtlInverted(5));
    QCOMPARE(head.level(1), 0.0);
    QCOMPARE(head.sleepMinutes(), 0);
    QVERIFY(head.speckle());
}

QTEST_GUILESS_MAIN(tst_LaserHead)
#include "tst_LaserHead.moc"
