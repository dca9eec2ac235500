#pragma once

#include "device/DeviceTypes.h"

#include <QByteArray>
#include <QList>
#include <QString>

/// The commands and replies by which the configuration records move. Everything is pure and total.
namespace Records {
/// Begins the command that writes one line, of a record as of a firmware image.
constexpr char writePrefix[] = "wf:";
constexpr quint32 systemConfigAddress = 0x800064;      ///< where it is written, and read by newer firmware
constexpr quint32 olderSystemConfigAddress = 0x800080; ///< where older firmware is asked for it
constexpr quint32 channelConfigAddress = 0x800198;
constexpr int readChunkSize = 128; ///< bytes asked for at once

/// One command per 64 bytes, in order; @p address has 24 bits.
QList<QByteArray> writeCommands(quint32 address, const quint8* bytes, int size);
QByteArray readCommand(quint32 address, int size);
/// What stands behind the first colon of the reply, as @p size bytes: WrongLength, and nothing stored, when
/// it is anything but that many pairs of hex digits.
int bytesOf(const QString& reply, quint8* bytes, int size);
/// Whether a write command was carried out.
bool tellsWrote(const QString& reply);
QByteArray writeProductConfig(const ProductConfig& record);
} // namespace Records
