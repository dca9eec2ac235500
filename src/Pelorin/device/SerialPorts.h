#pragma once

#include <QList>
#include <QString>

#include <array>
#include <functional>
#include <optional>

/// One serial port of the computer as the link needs to know it.
struct SerialPortEntry
{
    QString name;                     ///< as QSerialPort::setPortName takes it
    std::optional<quint16> vendorId;  ///< USB vendor identifier, where the port has one
    std::optional<quint16> productId; ///< USB product identifier, where the port has one
    QString serialNumber = {};        ///< USB serial number; empty where the port has none
    QString description = {};         ///< what the device calls itself, for people; may be empty
    QString manufacturer = {};        ///< the same of its maker
};

struct UsbIdentifiers
{
    quint16 vendorId;
    quint16 productId;
};

namespace SerialPorts {
/// The pairs that illuminators carry, the usual one first.
constexpr std::array<UsbIdentifiers, 2> illuminators{{{0x2F26, 0x3A98}, {0x03EB, 0x2404}}};

using Lister = std::function<QList<SerialPortEntry>()>;

/// The serial ports present now, in the platform's order.
QList<SerialPortEntry> available();

/// Replaces the way ports are listed for the whole process; an empty function restores the platform's
/// own list. This is the one seam through which a simulated illuminator enters the program.
void setLister(Lister lister);

/// True for a port that carries one of the illuminator's USB identifier pairs.
bool isIlluminator(const SerialPortEntry& port);

/// True when a port of this name is among `ports` and carries one of those pairs.
bool isListedIlluminator(const QList<SerialPortEntry>& ports, const QString& name);
} // namespace SerialPorts
