#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>
#include <optional>

namespace Simulator {

/// The laser module's own controller, which the application reprograms after it was renewed itself. While
/// that lasts the controller answers no questions, and the device tells its progress unasked.
class LaserController
{
public:
    void setVersion(const QByteArray& version) { m_version = version; }
    QByteArray version() const { return m_version; }
    void setSerialNumber(const QByteArray& serialNumber) { m_serialNumber = serialNumber; }
    QByteArray serialNumber() const { return m_serialNumber; }

    /// Begins to reprogram the controller now.
    void startUpdate(std::chrono::milliseconds duration);
    /// Begins to reprogram the controller when the application starts next.
    void updateAtNextStart(std::chrono::milliseconds duration) { m_pendingUpdate = duration; }
    void applicationStarted();
    void applicationStopped(); ///< an update under way is broken off and begins anew at the next start
    bool isUpdating() const { return m_updating; }
    /// For instance "Firmware Update of laser controller 40%", without line feed.
    QByteArray progressText() const;

    /// True at the moment an update ends. Progress to be told is appended to `messages`.
    bool advance(std::chrono::milliseconds time, QList<QByteArray>& messages);

private:
    int percentDone() const;

    QByteArray m_version = "3.4.1";
    QByteArray m_serialNumber = "NLC-20417";
    bool m_updating = false;
    std::chrono::milliseconds m_duration{0};
    std::chrono::milliseconds m_elapsed{0};
    int m_toldPercent = -1;
    std::optional<std::chrono::milliseconds> m_pendingUpdate;
};

} // namespace Simulator
