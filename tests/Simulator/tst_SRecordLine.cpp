#include "RecordTools.h"
#include "Simulator/SRecordLine.h"

#include <QStringBuilder>
#include <QTest>

using namespace Simulator;

class tst_SRecordLine : public QObject
{
    Q_OBJECT

private slots:
    void parses_data();
    void parses();
    void refuses_data();
    void refuses();
    void endsBeyondTheLastAddress();
    void oneWrongDigitIsFoundAnywhere();
    void survivesAnyLine();
};

void tst_SRecordLine::parses_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("type");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<QByteArray>("data");
    const auto row = [](const char* name, const QByteArray& line, int type, quint32 address,
                        const QByteArray& data) { QTest::newRow(name) << line << type << address << data; };
    row("header", "S00600004844521B", 0, 0, "HDR");
    row("empty header", "S0030000FC", 0, 0, {});
    row("16-bit address", "S107FFF00001020303", 1, 0xfff0, QByteArray("\0\1\2\3", 4));
    row("24-bit address", "S20500001001e9", 2, 0x10, "\1");
    row("24-bit address, no data",
        "S204800064"
        "17",
        2, 0x800064, {});
    row("32-bit address", "S30600800064ff16", 3, 0x800064, "\xff");
    row("last address", "S306ffffffff00fd", 3, 0xffffffff, QByteArray(1, '\0'));
    row("count of records", "S503000AF2", 5, 10, {});
    row("end of 32-bit records", "S70500000000FA", 7, 0, {});
    row("end of 24-bit records", "S804000000FB", 8, 0, {});
    row("end of 16-bit records", "S9030000FC", 9, 0, {});
    row("digits of both cases",
        "S205ABcdEf"
        "0192",
        2, 0xabcdef, "\1");
    row("as long as a line can be", s2(0x800000, countingBytes(251)), 2, 0x800000, countingBytes(251));
}

void tst_SRecordLine::parses()
{
    QFETCH(QByteArray, line);
    const auto record = parseSRecordLine(line);
    QVERIFY(record);
    QTEST(record->type, "type");
    QTEST(record->address, "address");
    QTEST(record->data, "data");
    QCOMPARE(record->carriesData(), record->type >= 1 && record->type <= 3);
}

void tst_SRecordLine::refuses_data()
{
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char* name, const QByteArray& line) { QTest::newRow(name) << line; };
    row("nothing", "");
    row("a letter", "S");
    row("a type alone", "S2");
    row("small letter", "s20500001001e9");
    row("no letter", "20500001001e9");
    row("type 4", "S40500001001e9");
    row("type 6", "S604000000FB");
    row("no type", "Sx0500001001e9");
    row("type beyond nine", "S:0500001001e9");
    row("type below zero", "S/0500001001e9");
    row("wrong checksum", "S20500001001e8");
    row("count too small", "S20400001001ea");
    row("count too large", "S20600001001e8");
    row("count of zero", "S200");
    row("count of zero that adds up", "S200ff");
    row("count below the address", "S20300"
                                   "00fc");
    row("count of 255 on a short line", "S2ff000010"
                                        "01ef");
    row("half a byte", "S20500001001e");
    row("no hex digit", "S2050000100ge9");
    row("sign for a digit", "S205000010+1e9");
    row("blank inside", "S205 00001001e9");
    row("two blanks inside", "S2 05 00001001e9");
    row("blank behind", "S20500001001e9 ");
    row("line end", "S20500001001e9\n");
    row("zero byte", QByteArray("S2050000\0001001e9", 15));
    row("characters above 127", QByteArray("S205\xc3\xa9\xff\xfe") + "1001e9");
    row("end with data", sRecord('8', 3, 0, "x"));
    row("count with data", sRecord('5', 2, 1, "x"));
}

void tst_SRecordLine::refuses()
{
    QFETCH(QByteArray, line);
    QVERIFY(!parseSRecordLine(line));
}

void tst_SRecordLine::endsBeyondTheLastAddress()
{
    const auto record = parseSRecordLine(sRecord('3', 4, 0xfffffffe, "abcd"));
    QVERIFY(record);
    QCOMPARE(record->end(), Q_UINT64_C(0x100000002));
}

void tst_SRecordLine::oneWrongDigitIsFoundAnywhere()
{
    const QByteArray line = s2(0x800064, countingBytes(64));
    QVERIFY(parseSRecordLine(line));
    for (int at = 2; at < line.size(); ++at) {
        QByteArray wrong = line;
        wrong[at] = line.at(at) == '0' ? '1' : '0';
        QVERIFY2(!parseSRecordLine(wrong), wrong.constData());
    }
}

void tst_SRecordLine::survivesAnyLine()
{
    LineSpoiler spoiler(4711);
    int accepted = 0;
    for (int i = 0; i < 10'000; ++i) {
        const int type = spoiler.number(0, 3);
        const auto address = static_cast<quint32>(spoiler.number(0, 0xffff));
        const QByteArray line =
            sRecord(static_cast<char>('0' + type), type < 2 ? 2 : type + 1, address, countingBytes(20, i));
        const QByteArray given = spoiler.spoiled(line);
        const auto record = parseSRecordLine(given);
        if (!record) {
            QVERIFY(given != line);
            continue;
        }
        ++accepted;
        // What was accepted says the same as its line.
        const int addressBytes = record->type < 2 ? 2 : record->type + 1;
        QCOMPARE(sRecord(static_cast<char>('0' + record->type), addressBytes, record->address, record->data),
                 given.left(2) + given.mid(2).toLower());
    }
    QVERIFY(accepted > 1000);
    QVERIFY(accepted < 5000);
}

QTEST_GUILESS_MAIN(tst_SRecordLine)
#include "tst_SRecordLine.moc"
