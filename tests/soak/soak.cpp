// The real program at a simulated illuminator through a day of device time, with the waiting left out:
// whether memory, handles, objects, log and settings stay as they are, and whether the window always shows
// what the device is in. Fails when not.

#include "Day.h"
#include "FastClock.h"
#include "app/Startup.h"
#include "benchmark/BenchWindow.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"
#include "support/FirmwareImages.h"
#include "support/ReleaseArchive.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <unistd.h>

namespace {
using FirmwareImages::Role;

constexpr int programSize = 1500; // bytes; the time that a larger one takes is spent waiting for the device

struct Option
{
    const char* name;
    const char* meaning;
    const char* value;
};

constexpr Option options[] = {
    {"hours", "device time, the warm-up included", "24"},
    {"warm-up", "minutes of it before the first sample", "60"},
    {"every", "minutes of it between two samples", "60"},
    {"seed", "of the order of tasks", "1"},
    {"table", "file for the samples as comma-separated values", ""},
    {"only", "the one task that is repeated, without the others", ""},
    {"leak-bytes", "lose this much with every sample", "0"},
    {"leak-widgets", "lose as many with every sample", "0"},
    {"leak-handles", "lose as many with every sample", "0"},
};

bool isTask(const QString& name)
{
    const QVector<Soak::Task> tasks = Soak::operatorTasks() + Soak::serviceTasks() + Soak::troubles();
    return std::any_of(tasks.begin(), tasks.end(),
                       [&name](const Soak::Task& task) { return name == QLatin1String(task.name); });
}

std::optional<Soak::Plan> planOf(const QStringList& arguments)
{
    QCommandLineParser parser;
    for (const Option& option : options) {
        const QString name = QLatin1String(option.name);
        parser.addOption({name, QLatin1String(option.meaning), name, QLatin1String(option.value)});
    }
    const bool isParsed = parser.parse(arguments) && parser.positionalArguments().isEmpty();
    const QString only = parser.value(QStringLiteral("only"));
    if (!isParsed || (!only.isEmpty() && !isTask(only))) {
        std::fprintf(stderr, "%s\n", qPrintable(parser.errorText()));
        for (const Option& option : options) {
            std::fprintf(stderr, "  --%s VALUE  %s [%s]\n", option.name, option.meaning, option.value);
        }
        return std::nullopt;
    }
    const auto number = [&parser](const char* name) { return parser.value(QLatin1String(name)).toDouble(); };
    const auto whole = [&parser](const char* name) { return parser.value(QLatin1String(name)).toInt(); };
    Soak::Plan plan;
    plan.hours = number("hours");
    plan.warmUpMinutes = number("warm-up");
    plan.minutesPerSample = number("every");
    plan.seed = parser.value(QStringLiteral("seed")).toUInt();
    plan.tableFile = parser.value(QStringLiteral("table"));
    plan.only = only;
    plan.leakedBytes = whole("leak-bytes");
    plan.leakedWidgets = whole("leak-widgets");
    plan.leakedHandles = whole("leak-handles");
    return plan;
}

/// A release of this version in a folder of its own, as it is unpacked beside its archive; an empty path when
/// it cannot be packed.
QString writeRelease(const QString& folder, int major)
{
    QList<ReleaseArchive::Member> members;
    for (const Role role : {Role::Loader, Role::LoaderUpdater, Role::Application}) {
        FirmwareImages::Image image;
        image.role = role;
        image.major = static_cast<quint16>(major);
        image.dataSize = programSize;
        members.append({FirmwareImages::fileName(role), FirmwareImages::text(image)});
    }
    const QString ownFolder = folder + QStringLiteral("/release%1").arg(major);
    QDir().mkpath(ownFolder);
    QString path = ownFolder + QStringLiteral("/VYR.7z");
    return ReleaseArchive::write(path, members) ? path : QString();
}

/// Everything that a day needs, in the order in which it goes.
struct Stage
{
    Stage(const Soak::Plan& plan, PelorinMainWindow& window, const QStringList& releases,
          const QString& calibration)
        : chance(plan.seed),
          person(window, chance), room{window, desk, person, chance, releases, calibration, {}},
          day(plan, room)
    {
    }

    Soak::Desk desk;
    Soak::Chance chance;
    Soak::Person person;
    Soak::Room room;
    Soak::Day day;
};

int soak(const Soak::Plan& plan)
{
    const QTemporaryDir folder;
    const QStringList releases{writeRelease(folder.path(), 3), writeRelease(folder.path(), 4)};
    if (releases.contains(QString())) {
        std::fprintf(stderr, "The releases could not be packed.\n");
        return 1;
    }
    // Where the program tells its whole log a second time; a sanitizer goes past it.
    stderr = std::fopen("/dev/null", "w");
    Soak::FastClock::start(); // not before, as the packer takes its time
    std::unique_ptr<Stage> stage;
    QByteArrayList words{"soak", "-diag"};
    char* arguments[] = {words[0].data(), words[1].data(), nullptr};
    QStringList findings;
    const int exitCode = runProgram(2, arguments, [&](PelorinMainWindow& window) {
        Soak::FastClock::setAnswerExpected([&window] { return window.device()->isWaiting(); });
        stage = std::make_unique<Stage>(plan, window, releases,
                                        folder.filePath(QStringLiteral("Calibration.json")));
        // With the event loop the window goes, and what knows it must not stay.
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, &window, [&stage, &findings] {
            findings = stage->day.findings();
            Soak::FastClock::setAnswerExpected({});
            stage.reset();
        });
        stage->day.start();
    });
    for (const QString& finding : std::as_const(findings)) {
        std::printf("FAILED: %s\n", qPrintable(finding));
    }
    std::printf("%s\n", findings.isEmpty() && exitCode == 0 ? "Nothing has grown, nothing was shown wrong."
                                                            : "The soak has failed.");
    return findings.isEmpty() ? exitCode : 1;
}

/// Small blocks that are freed are kept aside for each thread and count as in use until they are given out
/// again; the allocator learns that it must not only from the environment that it starts in.
void restartWithoutSpareBlocks(char** argv)
{
    constexpr char name[] = "GLIBC_TUNABLES";
    if (!qEnvironmentVariableIsSet(name)) {
        qputenv(name, "glibc.malloc.tcache_count=0");
        ::execv("/proc/self/exe", argv); // goes on here when it fails
    }
}
} // namespace

int main(int argc, char** argv)
{
    restartWithoutSpareBlocks(argv);
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    const std::optional<Soak::Plan> plan = planOf(arguments);
    if (!plan) {
        return 2;
    }
    qputenv("QT_NO_GLIB", "1");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const Bench::Home home;
    Bench::listPort({});
    return soak(*plan);
}
