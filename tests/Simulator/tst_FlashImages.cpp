#include "FlashTools.h"
#include "ModelTools.h"
#include "RecordTools.h"
#include "support/ArchiveChecksums.h"

#include <QTest>

#include <algorithm>
#include <functional>

// Which lines are taken, and which of them make an image.

using namespace Simulator;
using FirmwareImages::Role;

namespace {
using Lines = QList<QByteArray>;
/// Changes the commands of an image whose first seven are program, the next two header and the last its end.
using Change = std::function<void(Lines& lines)>;

constexpr int kHeaderLine = 7; // program of 100 bytes by 16 comes first
constexpr quint32 kApplicationHeader = 0x39fc0;

Change skip(int line)
{
    return [line](Lines& lines) { lines.removeAt(line); };
}

Change insert(int line, const QByteArray& command)
{
    return [=](Lines& lines) { lines.insert(line, command); };
}

QByteArray s3(quint32 address, const QByteArray& data)
{
    return "wf:" + sRecord('3', 4, address, data);
}

/// The command with another last byte of data and a right checksum.
QByteArray withOtherData(const QByteArray& command)
{
    const auto line = *parseSRecordLine(command.mid(3).trimmed());
    QByteArray data = line.data;
    data.back() = static_cast<char>(data.back() ^ 1);
    return s3(line.address, data);
}
} // namespace

Q_DECLARE_METATYPE(Change)
Q_DECLARE_METATYPE(Role)
Q_DECLARE_METATYPE(FirmwareImages::Image)

class tst_FlashImages : public QObject
{
    Q_OBJECT

private slots:
    void takesEveryForm_data();
    void takesEveryForm();
    void knowsWhatIsMissing_data();
    void knowsWhatIsMissing();
    void knowsWhoItIs_data();
    void knowsWhoItIs();
    void refusesLines_data();
    void refusesLines();
    void endsOnlyWhatWasBegun();
    void leavesNothingOfAnotherImage();
    void survivesAnyLine_data();
    void survivesAnyLine();
};

void tst_FlashImages::takesEveryForm_data()
{
    QTest::addColumn<FirmwareImages::Image>("image");
    const auto row = [](const char* name, auto change) {
        FirmwareImages::Image image = smallImage(Role::Application);
        change(image);
        QTest::newRow(name) << image;
    };
    row("small", [](auto&) {});
    row("line feeds alone", [](auto& image) { image.lineEnd = "\n"; });
    row("24-bit addresses", [](auto& image) { image.addressWidth = 3; });
    row("a byte a line", [](auto& image) { image.bytesPerLine = 1; });
    row("long lines", [](auto& image) { image.bytesPerLine = 45; });
    row("commands of 64 bytes", [](auto& image) {
        image.bytesPerLine = 23;
        image.lineEnd = "\n";
    });
    row("no program", [](auto& image) { image.dataSize = 0; });
    row("up to the header", [](auto& image) { image.dataSize = 0x27fc0; });
    row("no name", [](auto& image) { image.isNamed = false; });
}

void tst_FlashImages::takesEveryForm()
{
    QFETCH(FirmwareImages::Image, image);
    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    const Lines lines = programCommands(image);
    for (int i = 0; i < lines.size(); ++i) {
        QCOMPARE(ask(model, lines.at(i)), QByteArray("Wrote\n"));
        if (lines.size() < 1000 || i + 1 == lines.size()) {
            QCOMPARE(ask(model, "isappvalid"), QByteArray(i + 1 < lines.size() ? "No\n" : "Yes\n"));
        }
    }
    QCOMPARE(ask(model, "v?a"), QByteArray("VYRApp V3.1.4\n"));
    QCOMPARE(ask(model, "isloadervalid"), QByteArray("Yes\n"));
    QVERIFY(restart(model, "goapp"));
    QCOMPARE(ask(model, "v"), QByteArray("VYRApp V3.1.4\n"));
}

void tst_FlashImages::knowsWhatIsMissing_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("refused"); // lines
    QTest::addColumn<bool>("valid");
    QTest::addColumn<bool>("validWithoutName"); // the device has less to go by then
    const auto row = [](const char* name, const Change& change, int refused, bool valid, bool withoutName) {
        QTest::newRow(name) << change << refused << valid << withoutName;
    };
    row(
        "nothing", [](Lines&) {}, 0, true, true);
    row(
        "no end", [](Lines& lines) { lines.removeLast(); }, 0, false, false);
    row("no first line", skip(0), 0, false, true);
    row("no line in the middle", skip(3), 0, false, true);
    row("no last line", skip(kHeaderLine - 1), 0, false, true);
    row("no name and version", skip(kHeaderLine), 0, false, false);
    row("no size and CRC", skip(kHeaderLine + 1), 0, false, true);
    row(
        "no program", [](Lines& lines) { lines.erase(lines.begin(), lines.begin() + kHeaderLine); }, 0, false,
        true);
    row(
        "wrong checksum", [](Lines& lines) { lines[3].replace(12, 1, "x"); }, 1, false, false);
    row(
        "wrong checksum, sent again",
        [](Lines& lines) {
            lines.insert(3, lines.at(3));
            lines[3].chop(3);
        },
        1, true, false);
    row(
        "other data", [](Lines& lines) { lines[3] = withOtherData(lines.at(3)); }, 0, false, true);
    row(
        "a line twice", [](Lines& lines) { lines.insert(3, lines.at(3)); }, 0, true, true);
    row(
        "first line twice", [](Lines& lines) { lines.insert(0, lines.at(0)); }, 0, true, true);
    row(
        "first line again", [](Lines& lines) { lines.insert(3, lines.at(0)); }, 0, false, true);
    row(
        "backwards", [](Lines& lines) { std::reverse(lines.begin(), lines.end() - 1); }, 0, true, true);
    row(
        "title and count",
        [](Lines& lines) {
            lines.insert(2, "wf:" + sRecord('0', 2, 0, "VYR"));
            lines.insert(lines.size() - 1, "wf:" + sRecord('5', 2, 9, ""));
        },
        0, true, true);
    row("a line for the loader", insert(3, s3(0x11000, "abc")), 1, true, false);
    row("a line across the end", insert(3, s3(0x39fff, "ab")), 1, true, false);
    row("a record", insert(3, s3(kSystem, "abc")), 0, true, true);
    row("an empty line", insert(3, "wf:"), 1, true, false);
    row(
        "two of them at once",
        [](Lines& lines) {
            lines[2] += lines.at(3).mid(3);
            lines.removeAt(3);
        },
        1, false, false);
}

void tst_FlashImages::knowsWhatIsMissing()
{
    QFETCH(Change, change);
    QFETCH(int, refused);
    for (const bool isNamed : {true, false}) {
        IlluminatorModel model = warmModel();
        model.boot(Image::Loader, "Test");
        FirmwareImages::Image image = smallImage(Role::Application);
        image.isNamed = isNamed;
        const Lines whole = programCommands(image);
        Lines lines = whole;
        change(lines);
        const auto countRefused = [&model](const QByteArray& line) {
            return ask(model, line) == "refused\n";
        };
        QCOMPARE(static_cast<int>(std::count_if(lines.begin(), lines.end(), countRefused)), refused);
        QTEST(model.firmware().applicationPlace().crcValid, isNamed ? "valid" : "validWithoutName");
        const bool valid = model.firmware().applicationPlace().crcValid;
        QCOMPARE(ask(model, "v?a"), QByteArray(valid ? "VYRApp V3.1.4\n" : "Unknown V0.0.0\n"));

        // Whatever happened, the same image from its start mends it.
        QCOMPARE(program(model, whole), whole.size());
        QCOMPARE(ask(model, "isappvalid"), QByteArray("Yes\n"));
        QVERIFY(restart(model, "goapp"));
        QCOMPARE(ask(model, "v"), QByteArray("VYRApp V3.1.4\n"));
    }
}

void tst_FlashImages::knowsWhoItIs_data()
{
    QTest::addColumn<Image>("running");
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("answer"); // to the version query of the place; empty: not valid
    const auto headerOf = [](Role role, bool isNamed = true, quint32 product = 1, int size = 32) {
        FirmwareImages::Image image = smallImage(role);
        image.dataSize = 0;
        image.isNamed = isNamed;
        image.product = product;
        return FirmwareImages::header(image, size);
    };
    const auto row = [](const char* name, Image running, const QByteArray& header, const char* answer) {
        QTest::newRow(name) << running << header << QByteArray(answer);
    };
    using I = Image;
    row("application", I::Loader, headerOf(Role::Application), "VYRApp V3.1.4\n");
    row("updater", I::Loader, headerOf(Role::LoaderUpdater), "LoaderUpdater V3.1.4\n");
    row("loader out of place", I::Loader, headerOf(Role::Loader), "");
    row("no name", I::Loader, headerOf(Role::LoaderUpdater, false), "VYRApp V3.1.4\n");
    row("the shortest", I::Loader, headerOf(Role::Application, false, 1, 16), "VYRApp V3.1.4\n");
    row("too short", I::Loader, headerOf(Role::Application, false, 1, 15), "");
    row("named and short", I::Loader, headerOf(Role::Application, true, 1, 16), "");
    row("another product", I::Loader, headerOf(Role::Application, true, 2), "");
    row("another product, no name", I::Loader, headerOf(Role::Application, false, 257), "");
    row("loader", I::LoaderUpdater, headerOf(Role::Loader), "Loader V3.1.4\n");
    row("loader without a name", I::LoaderUpdater, headerOf(Role::Loader, false), "Loader V3.1.4\n");
    row("application out of place", I::LoaderUpdater, headerOf(Role::Application), "");
    row("updater out of place", I::LoaderUpdater, headerOf(Role::LoaderUpdater), "");
    QByteArray endless = headerOf(Role::Application);
    endless.replace(16, 4, QByteArray(4, '\xff'));
    row("a program without an end", I::Loader, endless, "");
}

void tst_FlashImages::knowsWhoItIs()
{
    QFETCH(Image, running);
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, answer);
    IlluminatorModel model = warmModel();
    model.firmware().store(running);
    model.boot(running, "Test");
    const quint32 base =
        FirmwareImages::headerBase(running == Image::Loader ? Role::Application : Role::Loader);
    QCOMPARE(ask(model, s3(base, header)), QByteArray("Wrote\n"));
    QCOMPARE(ask(model, "wf:" + sRecord('7', 4, 0, "")), QByteArray("Wrote\n"));
    QCOMPARE(ask(model, running == Image::Loader ? "isappvalid" : "isloadervalid"),
             QByteArray(answer.isEmpty() ? "No\n" : "Yes\n"));
    QCOMPARE(ask(model, running == Image::Loader ? "v?a" : "v?l"),
             answer.isEmpty() ? QByteArray("Unknown V0.0.0\n") : answer);
}

void tst_FlashImages::refusesLines_data()
{
    QTest::addColumn<Image>("running");
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char* name, Image running, const QByteArray& line) {
        QTest::newRow(name) << running << line;
    };
    using I = Image;
    row("application, its own place", I::Application, s3(0x12000, "abc"));
    row("application, the loader's", I::Application, s3(0x1000, "abc"));
    row("application, records", I::Application, s3(kSystem, "abc"));
    row("updater, its own place", I::LoaderUpdater, s3(0x12000, "abc"));
    row("updater, across the border", I::LoaderUpdater, s3(0x11fff, "ab"));
    row("updater, records", I::LoaderUpdater, s3(kSystem, "abc"));
    row("loader, its own place", I::Loader, s3(0x11fff, "a"));
    row("loader, beginning", I::Loader, s3(0, "a"));
    row("loader, across the border", I::Loader, s3(0x11fff, "ab"));
    row("loader, behind the end", I::Loader, s3(0x3a000, "a"));
    row("loader, across the end", I::Loader, s3(0x39fff, "ab"));
    row("loader, round the end of addresses", I::Loader, s3(0xffffffff, "abc"));
    row("loader, no data", I::Loader, s3(0x12000, ""));
    row("loader, end of nothing", I::Loader, "wf:" + sRecord('7', 4, 0x12000, ""));
    row("loader, title of nothing", I::Loader, "wf:" + sRecord('0', 2, 0, "VYR"));
    row("loader, count of nothing", I::Loader, "wf:" + sRecord('5', 2, 0, ""));
    row("loader, no record", I::Loader, "wf:hello");
    row("loader, unknown type", I::Loader, "wf:" + sRecord('6', 3, 0x12000, "a"));
}

void tst_FlashImages::refusesLines()
{
    QFETCH(Image, running);
    QFETCH(QByteArray, line);
    IlluminatorModel model = warmModel(running);
    const QByteArray application = ask(model, "v?a");
    QCOMPARE(ask(model, line), QByteArray("refused\n"));
    QCOMPARE(ask(model, "isappvalid"), QByteArray("Yes\n"));
    QCOMPARE(ask(model, "isloadervalid"), QByteArray("Yes\n"));
    QCOMPARE(ask(model, "v?a"), application);
}

void tst_FlashImages::endsOnlyWhatWasBegun()
{
    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    const Lines lines = programCommands(smallImage(Role::Application));
    QCOMPARE(program(model, lines), lines.size());
    QCOMPARE(ask(model, lines.last()), QByteArray("refused\n")); // a second time
    QCOMPARE(ask(model, "isappvalid"), QByteArray("Yes\n"));
    QCOMPARE(ask(model, lines.at(3)), QByteArray("Wrote\n")); // the beginning of another image
    QCOMPARE(ask(model, lines.last()), QByteArray("Wrote\n"));
    QCOMPARE(ask(model, "isappvalid"), QByteArray("No\n"));
    QVERIFY(!restart(model, "goapp"));
}

/// An image that does not begin where the area does, behind one that was broken off: its own first bytes are
/// to be erased ones.
void tst_FlashImages::leavesNothingOfAnotherImage()
{
    const QByteArray erased(16, '\xff');
    const QByteArray written(16, 'b');
    QByteArray header = QByteArray("VYRAPP\0\0\1\0\0\0\5\6\7\0\x20\0\0\0", 20);
    const QByteArray covered = erased + written + header;
    QByteArray crc(4, '\0');
    qToLittleEndian(ArchiveChecksums::crc32(covered.constData(), covered.size()), crc.data());

    IlluminatorModel model = warmModel();
    model.boot(Image::Loader, "Test");
    QCOMPARE(ask(model, s3(0x12000, QByteArray(48, 'a'))), QByteArray("Wrote\n"));
    QCOMPARE(ask(model, s3(0x12010, written)), QByteArray("Wrote\n"));
    QCOMPARE(ask(model, s3(kApplicationHeader, header + crc)), QByteArray("Wrote\n"));
    QCOMPARE(ask(model, "wf:" + sRecord('7', 4, 0x12010, "")), QByteArray("Wrote\n"));
    QCOMPARE(ask(model, "isappvalid"), QByteArray("Yes\n"));
    QCOMPARE(ask(model, "v?a"), QByteArray("VYRApp V7.6.5\n"));
}

void tst_FlashImages::survivesAnyLine_data()
{
    QTest::addColumn<Image>("running");
    QTest::newRow("loader") << Image::Loader;
    QTest::newRow("loader updater") << Image::LoaderUpdater;
}

void tst_FlashImages::survivesAnyLine()
{
    QFETCH(Image, running);
    LineSpoiler spoiler(2110);
    IlluminatorModel model = warmModel(running);
    const Lines good =
        programCommands(smallImage(running == Image::Loader ? Role::LoaderUpdater : Role::Loader));
    int written = 0;
    for (int i = 0; i < 20'000; ++i) {
        const QByteArray answer = ask(model, spoiler.spoiled(good.at(i % good.size())));
        QVERIFY(answer.isEmpty() || answer.endsWith('\n'));
        written += answer == "Wrote\n" ? 1 : 0;
    }
    QVERIFY(written > 1000);
    QCOMPARE(program(model, good), good.size());
    QCOMPARE(ask(model, running == Image::Loader ? "v?a" : "v?l"),
             QByteArray(running == Image::Loader ? "LoaderUpdater V3.1.4\n" : "Loader V3.1.4\n"));
}

QTEST_GUILESS_MAIN(tst_FlashImages)
#include "tst_FlashImages.moc"
