#pragma once

#include "Simulator/ModelTypes.h"

#include <QByteArray>

#include <array>
#include <chrono>

namespace Simulator {

/// The lasers with everything that decides whether light comes out: mode, fault, levels and shutters with
/// both of their control sources, and the sleep timer. Channels are 0 to 7 throughout.
class LaserHead
{
public:
    LaserHead();

    // ---- power and mode
    /// The application starts: warm-up begins, all shutters closed, host levels at zero, no fault unless it
    /// is held. Sources, polarity, sleep timer and despeckler are remembered.
    void start();
    void stop(); ///< no application runs any more: dark, and no time counts
    Mode mode() const { return m_mode; }
    bool requestRun();  ///< false, and nothing changes, during warm-up and with a fault
    bool requestIdle(); ///< false, and nothing changes, during warm-up
    /// How long a start takes from now on; a warm-up under way ends after at most this time.
    void setWarmupDuration(std::chrono::milliseconds duration);
    void advance(std::chrono::milliseconds time);

    // ---- fault and warning
    /// Drops run to idle and closes all shutters. A held fault has a cause that goes on: acknowledging it
    /// does not help, only clearFault().
    void setFault(const QByteArray& text, bool held = false);
    void clearFault();       ///< the cause is gone, and the fault with it
    void acknowledgeFault(); ///< what the host can do about a fault
    bool hasFault() const { return !m_fault.isEmpty(); }
    QByteArray fault() const { return m_fault; }
    void setWarning(const QByteArray& text); ///< an empty text clears it
    QByteArray warning() const { return m_warning; }

    // ---- levels, in percent
    Source intensitySource() const { return m_intensitySource; }
    void setIntensitySource(Source source) { m_intensitySource = source; }
    /// Kept for later while the source is external. False, and nothing changes, outside 0 to 100.
    bool setHostLevel(int channel, double percent);
    /// What lies at the analogue input; a broken input may be anything, not-a-number included.
    void setAnalogInput(int channel, double percent) { m_analogInputs.at(channel) = percent; }
    double level(int channel) const; ///< the one in force

    // ---- shutters
    Source shutterSource() const { return m_shutterSource; }
    /// Coming back to the host finds all shutters closed.
    void setShutterSource(Source source);
    /// False, and nothing changes, while the source is external; opening also fails with a fault.
    bool setHostShutter(int channel, bool open);
    void setTtlInput(int channel, bool high) { m_ttlHigh.at(channel) = high; }
    void setTtlInverted(int channel, bool inverted) { m_ttlInverted.at(channel) = inverted; }
    bool isTtlInverted(int channel) const { return m_ttlInverted.at(channel); }
    bool isShutterOpen(int channel) const;
    bool isEmitting(int channel) const; ///< open in run mode

    // ---- the rest
    bool setSleepMinutes(int minutes); ///< 0 = never; false, and nothing changes, outside 0 to 99
    int sleepMinutes() const { return m_sleepMinutes; }
    void hostWasActive() { m_idleTime = std::chrono::milliseconds::zero(); } ///< restarts the sleep timer
    void setSpeckle(bool on) { m_speckle = on; }
    bool speckle() const { return m_speckle; }
    double hours(int channel) const;
    void setHours(int channel, double hours);
    /// Everything that is remembered over a start goes back to how the device was delivered; hours stay.
    void restoreDefaults();

private:
    void step(std::chrono::milliseconds time);
    std::chrono::milliseconds untilNextChange() const;
    void closeAllShutters() { m_hostOpen.fill(false); }

    Mode m_mode = Mode::Off;
    std::chrono::milliseconds m_warmupDuration;
    std::chrono::milliseconds m_warmupLeft{0};
    std::chrono::milliseconds m_idleTime{0}; // without a command, in run
    QByteArray m_fault;
    bool m_faultHeld = false;
    QByteArray m_warning;
    Source m_intensitySource = Source::Host;
    Source m_shutterSource = Source::Host;
    std::array<double, kChannelCount> m_hostLevels{};
    std::array<double, kChannelCount> m_analogInputs{};
    std::array<bool, kChannelCount> m_hostOpen{};
    std::array<bool, kChannelCount> m_ttlHigh{};
    std::array<bool, kChannelCount> m_ttlInverted{};
    std::array<std::chrono::milliseconds, kChannelCount> m_openTime{};
    int m_sleepMinutes = 0;
    bool m_speckle = true;
};

} // namespace Simulator
