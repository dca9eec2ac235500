// The step of an update that unpacks: what it says, how often it tries, and what it leaves behind.

#include "ArchiveTest.h"
#include "support/BoxAnswerer.h"
#include "support/LogCapture.h"
#include "update/ArchiveStep.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>
#include <QWidget>

#include <memory>
#include <sys/stat.h>

class tst_ArchiveStep : public ArchiveTest
{
    Q_OBJECT

private slots:
    void initTestCase() { requirePacker(); }
    void init();
    void cleanup();

    void unpacksNextToTheArchive();
    void failures_data();
    void failures();
    void pageInsteadOfArchive_data();
    void pageInsteadOfArchive();
    void attemptsThatDiffer();
    void damagedArchiveIsDeleted();
    void linkToADamagedArchive();
    void aRetryMaySucceed();
    void everyRunHasThreeAttempts();
    void callFromWithinReturnsAtOnce();
    void windowIsAliveMeanwhile();
    void windowGoesMeanwhile();
    void windowGoesWithABox();

private:
    bool run(const QString& path) { return ArchiveStep::run(m_extractor, path, m_window.get()); }
    bool run() { return run(m_folder->archive()); }
    void verifyFinalBox(const BoxAnswerer::Box& box, const QString& error) const;
    void verifyLog(const QStringList& errors) const;

    ArchiveExtractor m_extractor;
    std::unique_ptr<ArchiveFolder> m_folder;
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<LogCapture> m_log;
};

namespace {

const QString located = QStringLiteral("Unable to locate archive file.");
const QString invalid = QStringLiteral("Invalid Archive file.");
const QString opening = QStringLiteral("Error opening archive file.");

QByteArray damagedArchive()
{
    QByteArray archive = ReleaseArchive::pack(ReleaseArchive::threeImages(1000));
    archive.chop(1);
    return archive;
}

} // namespace

void tst_ArchiveStep::init()
{
    beginWatch();
    m_folder = std::make_unique<ArchiveFolder>();
    m_window = std::make_unique<QWidget>();
    m_window->show();
    m_log = std::make_unique<LogCapture>();
}

void tst_ArchiveStep::cleanup()
{
    QVERIFY(!ArchiveStep::isBusy());
    m_log.reset();
    m_window.reset();
    m_folder.reset();
    endWatch();
}

void tst_ArchiveStep::verifyFinalBox(const BoxAnswerer::Box& box, const QString& error) const
{
    QCOMPARE(box.text, error + QStringLiteral("<br>Cannot update VYR.<br>"));
    QCOMPARE(box.textFormat, Qt::RichText);
    QCOMPARE(box.title, QStringLiteral("Firmware Update"));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.parent, m_window.get());
}

/// Two lines for each attempt, one after the other; what the extractor says of its own is left out.
void tst_ArchiveStep::verifyLog(const QStringList& errors) const
{
    QStringList lines = m_log->lines();
    lines = lines.filter(QRegularExpression(QStringLiteral("^(?!.*Unpacking failed: )"),
                                            QRegularExpression::DotMatchesEverythingOption));
    QCOMPARE(lines.size(), 2 * errors.size());
    const QString stamp = QStringLiteral("^ERROR \\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3} ");
    for (int i = 0; i < errors.size(); ++i) {
        const QRegularExpression first(stamp + QStringLiteral("\"\\d\\d:\\d\\d:\\d\\d \" \"") +
                                       QRegularExpression::escape(errors[i]) + QStringLiteral("\" \\n\\z"));
        const QRegularExpression second(stamp + QStringLiteral("Error extracting archive\\.\\z"));
        QVERIFY2(first.match(lines[2 * i]).hasMatch(), qPrintable(lines[2 * i]));
        QVERIFY2(second.match(lines[2 * i + 1]).hasMatch(), qPrintable(lines[2 * i + 1]));
    }
}

void tst_ArchiveStep::unpacksNextToTheArchive()
{
    const auto members = ReleaseArchive::threeImages(100000);
    QVERIFY(m_folder->put(members[0].name, "older"));
    QVERIFY(ReleaseArchive::write(m_folder->archive(), members));
    const BoxAnswerer boxes;
    QVERIFY(run());
    QVERIFY(m_folder->files() == ArchiveFolder::asFiles(members));
    QVERIFY(QFile::exists(m_folder->archive()));
    QVERIFY(boxes.boxes().isEmpty());
    verifyLog({});
}

void tst_ArchiveStep::failures_data()
{
    QTest::addColumn<QString>("kind"); // of what stands at the path; a file where it is none of the others
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error");
    QTest::newRow("no path") << QStringLiteral("no path") << QByteArray() << located;
    QTest::newRow("nothing there") << QStringLiteral("nothing") << QByteArray() << located;
    QTest::newRow("folder") << QStringLiteral("folder") << QByteArray() << opening;
    QTest::newRow("pipe") << QStringLiteral("pipe") << QByteArray() << opening;
    QTest::newRow("no bytes") << QString() << QByteArray() << invalid;
    QTest::newRow("10 bytes") << QString() << QByteArray(10, 'x') << invalid;
    QTest::newRow("15 bytes of a page") << QString() << QByteArray("<html><head></h") << invalid;
}

void tst_ArchiveStep::failures()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    const QString path = kind == QLatin1String("no path") ? QString() : m_folder->archive();
    if (kind == QLatin1String("folder")) {
        QVERIFY(QDir().mkpath(path));
    } else if (kind == QLatin1String("pipe")) {
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    } else if (kind.isEmpty()) {
        QVERIFY(m_folder->put(QStringLiteral("release.7z"), content));
    }
    const BoxAnswerer boxes;
    QVERIFY(!run(path));
    QCOMPARE(boxes.boxes().size(), 1);
    verifyFinalBox(boxes.boxes().first(), error);
    verifyLog({error, error, error});
    QCOMPARE(QFileInfo::exists(path), error != located); // only a damaged archive is deleted
}

void tst_ArchiveStep::pageInsteadOfArchive_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isPage");
    QTest::newRow("small letters") << QByteArray("<html><head></head></html>") << true;
    QTest::newRow("capitals") << QByteArray("<HTML>          ") << true;
    QTest::newRow("mixed, at the very end") << QByteArray("0123456789<hTmL>") << true;
    QTest::newRow("too late") << QByteArray("01234567890<html>") << false;
    QTest::newRow("behind a zero byte") << QByteArray("01\0 <html>       ", 18) << false;
    QTest::newRow("another element") << QByteArray("<html lang=\"en\"> ") << false;
}

void tst_ArchiveStep::pageInsteadOfArchive()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, isPage);
    QVERIFY(m_folder->put(QStringLiteral("release.7z"), content));
    const BoxAnswerer boxes;
    QVERIFY(!run());
    if (!isPage) {
        QCOMPARE(boxes.boxes().size(), 1);
        verifyFinalBox(boxes.boxes().first(), located);
        verifyLog({QStringLiteral("Error extracting files from archive. #2"), located, located});
        return;
    }
    QCOMPARE(boxes.boxes().size(), 4);
    for (int i = 0; i < 3; ++i) {
        const BoxAnswerer::Box& box = boxes.boxes()[i];
        QCOMPARE(box.text, QStringLiteral("Archive file not found."));
        QCOMPARE(box.title, QStringLiteral("Firmware Update"));
        QCOMPARE(box.icon, QMessageBox::Critical);
        QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
        QCOMPARE(box.parent, m_window.get());
    }
    verifyFinalBox(boxes.boxes().last(), QString());
    verifyLog({QString(), QString(), QString()});
    QVERIFY(QFile::exists(m_folder->archive()));
}

/// The box of a page is where the file can change between two attempts. The last text is the one that is
/// told.
void tst_ArchiveStep::attemptsThatDiffer()
{
    QVERIFY(m_folder->put(QStringLiteral("release.7z"), "<html>          "));
    QStringList texts;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [this, &texts] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            QVERIFY(m_folder->put(QStringLiteral("release.7z"), "short"));
            texts.append(box->text());
            box->accept();
        }
    });
    timer.start(5);
    QVERIFY(!run());
    QCOMPARE(texts, (QStringList{QStringLiteral("Archive file not found."),
                                 invalid + QStringLiteral("<br>Cannot update VYR.<br>")}));
    verifyLog({QString(), invalid, invalid});
}

void tst_ArchiveStep::damagedArchiveIsDeleted()
{
    QVERIFY(m_folder->putArchive(damagedArchive()));
    QVERIFY(m_folder->put(QStringLiteral("LoaderOut.srec"), "older"));
    const auto before = m_folder->files();
    const BoxAnswerer boxes;
    QVERIFY(!run());
    QVERIFY(!QFile::exists(m_folder->archive()));
    QCOMPARE(m_folder->files(), before);
    QCOMPARE(boxes.boxes().size(), 1);
    verifyFinalBox(boxes.boxes().first(), located);
    verifyLog({QStringLiteral("Error extracting files from archive. #3"), located, located});
}

/// What was chosen goes; the archive that it led to lies in somebody else's folder.
void tst_ArchiveStep::linkToADamagedArchive()
{
    const ArchiveFolder elsewhere;
    QVERIFY(elsewhere.putArchive(damagedArchive()));
    QVERIFY(QFile::link(elsewhere.archive(), m_folder->archive()));
    const BoxAnswerer boxes;
    QVERIFY(!run());
    QVERIFY(QFile::exists(elsewhere.archive()));
    QVERIFY(!QFileInfo(m_folder->archive()).isSymLink());
    verifyLog({QStringLiteral("Error extracting files from archive. #3"), located, located});
}

void tst_ArchiveStep::aRetryMaySucceed()
{
    QVERIFY(m_folder->put(QStringLiteral("release.7z"), "<html>          "));
    const QByteArray archive = ReleaseArchive::pack(ReleaseArchive::threeImages(1000));
    int boxes = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            if (++boxes == 2) {
                QVERIFY(m_folder->putArchive(archive));
            }
            box->accept();
        }
    });
    timer.start(5);
    QVERIFY(run());
    QCOMPARE(boxes, 2);
    QCOMPARE(m_folder->files().size(), 3);
    verifyLog({QString(), QString()});
}

void tst_ArchiveStep::everyRunHasThreeAttempts()
{
    const BoxAnswerer boxes;
    for (int round = 1; round <= 3; ++round) {
        m_log->clear();
        QVERIFY(!run());
        QCOMPARE(boxes.boxes().size(), round);
        verifyLog({located, located, located});
    }
    QVERIFY(ReleaseArchive::write(m_folder->archive(), ReleaseArchive::threeImages(1000)));
    QVERIFY(run());
}

void tst_ArchiveStep::callFromWithinReturnsAtOnce()
{
    int calls = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            QVERIFY(ArchiveStep::isBusy());
            ArchiveExtractor another;
            QVERIFY(ArchiveStep::run(another, QString(), m_window.get()));
            QVERIFY(ArchiveStep::isBusy());
            ++calls;
            box->accept();
        }
    });
    timer.start(5);
    QVERIFY(!run());
    QCOMPARE(calls, 1);
    verifyLog({located, located, located}); // nothing of the inner calls
}

/// Three images of five megabytes: the loop is let in again and again, and a second call stays out.
void tst_ArchiveStep::windowIsAliveMeanwhile()
{
    QVERIFY(ReleaseArchive::write(m_folder->archive(), ReleaseArchive::threeImages(5000000),
                                  {QStringLiteral("-mx=1")}));
    int ticks = 0;
    qint64 longestMs = 0;
    QElapsedTimer sinceTick;
    sinceTick.start();
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        longestMs = qMax(longestMs, sinceTick.restart());
        ++ticks;
        ArchiveExtractor another;
        QVERIFY(ArchiveStep::run(another, QStringLiteral("/nowhere"), m_window.get()));
    });
    timer.start(0);
    QElapsedTimer whole;
    whole.start();
    QVERIFY(run());
    longestMs = qMax(longestMs, sinceTick.elapsed());
    qInfo("%lld ms, the loop was let in %d times, held for at most %lld ms", whole.elapsed(), ticks,
          longestMs);
    QVERIFY(ticks > 3);
    QCOMPARE(m_folder->files().size(), 3);
    verifyLog({});
}

void tst_ArchiveStep::windowGoesMeanwhile()
{
    QVERIFY(ReleaseArchive::write(m_folder->archive(), ReleaseArchive::threeImages(5000000),
                                  {QStringLiteral("-mx=1")}));
    QTimer::singleShot(0, this, [this] { m_window.reset(); });
    const BoxAnswerer boxes;
    QVERIFY(!run());
    QVERIFY(m_window == nullptr);
    QVERIFY(boxes.boxes().isEmpty());
    QVERIFY(QFile::exists(m_folder->archive())); // nothing is wrong with it
    QCOMPARE(m_folder->files(), ArchiveFolder::Files());
}

void tst_ArchiveStep::windowGoesWithABox()
{
    QVERIFY(m_folder->put(QStringLiteral("release.7z"), "<html>          "));
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [this] {
        if (QApplication::activeModalWidget() != nullptr) {
            m_window.reset();
        }
    });
    timer.start(5);
    QVERIFY(!run());
    QVERIFY(m_window == nullptr);
    verifyLog({QString()});
}

QTEST_MAIN(tst_ArchiveStep)
#include "tst_ArchiveStep.moc"
