#include "mainwindow/UserSettings.h"

#include "mainwindow/ChannelTable.h"

#include <QSettings>

#include <algorithm>
#include <cmath>

namespace {
constexpr float maximumPercent = 100.0F;
constexpr int maximumSleepMinutes = 99;

constexpr char nameKey[] = "Channel Name";
constexpr char intensityKey[] = "Channel Intensity";
constexpr char visibleKey[] = "Channel Visible";
constexpr char ttlInvertKey[] = "Channel Shutter TTL Invert";
constexpr char colourKey[] = "Channel Color";
constexpr char comPortKey[] = "Device Com Port";
constexpr char sleepEnabledKey[] = "Sleep Timer Enabled";
constexpr char sleepMinutesKey[] = "Sleep Timer";
constexpr char shutterControlKey[] = "Shutter Control";
constexpr char intensityControlKey[] = "Intensity Control";
constexpr char speckleKey[] = "Speckle Reducer Enable";
constexpr char verboseKey[] = "Verbose Data Logging";
constexpr char collapsedKey[] = "Window Minimized";
constexpr char geometryKey[] = "geometry";
constexpr char stateKey[] = "windowState";

QString channelKey(int index, const char* key)
{
    return ChannelTable::settingsGroup(index) + QLatin1Char('/') + QLatin1String(key);
}

/// A text that is neither true nor false would count as true by itself; here it counts as not stored.
bool readBool(const QSettings& store, const QString& key, bool fallback)
{
    const QString text = store.value(key, fallback).toString().trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1")) {
        return true;
    }
    return text != QLatin1String("false") && text != QLatin1String("0") && fallback;
}

float readPercent(const QSettings& store, const QString& key)
{
    const float percent = store.value(key, 0.0F).toFloat();
    return std::isnan(percent) ? 0.0F : std::clamp(percent, 0.0F, maximumPercent);
}

/// Only 1 hands the control to this computer; whatever else is stored leaves it to the device's inputs.
quint8 readControlMode(const QSettings& store, const char* key)
{
    return store.value(QLatin1String(key), 1U).toUInt() == 1 ? 1 : 0;
}

int readSleepMinutes(const QSettings& store, int fallback)
{
    bool ok = false;
    const int minutes = store.value(QLatin1String(sleepMinutesKey), fallback).toInt(&ok);
    return ok ? std::clamp(minutes, 0, maximumSleepMinutes) : fallback;
}

ChannelSettings readChannel(const QSettings& store, int index)
{
    ChannelSettings channel;
    channel.name = store.value(channelKey(index, nameKey), ChannelTable::defaultName(index)).toString();
    channel.intensity = readPercent(store, channelKey(index, intensityKey));
    channel.visible = readBool(store, channelKey(index, visibleKey), true);
    channel.ttlInverted = readBool(store, channelKey(index, ttlInvertKey), false);
    const QString defaultColour = ChannelTable::colourToText(ChannelTable::defaultColour(index));
    channel.colour =
        ChannelTable::colourFromText(store.value(channelKey(index, colourKey), defaultColour).toString());
    return channel;
}

void writeChannel(QSettings& store, int index, const ChannelSettings& channel)
{
    store.setValue(channelKey(index, nameKey), channel.name);
    store.setValue(channelKey(index, intensityKey), static_cast<double>(channel.intensity));
    store.setValue(channelKey(index, visibleKey), channel.visible);
    store.setValue(channelKey(index, ttlInvertKey), channel.ttlInverted);
    store.setValue(channelKey(index, colourKey), ChannelTable::colourToText(channel.colour));
}
} // namespace

UserSettings readUserSettings(const QSettings& store)
{
    UserSettings settings;
    for (int index = 0; index < channelCount; ++index) {
        settings.channels.at(static_cast<std::size_t>(index)) = readChannel(store, index);
    }
    OperatingChoices& choices = settings.choices;
    settings.comPort = store.value(QLatin1String(comPortKey), QStringLiteral("COM4")).toString();
    choices.sleepTimerEnabled = readBool(store, QLatin1String(sleepEnabledKey), choices.sleepTimerEnabled);
    choices.sleepMinutes = readSleepMinutes(store, choices.sleepMinutes);
    choices.shutterControl = readControlMode(store, shutterControlKey);
    choices.intensityControl = readControlMode(store, intensityControlKey);
    choices.speckleReducer = readBool(store, QLatin1String(speckleKey), choices.speckleReducer);
    choices.verboseLogging = readBool(store, QLatin1String(verboseKey), choices.verboseLogging);
    return settings;
}

WindowLayout readWindowLayout(const QSettings& store)
{
    WindowLayout layout;
    layout.collapsed = readBool(store, QLatin1String(collapsedKey), false);
    layout.geometry = store.value(QLatin1String(geometryKey)).toByteArray();
    layout.state = store.value(QLatin1String(stateKey)).toByteArray();
    return layout;
}

void writeUserSettings(QSettings& store, const UserSettings& settings)
{
    for (int index = 0; index < channelCount; ++index) {
        writeChannel(store, index, settings.channels.at(static_cast<std::size_t>(index)));
    }
    const OperatingChoices& choices = settings.choices;
    store.setValue(QLatin1String(comPortKey), settings.comPort);
    store.setValue(QLatin1String(sleepMinutesKey), choices.sleepMinutes);
    store.setValue(QLatin1String(sleepEnabledKey), choices.sleepTimerEnabled);
    store.setValue(QLatin1String(shutterControlKey), static_cast<uint>(choices.shutterControl));
    store.setValue(QLatin1String(intensityControlKey), static_cast<uint>(choices.intensityControl));
    store.setValue(QLatin1String(speckleKey), choices.speckleReducer);
    store.setValue(QLatin1String(verboseKey), choices.verboseLogging);
}

void writeWindowLayout(QSettings& store, const WindowLayout& layout)
{
    store.setValue(QLatin1String(geometryKey), layout.geometry);
    store.setValue(QLatin1String(stateKey), layout.state);
    store.setValue(QLatin1String(collapsedKey), layout.collapsed);
}
