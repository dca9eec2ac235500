#include "LogFolderTest.h"
#include "QsLog2_1_0/DestinationFactory.h"
#include "StderrCapture.h"
#include "support/FileSizeLimit.h"

#include <QtTest>

using namespace QsLogging;

/// A log file on a disk that has no more room.
class TestLogFile : public LogFolderTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { begin(); }
    void cleanup() { end(); }
    void losesLinesOnAFullDisk();
    void completesACutLine();
    void forgetsACutLineWithItsFile();
};

void TestLogFile::losesLinesOnAFullDisk()
{
    // Without rotation and by a link, so that nothing can ever be done to the device itself.
    if (!QFile::exists(QStringLiteral("/dev/full"))) {
        QTest::qSkip("there is no device that is always full", __FILE__, __LINE__);
        return;
    }
    QVERIFY(QFile::link(QStringLiteral("/dev/full"), path()));
    StderrCapture errors;
    const DestinationPtr destination = makeFileDestination(path());
    QVERIFY(destination->isValid());
    for (int i = 0; i < 1000; ++i) {
        destination->write(QStringLiteral("lost"), LogLevel::Info);
    }
    QVERIFY(destination->isValid());
    QCOMPARE(errors.take(), QByteArray());
}

void TestLogFile::completesACutLine()
{
    const DestinationPtr destination = makeFileDestination(path(), true, 1'000'000, 10);
    destination->write(QStringLiteral("one"), LogLevel::Info);
    {
        const FileSizeLimit limit(8);
        destination->write(QStringLiteral("two is cut"), LogLevel::Info);
        QCOMPARE(contentOf(path()), QByteArray("one\ntwo "));
        destination->write(QStringLiteral("three is lost"), LogLevel::Info);
        QCOMPARE(contentOf(path()), QByteArray("one\ntwo "));
    }
    {
        const FileSizeLimit limit(10); // room for a bit of the rest
        destination->write(QStringLiteral("four is lost"), LogLevel::Info);
        QCOMPARE(contentOf(path()), QByteArray("one\ntwo is"));
    }
    destination->write(QStringLiteral("five"), LogLevel::Info);
    QCOMPARE(contentOf(path()), QByteArray("one\ntwo is cut\nfive\n"));
}

void TestLogFile::forgetsACutLineWithItsFile()
{
    const DestinationPtr destination = makeFileDestination(path(), true, 12, 1);
    {
        const FileSizeLimit limit(5);
        destination->write(QStringLiteral("one is cut"), LogLevel::Info);
    }
    destination->write(QStringLiteral("two"), LogLevel::Info); // begins a new file
    QCOMPARE(contentOf(path() + QLatin1String(".1")), QByteArray("one i"));
    QCOMPARE(contentOf(path()), QByteArray("two\n"));
}

QTEST_APPLESS_MAIN(TestLogFile)

#include "tst_LogFile.moc"
