#include "update/SRecord.h"

#include <QString>
#include <QTextStream>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr QByteArray::size_type maximumLineLength = 200;
constexpr int pairsStart = 4; // behind "S", the type and the count
constexpr char endOfFile = 0x1a;
constexpr int noAddressWidth = -1; // for types that are no record

/// Bytes of the address by type.
constexpr std::array<int, 10> addressWidths = {2, 2, 3, 4, noAddressWidth, 0, noAddressWidth, 4, 3, 2};

constexpr quint8 noHexDigit = 0xff;

constexpr std::array<quint8, 256> makeHexDigits()
{
    std::array<quint8, 256> digits{};
    for (quint8& digit : digits) {
        digit = noHexDigit;
    }
    for (quint8 value = 0; value < 10; ++value) {
        digits['0' + std::size_t(value)] = value;
    }
    for (quint8 value = 10; value < 16; ++value) {
        digits['A' + std::size_t(value) - 10] = value;
        digits['a' + std::size_t(value) - 10] = value;
    }
    return digits;
}

// One look per character: this is where nearly all the time of checking an image goes.
constexpr std::array<quint8, 256> hexDigits = makeHexDigits();

/// The byte of two digits; 0 unless both are digits.
quint8 byteAt(const char* pair)
{
    const quint8 high = hexDigits[static_cast<quint8>(pair[0])];
    const quint8 low = hexDigits[static_cast<quint8>(pair[1])];
    return high == noHexDigit || low == noHexDigit ? quint8(0) : static_cast<quint8>(high << 4U | low);
}

using RecordBytes = std::array<quint8, SRecord::maximumCount>;

/// Shares what stands behind the count byte out to the record's fields.
int fillRecord(quint8 type, int count, const RecordBytes& bytes, SRecord& record)
{
    if (type >= addressWidths.size() || addressWidths[type] == noAddressWidth) {
        return SRecordStatus::UnknownType;
    }
    // A first line without a text, and a count of lines, have nothing that anybody reads.
    const bool isBare = type == 5 || (type == 0 && count < 5);
    const int width = isBare ? 0 : addressWidths[type];
    const int dataLength = isBare ? 0 : count - width - 1;
    if (dataLength < 0) {
        return SRecordStatus::Damaged;
    }
    quint32 address = 0;
    for (int i = 0; i < width; ++i) {
        address = address << 8U | bytes[static_cast<std::size_t>(i)];
    }
    record.type = type;
    record.address = address;
    record.dataLength = static_cast<quint8>(dataLength);
    std::copy_n(bytes.begin() + width, dataLength, record.data.begin());
    return SRecordStatus::Parsed;
}

/// Parses a line whose line feed was taken off already.
int parseLine(const char* line, QByteArray::size_type length, SRecord& record)
{
    // The stream leaves a carriage return here and there, depending on how much of the text it holds.
    while (length > 0 && line[length - 1] == '\r') {
        --length;
    }
    if (length == 0) {
        return SRecordStatus::NothingRead;
    }
    if (line[0] != 'S') {
        return line[0] == endOfFile ? SRecordStatus::EndOfText : SRecordStatus::NoRecord;
    }
    const quint8 count = length < pairsStart ? quint8(0) : byteAt(line + 2);
    if (count > SRecord::maximumCount) {
        return SRecordStatus::TooLong;
    }
    // A line that was cut off has lost its checksum, even if what is left adds up.
    if (count == 0 || length < pairsStart + 2 * count) {
        return SRecordStatus::Damaged;
    }
    RecordBytes bytes; // NOLINT(cppcoreguidelines-pro-type-member-init): what is not filled is not read
    quint32 sum = count;
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = byteAt(line + pairsStart + 2 * i);
        sum += bytes[i];
    }
    if ((sum & 0xffU) != 0xffU) {
        return SRecordStatus::Damaged;
    }
    const int status = fillRecord(static_cast<quint8>(line[1] - '0'), count, bytes, record);
    if (status == SRecordStatus::Parsed) {
        record.lineLength = static_cast<quint16>(length);
    }
    return status;
}

} // namespace

int parseRecord(QTextStream& textStream, SRecord& record)
{
    // The stream warns when it is asked anything without a text behind it.
    if (textStream.device() == nullptr && textStream.string() == nullptr) {
        return SRecordStatus::NothingRead;
    }
    if (textStream.atEnd()) {
        return SRecordStatus::EndOfText;
    }
    // What Latin-1 lacks becomes a question mark, which is no part of any record either.
    const QByteArray text = textStream.readLine(maximumLineLength).toLatin1();
    return parseLine(text.constData(), text.size(), record);
}

SRecordText::SRecordText(QByteArray text) : m_text(std::move(text)) {}

int SRecordText::next(SRecord& record)
{
    const auto left = m_text.size() - m_position;
    if (left == 0) {
        return SRecordStatus::EndOfText;
    }
    const char* start = m_text.constData() + m_position;
    const auto room = std::min(left, maximumLineLength);
    const void* lineFeed = std::memchr(start, '\n', static_cast<std::size_t>(room));
    const auto length = lineFeed == nullptr
                            ? room
                            : static_cast<QByteArray::size_type>(static_cast<const char*>(lineFeed) - start);
    m_position += lineFeed == nullptr ? length : length + 1;
    return parseLine(start, length, record);
}
