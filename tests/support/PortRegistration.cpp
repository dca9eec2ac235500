#include "support/PortRegistration.h"

namespace {
QList<const PortRegistration*>& registrations()
{
    static QList<const PortRegistration*> all;
    return all;
}
} // namespace

PortRegistration::PortRegistration(const Simulator::Wire& wire) : m_wire(wire)
{
    registrations().append(this);
    SerialPorts::setLister(&PortRegistration::listAll);
}

PortRegistration::~PortRegistration()
{
    registrations().removeAll(this);
    if (registrations().isEmpty()) {
        SerialPorts::setLister({});
    }
}

void PortRegistration::setUsbIdentifiers(std::optional<quint16> vendorId, std::optional<quint16> productId)
{
    m_vendorId = vendorId;
    m_productId = productId;
}

void PortRegistration::removeAddedPorts()
{
    m_inFront.clear();
    m_behind.clear();
}

QList<SerialPortEntry> PortRegistration::listAll()
{
    QList<SerialPortEntry> ports;
    for (const PortRegistration* registration : qAsConst(registrations())) {
        ports.append(registration->list());
    }
    return ports;
}

QList<SerialPortEntry> PortRegistration::list() const
{
    QList<SerialPortEntry> ports = m_inFront;
    if (m_wire.isPlugged()) {
        ports.append({m_wire.portName(), m_vendorId, m_productId, m_serialNumber});
    }
    return ports + m_behind;
}
