#pragma once

#include "device/DeviceTypes.h"
#include "mainwindow/ChannelSettings.h"

#include <array>
#include <optional>

class QSettings;

/// What a scenario keeps of one channel.
struct ScenarioChannel
{
    ChannelSettings settings;
    bool shutterOpen = false;
};

/// In channel order.
using ScenarioValues = std::array<ScenarioChannel, channelCount>;

/// Exactly equal; colours are compared as far as they are kept, without their opacity.
bool operator==(const ScenarioChannel& a, const ScenarioChannel& b);
inline bool operator!=(const ScenarioChannel& a, const ScenarioChannel& b)
{
    return !(a == b);
}

/// The settings group of the scenario of this name; every name, whatever it consists of, has its own.
QString scenarioGroup(const QString& name);
/// Nothing when a value of any channel is missing or cannot be what was written.
std::optional<ScenarioValues> readScenarioValues(const QSettings& store, const QString& name);
/// Into the store's memory.
void writeScenarioValues(QSettings& store, const QString& name, const ScenarioValues& values);
