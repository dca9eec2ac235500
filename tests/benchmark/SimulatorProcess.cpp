#include "SimulatorProcess.h"

namespace {
constexpr int startLimitMs = 10'000;
constexpr int endLimitMs = 5'000;
const char* const portPrefix = "port: ";
} // namespace

Bench::SimulatorProcess::SimulatorProcess(bool paced)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(VYR_SIMULATOR_PATH),
                    {paced ? QStringLiteral("--paced") : QStringLiteral("--unpaced")});
    while (m_process.waitForReadyRead(startLimitMs)) {
        while (m_process.canReadLine()) {
            const QByteArray line = m_process.readLine().trimmed();
            if (line.startsWith(portPrefix)) {
                m_portName = QString::fromLocal8Bit(line.mid(static_cast<int>(qstrlen(portPrefix))));
                return;
            }
        }
    }
}

Bench::SimulatorProcess::~SimulatorProcess()
{
    m_process.closeWriteChannel(); // the end of its input is the end of the simulator
    m_process.waitForFinished(endLimitMs);
}

void Bench::SimulatorProcess::command(const QByteArray& line)
{
    m_process.write(line + '\n');
    m_process.waitForBytesWritten();
}
