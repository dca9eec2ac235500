#include "QsLog2_1_0/RotationStrategy.h"
#include "StderrCapture.h"

#include <QFile>
#include <QMap>
#include <QTemporaryDir>
#include <QtTest>

using QsLogging::NullRotationStrategy;
using QsLogging::SizeRotationStrategy;

namespace {

const QString logName = QStringLiteral("log");

/// A folder in memory: name to content. Operations on names in `stuck` fail.
class FakeFolder : public SizeRotationStrategy
{
public:
    QMap<QString, QString> files;
    QStringList stuck;
    QStringList journal;

protected:
    bool removeFile(const QString& path) override
    {
        journal.append(QLatin1String("remove ") + path);
        return !stuck.contains(path) && files.remove(path) > 0;
    }
    bool fileExists(const QString& path) override
    {
        journal.append(QLatin1String("exists ") + path);
        return files.contains(path);
    }
    bool renameFile(const QString& from, const QString& to) override
    {
        journal.append(QStringLiteral("rename %1 %2").arg(from, to));
        if (stuck.contains(from) || !files.contains(from) || files.contains(to)) {
            return false;
        }
        files.insert(to, files.take(from));
        return true;
    }
};

/// Folder with a log and the backups of these indices, each containing its own former name.
void fill(FakeFolder& folder, const QList<int>& backups)
{
    folder.attachFile(QFile(logName));
    folder.files.insert(logName, logName);
    for (const int index : backups) {
        const QString name = QStringLiteral("log.%1").arg(index);
        folder.files.insert(name, name);
    }
}

QString contents(const FakeFolder& folder)
{
    QStringList parts;
    for (auto file = folder.files.cbegin(); file != folder.files.cend(); ++file) {
        parts.append(file.key() + QLatin1Char('=') + file.value());
    }
    return parts.join(QLatin1Char(' '));
}

} // namespace

class TestRotationStrategy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nullStrategyDoesNothing();
    void appends();
    void startsEmpty();
    void capsTheBackupCount_data();
    void capsTheBackupCount();
    void countsBytes_data();
    void countsBytes();
    void rotatesAboveTheMaximumOnly();
    void countsBeyond32Bits();
    void learnsTheSizeOfAFile();
    void shiftsBackups_data();
    void shiftsBackups();
    void worksInThisOrder();
    void tellsOfFailures_data();
    void tellsOfFailures();
    void tellsALastingFailureOnce();
};

void TestRotationStrategy::nullStrategyDoesNothing()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(logName);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("content"), 7);
    file.close();

    NullRotationStrategy strategy;
    strategy.attachFile(file);
    strategy.countMessage(QString(10'000'000, QLatin1Char('x')));
    QVERIFY(!strategy.shouldRotate());
    strategy.rotate();
    QCOMPARE(QFile(path).size(), 7);
    QVERIFY(strategy.openModeFlag() == QIODevice::Truncate);
}

void TestRotationStrategy::appends()
{
    QVERIFY(SizeRotationStrategy().openModeFlag() == QIODevice::Append);
}

void TestRotationStrategy::startsEmpty()
{
    SizeRotationStrategy strategy;
    QCOMPARE(strategy.backupCount(), 0);
    QVERIFY(!strategy.shouldRotate());
    strategy.countMessage(QStringLiteral("x"));
    QVERIFY(strategy.shouldRotate()); // more than the maximum of nothing
}

void TestRotationStrategy::capsTheBackupCount_data()
{
    QTest::addColumn<int>("requested");
    QTest::addColumn<int>("kept");
    QTest::newRow("less than none") << -3 << 0;
    QTest::newRow("none") << 0 << 0;
    QTest::newRow("one") << 1 << 1;
    QTest::newRow("nine") << 9 << 9;
    QTest::newRow("ten") << 10 << 10;
    QTest::newRow("eleven") << 11 << 10;
    QTest::newRow("as at start-up") << 25 << 10;
    QTest::newRow("largest") << std::numeric_limits<int>::max() << 10;
}

void TestRotationStrategy::capsTheBackupCount()
{
    QFETCH(int, requested);
    QFETCH(int, kept);
    SizeRotationStrategy strategy;
    strategy.setBackupCount(requested);
    QCOMPARE(strategy.backupCount(), kept);
}

void TestRotationStrategy::countsBytes_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("bytes");
    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("short") << QStringLiteral("abc") << 3;
    QTest::newRow("long") << QString(1001, QLatin1Char('a')) << 1001;
    QTest::newRow("highest of one byte") << QString(9, QChar(0x7f)) << 9;
    QTest::newRow("two bytes at the front") << QStringLiteral("\u00b5abcdefg") << 9;
    QTest::newRow("two bytes at the end") << QStringLiteral("abcdefgh\u0080") << 10;
    QTest::newRow("three bytes") << QStringLiteral("12 \u20ac") << 6;
    QTest::newRow("four bytes") << QString::fromUtf8("\xf0\x9f\x94\xac") << 4;
}

void TestRotationStrategy::countsBytes()
{
    QFETCH(QString, message);
    QFETCH(int, bytes);
    SizeRotationStrategy strategy;
    strategy.setMaximumSize(bytes);
    strategy.countMessage(message);
    QVERIFY(!strategy.shouldRotate()); // not more than that
    strategy.setMaximumSize(bytes - 1);
    QVERIFY(strategy.shouldRotate()); // and not less
}

void TestRotationStrategy::rotatesAboveTheMaximumOnly()
{
    SizeRotationStrategy strategy;
    strategy.setMaximumSize(2'000'000);
    strategy.countMessage(QString(1'999'999, QLatin1Char('x')));
    QVERIFY(!strategy.shouldRotate());
    strategy.countMessage(QStringLiteral("x"));
    QVERIFY(!strategy.shouldRotate());
    strategy.countMessage(QStringLiteral("x"));
    QVERIFY(strategy.shouldRotate());
}

void TestRotationStrategy::countsBeyond32Bits()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(logName));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize(Q_INT64_C(5'000'000'000))); // without content it takes no room on the disk
    SizeRotationStrategy strategy;
    strategy.attachFile(file);
    strategy.setMaximumSize(Q_INT64_C(5'000'000'000));
    QVERIFY(!strategy.shouldRotate());
    strategy.countMessage(QStringLiteral("x"));
    QVERIFY(strategy.shouldRotate());
}

void TestRotationStrategy::learnsTheSizeOfAFile()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(logName));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("0123456789"), 10);
    QVERIFY(file.flush());
    SizeRotationStrategy strategy;
    strategy.setMaximumSize(9);
    strategy.countMessage(QString(100, QLatin1Char('x')));
    strategy.attachFile(file);
    QVERIFY(strategy.shouldRotate());
    strategy.setMaximumSize(10); // the hundred bytes of before are forgotten
    QVERIFY(!strategy.shouldRotate());
}

void TestRotationStrategy::shiftsBackups_data()
{
    QTest::addColumn<QList<int>>("backups");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char* name, const QList<int>& backups, int count, const char* expected) {
        QTest::newRow(name) << backups << count << QString::fromLatin1(expected);
    };
    row("no backups wanted", {}, 0, "");
    row("no backups wanted, one there", {1}, 0, "log.1=log.1");
    row("first", {}, 10, "log.1=log");
    row("one kept", {1}, 1, "log.1=log");
    row("one kept, two there", {1, 2}, 1, "log.1=log log.2=log.2");
    row("two kept", {1, 2}, 2, "log.1=log log.2=log.1");
    row("room left", {1, 2, 3, 4}, 10, "log.1=log log.2=log.1 log.3=log.2 log.4=log.3 log.5=log.4");
    row("one below full", {1, 2, 3, 4, 5, 6, 7, 8, 9}, 10,
        "log.1=log log.10=log.9 log.2=log.1 log.3=log.2 log.4=log.3 log.5=log.4 log.6=log.5 log.7=log.6 "
        "log.8=log.7 log.9=log.8");
    row("full", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 10,
        "log.1=log log.10=log.9 log.2=log.1 log.3=log.2 log.4=log.3 log.5=log.4 log.6=log.5 log.7=log.6 "
        "log.8=log.7 log.9=log.8");
    row("gap", {1, 3}, 10, "log.1=log log.2=log.1 log.3=log.3");
    row("gap at the front", {2, 3}, 10, "log.1=log log.2=log.2 log.3=log.3");
    row("backups beyond the count", {1, 2, 3, 4}, 3, "log.1=log log.2=log.1 log.3=log.2 log.4=log.4");
}

void TestRotationStrategy::shiftsBackups()
{
    QFETCH(QList<int>, backups);
    QFETCH(int, count);
    QFETCH(QString, expected);

    FakeFolder folder;
    fill(folder, backups);
    folder.setBackupCount(count);
    StderrCapture errors;
    folder.rotate();
    QCOMPARE(errors.take(), QByteArray());
    QCOMPARE(contents(folder), expected);
}

void TestRotationStrategy::worksInThisOrder()
{
    FakeFolder folder;
    fill(folder, {1, 2});
    folder.setBackupCount(5);
    folder.rotate();
    const QStringList expected = {
        QStringLiteral("exists log.1"),       QStringLiteral("exists log.2"),
        QStringLiteral("exists log.3"),       QStringLiteral("remove log.3"),
        QStringLiteral("rename log.2 log.3"), QStringLiteral("remove log.2"),
        QStringLiteral("rename log.1 log.2"), QStringLiteral("exists log.1"),
        QStringLiteral("rename log log.1"),
    };
    QCOMPARE(folder.journal, expected);
}

void TestRotationStrategy::tellsOfFailures_data()
{
    QTest::addColumn<QList<int>>("backups");
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("stuck");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("delete") << QList<int>() << 0 << QStringList(logName)
                            << QByteArray("QsLog: backup delete failed log");
    QTest::newRow("rename log") << QList<int>() << 3 << QStringList(logName)
                                << QByteArray("QsLog: could not rename log log to log.1");
    QTest::newRow("rename backup") << QList<int>({1, 2}) << 5 << QStringList(QStringLiteral("log.2"))
                                   << QByteArray("QsLog: could not rename backup log.2 to log.3"
                                                 "QsLog: could not rename backup log.1 to log.2");
    QTest::newRow("oldest cannot go") << QList<int>({1, 2}) << 2 << QStringList(QStringLiteral("log.2"))
                                      << QByteArray("QsLog: could not rename backup log.1 to log.2");
    QTest::newRow("newest cannot go") << QList<int>({1}) << 1 << QStringList(QStringLiteral("log.1"))
                                      << QByteArray("QsLog: could not rename log log to log.1");
}

void TestRotationStrategy::tellsOfFailures()
{
    QFETCH(QList<int>, backups);
    QFETCH(int, count);
    QFETCH(QStringList, stuck);
    QFETCH(QByteArray, text);

    FakeFolder folder;
    fill(folder, backups);
    folder.setBackupCount(count);
    folder.stuck = stuck;
    StderrCapture errors;
    folder.rotate();
    QCOMPARE(errors.take(), text);
}

void TestRotationStrategy::tellsALastingFailureOnce()
{
    FakeFolder folder;
    fill(folder, {});
    folder.setBackupCount(3);
    folder.stuck = QStringList(logName);
    StderrCapture errors;
    folder.rotate();
    QCOMPARE(errors.take(), QByteArray("QsLog: could not rename log log to log.1"));
    for (int i = 0; i < 100; ++i) {
        folder.rotate();
    }
    QCOMPARE(errors.take(), QByteArray());

    folder.stuck.clear();
    folder.rotate(); // works again, so that the next failure is news
    QCOMPARE(contents(folder), QStringLiteral("log.1=log"));
    fill(folder, {});
    folder.stuck = QStringList(logName);
    folder.rotate();
    QCOMPARE(errors.take(), QByteArray("QsLog: could not rename log log to log.1"));
}

QTEST_APPLESS_MAIN(TestRotationStrategy)

#include "tst_RotationStrategy.moc"
