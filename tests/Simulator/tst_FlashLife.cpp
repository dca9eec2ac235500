#include "FlashTools.h"
#include "ModelTools.h"

#include <QTest>

// What the device runs while its firmware is renewed, whatever happens meanwhile.

using namespace Simulator;
using namespace std::chrono_literals;
using FirmwareImages::Role;

namespace {
using Lines = QList<QByteArray>;

IlluminatorModel modelIn(Image image)
{
    IlluminatorModel model = warmModel(image);
    model.boot(image, "Test");
    return model;
}
} // namespace

class tst_FlashLife : public QObject
{
    Q_OBJECT

private slots:
    void renewsEverything();
    void applicationCanBeRenewedAnyNumberOfTimes();

    void powerCutWhileTheApplicationIsProgrammed();
    void powerCutWhileTheLoaderIsProgrammed();
    void brokenOffAndBegunAnew_data();
    void brokenOffAndBegunAnew();
    void restartEndsTheImage();

    void newApplicationUpdatesTheController();
    void nothingElseUpdatesTheController();
    void preparedStatesOverrule();
    void writingTakesItsTime();
};

void tst_FlashLife::renewsEverything()
{
    IlluminatorModel model = warmModel();
    const Lines updater = programCommands(smallImage(Role::LoaderUpdater, "1.9.1"));
    const Lines loader = programCommands(smallImage(Role::Loader, "1.6.2"));
    const Lines application = programCommands(smallImage(Role::Application, "2.8.3"));

    QVERIFY(restart(model, "goloader"));
    QCOMPARE(program(model, updater), updater.size());
    QCOMPARE(ask(model, "v?a"), QByteArray("LoaderUpdater V1.9.1\n"));
    QCOMPARE(ask(model, "v"), QByteArray("Loader V1.5.0\n"));
    QVERIFY(restart(model, "goapp"));
    QCOMPARE(ask(model, "v"), QByteArray("LoaderUpdater V1.9.1\n"));

    QCOMPARE(program(model, loader), loader.size());
    QCOMPARE(ask(model, "isloadervalid"), QByteArray("Yes\n"));
    QCOMPARE(ask(model, "v?l"), QByteArray("Loader V1.6.2\n"));
    QCOMPARE(ask(model, "v"), QByteArray("LoaderUpdater V1.9.1\n"));
    QVERIFY(restart(model, "goloader"));
    QCOMPARE(ask(model, "v"), QByteArray("Loader V1.6.2\n"));

    QCOMPARE(program(model, application), application.size());
    QVERIFY(restart(model, "goapp"));
    QCOMPARE(ask(model, "v"), QByteArray("VYRApp V2.8.3\n"));
    switchOffAndOn(model);
    QCOMPARE(ask(model, "v"), QByteArray("VYRApp V2.8.3\n"));
    QCOMPARE(ask(model, "v?a"), QByteArray("VYRApp V2.8.3\n"));
    QCOMPARE(ask(model, "v?l"), QByteArray("Loader V1.6.2\n"));
}

void tst_FlashLife::applicationCanBeRenewedAnyNumberOfTimes()
{
    IlluminatorModel model = modelIn(Image::Loader);
    for (const char* version : {"2.8.3", "2.8.3", "1.0.0", "255.255.255"}) {
        const Lines lines = programCommands(smallImage(Role::Application, version));
        QCOMPARE(program(model, lines), lines.size());
        QCOMPARE(ask(model, "v?a"), QByteArray("VYRApp V") + version + '\n');
    }
}

void tst_FlashLife::powerCutWhileTheApplicationIsProgrammed()
{
    const Lines lines = programCommands(smallImage(Role::Application, "2.8.3"));
    for (int done = 0; done <= lines.size(); ++done) {
        IlluminatorModel model = modelIn(Image::Loader);
        model.firmware().store(Image::Application);
        QCOMPARE(program(model, lines.mid(0, done)), done);
        switchOffAndOn(model);
        const bool isValid = done == 0 || done == lines.size();
        QVERIFY(model.runningImage() == (isValid ? Image::Application : Image::Loader));
        QCOMPARE(ask(model, "isappvalid"), QByteArray(isValid ? "Yes\n" : "No\n"));
        QCOMPARE(restart(model, "goapp"), isValid);

        // The lines that were missing are not enough: what came before them is not known any more.
        QCOMPARE(restart(model, "goloader"), true);
        program(model, lines.mid(done));
        QCOMPARE(ask(model, "isappvalid"), QByteArray(isValid ? "Yes\n" : "No\n"));
        QCOMPARE(program(model, lines), lines.size());
        switchOffAndOn(model);
        QCOMPARE(ask(model, "v"), QByteArray("VYRApp V2.8.3\n"));
    }
}

void tst_FlashLife::powerCutWhileTheLoaderIsProgrammed()
{
    const Lines lines = programCommands(smallImage(Role::Loader, "1.6.2"));
    for (int done = 0; done <= lines.size(); ++done) {
        IlluminatorModel model = modelIn(Image::LoaderUpdater);
        QCOMPARE(program(model, lines.mid(0, done)), done);
        switchOffAndOn(model);
        const bool isValid = done == 0 || done == lines.size();
        QVERIFY(model.runningImage() == Image::LoaderUpdater); // the way to mend it
        QCOMPARE(ask(model, "isloadervalid"), QByteArray(isValid ? "Yes\n" : "No\n"));
        QCOMPARE(ask(model, "v?l").startsWith("Loader V"), isValid);
        if (!isValid) {
            QVERIFY(!restart(model, "goloader"));
        }
        QCOMPARE(program(model, lines), lines.size());
        QVERIFY(restart(model, "goloader"));
        QCOMPARE(ask(model, "v"), QByteArray("Loader V1.6.2\n"));
    }
}

void tst_FlashLife::brokenOffAndBegunAnew_data()
{
    QTest::addColumn<QByteArray>("firstVersion");
    QTest::addColumn<bool>("isNamed");
    QTest::newRow("same image") << QByteArray("2.8.3") << true;
    QTest::newRow("another image") << QByteArray("2.8.4") << true;
    QTest::newRow("same image, no name") << QByteArray("2.8.3") << false;
    QTest::newRow("another image, no name") << QByteArray("2.8.4") << false;
}

void tst_FlashLife::brokenOffAndBegunAnew()
{
    QFETCH(QByteArray, firstVersion);
    QFETCH(bool, isNamed);
    FirmwareImages::Image image = smallImage(Role::Application, firstVersion);
    image.isNamed = isNamed;
    const Lines first = programCommands(image);
    image = smallImage(Role::Application, "2.8.3");
    image.isNamed = isNamed;
    const Lines second = programCommands(image);
    for (int done = 0; done <= first.size(); ++done) {
        IlluminatorModel model = modelIn(Image::Loader);
        QCOMPARE(program(model, first.mid(0, done)), done);
        for (const QByteArray& line : second) {
            QCOMPARE(ask(model, line), QByteArray("Wrote\n"));
            QCOMPARE(ask(model, "isappvalid"), QByteArray(line == second.last() ? "Yes\n" : "No\n"));
        }
        QCOMPARE(ask(model, "v?a"), QByteArray("VYRApp V2.8.3\n"));
    }
}

void tst_FlashLife::restartEndsTheImage()
{
    // The rest of an image that nothing but its CRC could tell from a whole one.
    FirmwareImages::Image image = smallImage(Role::Application);
    image.isNamed = false;
    const Lines lines = programCommands(image);
    for (const char* line : {"goloader", "reset"}) {
        IlluminatorModel model = modelIn(Image::Loader);
        QCOMPARE(program(model, lines.mid(0, lines.size() - 1)), lines.size() - 1);
        QVERIFY(restart(model, line));
        QVERIFY(model.runningImage() == Image::Loader);
        QCOMPARE(ask(model, lines.last()), QByteArray("refused\n"));
        QCOMPARE(ask(model, "isappvalid"), QByteArray("No\n"));
    }
}

void tst_FlashLife::newApplicationUpdatesTheController()
{
    IlluminatorModel model = modelIn(Image::Loader);
    model.setControllerUpdateAfterProgramming(10s);
    const Lines lines = programCommands(smallImage(Role::Application));
    QCOMPARE(program(model, lines), lines.size());
    QVERIFY(!model.controller().isUpdating());
    switchOffAndOn(model);
    QVERIFY(model.controller().isUpdating());
    QVERIFY(ask(model, "necsel_controller_ver").startsWith("Firmware Update"));
    model.advance(10s);
    QVERIFY(!model.controller().isUpdating());
    const auto again = model.takeRestart();
    QVERIFY(again);
    model.boot(again->image, again->cause);
    QVERIFY(!model.controller().isUpdating()); // once for each time it was programmed
}

void tst_FlashLife::nothingElseUpdatesTheController()
{
    const Lines application = programCommands(smallImage(Role::Application));
    const Lines updater = programCommands(smallImage(Role::LoaderUpdater));
    IlluminatorModel model = modelIn(Image::Loader);
    QCOMPARE(program(model, application), application.size());
    switchOffAndOn(model);
    QVERIFY(!model.controller().isUpdating()); // it is not asked to

    model.setControllerUpdateAfterProgramming(10s);
    switchOffAndOn(model);
    QVERIFY(!model.controller().isUpdating()); // nothing is new
    QVERIFY(restart(model, "goloader"));
    QCOMPARE(program(model, updater), updater.size());
    QVERIFY(restart(model, "goapp"));
    QVERIFY(!model.controller().isUpdating());
    QVERIFY(restart(model, "goloader"));
    program(model, application.mid(2)); // not whole
    model.firmware().store(Image::Application);
    switchOffAndOn(model);
    QVERIFY(model.runningImage() == Image::Application);
    QVERIFY(!model.controller().isUpdating());
}

void tst_FlashLife::preparedStatesOverrule()
{
    IlluminatorModel model = modelIn(Image::Loader);
    const Lines lines = programCommands(smallImage(Role::Application, "2.8.3"));
    QCOMPARE(program(model, lines.mid(0, 3)), 3);
    model.firmware().store(Image::Application); // somebody put a delivered one there
    QCOMPARE(ask(model, "v?a"), QByteArray("VYRApp V2.7.0\n"));
    QCOMPARE(ask(model, lines.last()), QByteArray("refused\n"));

    QCOMPARE(program(model, lines), lines.size());
    model.firmware().setApplicationCrcValid(false);
    QVERIFY(!restart(model, "goapp"));
    model.firmware().setApplicationCrcValid(true);
    QVERIFY(restart(model, "goapp"));
    model.firmware().setVersion(Image::Application, {4, 5, 6});
    QCOMPARE(ask(model, "v"), QByteArray("VYRApp V4.5.6\n"));
}

void tst_FlashLife::writingTakesItsTime()
{
    IlluminatorModel model = modelIn(Image::Loader);
    const Lines lines = programCommands(smallImage(Role::Application));
    const QByteArray& line = lines.first();
    const auto others = model.handle("v").thinkTime;
    QVERIFY(model.handle(line).thinkTime > others);
    model.setFlashWriteTime(25ms);
    QVERIFY(model.handle(line).thinkTime == others + 25ms);
    QVERIFY(model.handle("wf:hello").thinkTime == others);
    model.setFlashWriteTime(0ms);
    QVERIFY(model.handle(line).thinkTime == others);
}

QTEST_GUILESS_MAIN(tst_FlashLife)
#include "tst_FlashLife.moc"
