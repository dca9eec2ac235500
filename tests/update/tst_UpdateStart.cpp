// What an update does before it asks the device anything: the connection, the choice of a release, its
// archive, and its images.

#include "device/Device.h"
#include "settings/FileChooser.h"
#include "support/BoxAnswerer.h"
#include "update/Update.h"
#include "update/UpdateBench.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

namespace {
const QString loaderName = QStringLiteral("LoaderOut.srec");
const QString updaterName = QStringLiteral("LoaderUpdaterOut.srec");
const QString applicationName = QStringLiteral("VYR-AppOut.srec");
const QString browsePath = QStringLiteral("Browse Path");
const QString complete = QStringLiteral("information: Update complete!");
const QString endOfArchive = QStringLiteral("<br>Cannot update VYR.<br>");

QString warning(const char* text)
{
    return QStringLiteral("warning: ") + QLatin1String(text);
}

QString archiveBox(const QString& error)
{
    return QStringLiteral("critical [Firmware Update] [rich]: ") + error + endOfArchive;
}
} // namespace

class tst_UpdateStart : public UpdateTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildUpdate()); }
    void cleanup() { removeUpdate(); }
    void noDevice();
    void noPort();
    void closedPort();
    void fileDialog_data();
    void fileDialog();
    void canceledFileDialog();
    void damagedArchive_data();
    void damagedArchive();
    void missingImages_data();
    void missingImages();
    void badImages_data();
    void badImages();
    void bothImagesBad();
    void imagesFromBefore();
    void danglingLinks_data();
    void danglingLinks();
    void browsePathIsKept();
    void olderImagesAreReplaced();
    void everyKindOfArchive_data();
    void everyKindOfArchive();

private:
    /// What a run shows that never gets as far as the device, which must not hear of it.
    QStringList shown(const QStringList& entries) const;
    bool put(const QString& name, const QByteArray& content) const;
    QVariant storedPath() const { return m_bench->stored(browsePath); }
};

QStringList tst_UpdateStart::shown(const QStringList& entries) const
{
    if (m_bench->log().contains(QStringLiteral("End programming FLASH"))) {
        return {QStringLiteral("the device was programmed")};
    }
    return m_window->update()->isInProgress() ? QStringList{QStringLiteral("still in progress")} : entries;
}

bool tst_UpdateStart::put(const QString& name, const QByteArray& content) const
{
    QFile file(releasePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

void tst_UpdateStart::noDevice()
{
    const FileChooser chooser;
    const BoxAnswerer answerer;
    m_window->update()->firmwareUpdate(nullptr);
    QVERIFY(answerer.sawOneWarning(QStringLiteral("Please connect to device")));
    QVERIFY(chooser.choosers().isEmpty());
    QVERIFY(!m_window->update()->isInProgress());
}

void tst_UpdateStart::noPort()
{
    // A link of its own, which has found nothing yet.
    Device link;
    const FileChooser chooser;
    const BoxAnswerer answerer;
    m_window->update()->firmwareUpdate(&link);
    QVERIFY(answerer.sawOneWarning(QStringLiteral("Please connect to device")));
    QCOMPARE(answerer.boxes().first().parent, m_window.get());
    QVERIFY(chooser.choosers().isEmpty());
}

void tst_UpdateStart::closedPort()
{
    m_illuminator->bench().wire().unplug();
    QTRY_VERIFY(!m_window->device()->isOpen());
    QVERIFY(packRelease());
    QCOMPARE(shown(updateWith(archivePath())), QStringList{warning("Please connect to device")});
    QVERIFY(!QFileInfo::exists(releasePath(loaderName)));
}

void tst_UpdateStart::fileDialog_data()
{
    QTest::addColumn<QString>("stored"); // below the home
    QTest::addColumn<QString>("folder"); // where the dialog begins, below the home
    QTest::addColumn<QString>("name");   // what it proposes
    const QString release = QStringLiteral("release");
    QTest::newRow("nothing stored") << QString() << QStringLiteral(".") << QString();
    QTest::newRow("archive") << QStringLiteral("release/VYR.7z") << release << QStringLiteral("VYR.7z");
    QTest::newRow("archive that is gone")
        << QStringLiteral("release/old.7z") << release << QStringLiteral("old.7z");
    QTest::newRow("folder") << release << release << QString();
}

void tst_UpdateStart::fileDialog()
{
    QFETCH(QString, stored);
    QFETCH(QString, folder);
    QFETCH(QString, name);
    QVERIFY(packRelease());
    if (!stored.isEmpty()) {
        m_bench->store(browsePath, m_home->path(stored));
    }
    QString proposed;
    m_trace->setOnShow([&proposed](QWidget& widget) {
        if (widget.inherits("QFileDialog")) {
            proposed = widget.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text();
        }
    });
    const FileChooser chooser;
    const BoxAnswerer answerer;
    clickUpdate();
    QCOMPARE(chooser.choosers().size(), 1);
    const FileChooser::Chooser& dialog = chooser.choosers().first();
    QCOMPARE(dialog.caption, QStringLiteral("Please select a firmware file archive."));
    QCOMPARE(dialog.filters, QStringList{QStringLiteral("7zip files (*.7z)")});
    QCOMPARE(dialog.mode, QFileDialog::AcceptOpen);
    QCOMPARE(dialog.parent, m_window.get());
    QCOMPARE(proposed, name);
    QCOMPARE(dialog.folder, QDir::cleanPath(m_home->path(folder)));
}

void tst_UpdateStart::canceledFileDialog()
{
    m_bench->store(browsePath, QStringLiteral("/somewhere/VYR.7z"));
    QCOMPARE(shown(updateWith({})), (QStringList{archiveBox(QStringLiteral("Unable to locate archive file.")),
                                                 warning("Invalid archive file.")}));
    QCOMPARE(m_bench->log().count(QStringLiteral("Unable to locate archive file.")), 3);
    QCOMPARE(m_bench->log().count(QStringLiteral("Error extracting archive."), QsLogging::LogLevel::Error),
             3);
    QCOMPARE(storedPath().toString(), QStringLiteral("/somewhere/VYR.7z"));
    QVERIFY(backups().isEmpty());
}

void tst_UpdateStart::damagedArchive_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("boxes");
    QTest::addColumn<bool>("isKept");
    const QString notFound = QStringLiteral("critical [Firmware Update]: Archive file not found.");
    QTest::newRow("short") << QByteArray("0123456789")
                           << QStringList{archiveBox(QStringLiteral("Invalid Archive file."))} << true;
    QTest::newRow("web page") << QByteArray("<HTML>\n<head>Not Found</head>")
                              << QStringList{notFound, notFound, notFound, archiveBox({})} << true;
    QTest::newRow("none") << QByteArray(100, 'x')
                          << QStringList{archiveBox(QStringLiteral("Unable to locate archive file."))}
                          << false;
}

void tst_UpdateStart::damagedArchive()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, boxes);
    QFETCH(bool, isKept);
    QVERIFY(put(QStringLiteral("VYR.7z"), content));
    QCOMPARE(shown(updateWith(archivePath())), boxes + QStringList{warning("Archive file not found.")});
    QCOMPARE(QFileInfo::exists(archivePath()), isKept);
    QVERIFY(!storedPath().isValid());
}

void tst_UpdateStart::missingImages_data()
{
    QTest::addColumn<QStringList>("missing");
    QTest::addColumn<QString>("box");
    const QString noLoader = warning("Unable to find loader firmware file.");
    const QString noUpdater = warning("Unable to find loader updater firmware file.");
    const QString noApplication = warning("Unable to find application firmware file.");
    QTest::newRow("all") << QStringList{loaderName, updaterName, applicationName} << noLoader;
    QTest::newRow("loader") << QStringList{loaderName} << noLoader;
    QTest::newRow("loader and application") << QStringList{loaderName, applicationName} << noLoader;
    QTest::newRow("updater") << QStringList{updaterName} << noUpdater;
    QTest::newRow("updater and application") << QStringList{updaterName, applicationName} << noUpdater;
    QTest::newRow("application") << QStringList{applicationName} << noApplication;
}

void tst_UpdateStart::missingImages()
{
    QFETCH(QStringList, missing);
    QFETCH(QString, box);
    m_release.missing = missing;
    // A damaged image is not looked at before all are there.
    m_release.contents[loaderName] = "none";
    QCOMPARE(shown(update()), QStringList{box});
    QVERIFY(!storedPath().isValid());
}

void tst_UpdateStart::badImages_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content"); // empty: a folder in its place
    QTest::addColumn<QString>("box");
    FirmwareImages::Image foreign;
    foreign.product = 2;
    for (const QString& name : {loaderName, applicationName}) {
        const bool isLoader = name == loaderName;
        foreign.role = isLoader ? FirmwareImages::Role::Loader : FirmwareImages::Role::Application;
        const QString invalid =
            isLoader ? warning("Invalid loader firmware file.") : warning("Invalid firmware file.");
        const QString unreadable = isLoader ? warning("Unable to open the loader firmware file.")
                                            : warning("Unable to open firmware file.");
        const char* const kind = isLoader ? "loader" : "application";
        QTest::addRow("%s: folder", kind) << name << QByteArray() << unreadable;
        QTest::addRow("%s: text", kind) << name << QByteArray("none\n") << invalid;
        QTest::addRow("%s: one line only", kind) << name << QByteArray("S00600004844521B\n") << invalid;
        QTest::addRow("%s: other product", kind) << name << FirmwareImages::text(foreign) << invalid;
    }
}

void tst_UpdateStart::badImages()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, box);
    if (content.isEmpty()) {
        m_release.folders.append(name);
    } else {
        m_release.contents[name] = content;
    }
    QCOMPARE(shown(update()), QStringList{box});
    // The place is kept as soon as the loader is right, whatever the application is.
    QCOMPARE(storedPath().toString(), name == loaderName ? QString() : archivePath());
    QVERIFY(backups().isEmpty());
}

void tst_UpdateStart::bothImagesBad()
{
    m_release.contents[loaderName] = "none";
    m_release.contents[applicationName] = "none";
    QCOMPARE(shown(update()), QStringList{warning("Invalid loader firmware file.")});
}

/// What lies in the archive's folder counts, whoever put it there.
void tst_UpdateStart::imagesFromBefore()
{
    m_release.missing = QStringList{updaterName};
    QVERIFY(put(updaterName, FirmwareImages::text(m_release.updater)));
    QCOMPARE(update().constLast(), complete);
    QCOMPARE(m_device->count("goloader"), 2);
}

void tst_UpdateStart::danglingLinks_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("box");
    QTest::newRow("loader") << loaderName << warning("Unable to open the loader firmware file.");
    QTest::newRow("application") << applicationName << warning("Unable to open firmware file.");
}

void tst_UpdateStart::danglingLinks()
{
    QFETCH(QString, name);
    QFETCH(QString, box);
    m_release.missing = QStringList{name};
    QVERIFY(QFile::link(m_home->path(QStringLiteral("nowhere")), releasePath(name)));
    QCOMPARE(shown(update()), QStringList{box});
}

void tst_UpdateStart::browsePathIsKept()
{
    QCOMPARE(update().constLast(), complete);
    QCOMPARE(storedPath().toString(), archivePath());
    const FileChooser chooser;
    const BoxAnswerer answerer;
    clickUpdate();
    QCOMPARE(chooser.choosers().size(), 1);
    QCOMPARE(chooser.choosers().first().folder, QFileInfo(releasePath(QString())).absolutePath());
}

void tst_UpdateStart::olderImagesAreReplaced()
{
    QCOMPARE(update().constLast(), complete);
    const QByteArray before = m_release.texts().value(QStringLiteral("application"));
    m_release.application.seed = 99;
    const QStringList entries = update();
    QVERIFY(m_release.texts().value(QStringLiteral("application")) != before);
    QVERIFY(entries.contains(QStringLiteral("wrote application")));
    QCOMPARE(entries.last(), complete);
}

void tst_UpdateStart::everyKindOfArchive_data()
{
    QTest::addColumn<QStringList>("switches");
    const QList<ReleaseArchive::Packing> packings = ReleaseArchive::packings();
    for (const ReleaseArchive::Packing& packing : packings) {
        QTest::newRow(packing.name) << packing.switches;
    }
}

void tst_UpdateStart::everyKindOfArchive()
{
    QFETCH(QStringList, switches);
    m_release.packing = switches;
    m_release.loader.dataSize = m_release.updater.dataSize = m_release.application.dataSize = 1024;
    const QStringList entries = update();
    for (const char* image : {"wrote updater", "wrote loader", "wrote application"}) {
        QVERIFY2(entries.contains(QLatin1String(image)), image);
    }
    QCOMPARE(entries.last(), complete);
    QVERIFY(QFileInfo::exists(archivePath()));
    QVERIFY(QFileInfo::exists(releasePath(QStringLiteral("notes.txt"))));
}

QTEST_MAIN(tst_UpdateStart)
#include "tst_UpdateStart.moc"
