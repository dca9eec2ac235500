#include "app/Startup.h"

#include "QsLog2_1_0/QsLog.h"
#include "Resources/Resources.h"
#include "compat/QtVersion.h"
#include "mainwindow/PelorinMainWindow.h"
#include "mainwindow/SettingsStore.h"

#include <QApplication>
#include <QDir>
#include <QStringList>

namespace {
constexpr qint64 maximumLogBytes = 2'000'000;
constexpr int oldLogsRequested = 25;

int runWindow(QApplication& application, const QString& arguments,
              const std::function<void(PelorinMainWindow&)>& beforeShow)
{
    PelorinMainWindow window;
    // The constructor has loaded the settings already. What it applied is applied to a fresh set of channels
    // once more, so that a start leaves the same state as any later reload.
    window.loadSettings();
    window.processCommandLine(arguments);
    applyStyleSheet(application);
    if (beforeShow) {
        beforeShow(window);
    }
    window.show();
    const int exitCode = QApplication::exec();
    window.saveSettings();
    return exitCode;
}
} // namespace

QString prepareDataFolder()
{
    QString folder = dataFolder();
    if (!QDir(folder).exists()) {
        QDir().mkpath(folder);
    }
    return folder;
}

void configureLog(const QString& folder)
{
    QsLogging::Logger& logger = QsLogging::Logger::instance();
    logger.setLevel(QsLogging::LogLevel::Info);
    logger.addDestination(
        QsLogging::makeFileDestination(logFileIn(folder), true, maximumLogBytes, oldLogsRequested));
    logger.addDestination(QsLogging::makeDebugOutputDestination());
}

QString joinArguments(int argc, const char* const* argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    return arguments.join(QLatin1Char(' '));
}

int runProgram(int argc, char** argv, const std::function<void(PelorinMainWindow&)>& beforeShow)
{
    configureLog(prepareDataFolder());

    // Nothing here is drawn by OpenGL; looking for it costs a third of the start and most of the memory.
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION")) {
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    }
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QtVersion::followScreenDensity();
    QApplication application(argc, argv);
    const QString arguments = joinArguments(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Tarnwick"));
    QCoreApplication::setApplicationName(QStringLiteral("VYR"));
    applyColours();
    return runWindow(application, arguments, beforeShow);
}
