// Unpacking a release of three images of 5 MB: the program's own way against the packer's program on the same
// archive, in turn, each into a folder of its own on the same disk. And how long the window's event loop is
// held meanwhile.

#include "BenchTools.h"
#include "LoopWatch.h"
#include "QsLog2_1_0/Logger.h"
#include "support/ReleaseArchive.h"
#include "update/ArchiveExtractor.h"
#include "update/ArchiveStep.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QWidget>

#include <cstdio>
#include <optional>

namespace {

constexpr int imageSize = 5'000'000;
constexpr int rounds = 15;

struct Folders
{
    QTemporaryDir ours;
    QTemporaryDir theirs;

    QString archive(const QTemporaryDir& folder) const
    {
        return folder.filePath(QStringLiteral("release.7z"));
    }
};

bool unpackByPacker(const Folders& folders)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(ReleaseArchive::packer(),
                  {QStringLiteral("x"), QStringLiteral("-y"), QStringLiteral("-bd"),
                   QStringLiteral("-o") + folders.theirs.path(), folders.archive(folders.theirs)});
    return process.waitForFinished() && process.exitCode() == 0;
}

bool hasImages(const QTemporaryDir& folder, const QList<ReleaseArchive::Member>& images)
{
    for (const ReleaseArchive::Member& image : images) {
        QFile file(folder.filePath(image.name));
        if (!file.open(QIODevice::ReadOnly) || file.readAll() != image.content) {
            return false;
        }
    }
    return true;
}

/// The step of an update as it is, in a window; the longest time that the event loop was held.
std::optional<double> longestHoldMs(const Folders& folders)
{
    QWidget window;
    window.show();
    const Bench::LoopWatch watch;
    Bench::pause(std::chrono::milliseconds(50));
    ArchiveExtractor extractor;
    if (!ArchiveStep::run(extractor, folders.archive(folders.ours), &window)) {
        return std::nullopt;
    }
    Bench::pause(std::chrono::milliseconds(1)); // lets in whoever still knocks
    return watch.longestHold();
}

bool compare(const char* name, const QStringList& switches, const QList<ReleaseArchive::Member>& images)
{
    const Folders folders;
    if (!ReleaseArchive::write(folders.archive(folders.ours), images, switches) ||
        !QFile::copy(folders.archive(folders.ours), folders.archive(folders.theirs))) {
        return false;
    }
    bool allDone = true;
    std::vector<double> ours;
    std::vector<double> theirs;
    const auto unpackOurs = [&] {
        ArchiveExtractor extractor;
        extractor.setArchive(folders.archive(folders.ours));
        ours.push_back(Bench::timed([&] { allDone = extractor.extract() && allDone; }).count() * 1e3);
    };
    const auto unpackTheirs = [&] {
        theirs.push_back(Bench::timed([&] { allDone = unpackByPacker(folders) && allDone; }).count() * 1e3);
    };
    unpackOurs(); // one of each to warm up
    unpackTheirs();
    ours.clear();
    theirs.clear();
    Bench::interleave(rounds, unpackOurs, unpackTheirs);
    const auto hold = longestHoldMs(folders);
    allDone = allDone && hold && hasImages(folders.ours, images) && hasImages(folders.theirs, images);
    const QString label = QLatin1String(name);
    Bench::Table::printRow(QStringLiteral("three images of 5 MB, ") + label + QStringLiteral(", the packer"),
                           Bench::median(ours), Bench::median(theirs), "ms", "ratio <= 1.3");
    Bench::Table::printRow(QStringLiteral("longest hold of the event loop, ") + label, hold.value_or(0.0),
                           0.0, "ms", "<= 100 ms");
    return allDone;
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QsLogging::Logger::instance().setLevel(QsLogging::LogLevel::Fatal);
    if (ReleaseArchive::packer().isEmpty()) {
        std::puts("# Debian's 7zip is not installed; nothing to compare with");
        return 1;
    }
    Bench::Table::printHead();
    const auto images = ReleaseArchive::threeImages(imageSize);
    bool allDone = true;
    const auto packings = ReleaseArchive::packings();
    for (const ReleaseArchive::Packing& packing : packings) {
        const QString name = QLatin1String(packing.name);
        if (name == QLatin1String("LZMA") || name == QLatin1String("LZMA2") ||
            name == QLatin1String("PPMd") || name == QLatin1String("LZMA2, not solid") ||
            name == QLatin1String("BCJ2 and LZMA") || name == QLatin1String("copied")) {
            allDone = compare(packing.name, packing.switches, images) && allDone;
        }
    }
    Bench::Table::printNote(allDone ? QStringLiteral("both gave the images that were packed")
                                    : QStringLiteral("NOT all was unpacked as it was packed"));
    return allDone ? 0 : 1;
}
