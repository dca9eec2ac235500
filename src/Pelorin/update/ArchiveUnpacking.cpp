#include "update/ArchiveUnpacking.h"

#include "update/ArchiveMemberName.h"

#include <QFile>

#include <filesystem>
#include <system_error>

namespace {

std::filesystem::path nativePath(const QString& path)
{
#ifdef Q_OS_WIN
    return path.toStdWString();
#else
    return QFile::encodeName(path).toStdString(); // the bytes under which all others of the program find it
#endif
}

/// Replaces what is there in one step. QFile would remove first, and leave nothing behind when it then fails.
std::error_code replaceByRenaming(const QString& from, const QString& to)
{
    std::error_code error;
    std::filesystem::rename(nativePath(from), nativePath(to), error);
    return error;
}

/// Links to nowhere count as being there.
bool isThere(const QFileInfo& place)
{
    return place.exists() || place.isSymLink();
}

} // namespace

ArchiveUnpacking::ArchiveUnpacking(const QFileInfo& archive, const ArchiveExtractor::Pause& pause)
    : m_archive(archive), m_folder(archive.absolutePath()), m_pause(pause)
{
}

ArchiveStatus::Code ArchiveUnpacking::run()
{
    if (m_archive.size() > ArchiveExtractor::maximumBytes) {
        fail(ArchiveStatus::TooLarge, QStringLiteral("the archive itself is too large"));
    } else if (!m_reader.open(m_archive.absoluteFilePath())) {
        failByReader();
    } else if (readMembers() && arePlacesFree()) {
        putInPlace();
    }
    return m_status;
}

bool ArchiveUnpacking::readMembers()
{
    m_staging.emplace(m_folder.filePath(QStringLiteral(".vyr-unpacking-XXXXXX")));
    if (!m_staging->isValid()) {
        return fail(ArchiveStatus::CannotWrite, m_staging->errorString());
    }
    ArchiveReader::Member member;
    ArchiveReader::Result result = m_reader.nextMember(member);
    for (int count = 1; result == ArchiveReader::Result::Ok; ++count) {
        if (count > ArchiveExtractor::maximumMembers) {
            return fail(ArchiveStatus::TooManyMembers, QStringLiteral("too many members"));
        }
        if (!readMember(member)) {
            return false;
        }
        result = m_reader.nextMember(member);
    }
    return result == ArchiveReader::Result::End || failByReader();
}

bool ArchiveUnpacking::readMember(const ArchiveReader::Member& member)
{
    const std::optional<QString> place = safeMemberPath(member.name);
    const bool isNameless = place && place->isEmpty() && !member.isFolder;
    if (!place || isNameless) {
        return fail(ArchiveStatus::BadName,
                    QStringLiteral("member with a name that is not taken: ") + member.name);
    }
    if (member.isFolder) {
        m_members.push_back({QString(), *place});
        return true;
    }
    if (!member.isFile) {
        return fail(ArchiveStatus::NotAFile, QStringLiteral("member that is no file: ") + member.name);
    }
    return readFile(member, *place);
}

bool ArchiveUnpacking::readFile(const ArchiveReader::Member& member, const QString& place)
{
    // What the archive says of sizes saves unpacking a hopeless one; what counts is what really comes.
    const qint64 room = ArchiveExtractor::maximumBytes - m_bytes;
    if (member.declaredSize > room) {
        return fail(ArchiveStatus::TooLarge, QStringLiteral("the members are too large"));
    }
    QFile file(m_staging->filePath(QString::number(m_members.size())));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        return fail(ArchiveStatus::CannotWrite, file.errorString());
    }
    if (!copyContent(member, file, room)) {
        return false;
    }
    m_members.push_back({file.fileName(), place});
    m_files.insert(place);
    return goesOn();
}

bool ArchiveUnpacking::copyContent(const ArchiveReader::Member& member, QFile& file, qint64 room)
{
    qint64 size = 0;
    ArchiveReader::Block block;
    ArchiveReader::Result result = m_reader.nextBlock(block);
    for (; result == ArchiveReader::Result::Ok; result = m_reader.nextBlock(block)) {
        if (block.offset != size) {
            return fail(ArchiveStatus::Damaged, QStringLiteral("gap in a member: ") + member.name);
        }
        size += block.size;
        if (size > room) {
            return fail(ArchiveStatus::TooLarge, QStringLiteral("the members are too large"));
        }
        if (file.write(block.data, block.size) != block.size) {
            return fail(ArchiveStatus::CannotWrite, file.errorString());
        }
        if (!goesOn()) {
            return false;
        }
    }
    if (result == ArchiveReader::Result::Failed) {
        return failByReader();
    }
    if (member.declaredSize >= 0 && size != member.declaredSize) {
        return fail(ArchiveStatus::Damaged,
                    QStringLiteral("member of another size than told: ") + member.name);
    }
    m_bytes += size;
    return true;
}

bool ArchiveUnpacking::arePlacesFree()
{
    for (const Staged& member : m_members) {
        if (!isWayFree(member) || !isPlaceFree(member)) {
            return fail(ArchiveStatus::NameTaken,
                        QStringLiteral("member whose place is taken: ") + member.place);
        }
    }
    return true;
}

/// A folder on the way that is a link would lead somewhere else.
bool ArchiveUnpacking::isWayFree(const Staged& member)
{
    const auto end =
        member.stagedPath.isEmpty() ? member.place.size() : member.place.lastIndexOf(QLatin1Char('/'));
    for (QString::size_type slash = 0; slash >= 0 && slash < end;) {
        slash = member.place.indexOf(QLatin1Char('/'), slash + 1);
        const QString way = member.place.left(slash);
        const QFileInfo there(m_folder.filePath(way));
        if (m_files.contains(way) || (isThere(there) && (there.isSymLink() || !there.isDir()))) {
            return false;
        }
    }
    return true;
}

bool ArchiveUnpacking::isPlaceFree(const Staged& member)
{
    if (member.stagedPath.isEmpty()) {
        return true; // isWayFree() went all the way
    }
    const QFileInfo there(m_folder.filePath(member.place));
    if (!isThere(there)) {
        return true;
    }
    // A link gives way like a file; what it points to stays. The archive must not unpack onto itself.
    const bool isReplaceable = there.isSymLink() || there.isFile();
    const bool isArchive = there.absoluteFilePath() == m_archive.absoluteFilePath() || there == m_archive;
    return isReplaceable && !isArchive;
}

bool ArchiveUnpacking::putInPlace()
{
    for (const Staged& member : m_members) {
        const bool isFolder = member.stagedPath.isEmpty();
        const QString place = m_folder.filePath(member.place);
        if (!m_folder.mkpath(isFolder ? place : QFileInfo(place).absolutePath())) {
            return fail(ArchiveStatus::CannotWrite, QStringLiteral("cannot create the folder of ") + place);
        }
        if (isFolder) {
            continue;
        }
        if (const std::error_code error = replaceByRenaming(member.stagedPath, place)) {
            return fail(ArchiveStatus::CannotWrite,
                        QString::fromLocal8Bit(error.message().c_str()) + QStringLiteral(": ") + place);
        }
    }
    return true;
}

bool ArchiveUnpacking::fail(ArchiveStatus::Code status, const QString& text)
{
    m_status = status;
    m_failureText = text;
    return false;
}

bool ArchiveUnpacking::failByReader()
{
    return fail(m_reader.status(), m_reader.failureText());
}

bool ArchiveUnpacking::goesOn()
{
    return !m_pause || m_pause() || fail(ArchiveStatus::Stopped, QStringLiteral("given up"));
}
