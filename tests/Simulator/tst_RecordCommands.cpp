#include "ModelTools.h"
#include "RecordTools.h"
#include "Simulator/RecordContents.h"

#include <QStringBuilder>
#include <QTest>

using namespace Simulator;

namespace {
using Record = RecordMemory::Record;
} // namespace

class tst_RecordCommands : public QObject
{
    Q_OBJECT

private slots:
    void everyImageShowsTheRecords_data();
    void everyImageShowsTheRecords();
    void answersInLowerCase();
    void refusesReads_data();
    void refusesReads();
    void onlyTheLoaderWrites_data();
    void onlyTheLoaderWrites();
    void refusesLines_data();
    void refusesLines();
    void writesOtherAddressWidths();
    void aRecordIsValidWhenItIsSaidToBe();
    void layoutFollowsTheVersion_data();
    void layoutFollowsTheVersion();
    void olderFirmwareKnowsNoChannels();
    void recordsOutliveRestarts();
    void survivesAnyLine();
};

void tst_RecordCommands::everyImageShowsTheRecords_data()
{
    QTest::addColumn<Image>("image");
    QTest::newRow("loader") << Image::Loader;
    QTest::newRow("loader updater") << Image::LoaderUpdater;
    QTest::newRow("application") << Image::Application;
}

void tst_RecordCommands::everyImageShowsTheRecords()
{
    QFETCH(Image, image);
    IlluminatorModel model = warmModel(image);
    model.boot(image, "Test");
    model.firmware().setVersion(Image::LoaderUpdater,
                                {2, 7, 0}); // the one that was delivered is an older one
    QCOMPARE(ask(model, "issysconfigvalid"), QByteArray("Yes\n"));
    QCOMPARE(ask(model, "ischanconfigvalid"), QByteArray("Yes\n"));
    QCOMPARE(readSystem(kSystem, [&model](const QByteArray& line) { return ask(model, line); }),
             RecordContents::factorySystem());
    QCOMPARE(ask(model, "chan_config"), "chan_config:" + RecordContents::factoryChannels().toHex() + '\n');
}

void tst_RecordCommands::answersInLowerCase()
{
    IlluminatorModel model = warmModel();
    model.records().setBytes(Record::Channels, QByteArray(100, '\xab'));
    QCOMPARE(ask(model, readCommand(kChannels, 3)), QByteArray("rf:ababab\n"));
    QCOMPARE(ask(model, "chan_config"), "chan_config:" + QByteArray("ab").repeated(100) + '\n');
}

void tst_RecordCommands::refusesReads_data()
{
    QTest::addColumn<QByteArray>("line");
    for (const char* line :
         {"rf:", "rf: ", "rf: 8388708", "rf: 8388708 128 1", "rf: 8388708 129", "rf: 8388708 0",
          "rf: 8388708 -1", "rf: -1 128", "rf: 0 1", "rf: 0x800064 16", "rf: 800064 16", "rf: 8388708,16",
          "rf: 8389119 2", "rf: 4294967295 1", "rf: 4294967296 1", "rf: 99999999999999999999 1",
          "rf: 8388708 99999999999999999999", "rf: 8388708 1.5", "rf: a b"}) {
        QTest::newRow(line) << QByteArray(line);
    }
}

void tst_RecordCommands::refusesReads()
{
    QFETCH(QByteArray, line);
    IlluminatorModel model = warmModel();
    QCOMPARE(ask(model, line), QByteArray("refused\n"));
}

void tst_RecordCommands::onlyTheLoaderWrites_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("answer"); // of the loader
    const auto row = [](const QByteArray& line, const char* answer) {
        QTest::newRow(line.left(20).constData()) << line << QByteArray(answer);
    };
    row("wf:" + s2(kSystem, "abc"), "Wrote\n");
    row("wf:" + s2(kChannels, "abc"), "Wrote\n");
    row("setsysconfigvalid", "done\n");
    row("setchanconfigvalid", "done\n");
    row("prod_config:vyr_sn=X", "done\n");
}

void tst_RecordCommands::onlyTheLoaderWrites()
{
    QFETCH(QByteArray, line);
    for (const Image image : {Image::Application, Image::LoaderUpdater}) {
        IlluminatorModel model = warmModel(image);
        const QByteArray product = ask(model, "prod_config");
        model.records().setValid(Record::System, false);
        model.records().setValid(Record::Channels, false);
        QCOMPARE(ask(model, line), QByteArray("refused\n"));
        QVERIFY(!model.records().isValid(Record::System));
        QVERIFY(!model.records().isValid(Record::Channels));
        QCOMPARE(model.records().bytes(Record::System), RecordContents::factorySystem());
        QCOMPARE(model.records().bytes(Record::Channels), RecordContents::factoryChannels());
        QCOMPARE(ask(model, "prod_config"), product);
    }
    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    QTEST(ask(model, line), "answer");
}

void tst_RecordCommands::refusesLines_data()
{
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char* name, const QByteArray& line) { QTest::newRow(name) << line; };
    row("nothing", "");
    row("no record", "hello");
    row("wrong checksum", "S205800064ff18");
    row("two lines", s2(kSystem, "a") + s2(kSystem, "b"));
    row("blank before it", " x" + s2(kSystem, "a"));
    row("no data", s2(kSystem, ""));
    row("16-bit address", sRecord('1', 2, 0x0064, "a"));
    row("outside the memory", s2(0x7fffff, "a"));
    row("across its beginning", s2(0x7fffff, "ab"));
    row("across its end", s2(0x8001fb, "ab"));
    row("32-bit address that is not", sRecord('3', 4, 0x01800064, "a"));
    row("round the end of addresses", sRecord('3', 4, 0xffffffff, "abc"));
    row("before the system record", s2(kSystem - 1, "ab"));
    row("behind the channel record", s2(0x8001fc, "a"));
    row("header", sRecord('0', 2, 0, "HDR"));
    row("count", sRecord('5', 2, 3, ""));
    row("end", sRecord('8', 3, kSystem, ""));
}

void tst_RecordCommands::refusesLines()
{
    QFETCH(QByteArray, line);
    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    QCOMPARE(ask(model, "wf:" + line), QByteArray("refused\n"));
    QCOMPARE(ask(model, "issysconfigvalid"), QByteArray("Yes\n"));
    QCOMPARE(ask(model, "ischanconfigvalid"), QByteArray("Yes\n"));
    QCOMPARE(model.records().bytes(Record::System), RecordContents::factorySystem());
    QCOMPARE(model.records().bytes(Record::Channels), RecordContents::factoryChannels());
}

void tst_RecordCommands::writesOtherAddressWidths()
{
    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    QCOMPARE(ask(model, "wf:" + sRecord('3', 4, kSystem, "abc")), QByteArray("Wrote\n"));
    QCOMPARE(ask(model, "wf:" + s2(kSystem + 3, "def").toUpper()), QByteArray("Wrote\n"));
    QCOMPARE(model.records().bytes(Record::System).left(6), QByteArray("abcdef"));
    QCOMPARE(model.records().bytes(Record::System).mid(6), RecordContents::factorySystem().mid(6));
}

void tst_RecordCommands::aRecordIsValidWhenItIsSaidToBe()
{
    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    const auto systemLines = writeCommands(kSystem, countingBytes(308));
    for (const QByteArray& line : systemLines) {
        QCOMPARE(ask(model, line), QByteArray("Wrote\n"));
        QCOMPARE(ask(model, "issysconfigvalid"), QByteArray("No\n"));
    }
    QCOMPARE(ask(model, "ischanconfigvalid"), QByteArray("Yes\n"));
    QCOMPARE(ask(model, "setsysconfigvalid"), QByteArray("done\n"));
    QCOMPARE(ask(model, "issysconfigvalid"), QByteArray("Yes\n"));

    const auto channelLines = writeCommands(kChannels, countingBytes(100));
    for (const QByteArray& line : channelLines) {
        QCOMPARE(ask(model, line), QByteArray("Wrote\n"));
        QCOMPARE(ask(model, "ischanconfigvalid"), QByteArray("No\n"));
    }
    QCOMPARE(ask(model, "issysconfigvalid"), QByteArray("Yes\n"));
    QCOMPARE(ask(model, "chan_config"), "chan_config:" + countingBytes(100).toHex() + '\n');
    QCOMPARE(ask(model, "setchanconfigvalid"), QByteArray("done\n"));
    QCOMPARE(ask(model, "ischanconfigvalid"), QByteArray("Yes\n"));
    QCOMPARE(model.records().bytes(Record::System), countingBytes(308));
}

void tst_RecordCommands::layoutFollowsTheVersion_data()
{
    QTest::addColumn<Image>("image");
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<bool>("newer");
    const auto row = [](Image image, const char* version, bool newer) {
        QTest::newRow(QByteArray(imageName(image) + ' ' + version).constData())
            << image << QByteArray(version) << newer;
    };
    row(Image::Loader, "1.4.6", false);
    row(Image::Loader, "1.4.7", true);
    row(Image::Loader, "1.3.255", false);
    row(Image::Loader, "1.5.0", true);
    row(Image::Loader, "0.255.255", false);
    row(Image::Loader, "2.0.0", true);
    for (const Image image : {Image::Application, Image::LoaderUpdater}) {
        row(image, "2.6.2", false);
        row(image, "2.6.3", true);
        row(image, "2.5.255", false);
        row(image, "2.7.0", true);
        row(image, "1.4.7", false);
        row(image, "3.0.0", true);
    }
}

void tst_RecordCommands::layoutFollowsTheVersion()
{
    QFETCH(Image, image);
    QFETCH(QByteArray, version);
    QFETCH(bool, newer);
    IlluminatorModel model = warmModel(image);
    model.firmware().setVersion(image, *versionFromText(version));
    model.boot(image, "Test");
    const QByteArray record = readSystem(newer ? kSystem : kOlderSystem,
                                         [&model](const QByteArray& line) { return ask(model, line); });
    QCOMPARE(record, RecordContents::factorySystem());
    QCOMPARE(ask(model, "chan_config").startsWith("chan_config:"), newer);
    // The other firmware's address shows the same memory, so the record is met out of step.
    const QByteArray beside = ask(model, readCommand(newer ? kOlderSystem : kSystem, 128));
    QCOMPARE(beside.trimmed().mid(3),
             (newer ? record.mid(28, 128) : QByteArray(28, '\xff') + record.left(100)).toHex());
}

void tst_RecordCommands::olderFirmwareKnowsNoChannels()
{
    IlluminatorModel model = warmModel();
    model.firmware().setVersion(Image::Loader, {1, 4, 6});
    model.boot(Image::Loader, "Test");
    for (const char* line : {"chan_config", "ischanconfigvalid", "setchanconfigvalid"}) {
        QCOMPARE(ask(model, line), QByteArray("?\n"));
    }
    QCOMPARE(ask(model, "wf:" + s2(kChannels, countingBytes(64))), QByteArray("refused\n"));
    const auto systemLines = writeCommands(kSystem, countingBytes(308));
    for (const QByteArray& line : systemLines) {
        QCOMPARE(ask(model, line), QByteArray("Wrote\n"));
    }
    QCOMPARE(readSystem(kOlderSystem, [&model](const QByteArray& line) { return ask(model, line); }),
             countingBytes(308));
    QCOMPARE(ask(model, "issysconfigvalid"), QByteArray("No\n"));
    QCOMPARE(ask(model, "setsysconfigvalid"), QByteArray("done\n"));
    QCOMPARE(ask(model, "issysconfigvalid"), QByteArray("Yes\n"));

    model.boot(Image::Application, "Test"); // a newer one, which finds the record and its own channels
    QCOMPARE(readSystem(kSystem, [&model](const QByteArray& line) { return ask(model, line); }),
             countingBytes(308));
    QCOMPARE(ask(model, "ischanconfigvalid"), QByteArray("Yes\n"));
}

void tst_RecordCommands::recordsOutliveRestarts()
{
    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    const auto systemLines = writeCommands(kSystem, countingBytes(308));
    for (const QByteArray& line : systemLines) {
        ask(model, line);
    }
    ask(model, "setsysconfigvalid");
    ask(model, "wf:" + s2(kChannels, "x"));
    const QByteArray channels = ask(model, "chan_config");

    for (const char* line : {"goapp", "goloader", "reset"}) {
        const Reply reply = model.handle(line);
        QVERIFY2(reply.restart, line);
        model.shutDown();
        model.boot(reply.restart->image, reply.restart->cause);
    }
    const Restart restart = model.powerCycle();
    model.shutDown();
    model.boot(restart.image, restart.cause);
    ask(model, "defaults"); // of the lasers alone
    QCOMPARE(ask(model, "issysconfigvalid"), QByteArray("Yes\n"));
    QCOMPARE(ask(model, "ischanconfigvalid"), QByteArray("No\n"));
    QCOMPARE(ask(model, "chan_config"), channels);
    QCOMPARE(model.records().bytes(Record::System), countingBytes(308));
}

void tst_RecordCommands::survivesAnyLine()
{
    LineSpoiler spoiler(1908);
    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    const QList<QByteArray> good{"rf: 8388708 128",    "wf:" + s2(kSystem, countingBytes(64)),
                                 "chan_config",        "prod_config:vyr_sn=S,vyr_pn=P",
                                 "setsysconfigvalid",  "wf:" + sRecord('3', 4, 0xfffffff0, countingBytes(60)),
                                 "setchanconfigvalid", "wf:" + s2(0x8001c0, countingBytes(64))};
    int answered = 0;
    for (int i = 0; i < 10'000; ++i) {
        const QByteArray answer = ask(model, spoiler.spoiled(good.at(i % good.size())));
        QVERIFY(answer.isEmpty() || answer.endsWith('\n'));
        answered += answer.startsWith("rf:") || answer == "Wrote\n" ? 1 : 0;
        QCOMPARE(model.records().bytes(Record::System).size(), 308);
        QCOMPARE(model.records().bytes(Record::Channels).size(), 100);
    }
    QVERIFY(answered > 500); // some of them were meant to get through
    QCOMPARE(ask(model, "v"), QByteArray("Loader V1.5.0\n"));
}

QTEST_GUILESS_MAIN(tst_RecordCommands)
#include "tst_RecordCommands.moc"
