// Any bytes as a release archive, as they are and with the checksums made right that would keep most of them
// from the decoder. Nothing is written outside the archive's folder, the bounds hold, and a failure leaves
// the folder as it was.

#include "FuzzInput.h"
#include "QsLog2_1_0/Logger.h"
#include "support/ArchiveChecksums.h"
#include "update/ArchiveExtractor.h"
#include "update/ArchiveMemberName.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

namespace {

constexpr const char* archiveName = "fuzz.7z";

QStringList entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

/// What was unpacked besides the archive: within the bounds, and nothing but files and folders.
void requireBounds(const QString& folder)
{
    qint64 bytes = 0;
    QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QFileInfo entry(entries.next());
        require(!entry.isSymLink() && (entry.isFile() || entry.isDir()));
        const auto place = safeMemberPath(QDir(folder).relativeFilePath(entry.filePath()));
        require(place.has_value());
        bytes += entry.isFile() && entry.fileName() != QLatin1String(archiveName) ? entry.size() : 0;
    }
    require(bytes <= ArchiveExtractor::maximumBytes);
}

void tryArchive(const QByteArray& archive)
{
    const QTemporaryDir outer;
    const QString folder = outer.filePath(QStringLiteral("in"));
    require(QDir().mkpath(folder));
    QFile file(folder + QLatin1Char('/') + QLatin1String(archiveName));
    require(file.open(QIODevice::WriteOnly) && file.write(archive) == archive.size());
    file.close();
    ArchiveExtractor extractor;
    extractor.setArchive(file.fileName());
    // Real bombs end at the bounds, which takes seconds: a thousand blocks tell enough.
    int blocks = 0;
    const bool done = extractor.extract([&blocks] { return ++blocks < 1000; });
    require(done == (extractor.status() == ArchiveStatus::Success));
    require(extractor.status() <= ArchiveStatus::Stopped);
    require(entriesOf(outer.path()) == QStringList{QStringLiteral("in")});
    const bool mayBeHalf = extractor.status() == ArchiveStatus::CannotWrite; // names that the disk refuses
    require(done || mayBeHalf || entriesOf(folder) == QStringList{QLatin1String(archiveName)});
    requireBounds(folder);
}

} // namespace

/// An archive may ask for four gigabytes to be decoded in. The system gives them, as hardly any is ever
/// touched; here they are refused, so that the way out of that is taken too.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QsLogging::Logger::instance().setLevel(QsLogging::LogLevel::Off);
    QByteArray archive = fuzzInput(data, size);
    tryArchive(archive);
    if (ArchiveChecksums::repair(archive)) {
        tryArchive(archive);
    }
    return 0;
}
