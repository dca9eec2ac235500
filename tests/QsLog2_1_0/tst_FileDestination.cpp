#include "LogFolderTest.h"
#include "LogRecorder.h"
#include "QsLog2_1_0/FileDestination.h"
#include "QsLog2_1_0/QsLog.h"
#include "StderrCapture.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include <functional>
#include <utility>

using namespace QsLogging;

namespace {

void put(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

/// Rotates before every line, in a way of the test's own.
class EverySingleLine : public RotationStrategy
{
public:
    explicit EverySingleLine(std::function<void()> rotation) : m_rotation(std::move(rotation)) {}
    void attachFile(const QFile& /*file*/) override { ++attached; }
    void countMessage(const QString& /*message*/) override {}
    bool shouldRotate() override { return true; }
    void rotate() override { m_rotation(); }
    QIODevice::OpenMode openModeFlag() const override { return QIODevice::Append; }

    int attached = 0;

private:
    std::function<void()> m_rotation;
};

} // namespace

class TestFileDestination : public LogFolderTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { begin(); }
    void cleanup() { end(); }
    void describesItself();
    void beginsAnewWithoutRotation();
    void continuesWithRotation();
    void flushesEveryLine();
    void writesUtf8();
    void rotatesAtTheLimit();
    void countsWhatWasThere();
    void keepsTenOfTwentyFive();
    void keepsNone();
    void leavesBackupsBeyondAGap();
    void writesUtf8AfterRotation();
    void tellsWhereItCannotOpen_data();
    void tellsWhereItCannotOpen();
    void tellsOnceWhereItCannotReopen();
    void staysQuietWhereBackupsCannotBeMade();
    void keepsOtherDestinationsGoing();

private:
    QByteArray backup(int index) const
    {
        return contentOf(path() + QLatin1Char('.') + QString::number(index));
    }
    auto fileCount() const { return QDir(folderPath()).entryList(QDir::Files | QDir::System).size(); }
};

void TestFileDestination::describesItself()
{
    const DestinationPtr good = makeFileDestination(path());
    QVERIFY(good->isValid());
    QCOMPARE(good->type(), QStringLiteral("file"));

    const StderrCapture errors;
    const DestinationPtr bad = makeFileDestination(path(QStringLiteral("no/such/folder")));
    QVERIFY(!bad->isValid());
    QCOMPARE(bad->type(), QStringLiteral("file"));
}

void TestFileDestination::beginsAnewWithoutRotation()
{
    put(path(), "old\n");
    const DestinationPtr destination = makeFileDestination(path(), false, 3, 5);
    for (int i = 0; i < 3; ++i) {
        destination->write(QString::number(i), LogLevel::Info);
    }
    QCOMPARE(contentOf(path()), QByteArray("0\n1\n2\n"));
    QCOMPARE(fileCount(), 1);
}

void TestFileDestination::continuesWithRotation()
{
    put(path(), "old\n");
    makeFileDestination(path(), true, 1000, 5)->write(QStringLiteral("first start"), LogLevel::Info);
    makeFileDestination(path(), true, 1000, 5)->write(QStringLiteral("second start"), LogLevel::Info);
    QCOMPARE(contentOf(path()), QByteArray("old\nfirst start\nsecond start\n"));
    QCOMPARE(fileCount(), 1);
}

void TestFileDestination::flushesEveryLine()
{
    const DestinationPtr destination = makeFileDestination(path(), true, 1000000, 5);
    QByteArray expected;
    for (int i = 0; i < 20; ++i) {
        destination->write(QString::number(i), LogLevel::Trace);
        expected += QByteArray::number(i) + '\n';
        QCOMPARE(contentOf(path()), expected);
    }
    const QString large(50'000, QLatin1Char('x')); // more than the stream's own buffer
    destination->write(large, LogLevel::Trace);
    QCOMPARE(contentOf(path()), expected + large.toLatin1() + '\n');
}

void TestFileDestination::writesUtf8()
{
    const QString text = QString::fromUtf8("38 \xc2\xb0"
                                           "C \xe2\x82\xac \xf0\x9f\x94\xac");
    makeFileDestination(path())->write(text, LogLevel::Info);
    QCOMPARE(contentOf(path()), text.toUtf8() + '\n');
}

void TestFileDestination::rotatesAtTheLimit()
{
    // The values of the program's start; a line's end is not counted.
    constexpr int limit = 2'000'000;
    const DestinationPtr destination = makeFileDestination(path(), true, limit, 25);
    const QString half(limit / 2, QLatin1Char('a'));
    destination->write(half, LogLevel::Info);
    destination->write(half, LogLevel::Info);
    QCOMPARE(fileCount(), 1);
    QCOMPARE(QFile(path()).size(), limit + 2); // exactly the limit, and two line ends

    destination->write(QStringLiteral("b"), LogLevel::Info);
    QCOMPARE(contentOf(path()), QByteArray("b\n"));
    QCOMPARE(backup(1).size(), limit + 2);
    QCOMPARE(fileCount(), 2);
}

void TestFileDestination::countsWhatWasThere()
{
    put(path(), QByteArray(90, 'o'));
    const DestinationPtr destination = makeFileDestination(path(), true, 100, 5);
    destination->write(QStringLiteral("0123456789"), LogLevel::Info); // makes it 100
    QCOMPARE(fileCount(), 1);
    destination->write(QStringLiteral("x"), LogLevel::Info);
    QCOMPARE(contentOf(path()), QByteArray("x\n"));
    QCOMPARE(backup(1), QByteArray(90, 'o') + "0123456789\n");
    // Counting began with the new file while it was empty: the line that opened it was counted before.
    destination->write(QString(100, QLatin1Char('y')), LogLevel::Info);
    QCOMPARE(fileCount(), 2);
    destination->write(QStringLiteral("z"), LogLevel::Info);
    QCOMPARE(backup(1), "x\n" + QByteArray(100, 'y') + '\n');
    QCOMPARE(contentOf(path()), QByteArray("z\n"));
}

void TestFileDestination::keepsTenOfTwentyFive()
{
    const DestinationPtr destination = makeFileDestination(path(), true, 3, 25);
    for (int i = 1; i <= 14; ++i) {
        destination->write(QStringLiteral("line %1").arg(i), LogLevel::Info);
    }
    QCOMPARE(contentOf(path()), QByteArray("line 14\n"));
    for (int i = 1; i <= 10; ++i) {
        QCOMPARE(backup(i), QStringLiteral("line %1\n").arg(14 - i).toLatin1());
    }
    QCOMPARE(fileCount(), 11);
}

void TestFileDestination::keepsNone()
{
    put(path(QStringLiteral("VYR_Log.txt.1")), "of old");
    const DestinationPtr destination = makeFileDestination(path(), true, 3, 0);
    destination->write(QStringLiteral("one"), LogLevel::Info);
    destination->write(QStringLiteral("two"), LogLevel::Info);
    QCOMPARE(contentOf(path()), QByteArray("two\n"));
    QCOMPARE(backup(1), QByteArray("of old"));
    QCOMPARE(fileCount(), 2);
}

void TestFileDestination::leavesBackupsBeyondAGap()
{
    put(path() + QLatin1String(".1"), "1");
    put(path() + QLatin1String(".3"), "3");
    put(path(), "log");
    makeFileDestination(path(), true, 3, 10)->write(QStringLiteral("new"), LogLevel::Info);
    QCOMPARE(contentOf(path()), QByteArray("new\n"));
    QCOMPARE(backup(1), QByteArray("log"));
    QCOMPARE(backup(2), QByteArray("1"));
    QCOMPARE(backup(3), QByteArray("3"));
    QCOMPARE(fileCount(), 4);
}

void TestFileDestination::writesUtf8AfterRotation()
{
    const QString text = QString::fromUtf8("\xc2\xb5\xe2\x82\xac");
    const DestinationPtr destination = makeFileDestination(path(), true, 5, 2);
    destination->write(text, LogLevel::Info); // five bytes, though two characters
    QCOMPARE(fileCount(), 1);
    destination->write(text, LogLevel::Info);
    QCOMPARE(backup(1), text.toUtf8() + '\n');
    QCOMPARE(contentOf(path()), text.toUtf8() + '\n');
}

void TestFileDestination::tellsWhereItCannotOpen_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("rotation");
    for (const bool rotation : {true, false}) {
        QTest::addRow("no folder, %d", rotation) << QStringLiteral("none/VYR_Log.txt") << rotation;
        QTest::addRow("a file as folder, %d", rotation) << QStringLiteral("file/VYR_Log.txt") << rotation;
        QTest::addRow("a folder as file, %d", rotation) << QStringLiteral("folder") << rotation;
    }
}

void TestFileDestination::tellsWhereItCannotOpen()
{
    QFETCH(QString, name);
    QFETCH(bool, rotation);
    put(path(QStringLiteral("file")), "");
    QVERIFY(QDir(folderPath()).mkdir(QStringLiteral("folder")));

    StderrCapture errors;
    const DestinationPtr destination = makeFileDestination(path(name), rotation, 1'000'000, 10);
    QCOMPARE(errors.take(), QByteArray("QsLog: could not open log file ") + path(name).toUtf8());
    QVERIFY(!destination->isValid());
    for (int i = 0; i < 1000; ++i) {
        destination->write(QStringLiteral("lost"), LogLevel::Info);
    }
    QCOMPARE(errors.take(), QByteArray());
}

void TestFileDestination::tellsOnceWhereItCannotReopen()
{
    // Puts a folder in the log's place, as long as that is wanted.
    bool obstruct = true;
    const QDir folder(folderPath());
    const auto strategy = QSharedPointer<EverySingleLine>::create([&] {
        QFile::remove(path());
        static_cast<void>(obstruct ? folder.mkdir(path()) : folder.rmdir(path()));
    });
    FileDestination destination(path(), strategy);
    QCOMPARE(strategy->attached, 1);

    StderrCapture errors;
    destination.write(QStringLiteral("lost"), LogLevel::Info);
    QCOMPARE(errors.take(), QByteArray("QsLog: could not reopen log file ") + path().toUtf8());
    QVERIFY(!destination.isValid());
    QCOMPARE(strategy->attached, 2);
    destination.write(QStringLiteral("lost too"), LogLevel::Info);
    QCOMPARE(errors.take(), QByteArray());

    obstruct = false;
    destination.write(QStringLiteral("found"), LogLevel::Info);
    QVERIFY(destination.isValid());
    QCOMPARE(contentOf(path()), QByteArray("found\n"));

    obstruct = true;
    destination.write(QStringLiteral("lost"), LogLevel::Info);
    QCOMPARE(errors.take(), QByteArray("QsLog: could not reopen log file ") + path().toUtf8());
}

void TestFileDestination::staysQuietWhereBackupsCannotBeMade()
{
    // A folder that is not empty can be neither removed nor replaced, and no permission is needed for that.
    const QString inTheWay = path() + QLatin1String(".1");
    QVERIFY(QDir(folderPath()).mkpath(inTheWay + QLatin1String("/full")));
    const DestinationPtr destination = makeFileDestination(path(), true, 3, 1);
    destination->write(QStringLiteral("one"), LogLevel::Info);

    StderrCapture errors;
    QByteArray expected = "one\n";
    for (int i = 0; i < 50; ++i) {
        destination->write(QString::number(i), LogLevel::Info);
        expected += QByteArray::number(i) + '\n';
    }
    QCOMPARE(errors.take(), "QsLog: could not rename log " + path().toUtf8() + " to " + inTheWay.toUtf8());
    QCOMPARE(contentOf(path()), expected); // nothing is lost, the log only grows

    QVERIFY(QDir(inTheWay).removeRecursively());
    destination->write(QStringLiteral("at last"), LogLevel::Info);
    QCOMPARE(contentOf(path()), QByteArray("at last\n"));
    QCOMPARE(backup(1), expected);
}

void TestFileDestination::keepsOtherDestinationsGoing()
{
    const auto recorder = QSharedPointer<LogRecorder>::create();
    DestinationPtr broken;
    {
        const StderrCapture errors;
        broken = makeFileDestination(path(QStringLiteral("none/VYR_Log.txt")), true, 2'000'000, 25);
    }
    Logger::instance().addDestination(broken);
    Logger::instance().addDestination(recorder);
    QS_INFO() << "goes on";
    QVERIFY(Logger::instance().hasDestinationOfType(QStringLiteral("file"))); // it stays in the list
    Logger::instance().removeDestination(broken);
    Logger::instance().removeDestination(recorder);
    QCOMPARE(recorder->lines.size(), 1);
}

QTEST_APPLESS_MAIN(TestFileDestination)

#include "tst_FileDestination.moc"
