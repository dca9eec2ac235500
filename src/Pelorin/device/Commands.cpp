#include "device/Commands.h"

#include <cmath>

namespace {
QByteArray line(const QString& text)
{
    return text.toLatin1() + '\n';
}

QByteArray channelLine(const QString& key, const QString& wireName, const QString& value)
{
    // Both texts go in at once: a name is never searched for the place of the value.
    return line(key + QStringLiteral("%1=%2").arg(wireName, value));
}

QString flag(bool on)
{
    return QString::number(on ? 1 : 0);
}

/// `key` followed by the control source's word, empty for a source that does not exist.
QByteArray sourceLine(const char* key, int source)
{
    switch (source) {
    case static_cast<int>(ControlSource::External):
        return QByteArray(key) + "ext\n";
    case static_cast<int>(ControlSource::Host):
        return QByteArray(key) + "pc\n";
    default:
        return {};
    }
}
} // namespace

QByteArray Commands::setIntensity(const QString& wireName, float percent)
{
    if (!std::isfinite(percent))
        return {};
    return channelLine(QStringLiteral("set:"), wireName, QString::number(double(percent), 'f', 2));
}

QByteArray Commands::setShutter(const QString& wireName, bool open)
{
    return channelLine(QStringLiteral("shutter:"), wireName, flag(open));
}

QByteArray Commands::setTtlInvert(const QString& wireName, bool inverted)
{
    return channelLine(QStringLiteral("ttl_invert:"), wireName, flag(inverted));
}

QByteArray Commands::setIntensityMode(int source)
{
    return sourceLine("int_mode=", source);
}

QByteArray Commands::setShutterMode(int source)
{
    return sourceLine("sh_mode=", source);
}

QByteArray Commands::setSpeckle(bool on)
{
    return on ? QByteArrayLiteral("speckle=on\n") : QByteArrayLiteral("speckle=off\n");
}

QByteArray Commands::setFunctionalMode(int mode)
{
    switch (mode) {
    case FunctionalModeIdle:
        return QByteArrayLiteral("idle!\n");
    case FunctionalModeRun:
        return QByteArrayLiteral("run!\n");
    default:
        return {};
    }
}

QByteArray Commands::setSleepTime(quint16 minutes)
{
    return line(QStringLiteral("sleep=%1").arg(minutes));
}

QByteArray Commands::clearFaults()
{
    return QByteArrayLiteral("clear\n");
}

QByteArray Commands::resetDevice()
{
    return QByteArrayLiteral("reset\n");
}

QByteArray Commands::restoreDefaults()
{
    return QByteArrayLiteral("defaults\n");
}
