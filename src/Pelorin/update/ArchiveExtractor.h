#pragma once

#include "update/ArchiveStatus.h"

#include <QFileInfo>
#include <QString>

#include <functional>

/// Unpacks a 7z archive into the folder that holds it, and nowhere else. All members are read, checked and
/// kept in a hidden folder beside the archive before the first of them takes its place, so that a damaged
/// archive changes nothing. Files that are there already are replaced; folders are created; a later member of
/// the same name wins.
class ArchiveExtractor
{
public:
    static constexpr int maximumMembers = 64; ///< files and folders
    static constexpr qint64 maximumBytes =
        256LL * 1024 * 1024; ///< of the archive, and of all members together

    /// Called between two steps of the work, each of which takes some milliseconds at most. False gives up.
    using Pause = std::function<bool()>;

    void setArchive(const QString& path);
    /// False when it fails: status() is the reason, and a line at Error level tells more. Takes as long as
    /// the archive is large; @p pause is for whoever has to do something else meanwhile.
    bool extract(const Pause& pause = {});
    /// What the last extract() came to; 0 before.
    quint16 status() const { return m_status; }

private:
    QFileInfo m_archive;
    ArchiveStatus::Code m_status = ArchiveStatus::Success;
};
