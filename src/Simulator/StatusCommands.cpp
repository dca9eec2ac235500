#include "Simulator/Commands.h"
#include "Simulator/IlluminatorModel.h"

#include <QList>
#include <QStringBuilder>

// What a host asks again and again while the application runs.

namespace Simulator {
namespace {
/// "name=value" of all channels behind the prefix, in the device's order.
template<typename ValueText>
QByteArray perChannel(const char* prefix, ValueText valueText)
{
    QList<QByteArray> items;
    for (int channel = 0; channel < kChannelCount; ++channel) {
        items.append(kChannelNames.at(channel) + QByteArray("=") + valueText(channel));
    }
    return asLine(prefix + items.join(','));
}

QByteArray decimals(double value, int count)
{
    return QByteArray::number(value, 'f', count);
}

Reply functionalMode(IlluminatorModel& model, const QByteArray&)
{
    switch (model.lasers().mode()) {
    case Mode::Off:
    case Mode::Warmup:
        return "f_mode=warmup\n";
    case Mode::Idle:
        return "f_mode=idle\n";
    case Mode::Run:
        return "f_mode=run\n";
    }
    return {};
}

Reply sleepTime(IlluminatorModel& model, const QByteArray&)
{
    return asLine("sleep=" + QByteArray::number(model.lasers().sleepMinutes()));
}

Reply intensityMode(IlluminatorModel& model, const QByteArray&)
{
    return model.lasers().intensitySource() == Source::Host ? "int_mode=PC\n" : "int_mode=EXT\n";
}

Reply fault(IlluminatorModel& model, const QByteArray&)
{
    return model.lasers().hasFault() ? asLine("FAULT: " + model.lasers().fault()) : "ok\n";
}

Reply warning(IlluminatorModel& model, const QByteArray&)
{
    const QByteArray text = model.lasers().warning();
    return text.isEmpty() ? "ok\n" : asLine("WARN: " + text);
}

Reply hours(IlluminatorModel& model, const QByteArray&)
{
    return perChannel("hours:", [&](int channel) { return decimals(model.lasers().hours(channel), 2); });
}

Reply shutters(IlluminatorModel& model, const QByteArray&)
{
    return perChannel("shutter:",
                      [&](int channel) { return model.lasers().isShutterOpen(channel) ? "open" : "closed"; });
}

Reply ttlInversion(IlluminatorModel& model, const QByteArray&)
{
    return perChannel("ttl_invert:",
                      [&](int channel) { return model.lasers().isTtlInverted(channel) ? "on" : "off"; });
}

Reply levels(IlluminatorModel& model, const QByteArray&)
{
    return perChannel("set:", [&](int channel) { return decimals(model.lasers().level(channel), 2); });
}

Reply temperatures(IlluminatorModel& model, const QByteArray&)
{
    const Readings now = model.readings();
    return asLine("temps:Necsel=" + decimals(now.necsel, 1) + ",Novalum1=" + decimals(now.novalum1, 1) +
                  ",Novalum2=" + decimals(now.novalum2, 1) + ",LaserFan=" + decimals(now.laserFan, 1) +
                  ",Heater=" + decimals(now.heater, 1) + ",LaserCurrent=" + decimals(now.laserCurrent, 2));
}
} // namespace

const std::vector<Command>& statusCommands()
{
    using Kind = Command::Kind;
    using Where = Command::Where;
    static const std::vector<Command> commands{
        {"f_mode?", Kind::Query, Where::Application, functionalMode},
        {"sleep?", Kind::Query, Where::Application, sleepTime},
        {"int_mode?", Kind::Query, Where::Application, intensityMode},
        {"fault?", Kind::Query, Where::Application, fault},
        {"warn?", Kind::Query, Where::Application, warning},
        {"hours?", Kind::Query, Where::Application, hours},
        {"shutter?", Kind::Query, Where::Application, shutters},
        {"ttl_invert?", Kind::Query, Where::Application, ttlInversion},
        {"set?", Kind::Query, Where::Application, levels},
        {"temps", Kind::Query, Where::Application, temperatures},
    };
    return commands;
}

} // namespace Simulator
