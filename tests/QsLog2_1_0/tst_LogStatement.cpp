#include "QsLog2_1_0/QsLog.h"
#include "RecordedLogTest.h"

#include <QRegularExpression>
#include <QtTest>

#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

using QsLogging::LogLevel;
using QsLogging::LogStatement;

namespace {

using Build = std::function<void(LogStatement&)>;

/// Characters before the message: level text, blank, time, blank.
constexpr int headLength = 5 + 1 + 23 + 1;

int addressed = 0;

/// Containers look a little different from one release of Qt to the next.
template<typename T>
QString shownByQt(const T& value)
{
    QString shown;
    QDebug(&shown).nospace() << value;
    return shown;
}

struct Unprintable
{
};

QDebug operator<<(QDebug debug, Unprintable /*value*/)
{
    throw std::runtime_error("cannot be shown");
    return debug;
}

struct TwoLines
{
};

QDebug operator<<(QDebug debug, TwoLines /*value*/)
{
    debug.noquote() << QStringLiteral("one\r\ntwo");
    return debug;
}

} // namespace

Q_DECLARE_METATYPE(Build)

class TestLogStatement : public RecordedLogTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { begin(); }
    void cleanup() { end(); }
    void showsItems_data();
    void showsItems();
    void quotedTextCannotForgeALine_data();
    void quotedTextCannotForgeALine();
    void replacesNoPlaceholders();
    void growsWithItsItems();
    void itemThatLogs();
    void itemThatThrows();
    void keepsLinesOfThreadsApart();

private:
    QString message() const { return m_recorder->lines.value(0).mid(headLength); }
};

namespace {
void row(const char* name, const Build& build, const QString& message)
{
    QTest::newRow(name) << build << message;
}

void addTexts()
{
    const QString port = QStringLiteral("ttyACM0");
    row("nothing", [](LogStatement&) {}, {});
    row(
        "literal", [](LogStatement& s) { s << "Start programming FLASH"; },
        QStringLiteral("Start programming FLASH"));
    row(
        "joined", [port](LogStatement& s) { s << "Product match on port" << port << 7; },
        QStringLiteral("Product match on port \"ttyACM0\" 7"));
    row(
        "empty items keep their places", [](LogStatement& s) { s << "" << QString() << "" << 1; },
        QStringLiteral(" \"\"  1"));
    row(
        "literal in UTF-8",
        [](LogStatement& s) {
            s << "at"
              << "\xc2\xb0"
                 "C"
              << 2;
        },
        QStringLiteral("at \u00b0C 2"));
    row(
        "character pointer",
        [](LogStatement& s) {
            const char* text = "bare";
            s << text;
        },
        QStringLiteral("bare"));
    row(
        "character array",
        [](LogStatement& s) {
            char text[16] = "short";
            s << text << 1;
        },
        QStringLiteral("short 1"));
    row(
        "null character pointer",
        [](LogStatement& s) { s << "a" << static_cast<const char*>(nullptr) << "b"; },
        QStringLiteral("a  b"));
    row(
        "byte array", [](LogStatement& s) { s << QByteArray("f_mode?"); }, QStringLiteral("\"f_mode?\""));
    row(
        "standard string", [](LogStatement& s) { s << std::string("text"); }, QStringLiteral("\"text\""));
    row(
        "Latin-1 string", [](LogStatement& s) { s << QLatin1String("text"); }, QStringLiteral("\"text\""));
    row(
        "concatenation", [port](LogStatement& s) { s << "/dev/" + port; },
        QStringLiteral("\"/dev/ttyACM0\""));
    row(
        "quoted umlaut", [](LogStatement& s) { s << QStringLiteral("\u00e4"); },
        QStringLiteral("\"\u00e4\""));
}

void addNumbers()
{
    row(
        "booleans", [](LogStatement& s) { s << true << false; }, QStringLiteral("true false"));
    row(
        "characters", [](LogStatement& s) { s << 'a' << '\n'; }, QStringLiteral("a \"\\n\""));
    row(
        "small integers",
        [](LogStatement& s) { s << qint8(-5) << quint8(200) << qint16(-300) << quint16(65535); },
        QStringLiteral("-5 200 -300 65535"));
    row(
        "integers", [](LogStatement& s) { s << -40007 << 4000000000U << 0; },
        QStringLiteral("-40007 4000000000 0"));
    row(
        "64 bits",
        [](LogStatement& s) {
            s << std::numeric_limits<qint64>::min() << std::numeric_limits<quint64>::max();
        },
        QStringLiteral("-9223372036854775808 18446744073709551615"));
    row(
        "reals", [](LogStatement& s) { s << 0.5 << 12.25F << 1e20 << qQNaN(); },
        QStringLiteral("0.5 12.25 1e+20 nan"));
}

void addOthers()
{
    row(
        "address", [](LogStatement& s) { s << &addressed << static_cast<const void*>(&addressed); },
        QString(QLatin1String("0x%1 0x%1")).arg(reinterpret_cast<quintptr>(&addressed), 0, 16));
    row(
        "null address", [](LogStatement& s) { s << static_cast<QObject*>(nullptr) << nullptr; },
        QStringLiteral("0x0 (nullptr)"));
    row(
        "enumeration", [](LogStatement& s) { s << QFile::OpenError << Qt::AlignLeft; },
        QStringLiteral("5 Qt::AlignLeft"));
    row(
        "list",
        [](LogStatement& s) {
            s << QStringList{QStringLiteral("a"), QStringLiteral("b")} << 1;
        },
        shownByQt(QStringList{QStringLiteral("a"), QStringLiteral("b")}) + QStringLiteral(" 1"));
    row(
        "variant", [](LogStatement& s) { s << QVariant(7) << "end"; },
        QStringLiteral("QVariant(int, 7) end"));
    row(
        "type that breaks lines", [](LogStatement& s) { s << TwoLines{}; }, QStringLiteral("one\\r\\ntwo"));
}
} // namespace

void TestLogStatement::showsItems_data()
{
    QTest::addColumn<Build>("build");
    QTest::addColumn<QString>("message");
    addTexts();
    addNumbers();
    addOthers();
}

void TestLogStatement::showsItems()
{
    QFETCH(Build, build);
    QFETCH(QString, message);

    {
        LogStatement statement(LogLevel::Info);
        build(statement);
    }
    QCOMPARE(m_recorder->lines.size(), 1);
    QCOMPARE(this->message(), message);
}

void TestLogStatement::quotedTextCannotForgeALine_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");

    QTest::newRow("line feed") << QStringLiteral("a\nb") << QStringLiteral("\"a\\nb\"");
    QTest::newRow("carriage return") << QStringLiteral("a\rb") << QStringLiteral("\"a\\rb\"");
    QTest::newRow("tab") << QStringLiteral("\t") << QStringLiteral("\"\\t\"");
    QTest::newRow("quote") << QStringLiteral("\" x") << QStringLiteral("\"\\\" x\"");
    QTest::newRow("backslash") << QStringLiteral("\\") << QStringLiteral("\"\\\\\"");
    QTest::newRow("zero") << QString(QChar(0)) << QStringLiteral("\"\\u0000\"");
    QTest::newRow("escape") << QString(QChar(27)) << QStringLiteral("\"\\u001B\"");
    QTest::newRow("delete") << QString(QChar(127)) << QStringLiteral("\"\\u007F\"");
    QTest::newRow("next line") << QString(QChar(0x85)) << QStringLiteral("\"\\u0085\"");
    QTest::newRow("line separator") << QString(QChar(0x2028)) << QStringLiteral("\"\\u2028\"");
    QTest::newRow("paragraph separator") << QString(QChar(0x2029)) << QStringLiteral("\"\\u2029\"");
    QTest::newRow("half a pair") << QString(QChar(0xd800)) << QStringLiteral("\"\\uD800\"");
}

void TestLogStatement::quotedTextCannotForgeALine()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);

    QS_INFO() << text << 1;
    QCOMPARE(message(), shown + QLatin1String(" 1"));

    // Bytes from the wire take another way but must come out as harmless.
    QS_INFO() << text.toLatin1();
    QString bytesLine = m_recorder->lines.value(1);
    for (const QChar character : qAsConst(bytesLine)) {
        QVERIFY2(character.unicode() >= 0x20 && character.unicode() < 0x7f, qPrintable(bytesLine));
    }
    bytesLine.remove(QLatin1String("\\\\")).remove(QLatin1String("\\\""));
    QCOMPARE(bytesLine.count(QLatin1Char('"')), 2);
}

void TestLogStatement::replacesNoPlaceholders()
{
    QS_INFO() << "%1 %2 %3 %L1 %99" << QStringLiteral("%1");
    QCOMPARE(message(), QStringLiteral("%1 %2 %3 %L1 %99 \"%1\""));
}

void TestLogStatement::growsWithItsItems()
{
    // Every length around the space set aside for a line, by each way an item takes.
    for (int length = 0; length < 700; length += 7) {
        const QByteArray bytes(length, 'b');
        const QString text(length, QLatin1Char('t'));
        m_recorder->lines.clear();
        QS_INFO() << bytes.constData() << text << bytes << 12345 << text + QChar(0xe4);
        QCOMPARE(message(),
                 QStringLiteral("%1 \"%2\" \"%1\" 12345 \"%2\u00e4\"").arg(QString::fromLatin1(bytes), text));
    }
}

void TestLogStatement::itemThatLogs()
{
    const auto answer = [] {
        QS_INFO() << "inner";
        return 42;
    };
    QS_INFO() << "outer" << answer();
    QCOMPARE(m_recorder->lines.size(), 2);
    QVERIFY(m_recorder->lines.at(0).endsWith(QLatin1String(" inner")));
    QVERIFY(m_recorder->lines.at(1).endsWith(QLatin1String(" outer 42")));
}

void TestLogStatement::itemThatThrows()
{
    QVERIFY_EXCEPTION_THROWN(QS_INFO() << "before" << Unprintable{} << "after", std::runtime_error);
    QCOMPARE(m_recorder->lines.size(), 1);
    QCOMPARE(message(), QStringLiteral("before"));
}

void TestLogStatement::keepsLinesOfThreadsApart()
{
    constexpr int threadCount = 4;
    constexpr int lineCount = 500;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread] {
            for (int line = 0; line < lineCount; ++line) {
                QS_INFO() << "thread" << thread << "line" << line;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    QCOMPARE(m_recorder->lines.size(), threadCount * lineCount);
    std::vector<int> next(threadCount, 0);
    const QRegularExpression form(QStringLiteral("^INFO  [-T:.\\d]{23} thread (\\d) line (\\d+)$"));
    for (const QString& line : qAsConst(m_recorder->lines)) {
        const QRegularExpressionMatch match = form.match(line);
        QVERIFY2(match.hasMatch(), qPrintable(line));
        QCOMPARE(match.captured(2).toInt(), next.at(match.captured(1).toUInt())++);
    }
}

QTEST_APPLESS_MAIN(TestLogStatement)

#include "tst_LogStatement.moc"
