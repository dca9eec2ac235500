#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

namespace Bench {

/// The simulated illuminator in a process of its own, so that what it does costs the program nothing. Needs
/// an application object.
class SimulatorProcess
{
public:
    explicit SimulatorProcess(bool paced);
    ~SimulatorProcess();

    SimulatorProcess(const SimulatorProcess&) = delete;
    SimulatorProcess& operator=(const SimulatorProcess&) = delete;
    SimulatorProcess(SimulatorProcess&&) = delete;
    SimulatorProcess& operator=(SimulatorProcess&&) = delete;

    /// Empty when the simulator did not start.
    QString portName() const { return m_portName; }
    /// One of the commands that the simulator takes on its standard input.
    void command(const QByteArray& line);

private:
    QProcess m_process;
    QString m_portName;
};

} // namespace Bench
