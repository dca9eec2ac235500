#pragma once

#include "device/DeviceTypes.h"
#include "mainwindow/ChannelSettings.h"
#include "settings/OperatingChoices.h"

#include <QByteArray>
#include <QString>

#include <array>

class QSettings;

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
