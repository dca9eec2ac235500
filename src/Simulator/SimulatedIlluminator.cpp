#include "Simulator/SimulatedIlluminator.h"

#include <tuple>
#include <utility>

namespace Simulator {
namespace {
using std::chrono::milliseconds;
constexpr milliseconds kTick{50};
constexpr const char* kGarbage = "\x1b\x9c\xf7~\x02\n";

auto asTuple(const IlluminatorState& state)
{
    return std::tie(state.plugged, state.image, state.mode, state.fault, state.warning, state.intensitySource,
                    state.shutterSource, state.open, state.level);
}

/// The answer of a line that restarts the device comes from the image that it starts.
void replaceAnswer(Reply& reply, const QByteArray& text)
{
    const bool isAnsweredLater = reply.restart && !reply.restart->announcement.isEmpty();
    (isAnsweredLater ? reply.restart->announcement : reply.text) = text;
}
} // namespace

bool operator==(const IlluminatorState& left, const IlluminatorState& right)
{
    return asTuple(left) == asTuple(right);
}

SimulatedIlluminator::SimulatedIlluminator(QObject* parent) : QObject(parent), m_announced(state())
{
    m_wire.setHandler([this](const QByteArray& line) { return answer(line); });
    connect(&m_wire, &Wire::answerFinished, this, [this](const QByteArray& line) {
        if (const auto restart = std::exchange(m_announcedRestart, std::nullopt)) {
            beginRestart(*restart, line);
        }
    });
    connect(&m_wire, &Wire::pluggedChanged, this, [this](bool plugged) {
        // An answer that can no longer leave does not keep the device from what it was about to do.
        const auto restart = plugged ? std::nullopt : std::exchange(m_announcedRestart, std::nullopt);
        if (restart) {
            beginRestart(*restart, {});
        }
        announce();
    });
    m_restartTimer.setSingleShot(true);
    m_restartTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_restartTimer, &QTimer::timeout, this, &SimulatedIlluminator::finishRestart);
    connect(&m_ticks, &QTimer::timeout, this, &SimulatedIlluminator::tick);
    m_sinceTick.start();
    m_ticks.start(kTick);
}

SimulatedIlluminator::~SimulatedIlluminator()
{
    // The wire reports its end to nobody: this object is half gone by then.
    m_wire.disconnect(this);
}

IlluminatorState SimulatedIlluminator::state() const
{
    const LaserHead& lasers = m_model.lasers();
    IlluminatorState state;
    state.plugged = m_wire.isPlugged();
    state.image = m_model.runningImage();
    state.mode = lasers.mode();
    state.fault = lasers.fault();
    state.warning = lasers.warning();
    state.intensitySource = lasers.intensitySource();
    state.shutterSource = lasers.shutterSource();
    for (int channel = 0; channel < kChannelCount; ++channel) {
        state.open.at(channel) = lasers.isShutterOpen(channel);
        state.level.at(channel) = QByteArray::number(lasers.level(channel), 'f', 2);
    }
    return state;
}

bool SimulatedIlluminator::plug(const QString& name)
{
    m_cablePlugged = true;
    m_cableName = name;
    if (m_awayFromBus) {
        return true;
    }
    m_cablePlugged = m_wire.plug(name);
    return m_cablePlugged;
}

void SimulatedIlluminator::unplug()
{
    m_cablePlugged = false;
    m_wire.unplug();
}

void SimulatedIlluminator::setTimeScale(double scale)
{
    runClock();
    m_timeScale = scale;
}

void SimulatedIlluminator::passTime(milliseconds time)
{
    runClock();
    m_model.advance(time);
    speakUp();
}

void SimulatedIlluminator::setReenumerates(bool reenumerates, const QString& name)
{
    m_reenumerates = reenumerates;
    m_nameAfterRestart = name;
}

void SimulatedIlluminator::powerCycle()
{
    beginRestart(m_model.powerCycle(), {});
}

void SimulatedIlluminator::cutPower()
{
    m_powered = false;
    m_restartTimer.stop();
    m_restart.reset();
    m_announcedRestart.reset();
    m_model.shutDown();
    m_awayFromBus = true;
    m_wire.unplug();
    announce();
}

void SimulatedIlluminator::restorePower()
{
    if (!m_powered) {
        powerCycle();
    }
}

void SimulatedIlluminator::startImage(Image image)
{
    m_model.firmware().store(image);
    Restart restart = m_model.powerCycle();
    restart.image = image;
    beginRestart(restart, {});
}

Answer SimulatedIlluminator::answer(const QByteArray& line)
{
    runClock();
    m_linesReceived += line.trimmed().isEmpty() ? 0 : 1;
    if (const auto trap = m_trap.strike(line)) {
        return answerTrapped(line, *trap);
    }
    return answerWith(m_model.handle(line));
}

Answer SimulatedIlluminator::answerWith(const Reply& reply)
{
    if (reply.restart) {
        m_announcedRestart = reply.restart;
    }
    announce();
    // An unpaced line is for hurrying; a device that takes its time would spoil that.
    return {reply.text, m_wire.isPaced() ? reply.thinkTime : milliseconds::zero()};
}

Answer SimulatedIlluminator::answerTrapped(const QByteArray& line, const Trap& trap)
{
    Reply reply;
    if (trap.carriesOut && trap.action != Trap::Action::Refuse) {
        reply = m_model.handle(line);
    }
    switch (trap.action) {
    case Trap::Action::NoReply:
        replaceAnswer(reply, {});
        break;
    case Trap::Action::Refuse:
        replaceAnswer(reply, Answers::kRefused);
        break;
    case Trap::Action::Garbage:
        replaceAnswer(reply, kGarbage);
        break;
    case Trap::Action::CutPower:
        cutPower();
        reply = {};
        break;
    case Trap::Action::Unplug:
        m_announcedRestart = reply.restart;
        unplug();
        reply = {};
        break;
    }
    Answer answer = answerWith(reply);
    emit trapSprung(line);
    return answer;
}

void SimulatedIlluminator::tick()
{
    runClock();
    speakUp();
}

void SimulatedIlluminator::runClock()
{
    using Fraction = std::chrono::duration<double, std::milli>;
    m_leftOver += Fraction(static_cast<double>(m_sinceTick.nsecsElapsed()) / 1e6 * m_timeScale);
    m_sinceTick.start();
    const auto whole = std::chrono::floor<milliseconds>(m_leftOver);
    m_leftOver -= whole;
    m_model.advance(whole);
}

/// Tells what the passing of time has brought about.
void SimulatedIlluminator::speakUp()
{
    const auto messages = m_model.takeMessages();
    for (const QByteArray& message : messages) {
        m_wire.sendUnsolicited(message);
    }
    if (const auto restart = m_model.takeRestart()) {
        beginRestart(*restart, {});
    }
    announce();
}

void SimulatedIlluminator::beginRestart(const Restart& restart, const QByteArray& line)
{
    m_announcedRestart.reset();
    m_restart = restart;
    m_restartLine = line;
    m_model.shutDown();
    if (restart.dropsPort || m_reenumerates) {
        m_awayFromBus = true;
        m_wire.unplug();
    }
    m_powered = true;
    m_restartTimer.start(m_restartTime);
    announce();
}

void SimulatedIlluminator::finishRestart()
{
    const Restart restart = *std::exchange(m_restart, std::nullopt);
    runClock(); // the time of the restart is nothing to the image that starts now
    m_model.boot(restart.image, restart.cause);
    if (std::exchange(m_awayFromBus, false)) {
        if (!m_nameAfterRestart.isEmpty()) {
            m_cableName = m_nameAfterRestart;
        }
        if (m_cablePlugged) {
            m_cablePlugged = m_wire.plug(m_cableName);
        }
    } else if (!restart.announcement.isEmpty()) {
        m_wire.sendAnswer(m_restartLine, {restart.announcement, milliseconds::zero()});
    }
    announce();
    emit restarted();
}

void SimulatedIlluminator::announce()
{
    const IlluminatorState now = state();
    if (now == m_announced) {
        return;
    }
    m_announced = now;
    emit stateChanged();
}

void SimulatedIlluminator::setFault(const QString& text, bool held)
{
    m_model.lasers().setFault(text.toUtf8(), held);
    announce();
}

void SimulatedIlluminator::clearFault()
{
    m_model.lasers().clearFault();
    announce();
}

void SimulatedIlluminator::setWarning(const QString& text)
{
    m_model.lasers().setWarning(text.toUtf8());
    announce();
}

void SimulatedIlluminator::clearWarning()
{
    m_model.lasers().setWarning({});
    announce();
}

void SimulatedIlluminator::setExternalIntensity(int channel, double percent)
{
    m_model.lasers().setAnalogInput(channel, percent);
    announce();
}

void SimulatedIlluminator::setTtlInput(int channel, bool high)
{
    m_model.lasers().setTtlInput(channel, high);
    announce();
}

void SimulatedIlluminator::setHours(int channel, double hours)
{
    m_model.lasers().setHours(channel, hours);
}

} // namespace Simulator
