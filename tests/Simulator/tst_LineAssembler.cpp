#include "Simulator/LineAssembler.h"

#include <QTest>

using Simulator::LineAssembler;
using Lines = QList<QByteArray>;

class tst_LineAssembler : public QObject
{
    Q_OBJECT

private slots:
    void cutsLines_data();
    void cutsLines();
    void dropsLinesThatAreTooLong();
    void resetForgetsTheBeginning();
};

void tst_LineAssembler::cutsLines_data()
{
    QTest::addColumn<Lines>("chunks");
    QTest::addColumn<Lines>("lines");

    QTest::newRow("nothing") << Lines{} << Lines{};
    QTest::newRow("no end yet") << Lines{"f_mo"} << Lines{};
    QTest::newRow("one line") << Lines{"v\n"} << Lines{"v"};
    QTest::newRow("in pieces") << Lines{"f_", "mode?", "\n"} << Lines{"f_mode?"};
    QTest::newRow("two at once") << Lines{"v\nv?a\n"} << (Lines{"v", "v?a"});
    QTest::newRow("empty line") << Lines{"wf:S2\n\nv\n"} << (Lines{"wf:S2", "", "v"});
    QTest::newRow("return alone") << Lines{"v\r", "v?a\r"} << (Lines{"v", "v?a"});
    QTest::newRow("return and feed") << Lines{"v\r\nv?a\r\n"} << (Lines{"v", "v?a"});
    QTest::newRow("return, feed later") << Lines{"v\r", "\nv?a\n"} << (Lines{"v", "v?a"});
    QTest::newRow("two returns") << Lines{"v\r\r"} << (Lines{"v", ""});
    QTest::newRow("zero byte kept") << Lines{QByteArray("a\0b\n", 4)} << Lines{QByteArray("a\0b", 3)};
    QTest::newRow("high bytes kept") << Lines{"\xff\x80\n"} << Lines{"\xff\x80"};
}

void tst_LineAssembler::cutsLines()
{
    QFETCH(Lines, chunks);
    LineAssembler assembler;
    Lines lines;
    for (const QByteArray& chunk : chunks) {
        lines.append(assembler.feed(chunk));
    }
    QTEST(lines, "lines");
}

void tst_LineAssembler::dropsLinesThatAreTooLong()
{
    LineAssembler assembler;
    const QByteArray longest(LineAssembler::kMaxLineBytes, 'x');
    QCOMPARE(assembler.feed(longest + '\n'), Lines{longest});
    QCOMPARE(assembler.feed(longest + "yz"), Lines{});
    QCOMPARE(assembler.feed("still the same line\nv\n"), Lines{"v"});
}

void tst_LineAssembler::resetForgetsTheBeginning()
{
    LineAssembler assembler;
    assembler.feed("half a li");
    assembler.reset();
    QCOMPARE(assembler.feed("v\n"), Lines{"v"});
}

QTEST_GUILESS_MAIN(tst_LineAssembler)
#include "tst_LineAssembler.moc"
