#include "Simulator/CommandArguments.h"
#include "Simulator/CommandBodies.h"
#include "Simulator/CommandInterpreter.h"
#include "Simulator/SimulatedIlluminator.h"

#include <algorithm>
#include <array>

// What happens to the cable and on it.

namespace Simulator {
namespace {
using Kind = WireFault::Kind;

Outcome plug(CommandInterpreter& interpreter, const QStringList& words)
{
    SimulatedIlluminator& illuminator = interpreter.illuminator();
    const bool plugged = words.isEmpty() ? illuminator.plug() : illuminator.plug(words.first());
    return plugged ? Outcome{} : Outcome::error(illuminator.wire().errorString());
}

Outcome unplug(CommandInterpreter& interpreter, const QStringList&)
{
    interpreter.illuminator().unplug();
    return {};
}

/// Adds the fault whose count is the word at `countAt`, where there is one.
Outcome addFault(CommandInterpreter& interpreter, WireFault fault, const QStringList& words, int countAt)
{
    fault.match = Arguments::match(words.first());
    if (words.size() > countAt) {
        const auto count = Arguments::count(words.at(countAt));
        if (!count) {
            return Outcome::badArgument(words.at(countAt));
        }
        fault.count = *count;
    }
    interpreter.illuminator().wire().addFault(fault);
    return {};
}

Outcome noReply(CommandInterpreter& interpreter, const QStringList& words)
{
    WireFault fault;
    fault.kind = Kind::NoReply;
    return addFault(interpreter, fault, words, 1);
}

Outcome lateReply(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto delay = Arguments::time(words.at(1));
    if (!delay) {
        return Outcome::badArgument(words.at(1));
    }
    WireFault fault;
    fault.kind = Kind::LateReply;
    fault.delay = *delay;
    return addFault(interpreter, fault, words, 2);
}

Outcome splitReply(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto position = Arguments::wholeNumber(words.at(1));
    const auto delay = Arguments::time(words.at(2));
    if (!position || !delay) {
        return Outcome::badArgument(words.at(position ? 2 : 1));
    }
    WireFault fault;
    fault.kind = Kind::SplitReply;
    fault.splitAt = *position;
    fault.delay = *delay;
    return addFault(interpreter, fault, words, 3);
}

Outcome noise(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto bytes = Arguments::hexBytes(words.at(1));
    if (!bytes) {
        return Outcome::badArgument(words.at(1));
    }
    WireFault fault;
    fault.kind = Kind::Noise;
    fault.bytes = *bytes;
    return addFault(interpreter, fault, words, 2);
}

Outcome zeroByte(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto position = Arguments::wholeNumber(words.at(1));
    if (!position) {
        return Outcome::badArgument(words.at(1));
    }
    WireFault fault;
    fault.kind = Kind::ZeroByte;
    fault.splitAt = *position;
    return addFault(interpreter, fault, words, 2);
}

struct TrapAction
{
    const char* name;
    Trap::Action action;
};

constexpr std::array<TrapAction, 5> kTrapActions{{
    {"noreply", Trap::Action::NoReply},
    {"refuse", Trap::Action::Refuse},
    {"garbage", Trap::Action::Garbage},
    {"power-off", Trap::Action::CutPower},
    {"unplug", Trap::Action::Unplug},
}};

Outcome trap(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto number = Arguments::wholeNumber(words.at(1));
    const auto* const action =
        std::find_if(kTrapActions.begin(), kTrapActions.end(), [&words](const TrapAction& candidate) {
            return words.at(2) == QLatin1String(candidate.name);
        });
    if (!number || *number == 0 || action == kTrapActions.end()) {
        return Outcome::badArgument(words.at(number && *number != 0 ? 2 : 1));
    }
    const bool carriesOut = words.size() > 3;
    const bool canBeDone = action->action != Trap::Action::Refuse;
    if (carriesOut && (!canBeDone || words.at(3) != QLatin1String("done"))) {
        return Outcome::badArgument(words.at(3));
    }
    interpreter.illuminator().setTrap({Arguments::match(words.first()), *number, action->action, carriesOut});
    return {};
}

Outcome lines(CommandInterpreter& interpreter, const QStringList&)
{
    return {true, QString::number(interpreter.illuminator().linesReceived()), {}, false};
}

Outcome good(CommandInterpreter& interpreter, const QStringList&)
{
    interpreter.illuminator().wire().clearFaults();
    interpreter.illuminator().wire().setStalled(false);
    interpreter.illuminator().clearTrap();
    return {};
}

Outcome stall(CommandInterpreter& interpreter, const QStringList& words)
{
    return withSwitch(words, [&interpreter](bool on) { interpreter.illuminator().wire().setStalled(on); });
}

Outcome paced(CommandInterpreter& interpreter, const QStringList& words)
{
    return withSwitch(words, [&interpreter](bool on) { interpreter.illuminator().wire().setPaced(on); });
}

Outcome say(CommandInterpreter& interpreter, const QStringList& words)
{
    interpreter.illuminator().wire().sendUnsolicited(asLine(Arguments::freeText(words).toUtf8()));
    return {};
}

Outcome babble(CommandInterpreter& interpreter, const QStringList& words)
{
    constexpr int kMaxBytes = 1024 * 1024;
    const auto count = Arguments::wholeNumber(words.first());
    if (!count || *count > kMaxBytes) {
        return Outcome::badArgument(words.first());
    }
    QByteArray bytes(*count, '\0');
    for (int i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 73 + 41); // no text, and the same every time
    }
    interpreter.illuminator().wire().sendUnsolicited(bytes);
    return {};
}

Outcome reenumerate(CommandInterpreter& interpreter, const QStringList& words)
{
    const auto on = Arguments::choice(words.first(), "on", "off");
    const auto time = words.size() > 1 ? Arguments::time(words.at(1)) : std::chrono::milliseconds::zero();
    if (!on || !time || (!*on && words.size() > 1)) {
        return Outcome::badArgument(words.value(on ? 1 : 0));
    }
    if (words.size() > 1) {
        interpreter.illuminator().setRestartTime(*time);
    }
    interpreter.illuminator().setReenumerates(*on, words.value(2));
    return {};
}

Outcome restartTime(CommandInterpreter& interpreter, const QStringList& words)
{
    return withTime(words, [&interpreter](std::chrono::milliseconds time) {
        interpreter.illuminator().setRestartTime(time);
    });
}
} // namespace

const std::vector<CommandInterpreter::Entry>& cableCommands()
{
    static const std::vector<CommandInterpreter::Entry> entries{
        {"unplug", "", "pulls the cable", 0, 0, unplug},
        {"plug", "[NAME]", "puts the cable in, under this port name", 0, 1, plug},
        {"replug", "[NAME]", "pulls the cable and puts it in again", 0, 1, plug},
        {"restart-time", "MS", "from the end of one image to the start of the next", 1, 1, restartTime},
        {"reenumerate", "on|off [MS [NAME]]", "whether the port goes and comes back with a restart", 1, 3,
         reenumerate},
        {"noreply", "MATCH [COUNT]", "answers are lost", 1, 2, noReply},
        {"late", "MATCH MS [COUNT]", "answers come later", 2, 3, lateReply},
        {"split", "MATCH BYTES MS [COUNT]", "the rest of an answer comes later", 3, 4, splitReply},
        {"noise", "MATCH HEXBYTES [COUNT]", "these bytes come instead of an answer", 2, 3, noise},
        {"zero", "MATCH POSITION [COUNT]", "a zero byte stands in an answer", 2, 3, zeroByte},
        {"trap", "MATCH NUMBER ACTION [done]",
         "at the NUMBERth line from now: noreply, refuse, garbage, power-off\n"
         "                                         or unplug; with \"done\" what it asks for is done first",
         3, 4, trap},
        {"lines", "", "tells how many lines the device has received", 0, 0, lines},
        {"stall", "on|off", "the line takes nothing from the computer", 1, 1, stall},
        {"good", "", "nothing goes wrong on the line any more, no trap is set", 0, 0, good},
        {"paced", "on|off", "bytes take their time as at 19200 baud", 1, 1, paced},
        {"say", "TEXT", "the device sends a line that nobody asked for", 1, -1, say},
        {"babble", "BYTES", "the device sends so many senseless bytes", 1, 1, babble},
    };
    return entries;
}

} // namespace Simulator
