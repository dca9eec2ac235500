#include "QsLog2_1_0/LogLevel.h"

#include <QtTest>

using QsLogging::LogLevel;

class TestLogLevel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data();
    void values();
    void readsText_data();
    void readsText();
    void needsNoFlag();
};

void TestLogLevel::values_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("text");

    const auto row = [](LogLevel level, int number, const char* text) {
        QTest::addRow("%d", number) << static_cast<int>(level) << number << QString::fromLatin1(text);
    };
    row(LogLevel::Trace, 0, "TRACE");
    row(LogLevel::Debug, 1, "DEBUG");
    row(LogLevel::Info, 2, "INFO ");
    row(LogLevel::Warn, 3, "WARN ");
    row(LogLevel::Error, 4, "ERROR");
    row(LogLevel::Fatal, 5, "FATAL");
    row(LogLevel::Off, 6, "");
}

void TestLogLevel::values()
{
    QFETCH(int, level);
    QFETCH(int, number);
    QFETCH(QString, text);

    QCOMPARE(level, number);
    QCOMPARE(QString(QsLogging::textForLevel(static_cast<LogLevel>(level))), text);
}

void TestLogLevel::readsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("ok");

    const auto row = [](const char* text, LogLevel level, bool ok) {
        QTest::addRow("'%s'", text) << QString::fromLatin1(text) << static_cast<int>(level) << ok;
    };
    row("TRACE", LogLevel::Trace, true);
    row("DEBUG", LogLevel::Debug, true);
    row("INFO ", LogLevel::Info, true);
    row("WARN ", LogLevel::Warn, true);
    row("ERROR", LogLevel::Error, true);
    row("FATAL", LogLevel::Fatal, true);
    row("INFO  2024-03-05T14:07:09.031 Start programming FLASH", LogLevel::Info, true);
    row("TRACER", LogLevel::Trace, true);
    row("INFO", LogLevel::Off, false); // the fifth character is missing
    row("WARNING", LogLevel::Off, false);
    row("info ", LogLevel::Off, false);
    row(" INFO ", LogLevel::Off, false);
    row("OFF", LogLevel::Off, false);
    row("", LogLevel::Off, false);
}

void TestLogLevel::readsText()
{
    QFETCH(QString, text);
    QFETCH(int, level);
    QFETCH(bool, ok);

    bool told = !ok;
    QCOMPARE(static_cast<int>(QsLogging::levelFromText(text, &told)), level);
    QCOMPARE(told, ok);
}

void TestLogLevel::needsNoFlag()
{
    QVERIFY(QsLogging::levelFromText(QStringLiteral("ERROR")) == LogLevel::Error);
    QVERIFY(QsLogging::levelFromText(QStringLiteral("?")) == LogLevel::Off);
}

QTEST_APPLESS_MAIN(TestLogLevel)

#include "tst_LogLevel.moc"
