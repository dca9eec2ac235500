#pragma once

#include <QByteArray>

#include <array>

class QTextStream;

/// What reading a record returns, as a signed 32-bit number of its own origin: the device link's codes share
/// some of the values and none of the meanings.
namespace SRecordStatus {
enum Code : int {
    Parsed = 0,
    NothingRead = -40000, ///< nothing could be read for the line: it is empty, or the stream has no text
    EndOfText = -40001,   ///< the text is at its end, or the line starts with the end-of-file character 0x1A
    Damaged = -40002,  ///< the count is 0 or does not fit the address or the line, or the checksum is wrong
    TooLong = -40003,  ///< the count is greater than SRecord::maximumCount
    NoRecord = -40004, ///< the line does not start with "S"
    UnknownType = -40005, ///< the type is none of 0..9, or is 4 or 6
};
} // namespace SRecordStatus

/// One line of a firmware image.
struct SRecord
{
    static constexpr int maximumCount = 50;      ///< bytes of address, data and checksum together
    static constexpr int maximumDataLength = 47; ///< with the shortest address, two bytes, and the checksum

    quint8 type = 0;        ///< 0..9, never 4 or 6
    quint8 dataLength = 0;  ///< bytes of data, at most maximumDataLength
    quint16 lineLength = 0; ///< characters of the line without its end; what follows the checksum included
    quint32 address = 0;    ///< 0 where the record has none: always for type 5, for type 0 if it is short
    std::array<quint8, maximumDataLength> data{}; ///< what is beyond dataLength means nothing
};

/// Reads one line of at most 200 characters, its end included, and parses it; the rest of a longer line is
/// the next line. Total: any text gives one of SRecordStatus' codes, and the record is as it was unless that
/// is Parsed. What follows the checksum in the line is ignored.
int parseRecord(QTextStream& textStream, SRecord& record);

/// The same over bytes, many times as fast. The text is shared, not copied.
class SRecordText
{
public:
    explicit SRecordText(QByteArray text);

    /// Parses the next line, as parseRecord() does.
    int next(SRecord& record);

private:
    QByteArray m_text;
    QByteArray::size_type m_position = 0; ///< first character that was not read yet
};
