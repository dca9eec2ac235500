#include "QsLog2_1_0/RotationStrategy.h"

#include "QsLog2_1_0/Ascii.h"
#include "QsLog2_1_0/FailureReport.h"

#include <QFile>

#include <algorithm>

namespace QsLogging {
namespace {

constexpr int maximumBackupCount = 10;

/// Bytes of `text` in UTF-8. Log lines are ASCII but for the odd unit or port name, and then there is
/// nothing to convert.
qint64 utf8Length(const QString& text)
{
    return isAscii(text) ? text.size() : text.toUtf8().size();
}

} // namespace

void SizeRotationStrategy::attachFile(const QFile& file)
{
    m_fileName = file.fileName();
    m_currentSize = file.size();
}

void SizeRotationStrategy::countMessage(const QString& message)
{
    m_currentSize += utf8Length(message);
}

bool SizeRotationStrategy::shouldRotate()
{
    return m_currentSize > m_maximumSize;
}

void SizeRotationStrategy::setMaximumSize(qint64 bytes)
{
    m_maximumSize = bytes;
}

void SizeRotationStrategy::setBackupCount(int count)
{
    m_backupCount = std::clamp(count, 0, maximumBackupCount);
}

void SizeRotationStrategy::rotate()
{
    m_rotationWentWell = true;
    if (m_backupCount == 0) {
        if (!removeFile(m_fileName)) {
            complain(QLatin1String("QsLog: backup delete failed ") + m_fileName);
        }
    } else {
        shiftBackups();
        const QString newest = backupName(1);
        if (fileExists(newest)) {
            removeFile(newest);
        }
        if (!renameFile(m_fileName, newest)) {
            complain(QLatin1String("QsLog: could not rename log ") + m_fileName + QLatin1String(" to ") +
                     newest);
        }
    }
    if (m_rotationWentWell) {
        m_complaints.clear();
    }
}

QString SizeRotationStrategy::backupName(int index) const
{
    return m_fileName + QLatin1Char('.') + QString::number(index);
}

int SizeRotationStrategy::lastBackupToShift()
{
    // The first gap takes up what is shifted; backups beyond it stay where they are.
    int last = 0;
    for (int i = 1; i <= m_backupCount && fileExists(backupName(i)); ++i) {
        last = std::min(i, m_backupCount - 1);
    }
    return last;
}

void SizeRotationStrategy::shiftBackups()
{
    for (int i = lastBackupToShift(); i >= 1; --i) {
        const QString oldName = backupName(i);
        const QString newName = backupName(i + 1);
        removeFile(newName);
        if (!renameFile(oldName, newName)) {
            complain(QLatin1String("QsLog: could not rename backup ") + oldName + QLatin1String(" to ") +
                     newName);
        }
    }
}

void SizeRotationStrategy::complain(const QString& text)
{
    m_rotationWentWell = false;
    // A log that is too large and cannot be put aside tries again with every line; standard error must not
    // be flooded with one and the same trouble.
    if (m_complaints.contains(text)) {
        return;
    }
    m_complaints.append(text);
    reportFailure(text);
}

bool SizeRotationStrategy::removeFile(const QString& path)
{
    return QFile::remove(path);
}

bool SizeRotationStrategy::fileExists(const QString& path)
{
    return QFile::exists(path);
}

bool SizeRotationStrategy::renameFile(const QString& from, const QString& to)
{
    return QFile::rename(from, to);
}

} // namespace QsLogging
