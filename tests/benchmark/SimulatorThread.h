#pragma once

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QSemaphore>
#include <QString>
#include <QThread>

#include <functional>

namespace Simulator {
class SimulatedIlluminator;
}

namespace Bench {

/// The simulated illuminator, warmed up and paced like a 19200-baud line, on a thread of its own, so that it
/// neither holds nor is held by the thread that is measured. Records what goes over the line.
class SimulatorThread : public QThread
{
    Q_OBJECT

public:
    struct Traffic
    {
        QList<QByteArray> lines; ///< received by the device, without their line feeds
        qint64 bytesReceived = 0;
        qint64 bytesSent = 0;
    };

    /// Changes the device, on its thread, before it is plugged in.
    using Preparation = std::function<void(Simulator::SimulatedIlluminator&)>;

    /// Returns once the port is there.
    explicit SimulatorThread(Preparation prepare = {});
    ~SimulatorThread() override;

    SimulatorThread(const SimulatorThread&) = delete;
    SimulatorThread& operator=(const SimulatorThread&) = delete;
    SimulatorThread(SimulatorThread&&) = delete;
    SimulatorThread& operator=(SimulatorThread&&) = delete;

    /// Empty when the system gave no port.
    QString portName() const { return m_portName; }
    /// What went over the line since the last call.
    Traffic takeTraffic();

protected:
    void run() override;

private:
    void noteLine(const QByteArray& line);
    void noteBytes(const QByteArray& bytes);

    Preparation m_prepare;
    QString m_portName;
    QSemaphore m_ready;
    QMutex m_mutex;
    Traffic m_traffic;
};

} // namespace Bench
