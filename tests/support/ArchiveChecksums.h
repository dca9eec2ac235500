#pragma once

#include <QByteArray>
#include <QtEndian>

/// The checksums of 7z archives, for whoever changes one and wants it to look whole.
namespace ArchiveChecksums {

constexpr int startHeaderSize = 32; // signature, version, and where the header is, with its checksum

inline quint32 crc32(const char* data, qint64 size)
{
    quint32 sum = ~0U;
    for (qint64 i = 0; i < size; ++i) {
        sum ^= static_cast<quint8>(data[i]);
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? 0xedb88320U : 0U);
        }
    }
    return ~sum;
}

/// Makes the checksums right that cover the header, wherever it is. False when it is nowhere in the archive.
inline bool repair(QByteArray& archive)
{
    if (archive.size() < startHeaderSize) {
        return false;
    }
    const auto offset = qFromLittleEndian<quint64>(archive.constData() + 12);
    const auto size = qFromLittleEndian<quint64>(archive.constData() + 20);
    const auto room = static_cast<quint64>(archive.size() - startHeaderSize);
    if (offset > room || size > room - offset) {
        return false;
    }
    const auto putSum = [&archive](int place, quint32 sum) {
        for (int byte = 0; byte < 4; ++byte) {
            archive[place + byte] = static_cast<char>(sum >> (8 * byte));
        }
    };
    const char* header = archive.constData() + startHeaderSize + offset;
    putSum(28, crc32(header, static_cast<qint64>(size)));
    putSum(8, crc32(archive.constData() + 12, 20));
    return true;
}

} // namespace ArchiveChecksums
