#pragma once

#include "support/ReleaseArchive.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>

/// A folder with an archive in it, inside another one that nothing may touch.
class ArchiveFolder
{
public:
    ArchiveFolder() { QDir().mkpath(path()); }

    QString path() const { return m_outer.filePath(QStringLiteral("releases")); }
    QString path(const QString& name) const { return path() + QLatin1Char('/') + name; }
    QString outerPath() const { return m_outer.path(); }
    QString archive() const { return path(QStringLiteral("release.7z")); }

    bool put(const QString& name, const QByteArray& content) const
    {
        QFile file(path(name));
        return QDir().mkpath(QFileInfo(path(name)).absolutePath()) && file.open(QIODevice::WriteOnly) &&
               file.write(content) == content.size();
    }
    bool putArchive(const QByteArray& content) const
    {
        return !content.isEmpty() && put(QStringLiteral("release.7z"), content);
    }

    using Files = QMap<QString, QByteArray>;

    /// Everything below the outer folder but the archive, hidden files too: paths relative to the archive's
    /// folder, with contents. Folders end in "/"; a link has its target for content.
    Files files() const
    {
        Files found;
        QDirIterator entries(m_outer.path(),
                             QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        const QDir folder(path());
        while (entries.hasNext()) {
            const QFileInfo entry(entries.next());
            const QString name = folder.relativeFilePath(entry.absoluteFilePath());
            if (entry.isSymLink()) {
                found.insert(name, "-> " + entry.symLinkTarget().toUtf8());
            } else if (entry.isDir() && entry.absoluteFilePath() != path()) {
                found.insert(name + QLatin1Char('/'), {});
            } else if (entry.isFile() && entry.absoluteFilePath() != archive()) {
                found.insert(name, contentOf(entry.absoluteFilePath()));
            }
        }
        return found;
    }

    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("(cannot be read)");
    }
    static Files asFiles(const QList<ReleaseArchive::Member>& members)
    {
        Files files;
        for (const ReleaseArchive::Member& member : members) {
            files.insert(member.name, member.content);
        }
        return files;
    }

private:
    QTemporaryDir m_outer;
};
