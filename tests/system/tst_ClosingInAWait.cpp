#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

/// The program ends soon, and in good order, whatever it waits for when its window is closed.
class ClosingInAWaitTest : public QObject
{
    Q_OBJECT

private slots:
    void endsWithinTwoSeconds_data();
    void endsWithinTwoSeconds();
};

void ClosingInAWaitTest::endsWithinTwoSeconds_data()
{
    QTest::addColumn<QString>("wait");
    for (const char* wait :
         {"identification", "identity", "poll", "queue", "busy", "switch", "reconnection", "box"}) {
        QTest::newRow(wait) << QString::fromLatin1(wait);
    }
}

void ClosingInAWaitTest::endsWithinTwoSeconds()
{
    QFETCH(QString, wait);
    constexpr int startMs = 20000;
    constexpr int endMs = 2000;
    const QTemporaryDir home;
    QProcess program;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.path());
    environment.insert(QStringLiteral("HOME"), home.path());
    QVERIFY(QDir(home.path()).mkdir(QStringLiteral("Documents")));
    program.setProcessEnvironment(environment);

    program.start(QCoreApplication::applicationDirPath() + QStringLiteral("/closing_program"), {wait});
    QVERIFY2(program.waitForStarted(), qPrintable(program.errorString()));
    QTRY_VERIFY2_WITH_TIMEOUT(program.canReadLine() || program.state() == QProcess::NotRunning,
                              "the program did not come to its wait", startMs);
    QCOMPARE(program.readLine(), QByteArray("closing\n"));
    QElapsedTimer sinceClosing;
    sinceClosing.start();

    QTRY_VERIFY2_WITH_TIMEOUT(program.state() == QProcess::NotRunning, "the program still runs", endMs);
    QVERIFY2(sinceClosing.elapsed() < endMs, qPrintable(QString::number(sinceClosing.elapsed())));
    const QByteArray log = program.readAllStandardError();
    QVERIFY2(program.exitStatus() == QProcess::NormalExit, log.constData());
    QVERIFY2(program.exitCode() == 0, log.constData());
    // Both halves of what is kept were written: the layout on closing, the rest after the loop.
    const QSettings settings(home.filePath(QStringLiteral("Tarnwick/VYR.conf")), QSettings::IniFormat);
    QVERIFY(settings.contains(QStringLiteral("geometry")));
    QCOMPARE(settings.value(QStringLiteral("Sleep Timer")).toInt(), 30);
}

QTEST_GUILESS_MAIN(ClosingInAWaitTest)
#include "tst_ClosingInAWait.moc"
