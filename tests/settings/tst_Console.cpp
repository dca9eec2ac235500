#include "settings/ConsoleBench.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTextBlock>

namespace {
constexpr int longestLine = 4096;

/// Counts how often a widget is painted.
class PaintCounter : public QObject
{
public:
    using QObject::QObject;
    int count() const { return m_count; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    int m_count = 0;
};

QList<QByteArray> inChunks(const QByteArray& bytes, int size)
{
    QList<QByteArray> chunks;
    for (int i = 0; i < bytes.size(); i += size) {
        chunks.append(bytes.mid(i, size));
    }
    return chunks;
}

QByteArray replies(int size)
{
    QByteArray text;
    for (int i = 0; text.size() < size; ++i) {
        text += "f_mode=run " + QByteArray::number(i) + "\r\n";
    }
    return text;
}

QByteArray randomBytes(int size)
{
    QRandomGenerator random(1);
    QByteArray bytes;
    for (int i = 0; i < size; ++i) {
        bytes += static_cast<char>(random.bounded(1, 256));
    }
    return bytes;
}

QStringList linesOf(const QPlainTextEdit& field)
{
    QStringList lines;
    for (QTextBlock line = field.document()->begin(); line.isValid(); line = line.next()) {
        lines.append(line.text());
    }
    return lines;
}
} // namespace

/// What the terminal shows of the device's bytes, and how quickly.
class tst_Console : public ConsoleTest
{
    Q_OBJECT

private slots:
    void init() { buildConsole(); }
    void cleanup() { removeConsole(); }
    void looks();
    void showsBytesAsTheyCome();
    void stopsAtAZeroByte();
    void bytesAsText_data();
    void bytesAsText();
    void anyByteDoesNoHarm();
    void keepsTheNewestHundredLines();
    void sameLinesAsAFieldWithoutLimits_data();
    void sameLinesAsAFieldWithoutLimits();
    void keepsTheNewestOfALongLine();
    void megabyte_data();
    void megabyte();
    void paintsOnceForManyChunks();
    void scrollsToTheEnd();
};

void tst_Console::looks()
{
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(m_console->palette().color(group, QPalette::Base), QColor(Qt::black));
        QCOMPARE(m_console->palette().color(group, QPalette::Text), QColor(Qt::green));
    }
    QCOMPARE(m_console->document()->maximumBlockCount(), 100);
    QVERIFY(!m_console->isUndoRedoEnabled());
}

void tst_Console::showsBytesAsTheyCome()
{
    m_console->putData("f_mode=");
    m_console->putData("idle\n<b>ok</b>");
    QCOMPARE(m_console->toPlainText(), QStringLiteral("f_mode=idle\n<b>ok</b>"));
    QVERIFY(m_keys->isEmpty());
}

void tst_Console::stopsAtAZeroByte()
{
    m_console->putData(QByteArray("ab\0cd", 5));
    m_console->putData(QByteArray("\0ef", 3));
    m_console->putData(QByteArray());
    QCOMPARE(m_console->toPlainText(), QStringLiteral("ab"));
}

void tst_Console::bytesAsText_data()
{
    QTest::addColumn<QList<QByteArray>>("chunks");
    QTest::addColumn<QStringList>("lines");
    const auto row = [](const char* name, const QList<QByteArray>& chunks, const QStringList& lines) {
        QTest::newRow(name) << chunks << lines;
    };
    row("line ends", {"a\nb\rc\r\nd"}, {"a", "b", "c", "d"});
    row("line end in two halves", {"a\r", "\nb"}, {"a", "b"});
    row("line end in two halves, nothing between", {"a\r", "", "\n", "\nb"}, {"a", "", "b"});
    row("two line feeds", {"a\n", "\nb"}, {"a", "", "b"});
    row("paragraph separator", {"a\u2029b"}, {"a", "b"});
    row("line separator", {"a\u2028b"}, {"a\u2028b"});
    row("whole characters", {"\u00e4\u20ac\U0001f600"}, {"\u00e4\u20ac\U0001f600"});
    row("halves of two bytes", {"a\xc3", "\xa4", "b"}, {"a\u00e4b"});
    row("four bytes apart", {"\xf0", "\x9f", "\x98", "\x80"}, {"\U0001f600"});
    row("an unfinished character", {"a\xc3", "b"}, {"a\ufffdb"});
    row("unfinished at a zero", {QByteArray("a\xc3\0z", 4), "\xa4"}, {"a\ufffd\ufffd"});
    row("no text", {"\xff\xfe"}, {"\ufffd\ufffd"});
    row("byte order mark", {"\xef\xbb\xbf"}, {QString(QChar(0xfeff))});
    row("escapes and bells", {"\x1b[31mred\x1b[0m\a\t\x7f"}, {"\x1b[31mred\x1b[0m\a\t\x7f"});
    const QString unseen =
        QLatin1Char('a') % QChar(0x202e) % QLatin1Char('b') % QChar(0x200b) % QChar(0x05d0);
    row("right to left and unseen", {unseen.toUtf8()}, {unseen});
    row("markup and formats", {"<b>%1 %s &amp;</b>"}, {"<b>%1 %s &amp;</b>"});
}

void tst_Console::bytesAsText()
{
    QFETCH(QList<QByteArray>, chunks);
    QFETCH(QStringList, lines);
    for (const QByteArray& chunk : qAsConst(chunks)) {
        m_console->putData(chunk);
    }
    QCOMPARE(linesOf(*m_console), lines);
}

void tst_Console::anyByteDoesNoHarm()
{
    QString printable;
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte) {
        m_console->putData(QByteArray(1, static_cast<char>(byte)));
        all.prepend(static_cast<char>(byte));
        if (byte >= ' ' && byte <= '~') {
            printable += QLatin1Char(static_cast<char>(byte));
        }
    }
    QVERIFY(m_console->toPlainText().contains(printable));
    m_console->putData(all);
    m_console->putData("\nok");
    QCOMPARE(linesOf(*m_console).constLast(), QStringLiteral("ok"));
    QVERIFY(!m_console->grab().isNull());
}

void tst_Console::keepsTheNewestHundredLines()
{
    for (int i = 1; i <= 250; ++i) {
        m_console->putData(QByteArray::number(i) + '\n');
    }
    const QStringList lines = m_console->toPlainText().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 100);
    QCOMPARE(lines.first(), QStringLiteral("152"));
    QCOMPARE(lines.at(98), QStringLiteral("250"));
}

void tst_Console::sameLinesAsAFieldWithoutLimits_data()
{
    QTest::addColumn<int>("pieces");
    for (const int pieces : {90, 300, 1000, 5000}) {
        QTest::addRow("%d pieces", pieces) << pieces;
    }
}

void tst_Console::sameLinesAsAFieldWithoutLimits()
{
    QFETCH(int, pieces);
    const QList<QByteArray> alphabet{"a",      "bcd",    "\n",     "\n\n\n", "\r",    "\r\n",
                                     "\u00e4", "\u2029", "\u2028", "\ufdd0", "\ufdd1"};
    QRandomGenerator random(static_cast<quint32>(pieces));
    QByteArray all;
    for (int i = 0; i < pieces; ++i) {
        all += alphabet.at(random.bounded(int(alphabet.size())));
    }
    QPlainTextEdit field;
    field.insertPlainText(QString::fromUtf8(all));
    const QStringList expected = linesOf(field);

    for (int i = 0, size = 0; i < all.size(); i += size) {
        size = random.bounded(1, 1 + qMin(int(all.size()) - i, 400));
        m_console->putData(all.mid(i, size));
    }
    QCOMPARE(linesOf(*m_console), expected.mid(qMax(0, int(expected.size()) - 100)));
}

void tst_Console::keepsTheNewestOfALongLine()
{
    m_console->putData(QByteArray(longestLine, 'a'));
    m_console->putData("bc\nd");
    QCOMPARE(linesOf(*m_console).constFirst(),
             QString(longestLine - 2, QLatin1Char('a')) + QLatin1String("bc"));

    m_console->putData("\nx" + QByteArray("\U0001f600").repeated(longestLine));
    const QString faces = linesOf(*m_console).constLast();
    QCOMPARE(faces.size(), longestLine);
    m_console->putData("y");
    const QString cut = linesOf(*m_console).constLast();
    QCOMPARE(cut.size(), longestLine - 1); // one face less, not half of one
    QVERIFY(cut.at(0).isHighSurrogate());

    m_console->putData("\n" + QByteArray(longestLine, 'e'));
    press(Qt::Key_F, Qt::NoModifier, QStringLiteral("f"));
    const QString typed = linesOf(*m_console).constLast();
    QCOMPARE(typed.size(), longestLine);
    QVERIFY(typed.endsWith(QLatin1String("ef")));
}

void tst_Console::megabyte_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("chunk");
    const int size = 1'000'000;
    QTest::newRow("replies, one chunk") << replies(size) << size * 2;
    QTest::newRow("replies, chunks of 64") << replies(size) << 64;
    QTest::newRow("no line feed") << QByteArray(size, 'x') << size;
    QTest::newRow("no line feed, chunks of 64, less of it") << QByteArray(size / 10, 'x') << 64;
    QTest::newRow("line feeds") << QByteArray(size, '\n') << size;
    QTest::newRow("carriage returns") << QByteArray(size, '\r') << size;
    QTest::newRow("paragraph separators") << QByteArray("\u2029").repeated(size) << size * 3;
    QTest::newRow("line separators") << QByteArray("\u2028").repeated(size / 3) << size;
    QTest::newRow("long lines") << QByteArray(QByteArray(size / 20, 'x') + '\n').repeated(20) << size * 2;
    QTest::newRow("right to left") << QByteArray("\u05d0").repeated(size / 2) << size;
    QTest::newRow("random bytes") << randomBytes(size) << size;
    QTest::newRow("random bytes, chunks of 64, less of it") << randomBytes(size / 10) << 64;
}

void tst_Console::megabyte()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, chunk);
    constexpr qint64 heldAtMostMs = 1000; // a fiftieth of it on a quiet machine
    qint64 longestMs = 0;
    QElapsedTimer timer;
    const QList<QByteArray> parts = inChunks(bytes, chunk);
    for (const QByteArray& part : parts) {
        timer.start();
        m_console->putData(part);
        QCoreApplication::processEvents();
        longestMs = qMax(longestMs, timer.elapsed());
    }
    timer.start();
    m_console->grab();
    QVERIFY2(qMax(longestMs, timer.elapsed()) < heldAtMostMs, qPrintable(QString::number(longestMs)));
    QTRY_VERIFY(isScrolledToTheEnd());
    QVERIFY(m_console->blockCount() <= 100);
    const QStringList lines = linesOf(*m_console);
    for (const QString& line : lines) {
        QVERIFY(line.size() <= longestLine);
    }
    m_console->putData("the newest");
    QVERIFY(m_console->toPlainText().endsWith(QLatin1String("the newest")));
}

void tst_Console::paintsOnceForManyChunks()
{
    PaintCounter paints;
    m_console->viewport()->installEventFilter(&paints);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 2000; ++i) {
        m_console->putData("f_mode=run\n");
        QCoreApplication::processEvents();
    }
    constexpr qint64 leastMsBetween = 10;
    QVERIFY(paints.count() <= timer.elapsed() / leastMsBetween + 2);
    QVERIFY(paints.count() > 0); // while chunks keep coming
    const int before = paints.count();
    m_console->putData("the last\n");
    QTRY_VERIFY(paints.count() > before);
    QVERIFY(m_console->viewport()->updatesEnabled());
}

void tst_Console::scrollsToTheEnd()
{
    for (int i = 0; i < 60; ++i) {
        m_console->putData("line\n");
    }
    QVERIFY(m_console->verticalScrollBar()->maximum() > 0);
    m_console->verticalScrollBar()->setValue(0);
    m_console->putData("newest\n");
    QVERIFY(isScrolledToTheEnd());
}

QTEST_MAIN(tst_Console)
#include "tst_Console.moc"
