// Archives that were damaged on their way, and archives packed in a way that is not read: nothing changes,
// and the log says why.

#include "ArchiveTest.h"
#include "support/ArchiveChecksums.h"
#include "support/LogCapture.h"

#include <QTest>

class tst_ArchiveDamage : public ArchiveTest
{
    Q_OBJECT

private slots:
    void initTestCase() { requirePacker(); }
    void init();
    void cleanup();

    void wrongChecksum_data();
    void wrongChecksum();
    void cutAnywhere_data() { fewPackings(); }
    void cutAnywhere();
    void changedAnywhere_data() { fewPackings(); }
    void changedAnywhere();
    void changedHeaderThatLooksWhole();
    void unreadMethods_data();
    void unreadMethods();

private:
    static void fewPackings();
    quint16 extract(const QByteArray& archive)
    {
        return m_folder->putArchive(archive) ? ArchiveTest::extract(*m_folder) : quint16(0xfffe);
    }
    bool isUnchanged() const { return m_folder->files() == m_before; }

    std::unique_ptr<ArchiveFolder> m_folder;
    ArchiveFolder::Files m_before;
};

namespace {

/// Each attempt takes milliseconds. Odd, so that every bit of a byte gets its turn.
constexpr int everyNth = 5;

using Members = QList<ReleaseArchive::Member>;

Members smallRelease()
{
    return ReleaseArchive::threeImages(400);
}

} // namespace

void tst_ArchiveDamage::init()
{
    beginWatch();
    m_folder = std::make_unique<ArchiveFolder>();
    QVERIFY(m_folder->put(QStringLiteral("LoaderOut.srec"), "the one before"));
    m_before = m_folder->files();
}

void tst_ArchiveDamage::cleanup()
{
    m_folder.reset();
    endWatch();
}

void tst_ArchiveDamage::fewPackings()
{
    QTest::addColumn<QStringList>("switches");
    const auto packings = ReleaseArchive::packings();
    for (const char* name : {"as it comes", "LZMA, plain header", "LZMA2, not solid", "BCJ2 and LZMA", "PPMd",
                             "BZip2", "Deflate", "copied, not solid, plain header"}) {
        for (const ReleaseArchive::Packing& packing : packings) {
            if (QLatin1String(packing.name) == QLatin1String(name)) {
                QTest::newRow(name) << packing.switches;
            }
        }
    }
}

void tst_ArchiveDamage::wrongChecksum_data()
{
    QTest::addColumn<int>("place"); // of the changed byte behind the start of the packed data
    QTest::newRow("first byte of the first member") << 0;
    QTest::newRow("in the middle") << 600;
    QTest::newRow("last byte of the last member") << -1;
}

void tst_ArchiveDamage::wrongChecksum()
{
    QFETCH(int, place);
    const Members members = smallRelease();
    QByteArray archive =
        ReleaseArchive::pack(members, {QStringLiteral("-m0=Copy"), QStringLiteral("-mhc=off")});
    qint64 size = 0;
    for (const ReleaseArchive::Member& member : members) {
        size += member.content.size();
    }
    const int changed = ArchiveChecksums::startHeaderSize + (place < 0 ? int(size) - 1 : place);
    archive[changed] = static_cast<char>(archive.at(changed) ^ 1);
    const LogCapture log;
    QCOMPARE(extract(archive), quint16(ArchiveStatus::WrongChecksum));
    QVERIFY(isUnchanged());
    QCOMPARE(log.count(QStringLiteral("Unpacking failed: 5"), QsLogging::LogLevel::Error), 1);
}

void tst_ArchiveDamage::cutAnywhere()
{
    QFETCH(QStringList, switches);
    const QByteArray archive = ReleaseArchive::pack(smallRelease(), switches);
    QVERIFY(!archive.isEmpty());
    for (int size = 1; size < archive.size(); size += everyNth) {
        QCOMPARE(extract(archive.left(size)),
                 quint16(size < 6 ? ArchiveStatus::NotAnArchive : ArchiveStatus::Damaged));
        QVERIFY2(isUnchanged(), QByteArray::number(size).constData());
    }
}

void tst_ArchiveDamage::changedAnywhere()
{
    QFETCH(QStringList, switches);
    const Members members = smallRelease();
    const QByteArray archive = ReleaseArchive::pack(members, switches);
    QVERIFY(!archive.isEmpty());
    int harmless = 0;
    for (int place = 0; place < archive.size(); place += everyNth) {
        QByteArray changed = archive;
        changed[place] = static_cast<char>(changed.at(place) ^ (1 << (place % 8)));
        if (extract(changed) != 0) {
            QVERIFY2(isUnchanged(), QByteArray::number(place).constData());
            continue;
        }
        ++harmless; // a bit that says nothing, such as the format's minor version
        QVERIFY2(m_folder->files() == ArchiveFolder::asFiles(members), QByteArray::number(place).constData());
        for (const ReleaseArchive::Member& member : members) {
            QVERIFY(QFile::remove(m_folder->path(member.name)));
        }
        QVERIFY(m_folder->put(QStringLiteral("LoaderOut.srec"), "the one before"));
    }
    qInfo("%d bytes changed, %d of them without effect", int(archive.size()) / everyNth, harmless);
    QVERIFY(harmless * 10 < archive.size() / everyNth);
}

/// The checksums hold here, so that every byte of the header gets to the library. What comes out may be
/// anything that the header now says, but only in the folder, and all of it or nothing.
void tst_ArchiveDamage::changedHeaderThatLooksWhole()
{
    const QByteArray archive = ReleaseArchive::pack(smallRelease(), {QStringLiteral("-mhc=off")});
    const auto headerStart = archive.size() - 250;
    QVERIFY(headerStart > 0);
    int unpacked = 0;
    for (auto place = headerStart; place < archive.size(); ++place) {
        for (const int value : {0x00, 0x01, 0x7f, 0xff}) {
            QByteArray changed = archive;
            changed[place] = static_cast<char>(value);
            QVERIFY(ArchiveChecksums::repair(changed));
            if (extract(changed) != 0) {
                QVERIFY2(isUnchanged(), QByteArray::number(place).constData());
                continue;
            }
            ++unpacked;
            const auto entries =
                QDir(m_folder->outerPath()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
            QCOMPARE(entries, QStringList{QStringLiteral("releases")});
            QVERIFY(QDir(m_folder->path()).removeRecursively());
            QVERIFY(m_folder->put(QStringLiteral("LoaderOut.srec"), "the one before"));
        }
    }
    QVERIFY(unpacked > 0);
}

void tst_ArchiveDamage::unreadMethods_data()
{
    QTest::addColumn<QStringList>("switches");
    QTest::addColumn<quint16>("status");
    QTest::addColumn<QString>("named");
    const auto row = [](const char* name, const char* switches, ArchiveStatus::Code status,
                        const char* named) {
        QTest::newRow(name) << QString::fromLatin1(switches).split(QLatin1Char(' ')) << quint16(status)
                            << QString::fromLatin1(named);
    };
    const auto unread = ArchiveStatus::UnsupportedMethod;
    row("Deflate64", "-m0=Deflate64", unread, "method that is not read: Deflate64");
    row("ARM64", "-m0=ARM64 -m1=LZMA2", unread, "method that is not read: ARM64 filter");
    row("RISC-V", "-m0=RISCV -m1=LZMA2", unread, "method that is not read: RISC-V filter");
    row("encrypted", "-psecret", unread, "method that is not read: encryption");
    row("encrypted with its names", "-psecret -mhe=on", unread, "method that is not read: encryption");
    // Damage is what the library takes these for.
    row("BCJ over PPMd", "-m0=BCJ -m1=PPMd", ArchiveStatus::Damaged, "BCJ over PPMd");
}

void tst_ArchiveDamage::unreadMethods()
{
    QFETCH(QStringList, switches);
    QFETCH(quint16, status);
    QFETCH(QString, named);
    const LogCapture log;
    QCOMPARE(extract(ReleaseArchive::pack(ReleaseArchive::threeImages(100000), switches)), status);
    QVERIFY(isUnchanged());
    QCOMPARE(log.count(named, QsLogging::LogLevel::Error), 1);
}

QTEST_GUILESS_MAIN(tst_ArchiveDamage)
#include "tst_ArchiveDamage.moc"
