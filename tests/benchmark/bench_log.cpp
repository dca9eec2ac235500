// What a log statement costs: one that is filtered, against a loop that does nothing, and one that is
// written, against a widely used logging library doing the same work. Prints figures, judges nothing.

#include "BenchTools.h"
#include "QsLog2_1_0/QsLog.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>
#include <vector>

namespace {

constexpr int rounds = 41;
constexpr int filteredPerRound = 20'000'000;
constexpr int linesPerRound = 30'000;
constexpr int maximumSize = 2'000'000; // bytes; crossed about once a round, so that rotation is measured too
constexpr int backups = 10;

/// The compiler must assume that this changes anything in memory: it can neither drop the loop around it nor
/// read the log's level once for all of its turns.
inline void keepTheLoop()
{
    asm volatile("" ::: "memory");
}

double nanosecondsPerTurn(int turns, const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / turns;
}

/// Measures two pieces of work in turn, so that whatever else the machine does befalls both.
struct Comparison
{
    std::vector<double> baseline; ///< nanoseconds per turn, one entry a round
    std::vector<double> ours;

    void run(int turns, const std::function<void()>& baselineWork, const std::function<void()>& ourWork)
    {
        baselineWork(); // a round of each to warm up
        ourWork();
        for (int round = 0; round < rounds; ++round) {
            baseline.push_back(nanosecondsPerTurn(turns, baselineWork));
            ours.push_back(nanosecondsPerTurn(turns, ourWork));
        }
    }

    double medianOfRatios() const
    {
        std::vector<double> ratios;
        for (std::size_t i = 0; i < ours.size(); ++i) {
            ratios.push_back(ours[i] / baseline[i]);
        }
        return Bench::median(ratios);
    }
};

void compareFiltered()
{
    QsLogging::Logger::instance().setLevel(QsLogging::LogLevel::Info);
    Comparison comparison;
    comparison.run(
        filteredPerRound,
        [] {
            for (int i = 0; i < filteredPerRound; ++i) {
                keepTheLoop();
            }
        },
        [] {
            for (int i = 0; i < filteredPerRound; ++i) {
                keepTheLoop();
                QS_TRACE() << "To device ->" << i;
            }
        });
    const double empty = Bench::median(comparison.baseline);
    const double filtered = Bench::median(comparison.ours);
    Bench::Table::printRow(QStringLiteral("filtered log statement, turn of an empty loop"), filtered, empty,
                           "ns", "at most 2 ns more");
    Bench::Table::printNote(
        QStringLiteral("more per filtered statement: %1 ns").arg(filtered - empty, 0, 'f', 3));
}

/// A file of its own without rotation would be the easier case; both rotate here.
std::shared_ptr<spdlog::logger> makeBaseline(const QTemporaryDir& folder)
{
    auto logger = spdlog::rotating_logger_mt(
        "baseline", folder.filePath(QStringLiteral("baseline.txt")).toStdString(), maximumSize, backups);
    logger->set_pattern("%-5l %Y-%m-%dT%H:%M:%S.%e %v");
    logger->flush_on(spdlog::level::trace);
    return logger;
}

/// Proof that work was done: the bytes of a log and its backups.
qint64 bytesIn(const QTemporaryDir& folder)
{
    qint64 sum = 0;
    const auto entries = QDir(folder.path()).entryInfoList(QDir::Files);
    for (const QFileInfo& entry : entries) {
        sum += entry.size();
    }
    return sum;
}

void compareWritten()
{
    const QTemporaryDir baselineFolder;
    const QTemporaryDir ourFolder;
    const auto baseline = makeBaseline(baselineFolder);
    const auto destination = QsLogging::makeFileDestination(ourFolder.filePath(QStringLiteral("ours.txt")),
                                                            true, maximumSize, backups);
    QsLogging::Logger::instance().addDestination(destination);
    const QString port = QStringLiteral("ttyACM0");
    const std::string basePort = "ttyACM0";

    Comparison comparison;
    comparison.run(
        linesPerRound,
        [&] {
            for (int i = 0; i < linesPerRound; ++i) {
                baseline->info("Product match on port \"{}\" attempt {}", basePort, i);
            }
        },
        [&] {
            for (int i = 0; i < linesPerRound; ++i) {
                QS_INFO() << "Product match on port" << port << "attempt" << i;
            }
        });
    QsLogging::Logger::instance().removeDestination(destination);
    Bench::Table::printRow(QStringLiteral("written log line, the same line by spdlog"),
                           Bench::median(comparison.ours), Bench::median(comparison.baseline), "ns",
                           "<= 1 (ratio)");
    Bench::Table::printNote(
        QStringLiteral("median of the ratios of %1 rounds of %2 lines: %3; %4 and %5 bytes on disk")
            .arg(rounds)
            .arg(linesPerRound)
            .arg(comparison.medianOfRatios(), 0, 'f', 3)
            .arg(bytesIn(ourFolder))
            .arg(bytesIn(baselineFolder)));
}

} // namespace

int main()
{
    Bench::Table::printHead();
    compareFiltered();
    compareWritten();
    return 0;
}
