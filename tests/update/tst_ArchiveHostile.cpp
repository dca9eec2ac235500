// Archives that were damaged, and archives that were made to do harm: none of them changes anything.

#include "ArchiveTest.h"
#include "support/ArchiveChecksums.h"
#include "support/LogCapture.h"
#include "update/ArchiveMemberName.h"

#include <QTest>

class tst_ArchiveHostile : public ArchiveTest
{
    Q_OBJECT

private slots:
    void initTestCase() { requirePacker(); }
    void init();
    void cleanup();

    void names_data();
    void names();
    void namesInArchives_data();
    void namesInArchives();
    void nameThatIsNoText();
    void linksAreNoFiles_data();
    void linksAreNoFiles();
    void onlyFilesAreFiles_data();
    void onlyFilesAreFiles();
    void placesThatAreTaken_data();
    void placesThatAreTaken();
    void archiveOntoItself();
    void fileThatIsAFolderToo();
    void bomb();

private:
    std::unique_ptr<ArchiveFolder> m_folder;
    ArchiveFolder::Files m_before;
};

namespace {

using Members = QList<ReleaseArchive::Member>;
QStringList plainHeader()
{
    return {QStringLiteral("-mhc=off")};
}

Members smallRelease()
{
    return ReleaseArchive::threeImages(400);
}

} // namespace

void tst_ArchiveHostile::init()
{
    beginWatch();
    m_folder = std::make_unique<ArchiveFolder>();
    QVERIFY(m_folder->put(QStringLiteral("LoaderOut.srec"), "the one before"));
    QVERIFY(m_folder->put(QStringLiteral("../beside.txt"), "not ours"));
    m_before = m_folder->files();
}

void tst_ArchiveHostile::cleanup()
{
    m_folder.reset();
    endWatch();
}

void tst_ArchiveHostile::names_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("place"); // null: refused
    const auto row = [](const char* name, const char* place) {
        QTest::newRow(name) << QString::fromUtf8(name)
                            << (place == nullptr ? QString() : QString::fromUtf8(place));
    };
    for (const char* good : {"LoaderOut.srec", "a/b/c", ".hidden", "a b", "..a", "a..b", "…", "%1", "comx",
                             "com10", "console", "lpt"}) {
        row(good, good);
    }
    row("./a", "a");
    row("a//b/./c/", "a/b/c");
    row(R"(a\b)", "a/b");
    row(".", "");
    for (const char* bad :
         {"..",       "../a",     "a/..",        "a/../b",  R"(..\a)",   R"(a\..\..\b)", "/a",
          "//host/a", R"(\a)",    R"(\\host\a)", R"(C:\a)", "C:/a",      "c:a",          "a:stream",
          "a\tb",     "a\nb",     "a\x7f",       "a.",      "a ",        ".. /a",        "... /a",
          "NUL",      "nul.srec", "a/Con.txt",   "COM1",    "lpt9.srec", "aux .txt",     "a\xef\xbf\xbd"}) {
        row(bad, nullptr);
    }
    const QString longest(255, QLatin1Char('x'));
    const QString umlauts(128, QChar(0xe4)); // two bytes each
    QTest::newRow("longest part") << QString(longest + "/a") << QString(longest + "/a");
    QTest::newRow("longer part") << QString("a/x" + longest) << QString();
    QTest::newRow("longer part in bytes") << umlauts << QString();
    QTest::newRow("longest path") << QString("x/").repeated(500).chopped(1)
                                  << QString("x/").repeated(500).chopped(1);
    QTest::newRow("longer path") << QString("x/").repeated(501).chopped(1) << QString();
    QTest::newRow("no name") << QString() << QString();
    QTest::newRow("zero character") << QString(QChar(0)) + QLatin1Char('a') << QString();
}

void tst_ArchiveHostile::names()
{
    QFETCH(QString, name);
    QFETCH(QString, place);
    const auto found = safeMemberPath(name);
    QCOMPARE(found.has_value(), !place.isNull());
    QCOMPARE(found.value_or(QString()), place);
}

void tst_ArchiveHostile::namesInArchives_data()
{
    QTest::addColumn<QString>("name"); // of nine characters, like the one that it takes the place of
    for (const char* name :
         {"../../abc", R"(..\..\abc)", "../a//b/c", "/tmp/abcd", R"(\tmp\abcd)", R"(C:\abcdef)", "C:abcdefg",
          "abcdef/..", "ab/../../", R"(ab\..\..\)", "x/../../y", "NUL.abcde", "ab\nde.txt", "........."}) {
        QTest::newRow(QByteArray(name).replace('\n', "\\n").constData())
            << QString::fromLatin1(name).leftJustified(9, QLatin1Char('x'), true);
    }
}

void tst_ArchiveHostile::namesInArchives()
{
    QFETCH(QString, name);
    const QString original = QStringLiteral("nine.srec");
    Members members = smallRelease();
    members.append({original, "harm"});
    QVERIFY(m_folder->putArchive(
        ReleaseArchive::renamed(ReleaseArchive::pack(members, plainHeader()), original, name)));
    const LogCapture log;
    QCOMPARE(extract(*m_folder), quint16(ArchiveStatus::BadName));
    QCOMPARE(m_folder->files(), m_before);
    QCOMPARE(log.count(QStringLiteral("Unpacking failed: 6"), QsLogging::LogLevel::Error), 1);
}

void tst_ArchiveHostile::nameThatIsNoText()
{
    const QByteArray archive = ReleaseArchive::pack({{QStringLiteral("ab"), "harm"}}, plainHeader());
    for (const char* half : {"\x00\xd8\x62\x00", "\x61\x00\x00\xdc"}) { // halves of a character
        QVERIFY(m_folder->putArchive(
            ReleaseArchive::headerReplaced(archive, QByteArray("a\0b\0", 4), QByteArray(half, 4))));
        QCOMPARE(extract(*m_folder), quint16(ArchiveStatus::BadName));
        QCOMPARE(m_folder->files(), m_before);
    }
}

void tst_ArchiveHostile::linksAreNoFiles_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("to a file outside") << QStringLiteral("../beside.txt");
    QTest::newRow("to a file inside") << QStringLiteral("VYR-AppOut.srec");
    QTest::newRow("to a folder") << QStringLiteral("..");
    QTest::newRow("to an absolute path") << QStringLiteral("/etc/hostname");
    QTest::newRow("to nowhere") << QStringLiteral("nowhere");
}

void tst_ArchiveHostile::linksAreNoFiles()
{
    QFETCH(QString, target);
    const QTemporaryDir packed;
    QFile image(packed.filePath(QStringLiteral("VYR-AppOut.srec")));
    QVERIFY(image.open(QIODevice::WriteOnly) && image.write("S0\n") == 3);
    image.close();
    QVERIFY(QFile::link(target, packed.filePath(QStringLiteral("LoaderOut.srec"))));
    QVERIFY(m_folder->putArchive(ReleaseArchive::packFolder(packed.path(), {QStringLiteral("-snl")})));
    QCOMPARE(extract(*m_folder), quint16(ArchiveStatus::NotAFile));
    QCOMPARE(m_folder->files(), m_before);
}

void tst_ArchiveHostile::onlyFilesAreFiles_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("pipe") << 0010000;
    QTest::newRow("character device") << 0020000;
    QTest::newRow("block device") << 0060000;
    QTest::newRow("link") << 0120000;
    QTest::newRow("socket") << 0140000;
}

/// What kind of thing a member is stands in its attributes alone.
void tst_ArchiveHostile::onlyFilesAreFiles()
{
    QFETCH(int, mode);
    const auto attributes = [](int type) -> QByteArray {
        const int bits = type | 0644;
        return QByteArray("\x20\x80") + char(bits) + char(bits >> 8);
    };
    const QTemporaryDir packed;
    QFile image(packed.filePath(QStringLiteral("VYR-AppOut.srec")));
    QVERIFY(image.open(QIODevice::WriteOnly) && image.write("S0\n") == 3);
    image.close();
    QVERIFY(image.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup |
                                 QFileDevice::ReadOther));
    QVERIFY(m_folder->putArchive(ReleaseArchive::headerReplaced(
        ReleaseArchive::packFolder(packed.path(), plainHeader()), attributes(0100000), attributes(mode))));
    QCOMPARE(extract(*m_folder), quint16(ArchiveStatus::NotAFile));
    QCOMPARE(m_folder->files(), m_before);
}

void tst_ArchiveHostile::placesThatAreTaken_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("inTheWay"); // a folder "/", a link "-> target", else a file
    const auto row = [](const char* name, const char* member, const char* inTheWay) {
        QTest::newRow(name) << QString::fromLatin1(member) << QString::fromLatin1(inTheWay);
    };
    row("folder where a file goes", "way", "/");
    row("file where a folder goes", "way/b", "file");
    row("file where an empty folder goes", "way/", "file");
    row("link where a folder goes", "way/b", "-> ..");
    row("link where an empty folder goes", "way/", "-> ..");
    row("link further up", "way/b/c/d", "-> .");
    row("link to nowhere where a folder goes", "way/b", "-> ../nowhere");
}

void tst_ArchiveHostile::placesThatAreTaken()
{
    QFETCH(QString, member);
    QFETCH(QString, inTheWay);
    const QString way = m_folder->path(QStringLiteral("way"));
    if (inTheWay == QLatin1String("/")) {
        QVERIFY(QDir().mkpath(way));
    } else if (inTheWay.startsWith(QLatin1String("-> "))) {
        QVERIFY(QFile::link(inTheWay.mid(3), way));
    } else {
        QVERIFY(m_folder->put(QStringLiteral("way"), "a file"));
    }
    const Members members = {{QStringLiteral("a"), "new"}, {member, "new"}};
    QVERIFY(m_folder->putArchive(ReleaseArchive::pack(members)));
    const auto before = m_folder->files();
    QCOMPARE(extract(*m_folder), quint16(ArchiveStatus::NameTaken));
    QCOMPARE(m_folder->files(), before);
}

void tst_ArchiveHostile::archiveOntoItself()
{
    const QStringList names{QStringLiteral("release.7z"), QStringLiteral("./release.7z")};
    for (const QString& name : names) {
        const QString original = QStringLiteral("nine").leftJustified(name.size(), QLatin1Char('x'));
        const QByteArray archive = ReleaseArchive::renamed(
            ReleaseArchive::pack({{QStringLiteral("a"), "1"}, {original, "harm"}}, plainHeader()), original,
            name);
        QVERIFY(m_folder->putArchive(archive));
        QCOMPARE(extract(*m_folder), quint16(ArchiveStatus::NameTaken));
        QCOMPARE(m_folder->files(), m_before);
        QCOMPARE(ArchiveFolder::contentOf(m_folder->archive()), archive);
    }
}

void tst_ArchiveHostile::fileThatIsAFolderToo()
{
    const QByteArray archive = ReleaseArchive::renamed(
        ReleaseArchive::pack({{QStringLiteral("a"), "1"}, {QStringLiteral("b/c"), "2"}}, plainHeader()),
        QStringLiteral("b/c"), QStringLiteral("a/c"));
    QVERIFY(m_folder->putArchive(archive));
    QCOMPARE(extract(*m_folder), quint16(ArchiveStatus::NameTaken));
    QCOMPARE(m_folder->files(), m_before);
}

/// A small archive that says the truth about its size, and one that is far larger than it may be.
void tst_ArchiveHostile::bomb()
{
    const QTemporaryDir packed;
    QFile zeros(packed.filePath(QStringLiteral("zeros")));
    QVERIFY(zeros.open(QIODevice::WriteOnly) && zeros.resize(2 * ArchiveExtractor::maximumBytes));
    const QByteArray archive =
        ReleaseArchive::packFolder(packed.path(), {QStringLiteral("-mx=1"), QStringLiteral("-mhc=off")});
    QVERIFY(archive.size() < 200000);
    QVERIFY(m_folder->putArchive(archive));
    QCOMPARE(extract(*m_folder), quint16(ArchiveStatus::TooLarge));
    QCOMPARE(m_folder->files(), m_before);

    QFile large(m_folder->archive());
    QVERIFY(large.open(QIODevice::ReadWrite) && large.resize(ArchiveExtractor::maximumBytes + 1));
    QCOMPARE(extract(*m_folder), quint16(ArchiveStatus::TooLarge));
    QCOMPARE(m_folder->files(), m_before);
}

QTEST_GUILESS_MAIN(tst_ArchiveHostile)
#include "tst_ArchiveHostile.moc"
