// The time from the start of the process to the end of the window's first paint: the program, against an
// empty window of the same size. Every run is a fresh process. Prints figures, judges nothing.

#include "BenchTools.h"
#include "BenchWindow.h"
#include "FirstPaint.h"

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>

#include <vector>

namespace {
constexpr int rounds = 15;
constexpr int startLimitMs = 20'000;

/// Milliseconds until painted, and until the window was about to be shown.
struct Figures
{
    std::vector<double> painted;
    std::vector<double> ready;

    void run(const QString& program)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        const auto now = Bench::Clock::now().time_since_epoch();
        const auto start = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
        environment.insert(QLatin1String(Bench::startTimeVariable), QString::number(start));
        process.setProcessEnvironment(environment);
        process.setStandardErrorFile(QProcess::nullDevice());
        process.start(program, QStringList());
        process.waitForFinished(startLimitMs);
        const auto words = process.readAllStandardOutput().trimmed().split(' ');
        if (words.size() != 2) {
            Bench::Table::printNote(QStringLiteral("no figure from ") + program);
            return;
        }
        painted.push_back(words.at(0).toDouble());
        ready.push_back(words.at(1).toDouble());
    }
};
} // namespace

int main(int argc, char** argv)
{
    const Bench::Home home;
    const QCoreApplication application(argc, argv);
    const QString program = QStringLiteral(VYR_START_PROGRAM_PATH);
    const QString bare = QStringLiteral(VYR_START_BARE_PATH);
    Figures{}.run(program); // once to warm up
    Figures{}.run(bare);

    Figures ours;
    Figures baseline;
    Bench::interleave(
        rounds, [&] { ours.run(program); }, [&] { baseline.run(bare); });
    Bench::Table::printHead();
    Bench::Table::printNote(QStringLiteral("platform: ") + qEnvironmentVariable("QT_QPA_PLATFORM"));
    Bench::Table::printRow(QStringLiteral("start to first paint, empty window of the same size"),
                           Bench::median(ours.painted), Bench::median(baseline.painted), "ms",
                           "<= 1.5 (ratio)");
    Bench::Table::printRow(QStringLiteral("  of which before the window is shown"), Bench::median(ours.ready),
                           Bench::median(baseline.ready), "ms", "-");
    return ours.painted.size() == rounds && baseline.painted.size() == rounds ? 0 : 1;
}
