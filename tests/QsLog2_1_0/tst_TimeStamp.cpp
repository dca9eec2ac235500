#include "QsLog2_1_0/TimeStamp.h"

#include <QDateTime>
#include <QtTest>

#include <array>
#include <ctime>

namespace {

QString stamp(qint64 msecsSinceEpoch)
{
    std::array<QChar, QsLogging::timeStampLength> characters;
    QsLogging::writeTimeStamp(msecsSinceEpoch, characters.data());
    return QString(characters.data(), QsLogging::timeStampLength);
}

const QString format = QStringLiteral("yyyy-MM-ddThh:mm:ss.zzz");

} // namespace

class TestTimeStamp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void formats_data();
    void formats();
    void agreesWithTheFullFormat();
    void currentTime();
    void keepsItsLength();
};

void TestTimeStamp::init()
{
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    tzset();
}

void TestTimeStamp::formats_data()
{
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, qint64 milliseconds, const char* text) {
        QTest::newRow(name) << milliseconds << QString::fromLatin1(text);
    };
    // In this order, so that each row finds what the one before left behind.
    row("winter", 1709644029031, "2024-03-05T14:07:09.031");
    row("same second", 1709644029999, "2024-03-05T14:07:09.999");
    row("next second", 1709644030000, "2024-03-05T14:07:10.000");
    row("clock set back", 1709644029001, "2024-03-05T14:07:09.001");
    row("before summer time", 1711846799999, "2024-03-31T01:59:59.999");
    row("summer time", 1711846800000, "2024-03-31T03:00:00.000");
    row("second pass of the hour", 1729990800000, "2024-10-27T02:00:00.000");
    row("epoch", 0, "1970-01-01T01:00:00.000");
    row("before the epoch", -1, "1970-01-01T00:59:59.999");
}

void TestTimeStamp::formats()
{
    QFETCH(qint64, milliseconds);
    QFETCH(QString, text);

    QCOMPARE(stamp(milliseconds), text);
}

void TestTimeStamp::agreesWithTheFullFormat()
{
    // Steps of a bit less than a second hit every millisecond of a second and cross all other limits.
    for (qint64 time = 1709251190123; time < 1709254181123; time += 997) {
        QCOMPARE(stamp(time), QDateTime::fromMSecsSinceEpoch(time).toString(format));
    }
}

void TestTimeStamp::currentTime()
{
    std::array<QChar, QsLogging::timeStampLength> characters;
    const QDateTime before = QDateTime::currentDateTime();
    QsLogging::writeCurrentTimeStamp(characters.data());
    const QDateTime after = QDateTime::currentDateTime();

    const QString text(characters.data(), QsLogging::timeStampLength);
    QVERIFY2(text >= before.toString(format) && text <= after.toString(format), qPrintable(text));
}

void TestTimeStamp::keepsItsLength()
{
    const QString text = stamp(Q_INT64_C(400'000'000'000'005)); // the year 14645
    QCOMPARE(text.size(), QsLogging::timeStampLength);
    QVERIFY(text.endsWith(QLatin1String(".005")));
}

QTEST_APPLESS_MAIN(TestTimeStamp)

#include "tst_TimeStamp.moc"
