#include "QsLog2_1_0/QsLog.h"
#include "app/Startup.h"
#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "scenario/Scenario.h"
#include "settings/SettingsDialog.h"
#include "support/HomeFolder.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <functional>
#include <memory>
#include <vector>

/// The start-up sequence, run for real with a window that closes itself.
class tst_Startup : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void joinsArguments_data();
    void joinsArguments();
    void dataFolderIsMade();
    void dataFolderThatExistsStays();
    void dataFolderThatCannotBeMade();
    void logConfiguration();
    void runsInOrder();
    void runsOnADenseScreen();
    void argumentsReachTheWindow_data();
    void argumentsReachTheWindow();
    void exitCodeIsTheLoops();
    void settingsAreSavedAfterTheLoop();
    void openDialogDoesNotKeepTheProgram();
    void closingUnderABoxEndsTheProgram();
    void closingInAWaitEndsTheProgram();
    void programStarts();

private:
    /// Runs the program with these arguments; the window closes itself when the loop has started.
    int run(const QByteArrayList& arguments, const std::function<void(PelorinMainWindow&)>& hook);
    QString documents() const { return m_home->path(QStringLiteral("Documents")); }
    QString logFile() const { return m_home->dataFolder() + QStringLiteral("/VYR_Log.txt"); }

    std::unique_ptr<HomeFolder> m_home;
    std::unique_ptr<WindowBench> m_bench;
};

void tst_Startup::init()
{
    m_home = std::make_unique<HomeFolder>();
    m_bench = std::make_unique<WindowBench>();
}

void tst_Startup::cleanup()
{
    m_bench.reset();
    m_home.reset();
}

int tst_Startup::run(const QByteArrayList& arguments, const std::function<void(PelorinMainWindow&)>& hook)
{
    QByteArrayList all{"vyr"};
    all += arguments;
    std::vector<char*> argv;
    for (QByteArray& argument : all) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    return runProgram(int(all.size()), argv.data(), [&hook](PelorinMainWindow& window) {
        runLater(&window, std::chrono::milliseconds(0), [&window] { window.close(); });
        hook(window);
    });
}

void tst_Startup::joinsArguments_data()
{
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::addColumn<QString>("joined");
    QTest::newRow("none") << QByteArrayList() << QString();
    QTest::newRow("one") << QByteArrayList{"-diag"} << QStringLiteral("-diag");
    QTest::newRow("several") << QByteArrayList{"-diag", "my", "file.prf"}
                             << QStringLiteral("-diag my file.prf");
    QTest::newRow("an empty one") << QByteArrayList{"-diag", "", "-maxchannels"}
                                  << QStringLiteral("-diag  -maxchannels");
    QTest::newRow("blanks inside") << QByteArrayList{"a b"} << QStringLiteral("a b");
    QTest::newRow("local encoding") << QByteArrayList{"gr\xC3\xBCn.prf"} << QString::fromUtf8("grün.prf");
}

void tst_Startup::joinsArguments()
{
    QFETCH(QByteArrayList, arguments);
    std::vector<const char*> argv{"/usr/bin/vyr"};
    for (const QByteArray& argument : qAsConst(arguments)) {
        argv.push_back(argument.constData());
    }
    QTEST(joinArguments(static_cast<int>(argv.size()), argv.data()), "joined");
}

void tst_Startup::dataFolderIsMade()
{
    const QString folder = prepareDataFolder();
    QCOMPARE(folder, QString(documents() + QStringLiteral("/Tarnwick/VYR")));
    QVERIFY(QDir(folder).exists());
}

void tst_Startup::dataFolderThatExistsStays()
{
    QVERIFY(QDir().mkpath(documents() + QStringLiteral("/Tarnwick/VYR/kept")));
    prepareDataFolder();
    QVERIFY(QDir(documents() + QStringLiteral("/Tarnwick/VYR/kept")).exists());
}

void tst_Startup::dataFolderThatCannotBeMade()
{
    QFile inTheWay(documents() + QStringLiteral("/Tarnwick"));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    QCOMPARE(prepareDataFolder(), QString(documents() + QStringLiteral("/Tarnwick/VYR")));
    bool sawWindow = false;
    QCOMPARE(run({}, [&sawWindow](PelorinMainWindow&) { sawWindow = true; }), 0);
    QVERIFY(sawWindow);
}

void tst_Startup::logConfiguration()
{
    QsLogging::Logger& logger = QsLogging::Logger::instance();
    logger.setLevel(QsLogging::LogLevel::Trace);
    configureLog(prepareDataFolder());
    QCOMPARE(logger.level(), QsLogging::LogLevel::Info);
    QVERIFY(logger.hasDestinationOfType(QStringLiteral("file")));
    QVERIFY(logger.hasDestinationOfType(QStringLiteral("console")));
    QS_INFO() << "A line for the file";
    QFile file(logFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("A line for the file"));
    // Above the limit the file is put aside; the line that crosses it opens the next one.
    const QString filler(100'000, QLatin1Char('x'));
    for (int i = 0; i < 21; ++i) {
        QS_INFO() << filler;
    }
    QVERIFY(QFile::exists(logFile() + QStringLiteral(".1")));
    QVERIFY(!QFile::exists(logFile() + QStringLiteral(".2")));
}

void tst_Startup::runsInOrder()
{
    const int result = run({"-diag"}, [this](PelorinMainWindow& window) {
        QCOMPARE(QCoreApplication::organizationName(), QStringLiteral("Tarnwick"));
        QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("VYR"));
        const qreal density = qEnvironmentVariableIntValue("QT_FONT_DPI") / 96.0;
        QCOMPARE(window.devicePixelRatioF(), density);
        QCOMPARE(QApplication::windowIcon().pixmap(32, 32).devicePixelRatio(), density);
        QVERIFY(!qApp->styleSheet().isEmpty());
        QVERIFY(!QApplication::windowIcon().isNull());
        QVERIFY(!window.isVisible());
        QVERIFY(window.settingsDialog() != nullptr);
        QCOMPARE(window.findChildren<Scenario*>().size(), 2);
        QCOMPARE(window.windowTitle(), QStringLiteral("VYR Laser Illuminator 02.07.00 (diag)"));
        QVERIFY(QFile::exists(logFile()));
    });
    QCOMPARE(result, 0);
    QFile file(logFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray lines = file.readAll();
    QCOMPARE(lines.count("Program started: "), 1);
    QCOMPARE(lines.count("Laser On/Off pressed << false"), 2); // once per loading of the settings
    QVERIFY(qApp == nullptr);
}

/// In a process of its own, as Qt asks for the screen's density once.
void tst_Startup::runsOnADenseScreen()
{
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_FONT_DPI"), QStringLiteral("192"));
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget(),
                  {QStringLiteral("runsInOrder")});
    QVERIFY(program.waitForFinished());
    QVERIFY2(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0, program.readAll());
}

void tst_Startup::argumentsReachTheWindow_data()
{
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::addColumn<QString>("marks");
    QTest::newRow("none") << QByteArrayList() << QString();
    QTest::newRow("two") << QByteArrayList{"-diag", "-maxchannels"}
                         << QStringLiteral(" (diag) (max channels = 4)");
    QTest::newRow("capitals") << QByteArrayList{"-DIAG"} << QString();
    QTest::newRow("file in pieces") << QByteArrayList{"/a", "b", "c.PRF", "-diag"} << QString();
    QTest::newRow("empty entry") << QByteArrayList{"-diag", "", "-maxchannels"} << QStringLiteral(" (diag)");
}

void tst_Startup::argumentsReachTheWindow()
{
    QFETCH(QByteArrayList, arguments);
    QString title;
    QCOMPARE(run(arguments, [&title](PelorinMainWindow& window) { title = window.windowTitle(); }), 0);
    QFETCH(QString, marks);
    QCOMPARE(title, QString(QStringLiteral("VYR Laser Illuminator 02.07.00") + marks));
}

void tst_Startup::exitCodeIsTheLoops()
{
    QCOMPARE(run({},
                 [](PelorinMainWindow&) {
                     runLater(qApp, std::chrono::milliseconds(0), [] { QCoreApplication::exit(7); });
                 }),
             7);
    QCOMPARE(m_bench->stored(QStringLiteral("Sleep Timer")).toInt(), 30);
}

void tst_Startup::settingsAreSavedAfterTheLoop()
{
    const int result = run({}, [this](PelorinMainWindow& window) {
        emit window.settingsDialog()->sleepTimerChanged(21);
        QObject::connect(qApp, &QGuiApplication::lastWindowClosed, &window, [this] {
            // Closing has stored the layout, and nothing else yet.
            QVERIFY(m_bench->stored(QStringLiteral("geometry")).isValid());
            QVERIFY(m_bench->stored(QStringLiteral("windowState")).isValid());
            QVERIFY(m_bench->stored(QStringLiteral("Window Minimized")).isValid());
            QVERIFY(!m_bench->stored(QStringLiteral("Sleep Timer")).isValid());
        });
    });
    QCOMPARE(result, 0);
    QCOMPARE(m_bench->stored(QStringLiteral("Sleep Timer")).toInt(), 21);
}

void tst_Startup::openDialogDoesNotKeepTheProgram()
{
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(run({}, [](PelorinMainWindow& window) { window.settingsDialog()->show(); }), 0);
    QVERIFY2(clock.elapsed() < 2000, QByteArray::number(clock.elapsed()));
}

void tst_Startup::closingUnderABoxEndsTheProgram()
{
    bool sawBox = false;
    QElapsedTimer clock;
    const auto hook = [&](PelorinMainWindow& window) {
        emit window.settingsDialog()->shutterControlChanged(0);
        runLater(&window, std::chrono::milliseconds(0), [&window] {
            QTest::mouseClick(window.findChild<QPushButton*>(QStringLiteral("pushButtonChannelShutter1")),
                              Qt::LeftButton);
        });
        runLater(&window, std::chrono::milliseconds(100), [&] {
            sawBox = QApplication::activeModalWidget() != nullptr;
            clock.start();
            window.close();
        });
    };
    QByteArray name("vyr");
    std::array<char*, 2> argv{name.data(), nullptr};
    QCOMPARE(runProgram(1, argv.data(), hook), 0);
    QVERIFY(sawBox);
    QVERIFY2(clock.elapsed() < 2000, QByteArray::number(clock.elapsed()));
}

void tst_Startup::closingInAWaitEndsTheProgram()
{
    std::unique_ptr<ScriptedBench> silent;
    QElapsedTimer clock;
    bool inWait = false;
    const auto hook = [&](PelorinMainWindow& window) {
        silent = std::make_unique<ScriptedBench>();
        QObject::connect(&silent->wire(), &Simulator::Wire::lineReceived, &window,
                         [&window, &clock, &inWait] {
                             inWait = true;
                             clock.start();
                             window.close();
                         });
        runLater(&window, std::chrono::milliseconds(0),
                 [&window] { window.device()->checkConnectionStatus(); });
    };
    QByteArray name("vyr");
    std::array<char*, 2> argv{name.data(), nullptr};
    QCOMPARE(runProgram(1, argv.data(), hook), 0);
    QVERIFY(inWait);
    QVERIFY2(clock.elapsed() < 2000, QByteArray::number(clock.elapsed()));
    silent.reset();
}

void tst_Startup::programStarts()
{
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QStringLiteral(VYR_PROGRAM), {QStringLiteral("-diag")});
    QVERIFY(program.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(logFile()), 20000);
    QTRY_VERIFY_WITH_TIMEOUT(program.bytesAvailable() > 0 || program.waitForReadyRead(100), 20000);
    QCOMPARE(program.state(), QProcess::Running);
    program.terminate();
    QVERIFY(program.waitForFinished());
    QVERIFY(program.readAll().contains("Program started: "));
}

QTEST_APPLESS_MAIN(tst_Startup)
#include "tst_Startup.moc"
