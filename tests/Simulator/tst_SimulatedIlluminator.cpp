#include "PortClient.h"
#include "Simulator/SimulatedIlluminator.h"

#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <memory>

using namespace Simulator;
using namespace std::chrono_literals;

namespace {
/// Long enough to say that nothing more comes; every use says why silence is expected.
constexpr auto kSilence = 60ms;
constexpr auto kRestart = 30ms;
} // namespace

class tst_SimulatedIlluminator : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void talks();
    void clockRuns();
    void clockCanHurry();
    void timeCanBePassed();

    void switchesImagesOnTheSamePort();
    void deafWhileItRestarts();
    void lostAnswerOfAnImageSwitch();
    void reenumerates_data();
    void reenumerates();
    void reenumeratesUnpluggedMeanwhile();
    void pluggedInWhileAway();
    void unpluggedBeforeTheAnswerHasLeft();
    void resets();
    void powerCycles();
    void startsAnyImage();
    void controllerUpdateTellsAndComesBack();

    void announcesWhatChanges();
    void faultFromOutside();
    void inputsFromOutside();
    void pacedAnswersAreThoughtAbout();
    void survivesUnpluggingAllTheTime();

private:
    QByteArray ask(const QByteArray& line) { return m_client->ask(line); }
    void connectAgain() { m_client = std::make_unique<PortClient>(m_device->portName()); }

    std::unique_ptr<SimulatedIlluminator> m_device;
    std::unique_ptr<PortClient> m_client;
};

void tst_SimulatedIlluminator::init()
{
    m_device = std::make_unique<SimulatedIlluminator>();
    m_device->setRestartTime(kRestart);
    m_device->model().lasers().setWarmupDuration(0ms);
    QVERIFY2(m_device->plug(), qPrintable(m_device->wire().errorString()));
    connectAgain();
    QVERIFY(m_client->isOpen());
}

void tst_SimulatedIlluminator::cleanup()
{
    m_client.reset();
    m_device.reset();
}

void tst_SimulatedIlluminator::talks()
{
    QCOMPARE(ask("v"), QByteArray("VYRApp V2.7.0\n"));
    QCOMPARE(ask("f_mode?"), QByteArray("f_mode=idle\n"));
    QCOMPARE(ask("nonsense"), QByteArray("?\n"));
    m_client->write("\n\nrun!\n"); // empty lines are passed over in silence
    QCOMPARE(m_client->readLine(), QByteArray("done\n"));
    QCOMPARE(ask("f_mode?"), QByteArray("f_mode=run\n"));
}

void tst_SimulatedIlluminator::clockRuns()
{
    m_device->model().lasers().setWarmupDuration(150ms);
    m_device->model().boot(Image::Application, "Test");
    QCOMPARE(ask("f_mode?"), QByteArray("f_mode=warmup\n"));
    QTRY_COMPARE(ask("f_mode?"), QByteArray("f_mode=idle\n"));
}

void tst_SimulatedIlluminator::clockCanHurry()
{
    m_device->model().lasers().setWarmupDuration(2h);
    m_device->model().boot(Image::Application, "Test");
    m_device->setTimeScale(0.0);
    m_device->passTime(1h);
    QCOMPARE(ask("f_mode?"), QByteArray("f_mode=warmup\n"));
    m_device->setTimeScale(36000.0); // the other hour in a tenth of a second
    QTRY_COMPARE(ask("f_mode?"), QByteArray("f_mode=idle\n"));
}

void tst_SimulatedIlluminator::timeCanBePassed()
{
    ask("shutter:405=1");
    ask("run!");
    m_device->setTimeScale(0.0);
    m_device->setHours(0, 10.0);
    m_device->passTime(90min);
    QVERIFY(ask("hours?").startsWith("hours:405=11.50,445=0.00,"));
}

void tst_SimulatedIlluminator::switchesImagesOnTheSamePort()
{
    QSignalSpy restarted(m_device.get(), &SimulatedIlluminator::restarted);
    QSignalSpy plugged(&m_device->wire(), &Wire::pluggedChanged);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(ask("goloader"), QByteArray("done\n"));
    QVERIFY(clock.elapsed() >= kRestart.count());
    QCOMPARE(restarted.size(), 1);
    QCOMPARE(ask("v"), QByteArray("Loader V1.5.0\n"));
    QCOMPARE(ask("goapp"), QByteArray("done\n"));
    QCOMPARE(ask("v"), QByteArray("VYRApp V2.7.0\n"));
    QCOMPARE(plugged.size(), 0);
}

void tst_SimulatedIlluminator::deafWhileItRestarts()
{
    QSignalSpy restarted(m_device.get(), &SimulatedIlluminator::restarted);
    m_client->write("goloader\nv\nv?a\n");
    QTRY_VERIFY(!m_device->state().image);
    m_client->write("v?l\n");
    QCOMPARE(m_client->readLine(), QByteArray("done\n"));
    QCOMPARE(restarted.size(), 1);
    QCOMPARE(m_client->read(1, kSilence), QByteArray()); // what came meanwhile is lost
    QCOMPARE(ask("v"), QByteArray("Loader V1.5.0\n"));
}

void tst_SimulatedIlluminator::lostAnswerOfAnImageSwitch()
{
    WireFault lost;
    lost.match = "goloader";
    m_device->wire().addFault(lost);
    QSignalSpy restarted(m_device.get(), &SimulatedIlluminator::restarted);
    m_client->write("goloader\n");
    QTRY_COMPARE(restarted.size(), 1);
    QCOMPARE(m_client->read(1, kSilence), QByteArray()); // the fault took the answer
    QCOMPARE(m_device->wire().pendingFaults(), 0);
    QCOMPARE(ask("v"), QByteArray("Loader V1.5.0\n"));
}

void tst_SimulatedIlluminator::reenumerates_data()
{
    QTest::addColumn<QString>("nameAfter");
    QTest::addColumn<QString>("expected");
    QTest::newRow("same name") << QString() << QStringLiteral("ttyVYR0");
    QTest::newRow("another name") << QStringLiteral("ttyVYR3") << QStringLiteral("ttyVYR3");
}

void tst_SimulatedIlluminator::reenumerates()
{
    QFETCH(QString, nameAfter);
    QFETCH(QString, expected);
    m_device->setReenumerates(true, nameAfter);
    m_client->write("goloader\n");
    QTRY_VERIFY(m_client->isHungUp());
    QVERIFY(!m_device->isPlugged());
    QTRY_VERIFY(m_device->isPlugged());
    QCOMPARE(QFileInfo(m_device->portName()).fileName(), expected);
    connectAgain();
    QCOMPARE(ask("v"), QByteArray("Loader V1.5.0\n"));

    m_device->setReenumerates(false);
    QCOMPARE(ask("goapp"), QByteArray("done\n"));
    QCOMPARE(QFileInfo(m_device->portName()).fileName(), expected);
}

void tst_SimulatedIlluminator::reenumeratesUnpluggedMeanwhile()
{
    m_device->setReenumerates(true);
    QSignalSpy restarted(m_device.get(), &SimulatedIlluminator::restarted);
    m_client->write("goloader\n");
    QTRY_VERIFY(m_client->isHungUp());
    m_device->unplug();
    QTRY_COMPARE(restarted.size(), 1);
    QVERIFY(!m_device->isPlugged());
    QVERIFY(m_device->plug());
    connectAgain();
    QCOMPARE(ask("v"), QByteArray("Loader V1.5.0\n"));
}

void tst_SimulatedIlluminator::pluggedInWhileAway()
{
    m_device->unplug();
    m_device->powerCycle();
    QVERIFY(m_device->plug(QStringLiteral("ttyVYR9")));
    QVERIFY(!m_device->isPlugged()); // not before it has started
    QTRY_VERIFY(m_device->isPlugged());
    QCOMPARE(QFileInfo(m_device->portName()).fileName(), QStringLiteral("ttyVYR9"));
}

void tst_SimulatedIlluminator::unpluggedBeforeTheAnswerHasLeft()
{
    m_device->wire().setPaced(true); // the line takes its time
    QSignalSpy received(&m_device->wire(), &Wire::lineReceived);
    QSignalSpy restarted(m_device.get(), &SimulatedIlluminator::restarted);
    m_client->write("goloader\n");
    QTRY_COMPARE(received.size(), 1);
    QVERIFY(m_device->state().image == Image::Application);
    m_device->unplug();
    QTRY_COMPARE(restarted.size(), 1);
    QVERIFY(m_device->state().image == Image::Loader);
}

void tst_SimulatedIlluminator::resets()
{
    QCOMPARE(ask("int_mode=ext"), QByteArray("done\n"));
    QCOMPARE(ask("run!"), QByteArray("done\n"));
    QSignalSpy restarted(m_device.get(), &SimulatedIlluminator::restarted);
    QCOMPARE(ask("reset"), QByteArray("done\n"));
    QTRY_COMPARE(restarted.size(), 1);
    QCOMPARE(ask("reset_cause"), QByteArray("Software reset\n"));
    QCOMPARE(ask("f_mode?"), QByteArray("f_mode=idle\n"));
    QCOMPARE(ask("int_mode?"), QByteArray("int_mode=EXT\n"));
}

void tst_SimulatedIlluminator::powerCycles()
{
    ask("reset");
    QTRY_VERIFY(m_device->model().resetCause() == "Software reset");
    m_device->powerCycle();
    QVERIFY(!m_device->isPlugged());
    QVERIFY(m_client->isHungUp());
    QTRY_VERIFY(m_device->isPlugged());
    connectAgain();
    QCOMPARE(ask("reset_cause"), QByteArray("Power-on reset\n"));
    QCOMPARE(ask("v"), QByteArray("VYRApp V2.7.0\n"));
}

void tst_SimulatedIlluminator::startsAnyImage()
{
    const QList<QPair<Image, QByteArray>> images{{Image::Loader, "Loader V1.5.0\n"},
                                                 {Image::LoaderUpdater, "LoaderUpdater V1.2.0\n"},
                                                 {Image::Application, "VYRApp V2.7.0\n"}};
    for (const auto& [image, version] : images) {
        QSignalSpy restarted(m_device.get(), &SimulatedIlluminator::restarted);
        m_device->startImage(image);
        QTRY_COMPARE(restarted.size(), 1);
        connectAgain();
        QCOMPARE(ask("v"), version);
    }
}

void tst_SimulatedIlluminator::controllerUpdateTellsAndComesBack()
{
    m_device->setTimeScale(0.0);
    m_device->model().controller().startUpdate(10s);
    m_device->passTime(0ms);
    QCOMPARE(m_client->readLine(), QByteArray("Firmware Update of laser controller 0%\n"));
    QCOMPARE(ask("necsel_controller_ver"), QByteArray("Firmware Update of laser controller 0%\n"));
    m_device->passTime(6s);
    QCOMPARE(m_client->readLine(), QByteArray("Firmware Update of laser controller 60%\n"));
    m_device->passTime(4s);
    QTRY_VERIFY(m_client->isHungUp());
    QTRY_VERIFY(m_device->isPlugged());
    connectAgain();
    QCOMPARE(ask("necsel_controller_ver"), QByteArray("necsel_controller_ver=3.4.1\n"));
    QCOMPARE(ask("reset_cause"), QByteArray("Laser controller updated\n"));
}

void tst_SimulatedIlluminator::announcesWhatChanges()
{
    QSignalSpy changed(m_device.get(), &SimulatedIlluminator::stateChanged);
    ask("f_mode?");
    ask("bogus");
    QCOMPARE(changed.size(), 0);
    ask("run!");
    QCOMPARE(changed.size(), 1);
    QVERIFY(m_device->state().mode == Mode::Run);
    ask("set:640=33.30");
    QCOMPARE(changed.size(), 2);
    QCOMPARE(m_device->state().level.at(6), QByteArray("33.30"));
    ask("shutter:640=1");
    QCOMPARE(changed.size(), 3);
    QVERIFY(m_device->state().open.at(6));
    ask("shutter:640=1");
    QCOMPARE(changed.size(), 3);
    ask("sleep=1");
    m_device->passTime(1min);
    QCOMPARE(changed.size(), 4);
    QVERIFY(m_device->state().mode == Mode::Idle);
    m_device->unplug();
    QCOMPARE(changed.size(), 5);
    QVERIFY(!m_device->state().plugged);
}

void tst_SimulatedIlluminator::faultFromOutside()
{
    ask("run!");
    ask("shutter:405=1");
    m_device->setFault(QStringLiteral("Interlock offen \u00fc"));
    QCOMPARE(ask("fault?"), QByteArray("FAULT: Interlock offen \xc3\xbc\n"));
    QCOMPARE(ask("f_mode?"), QByteArray("f_mode=idle\n"));
    QVERIFY(ask("shutter?").startsWith("shutter:405=closed,"));
    QCOMPARE(ask("run!"), QByteArray("refused\n"));
    QCOMPARE(ask("clear"), QByteArray("done\n"));
    QCOMPARE(ask("fault?"), QByteArray("ok\n"));

    m_device->setFault(QStringLiteral("Over temperature"), true);
    QCOMPARE(ask("clear"), QByteArray("done\n"));
    QCOMPARE(ask("fault?"), QByteArray("FAULT: Over temperature\n"));
    m_device->clearFault();
    QCOMPARE(ask("fault?"), QByteArray("ok\n"));

    m_device->setWarning(QStringLiteral("555 fiber disconnected"));
    QCOMPARE(ask("warn?"), QByteArray("WARN: 555 fiber disconnected\n"));
    m_device->clearWarning();
    QCOMPARE(ask("warn?"), QByteArray("ok\n"));
}

void tst_SimulatedIlluminator::inputsFromOutside()
{
    m_device->setExternalIntensity(1, 12.345);
    m_device->setExternalIntensity(2, std::nan(""));
    m_device->setTtlInput(7, true);
    QVERIFY(ask("set?").startsWith("set:405=0.00,445=0.00,470=0.00"));
    QVERIFY(ask("shutter?").endsWith("730=closed\n"));
    ask("int_mode=ext");
    ask("sh_mode=ext");
    QVERIFY(ask("set?").startsWith("set:405=0.00,445=12.35,470=nan,"));
    QVERIFY(ask("shutter?").endsWith("640=closed,730=open\n"));
    ask("ttl_invert:730=1");
    QVERIFY(ask("shutter?").endsWith("640=closed,730=closed\n"));
}

void tst_SimulatedIlluminator::pacedAnswersAreThoughtAbout()
{
    m_device->wire().setPaced(true);
    QElapsedTimer clock;
    clock.start();
    const QByteArray answer = ask("shutter?");
    const double lineMs = static_cast<double>(9 + answer.size()) * 10.0 / 19.2;
    QVERIFY2(static_cast<double>(clock.elapsed()) >= lineMs, qPrintable(QString::number(clock.elapsed())));
}

void tst_SimulatedIlluminator::survivesUnpluggingAllTheTime()
{
    m_device->setReenumerates(true);
    m_device->setRestartTime(1ms);
    for (int round = 0; round < 50; ++round) {
        if (!m_device->isPlugged()) {
            QVERIFY(m_device->plug());
        }
        QTRY_VERIFY(m_device->isPlugged());
        connectAgain();
        m_client->write(round % 2 == 0 ? "goloader\nv\n" : "goapp\nreset\n");
        if (round % 3 == 0) {
            QCoreApplication::processEvents();
        }
        if (round % 5 == 0) {
            m_device->powerCycle();
        }
        m_device->unplug();
        if (round % 4 == 0) {
            QCoreApplication::processEvents();
        }
    }
    m_device->setReenumerates(false);
    QVERIFY(m_device->plug());
    QTRY_VERIFY(m_device->isPlugged() && m_device->state().image);
    connectAgain();
    QVERIFY(ask("v").contains(" V"));
}

QTEST_GUILESS_MAIN(tst_SimulatedIlluminator)
#include "tst_SimulatedIlluminator.moc"
