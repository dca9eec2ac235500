#pragma once

#include "support/WatchedTest.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>

/// A folder of its own for the files of a log.
class LogFolderTest : public WatchedTest
{
protected:
    void begin()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        beginWatch();
    }
    void end()
    {
        m_folder.reset();
        endWatch();
    }
    QString folderPath() const { return m_folder->path(); }
    QString path(const QString& name = QStringLiteral("VYR_Log.txt")) const
    {
        return m_folder->filePath(name);
    }
    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};
