#include "Simulator/CommandBodies.h"
#include "Simulator/SimulatedIlluminator.h"

// Commands that tell, wait and end.

namespace Simulator {
namespace {
QString word(Mode mode)
{
    switch (mode) {
    case Mode::Off:
        return QStringLiteral("off");
    case Mode::Warmup:
        return QStringLiteral("warm-up");
    case Mode::Idle:
        return QStringLiteral("idle");
    case Mode::Run:
        return QStringLiteral("run");
    }
    return {};
}

QString word(Source source)
{
    return source == Source::Host ? QStringLiteral("host") : QStringLiteral("external");
}

QString orNone(const QByteArray& text)
{
    return text.isEmpty() ? QStringLiteral("none") : QString::fromUtf8(text);
}

Outcome help(CommandInterpreter&, const QStringList&)
{
    return {true, CommandInterpreter::help(), {}, false};
}

Outcome status(CommandInterpreter& interpreter, const QStringList&)
{
    const IlluminatorState state = interpreter.illuminator().state();
    const QString port = interpreter.illuminator().portName();
    const QByteArray image = state.image ? imageName(*state.image) : QByteArray("restarting");
    QStringList lines{QStringLiteral("port: ") + (port.isEmpty() ? QStringLiteral("unplugged") : port),
                      QStringLiteral("image: ") + QString::fromLatin1(image),
                      QStringLiteral("mode: ") + word(state.mode),
                      QStringLiteral("fault: ") + orNone(state.fault),
                      QStringLiteral("warning: ") + orNone(state.warning),
                      QStringLiteral("intensity from: ") + word(state.intensitySource),
                      QStringLiteral("shutters from: ") + word(state.shutterSource)};
    for (int channel = 0; channel < kChannelCount; ++channel) {
        lines.append(QStringLiteral("%1: %2 %, %3")
                         .arg(QLatin1String(kChannelNames.at(channel)),
                              QString::fromLatin1(state.level.at(channel)),
                              state.open.at(channel) ? QStringLiteral("open") : QStringLiteral("closed")));
    }
    return {true, lines.join(QLatin1Char('\n')), {}, false};
}

Outcome log(CommandInterpreter& interpreter, const QStringList& words)
{
    return withSwitch(words, [&interpreter](bool on) { interpreter.setTrafficLog(on); });
}

Outcome wait(CommandInterpreter&, const QStringList& words)
{
    std::chrono::milliseconds due{0};
    Outcome outcome = withTime(words, [&due](std::chrono::milliseconds time) { due = time; });
    outcome.wait = due;
    return outcome;
}

Outcome quit(CommandInterpreter&, const QStringList&)
{
    return {true, {}, {}, true};
}
} // namespace

const std::vector<CommandInterpreter::Entry>& sceneCommands()
{
    static const std::vector<CommandInterpreter::Entry> entries{
        {"help", "", "this list", 0, 0, help},
        {"status", "", "shows the illuminator's state", 0, 0, status},
        {"log", "on|off", "shows what goes over the line: -> to the device, <- from it", 1, 1, log},
        {"wait", "MS", "holds up the commands that follow", 1, 1, wait},
        {"quit", "", "ends the simulator", 0, 0, quit},
    };
    return entries;
}

} // namespace Simulator
