#include "QsLog2_1_0/DestinationFactory.h"
#include "StderrCapture.h"
#include "support/WarningWatch.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>

using namespace QsLogging;

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

/// No file of the process grows beyond this while it lives: a disk that is full in the middle of a line.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    FileSizeLimit(FileSizeLimit&&) = delete;
    FileSizeLimit& operator=(FileSizeLimit&&) = delete;

private:
    rlimit m_before{};
};

} // namespace

/// A log file on a disk that has no more room.
class TestLogFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void losesLinesOnAFullDisk();
    void completesACutLine();
    void forgetsACutLineWithItsFile();

private:
    QString path() const { return m_folder->filePath(QStringLiteral("VYR_Log.txt")); }

    QScopedPointer<QTemporaryDir> m_folder;
    QScopedPointer<WarningWatch> m_watch;
};

void TestLogFile::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
    m_watch.reset(new WarningWatch);
}

void TestLogFile::cleanup()
{
    QCOMPARE(WarningWatch::messages(), QStringList());
    m_watch.reset();
}

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
