#include <QDir>
#include <QImage>
#include <QLockFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

/// The programs as they are built, started as processes.
class ProgramsTest : public QObject
{
    Q_OBJECT

private slots:
    void demoPlaysItsScene();
    void demoWaitsForAnotherOnesTour();
    void demoTellsOfAFolderItCannotWrite();
    void programRunsWithoutADeviceOrADocumentsFolder();

private:
    static QString program(const char* name);
    static QProcessEnvironment environmentIn(const QTemporaryDir& home);
};

QString ProgramsTest::program(const char* name)
{
    return QStringLiteral(VYR_BIN_DIR "/") + QString::fromLatin1(name);
}

QProcessEnvironment ProgramsTest::environmentIn(const QTemporaryDir& home)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("HOME"), home.path());
    return environment;
}

void ProgramsTest::demoPlaysItsScene()
{
    const QTemporaryDir home;
    const QTemporaryDir pictures;
    QProcess demo;
    demo.setProcessEnvironment(environmentIn(home));
    demo.start(program("vyr-demo"), {QStringLiteral("--scene"), pictures.path()});
    QVERIFY(demo.waitForFinished(90000));
    QVERIFY2(demo.exitStatus() == QProcess::NormalExit && demo.exitCode() == 0,
             demo.readAllStandardError().constData());

    const QStringList files =
        QDir(pictures.path()).entryList({QStringLiteral("*.png")}, QDir::Files, QDir::Name);
    const QStringList expected{"01-warm-up.png",        "02-idle.png",     "03-run.png",
                               "04-slider-2.png",       "05-slider-6.png", "06-shutter-2-open.png",
                               "07-shutter-6-open.png", "08-fault.png",    "09-fault-cleared.png",
                               "10-collapsed.png"};
    QCOMPARE(files, expected);
    QCOMPARE(QImage(pictures.filePath(files.first())).size(), QSize(1024, 775));
    QCOMPARE(QImage(pictures.filePath(files.last())).size(), QSize(800, 400));
    // The demo kept to its own folder.
    QVERIFY(!QDir(home.filePath(QStringLiteral("config"))).exists());
}

void ProgramsTest::demoWaitsForAnotherOnesTour()
{
    const QTemporaryDir home;
    QLockFile otherTour(QDir::temp().filePath(QStringLiteral("vyr-demo-tour.lock")));
    QVERIFY(otherTour.tryLock(120000));
    QProcess demo;
    demo.setProcessEnvironment(environmentIn(home));
    demo.setReadChannel(QProcess::StandardError);
    demo.start(program("vyr-demo"), {QStringLiteral("--scene"), QStringLiteral("/proc/none")});
    QVERIFY(demo.waitForReadyRead(60000));
    QCOMPARE(demo.readAllStandardError(), QByteArray("Waiting for the end of another scene.\n"));
    QVERIFY2(!demo.waitForReadyRead(1500), demo.readAllStandardError().constData());

    otherTour.unlock();
    QVERIFY(demo.waitForReadyRead(60000));
    QVERIFY(demo.waitForFinished(60000));
}

void ProgramsTest::demoTellsOfAFolderItCannotWrite()
{
    const QTemporaryDir home;
    QProcess demo;
    demo.setProcessEnvironment(environmentIn(home));
    demo.start(program("vyr-demo"), {QStringLiteral("--scene"), QStringLiteral("/proc/none")});
    QVERIFY(demo.waitForFinished(60000));
    QCOMPARE(demo.exitCode(), 1);
    QVERIFY(demo.readAllStandardError().contains("Cannot write /proc/none/01-warm-up.png"));
}

void ProgramsTest::programRunsWithoutADeviceOrADocumentsFolder()
{
    const QTemporaryDir home;
    QProcess vyr;
    vyr.setProcessEnvironment(environmentIn(home));
    vyr.start(program("VYR"), {QStringLiteral("-diag")});
    QVERIFY(vyr.waitForStarted());
    QByteArray log;
    const auto saysThatItStarted = [&] {
        log += vyr.readAllStandardError();
        return log.contains("Program started: ");
    };
    QTRY_VERIFY_WITH_TIMEOUT(saysThatItStarted(), 20000);
    QTest::qWait(1500); // one look for a device, which must not end the program
    QCOMPARE(vyr.state(), QProcess::Running);
    vyr.terminate();
    QVERIFY(vyr.waitForFinished(5000));
}

QTEST_GUILESS_MAIN(ProgramsTest)
#include "tst_Programs.moc"
