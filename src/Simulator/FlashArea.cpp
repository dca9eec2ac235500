#include "Simulator/FlashArea.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <utility>

namespace Simulator {
namespace {
constexpr char kErased = '\xff';
constexpr quint32 kProduct = 1;

// Places in the header.
constexpr int kNameSize = 8;
constexpr int kProductAt = 8;
constexpr int kVersionAt = 12;
constexpr int kNeededSize = 16; // without these bytes nobody knows what the image is
constexpr int kProgramSizeAt = 16;
constexpr int kCrcAt = 20;

struct Name
{
    Image image;
    const char* text;
};
constexpr std::array<Name, 3> kNames{
    {{Image::Loader, "LOADER"}, {Image::LoaderUpdater, "UPDATER"}, {Image::Application, "VYRAPP"}}};

std::optional<Image> imageOf(const QByteArray& header)
{
    const auto* const found = std::find_if(kNames.begin(), kNames.end(), [&header](const Name& name) {
        return header.left(kNameSize) == QByteArray(name.text).leftJustified(kNameSize, '\0');
    });
    return found != kNames.end() ? std::optional(found->image) : std::nullopt;
}

quint32 numberAt(const QByteArray& bytes, int offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

Version versionOf(const QByteArray& header)
{
    const quint32 word = numberAt(header, kVersionAt);
    return {static_cast<int>(word >> 16U), static_cast<int>(word >> 8U & 0xffU),
            static_cast<int>(word & 0xffU)};
}

constexpr std::array<quint32, 256> crcTable()
{
    std::array<quint32, 256> table{};
    for (quint32 byte = 0; byte < table.size(); ++byte) {
        quint32 value = byte;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1U) != 0 ? value >> 1U ^ 0xedb88320U : value >> 1U;
        }
        table[byte] = value;
    }
    return table;
}

quint32 crc32(const QByteArray& bytes)
{
    static constexpr auto table = crcTable();
    quint32 crc = 0xffffffffU;
    for (const char byte : bytes) {
        crc = table.at((crc ^ static_cast<quint8>(byte)) & 0xffU) ^ crc >> 8U;
    }
    return ~crc;
}
} // namespace

FlashArea::FlashArea(quint32 begin, quint32 size, std::vector<Image> images)
    : m_begin(begin), m_size(size), m_images(std::move(images)), m_bytes(static_cast<int>(size), kErased),
      m_written(static_cast<int>(size))
{
}

bool FlashArea::write(const SRecordLine& line)
{
    if (!line.carriesData() || line.data.isEmpty() || line.address < m_begin ||
        line.end() > quint64(m_begin) + m_size) {
        return false;
    }
    if (beginsAnew(line)) {
        erase(line.address);
    }
    const int offset = static_cast<int>(line.address - m_begin);
    m_bytes.replace(offset, line.data.size(), line.data);
    m_written.fill(true, offset, offset + line.data.size());
    return true;
}

bool FlashArea::beginsAnew(const SRecordLine& line) const
{
    if (!m_inProgress || line.address == m_firstAddress) {
        return true;
    }
    const int offset = static_cast<int>(line.address - m_begin);
    for (int i = 0; i < line.data.size(); ++i) {
        if (m_written.testBit(offset + i) && m_bytes.at(offset + i) != line.data.at(i)) {
            return true;
        }
    }
    return false;
}

void FlashArea::erase(quint32 firstAddress)
{
    m_bytes.fill(kErased);
    m_written.fill(false);
    m_firstAddress = firstAddress;
    m_inProgress = true;
    m_missedLine = false;
}

std::optional<FlashArea::Found> FlashArea::finish()
{
    const bool wasBegun = std::exchange(m_inProgress, false);
    return wasBegun ? find() : std::nullopt;
}

std::optional<FlashArea::Found> FlashArea::find() const
{
    const int headerAt = static_cast<int>(m_size - kHeaderSize);
    for (int i = 0; i < kNeededSize; ++i) {
        if (!m_written.testBit(headerAt + i)) {
            return std::nullopt;
        }
    }
    const QByteArray header = m_bytes.mid(headerAt);
    const Image image = imageOf(header).value_or(m_images.front());
    const bool belongsHere = std::find(m_images.begin(), m_images.end(), image) != m_images.end();
    if (!belongsHere || numberAt(header, kProductAt) != kProduct || !isWhole(header)) {
        return std::nullopt;
    }
    return Found{image, versionOf(header)};
}

bool FlashArea::isWhole(const QByteArray& header) const
{
    if (!imageOf(header)) {
        return !m_missedLine;
    }
    const quint32 size = numberAt(header, kProgramSizeAt);
    return size <= m_size - kHeaderSize &&
           crc32(m_bytes.left(static_cast<int>(size)) + header.left(kCrcAt)) == numberAt(header, kCrcAt);
}

} // namespace Simulator
