#include "ModelTools.h"

#include <QTest>

using namespace Simulator;
using namespace std::chrono_literals;

namespace {
constexpr const char* kAllShut =
    "shutter:405=closed,445=closed,470=closed,520=closed,528=closed,555=closed,640=closed,730=closed\n";
constexpr const char* kAllZero =
    "set:405=0.00,445=0.00,470=0.00,520=0.00,528=0.00,555=0.00,640=0.00,730=0.00\n";

QByteArray rowName(Image image, const char* line)
{
    return imageName(image) + ": " + line;
}
} // namespace

class tst_IlluminatorModel : public QObject
{
    Q_OBJECT

private slots:
    void answersQueries_data();
    void answersQueries();
    void carriesOutCommands_data();
    void carriesOutCommands();
    void loadersKeepQuietAboutLasers_data();
    void loadersKeepQuietAboutLasers();
    void loadersAnswerForThemselves_data();
    void loadersAnswerForThemselves();
    void silentWhileNothingRuns();
    void survivesAnyLine_data();
    void survivesAnyLine();

    void productDataIsKept();
    void productDataRefusesWhatItDoesNotKnow_data();
    void productDataRefusesWhatItDoesNotKnow();
};

void tst_IlluminatorModel::answersQueries_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("answer");
    const auto row = [](const char* line, const char* answer) {
        QTest::newRow(line) << QByteArray(line) << QByteArray(answer);
    };
    row("f_mode?", "f_mode=idle\n");
    row("sleep?", "sleep=0\n");
    row("int_mode?", "int_mode=PC\n");
    row("fault?", "ok\n");
    row("warn?", "ok\n");
    row("hours?", "hours:405=0.00,445=0.00,470=0.00,520=0.00,528=0.00,555=0.00,640=0.00,730=0.00\n");
    row("shutter?", kAllShut);
    row("ttl_invert?", "ttl_invert:405=off,445=off,470=off,520=off,528=off,555=off,640=off,730=off\n");
    row("set?", kAllZero);
    row("temps", "temps:Necsel=22.0,Novalum1=22.0,Novalum2=22.0,LaserFan=0.0,Heater=0.0,LaserCurrent=0.00\n");
    row("v", "VYRApp V2.7.0\n");
    row("v?a", "VYRApp V2.7.0\n");
    row("v?l", "Loader V1.5.0\n");
    row("isappvalid", "Yes\n");
    row("isloadervalid", "Yes\n");
    row("reset_cause", "Test\n");
    row("necsel_controller_ver", "necsel_controller_ver=3.4.1\n");
    row("necsel_controller_sn", "necsel_controller_sn=NLC-20417\n");
    row("issysconfigvalid", "Yes\n");
    row("ischanconfigvalid", "Yes\n");
    row("rf: 0 1", "refused\n");
    row("prod_config", "prod_config:vyr_hw_ver=1.2.0,vyr_pn=VYR-8-0001,vyr_sn=VYR-00042,"
                       "necsel_laser_sn=NLM-10731,novalum_sn=NOV-55018\n");
    row("  f_mode?  ", "f_mode=idle\n");
    row("bogus", "?\n");
    row("F_MODE?", "?\n");
    row("f_mode", "?\n");
    row("v?", "?\n");
    row("sh_mode?", "?\n");
    row("", "");
    row("   ", "");
}

void tst_IlluminatorModel::answersQueries()
{
    QFETCH(QByteArray, line);
    IlluminatorModel model = warmModel();
    const Reply reply = model.handle(line);
    QTEST(reply.text, "answer");
    QVERIFY(!reply.restart);
    QVERIFY(reply.text.isEmpty() || reply.thinkTime > 0ms);
}

void tst_IlluminatorModel::carriesOutCommands_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("query");
    QTest::addColumn<QByteArray>("after");
    const auto row = [](const char* command, const char* answer, const char* query, const char* after) {
        QTest::newRow(command) << QByteArray(command) << QByteArray(answer) << QByteArray(query)
                               << QByteArray(after);
    };
    row("set:405=12.50", "done\n", "set?",
        "set:405=12.50,445=0.00,470=0.00,520=0.00,528=0.00,555=0.00,640=0.00,730=0.00\n");
    row("set:730=100.00", "done\n", "set?",
        "set:405=0.00,445=0.00,470=0.00,520=0.00,528=0.00,555=0.00,640=0.00,730=100.00\n");
    for (const char* bad : {"set:405=100.01", "set:405=-1", "set:405=nan", "set:405=inf", "set:405=",
                            "set:405", "set:", "set:406=1", "set:405=1,0", "set:=1", "set:405=1=2"}) {
        row(bad, "refused\n", "set?", kAllZero);
    }
    row("shutter:528=1", "done\n", "shutter?",
        "shutter:405=closed,445=closed,470=closed,520=closed,528=open,555=closed,640=closed,730=closed\n");
    row("shutter:528=0", "done\n", "shutter?", kAllShut);
    for (const char* bad :
         {"shutter:528=2", "shutter:528=open", "shutter:528=", "shutter:528", "shutter:999=1"}) {
        row(bad, "refused\n", "shutter?", kAllShut);
    }
    row("ttl_invert:640=1", "done\n", "ttl_invert?",
        "ttl_invert:405=off,445=off,470=off,520=off,528=off,555=off,640=on,730=off\n");
    row("ttl_invert:640=yes", "refused\n", "ttl_invert?",
        "ttl_invert:405=off,445=off,470=off,520=off,528=off,555=off,640=off,730=off\n");
    row("int_mode=ext", "done\n", "int_mode?", "int_mode=EXT\n");
    row("int_mode=pc", "done\n", "int_mode?", "int_mode=PC\n");
    row("int_mode=EXT", "refused\n", "int_mode?", "int_mode=PC\n");
    row("sleep=99", "done\n", "sleep?", "sleep=99\n");
    row("sleep=0", "done\n", "sleep?", "sleep=0\n");
    row("sleep=100", "refused\n", "sleep?", "sleep=0\n");
    row("sleep=-1", "refused\n", "sleep?", "sleep=0\n");
    row("sleep=5min", "refused\n", "sleep?", "sleep=0\n");
    row("run!", "done\n", "f_mode?", "f_mode=run\n");
    row("idle!", "done\n", "f_mode?", "f_mode=idle\n");
    row("clear", "done\n", "fault?", "ok\n");
    row("defaults", "done\n", "set?", kAllZero);
    row("sh_mode=ext", "done\n", "shutter?", kAllShut);
    row("sh_mode=pc", "done\n", "shutter?", kAllShut);
    row("sh_mode=both", "refused\n", "shutter?", kAllShut);
    row("speckle=off", "done\n", "fault?", "ok\n");
    row("speckle=maybe", "refused\n", "fault?", "ok\n");
    row("setsysconfigvalid", "refused\n", "issysconfigvalid", "Yes\n");
    row("setchanconfigvalid", "refused\n", "ischanconfigvalid", "Yes\n");
    row("wf:S205800064ff17", "refused\n", "issysconfigvalid", "Yes\n");
}

void tst_IlluminatorModel::carriesOutCommands()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, query);
    IlluminatorModel model = warmModel();
    const Reply reply = model.handle(command);
    QTEST(reply.text, "answer");
    QVERIFY(!reply.restart);
    QTEST(ask(model, query), "after");
    if (command.startsWith("speckle")) {
        QCOMPARE(model.lasers().speckle(), command != "speckle=off");
    }
    if (command.startsWith("sh_mode")) {
        QCOMPARE(model.lasers().shutterSource() == Source::External, command == "sh_mode=ext");
    }
}

void tst_IlluminatorModel::loadersKeepQuietAboutLasers_data()
{
    QTest::addColumn<Image>("image");
    QTest::addColumn<QByteArray>("line");
    for (const Image image : {Image::Loader, Image::LoaderUpdater}) {
        for (const char* line : {"f_mode?",
                                 "sleep?",
                                 "int_mode?",
                                 "fault?",
                                 "warn?",
                                 "hours?",
                                 "shutter?",
                                 "ttl_invert?",
                                 "set?",
                                 "temps",
                                 "set:405=1.00",
                                 "shutter:405=1",
                                 "ttl_invert:405=1",
                                 "int_mode=ext",
                                 "sh_mode=ext",
                                 "speckle=off",
                                 "sleep=1",
                                 "idle!",
                                 "run!",
                                 "clear",
                                 "defaults"}) {
            QTest::newRow(rowName(image, line).constData()) << image << QByteArray(line);
        }
    }
}

void tst_IlluminatorModel::loadersKeepQuietAboutLasers()
{
    QFETCH(Image, image);
    QFETCH(QByteArray, line);
    IlluminatorModel model = warmModel(image);
    const Reply reply = model.handle(line);
    QCOMPARE(reply.text, QByteArray());
    QVERIFY(!reply.restart);
    QCOMPARE(model.lasers().sleepMinutes(), 0);
    QCOMPARE(model.lasers().mode(), Mode::Off);
    QVERIFY(model.lasers().intensitySource() == Source::Host);
}

void tst_IlluminatorModel::loadersAnswerForThemselves_data()
{
    QTest::addColumn<Image>("image");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("answer");
    const auto row = [](Image image, const char* line, const char* answer) {
        QTest::newRow(rowName(image, line).constData()) << image << QByteArray(line) << QByteArray(answer);
    };
    row(Image::Loader, "v", "Loader V1.5.0\n");
    row(Image::Loader, "v?a", "VYRApp V2.7.0\n");
    row(Image::LoaderUpdater, "v", "LoaderUpdater V1.2.0\n");
    row(Image::LoaderUpdater, "v?a", "LoaderUpdater V1.2.0\n"); // it lies where the application was
    for (const Image image : {Image::Loader, Image::LoaderUpdater}) {
        row(image, "v?l", "Loader V1.5.0\n");
        row(image, "isappvalid", "Yes\n");
        row(image, "isloadervalid", "Yes\n");
        row(image, "reset_cause", "Test\n");
        row(image, "necsel_controller_ver", "necsel_controller_ver=3.4.1\n");
        row(image, "necsel_controller_sn", "necsel_controller_sn=NLC-20417\n");
        row(image, "issysconfigvalid", "Yes\n");
        row(image, "rf: 0 1", "refused\n");
        row(image, "wf:S0", "refused\n");
        row(image, "bogus", "?\n");
    }
}

void tst_IlluminatorModel::loadersAnswerForThemselves()
{
    QFETCH(Image, image);
    QFETCH(QByteArray, line);
    IlluminatorModel model = warmModel();
    model.firmware().store(image);
    model.boot(image, "Test");
    QTEST(ask(model, line), "answer");
}

void tst_IlluminatorModel::silentWhileNothingRuns()
{
    IlluminatorModel model = warmModel();
    model.shutDown();
    QCOMPARE(ask(model, "v"), QByteArray());
    QCOMPARE(ask(model, "f_mode?"), QByteArray());
    model.boot(Image::Application, "Test");
    QCOMPARE(ask(model, "v"), QByteArray("VYRApp V2.7.0\n"));
}

void tst_IlluminatorModel::survivesAnyLine_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("zero bytes") << QByteArray(20, '\0');
    QTest::newRow("high bytes") << QByteArray(300, '\xff');
    QTest::newRow("only separators") << QByteArray("set:=,=,:=");
    QTest::newRow("long argument") << "set:405=" + QByteArray(4000, '9');
    QTest::newRow("zero in the name") << QByteArray("set:405\0=1", 10);
    QTest::newRow("long product data") << "prod_config:" + QByteArray(4000, ',');
}

void tst_IlluminatorModel::survivesAnyLine()
{
    QFETCH(QByteArray, line);
    IlluminatorModel model = warmModel();
    const QByteArray answer = ask(model, line);
    QVERIFY(answer == "?\n" || answer == "refused\n");
    QCOMPARE(ask(model, "set?"), QByteArray(kAllZero));
}

void tst_IlluminatorModel::productDataIsKept()
{
    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    QCOMPARE(ask(model, "prod_config:vyr_hw_ver=3.0.1,vyr_pn=P,vyr_sn=S=1,necsel_laser_sn=,novalum_sn=N"),
             QByteArray("done\n"));
    QCOMPARE(ask(model, "prod_config"),
             QByteArray("prod_config:vyr_hw_ver=3.0.1,vyr_pn=P,vyr_sn=S=1,necsel_laser_sn=,novalum_sn=N\n"));
    QCOMPARE(ask(model, "prod_config:vyr_pn=Q"), QByteArray("done\n"));
    model.boot(Image::Application, "Test"); // another image finds the same
    QVERIFY(ask(model, "prod_config").contains("vyr_hw_ver=3.0.1,vyr_pn=Q,"));
}

void tst_IlluminatorModel::productDataRefusesWhatItDoesNotKnow_data()
{
    QTest::addColumn<QByteArray>("items");
    QTest::newRow("nothing") << QByteArray("");
    QTest::newRow("unknown key") << QByteArray("vyr_pn=P,colour=blue");
    QTest::newRow("no value") << QByteArray("vyr_pn=P,vyr_sn");
    QTest::newRow("trailing comma") << QByteArray("vyr_pn=P,");
}

void tst_IlluminatorModel::productDataRefusesWhatItDoesNotKnow()
{
    QFETCH(QByteArray, items);
    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    const QByteArray before = ask(model, "prod_config");
    QCOMPARE(ask(model, "prod_config:" + items), QByteArray("refused\n"));
    QCOMPARE(ask(model, "prod_config"), before);
}

QTEST_GUILESS_MAIN(tst_IlluminatorModel)
#include "tst_IlluminatorModel.moc"
