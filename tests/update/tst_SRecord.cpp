#include "support/FirmwareImages.h"
#include "support/WatchedTest.h"
#include "update/SRecordReaders.h"

#include <QFile>
#include <QTest>

#include <string_view>

using FirmwareImages::line;

namespace {
constexpr int parsed = 0;
constexpr int nothingRead = -40000;
constexpr int endOfText = -40001;
constexpr int damaged = -40002;
constexpr int tooLong = -40003;
constexpr int noRecord = -40004;
constexpr int unknownType = -40005;

QByteArray good()
{
    return "S107FFF00001020303";
}

/// Everything in a record that a failure must leave alone.
ReadLine sentinel()
{
    ReadLine line;
    line.record.type = 7;
    line.record.dataLength = 3;
    line.record.lineLength = 4711;
    line.record.address = 0xdeadbeef;
    line.record.data.fill(0x55);
    return line;
}

QList<int> statuses(const QList<ReadLine>& lines)
{
    QList<int> codes;
    for (const ReadLine& line : lines) {
        codes.append(line.status);
    }
    return codes;
}
} // namespace

class tst_SRecord : public WatchedTest
{
    Q_OBJECT

private slots:
    void init() { beginWatch(); }
    void cleanup() { endWatch(); }
    void statusOfOneLine_data();
    void statusOfOneLine();
    void fields_data();
    void fields();
    void everyTypeWithEveryCount();
    void everyWrongDigitIsFound();
    void lines_data();
    void lines();
    void longLineGoesOnInTheNext();
    void charactersBeyondLatin1();
    void streamWithoutText();
    void closedFileIsAtItsEnd();
};

void tst_SRecord::statusOfOneLine_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("status");
    const auto row = [](const char* name, const QByteArray& text, int status) {
        QTest::newRow(name) << text << status;
    };
    row("good", good(), parsed);
    row("lower case", "S107fff00001020303", parsed);
    row("something behind the checksum", good() + " ; text", parsed);
    row("end of file behind the checksum", good() + '\x1a', parsed);
    row("wrong checksum", "S107FFF00001020304", damaged);
    row("count 0", "S100FF", damaged);
    row("count is no hex", "S1GG", damaged);
    row("count has one digit", "S15", damaged);
    row("only S", "S", damaged);
    row("only S and a type", "S1", damaged);
    row("count 50", line('1', QByteArray(49, '\x01')), parsed);
    row("count 51", line('1', QByteArray(50, '\x01')), tooLong);
    row("count 255", line('1', QByteArray(254, '\x01')).left(190), tooLong);
    row("count 255 and nothing else", "S1FF", tooLong);
    row("too long before the type", "S4FF", tooLong);
    row("checksum before the type", "S4030000FD", damaged);
    row("type 4", "S4030000FC", unknownType);
    row("type 6", "S6030000FC", unknownType);
    row("type is a letter", "SA030000FC", unknownType);
    row("type is below the digits", "S/030000FC", unknownType);
    row("type is NUL", QByteArray("S") + '\0' + "030000FC", unknownType);
    row("type is above 127",
        "S\xb1"
        "030000FC",
        unknownType);
    row("lower case s", "s107FFF00001020303", noRecord);
    row("blank before S", ' ' + good(), noRecord);
    row("NUL before S", '\0' + good(), noRecord);
    row("above 127 before S", '\xd3' + good(), noRecord);
    row("byte order mark", "\xef\xbb\xbf" + good(), noRecord);
    row("end of file", "\x1a", endOfText);
    row("end of file before a record", '\x1a' + good(), endOfText);
    row("no text", "", endOfText);
    row("empty line", "\n", nothingRead);
    row("empty line of a carriage return", "\r\n", nothingRead);
    row("cut in the data", "S107FFF0000102", damaged);
    row("checksum of 0", line('1', 2, 0, QByteArray::fromHex("fb")), parsed);
    row("cut where the rest adds up", "S1040000FB", damaged);
    row("cut before a checksum of 0", line('1', QByteArray::fromHex("00fc")).left(8), damaged);
    row("cut in a checksum of 0", line('1', 2, 0, QByteArray::fromHex("fb")).chopped(1), damaged);
    row("cut in a pair", "S107FFF0000102030", damaged);
    row("count 1 with type 1", "S101FE", damaged);
    row("count 2 with type 1", "S10200FD", damaged);
    row("count 3 with type 2", "S2030000FC", damaged);
    row("count 4 with type 3", "S304000000FB", damaged);
    row("count 4 with type 7", "S704000000FB", damaged);
    row("count 3 with type 8", "S8030000FC", damaged);
    row("count 2 with type 9", "S90200FD", damaged);
    row("no hex reads as 0", "S1070000GG0x 1+1F8", parsed);
    row("no hex in the address reads as 0", "S104.50000FB", parsed);
    row("above 127 reads as 0",
        "S1040000\xb1\xb1"
        "FB",
        parsed);
    row("NUL reads as 0", QByteArray("S1040000\0\0FB", 12), parsed);
}

void tst_SRecord::statusOfOneLine()
{
    QFETCH(QByteArray, text);
    QFETCH(int, status);
    ReadLine fromBytes = sentinel();
    fromBytes.status = SRecordText(text).next(fromBytes.record);
    ReadLine fromStream = sentinel();
    QString characters = QString::fromLatin1(text.constData(), text.size());
    QTextStream stream(&characters, QIODevice::ReadOnly);
    fromStream.status = parseRecord(stream, fromStream.record);

    QCOMPARE(fromBytes.status, status);
    QVERIFY(fromStream == fromBytes);
    if (status != parsed) {
        ReadLine before = sentinel();
        before.status = status;
        QVERIFY(fromBytes == before);
        QCOMPARE(fromBytes.record.data, before.record.data);
        QCOMPARE(fromStream.record.data, before.record.data);
    }
}

void tst_SRecord::fields_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("type");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<QByteArray>("data"); // as hex
    const auto row = [](const char* name, const QByteArray& text, int type, quint32 address,
                        const QByteArray& data) { QTest::newRow(name) << text << type << address << data; };
    row("two bytes of address", good(), 1, 0xfff0, "00010203");
    row("text of the first line", "S00600004844521B", 0, 0, "484452");
    row("first line with an address", "S0061234000000B3", 0, 0x1234, "000000");
    row("short first line", "S0030000FC", 0, 0, "");
    row("short first line with an address", "S0031234B6", 0, 0, "");
    row("first line of four",
        "S00412345560"
        "",
        0, 0, "");
    row("shortest first line with an address", "S005123455AAB5", 0, 0x1234, "55aa");
    row("first line of the checksum alone", "S001FE", 0, 0, "");
    row("three bytes of address", line('2', 3, 0x123456, "abc"), 2, 0x123456, "616263");
    row("four bytes of address", line('3', 4, 0x80123456, "abc"), 3, 0x80123456, "616263");
    row("last address", line('3', 4, 0xffffffff, "a"), 3, 0xffffffff, "61");
    row("no data", line('3', 4, 0x10, {}), 3, 0x10, "");
    row("count of lines", "S5030003F9", 5, 0, "");
    row("longest count of lines", line('5', QByteArray(49, '\x01')), 5, 0, "");
    row("end with four bytes", line('7', 4, 0x12000, {}), 7, 0x12000, "");
    row("end with three bytes", line('8', 3, 0x12000, {}), 8, 0x12000, "");
    row("end with two bytes", "S9030000FC", 9, 0, "");
    row("most data", line('1', 2, 0x10, QByteArray(47, '\x01')), 1, 0x10, QByteArray("01").repeated(47));
    row("data above 127", line('1', 2, 0x10, "\x80\xff"), 1, 0x10, "80ff");
    row("no hex", "S1070000GG0x 1+1F8", 1, 0, "00000000");
}

void tst_SRecord::fields()
{
    QFETCH(QByteArray, text);
    QFETCH(int, type);
    QFETCH(quint32, address);
    QFETCH(QByteArray, data);
    for (const auto& lines : {readBytes(text + "\r\n"), readStream(text + "\r\n")}) {
        QCOMPARE(statuses(lines), (QList<int>{parsed, endOfText}));
        const ReadLine& line = lines.first();
        QCOMPARE(int(line.record.type), type);
        QCOMPARE(line.record.address, address);
        QCOMPARE(line.data().toHex(), data);
        QCOMPARE(int(line.record.lineLength), text.size());
    }
}

/// No count is too small or too large for what follows from it, whatever the type.
void tst_SRecord::everyTypeWithEveryCount()
{
    const std::array<int, 10> widths = {2, 2, 3, 4, -1, 0, -1, 4, 3, 2};
    for (int type = 0; type < 256; ++type) {
        const int digit = type - '0';
        const bool isKnown = digit >= 0 && digit <= 9 && widths[size_t(digit)] >= 0;
        for (int count = 1; type != '\n' && count <= 255; ++count) {
            const QByteArray text = line(char(type), QByteArray(count - 1, '\x01'));
            const ReadLine read = readBytes(text).constFirst();
            if (count > 50) {
                QCOMPARE(read.status, tooLong);
                continue;
            }
            if (!isKnown) {
                QCOMPARE(read.status, unknownType);
                continue;
            }
            const bool isBare = digit == 5 || (digit == 0 && count < 5);
            const int length = isBare ? 0 : count - 1 - widths[size_t(digit)];
            QCOMPARE(read.status, length < 0 ? damaged : parsed);
            QCOMPARE(int(read.record.dataLength), qMax(length, 0));
            QVERIFY(readStream(text).constFirst() == read);
        }
    }
}

/// A record in which one digit is another one, the type's apart, is never taken.
void tst_SRecord::everyWrongDigitIsFound()
{
    const QByteArray text = line('3', 4, 0x12345678, QByteArray::fromHex("00ff10a5"));
    QCOMPARE(readBytes(text).constFirst().status, parsed);
    for (int place = 2; place < text.size(); ++place) {
        for (const char digit : std::string_view("0123456789ABCDEF")) {
            QByteArray wrong = text;
            wrong[place] = digit;
            const int status = readBytes(wrong).constFirst().status;
            QCOMPARE(status == parsed, wrong == text);
        }
    }
}

void tst_SRecord::lines_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QList<int>>("expected");
    const auto row = [](const char* name, const QByteArray& text, const QList<int>& codes) {
        QTest::newRow(name) << text << codes;
    };
    row("none", "", {endOfText});
    row("line feeds", good() + '\n' + good() + '\n', {parsed, parsed, endOfText});
    row("carriage returns and line feeds", good() + "\r\n" + good() + "\r\n", {parsed, parsed, endOfText});
    row("no last end", good() + '\n' + good(), {parsed, parsed, endOfText});
    row("carriage return at the end", good() + '\n' + good() + '\r', {parsed, parsed, endOfText});
    row("carriage returns alone", good() + '\r' + good() + '\r', {parsed, endOfText});
    row("empty line", good() + "\n\n" + good(), {parsed, nothingRead, parsed, endOfText});
    row("end of file", good() + "\r\n\x1a\r\n" + good(), {parsed, endOfText});
    row("NUL line", good() + '\n' + '\0' + '\n' + good(), {parsed, noRecord, parsed, endOfText});
    row("junk", "junk\n" + good() + "\nS1\n" + good(), {noRecord, parsed, damaged, parsed, endOfText});
}

void tst_SRecord::lines()
{
    QFETCH(QByteArray, text);
    QFETCH(QList<int>, expected);
    QCOMPARE(statuses(readBytes(text)), expected);
    QVERIFY(readStream(text) == readBytes(text));
}

/// Nothing waits for the end of a line that has none: 200 characters are a line, the line feed counted.
void tst_SRecord::longLineGoesOnInTheNext()
{
    const auto padded = [](int size) { return good().leftJustified(size); };
    const auto lengths = [](const QByteArray& text) {
        QList<int> numbers;
        const QList<ReadLine> lines = readBytes(text);
        for (const ReadLine& line : lines) {
            numbers.append(line.status == parsed ? int(line.record.lineLength) : line.status);
        }
        return numbers;
    };
    QCOMPARE(lengths(padded(199) + '\n' + good()), (QList<int>{199, 18, endOfText}));
    QCOMPARE(lengths(padded(200) + '\n' + good()), (QList<int>{200, nothingRead, 18, endOfText}));
    QCOMPARE(lengths(padded(200) + good()), (QList<int>{200, 18, endOfText}));
    QCOMPARE(lengths(padded(201) + '\n' + good()), (QList<int>{200, noRecord, 18, endOfText}));
    QCOMPARE(readBytes(QByteArray(1000000, 'S')).size(), 5001);
    for (const int size : {199, 200, 201, 399, 400}) {
        QVERIFY(readStream(padded(size) + "\r\n" + good()) == readBytes(padded(size) + "\r\n" + good()));
        QVERIFY(readStream(padded(size)) == readBytes(padded(size)));
    }
}

/// Digits of other scripts have a value in Unicode and none here.
void tst_SRecord::charactersBeyondLatin1()
{
    QString text = QString::fromLatin1("S1040000..FB\n") + QChar(0xff33) + QString::fromLatin1("1\n") +
                   QString::fromLatin1("S1.4000000FB\n");
    text[8] = QChar(0xff11);
    text[9] = QChar(0x0661);
    QTextStream stream(&text);
    ReadLine line;
    QCOMPARE(parseRecord(stream, line.record), parsed);
    QCOMPARE(line.data(), QByteArray(1, '\0'));
    QCOMPARE(parseRecord(stream, line.record), noRecord);
    QCOMPARE(parseRecord(stream, line.record), damaged);
    QCOMPARE(parseRecord(stream, line.record), endOfText);
    QCOMPARE(parseRecord(stream, line.record), endOfText);
}

void tst_SRecord::streamWithoutText()
{
    QTextStream stream;
    SRecord record;
    QCOMPARE(parseRecord(stream, record), nothingRead);
}

void tst_SRecord::closedFileIsAtItsEnd()
{
    QFile file(QStringLiteral("none.srec"));
    QTextStream stream(&file);
    SRecord record;
    QCOMPARE(parseRecord(stream, record), endOfText);
}

QTEST_GUILESS_MAIN(tst_SRecord)
#include "tst_SRecord.moc"
