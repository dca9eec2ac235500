#include "support/FirmwareImages.h"
#include "support/WatchedTest.h"
#include "update/FirmwareImage.h"
#include "update/ImageSamples.h"

#include <QTest>

using FirmwareImages::line;
using FirmwareImages::Role;

Q_DECLARE_METATYPE(FirmwareFault)

namespace {
const QString loaderPath = QStringLiteral("/fw/LoaderOut.srec");
const QString applicationPath = QStringLiteral("/fw/VYR-AppOut.srec");

QByteArray firstLine()
{
    return "S00600004844521B\n";
}

/// A loader whose header records are at the addresses given, with that much of the header each.
QByteArray loaderWithHeader(const QList<QPair<quint32, int>>& records)
{
    const QByteArray header = FirmwareImages::header(someImage(Role::Loader), 100);
    QByteArray text = firstLine();
    int done = 0;
    for (const auto& [address, size] : records) {
        text += line('3', 4, address, header.mid(done, size)) + '\n';
        done += size;
    }
    return text;
}

QByteArray plainLines(int count)
{
    return QByteArray(line('3', 4, 0x1000, "data") + '\n').repeated(count);
}
} // namespace

class tst_FirmwareImage : public WatchedTest
{
    Q_OBJECT

private slots:
    void init() { beginWatch(); }
    void cleanup() { endWatch(); }
    void pathTellsTheKind_data();
    void pathTellsTheKind();
    void imagesOfAllKinds_data();
    void imagesOfAllKinds();
    void headerRange_data();
    void headerRange();
    void headerSize_data();
    void headerSize();
    void headerIsJoinedInTheOrderOfTheText();
    void headerThatIsTooShortForAProduct();
    void firstLineIsNeitherCountedNorRead();
    void faults_data();
    void faults();
    void scanEnds_data();
    void scanEnds();
};

void tst_FirmwareImage::pathTellsTheKind_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("role"); // -1 for none
    const auto row = [](const char* path, int role) {
        QTest::newRow(path) << QString::fromUtf8(path) << role;
    };
    row("/fw/LoaderOut.srec", int(FirmwareRole::Loader));
    row("/fw/LoaderUpdaterOut.srec", int(FirmwareRole::LoaderUpdater));
    row("/fw/VYR-AppOut.srec", int(FirmwareRole::Application));
    row("C:/fw/loaderout.srec", int(FirmwareRole::Loader));
    row("VYR-APPOUT", int(FirmwareRole::Application));
    row("/LoaderOut 1.0/VYR-AppOut.srec", int(FirmwareRole::Loader));
    row("/LoaderUpdaterOut/VYR-AppOut.srec", int(FirmwareRole::LoaderUpdater));
    row("/VYR-AppOut/LoaderOut.srec", int(FirmwareRole::Loader));
    row("/myLoaderOutput", int(FirmwareRole::Loader));
    row("/fw/Loader.srec", -1);
    row("/fw/AppOut.srec", -1);
    row("", -1);
}

void tst_FirmwareImage::pathTellsTheKind()
{
    QFETCH(QString, path);
    QFETCH(int, role);
    const FirmwareImageKind* kind = firmwareImageKind(path);
    QCOMPARE(kind == nullptr ? -1 : int(kind->role), role);
}

void tst_FirmwareImage::imagesOfAllKinds_data()
{
    QTest::addColumn<int>("role");
    QTest::addColumn<int>("dataSize");
    QTest::addColumn<int>("addressWidth");
    for (const Role role : {Role::Loader, Role::LoaderUpdater, Role::Application}) {
        for (const int size : {0, 1, 512, 100000, 500000}) {
            for (const int width : {3, 4}) {
                QTest::addRow("%d, %d bytes, addresses of %d", int(role), size, width)
                    << int(role) << size << width;
            }
        }
    }
}

void tst_FirmwareImage::imagesOfAllKinds()
{
    QFETCH(int, role);
    QFETCH(int, dataSize);
    QFETCH(int, addressWidth);
    FirmwareImages::Image image = someImage(Role(role));
    image.dataSize = dataSize;
    image.addressWidth = addressWidth;
    const QByteArray text = FirmwareImages::text(image);
    const FirmwareCheck check = checkFirmwareText(text, FirmwareImages::fileName(image.role));
    QCOMPARE(check.fault, FirmwareFault::None);
    QCOMPARE(check.lineCount, FirmwareImages::lineCount(text));
    QVERIFY(check.lineCount >= dataSize / image.bytesPerLine + 3); // two lines of header and the end
    QVERIFY(check.version.has_value());
    QCOMPARE(check.version->toString(), QStringLiteral("258.3.255"));
}

void tst_FirmwareImage::headerRange_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<bool>("isHeader");
    for (const auto& kind : firmwareImageKinds) {
        const bool isLoader = kind.role == FirmwareRole::Loader;
        const quint32 base = isLoader ? 0x11fc0 : 0x39fc0;
        const auto row = [&kind](quint32 address, bool isHeader) {
            QTest::addRow("%s, %x", kind.nameMark, address)
                << QString::fromLatin1(kind.fileName) << address << isHeader;
        };
        row(base - 1, false);
        row(base, true);
        row(base + 63, true);
        row(base + 64, true);
        row(base + 65, false);
        row(isLoader ? 0x39fc0 : 0x11fc0, false);
        row(0, false);
        row(0xffffffff, false);
        row(0x80000000 + base, false);
    }
}

void tst_FirmwareImage::headerRange()
{
    QFETCH(QString, path);
    QFETCH(quint32, address);
    QFETCH(bool, isHeader);
    const QByteArray header = FirmwareImages::header(someImage(Role::Loader));
    const auto check = checkFirmwareText(firstLine() + line('3', 4, address, header) + '\n', path);
    QCOMPARE(check.fault, FirmwareFault::None);
    QCOMPARE(check.lineCount, 1);
    QCOMPARE(check.version.has_value(), isHeader);
}

void tst_FirmwareImage::headerSize_data()
{
    QTest::addColumn<QList<int>>("sizes");
    QTest::addColumn<bool>("fits");
    QTest::newRow("16") << QList<int>{16} << true;
    QTest::newRow("45") << QList<int>{45} << true;
    QTest::newRow("63 in two") << QList<int>{45, 18} << true;
    QTest::newRow("63 in four, two of them empty") << QList<int>{45, 0, 18, 0} << true;
    QTest::newRow("64 in two") << QList<int>{32, 32} << false;
    QTest::newRow("64 in many") << QList<int>{16, 16, 16, 15, 1} << false;
    QTest::newRow("65") << QList<int>{45, 20} << false;
    QTest::newRow("90") << QList<int>{45, 45} << false;
}

void tst_FirmwareImage::headerSize()
{
    QFETCH(QList<int>, sizes);
    QFETCH(bool, fits);
    QList<QPair<quint32, int>> records;
    for (const int size : sizes) {
        records.append({FirmwareImages::headerBase(Role::Loader), size});
    }
    const auto check = checkFirmwareText(loaderWithHeader(records) + plainLines(2), loaderPath);
    QCOMPARE(check.fault, fits ? FirmwareFault::None : FirmwareFault::HeaderTooLarge);
    QCOMPARE(check.lineCount, fits ? sizes.size() + 2 : 0);
    QCOMPARE(check.version.has_value(), fits);
}

/// Where a header record is addressed to inside the header does not matter, nor what is between two of them.
void tst_FirmwareImage::headerIsJoinedInTheOrderOfTheText()
{
    const auto check =
        checkFirmwareText(loaderWithHeader({{FirmwareImages::headerBase(Role::Loader) + 64, 7},
                                            {0x2000, 0},
                                            {FirmwareImages::headerBase(Role::Loader), 6},
                                            {FirmwareImages::headerBase(Role::Loader) + 9, 3}}),
                          loaderPath);
    QCOMPARE(check.fault, FirmwareFault::None);
    QVERIFY(check.version.has_value());
    QCOMPARE(check.version->toString(), QStringLiteral("258.3.255"));
    const QByteArray header = FirmwareImages::header(someImage(Role::Loader), 16);
    const auto turned = checkFirmwareText(
        firstLine() + line('3', 4, FirmwareImages::headerBase(Role::Loader) + 8, header.mid(8)) + '\n' +
            line('3', 4, FirmwareImages::headerBase(Role::Loader), header.left(8)),
        loaderPath);
    QCOMPARE(turned.fault, FirmwareFault::WrongProduct);
}

/// What a header lacks is zero: no product without all of its bytes, but a version may end early.
void tst_FirmwareImage::headerThatIsTooShortForAProduct()
{
    const auto of = [](int size) {
        return checkFirmwareText(loaderWithHeader({{FirmwareImages::headerBase(Role::Loader), size}}),
                                 loaderPath);
    };
    QCOMPARE(of(0).fault, FirmwareFault::None);
    QVERIFY(!of(0).version);
    QCOMPARE(of(1).fault, FirmwareFault::WrongProduct);
    QCOMPARE(of(8).fault, FirmwareFault::WrongProduct);
    QCOMPARE(of(9).version->toString(), QStringLiteral("0.0.0"));
    QCOMPARE(of(13).version->toString(), QStringLiteral("0.0.255"));
    QCOMPARE(of(14).version->toString(), QStringLiteral("0.3.255"));
    QCOMPARE(of(15).version->toString(), QStringLiteral("2.3.255"));
}

void tst_FirmwareImage::firstLineIsNeitherCountedNorRead()
{
    const QByteArray header = FirmwareImages::header(someImage(Role::Loader));
    const auto check = checkFirmwareText(
        line('3', 4, FirmwareImages::headerBase(Role::Loader), header) + '\n' + plainLines(3), loaderPath);
    QCOMPARE(check.fault, FirmwareFault::None);
    QCOMPARE(check.lineCount, 3);
    QVERIFY(!check.version);
    QCOMPARE(checkFirmwareText(firstLine(), loaderPath).lineCount, 0);
    QCOMPARE(checkFirmwareText(firstLine(), loaderPath).fault, FirmwareFault::None);
}

void tst_FirmwareImage::faults_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("path");
    QTest::addColumn<FirmwareFault>("fault");
    const auto row = [](const char* name, const QByteArray& text, const QString& path, FirmwareFault fault) {
        QTest::newRow(name) << text << path << fault;
    };
    FirmwareImages::Image image = someImage(Role::Application);
    const QByteArray whole = FirmwareImages::text(image);
    const QString unknown = QStringLiteral("/fw/other.srec");
    row("empty", "", applicationPath, FirmwareFault::FirstLine);
    row("end of file first", '\x1a' + whole, applicationPath, FirmwareFault::FirstLine);
    row("empty line first", '\n' + whole, applicationPath, FirmwareFault::FirstLine);
    row("damaged first line", "S00600004844521C\n" + whole, applicationPath, FirmwareFault::FirstLine);
    row("an archive", QByteArray("7z\xbc\xaf\x27\x1c\0\4", 8), applicationPath, FirmwareFault::FirstLine);
    row("first line before the name", "", unknown, FirmwareFault::FirstLine);
    row("unknown name", whole, unknown, FirmwareFault::UnknownName);
    for (const quint32 product : {0U, 2U, 0x101U, 0x01000000U, 0x01000001U, 0xffffffffU}) {
        image.product = product;
        const QByteArray name = "product " + QByteArray::number(product, 16);
        row(name.constData(), FirmwareImages::text(image), applicationPath, FirmwareFault::WrongProduct);
    }
}

void tst_FirmwareImage::faults()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, path);
    QFETCH(FirmwareFault, fault);
    const FirmwareCheck check = checkFirmwareText(text, path);
    QCOMPARE(check.fault, fault);
    QCOMPARE(check.lineCount, 0);
    QVERIFY(!check.version);
}

void tst_FirmwareImage::scanEnds_data()
{
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("end of file") << QByteArray("\x1a");
    QTest::newRow("end of file on a line") << QByteArray("\x1a\n");
    QTest::newRow("wrong checksum") << QByteArray("S107FFF00001020304\n");
    QTest::newRow("count of 255") << QByteArray("S1FF\n");
    QTest::newRow("other text") << QByteArray("end\n");
    QTest::newRow("unknown type") << QByteArray("S4030000FC\n");
    QTest::newRow("empty line") << QByteArray("\n");
    QTest::newRow("endless line") << QByteArray(100000, 'S');
}

/// The first line that is no record ends the count without a word, whatever comes behind it.
void tst_FirmwareImage::scanEnds()
{
    QFETCH(QByteArray, end);
    const QByteArray header = loaderWithHeader({{FirmwareImages::headerBase(Role::Loader), 32}});
    const auto after = checkFirmwareText(header + plainLines(2) + end + plainLines(4), loaderPath);
    QCOMPARE(after.fault, FirmwareFault::None);
    QCOMPARE(after.lineCount, 3);
    QVERIFY(after.version.has_value());
    const auto before = checkFirmwareText(firstLine() + plainLines(2) + end + header, loaderPath);
    QCOMPARE(before.lineCount, 2);
    QVERIFY(!before.version);
}

QTEST_GUILESS_MAIN(tst_FirmwareImage)
#include "tst_FirmwareImage.moc"
