#pragma once

#include "update/SRecord.h"

#include <QByteArray>
#include <QIODevice>
#include <QList>
#include <QString>
#include <QTextStream>

/// What was made of one line.
struct ReadLine
{
    int status = SRecordStatus::NothingRead;
    SRecord record;

    QByteArray data() const { return {reinterpret_cast<const char*>(record.data.data()), record.dataLength}; }
};

inline bool operator==(const ReadLine& a, const ReadLine& b)
{
    return a.status == b.status && a.record.type == b.record.type && a.record.address == b.record.address &&
           a.record.lineLength == b.record.lineLength && a.data() == b.data();
}

/// All lines of a text up to its end, or up to @p limit of them; the last one tells that it is the end.
template<typename Next>
QList<ReadLine> readLines(const Next& next, int limit)
{
    QList<ReadLine> lines;
    do {
        lines.append(ReadLine());
        lines.last().status = next(lines.last().record);
    } while (lines.last().status != SRecordStatus::EndOfText && lines.size() < limit);
    return lines;
}

inline QList<ReadLine> readBytes(const QByteArray& text, int limit = 1000000)
{
    SRecordText records(text);
    return readLines([&records](SRecord& record) { return records.next(record); }, limit);
}

inline QList<ReadLine> readStream(const QByteArray& text, int limit = 1000000)
{
    // A byte is a character here, whatever the text begins with.
    QString characters = QString::fromLatin1(text.constData(), text.size());
    QTextStream stream(&characters, QIODevice::ReadOnly);
    return readLines([&stream](SRecord& record) { return parseRecord(stream, record); }, limit);
}
