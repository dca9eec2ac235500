// Checking a firmware image of 5 MB of text: the program's own check against a widely used tool that reads
// the same file, in turn. The tool's start is measured by itself, on a file of a few lines. Prints figures,
// judges nothing.

#include "BenchTools.h"
#include "QsLog2_1_0/Logger.h"
#include "support/FirmwareImages.h"
#include "update/FirmwareImage.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>

namespace {

constexpr int textSize = 5'000'000;
constexpr int rounds = 25;

/// Milliseconds of each round.
using Times = std::vector<double>;

struct Images
{
    QString large; ///< path
    QString small;
    int largeLines = 0; ///< what a check of the large one must count
};

Images write(const QTemporaryDir& folder)
{
    FirmwareImages::Image image;
    image.role = FirmwareImages::Role::Loader;
    const QString small = FirmwareImages::write(folder.path(), image);
    image.role = FirmwareImages::Role::Application;
    const FirmwareImages::Image large = FirmwareImages::ofTextSize(image, textSize);
    return {FirmwareImages::write(folder.path(), large), small,
            FirmwareImages::lineCount(FirmwareImages::text(large))};
}

bool checkOurs(const Images& images)
{
    QFile file(images.large);
    FirmwareVersion version;
    return file.open(QIODevice::ReadOnly | QIODevice::Text) &&
           checkFirmwareFile(file, version) == images.largeLines && version == FirmwareVersion{1, 0, 0};
}

bool checkTheirs(const QString& tool, const QString& path)
{
    QProcess process;
    process.start(tool, {path});
    return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0 && process.readAllStandardOutput().contains("Data:");
}

void print(const Times& ours, const Times& theirs, const Times& start)
{
    const double own = Bench::median(ours);
    const double whole = Bench::median(theirs);
    const double reading = std::max(0.0, whole - Bench::median(start));
    const auto row = [own](const char* name, double baseline, const char* goal) {
        Bench::Table::printRow(QString::fromLatin1(name), own, baseline, "ms", goal);
    };
    row("check of an image of 5 MB, srec_info", whole, "ratio <= 0.2");
    row("check of an image of 5 MB, srec_info without its start", reading, "ratio <= 0.2");
    Bench::Table::printNote(
        QStringLiteral("%1 and %2 times as fast; medians of %3 rounds, our slowest %4 ms, its fastest %5 ms")
            .arg(whole / own, 0, 'f', 1)
            .arg(reading / own, 0, 'f', 1)
            .arg(rounds)
            .arg(*std::max_element(ours.begin(), ours.end()), 0, 'f', 1)
            .arg(*std::min_element(theirs.begin(), theirs.end()), 0, 'f', 1));
}

bool compare(const QString& tool, const Images& images)
{
    Times ours;
    Times theirs;
    Times start;
    bool allDone = true;
    const auto timed = [&allDone](Times& times, const std::function<bool()>& work) {
        times.push_back(Bench::timed([&] { allDone = work() && allDone; }).count() * 1e3);
    };
    const auto own = [&] { timed(ours, [&] { return checkOurs(images); }); };
    const auto other = [&] {
        timed(theirs, [&] { return checkTheirs(tool, images.large); });
        timed(start, [&] { return checkTheirs(tool, images.small); });
    };
    Bench::interleave(1, own, other); // to warm up
    ours.clear();
    theirs.clear();
    start.clear();
    Bench::interleave(rounds, own, other);
    print(ours, theirs, start);
    return allDone;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QsLogging::Logger::instance().setLevel(QsLogging::LogLevel::Error);
    Bench::Table::printHead();
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("srec_info"));
    if (tool.isEmpty()) {
        Bench::Table::printNote(
            QStringLiteral("srec_info of Debian's srecord is not there: nothing to compare with"));
        return 0;
    }
    const QTemporaryDir folder;
    const Images images = write(folder);
    if (images.large.isEmpty() || images.small.isEmpty()) {
        Bench::Table::printNote(QStringLiteral("the images could not be written"));
        return 1;
    }
    const bool allDone = compare(tool, images);
    Bench::Table::printNote(QStringLiteral("%1 lines in %2 bytes%3")
                                .arg(images.largeLines)
                                .arg(QFile(images.large).size())
                                .arg(allDone ? QString() : QStringLiteral("; NOT every check passed")));
    return allDone ? 0 : 1;
}
