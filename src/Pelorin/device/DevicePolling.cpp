#include "QsLog2_1_0/QsLog.h"
#include "device/DevicePrivate.h"

#include <QScopedValueRollback>

#include <array>

namespace {
constexpr FirmwareVersion lastVersionWithoutWarnings{1, 1, 14};
constexpr int ticksBetweenWarnings = 3;

/// Shared by all devices of the process.
struct ProcessWide
{
    bool pollInProgress = false;
    QString lastFaultMessage;
    QString lastWarningMessage;
    int warningCountdown = 0;
};

ProcessWide& shared()
{
    static ProcessWide state;
    return state;
}

const char* wordFor(bool state)
{
    return state ? "true" : "false";
}

/// True for a state worth telling: a new one, or an active one that listeners have not heard of yet.
bool isNews(const StateReport& report, bool knownState, const QString& knownMessage, bool unheard)
{
    const bool changed = report.active != knownState || report.message != knownMessage;
    return changed || (unheard && report.active);
}
} // namespace

void Device::setPolling(bool on)
{
    d->poll.enabled = on;
    if (on && isOpen() && d->mayPoll())
        d->pollTimer.start(Private::pollInterval);
    else
        d->pollTimer.stop();
}

void Device::pollDevice()
{
    const bool isOvertaking = shared().pollInProgress;
    if (isOvertaking && !d->isHeldUp())
        return;
    const QScopedValueRollback<bool> guard(shared().pollInProgress, true);
    if (d->isLineBusy() || !isOpen())
        return;
    if (isOvertaking)
        ++d->generation;
    // A timer does not fire inside its own slot unless it was started anew.
    if (d->pollTimer.isActive())
        d->pollTimer.start();
    QS_TRACE() << "** Start Poll **";
    d->runPollTick();
    QS_TRACE() << "** End Poll **";
}

/// Stops between two steps when the connection that the tick was for is gone, or another tick has taken its
/// place.
void Device::Private::runPollTick()
{
    using Step = void (*)(Private&);
    constexpr std::array<Step, 7> steps{
        [](Private& link) { link.q->drainQueue(); },      [](Private& link) { link.pollShutters(); },
        [](Private& link) { link.pollFault(); },          [](Private& link) { link.q->drainQueue(); },
        [](Private& link) { link.pollFunctionalMode(); }, [](Private& link) { link.pollIntensities(); },
        [](Private& link) { link.pollWarning(); },
    };
    const QScopedValueRollback<int> tick(poll.generation, generation);
    for (const Step step : steps) {
        step(*this);
        if (generation != poll.generation)
            return;
    }
}

/// True when the query succeeded, and what it told is still this tick's to tell.
bool Device::Private::isTold(int code) const
{
    return code == DeviceResult::Ok && generation == poll.generation;
}

void Device::Private::pollShutters()
{
    ShutterStates states = poll.shutters;
    if (!isTold(q->getShutterStates(states)))
        return;
    const bool changed = states != poll.shutters;
    poll.shutters = states;
    if (changed || poll.forceEmit)
        emit q->shutterChanged(poll.shutters.data());
}

void Device::Private::pollFault()
{
    StateReport report;
    if (!isTold(q->getFaultState(report)))
        return;
    const bool news = isNews(report, poll.fault, shared().lastFaultMessage, poll.forceEmit);
    // Kept before it is told: a listener may run the event loop.
    shared().lastFaultMessage = report.message;
    if (!news)
        return;
    poll.fault = report.active;
    QS_TRACE() << "Device sending change in fault state =" << wordFor(report.active);
    emit q->faultStateChanged(report.active, report.message);
}

void Device::Private::pollFunctionalMode()
{
    FunctionalMode_t mode = poll.functionalMode;
    if (!isTold(q->getFunctionalMode(mode)))
        return;
    if (mode == poll.functionalMode && !poll.forceEmit)
        return;
    poll.functionalMode = mode;
    QS_TRACE() << "Device sending change in functional mode =" << int(mode);
    emit q->functionalModeChanged(mode);
}

/// The levels that this computer set are not read back.
void Device::Private::pollIntensities()
{
    ControlSource source{};
    poll.sourceKnown = isTold(q->getIntensityMode(source));
    IntensityLevels levels = poll.intensities;
    if (!poll.sourceKnown || source != ControlSource::External || !isTold(q->getIntensityLevels(levels)))
        return;
    // A level that is no number equals nothing, itself included, and so is always told.
    const bool changed = levels != poll.intensities;
    poll.intensities = levels;
    if (changed || poll.forceEmit)
        emit q->intensityChanged(poll.intensities.data());
}

void Device::Private::pollWarning()
{
    const bool isAsked = identity.running.version > lastVersionWithoutWarnings &&
                         ++shared().warningCountdown > ticksBetweenWarnings;
    if (!isAsked) {
        if (poll.sourceKnown)
            poll.forceEmit = false;
        return;
    }
    shared().warningCountdown = 0;
    StateReport report;
    if (!isTold(q->getWarningState(report)))
        return;
    const bool news = isNews(report, poll.warning, shared().lastWarningMessage, !poll.warningReported);
    shared().lastWarningMessage = report.message;
    poll.warningReported = true;
    poll.forceEmit = false;
    if (!news)
        return;
    poll.warning = report.active;
    QS_TRACE() << "Device sending change in warning state =" << wordFor(report.active);
    emit q->warningStateChanged(report.active, report.message);
}
