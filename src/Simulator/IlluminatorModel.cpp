#include "Simulator/IlluminatorModel.h"

#include "Simulator/Commands.h"

#include <tuple>
#include <utility>

namespace Simulator {
namespace {
constexpr std::chrono::milliseconds kThinkTime{2};
constexpr const char* kPowerOn = "Power-on reset";

// The last versions that keep the configuration records in the older way. The loader updater goes by the
// application's, in whose place it lies.
constexpr Version kLastOlderLoader{1, 4, 6};
constexpr Version kLastOlderApplication{2, 6, 2};

bool isNewer(const Version& version, const Version& than)
{
    return std::tie(version.major, version.minor, version.patch) >
           std::tie(than.major, than.minor, than.patch);
}

bool mayCarryOut(Command::Where where, Image running)
{
    switch (where) {
    case Command::Where::Loader:
        return running == Image::Loader;
    case Command::Where::Loaders:
        return running != Image::Application;
    case Command::Where::EveryImage:
    case Command::Where::Application:
        break;
    }
    return true;
}
} // namespace

IlluminatorModel::IlluminatorModel()
{
    boot(m_firmware.imageToStart(), kPowerOn);
}

Reply IlluminatorModel::handle(const QByteArray& line)
{
    const QByteArray words = line.trimmed();
    if (!m_running || words.isEmpty()) {
        return {};
    }
    const Command* command = findCommand(words);
    Reply reply;
    if (!command) {
        reply = Answers::kUnknown;
    } else if (command->where == Command::Where::Application && *m_running != Image::Application) {
        return {}; // the loader and its updater know nothing of lasers and keep quiet about them
    } else if (!mayCarryOut(command->where, *m_running)) {
        reply = Answers::kRefused;
    } else {
        if (command->kind == Command::Kind::Change) {
            m_lasers.hostWasActive();
        }
        reply = command->carryOut(*this, words.mid(static_cast<int>(qstrlen(command->key))));
    }
    reply.thinkTime += kThinkTime;
    return reply;
}

void IlluminatorModel::advance(std::chrono::milliseconds time)
{
    m_lasers.advance(time);
    m_climate.advance(time, m_lasers.mode(), lightPercent());
    const bool updated = m_controller.advance(time, m_messages);
    if (updated && m_restartsAfterControllerUpdate) {
        m_restart = Restart{m_firmware.imageToStart(), "Laser controller updated", {}, true};
    }
}

double IlluminatorModel::lightPercent() const
{
    double sum = 0.0;
    for (int channel = 0; channel < kChannelCount; ++channel) {
        const double level = m_lasers.isEmitting(channel) ? m_lasers.level(channel) : 0.0;
        if (level > 0.0) { // leaves out not-a-number of a broken input
            sum += level;
        }
    }
    return sum;
}

RecordMemory::Layout IlluminatorModel::recordLayout() const
{
    const Image image = m_running.value_or(Image::Loader);
    const Version& lastOlder = image == Image::Loader ? kLastOlderLoader : kLastOlderApplication;
    return isNewer(m_firmware.version(image), lastOlder) ? RecordMemory::Layout::Newer
                                                         : RecordMemory::Layout::Older;
}

bool IlluminatorModel::programFlash(const std::optional<SRecordLine>& line)
{
    using Programmed = FirmwareStore::Programmed;
    if (!m_running) {
        return false;
    }
    const auto programmed = line ? m_firmware.program(*m_running, *line) : Programmed::Nothing;
    if (programmed == Programmed::Nothing) {
        m_firmware.missLine(*m_running);
    }
    const bool isNewApplication = programmed == Programmed::Image && *m_running == Image::Loader &&
                                  m_firmware.applicationPlace().image == Image::Application;
    if (isNewApplication && m_controllerUpdate > std::chrono::milliseconds::zero()) {
        m_controller.updateAtNextStart(m_controllerUpdate);
    }
    return programmed != Programmed::Nothing;
}

QList<QByteArray> IlluminatorModel::takeMessages()
{
    return std::exchange(m_messages, {});
}

std::optional<Restart> IlluminatorModel::takeRestart()
{
    return std::exchange(m_restart, std::nullopt);
}

void IlluminatorModel::shutDown()
{
    m_running.reset();
    m_messages.clear();
    m_restart.reset();
    m_lasers.stop();
    m_controller.applicationStopped();
    m_firmware.breakOffProgramming();
}

void IlluminatorModel::boot(Image image, const QByteArray& cause)
{
    shutDown();
    m_running = image;
    m_resetCause = cause;
    if (image == Image::Application) {
        m_lasers.start();
        m_controller.applicationStarted();
    }
}

Restart IlluminatorModel::powerCycle() const
{
    return {m_firmware.imageToStart(), kPowerOn, {}, true};
}

} // namespace Simulator
