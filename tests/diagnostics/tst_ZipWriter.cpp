#include "diagnostics/ZipContents.h"
#include "diagnostics/ZipWriter.h"
#include "support/FileSizeLimit.h"
#include "support/OrdinaryUser.h"
#include "support/WatchedTest.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <random>

namespace {
constexpr int bigSize = 300'000;

/// Bytes that no packing makes fewer.
QByteArray noise(int size)
{
    std::mt19937 random(7);
    QByteArray bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}
} // namespace

class tst_ZipWriter : public WatchedTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void keepsEveryByte_data();
    void keepsEveryByte();
    void membersInOrder();
    void timesAndNobodysName();
    void repeatedTextTakesLittle();
    void takesItsPlaceAtTheEnd();
    void unfinishedLeavesNothing();
    void fullDisk_data();
    void fullDisk();
    void noPlace_data();
    void noPlace();
    void unwritableFolder();

private:
    QString path(const QString& name = QStringLiteral("a.zip")) const { return m_folder->filePath(name); }
    QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    bool writeOld() const;
    QByteArray fileContent() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_ZipWriter::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    beginWatch();
}

void tst_ZipWriter::cleanup()
{
    m_folder.reset();
    endWatch();
}

bool tst_ZipWriter::writeOld() const
{
    QFile file(path());
    return file.open(QIODevice::WriteOnly) && file.write("old") == 3;
}

QByteArray tst_ZipWriter::fileContent() const
{
    QFile file(path());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_ZipWriter::keepsEveryByte_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("one line\nanother\n");
    QTest::newRow("NUL") << QByteArray("\0\0a", 3);
    QTest::newRow("more than one block") << noise(bigSize);
    QTest::newRow("much of the same") << QByteArray(bigSize, 'x');
}

void tst_ZipWriter::keepsEveryByte()
{
    QFETCH(QByteArray, content);
    ZipWriter zip(path());
    QVERIFY(zip.open());
    QVERIFY(zip.add("a.txt", content, {}));
    QVERIFY(zip.finish());
    const ZipContents read(path());
    QVERIFY(read.isWhole());
    QCOMPARE(read.names(), QStringList{QStringLiteral("a.txt")});
    QCOMPARE(read.content("a.txt"), content);
    QVERIFY(read.member("a.txt").isPlainFile);
}

void tst_ZipWriter::membersInOrder()
{
    ZipWriter zip(path());
    QVERIFY(zip.open());
    for (const char* name : {"b.txt", "a.txt", "c.txt.10"}) {
        QVERIFY(zip.add(name, name, {}));
    }
    QVERIFY(zip.finish());
    const ZipContents read(path());
    QVERIFY(read.isWhole());
    QCOMPARE(read.names().join(QLatin1Char(' ')), QStringLiteral("b.txt a.txt c.txt.10"));
    QCOMPARE(read.content("c.txt.10"), QByteArray("c.txt.10"));
}

void tst_ZipWriter::timesAndNobodysName()
{
    const QDateTime time(QDate(2026, 3, 4), QTime(5, 6, 8));
    ZipWriter zip(path());
    QVERIFY(zip.open());
    QVERIFY(zip.add("a.txt", "a", time));
    QVERIFY(zip.finish());
    const ZipContents::Member member = ZipContents(path()).member("a.txt");
    QCOMPARE(member.modified, time.toSecsSinceEpoch());
    QCOMPARE(member.owner, 0);
    QCOMPARE(member.group, 0);
}

void tst_ZipWriter::repeatedTextTakesLittle()
{
    ZipWriter zip(path());
    QVERIFY(zip.open());
    QVERIFY(zip.add("a.txt", QByteArray("a line of a log\n").repeated(10'000), {}));
    QVERIFY(zip.finish());
    QVERIFY(QFileInfo(path()).size() < 5'000);
}

void tst_ZipWriter::takesItsPlaceAtTheEnd()
{
    QVERIFY(writeOld());
    ZipWriter zip(path());
    QVERIFY(zip.open());
    QVERIFY(zip.add("a.txt", noise(bigSize), {}));
    QCOMPARE(fileContent(), QByteArray("old"));
    QVERIFY(zip.finish());
    QVERIFY(ZipContents(path()).isWhole());
    QCOMPARE(files(), QStringList{QStringLiteral("a.zip")});
}

void tst_ZipWriter::unfinishedLeavesNothing()
{
    {
        ZipWriter zip(path());
        QVERIFY(zip.open());
        QVERIFY(zip.add("a.txt", noise(bigSize), {}));
    }
    QCOMPARE(files(), QStringList());
}

void tst_ZipWriter::fullDisk_data()
{
    QTest::addColumn<int>("room");
    QTest::addColumn<bool>("hasOld");
    for (const int room : {0, 100, 20'000, bigSize}) {
        QTest::addRow("%d bytes", room) << room << false;
        QTest::addRow("%d bytes, in another's place", room) << room << true;
    }
}

void tst_ZipWriter::fullDisk()
{
    QFETCH(int, room);
    QFETCH(bool, hasOld);
    QVERIFY(!hasOld || writeOld());
    {
        const FileSizeLimit limit(static_cast<rlim_t>(room));
        ZipWriter zip(path());
        const bool isSaved =
            zip.open() && zip.add("a.txt", noise(bigSize), {}) && zip.add("b.txt", "b", {}) && zip.finish();
        QVERIFY(!isSaved);
        QCOMPARE(zip.errorText(), QStringLiteral("File too large"));
    }
    QCOMPARE(files(), hasOld ? QStringList{QStringLiteral("a.zip")} : QStringList());
    QCOMPARE(fileContent(), hasOld ? QByteArray("old") : QByteArray());
}

void tst_ZipWriter::noPlace_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("folder is not there") << QStringLiteral("none/a.zip");
    QTest::newRow("a folder") << QStringLiteral("folder.zip");
    QTest::newRow("below a file") << QStringLiteral("file/a.zip");
}

void tst_ZipWriter::noPlace()
{
    QFETCH(QString, name);
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder.zip")));
    QFile file(path(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    ZipWriter zip(path(name));
    QVERIFY(!zip.open());
    QVERIFY(!zip.errorText().isEmpty());
    QCOMPARE(files(), (QStringList{QStringLiteral("file"), QStringLiteral("folder.zip")}));
}

void tst_ZipWriter::unwritableFolder()
{
    const QString folder = path(QStringLiteral("locked"));
    QVERIFY(QDir().mkdir(folder));
    {
        const OrdinaryUser user(folder, 0555);
        if (!user.isEffective()) {
            QTest::qSkip("The system does not let go of the rights", __FILE__, __LINE__);
            return;
        }
        ZipWriter zip(folder + QStringLiteral("/a.zip"));
        QVERIFY(!zip.open());
        QCOMPARE(zip.errorText(), QStringLiteral("Permission denied"));
    }
    QVERIFY(QDir(folder).isEmpty());
}

QTEST_MAIN(tst_ZipWriter)
#include "tst_ZipWriter.moc"
