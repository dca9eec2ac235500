// The archives that releases come in, and everything else that a packer may rightly put into one.

#include "ArchiveTest.h"
#include "support/ArchiveChecksums.h"
#include "support/LogCapture.h"

#include <QTest>

#include <clocale>

class tst_ArchiveExtractor : public ArchiveTest
{
    Q_OBJECT

private slots:
    void initTestCase() { requirePacker(); }
    void init() { beginWatch(); }
    void cleanup() { endWatch(); }

    void everyMethodUnpacks_data();
    void everyMethodUnpacks();
    void imagesOfManyBlocks();
    void membersOfEveryKind();
    void namesNeedNoLocale();
    void olderFilesAreReplaced();
    void oneUseAfterAnother();
    void emptyArchive();
    void laterOfTheSameNameWins();
    void namesThatDifferInCase();
    void archiveFoundThroughALink();
    void memberCountAtTheBound_data();
    void memberCountAtTheBound();
    void byteCountAtTheBound_data();
    void byteCountAtTheBound();
    void pausesComeOftenAndMayEndIt();
    void nothingToRead_data();
    void nothingToRead();
    void noRoomForFiles();
};

namespace {

using Members = QList<ReleaseArchive::Member>;

/// The smallest archive there is: no header at all.
QByteArray withoutMembers()
{
    QByteArray archive("7z\xbc\xaf\x27\x1c\x00\x04", 8);
    archive.append(24, '\0');
    return archive;
}

} // namespace

void tst_ArchiveExtractor::everyMethodUnpacks_data()
{
    QTest::addColumn<QStringList>("switches");
    const auto packings = ReleaseArchive::packings();
    for (const ReleaseArchive::Packing& packing : packings) {
        QTest::newRow(packing.name) << packing.switches;
    }
}

void tst_ArchiveExtractor::everyMethodUnpacks()
{
    QFETCH(QStringList, switches);
    const ArchiveFolder folder;
    Members members = ReleaseArchive::threeImages(150000);
    QByteArray code(70000, '\xe8'); // calls all over: what the filters for programs change
    for (int i = 0; i < code.size(); i += 5) {
        code[i + 1] = char(i >> 8);
    }
    members.append({QStringLiteral("tool.exe"), code});
    QVERIFY(folder.putArchive(ReleaseArchive::pack(members, switches)));
    QCOMPARE(extract(folder), quint16(0));
    QCOMPARE(folder.files(), ArchiveFolder::asFiles(members));
}

void tst_ArchiveExtractor::imagesOfManyBlocks()
{
    const ArchiveFolder folder;
    const Members members = ReleaseArchive::threeImages(1500000);
    QVERIFY(folder.putArchive(ReleaseArchive::pack(members)));
    QCOMPARE(extract(folder), quint16(0));
    QVERIFY(folder.files() == ArchiveFolder::asFiles(members)); // not compared by a text of megabytes
}

void tst_ArchiveExtractor::membersOfEveryKind()
{
    const ArchiveFolder folder;
    const Members members = {{QStringLiteral("LoaderOut.srec"), "S0\n"},
                             {QStringLiteral("empty"), {}},
                             {QStringLiteral("folder/"), {}},
                             {QStringLiteral("notes/de/Änderungen 変更 🙂.txt"), "text"},
                             {QStringLiteral(".hidden"), "h"},
                             {QStringLiteral("%1%n#&?*\"<>|"), "signs"}};
    QVERIFY(folder.putArchive(ReleaseArchive::pack(members)));
    QCOMPARE(extract(folder), quint16(0));
    auto expected = ArchiveFolder::asFiles(members);
    expected.insert(QStringLiteral("notes/"), {});
    expected.insert(QStringLiteral("notes/de/"), {});
    QCOMPARE(folder.files(), expected);
}

void tst_ArchiveExtractor::namesNeedNoLocale()
{
    const ArchiveFolder folder;
    const Members members = {{QStringLiteral("Lader für VYR.srec"), "S0\n"}};
    QVERIFY(folder.putArchive(ReleaseArchive::pack(members)));
    const QByteArray before = std::setlocale(LC_ALL, nullptr);
    QVERIFY(std::setlocale(LC_ALL, "C") != nullptr);
    const quint16 status = extract(folder);
    const QByteArray after = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, before.constData());
    QCOMPARE(status, quint16(0));
    QCOMPARE(after, QByteArray("C"));
    QCOMPARE(folder.files(), ArchiveFolder::asFiles(members));
}

void tst_ArchiveExtractor::olderFilesAreReplaced()
{
    const ArchiveFolder folder;
    const Members members = ReleaseArchive::threeImages(1000);
    QVERIFY(folder.put(members[0].name, QByteArray(100000, 'o')));
    QVERIFY(folder.put(members[1].name, "old"));
    QVERIFY(QFile::setPermissions(folder.path(members[1].name), QFileDevice::ReadOwner));
    QVERIFY(folder.put(QStringLiteral("../other.txt"), "stays"));
    QVERIFY(QFile::link(folder.path(QStringLiteral("../other.txt")), folder.path(members[2].name)));
    QVERIFY(folder.put(QStringLiteral("kept.txt"), "kept"));
    QVERIFY(folder.putArchive(ReleaseArchive::pack(members)));
    QCOMPARE(extract(folder), quint16(0));
    auto expected = ArchiveFolder::asFiles(members);
    expected.insert(QStringLiteral("../other.txt"), "stays"); // the link went, not what it led to
    expected.insert(QStringLiteral("kept.txt"), "kept");
    QCOMPARE(folder.files(), expected);
}

void tst_ArchiveExtractor::oneUseAfterAnother()
{
    const ArchiveFolder good;
    const ArchiveFolder bad;
    QVERIFY(good.putArchive(ReleaseArchive::pack({{QStringLiteral("a"), "1"}})));
    QVERIFY(bad.putArchive("no archive at all"));
    const LogCapture log;
    ArchiveExtractor extractor;
    QCOMPARE(extractor.status(), quint16(0));
    extractor.setArchive(bad.archive());
    QVERIFY(!extractor.extract());
    QCOMPARE(extractor.status(), quint16(ArchiveStatus::NotAnArchive));
    QCOMPARE(log.count(QStringLiteral("Unpacking failed: 2"), QsLogging::LogLevel::Error), 1);
    extractor.setArchive(good.archive());
    QVERIFY(extractor.extract());
    QCOMPARE(extractor.status(), quint16(0));
    QVERIFY(extractor.extract()); // over what it made itself
    QCOMPARE(log.lines().size(), 1);
}

void tst_ArchiveExtractor::emptyArchive()
{
    const ArchiveFolder folder;
    QByteArray archive = withoutMembers();
    QVERIFY(ArchiveChecksums::repair(archive));
    QVERIFY(folder.putArchive(archive));
    QCOMPARE(extract(folder), quint16(0));
    QCOMPARE(folder.files(), ArchiveFolder::Files());
}

void tst_ArchiveExtractor::laterOfTheSameNameWins()
{
    const ArchiveFolder folder;
    const QByteArray archive =
        ReleaseArchive::pack({{QStringLiteral("A.srec"), "first"}, {QStringLiteral("B.srec"), "second"}},
                             {QStringLiteral("-mhc=off")});
    QVERIFY(folder.putArchive(
        ReleaseArchive::renamed(archive, QStringLiteral("B.srec"), QStringLiteral("A.srec"))));
    QCOMPARE(extract(folder), quint16(0));
    QCOMPARE(folder.files(), (ArchiveFolder::Files{{QStringLiteral("A.srec"), "second"}}));
}

void tst_ArchiveExtractor::namesThatDifferInCase()
{
    const ArchiveFolder folder;
    const Members members = {{QStringLiteral("LoaderOut.srec"), "one"},
                             {QStringLiteral("LOADEROUT.SREC"), "two"}};
    QVERIFY(folder.putArchive(ReleaseArchive::pack(members)));
    QCOMPARE(extract(folder), quint16(0));
    QCOMPARE(folder.files(), ArchiveFolder::asFiles(members));
}

void tst_ArchiveExtractor::archiveFoundThroughALink()
{
    const ArchiveFolder folder;
    const ArchiveFolder elsewhere;
    const Members members = {{QStringLiteral("a"), "1"}};
    QVERIFY(elsewhere.putArchive(ReleaseArchive::pack(members)));
    QVERIFY(QFile::link(elsewhere.archive(), folder.archive()));
    QCOMPARE(extract(folder), quint16(0));
    QCOMPARE(ArchiveFolder::contentOf(folder.path(QStringLiteral("a"))), QByteArray("1"));
    QCOMPARE(elsewhere.files(), ArchiveFolder::Files());
}

void tst_ArchiveExtractor::memberCountAtTheBound_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<quint16>("status");
    QTest::newRow("at") << ArchiveExtractor::maximumMembers << quint16(0);
    QTest::newRow("above") << ArchiveExtractor::maximumMembers + 1 << quint16(ArchiveStatus::TooManyMembers);
}

void tst_ArchiveExtractor::memberCountAtTheBound()
{
    QFETCH(int, count);
    QFETCH(quint16, status);
    const ArchiveFolder folder;
    Members members;
    for (int i = 0; i < count; ++i) {
        members.append({QString::number(i), i % 2 == 0 ? QByteArray("x") : QByteArray()});
    }
    QVERIFY(folder.putArchive(ReleaseArchive::pack(members)));
    QCOMPARE(extract(folder), status);
    QCOMPARE(folder.files().size(), status == 0 ? count : 0);
}

void tst_ArchiveExtractor::byteCountAtTheBound_data()
{
    QTest::addColumn<int>("over");
    QTest::addColumn<QStringList>("switches");
    QTest::newRow("at") << 0 << QStringList{QStringLiteral("-mx=1")};
    QTest::newRow("above") << 1 << QStringList{QStringLiteral("-mx=1")};
    QTest::newRow("above, the second one's own")
        << 1 << QStringList{QStringLiteral("-mx=1"), QStringLiteral("-ms=off")};
}

void tst_ArchiveExtractor::byteCountAtTheBound()
{
    QFETCH(int, over);
    QFETCH(QStringList, switches);
    const QTemporaryDir packed;
    const int firstSize = 1000;
    QFile first(packed.filePath(QStringLiteral("1")));
    QFile second(packed.filePath(QStringLiteral("2")));
    QVERIFY(first.open(QIODevice::WriteOnly) && first.resize(firstSize));
    QVERIFY(second.open(QIODevice::WriteOnly) &&
            second.resize(ArchiveExtractor::maximumBytes - firstSize + over));
    const QByteArray archive = ReleaseArchive::packFolder(packed.path(), switches);
    QVERIFY(archive.size() < 1000000);
    const ArchiveFolder folder;
    QVERIFY(folder.putArchive(archive));
    QCOMPARE(extract(folder), over == 0 ? quint16(0) : quint16(ArchiveStatus::TooLarge));
    QCOMPARE(QFileInfo(folder.path(QStringLiteral("2"))).size(), over == 0 ? second.size() : 0);
    QCOMPARE(QFileInfo::exists(folder.path(QStringLiteral("1"))), over == 0);
}

void tst_ArchiveExtractor::pausesComeOftenAndMayEndIt()
{
    const ArchiveFolder folder;
    const Members members = ReleaseArchive::threeImages(300000);
    QVERIFY(folder.put(members[0].name, "old"));
    QVERIFY(folder.putArchive(ReleaseArchive::pack(members)));
    const auto before = folder.files();
    ArchiveExtractor extractor;
    extractor.setArchive(folder.archive());
    int pauses = 0;
    QVERIFY(extractor.extract([&pauses] { return ++pauses > 0; }));
    QVERIFY(pauses >= 3 * 300000 / 65536);

    QVERIFY(folder.put(members[0].name, "old"));
    QVERIFY(QFile::remove(folder.path(members[1].name)) && QFile::remove(folder.path(members[2].name)));
    const int last = pauses;
    for (int end = 1; end <= last; ++end) {
        pauses = 0;
        QVERIFY(!extractor.extract([&pauses, end] { return ++pauses < end; }));
        QCOMPARE(extractor.status(), quint16(ArchiveStatus::Stopped));
        QCOMPARE(pauses, end);
        QCOMPARE(folder.files(), before);
    }
}

void tst_ArchiveExtractor::nothingToRead_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<quint16>("status");
    const auto notOne = quint16(ArchiveStatus::NotAnArchive);
    QTest::newRow("no bytes") << QByteArray() << notOne;
    QTest::newRow("signature cut short") << QByteArray("7z\xbc\xaf\x27") << notOne;
    QTest::newRow("another kind") << QByteArray("PK\x03\x04") + QByteArray(100, '\0') << notOne;
    QTest::newRow("begins later") << QByteArray(100, '\0') + withoutMembers() << notOne;
    QTest::newRow("behind a program") << "MZ" + QByteArray(0x40000, '\0') + withoutMembers() << notOne;
    QTest::newRow("signature alone") << QByteArray("7z\xbc\xaf\x27\x1c") << quint16(ArchiveStatus::Damaged);
    QTest::newRow("wrong checksums") << withoutMembers() << quint16(ArchiveStatus::Damaged);
}

void tst_ArchiveExtractor::nothingToRead()
{
    QFETCH(QByteArray, content);
    QFETCH(quint16, status);
    const ArchiveFolder folder;
    QVERIFY(folder.put(QStringLiteral("release.7z"), content));
    QCOMPARE(extract(folder), status);
    QCOMPARE(folder.files(), ArchiveFolder::Files());
    QVERIFY(QFile::exists(folder.archive())); // whether it goes is for the caller to say
}

void tst_ArchiveExtractor::noRoomForFiles()
{
    const ArchiveFolder folder;
    QCOMPARE(extract(folder), quint16(ArchiveStatus::CannotRead));
    // A folder that vanishes under the work takes the place of a disk that is full.
    QVERIFY(folder.putArchive(
        ReleaseArchive::pack(ReleaseArchive::threeImages(200000), {QStringLiteral("-ms=off")})));
    ArchiveExtractor extractor;
    extractor.setArchive(folder.archive());
    QVERIFY(!extractor.extract([&folder] {
        const QDir dir(folder.path());
        const auto hidden = dir.entryList({QStringLiteral(".vyr-*")}, QDir::Dirs | QDir::Hidden);
        for (const QString& name : hidden) {
            QDir(dir.filePath(name)).removeRecursively();
        }
        return true;
    }));
    QCOMPARE(extractor.status(), quint16(ArchiveStatus::CannotWrite));
    QCOMPARE(folder.files(), ArchiveFolder::Files());
}

QTEST_GUILESS_MAIN(tst_ArchiveExtractor)
#include "tst_ArchiveExtractor.moc"
