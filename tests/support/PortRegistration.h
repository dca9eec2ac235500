#pragma once

#include "Simulator/Wire.h"
#include "device/SerialPorts.h"

#include <QList>

#include <optional>

/// Puts a simulated port into the process's list of serial ports while it is plugged and this object lives.
/// Several may live at once: their ports are listed in the order in which the objects were made. The
/// platform's own list returns with the last one's end. The wire must outlive the object.
class PortRegistration
{
public:
    explicit PortRegistration(const Simulator::Wire& wire);
    ~PortRegistration();

    PortRegistration(const PortRegistration&) = delete;
    PortRegistration& operator=(const PortRegistration&) = delete;
    PortRegistration(PortRegistration&&) = delete;
    PortRegistration& operator=(PortRegistration&&) = delete;

    /// The identifiers that the wire's port is listed with; the illuminator's own at first.
    void setUsbIdentifiers(std::optional<quint16> vendorId, std::optional<quint16> productId);
    /// Empty at first.
    void setSerialNumber(const QString& serialNumber) { m_serialNumber = serialNumber; }
    /// Ports that exist beside the wire's: listed in front of it or behind it.
    void addPortInFront(const SerialPortEntry& port) { m_inFront.append(port); }
    void addPortBehind(const SerialPortEntry& port) { m_behind.append(port); }
    void removeAddedPorts();

private:
    static QList<SerialPortEntry> listAll();
    QList<SerialPortEntry> list() const;

    const Simulator::Wire& m_wire;
    std::optional<quint16> m_vendorId = 0x2F26;
    std::optional<quint16> m_productId = 0x3A98;
    QString m_serialNumber;
    QList<SerialPortEntry> m_inFront;
    QList<SerialPortEntry> m_behind;
};
