#include "settings/NovalumBlock.h"
#include "support/LogCapture.h"

#include <QStringList>
#include <QTest>

#include <cstddef>

Q_DECLARE_METATYPE(NovalumBlock)

namespace {
/// Every value another one.
NovalumBlock numbered()
{
    NovalumBlock block{};
    for (int row = 0; row < novalumRowCount; ++row) {
        for (int column = 0; column < novalumChannelCount; ++column)
            block[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] = 100 * row + column - 300;
    }
    return block;
}

QStringList rowsOf(const NovalumBlock& block)
{
    QStringList rows;
    for (const auto& values : block) {
        QStringList fields;
        for (const int value : values)
            fields.append(QString::number(value));
        rows.append(fields.join(QLatin1Char('\t')));
    }
    return rows;
}

QString pasted(const QStringList& rows)
{
    return rows.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

/// The sample with another text in one field.
QString withField(int row, int column, const QString& text)
{
    QStringList rows = rowsOf(numbered());
    QStringList fields = rows.at(row).split(QLatin1Char('\t'));
    fields[column] = text;
    rows[row] = fields.join(QLatin1Char('\t'));
    return pasted(rows);
}
} // namespace

class tst_NovalumBlock : public QObject
{
    Q_OBJECT

private slots:
    void everyFieldHasItsPlace();
    void accepted_data();
    void accepted();
    void refused_data();
    void refused();
    void hugeTexts_data();
    void hugeTexts();
    void tracesWhatItReads();
    void tracesAllFieldsOfABadBlock();
};

void tst_NovalumBlock::everyFieldHasItsPlace()
{
    const auto block = parseNovalumBlock(pasted(rowsOf(numbered())));
    QVERIFY(block.has_value());
    QVERIFY(*block == numbered());
}

void tst_NovalumBlock::accepted_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("value"); // of row 3, column 6
    const int unchanged = 6;

    const QString sample = pasted(rowsOf(numbered()));
    QTest::newRow("carriage returns")
        << QString(sample).replace(QStringLiteral("\n"), QStringLiteral("\r\n")) << unchanged;
    QTest::newRow("anything behind the last row") << sample + QStringLiteral("1.5\tabc") << unchanged;
    QTest::newRow("blanks") << withField(3, 6, QStringLiteral("  42 ")) << 42;
    QTest::newRow("foreign blanks") << withField(3, 6, QStringLiteral("\u00a042\u2003")) << 42;
    QTest::newRow("plus") << withField(3, 6, QStringLiteral("+42")) << 42;
    QTest::newRow("leading zero") << withField(3, 6, QStringLiteral("010")) << 10;
    QTest::newRow("lowest") << withField(3, 6, QStringLiteral("-2147483648")) << -2147483647 - 1;
    QTest::newRow("highest") << withField(3, 6, QStringLiteral("2147483647")) << 2147483647;
}

void tst_NovalumBlock::accepted()
{
    QFETCH(QString, text);
    QFETCH(int, value);
    NovalumBlock expected = numbered();
    expected[3][6] = value;
    const auto block = parseNovalumBlock(text);
    QVERIFY(block.has_value());
    QVERIFY(*block == expected);
}

void tst_NovalumBlock::refused_data()
{
    QTest::addColumn<QString>("text");

    const QStringList rows = rowsOf(numbered());
    QTest::newRow("nothing") << QString();
    QTest::newRow("no last line feed") << rows.join(QLatin1Char('\n'));
    QTest::newRow("a row missing") << pasted(rows.mid(1));
    QTest::newRow("a row more") << pasted(rows + QStringList(rows.first()));
    QTest::newRow("an empty row more") << pasted(rows) + QStringLiteral("\n");
    QTest::newRow("carriage returns alone") << pasted(rows).replace(QLatin1Char('\n'), QLatin1Char('\r'));
    QTest::newRow("twelve line feeds") << QString(12, QLatin1Char('\n'));
    for (const int row : {0, 5, 11}) {
        QStringList wider = rows;
        wider[row].append(QStringLiteral("\t1"));
        QTest::addRow("an eighth column in row %d", row) << pasted(wider);
        QStringList narrower = rows;
        narrower[row].truncate(narrower[row].lastIndexOf(QLatin1Char('\t')));
        QTest::addRow("a column missing in row %d", row) << pasted(narrower);
        QTest::addRow("a tab at the end of row %d", row) << withField(row, 6, QStringLiteral("1\t"));
    }
    for (const char* text : {"1.5", "", " ", "abc", "1e2", "0x10", "1,000", "2147483648", "-2147483649",
                             "1 2", "--1", "99999999999999999999999", "inf"})
        QTest::addRow("\"%s\"", text) << withField(4, 2, QString::fromLatin1(text));
    QTest::newRow("NUL behind digits") << withField(4, 2, QStringLiteral("1") + QChar(0));
    QTest::newRow("first field") << withField(0, 0, QStringLiteral("x"));
    QTest::newRow("last field") << withField(11, 6, QStringLiteral("x"));
}

void tst_NovalumBlock::refused()
{
    QFETCH(QString, text);
    QVERIFY(!parseNovalumBlock(text).has_value());
}

void tst_NovalumBlock::hugeTexts_data()
{
    QTest::addColumn<QString>("text");
    constexpr int huge = 20'000'000;
    QTest::newRow("line feeds") << QString(huge, QLatin1Char('\n'));
    QTest::newRow("tabs") << QString(huge, QLatin1Char('\t')) + QString(12, QLatin1Char('\n'));
    QTest::newRow("digits") << withField(2, 2, QString(huge, QLatin1Char('9')));
}

/// Whatever the clipboard holds, looking at it takes no noticeable time.
void tst_NovalumBlock::hugeTexts()
{
    QFETCH(QString, text);
    QVERIFY(!parseNovalumBlock(text).has_value());
}

void tst_NovalumBlock::tracesWhatItReads()
{
    const LogCapture log(QsLogging::LogLevel::Trace);
    parseNovalumBlock(pasted(rowsOf(numbered())));
    QCOMPARE(log.count(QStringLiteral("Pasting data into Novalum param table:")), 1);
    QCOMPARE(log.lines(QsLogging::LogLevel::Trace).size(), 1 + 12 + 84);
    QVERIFY(log.lines().at(1).contains(QStringLiteral("Row 0 ")));
    QVERIFY(log.lines().at(1).contains(QStringLiteral("-300\\t-299\\t-298")));
    const QString lastLine = log.lines().constLast();
    QVERIFY(lastLine.contains(QStringLiteral("Data 11 6 ")));
    QVERIFY(lastLine.contains(QStringLiteral("806")));
}

void tst_NovalumBlock::tracesAllFieldsOfABadBlock()
{
    const LogCapture log(QsLogging::LogLevel::Trace);
    QVERIFY(!parseNovalumBlock(withField(0, 0, QStringLiteral("bad%1"))).has_value());
    QCOMPARE(log.count(QStringLiteral("Data ")), 84);
    QVERIFY(log.contains(QStringLiteral("bad%1")));
}

QTEST_GUILESS_MAIN(tst_NovalumBlock)
#include "tst_NovalumBlock.moc"
