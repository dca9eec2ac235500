#include "device/DeviceFixture.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <ctime>
#include <memory>

using namespace std::chrono_literals;

void DeviceTest::answerAsApplication(ScriptedBench& bench, const QByteArray& version)
{
    bench.setAnswers({{"v", "VYRApp V" + version + '\n'},
                      {"reset_cause", "reset_cause=power on\n"},
                      {"v?a", "VYRApp V" + version + '\n'},
                      {"v?l", "Loader V1.4.7\n"},
                      {"isloadervalid", "Yes\n"},
                      {"isappvalid", "Yes\n"},
                      {"necsel_controller_ver", "necsel_controller_ver=3.1\n"},
                      {"necsel_controller_sn", "necsel_controller_sn=N-77\n"},
                      {"shutter?", "shutter:closed,closed,closed,closed,closed,closed,closed,closed\n"},
                      {"fault?", "ok\n"},
                      {"warn?", "ok\n"},
                      {"f_mode?", "f_mode=idle\n"},
                      {"int_mode?", "int_mode=PC\n"},
                      {"set?", "set:405=0,445=0,470=0,520=0,528=0,555=0,640=0,730=0\n"}});
    bench.setDefaultAnswer("ok\n");
}

void DeviceTest::answerAsLoader(ScriptedBench& bench)
{
    bench.setAnswers({{"v", "Loader V1.4.7\n"},
                      {"reset_cause", "reset_cause=power on\n"},
                      {"v?a", "VYRApp V2.7.0\n"},
                      {"v?l", "Loader V1.4.7\n"},
                      {"isloadervalid", "Yes\n"},
                      {"isappvalid", "Yes\n"}});
}

bool DeviceTest::connectWithoutPoll(Device& device)
{
    device.checkConnectionStatus();
    device.setPolling(false);
    return device.isOpen() && device.deviceMode() != DeviceMode::NotIdentified;
}

bool DeviceTest::waitUntil(const std::function<bool()>& condition, Milliseconds limit)
{
    return QTest::qWaitFor(condition, static_cast<int>(limit.count()));
}

void DeviceTest::listenFor(Milliseconds time)
{
    QTest::qWait(static_cast<int>(time.count()));
}

void DeviceTest::later(Milliseconds delay, const std::function<void()>& action)
{
    QTimer::singleShot(delay, Qt::PreciseTimer, QCoreApplication::instance(), action);
}

void DeviceTest::runWithTheReplyTo(Device& device, ScriptedBench& bench, const QByteArray& line,
                                   const std::function<void()>& action)
{
    // Event loops differ in what they still run in the turn of a reply: a timer that was due before it, or
    // one started by it. Whichever comes first serves.
    enum class Step { Waiting, Asked, Received, Done };
    const auto step = std::make_shared<Step>(Step::Waiting);
    const auto runOnce = [step, action] {
        if (*step == Step::Received) {
            *step = Step::Done;
            action();
        }
    };
    bench.setResponder([line, step, runOnce](const QByteArray& received) -> std::optional<Simulator::Answer> {
        if (received == line && *step == Step::Waiting) {
            *step = Step::Asked;
            later(1ms, runOnce);
            QThread::msleep(3); // so that the timer is due when the reply is there
        }
        return std::nullopt;
    });
    QObject::connect(&device, &Device::receivedDataFromDevice, &device, [step, runOnce] {
        if (*step == Step::Asked) {
            *step = Step::Received;
            later(1ms, runOnce);
            QThread::msleep(3);
        }
    });
}

DeviceTest::Milliseconds DeviceTest::cpuTime()
{
    return Milliseconds(qint64(std::clock()) * 1000 / CLOCKS_PER_SEC);
}

int DeviceTest::openFileCount()
{
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    return static_cast<int>(
        descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

QStringList DeviceTest::messages(const QStringList& lines)
{
    constexpr int messageStart = 30; // five characters of level, 23 of time, a blank behind each
    QStringList texts;
    for (const QString& line : lines)
        texts.append(line.mid(messageStart));
    return texts;
}

QStringList DeviceTest::errorMessages(const LogCapture& log)
{
    return messages(log.lines(QsLogging::LogLevel::Error));
}

DeviceTest::Announcements::Announcements(Device& device)
{
    const auto add = [this](const QString& text) { all.append(text); };
    const auto word = [](bool state) { return QString::fromLatin1(state ? "true" : "false"); };
    QObject::connect(&device, &Device::deviceConnected, &m_context,
                     [add](const QString& port) { add(QStringLiteral("connected ") + port); });
    QObject::connect(&device, &Device::deviceDisconnected, &m_context,
                     [add](const QString& port) { add(QStringLiteral("disconnected ") + port); });
    QObject::connect(&device, &Device::portError, &m_context,
                     [add](const QString& text) { add(QStringLiteral("error ") + text); });
    QObject::connect(&device, &Device::functionalModeChanged, &m_context,
                     [add](FunctionalMode_t mode) { add(QStringLiteral("mode %1").arg(int(mode))); });
    QObject::connect(&device, &Device::faultStateChanged, &m_context,
                     [add, word](bool state, const QString& text) {
                         add(QStringLiteral("fault %1 %2").arg(word(state), text));
                     });
    QObject::connect(&device, &Device::warningStateChanged, &m_context,
                     [add, word](bool state, const QString& text) {
                         add(QStringLiteral("warning %1 %2").arg(word(state), text));
                     });
    QObject::connect(&device, &Device::shutterChanged, &m_context, [add](const bool* states) {
        QString text = QStringLiteral("shutters ");
        for (int i = 0; i < channelCount; ++i)
            text += QLatin1Char(states[i] ? '1' : '0');
        add(text);
    });
    QObject::connect(&device, &Device::intensityChanged, &m_context, [add](const float* levels) {
        QString text = QStringLiteral("levels");
        for (int i = 0; i < channelCount; ++i)
            text += QLatin1Char(' ') + QString::number(double(levels[i]));
        add(text);
    });
    QObject::connect(&device, &Device::receivedDataFromDevice, &m_context,
                     [this](const QByteArray& chunk) { chunks.append(chunk); });
    QObject::connect(&device, &Device::invertedStateChanged, &m_context,
                     [add](const bool*) { add(QStringLiteral("inverted")); });
}

int DeviceTest::Announcements::count(const QString& prefix) const
{
    return static_cast<int>(std::count_if(
        all.begin(), all.end(), [&prefix](const QString& text) { return text.startsWith(prefix); }));
}

void DeviceTest::PluggedTest::begin()
{
    beginWatch();
    m_bench = std::make_unique<ScriptedBench>();
    QVERIFY(m_bench->wire().isPlugged());
    answerAsApplication(*m_bench);
}

void DeviceTest::PluggedTest::end()
{
    m_bench.reset();
    endWatch();
}

void DeviceTest::ConnectedTest::begin()
{
    PluggedTest::begin();
    connectDevice();
}

void DeviceTest::ConnectedTest::end()
{
    m_device.reset();
    PluggedTest::end();
}

void DeviceTest::ConnectedTest::connectDevice()
{
    m_device.reset();
    m_device = std::make_unique<Device>();
    QVERIFY(connectWithoutPoll(*m_device));
    m_bench->clearReceived();
}

void DeviceTest::PollTest::begin()
{
    PluggedTest::begin();
    m_device = std::make_unique<Device>();
    m_heard = std::make_unique<Announcements>(*m_device);
    QVERIFY(connectWithoutPoll(*m_device));
    // Four ticks bring the warnings round once; the countdown then stands at the beginning.
    do {
        m_bench->clearReceived();
        m_device->pollDevice();
    } while (m_bench->count("warn?") == 0);
    m_bench->clearReceived();
    m_heard->all.clear();
}

void DeviceTest::PollTest::end()
{
    m_heard.reset();
    m_device.reset();
    PluggedTest::end();
}

void DeviceTest::PollTest::connectAnew()
{
    m_device->selectPort({});
    QVERIFY(connectWithoutPoll(*m_device));
    m_bench->clearReceived();
    m_heard->all.clear();
}

QStringList DeviceTest::PollTest::tick()
{
    m_heard->all.clear();
    m_device->pollDevice();
    return m_heard->all;
}
