#include "mainwindow/UserSettings.h"

#include "compat/QtVersion.h"

#include <QSettings>

#include <algorithm>

namespace {
constexpr char sleepEnabledKey[] = "Sleep Timer Enabled";
constexpr char sleepMinutesKey[] = "Sleep Timer";
constexpr char shutterControlKey[] = "Shutter Control";
constexpr char intensityControlKey[] = "Intensity Control";
constexpr char speckleKey[] = "Speckle Reducer Enable";
constexpr char verboseKey[] = "Verbose Data Logging";
constexpr char collapsedKey[] = "Window Minimized";
constexpr char geometryKey[] = "geometry";
constexpr char stateKey[] = "windowState";

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

} // namespace

UserSettings readUserSettings(const QSettings& store)
{
    UserSettings settings;
    for (int index = 0; index < channelCount; ++index) {
        settings.channels.at(static_cast<std::size_t>(index)) = readChannelSettings(store, {}, index);
    }
    OperatingChoices& choices = settings.choices;
    settings.comPort = QtVersion::storedText(store.value(QLatin1String(comPortKey), QStringLiteral("COM4")));
    choices.sleepTimerEnabled =
        StoredValue::toBool(store, QLatin1String(sleepEnabledKey), choices.sleepTimerEnabled);
    choices.sleepMinutes = readSleepMinutes(store, choices.sleepMinutes);
    choices.shutterControl = readControlMode(store, shutterControlKey);
    choices.intensityControl = readControlMode(store, intensityControlKey);
    choices.speckleReducer = StoredValue::toBool(store, QLatin1String(speckleKey), choices.speckleReducer);
    choices.verboseLogging = StoredValue::toBool(store, QLatin1String(verboseKey), choices.verboseLogging);
    return settings;
}

WindowLayout readWindowLayout(const QSettings& store)
{
    WindowLayout layout;
    layout.collapsed = StoredValue::toBool(store, QLatin1String(collapsedKey), false);
    layout.geometry = store.value(QLatin1String(geometryKey)).toByteArray();
    layout.state = store.value(QLatin1String(stateKey)).toByteArray();
    return layout;
}

void writeUserSettings(QSettings& store, const UserSettings& settings)
{
    for (int index = 0; index < channelCount; ++index) {
        writeChannelSettings(store, {}, index, settings.channels.at(static_cast<std::size_t>(index)));
    }
    const OperatingChoices& choices = settings.choices;
    store.setValue(QLatin1String(comPortKey), QtVersion::storable(settings.comPort));
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
