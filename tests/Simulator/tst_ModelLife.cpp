#include "ModelTools.h"

#include <QTest>

using namespace Simulator;
using namespace std::chrono_literals;

class tst_ModelLife : public QObject
{
    Q_OBJECT

private slots:
    void imageSwitches_data();
    void imageSwitches();
    void imageSwitchIsRefusedWithABadChecksum();
    void versionQueriesFollowTheStore();
    void resetAnswersFirst();

    void controllerUpdate();
    void controllerUpdateAtNextStart();
    void controllerUpdateWithoutRestart();
    void controllerUpdateBegunAnewAfterPowerCycle();

    void queriesLeaveTheSleepTimerAlone();
    void temperaturesDrift();
};

void tst_ModelLife::imageSwitches_data()
{
    QTest::addColumn<Image>("from");
    QTest::addColumn<Image>("stored"); // in the application's place
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<Image>("to");
    using I = Image;
    QTest::newRow("into the loader") << I::Application << I::Application << QByteArray("goloader")
                                     << I::Loader;
    QTest::newRow("loader again") << I::Loader << I::Application << QByteArray("goloader") << I::Loader;
    QTest::newRow("into the application")
        << I::Loader << I::Application << QByteArray("goapp") << I::Application;
    QTest::newRow("into the updater")
        << I::Loader << I::LoaderUpdater << QByteArray("goapp") << I::LoaderUpdater;
    QTest::newRow("out of the updater")
        << I::LoaderUpdater << I::LoaderUpdater << QByteArray("goloader") << I::Loader;
}

void tst_ModelLife::imageSwitches()
{
    QFETCH(Image, from);
    QFETCH(Image, stored);
    QFETCH(QByteArray, line);
    QFETCH(Image, to);
    IlluminatorModel model = warmModel();
    model.firmware().store(stored);
    model.boot(from, "Test");

    const Reply reply = model.handle(line);
    QCOMPARE(reply.text, QByteArray()); // the new image answers
    QVERIFY(reply.restart);
    QVERIFY(reply.restart->image == to);
    QCOMPARE(reply.restart->announcement, QByteArray("done\n"));
    QVERIFY(!reply.restart->dropsPort);

    model.boot(reply.restart->image, reply.restart->cause);
    QVERIFY(model.runningImage() == to);
    QVERIFY(ask(model, "v").startsWith(QByteArray(imageName(to) + " V")));
    QCOMPARE(ask(model, "reset_cause"), QByteArray("Image switch\n"));
}

void tst_ModelLife::imageSwitchIsRefusedWithABadChecksum()
{
    IlluminatorModel model = warmModel();
    model.firmware().setLoaderCrcValid(false);
    QCOMPARE(ask(model, "isloadervalid"), QByteArray("No\n"));
    QCOMPARE(ask(model, "v?l"), QByteArray("Unknown V0.0.0\n"));
    Reply reply = model.handle("goloader");
    QCOMPARE(reply.text, QByteArray("refused\n"));
    QVERIFY(!reply.restart);

    model.firmware().setLoaderCrcValid(true);
    model.firmware().setApplicationCrcValid(false);
    QCOMPARE(ask(model, "isappvalid"), QByteArray("No\n"));
    QCOMPARE(ask(model, "v?a"), QByteArray("Unknown V0.0.0\n"));
    QCOMPARE(ask(model, "v"), QByteArray("VYRApp V2.7.0\n")); // it runs, whatever lies in its place by now
    reply = model.handle("goapp");
    QCOMPARE(reply.text, QByteArray("refused\n"));
    QVERIFY(!reply.restart);
    QVERIFY(model.powerCycle().image == Image::Loader);
}

void tst_ModelLife::versionQueriesFollowTheStore()
{
    IlluminatorModel model = warmModel();
    model.firmware().setVersion(Image::Application, {1, 1, 14});
    model.firmware().setVersion(Image::Loader, {0, 9, 255});
    model.firmware().setVersion(Image::LoaderUpdater, {4, 5, 6});
    QCOMPARE(ask(model, "v"), QByteArray("VYRApp V1.1.14\n"));
    QCOMPARE(ask(model, "v?a"), QByteArray("VYRApp V1.1.14\n"));
    QCOMPARE(ask(model, "v?l"), QByteArray("Loader V0.9.255\n"));
    model.firmware().store(Image::LoaderUpdater);
    QCOMPARE(ask(model, "v?a"), QByteArray("LoaderUpdater V4.5.6\n"));
    model.firmware().store(Image::Application);
    QCOMPARE(ask(model, "v?a"), QByteArray("VYRApp V1.1.14\n"));
}

void tst_ModelLife::resetAnswersFirst()
{
    IlluminatorModel model = warmModel();
    const Reply reply = model.handle("reset");
    QCOMPARE(reply.text, QByteArray("done\n"));
    QVERIFY(reply.restart);
    QVERIFY(reply.restart->image == Image::Application);
    QCOMPARE(reply.restart->announcement, QByteArray());
    model.boot(reply.restart->image, reply.restart->cause);
    QCOMPARE(ask(model, "reset_cause"), QByteArray("Software reset\n"));
}

void tst_ModelLife::controllerUpdate()
{
    IlluminatorModel model = warmModel();
    model.controller().startUpdate(10s);
    QCOMPARE(ask(model, "necsel_controller_ver"), QByteArray("Firmware Update of laser controller 0%\n"));
    QCOMPARE(ask(model, "run!"), QByteArray("refused\n"));

    model.advance(0ms);
    QCOMPARE(model.takeMessages(), (QList<QByteArray>{"Firmware Update of laser controller 0%\n"}));
    model.advance(4500ms);
    QCOMPARE(model.takeMessages(), (QList<QByteArray>{"Firmware Update of laser controller 45%\n"}));
    QCOMPARE(ask(model, "necsel_controller_sn"), QByteArray("Firmware Update of laser controller 45%\n"));
    model.advance(100ms);
    QCOMPARE(model.takeMessages(), QList<QByteArray>());
    QVERIFY(!model.takeRestart());

    model.advance(5400ms);
    QCOMPARE(model.takeMessages(), (QList<QByteArray>{"Firmware Update of laser controller 100%\n"}));
    QCOMPARE(ask(model, "necsel_controller_ver"), QByteArray("necsel_controller_ver=3.4.1\n"));
    const auto restart = model.takeRestart();
    QVERIFY(restart);
    QVERIFY(restart->dropsPort);
    QVERIFY(restart->image == Image::Application);
    QVERIFY(!model.takeRestart());
}

void tst_ModelLife::controllerUpdateAtNextStart()
{
    IlluminatorModel model = warmModel();
    model.controller().updateAtNextStart(1s);
    QVERIFY(!model.controller().isUpdating());
    model.boot(Image::Loader, "Test");
    QVERIFY(!model.controller().isUpdating());
    model.boot(Image::Application, "Test");
    QVERIFY(model.controller().isUpdating());
    model.advance(1s);
    QVERIFY(!model.controller().isUpdating());
    model.boot(Image::Application, "Test");
    QVERIFY(!model.controller().isUpdating()); // once is enough
}

void tst_ModelLife::controllerUpdateWithoutRestart()
{
    IlluminatorModel model = warmModel();
    model.setRestartsAfterControllerUpdate(false);
    model.controller().startUpdate(1s);
    model.advance(2s);
    QVERIFY(!model.controller().isUpdating());
    QVERIFY(!model.takeRestart());
}

void tst_ModelLife::controllerUpdateBegunAnewAfterPowerCycle()
{
    IlluminatorModel model = warmModel();
    model.controller().startUpdate(10s);
    model.advance(9s);
    model.shutDown();
    QVERIFY(!model.controller().isUpdating());
    model.boot(Image::Application, "Test");
    QCOMPARE(ask(model, "necsel_controller_ver"), QByteArray("Firmware Update of laser controller 0%\n"));
}

void tst_ModelLife::queriesLeaveTheSleepTimerAlone()
{
    IlluminatorModel model = warmModel();
    ask(model, "sleep=1");
    ask(model, "run!");
    model.advance(50s);
    ask(model, "set:405=1.00"); // begins the minute anew
    model.advance(50s);
    QCOMPARE(ask(model, "f_mode?"), QByteArray("f_mode=run\n"));
    model.advance(9999ms);
    for (const char* query : {"f_mode?", "shutter?", "fault?", "v", "prod_config", "temps"}) {
        ask(model, query);
    }
    QCOMPARE(ask(model, "f_mode?"), QByteArray("f_mode=run\n"));
    model.advance(1ms);
    QCOMPARE(ask(model, "f_mode?"), QByteArray("f_mode=idle\n"));
}

void tst_ModelLife::temperaturesDrift()
{
    IlluminatorModel model = warmModel();
    const Readings cold = model.readings();
    model.advance(10min);
    const Readings idle = model.readings();
    QVERIFY(idle.necsel > cold.necsel + 5.0);
    QVERIFY(idle.laserCurrent > cold.laserCurrent);

    ask(model, "set:555=100.00");
    ask(model, "shutter:555=1");
    ask(model, "run!");
    model.advance(10min);
    const Readings run = model.readings();
    QVERIFY(run.necsel > idle.necsel + 1.0);
    QVERIFY(run.laserCurrent > idle.laserCurrent);
    QVERIFY(run.laserFan > idle.laserFan);
    QVERIFY(run.heater < idle.heater);

    const QByteArray now = ask(model, "temps");
    model.advance(10s);
    QVERIFY(ask(model, "temps") != now);
    model.boot(Image::Loader, "Test");
    model.advance(30min);
    QVERIFY(qAbs(model.readings().necsel - cold.necsel) < 0.5);
}

QTEST_GUILESS_MAIN(tst_ModelLife)
#include "tst_ModelLife.moc"
