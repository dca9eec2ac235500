#include "diagnostics/FileCopy.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

FileCopy copyOfFile(const QString& path, qint64 maximumBytes)
{
    FileCopy copy;
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink()) {
        copy.remark = QStringLiteral("not there");
        return copy;
    }
    if (!info.isFile() || info.isSymLink()) {
        copy.remark = QStringLiteral("not a file");
        return copy;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        copy.remark = file.errorString();
        return copy;
    }
    // Of the open file: the name may belong to another one by now.
    const qint64 size = file.size();
    const qint64 leftOut = std::max<qint64>(0, size - maximumBytes);
    if (file.seek(leftOut)) {
        copy.content = file.read(maximumBytes);
    }
    if (file.error() != QFileDevice::NoError) {
        copy.content.clear();
        copy.remark = file.errorString();
        return copy;
    }
    if (leftOut > 0) {
        copy.content.remove(0, copy.content.indexOf('\n') + 1);
        copy.remark = QStringLiteral("only the end of its %1 bytes").arg(size);
    }
    copy.modified = file.fileTime(QFileDevice::FileModificationTime);
    copy.isRead = true;
    return copy;
}
