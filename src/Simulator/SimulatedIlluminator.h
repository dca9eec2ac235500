#pragma once

#include "Simulator/IlluminatorModel.h"
#include "Simulator/LineTrap.h"
#include "Simulator/Wire.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <array>
#include <chrono>
#include <optional>

namespace Simulator {

/// What can be seen of the illuminator from outside.
struct IlluminatorState
{
    bool plugged = false;
    std::optional<Image> image; ///< none while it restarts
    Mode mode = Mode::Off;
    QByteArray fault;   ///< empty = none
    QByteArray warning; ///< empty = none
    Source intensitySource = Source::Host;
    Source shutterSource = Source::Host;
    std::array<bool, kChannelCount> open{};
    std::array<QByteArray, kChannelCount> level; ///< percent with two decimals, "nan" included
};
bool operator==(const IlluminatorState& left, const IlluminatorState& right);

/// An illuminator on the desk: a model at the end of a wire, with its clock running. Made switched on and
/// not plugged in. Like the wire it needs an event loop, and must be used on the thread that made it.
class SimulatedIlluminator : public QObject
{
    Q_OBJECT

public:
    explicit SimulatedIlluminator(QObject* parent = nullptr);
    ~SimulatedIlluminator() override;

    Wire& wire() { return m_wire; }
    const Wire& wire() const { return m_wire; }
    /// To look at it, and to prepare it. Changes made here are announced within one tick of the clock.
    IlluminatorModel& model() { return m_model; }
    IlluminatorState state() const;

    // ---- the cable
    /// False, with the cause in wire().errorString(), when the system gives no port. While the device is
    /// away from the bus the port appears once it is back.
    bool plug(const QString& name = QStringLiteral("ttyVYR0"));
    void unplug(); ///< power stays on
    bool isPlugged() const { return m_wire.isPlugged(); }
    QString portName() const { return m_wire.portName(); }

    // ---- time
    /// The device's clock runs this many times faster than the wall's; restarts and the cable do not.
    void setTimeScale(double scale);
    void passTime(std::chrono::milliseconds time); ///< at once, of the device's clock

    // ---- restarts
    /// Wall-clock time from the end of one image to the beginning of the next.
    void setRestartTime(std::chrono::milliseconds time) { m_restartTime = time; }
    /// With a restart the port goes away and comes back, under `name` when one is given.
    void setReenumerates(bool reenumerates, const QString& name = QString());
    void powerCycle(); ///< off, and on again after the restart time; the port goes away meanwhile
    /// Nothing is left but what lies in FLASH and in the records. The port is away until the power is back,
    /// and for the restart time that follows.
    void cutPower();
    void restorePower(); ///< does nothing while the power is on
    bool isPowered() const { return m_powered; }
    /// Puts the image into its place and restarts into it, as a power cycle does.
    void startImage(Image image);

    // ---- what goes wrong inside at a certain line
    void setTrap(const Trap& trap) { m_trap.set(trap); } ///< in place of one that is set
    void clearTrap() { m_trap.clear(); }
    bool isTrapSet() const { return m_trap.isSet(); }
    /// The lines that the device has heard since it was made, without the blank ones.
    int linesReceived() const { return m_linesReceived; }

    // ---- what a person at the device can cause; channels are 0 to 7
    void setFault(const QString& text, bool held = false);
    void clearFault();
    void setWarning(const QString& text);
    void clearWarning();
    void setExternalIntensity(int channel, double percent);
    void setTtlInput(int channel, bool high);
    void setHours(int channel, double hours);

signals:
    void stateChanged();                     ///< state() differs from what it was when this was last emitted
    void restarted();                        ///< an image has begun to run
    void trapSprung(const QByteArray& line); ///< at this line; whatever the trap does is done

private:
    Answer answer(const QByteArray& line);
    Answer answerWith(const Reply& reply);
    Answer answerTrapped(const QByteArray& line, const Trap& trap);
    void tick();
    void runClock();
    void speakUp();
    void beginRestart(const Restart& restart, const QByteArray& line);
    void finishRestart();
    void announce();

    Wire m_wire;
    IlluminatorModel m_model;
    QTimer m_ticks;
    QElapsedTimer m_sinceTick;
    double m_timeScale = 1.0;
    std::chrono::duration<double, std::milli> m_leftOver{0.0}; // device time below one millisecond

    QTimer m_restartTimer;
    std::chrono::milliseconds m_restartTime{1500};
    std::optional<Restart> m_announcedRestart; // begins when the answer to its line has left
    std::optional<Restart> m_restart;          // under way
    QByteArray m_restartLine;
    bool m_powered = true;
    LineTrap m_trap;
    int m_linesReceived = 0;
    bool m_reenumerates = false;
    QString m_nameAfterRestart;
    bool m_awayFromBus = false;
    bool m_cablePlugged = false;
    QString m_cableName;
    IlluminatorState m_announced;
};

} // namespace Simulator
