#pragma once

#include "device/Device.h"
#include "support/LogCapture.h"
#include "support/ScriptedBench.h"
#include "support/WatchedTest.h"

#include <QByteArrayList>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

/// What the tests of the device link share.
namespace DeviceTest {

using Milliseconds = std::chrono::milliseconds;

/// Answers of a device whose application image runs and whose intensities and shutters the host controls.
/// Lines without an answer of their own are answered with "ok".
void answerAsApplication(ScriptedBench& bench, const QByteArray& version = "2.7.0");
/// Answers of a device whose loader runs; it is silent to everything but its identification.
void answerAsLoader(ScriptedBench& bench);

/// Opens and identifies the bench's device and keeps the poll off. False when it is not identified.
bool connectWithoutPoll(Device& device);

/// Runs the event loop until the condition holds; false when it does not in time.
bool waitUntil(const std::function<bool()>& condition, Milliseconds limit = std::chrono::seconds(5));
/// Runs the event loop for a time in which nothing is expected to happen.
void listenFor(Milliseconds time);

/// Calls `action` once the event loop runs inside the operation under test, `delay` from now.
void later(Milliseconds delay, const std::function<void()>& action);

/// Runs `action` in the same turn of the event loop in which the reply to `line` is received, and after it:
/// the wait for that reply is over then, but has not come back yet.
void runWithTheReplyTo(Device& device, ScriptedBench& bench, const QByteArray& line,
                       const std::function<void()>& action);

/// Processor time that the process has used.
Milliseconds cpuTime();
int openFileCount();

/// Messages of the log's lines without level and time.
QStringList messages(const QStringList& lines);
QStringList errorMessages(const LogCapture& log);

/// Records what the link announces, in the order in which it does.
class Announcements
{
public:
    explicit Announcements(Device& device);

    QStringList all;
    QByteArrayList chunks; ///< kept apart, as they come all the time
    int count(const QString& prefix) const;

private:
    QObject m_context; // ends the connections
};

/// Times what happens during its life.
class Stopwatch
{
public:
    Milliseconds elapsed() const
    {
        return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - m_start);
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

/// What a test begins with that makes its links itself: a plugged device that answers as an application.
class PluggedTest : public WatchedTest
{
protected:
    void begin();
    void end();

    std::unique_ptr<ScriptedBench> m_bench;
};

/// What a test of the link alone begins with: an application that is connected and not polled.
class ConnectedTest : public PluggedTest
{
protected:
    void begin();
    void end();
    /// With a link of its own, which has sent nothing since.
    void connectDevice();

    std::unique_ptr<Device> m_device;
};

/// What a test that runs ticks by hand begins with: a connected device without fault and warning, both told,
/// and with the countdown of the warnings, which belongs to the process, at its beginning.
class PollTest : public PluggedTest
{
protected:
    void begin();
    void end();
    void connectAnew();
    QStringList tick(); ///< what one tick announces

    std::unique_ptr<Device> m_device;
    std::unique_ptr<Announcements> m_heard;
};

} // namespace DeviceTest
