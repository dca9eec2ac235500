#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

/// What a file held when it was read.
struct FileCopy
{
    QByteArray content;
    QDateTime modified;
    bool isRead = false;
    QString remark; ///< why it is missing or not whole, in English; empty when it is whole
};

/// Reads a regular file, and of a longer one its last @p maximumBytes, from the start of a line on. Anything
/// else is not read: a pipe could keep the program waiting, and a link may lead to what was never meant.
FileCopy copyOfFile(const QString& path, qint64 maximumBytes);
