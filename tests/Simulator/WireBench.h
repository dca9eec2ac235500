#pragma once

#include "PortClient.h"
#include "WireTools.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTest>

#include <memory>

/// What a test of the wire begins with: a plugged one whose device echoes, and a client at its other end.
class WireTest : public QObject
{
protected:
    void begin()
    {
        m_log.clear();
        m_timesMs.clear();
        m_wire = std::make_unique<Simulator::Wire>();
        m_wire->setHandler(echo);
        QVERIFY2(m_wire->plug(), qPrintable(m_wire->errorString()));
        m_client = std::make_unique<PortClient>(m_wire->portName());
        QVERIFY(m_client->isOpen());
    }
    void end()
    {
        m_client.reset();
        m_wire.reset();
    }

    std::unique_ptr<Simulator::Wire> m_wire;
    std::unique_ptr<PortClient> m_client;
    QList<QByteArray> m_log; ///< what a test notes down in the wire's signals
    QList<double> m_timesMs;
    QElapsedTimer m_clock;
};
