#pragma once

#include "FlashTools.h"
#include "PortClient.h"
#include "Simulator/SimulatedIlluminator.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTest>

#include <chrono>
#include <memory>

/// A device that runs its loader, quick to restart, and the computer's end of its cable.
class FlashBench
{
public:
    FlashBench()
    {
        m_device.setRestartTime(std::chrono::milliseconds(1));
        m_device.model().lasers().setWarmupDuration(std::chrono::milliseconds(0));
        m_device.plug();
        startLoader();
    }

    Simulator::SimulatedIlluminator& device() { return m_device; }
    const Simulator::FirmwareStore::Content& applicationPlace()
    {
        return m_device.model().firmware().applicationPlace();
    }
    PortClient& client() { return *m_client; }
    QByteArray ask(const QByteArray& line) { return m_client->ask(line); }

    void connectAgain() { m_client = std::make_unique<PortClient>(m_device.portName()); }
    void startLoader()
    {
        m_device.model().boot(Simulator::Image::Loader, "Test");
        connectAgain();
    }
    /// Sends the lines one by one; how many were written before one was not, or the port was gone.
    int send(const QList<QByteArray>& lines)
    {
        int written = 0;
        for (const QByteArray& line : lines) {
            m_client->write(line + '\n');
            if (answerHere() != "Wrote\n") {
                break;
            }
            ++written;
        }
        return written;
    }
    /// Waits for the port and what runs behind it.
    bool comesBack()
    {
        const bool isBack = QTest::qWaitFor(
            [this] { return m_device.isPlugged() && m_device.model().runningImage().has_value(); });
        connectAgain();
        return isBack && m_client->isOpen();
    }

private:
    /// Wakes up with every event, since there are many lines.
    QByteArray answerHere()
    {
        const QDeadlineTimer deadline(std::chrono::seconds(5));
        QByteArray answer;
        while (!answer.endsWith('\n') && m_device.isPlugged() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents); // the device's clock ticks
            answer += m_client->readNow();
        }
        return answer;
    }

    Simulator::SimulatedIlluminator m_device;
    std::unique_ptr<PortClient> m_client;
};
