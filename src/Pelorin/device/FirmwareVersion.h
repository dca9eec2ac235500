#pragma once

#include <QString>

/// A firmware version, compared as the one number major * 65536 + minor * 256 + patch.
struct FirmwareVersion
{
    quint16 major = 0;
    quint8 minor = 0;
    quint8 patch = 0;

    constexpr quint32 number() const { return (quint32(major) << 16) | (quint32(minor) << 8) | patch; }

    /// "major.minor.patch" in decimal.
    QString toString() const { return QStringLiteral("%1.%2.%3").arg(major).arg(minor).arg(patch); }
};

constexpr bool operator==(FirmwareVersion a, FirmwareVersion b)
{
    return a.number() == b.number();
}
constexpr bool operator!=(FirmwareVersion a, FirmwareVersion b)
{
    return !(a == b);
}
constexpr bool operator>(FirmwareVersion a, FirmwareVersion b)
{
    return a.number() > b.number();
}

/// A firmware image as a version query tells it: which image ("Loader", "LoaderUpdater", "VYRApp",
/// "Unknown", empty when never told) and its version (0.0.0 when the reply held none).
struct ImageVersion
{
    QString kind;
    FirmwareVersion version;
};
