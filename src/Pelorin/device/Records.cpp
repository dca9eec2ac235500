#include "device/Records.h"

#include "device/ResultCodes.h"

#include <algorithm>

namespace {
constexpr int writeChunkSize = 64;
constexpr int addressSize = 3;

/// A line of the S-record form with a 24-bit address, in lower case and without a line end.
QByteArray dataLine(quint32 address, const QByteArray& data)
{
    const auto countOf = static_cast<char>(addressSize + data.size() + 1); // the checksum counts, too
    QByteArray bytes = QByteArray(1, countOf) + static_cast<char>((address >> 16) & 0xff) +
                       static_cast<char>((address >> 8) & 0xff) + static_cast<char>(address & 0xff) + data;
    unsigned sum = 0;
    for (const char byte : qAsConst(bytes))
        sum += static_cast<quint8>(byte);
    bytes.append(static_cast<char>(~sum & 0xff));
    return "S2" + bytes.toHex();
}

bool isHexDigit(QChar character)
{
    const ushort code = character.toLower().unicode();
    return (code >= '0' && code <= '9') || (code >= 'a' && code <= 'f');
}
} // namespace

QList<QByteArray> Records::writeCommands(quint32 address, const quint8* bytes, int size)
{
    QList<QByteArray> commands;
    for (int offset = 0; offset < size; offset += writeChunkSize) {
        const QByteArray data(reinterpret_cast<const char*>(bytes) + offset,
                              std::min(writeChunkSize, size - offset));
        commands.append(writePrefix + dataLine(address + static_cast<quint32>(offset), data) + '\n');
    }
    return commands;
}

QByteArray Records::readCommand(quint32 address, int size)
{
    return QStringLiteral("rf: %1 %2\n").arg(address).arg(size).toLatin1();
}

int Records::bytesOf(const QString& reply, quint8* bytes, int size)
{
    const auto colon = reply.indexOf(QLatin1Char(':'));
    const QString digits = colon < 0 ? QString() : reply.mid(colon + 1).trimmed();
    if (digits.size() != 2 * size || !std::all_of(digits.begin(), digits.end(), isHexDigit))
        return DeviceResult::WrongLength;
    const QByteArray decoded = QByteArray::fromHex(digits.toLatin1());
    std::copy(decoded.begin(), decoded.end(), bytes);
    return DeviceResult::Ok;
}

bool Records::tellsWrote(const QString& reply)
{
    return reply.contains(QLatin1String("Wrote"));
}

QByteArray Records::writeProductConfig(const ProductConfig& record)
{
    const auto item = [](const char* key, const QString& value) {
        // Both go in at once: a value is never searched for a place to fill.
        return QStringLiteral("%1=%2").arg(QLatin1String(key), value);
    };
    const QStringList items{item("vyr_hw_ver", record.hardwareVersion), item("vyr_pn", record.partNumber),
                            item("vyr_sn", record.serialNumber),
                            item("necsel_laser_sn", record.necselSerialNumber),
                            item("novalum_sn", record.novalumSerialNumber)};
    // The device's texts are read as UTF-8, so they are written as such.
    return "prod_config:" + items.join(QLatin1Char(',')).toUtf8() + '\n';
}
