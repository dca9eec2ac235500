// What the window keeps between two runs, and the choices of the settings dialog that it carries out.

#include "device/Device.h"
#include "mainwindow/ChannelPanel.h"
#include "mainwindow/ChannelTable.h"
#include "mainwindow/CommandResult.h"
#include "mainwindow/PelorinMainWindow.h"
#include "mainwindow/SettingsStore.h"
#include "scenario/Scenario.h"

#include <QSettings>

#include <algorithm>
#include <limits>

void PelorinMainWindow::loadSettings()
{
    const UserSettings settings = readUserSettings(*m_store);
    const WindowLayout layout = readWindowLayout(*m_store);
    createChannels(settings);

    m_device->selectPort(settings.comPort);
    m_choices.sleepTimerEnabled = settings.choices.sleepTimerEnabled;
    onSleepTimerChanged(settings.choices.sleepMinutes);
    onShutterControlChanged(settings.choices.shutterControl);
    onIntensityControlChanged(settings.choices.intensityControl);
    onSpeckleControlChanged(settings.choices.speckleReducer);
    onEnhancedDiagsChanged(settings.choices.verboseLogging);

    if (layout.collapsed) {
        setCollapsed(true);
    }
    restoreGeometry(layout.geometry);
    restoreState(layout.state, 0);
    connectChannels();
}

void PelorinMainWindow::createChannels(const UserSettings& settings)
{
    // An earlier container stays alive: somebody up the call stack may still hold one of its channels.
    m_scenario = new Scenario(this, m_store.get());
    for (int index = 0; index < channelCount; ++index) {
        const ChannelSettings& stored = settings.channels.at(static_cast<std::size_t>(index));
        auto* laser = new channel;
        laser->setIndex(static_cast<quint8>(index));
        laser->setWavelength(ChannelTable::wavelength(index));
        laser->setName(stored.name);
        laser->setIntensity(stored.intensity);
        laser->setVisible(stored.visible);
        laser->setTtlInverted(stored.ttlInverted);
        laser->setColour(stored.colour);
        m_scenario->append(laser);
        m_panel->showName(index + 1, stored.name);
        m_panel->showIntensity(index + 1, stored.intensity);
        m_panel->showColour(index + 1, stored.colour);
        m_panel->showVisible(index + 1, stored.visible);
    }
}

void PelorinMainWindow::connectChannels()
{
    connect(this, &PelorinMainWindow::channelNameChanged, m_scenario, &Scenario::setChannelName);
    connect(this, &PelorinMainWindow::channelIntensityChanged, m_scenario, &Scenario::setChannelIntensity);
    // Sending comes last: it can wait for the device, and a level chosen meanwhile must not be overwritten by
    // the older one when the wait is over.
    disconnect(this, &PelorinMainWindow::channelIntensityChanged, this,
               &PelorinMainWindow::updateChannelIntensity);
    connect(this, &PelorinMainWindow::channelIntensityChanged, this,
            &PelorinMainWindow::updateChannelIntensity, Qt::DirectConnection);
    connect(this, &PelorinMainWindow::channelShutterChanged, m_scenario, &Scenario::setChannelShutter);
    // Queued: by then the container has the new value, in whatever order its slots are connected.
    const auto changed = &ScenarioControl::onChannelChanged;
    const auto later = static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::UniqueConnection);
    connect(this, &PelorinMainWindow::channelNameChanged, m_scenarioControl, changed, later);
    connect(this, &PelorinMainWindow::channelIntensityChanged, m_scenarioControl, changed, later);
    connect(this, &PelorinMainWindow::channelShutterChanged, m_scenarioControl, changed, later);
}

void PelorinMainWindow::saveSettings()
{
    UserSettings settings;
    const QList<channel*> channels = m_scenario->channels();
    for (const channel* laser : channels) {
        settings.channels.at(laser->index()) = settingsOf(*laser);
    }
    settings.comPort = m_device->portName();
    settings.choices = m_choices;
    writeUserSettings(*m_store, settings);
    flushSettings(*m_store);
}

int PelorinMainWindow::effectiveSleepMinutes() const
{
    constexpr int mostThatFits = std::numeric_limits<quint16>::max();
    return m_choices.sleepTimerEnabled ? std::clamp(m_choices.sleepMinutes, 0, mostThatFits) : 0;
}

void PelorinMainWindow::onSleepTimerChanged(int minutes)
{
    m_choices.sleepMinutes = minutes;
    m_display->showSleepTimer(effectiveSleepMinutes());
    if (m_device && m_device->isOpen()) {
        sendSleepTime("Update sleep time BUSY", "Set Sleep Time error");
    }
}

void PelorinMainWindow::onSleepTimerEnableChanged(bool enable)
{
    m_choices.sleepTimerEnabled = enable;
    m_display->showSleepTimer(effectiveSleepMinutes());
    if (m_device) {
        sendSleepTime("Update sleep time enable BUSY", "Set Sleep Time Enable error");
    }
}

void PelorinMainWindow::sendSleepTime(const char* busyText, const char* errorText)
{
    if (isUpdateInTheWay()) {
        return;
    }
    logCommandResult(m_device->setSleepTime(static_cast<quint16>(effectiveSleepMinutes())), busyText,
                     errorText);
}

void PelorinMainWindow::onSpeckleControlChanged(bool enable)
{
    m_choices.speckleReducer = enable;
    if (m_device && !isUpdateInTheWay()) {
        m_device->setSpeckle(enable);
    }
}
