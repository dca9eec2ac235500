#include "SimulatorThread.h"

#include "Simulator/SimulatedIlluminator.h"

#include <utility>

Bench::SimulatorThread::SimulatorThread(Preparation prepare) : m_prepare(std::move(prepare))
{
    start();
    m_ready.acquire();
}

Bench::SimulatorThread::~SimulatorThread()
{
    quit();
    wait();
}

Bench::SimulatorThread::Traffic Bench::SimulatorThread::takeTraffic()
{
    const QMutexLocker lock(&m_mutex);
    return std::exchange(m_traffic, {});
}

void Bench::SimulatorThread::run()
{
    Simulator::SimulatedIlluminator illuminator;
    Simulator::Wire& wire = illuminator.wire();
    illuminator.model().lasers().setWarmupDuration(std::chrono::milliseconds::zero());
    wire.setPaced(true);
    if (m_prepare) {
        m_prepare(illuminator);
    }
    // Noted on this thread, though this object belongs to the one that made it.
    connect(&wire, &Simulator::Wire::lineReceived, this, &SimulatorThread::noteLine, Qt::DirectConnection);
    connect(&wire, &Simulator::Wire::bytesSent, this, &SimulatorThread::noteBytes, Qt::DirectConnection);
    if (illuminator.plug()) {
        m_portName = illuminator.portName();
    }
    m_ready.release();
    exec();
}

void Bench::SimulatorThread::noteLine(const QByteArray& line)
{
    const QMutexLocker lock(&m_mutex);
    m_traffic.lines.append(line);
    m_traffic.bytesReceived += line.size() + 1; // with its line feed
}

void Bench::SimulatorThread::noteBytes(const QByteArray& bytes)
{
    const QMutexLocker lock(&m_mutex);
    m_traffic.bytesSent += bytes.size();
}
