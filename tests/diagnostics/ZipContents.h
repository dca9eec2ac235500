#pragma once

#include <QByteArray>
#include <QFile>
#include <QMap>
#include <QString>
#include <QStringList>

#include <archive.h>
#include <archive_entry.h>
#include <memory>

/// What is in a ZIP archive, read to its end with every checksum.
class ZipContents
{
public:
    struct Member
    {
        QByteArray content;
        qint64 modified = 0; ///< seconds since 1970
        qint64 owner = 0;
        qint64 group = 0;
        bool isPlainFile = false;
    };

    explicit ZipContents(const QString& path)
    {
        const std::unique_ptr<archive, decltype(&archive_read_free)> handle(archive_read_new(),
                                                                            &archive_read_free);
        archive_read_support_format_zip_seekable(handle.get()); // by the list at its end, as a desktop does
        m_isWhole = archive_read_open_filename(handle.get(), QFile::encodeName(path).constData(), 65536) ==
                    ARCHIVE_OK;
        while (m_isWhole && readMember(handle.get())) {
        }
    }

    /// The archive could be opened, and nothing in it is damaged.
    bool isWhole() const { return m_isWhole; }
    QStringList names() const { return m_names; } ///< in the archive's order
    Member member(const char* name) const { return m_members.value(QLatin1String(name)); }
    QByteArray content(const char* name) const { return member(name).content; }

private:
    bool readMember(archive* handle)
    {
        archive_entry* entry = nullptr;
        const int answer = archive_read_next_header(handle, &entry);
        if (answer != ARCHIVE_OK) {
            m_isWhole = answer == ARCHIVE_EOF;
            return false;
        }
        Member member;
        member.modified = archive_entry_mtime(entry);
        member.owner = archive_entry_uid(entry);
        member.group = archive_entry_gid(entry);
        member.isPlainFile = archive_entry_filetype(entry) == AE_IFREG;
        const QString name = QString::fromUtf8(archive_entry_pathname(entry));
        char bytes[65536];
        la_ssize_t count = 0;
        while ((count = archive_read_data(handle, bytes, sizeof bytes)) > 0) {
            member.content.append(bytes, int(count));
        }
        m_isWhole = count == 0;
        m_names.append(name);
        m_members.insert(name, member);
        return m_isWhole;
    }

    bool m_isWhole = false;
    QStringList m_names;
    QMap<QString, Member> m_members;
};
