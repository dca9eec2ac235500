#include "support/FirmwareImages.h"
#include "support/LogCapture.h"
#include "support/WatchedTest.h"
#include "update/FirmwareImage.h"
#include "update/ImageSamples.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using FirmwareImages::Role;
using QsLogging::LogLevel;

namespace {
QByteArray loaderWithTwoHeaders()
{
    const QByteArray header =
        FirmwareImages::line('3', 4, FirmwareImages::headerBase(Role::Loader), QByteArray(32, '\1')) + '\n';
    return "S0030000FC\n" + header + header;
}
} // namespace

class tst_FirmwareFile : public WatchedTest
{
    Q_OBJECT

private slots:
    void init() { beginWatch(); }
    void cleanup() { endWatch(); }
    void fileIsReadFromItsStart();
    void fileIsLogged();
    void rejectedFileIsLogged_data();
    void rejectedFileIsLogged();
    void versionIsLeftAloneWithoutAHeader();
    void folderNameCounts();
    void unreadableFiles();
};

void tst_FirmwareFile::fileIsReadFromItsStart()
{
    const QTemporaryDir folder;
    const FirmwareImages::Image image = someImage(Role::Loader);
    QFile file(FirmwareImages::write(folder.path(), image));
    for (const QIODevice::OpenMode mode :
         {QIODevice::OpenMode(QIODevice::ReadOnly), QIODevice::ReadOnly | QIODevice::Text}) {
        QVERIFY(file.open(mode));
        FirmwareVersion version;
        QCOMPARE(checkFirmwareFile(file, version), FirmwareImages::lineCount(FirmwareImages::text(image)));
        QCOMPARE(version.toString(), QStringLiteral("258.3.255"));
        // Once more, from where the first time ended.
        QCOMPARE(checkFirmwareFile(file, version), FirmwareImages::lineCount(FirmwareImages::text(image)));
        file.close();
    }
}

void tst_FirmwareFile::fileIsLogged()
{
    const QTemporaryDir folder;
    QFile file(FirmwareImages::write(folder.path(), someImage(Role::Application)));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const LogCapture log(LogLevel::Trace);
    FirmwareVersion version;
    const int count = checkFirmwareFile(file, version);
    QCOMPARE(count, 512 / 16 + 3);
    QCOMPARE(log.lines().size(), 3);
    QVERIFY(log.lines(LogLevel::Info)
                .constFirst()
                .endsWith(QStringLiteral(" Checking firmware file line count")));
    QVERIFY(log.lines(LogLevel::Info)
                .constLast()
                .endsWith(" \"" + file.fileName() + "\" Firmware version 258.3.255"));
    QVERIFY(log.lines(LogLevel::Trace).constFirst().endsWith(QStringLiteral(" Line count =  35")));
}

void tst_FirmwareFile::rejectedFileIsLogged_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("message");
    const QString name = QStringLiteral("LoaderOut.srec");
    FirmwareImages::Image image = someImage(Role::Loader);
    QTest::newRow("first line") << name << QByteArray("S1") << "Error with first line of s-record file";
    QTest::newRow("name") << "x.srec" << FirmwareImages::text(image) << "Firmware file name not recognized";
    QTest::newRow("size") << name << loaderWithTwoHeaders() << "Header is too large";
    image.product = 2;
    QTest::newRow("product") << name << FirmwareImages::text(image) << "Invalid product ID in file header";
}

void tst_FirmwareFile::rejectedFileIsLogged()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, text);
    QFETCH(QString, message);
    const QTemporaryDir folder;
    QFile file(folder.filePath(name));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QCOMPARE(file.write(text), qint64(text.size()));
    const LogCapture log(LogLevel::Trace);
    FirmwareVersion version{9, 8, 7};
    QCOMPARE(checkFirmwareFile(file, version), 0);
    QCOMPARE(version.toString(), QStringLiteral("9.8.7"));
    QCOMPARE(log.lines().size(), 2);
    QVERIFY(log.lines(LogLevel::Info)
                .constFirst()
                .endsWith(QStringLiteral(" Checking firmware file line count")));
    QVERIFY(log.lines(LogLevel::Error).constFirst().endsWith(QLatin1Char(' ') + message));
}

void tst_FirmwareFile::versionIsLeftAloneWithoutAHeader()
{
    const QTemporaryDir folder;
    FirmwareImages::Image image = someImage(Role::LoaderUpdater);
    image.hasHeader = false;
    QFile file(FirmwareImages::write(folder.path(), image));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const LogCapture log(LogLevel::Info);
    FirmwareVersion version{9, 8, 7};
    QCOMPARE(checkFirmwareFile(file, version), 512 / 16 + 1);
    QCOMPARE(version.toString(), QStringLiteral("9.8.7"));
    QCOMPARE(log.lines().size(), 1);
}

/// A relative name says less than where the file is.
void tst_FirmwareFile::folderNameCounts()
{
    const QTemporaryDir folder;
    const QString before = QDir::currentPath();
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("loaderOUT")));
    QVERIFY(QDir::setCurrent(folder.filePath(QStringLiteral("loaderOUT"))));
    QFile file(QStringLiteral("image.srec"));
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.write(FirmwareImages::text(someImage(Role::Loader)));
    FirmwareVersion version;
    QVERIFY(checkFirmwareFile(file, version) > 0);
    QCOMPARE(version.toString(), QStringLiteral("258.3.255"));
    QVERIFY(QDir::setCurrent(before));
}

void tst_FirmwareFile::unreadableFiles()
{
    const QTemporaryDir folder;
    const LogCapture log(LogLevel::Trace);
    FirmwareVersion version{9, 8, 7};
    QFile closed(FirmwareImages::write(folder.path(), someImage(Role::Loader)));
    QCOMPARE(checkFirmwareFile(closed, version), 0);
    QVERIFY(closed.open(QIODevice::WriteOnly | QIODevice::Append));
    QCOMPARE(checkFirmwareFile(closed, version), 0);
    QCOMPARE(log.count(QStringLiteral("Firmware file is not open:"), LogLevel::Error), 2);
    // The first page of a process is mapped nowhere, so that reading it fails.
    QFile broken(QStringLiteral("/proc/self/mem"));
    QVERIFY(broken.open(QIODevice::ReadOnly));
    QCOMPARE(checkFirmwareFile(broken, version), 0);
    QCOMPARE(log.count(QStringLiteral("Error reading firmware file:"), LogLevel::Error), 1);
    QCOMPARE(version.toString(), QStringLiteral("9.8.7"));
}

QTEST_GUILESS_MAIN(tst_FirmwareFile)
#include "tst_FirmwareFile.moc"
