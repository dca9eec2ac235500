#pragma once

#include "update/ArchiveStatus.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>

struct archive;
struct archive_entry;

/// Reads a 7z archive member by member and block by block: the one place that knows the decoding library.
/// Strict where the library is lenient: what it merely warns of is a failure. After the first failure nothing
/// more is read, and status() and failureText() tell why.
class ArchiveReader
{
public:
    struct Member
    {
        QString name;            ///< as stored; empty when it has none or none that can be read
        qint64 declaredSize = 0; ///< bytes; -1 when the archive does not say
        bool isFolder = false;
        bool isFile = false; ///< neither set: a link, a device or something stranger
    };
    struct Block
    {
        const char* data = nullptr; ///< the reader's own, until its next call
        qint64 size = 0;
        qint64 offset = 0; ///< from the member's start
    };
    enum class Result { Ok, End, Failed };

    ArchiveReader();
    ~ArchiveReader();
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;

    bool open(const QString& path);
    /// End: there are no more members.
    Result nextMember(Member& member);
    /// The next bytes of the member that nextMember() gave last. End: it is complete, and its checksum is
    /// right.
    Result nextBlock(Block& block);

    ArchiveStatus::Code status() const { return m_status; }
    /// For the log, in English; may hold what the archive says.
    QString failureText() const { return m_failureText; }

private:
    struct Close
    {
        void operator()(archive* handle) const;
    };
    struct Source
    {
        QFile file;
        QByteArray buffer;
        bool failed = false;
    };

    bool fail(ArchiveStatus::Code status, const QString& text);
    Result failByLibrary();
    void prepareHandle();

    Source m_source;
    std::unique_ptr<archive, Close> m_handle;
    archive_entry* m_entry = nullptr; ///< the library's own
    ArchiveStatus::Code m_status = ArchiveStatus::Success;
    QString m_failureText;
};
