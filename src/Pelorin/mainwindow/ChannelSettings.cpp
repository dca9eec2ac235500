#include "mainwindow/ChannelSettings.h"

#include "mainwindow/ChannelTable.h"
#include "mainwindow/channel.h"

#include <QSettings>

#include <algorithm>
#include <cmath>

namespace {
constexpr float maximumPercent = 100.0F;

constexpr char nameKey[] = "Channel Name";
constexpr char intensityKey[] = "Channel Intensity";
constexpr char visibleKey[] = "Channel Visible";
constexpr char ttlInvertKey[] = "Channel Shutter TTL Invert";
constexpr char colourKey[] = "Channel Color";

/// Gives the keys of one channel.
class ChannelKeys
{
public:
    ChannelKeys(const QString& parentGroup, int index)
        : m_group((parentGroup.isEmpty() ? QString() : QString(parentGroup + QLatin1Char('/'))) +
                  ChannelTable::settingsGroup(index) + QLatin1Char('/'))
    {
    }
    QString operator()(const char* key) const { return m_group + QLatin1String(key); }

private:
    QString m_group;
};

float readPercent(const QSettings& store, const QString& key)
{
    const float percent = store.value(key, 0.0F).toFloat();
    return std::isnan(percent) ? 0.0F : std::clamp(percent, 0.0F, maximumPercent);
}
} // namespace

bool StoredValue::toBool(const QSettings& store, const QString& key, bool fallback)
{
    const QString text = store.value(key, fallback).toString().trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1")) {
        return true;
    }
    return text != QLatin1String("false") && text != QLatin1String("0") && fallback;
}

ChannelSettings settingsOf(const channel& laser)
{
    return {laser.name(), laser.intensity(), laser.isVisible(), laser.isTtlInverted(), laser.colour()};
}

ChannelSettings readChannelSettings(const QSettings& store, const QString& parentGroup, int index)
{
    const ChannelKeys key(parentGroup, index);
    ChannelSettings channel;
    channel.name = store.value(key(nameKey), ChannelTable::defaultName(index)).toString();
    channel.intensity = readPercent(store, key(intensityKey));
    channel.visible = StoredValue::toBool(store, key(visibleKey), true);
    channel.ttlInverted = StoredValue::toBool(store, key(ttlInvertKey), false);
    const QString defaultColour = ChannelTable::colourToText(ChannelTable::defaultColour(index));
    channel.colour = ChannelTable::colourFromText(store.value(key(colourKey), defaultColour).toString());
    return channel;
}

void writeChannelSettings(QSettings& store, const QString& parentGroup, int index,
                          const ChannelSettings& channel)
{
    const ChannelKeys key(parentGroup, index);
    store.setValue(key(nameKey), channel.name);
    store.setValue(key(intensityKey), static_cast<double>(channel.intensity));
    store.setValue(key(visibleKey), channel.visible);
    store.setValue(key(ttlInvertKey), channel.ttlInverted);
    store.setValue(key(colourKey), ChannelTable::colourToText(channel.colour));
}
