#include "mainwindow/ChannelSettings.h"

#include "compat/QtVersion.h"
#include "device/DeviceTypes.h"
#include "mainwindow/ChannelTable.h"
#include "mainwindow/channel.h"

#include <QRegularExpression>
#include <QSettings>
#include <QVariant>

#include <algorithm>
#include <cmath>

namespace {
constexpr char nameKey[] = "Channel Name";
constexpr char intensityKey[] = "Channel Intensity";
constexpr char visibleKey[] = "Channel Visible";
constexpr char ttlInvertKey[] = "Channel Shutter TTL Invert";
constexpr char colourKey[] = "Channel Color";

float readPercent(const QSettings& store, const QString& key)
{
    const float percent = store.value(key, 0.0F).toFloat();
    return std::isnan(percent) ? 0.0F : std::clamp(percent, float(minimumPercent), float(maximumPercent));
}

bool isPercent(const QVariant& value)
{
    bool ok = false;
    const float percent = value.toString().toFloat(&ok);
    return ok && percent >= float(minimumPercent) && percent <= float(maximumPercent);
}

bool isColour(const QVariant& value)
{
    static const QRegularExpression sixDigits(
        QRegularExpression::anchoredPattern(QStringLiteral("[0-9A-Fa-f]{6}")));
    return sixDigits.match(value.toString()).hasMatch();
}
} // namespace

QString channelKey(const QString& parentGroup, int index, const char* key)
{
    const QString group = ChannelTable::settingsGroup(index) + QLatin1Char('/') + QLatin1String(key);
    return parentGroup.isEmpty() ? group : QString(parentGroup + QLatin1Char('/') + group);
}

std::optional<bool> StoredValue::asBool(const QSettings& store, const QString& key)
{
    const QString text = store.value(key).toString().trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1")) {
        return true;
    }
    if (text == QLatin1String("false") || text == QLatin1String("0")) {
        return false;
    }
    return std::nullopt;
}

bool StoredValue::toBool(const QSettings& store, const QString& key, bool fallback)
{
    return asBool(store, key).value_or(fallback);
}

ChannelSettings settingsOf(const channel& laser)
{
    return {laser.name(), laser.intensity(), laser.isVisible(), laser.isTtlInverted(), laser.colour()};
}

ChannelSettings readChannelSettings(const QSettings& store, const QString& parentGroup, int index)
{
    const auto key = [&](const char* name) { return channelKey(parentGroup, index, name); };
    ChannelSettings channel;
    channel.name = QtVersion::storedText(store.value(key(nameKey), ChannelTable::defaultName(index)));
    channel.intensity = readPercent(store, key(intensityKey));
    channel.visible = StoredValue::toBool(store, key(visibleKey), true);
    channel.ttlInverted = StoredValue::toBool(store, key(ttlInvertKey), false);
    const QString defaultColour = ChannelTable::colourToText(ChannelTable::defaultColour(index));
    channel.colour = ChannelTable::colourFromText(store.value(key(colourKey), defaultColour).toString());
    return channel;
}

std::optional<ChannelSettings> readWholeChannelSettings(const QSettings& store, const QString& parentGroup,
                                                        int index)
{
    const auto key = [&](const char* name) { return channelKey(parentGroup, index, name); };
    // A text with a bare comma is read as a list, and would become an empty name without notice.
    const bool isNameText = QtVersion::isStoredText(store.value(key(nameKey)));
    const bool whole = isNameText && isPercent(store.value(key(intensityKey))) &&
                       StoredValue::asBool(store, key(visibleKey)) &&
                       StoredValue::asBool(store, key(ttlInvertKey)) && isColour(store.value(key(colourKey)));
    return whole ? std::make_optional(readChannelSettings(store, parentGroup, index)) : std::nullopt;
}

void writeChannelSettings(QSettings& store, const QString& parentGroup, int index,
                          const ChannelSettings& channel)
{
    const auto key = [&](const char* name) { return channelKey(parentGroup, index, name); };
    store.setValue(key(nameKey), QtVersion::storable(channel.name));
    store.setValue(key(intensityKey), static_cast<double>(channel.intensity));
    store.setValue(key(visibleKey), channel.visible);
    store.setValue(key(ttlInvertKey), channel.ttlInverted);
    store.setValue(key(colourKey), ChannelTable::colourToText(channel.colour));
}
