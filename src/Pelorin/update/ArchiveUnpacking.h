#pragma once

#include "update/ArchiveExtractor.h"
#include "update/ArchiveReader.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QString>
#include <QTemporaryDir>

#include <optional>
#include <vector>

/// One run of the ArchiveExtractor: reads everything, looks at every place, then puts it all there.
class ArchiveUnpacking
{
public:
    ArchiveUnpacking(const QFileInfo& archive, const ArchiveExtractor::Pause& pause);

    /// Success, or why not.
    ArchiveStatus::Code run();
    QString failureText() const { return m_failureText; }

private:
    struct Staged
    {
        QString stagedPath; ///< empty for a folder
        QString place;      ///< relative to the archive's folder
    };

    bool readMembers();
    bool readMember(const ArchiveReader::Member& member);
    bool readFile(const ArchiveReader::Member& member, const QString& place);
    bool copyContent(const ArchiveReader::Member& member, QFile& file, qint64 room);
    bool arePlacesFree();
    bool isWayFree(const Staged& member);
    bool isPlaceFree(const Staged& member);
    bool putInPlace();
    bool fail(ArchiveStatus::Code status, const QString& text);
    bool failByReader();
    bool goesOn();

    QFileInfo m_archive;
    QDir m_folder;
    const ArchiveExtractor::Pause& m_pause;
    ArchiveReader m_reader;
    std::optional<QTemporaryDir>
        m_staging; ///< beside the archive, so that a file goes to its place in one step
    std::vector<Staged> m_members;
    QSet<QString> m_files; ///< their places
    qint64 m_bytes = 0;    ///< of all members that were read so far
    ArchiveStatus::Code m_status = ArchiveStatus::Success;
    QString m_failureText;
};
