#include "Simulator/SRecordLine.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <numeric>

namespace Simulator {
namespace {
constexpr int kTypeLength = 2;
constexpr int kNoSuchType = 0;

/// Bytes of the address by type.
constexpr std::array<int, 10> kAddressSizes{2, 2, 3, 4, kNoSuchType, 2, kNoSuchType, 4, 3, 2};

int addressSize(char type)
{
    return type >= '0' && type <= '9' ? kAddressSizes.at(static_cast<std::size_t>(type - '0')) : kNoSuchType;
}

/// The bytes behind the type; empty when the digits are no bytes.
QByteArray bytesOf(const QByteArray& digits)
{
    const bool areDigits = std::all_of(digits.begin(), digits.end(), [](char character) {
        return std::isxdigit(static_cast<unsigned char>(character)) != 0;
    });
    return areDigits && digits.size() % 2 == 0 ? QByteArray::fromHex(digits) : QByteArray();
}

/// Count, address, data and checksum together end in 0xff.
bool isChecksumRight(const QByteArray& bytes)
{
    const int sum = std::accumulate(bytes.begin(), bytes.end(), 0,
                                    [](int soFar, char byte) { return soFar + static_cast<quint8>(byte); });
    return (sum & 0xff) == 0xff;
}

quint32 bigEndian(const QByteArray& bytes)
{
    return std::accumulate(bytes.begin(), bytes.end(), quint32(0), [](quint32 soFar, char byte) {
        return (soFar << 8U) | static_cast<quint8>(byte);
    });
}
} // namespace

std::optional<SRecordLine> parseSRecordLine(const QByteArray& line)
{
    constexpr int kCountSize = 1;
    constexpr int kChecksumSize = 1;
    const int width =
        line.size() > kTypeLength && line.front() == 'S' ? addressSize(line.at(1)) : kNoSuchType;
    const QByteArray bytes = bytesOf(line.mid(kTypeLength));
    if (width == kNoSuchType || bytes.size() < kCountSize + width + kChecksumSize) {
        return std::nullopt;
    }
    if (static_cast<quint8>(bytes.front()) != bytes.size() - kCountSize || !isChecksumRight(bytes)) {
        return std::nullopt;
    }
    SRecordLine record;
    record.type = line.at(1) - '0';
    record.address = bigEndian(bytes.mid(kCountSize, width));
    record.data = bytes.mid(kCountSize + width, bytes.size() - kCountSize - width - kChecksumSize);
    if (record.type != 0 && !record.carriesData() && !record.data.isEmpty()) {
        return std::nullopt;
    }
    return record;
}

} // namespace Simulator
