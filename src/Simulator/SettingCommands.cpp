#include "Simulator/Commands.h"
#include "Simulator/IlluminatorModel.h"

#include <optional>

// What a host changes while the application runs.

namespace Simulator {
namespace {
Reply doneIf(bool done)
{
    return done ? Answers::kDone : Answers::kRefused;
}

/// The "405=12.50" of a command to one channel.
struct ChannelArgument
{
    int channel = 0;
    QByteArray value;
};

std::optional<ChannelArgument> channelArgument(const QByteArray& argument)
{
    const auto equals = argument.indexOf('=');
    const auto channel = channelByName(argument.left(equals));
    if (equals < 0 || !channel) {
        return std::nullopt;
    }
    return ChannelArgument{*channel, argument.mid(equals + 1)};
}

/// One of two words; the one meant by `yes` gives true.
std::optional<bool> choice(const QByteArray& word, const char* yes, const char* no)
{
    if (word == yes) {
        return true;
    }
    if (word == no) {
        return false;
    }
    return std::nullopt;
}

Reply setLevel(IlluminatorModel& model, const QByteArray& argument)
{
    const auto target = channelArgument(argument);
    bool ok = false;
    const double percent = target ? target->value.toDouble(&ok) : 0.0;
    return doneIf(ok && model.lasers().setHostLevel(target->channel, percent));
}

Reply setShutter(IlluminatorModel& model, const QByteArray& argument)
{
    const auto target = channelArgument(argument);
    const auto open = target ? choice(target->value, "1", "0") : std::nullopt;
    return doneIf(open && model.lasers().setHostShutter(target->channel, *open));
}

Reply setTtlInversion(IlluminatorModel& model, const QByteArray& argument)
{
    const auto target = channelArgument(argument);
    const auto inverted = target ? choice(target->value, "1", "0") : std::nullopt;
    if (inverted) {
        model.lasers().setTtlInverted(target->channel, *inverted);
    }
    return doneIf(inverted.has_value());
}

Reply setIntensitySource(IlluminatorModel& model, const QByteArray& argument)
{
    const auto host = choice(argument, "pc", "ext");
    if (host) {
        model.lasers().setIntensitySource(*host ? Source::Host : Source::External);
    }
    return doneIf(host.has_value());
}

Reply setShutterSource(IlluminatorModel& model, const QByteArray& argument)
{
    const auto host = choice(argument, "pc", "ext");
    if (host) {
        model.lasers().setShutterSource(*host ? Source::Host : Source::External);
    }
    return doneIf(host.has_value());
}

Reply setSpeckle(IlluminatorModel& model, const QByteArray& argument)
{
    const auto on = choice(argument, "on", "off");
    if (on) {
        model.lasers().setSpeckle(*on);
    }
    return doneIf(on.has_value());
}

Reply setSleep(IlluminatorModel& model, const QByteArray& argument)
{
    bool ok = false;
    const int minutes = argument.toInt(&ok);
    return doneIf(ok && model.lasers().setSleepMinutes(minutes));
}

Reply requestIdle(IlluminatorModel& model, const QByteArray&)
{
    return doneIf(model.lasers().requestIdle());
}

Reply requestRun(IlluminatorModel& model, const QByteArray&)
{
    // The laser module cannot light while its controller is being reprogrammed.
    return doneIf(!model.controller().isUpdating() && model.lasers().requestRun());
}

Reply clear(IlluminatorModel& model, const QByteArray&)
{
    model.lasers().acknowledgeFault();
    return Answers::kDone;
}

Reply restoreDefaults(IlluminatorModel& model, const QByteArray&)
{
    model.lasers().restoreDefaults();
    return Answers::kDone;
}
} // namespace

const std::vector<Command>& settingCommands()
{
    using Kind = Command::Kind;
    using Where = Command::Where;
    static const std::vector<Command> commands{
        {"set:", Kind::Change, Where::Application, setLevel},
        {"shutter:", Kind::Change, Where::Application, setShutter},
        {"ttl_invert:", Kind::Change, Where::Application, setTtlInversion},
        {"int_mode=", Kind::Change, Where::Application, setIntensitySource},
        {"sh_mode=", Kind::Change, Where::Application, setShutterSource},
        {"speckle=", Kind::Change, Where::Application, setSpeckle},
        {"sleep=", Kind::Change, Where::Application, setSleep},
        {"idle!", Kind::Change, Where::Application, requestIdle},
        {"run!", Kind::Change, Where::Application, requestRun},
        {"clear", Kind::Change, Where::Application, clear},
        {"defaults", Kind::Change, Where::Application, restoreDefaults},
    };
    return commands;
}

} // namespace Simulator
