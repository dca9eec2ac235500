#include "Simulator/CommandArguments.h"
#include "Simulator/CommandBodies.h"
#include "Simulator/CommandInterpreter.h"
#include "Simulator/RecordContents.h"
#include "Simulator/SimulatedIlluminator.h"

#include <algorithm>
#include <array>

// What happens in and at the illuminator.

namespace Simulator {
namespace {
Outcome fault(CommandInterpreter& interpreter, const QStringList& words)
{
    interpreter.illuminator().setFault(Arguments::freeText(words));
    return {};
}

Outcome heldFault(CommandInterpreter& interpreter, const QStringList& words)
{
    interpreter.illuminator().setFault(Arguments::freeText(words), true);
    return {};
}

Outcome warn(CommandInterpreter& interpreter, const QStringList& words)
{
    interpreter.illuminator().setWarning(Arguments::freeText(words));
    return {};
}

Outcome clear(CommandInterpreter& interpreter, const QStringList& words)
{
    const QString what = words.value(0);
    if (!what.isEmpty() && !Arguments::choice(what, "fault", "warning")) {
        return Outcome::badArgument(what);
    }
    if (what != QLatin1String("warning")) {
        interpreter.illuminator().clearFault();
    }
    if (what != QLatin1String("fault")) {
        interpreter.illuminator().clearWarning();
    }
    return {};
}

Outcome analog(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto channel = Arguments::channel(words.at(0));
    const auto percent = Arguments::number(words.at(1));
    if (!channel || !percent) {
        return Outcome::badArgument(words.at(channel ? 1 : 0));
    }
    interpreter.illuminator().setExternalIntensity(*channel, *percent);
    return {};
}

Outcome ttl(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto channel = Arguments::channel(words.at(0));
    const auto high = Arguments::choice(words.at(1), "high", "low");
    if (!channel || !high) {
        return Outcome::badArgument(words.at(channel ? 1 : 0));
    }
    interpreter.illuminator().setTtlInput(*channel, *high);
    return {};
}

Outcome hours(CommandInterpreter& interpreter, const QStringList& words)
{
    constexpr double kMaxHours = 1e6;
    const auto channel = Arguments::channel(words.at(0));
    const auto hours = Arguments::number(words.at(1));
    if (!channel || !hours || !(*hours >= 0.0 && *hours <= kMaxHours)) {
        return Outcome::badArgument(words.at(channel ? 1 : 0));
    }
    interpreter.illuminator().setHours(*channel, *hours);
    return {};
}

Outcome warmup(CommandInterpreter& interpreter, const QStringList& words)
{
    return withTime(words, [&interpreter](std::chrono::milliseconds time) {
        interpreter.illuminator().model().lasers().setWarmupDuration(time);
    });
}

Outcome image(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto image = Arguments::image(words.first());
    if (!image) {
        return Outcome::badArgument(words.first());
    }
    interpreter.illuminator().startImage(*image);
    return {};
}

Outcome version(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto image = Arguments::image(words.at(0));
    const auto version = versionFromText(words.at(1).toLatin1());
    if (!image || !version) {
        return Outcome::badArgument(words.at(image ? 1 : 0));
    }
    interpreter.illuminator().model().firmware().setVersion(*image, *version);
    return {};
}

Outcome checksum(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto loader = Arguments::choice(words.at(0), "loader", "application");
    const auto valid = Arguments::choice(words.at(1), "good", "bad");
    if (!loader || !valid) {
        return Outcome::badArgument(words.at(loader ? 1 : 0));
    }
    FirmwareStore& firmware = interpreter.illuminator().model().firmware();
    if (*loader) {
        firmware.setLoaderCrcValid(*valid);
    } else {
        firmware.setApplicationCrcValid(*valid);
    }
    return {};
}

Outcome controllerUpdate(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto time = Arguments::time(words.at(0));
    const auto isNext =
        words.size() > 1 ? Arguments::choice(words.at(1), "next", "programmed") : std::optional(false);
    if (!time || !isNext) {
        return Outcome::badArgument(words.at(time ? 1 : 0));
    }
    IlluminatorModel& model = interpreter.illuminator().model();
    if (words.size() == 1) {
        model.controller().startUpdate(*time);
    } else if (*isNext) {
        model.controller().updateAtNextStart(*time);
    } else {
        model.setControllerUpdateAfterProgramming(*time);
    }
    return {};
}

struct RecordState
{
    const char* name;
    QByteArray (*systemContents)(); ///< null: they stay as they are
    QByteArray (*channelContents)();
    bool valid;
    bool isShort;
};

constexpr std::array<RecordState, 5> kRecordStates{{
    {"invalid", nullptr, nullptr, false, false},
    {"valid", nullptr, nullptr, true, false},
    {"short", nullptr, nullptr, true, true},
    {"odd", RecordContents::oddSystem, RecordContents::oddChannels, true, false},
    {"factory", RecordContents::factorySystem, RecordContents::factoryChannels, true, false},
}};

Outcome record(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto isSystem = Arguments::choice(words.at(0), "system", "channel");
    const auto* const state =
        std::find_if(kRecordStates.begin(), kRecordStates.end(), [&words](const RecordState& candidate) {
            return words.at(1) == QLatin1String(candidate.name);
        });
    if (!isSystem || state == kRecordStates.end()) {
        return Outcome::badArgument(words.at(isSystem ? 1 : 0));
    }
    RecordMemory& records = interpreter.illuminator().model().records();
    const auto which = *isSystem ? RecordMemory::Record::System : RecordMemory::Record::Channels;
    if (auto* const contents = *isSystem ? state->systemContents : state->channelContents) {
        records.setBytes(which, contents());
    }
    records.setValid(which, state->valid);
    records.setShort(which, state->isShort);
    return {};
}

Outcome powerCycle(CommandInterpreter& interpreter, const QStringList&)
{
    interpreter.illuminator().powerCycle();
    return {};
}

Outcome power(CommandInterpreter& interpreter, const QStringList& words)
{
    return withSwitch(words, [&interpreter](bool on) {
        if (on) {
            interpreter.illuminator().restorePower();
        } else {
            interpreter.illuminator().cutPower();
        }
    });
}

Outcome flashTime(CommandInterpreter& interpreter, const QStringList& words)
{
    return withTime(words, [&interpreter](std::chrono::milliseconds time) {
        interpreter.illuminator().model().setFlashWriteTime(time);
    });
}

Outcome speed(CommandInterpreter& interpreter, const QStringList& words)
{
    constexpr double kMaxSpeed = 100000.0;
    const auto factor = Arguments::number(words.first());
    if (!factor || !(*factor >= 0.0 && *factor <= kMaxSpeed)) {
        return Outcome::badArgument(words.first());
    }
    interpreter.illuminator().setTimeScale(*factor);
    return {};
}

Outcome pass(CommandInterpreter& interpreter, const QStringList& words)
{
    return withTime(
        words, [&interpreter](std::chrono::milliseconds time) { interpreter.illuminator().passTime(time); });
}
} // namespace

const std::vector<CommandInterpreter::Entry>& deviceCommands()
{
    static const std::vector<CommandInterpreter::Entry> entries{
        {"fault", "TEXT", "a fault that the host can clear", 1, -1, fault},
        {"held-fault", "TEXT", "a fault that stays until \"clear\" here", 1, -1, heldFault},
        {"warn", "TEXT", "a warning", 1, -1, warn},
        {"clear", "[fault|warning]", "takes back the fault, the warning or both", 0, 1, clear},
        {"analog", "CHANNEL PERCENT", "the analogue intensity input; nan for a broken one", 2, 2, analog},
        {"ttl", "CHANNEL high|low", "the digital shutter input", 2, 2, ttl},
        {"hours", "CHANNEL HOURS", "the operating hours counted so far", 2, 2, hours},
        {"warmup", "MS", "how long a warm-up takes", 1, 1, warmup},
        {"image", "loader|updater|application", "puts the image in its place and starts it", 1, 1, image},
        {"version", "IMAGE MAJOR.MINOR.PATCH", "the version of an image", 2, 2, version},
        {"checksum", "loader|application good|bad", "of what lies in that place", 2, 2, checksum},
        {"flash-time", "MS", "how long a line of firmware takes to be written", 1, 1, flashTime},
        {"controller-update", "MS [next|programmed]",
         "reprograms the laser controller: now, after the next start, or\n"
         "                                         whenever an application was programmed (0: not then)",
         1, 2, controllerUpdate},
        {"record", "system|channel STATE", "valid, invalid, short, odd, or factory for a good one", 2, 2,
         record},
        {"power", "on|off", "of the device; off keeps the firmware and the records alone", 1, 1, power},
        {"power-cycle", "", "off and on again", 0, 0, powerCycle},
        {"speed", "FACTOR", "how fast the device's clock runs", 1, 1, speed},
        {"pass", "MS", "lets time of the device's clock pass at once", 1, 1, pass},
    };
    return entries;
}

} // namespace Simulator
