#include "device/SerialPorts.h"

#include <QSerialPortInfo>

#include <algorithm>
#include <utility>

namespace {
SerialPorts::Lister& currentLister()
{
    static SerialPorts::Lister current;
    return current;
}

QList<SerialPortEntry> platformPorts()
{
    QList<SerialPortEntry> entries;
    const auto ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo& port : ports) {
        SerialPortEntry entry{port.portName(),    {}, {}, port.serialNumber(), port.description(),
                              port.manufacturer()};
        if (port.hasVendorIdentifier())
            entry.vendorId = port.vendorIdentifier();
        if (port.hasProductIdentifier())
            entry.productId = port.productIdentifier();
        entries.append(entry);
    }
    return entries;
}
} // namespace

QList<SerialPortEntry> SerialPorts::available()
{
    // A copy, as a lister may replace itself while it runs.
    const Lister current = currentLister();
    return current ? current() : platformPorts();
}

void SerialPorts::setLister(Lister lister)
{
    currentLister() = std::move(lister);
}

bool SerialPorts::isIlluminator(const SerialPortEntry& port)
{
    return std::any_of(illuminators.begin(), illuminators.end(), [&port](UsbIdentifiers accepted) {
        return port.vendorId == accepted.vendorId && port.productId == accepted.productId;
    });
}

bool SerialPorts::isListedIlluminator(const QList<SerialPortEntry>& ports, const QString& name)
{
    return std::any_of(ports.begin(), ports.end(), [&name](const SerialPortEntry& port) {
        return port.name == name && isIlluminator(port);
    });
}
