#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

/// A home with a folder for documents and one for releases, in place of the user's, while it lives.
class HomeFolder
{
public:
    explicit HomeFolder(bool withDocuments = true)
    {
        qputenv("HOME", QFile::encodeName(m_folder.path()));
        const QDir folder(m_folder.path());
        folder.mkdir(QStringLiteral("release"));
        if (withDocuments) {
            folder.mkdir(QStringLiteral("Documents"));
        }
    }
    ~HomeFolder() { qputenv("HOME", m_before); }
    Q_DISABLE_COPY_MOVE(HomeFolder)

    QString path() const { return m_folder.path(); }
    QString path(const QString& name) const { return m_folder.filePath(name); }
    /// Where the program keeps its log and the backups of calibrations; it makes the folder itself.
    QString dataFolder() const { return path(QStringLiteral("Documents/Tarnwick/VYR")); }

private:
    QTemporaryDir m_folder;
    const QByteArray m_before = qgetenv("HOME");
};
