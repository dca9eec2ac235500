#pragma once

#include <QIODevice>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

class QFile;

namespace QsLogging {

/// Decides when a log file is put aside, and how. A FileDestination calls it under the logger's mutex.
class RotationStrategy
{
public:
    virtual ~RotationStrategy() = default;

    /// Learns the name and the present size of a file just opened.
    virtual void attachFile(const QFile& file) = 0;
    /// Told every message before it is written.
    virtual void countMessage(const QString& message) = 0;
    virtual bool shouldRotate() = 0;
    /// Puts the log file aside; it is closed at that time and opened again afterwards.
    virtual void rotate() = 0;
    /// What the destination adds to write-only text mode when it opens the file.
    virtual QIODevice::OpenMode openModeFlag() const = 0;

protected:
    RotationStrategy() = default;

private:
    Q_DISABLE_COPY_MOVE(RotationStrategy)
};

using RotationStrategyPtr = QSharedPointer<RotationStrategy>;

/// No rotation: every start of the program begins the file anew.
class NullRotationStrategy : public RotationStrategy
{
public:
    void attachFile(const QFile& /*file*/) override {}
    void countMessage(const QString& /*message*/) override {}
    bool shouldRotate() override { return false; }
    void rotate() override {}
    QIODevice::OpenMode openModeFlag() const override { return QIODevice::Truncate; }
};

/// Rotation by size: the log continues an existing file and, once it has grown too large, becomes backup
/// ".1", the former ".1" becomes ".2" and so on.
class SizeRotationStrategy : public RotationStrategy
{
public:
    void attachFile(const QFile& file) override;
    /// Adds the bytes of the message in UTF-8, without the line end.
    void countMessage(const QString& message) override;
    /// True once more than the maximum size is counted; exactly that size is still allowed.
    bool shouldRotate() override;
    /// Troubles are told on standard error; one that stays from attempt to attempt is told once.
    void rotate() override;
    QIODevice::OpenMode openModeFlag() const override { return QIODevice::Append; }

    void setMaximumSize(qint64 bytes);
    /// How many backups are kept, 0 for none; more than 9 become 10, and less than 0 is 0.
    void setBackupCount(int count);
    int backupCount() const { return m_backupCount; }

protected:
    /// File access, replaceable. Each is true on success (fileExists: if something is there).
    virtual bool removeFile(const QString& path);
    virtual bool fileExists(const QString& path);
    virtual bool renameFile(const QString& from, const QString& to);

private:
    QString backupName(int index) const;
    int lastBackupToShift();
    void shiftBackups();
    void complain(const QString& text);

    QString m_fileName;
    qint64 m_currentSize = 0; ///< bytes
    qint64 m_maximumSize = 0; ///< bytes
    qint32 m_backupCount = 0;
    QStringList m_complaints;       ///< told since the last rotation that went well
    bool m_rotationWentWell = true; ///< of the rotation under way
};

} // namespace QsLogging
