#include "QsLog2_1_0/QsLog.h"
#include "RecordedLogTest.h"

#include <QDateTime>
#include <QtTest>

#include <functional>

using QsLogging::Logger;
using QsLogging::LogLevel;

namespace {

using Action = std::function<void()>;

/// Characters before the message: level text, blank, time, blank.
constexpr int headLength = 5 + 1 + 23 + 1;

} // namespace

Q_DECLARE_METATYPE(Action)

/// The macros that callers write.
class TestQsLog : public RecordedLogTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { begin(); }
    void cleanup() { end(); }
    void startsWithLevelAndTime_data();
    void startsWithLevelAndTime();
    void filtersByLevel_data();
    void filtersByLevel();
    void evaluatesNothingWhenFiltered();
    void standsInAnIfWithoutBraces();
};

void TestQsLog::startsWithLevelAndTime_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<Action>("write");
    QTest::addColumn<QString>("start");

    const auto row = [](const char* name, LogLevel level, const Action& write, const char* start) {
        QTest::newRow(name) << static_cast<int>(level) << write << QString::fromLatin1(start);
    };
    row(
        "trace", LogLevel::Trace, [] { QS_TRACE() << "x"; }, "TRACE ");
    row(
        "debug", LogLevel::Debug, [] { QS_DEBUG() << "x"; }, "DEBUG ");
    row(
        "info", LogLevel::Info, [] { QS_INFO() << "x"; }, "INFO  ");
    row(
        "warn", LogLevel::Warn, [] { QS_WARN() << "x"; }, "WARN  ");
    row(
        "error", LogLevel::Error, [] { QS_ERROR() << "x"; }, "ERROR ");
    row(
        "fatal", LogLevel::Fatal, [] { QS_FATAL() << "x"; }, "FATAL ");
    row(
        "off", LogLevel::Off, [] { QS_LOG(LogLevel::Off) << "x"; }, " ");
}

void TestQsLog::startsWithLevelAndTime()
{
    QFETCH(int, level);
    QFETCH(Action, write);
    QFETCH(QString, start);

    const QString format = QStringLiteral("yyyy-MM-ddThh:mm:ss.zzz");
    const QString before = QDateTime::currentDateTime().toString(format);
    write();
    const QString after = QDateTime::currentDateTime().toString(format);

    QCOMPARE(m_recorder->lines.size(), 1);
    QCOMPARE(static_cast<int>(m_recorder->levels.first()), level);
    const QString line = m_recorder->lines.first();
    QVERIFY2(line.startsWith(start), qPrintable(line));
    const QString time = line.mid(start.size(), before.size());
    QVERIFY2(time >= before && time <= after, qPrintable(line));
    QCOMPARE(line.mid(start.size() + time.size()), QStringLiteral(" x"));
}

void TestQsLog::filtersByLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QStringList>("passed");

    const QStringList all = {QStringLiteral("t"), QStringLiteral("d"), QStringLiteral("i"),
                             QStringLiteral("w"), QStringLiteral("e"), QStringLiteral("f")};
    for (int level = 0; level <= 6; ++level) {
        QTest::addRow("%d", level) << level << QStringList(all.mid(level));
    }
}

void TestQsLog::filtersByLevel()
{
    QFETCH(int, level);
    QFETCH(QStringList, passed);

    Logger::instance().setLevel(static_cast<LogLevel>(level));
    QS_TRACE() << "t";
    QS_DEBUG() << "d";
    QS_INFO() << "i";
    QS_WARN() << "w";
    QS_ERROR() << "e";
    QS_FATAL() << "f";

    QStringList messages;
    for (const QString& line : qAsConst(m_recorder->lines)) {
        messages.append(line.mid(headLength));
    }
    QCOMPARE(messages, passed);
}

void TestQsLog::evaluatesNothingWhenFiltered()
{
    Logger::instance().setLevel(LogLevel::Info);
    int evaluated = 0;
    QS_DEBUG() << ++evaluated;
    QCOMPARE(evaluated, 0);
    QS_INFO() << ++evaluated;
    QCOMPARE(evaluated, 1);
}

void TestQsLog::standsInAnIfWithoutBraces()
{
    // The missing braces are what is tested. NOLINTBEGIN(readability-braces-around-statements)
    for (const bool condition : {true, false}) {
        if (condition)
            QS_INFO() << "then";
        else
            QS_INFO() << "else";
    }
    if (m_recorder->lines.isEmpty())
        QS_INFO() << "never";
    // NOLINTEND(readability-braces-around-statements)
    QCOMPARE(m_recorder->lines.size(), 2);
    QVERIFY(m_recorder->lines.at(0).endsWith(QLatin1String(" then")));
    QVERIFY(m_recorder->lines.at(1).endsWith(QLatin1String(" else")));
}

QTEST_APPLESS_MAIN(TestQsLog)

#include "tst_QsLog.moc"
