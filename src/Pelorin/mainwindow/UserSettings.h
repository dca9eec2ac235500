#pragma once

#include "device/DeviceTypes.h"

#include <QByteArray>
#include <QColor>
#include <QString>

#include <array>

class QSettings;

/// What is kept of one channel. Shutters are not kept: a program that starts opens none.
struct ChannelSettings
{
    QString name;
    float intensity = 0.0F; ///< percent, 0 to 100
    bool visible = true;
    bool ttlInverted = false;
    QColor colour;
};

/// The operator's choices for the device as a whole.
struct OperatingChoices
{
    bool sleepTimerEnabled = true;
    int sleepMinutes = 30;
    quint8 shutterControl = 1;   ///< 1 this computer, 0 the external digital inputs
    quint8 intensityControl = 1; ///< 1 this computer, 0 the external analogue inputs
    bool speckleReducer = true;
    bool verboseLogging = false;
};

/// How the window stood when it was closed.
struct WindowLayout
{
    bool collapsed = false;
    QByteArray geometry;
    QByteArray state;
};

/// Everything that the main window keeps between two runs of the program.
struct UserSettings
{
    std::array<ChannelSettings, channelCount> channels;
    QString comPort;
    OperatingChoices choices;
};

/// The stored values, each within its range whatever the store holds; defaults where it holds nothing.
UserSettings readUserSettings(const QSettings& store);
WindowLayout readWindowLayout(const QSettings& store);

// Both write into the store's memory; keys that they do not know stay as they are.
void writeUserSettings(QSettings& store, const UserSettings& settings);
void writeWindowLayout(QSettings& store, const WindowLayout& layout);
