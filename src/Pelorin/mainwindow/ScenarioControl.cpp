#include "mainwindow/ScenarioControl.h"

#include "device/Device.h"
#include "forms/FormWidgets.h"
#include "mainwindow/ChannelPanel.h"
#include "mainwindow/channel.h"
#include "scenario/OneLine.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioDialog.h"
#include "update/Update.h"

#include <QLabel>
#include <QPointer>

#include <algorithm>
#include <chrono>

namespace {
constexpr std::chrono::milliseconds askInterval(250);

/// The name that the operator chose, or nothing when the dialog was left otherwise.
QString askForName(QWidget& window, int mode, Scenario* store)
{
    // On the heap and watched: the window may go while the dialog is open, and would take it along.
    const QPointer<ScenarioDialog> dialog(new ScenarioDialog(&window, mode, store));
    const bool accepted = dialog->exec() == QDialog::Accepted && dialog;
    QString name = accepted ? dialog->scenarioName() : QString();
    delete dialog;
    return name;
}

ScenarioValues valuesOf(const QList<channel*>& channels)
{
    ScenarioValues values;
    for (const channel* laser : channels) {
        values.at(laser->index()) = {settingsOf(*laser), laser->isShutterOpen()};
    }
    return values;
}
} // namespace

ScenarioControl::ScenarioControl(QWidget& window, ScenarioHost& host, const ChannelPanel& panel,
                                 Device& device, Update& update)
    : QObject(&window), m_window(window), m_host(host), m_panel(panel), m_device(device), m_update(update),
      m_nameLabel(formWidget<QLabel>(window, "labelScenario")),
      m_modifiedLabel(formWidget<QLabel>(window, "labelScenarioModified"))
{
    m_reportTimer.setSingleShot(true);
    connect(&m_reportTimer, &QTimer::timeout, this, [this] {
        if (m_closing) {
            openShutters();
        } else {
            showModified();
        }
    });
    m_askTimer.setInterval(askInterval);
    connect(&m_askTimer, &QTimer::timeout, this, &ScenarioControl::askForReports);
}

void ScenarioControl::save()
{
    // Half of it would be saved, and the openings that are still to come would be given up.
    if (m_loading) {
        m_host.showStatus(tr("The scenario is still being loaded."));
        return;
    }
    const QPointer<ScenarioControl> self(this);
    const QString name = askForName(m_window, ScenarioDialog::SaveMode, m_host.scenario());
    if (!self || name.isEmpty()) {
        return;
    }
    Scenario* const store = m_host.scenario();
    const ScenarioValues values = valuesOf(store->channels());
    if (!store->save(name, values)) {
        m_host.warn(tr("The scenario could not be saved."));
        return;
    }
    adopt(name, values);
    showModified();
    m_host.showStatus(tr("Scenario saved: %1").arg(onOneLine(name)));
}

bool ScenarioControl::mayLoad()
{
    if (m_update.refusesAction()) {
        return false;
    }
    // What is sent to another image, or before it is known which one runs, would wait in the queue for the
    // application and open shutters when nobody expects it any more.
    if (m_device.isOpen() && !m_device.isApplicationConnected()) {
        m_host.warn(tr("The device does not run its application. Nothing was changed."));
        return false;
    }
    return true;
}

void ScenarioControl::load()
{
    const QPointer<ScenarioControl> self(this);
    if (!mayLoad()) {
        return;
    }
    const QString name = askForName(m_window, ScenarioDialog::LoadMode, m_host.scenario());
    // The dialog can stay open for long, and the device may have become busy meanwhile.
    if (!self || name.isEmpty() || !mayLoad()) {
        return;
    }
    const std::optional<ScenarioValues> values = m_host.scenario()->values(name);
    if (!values) {
        m_host.warn(tr("The scenario has no complete set of stored values. Nothing was changed."));
        return;
    }
    begin(name, *values);
}

void ScenarioControl::adopt(const QString& name, const ScenarioValues& values)
{
    // Whatever an earlier scenario still had to do is not wanted any more.
    ++m_run;
    m_loading = false;
    m_closing = false;
    m_reportTimer.stop();
    m_refusals.clear();
    m_askedToClose.fill(false);
    m_movedByHand.fill(false);
    m_name = name;
    m_values = values;
    m_nameLabel->setText(tr("Scenario: %1").arg(onOneLine(name)));
}

void ScenarioControl::begin(const QString& name, const ScenarioValues& values)
{
    adopt(name, values);
    m_loading = true;
    const int run = m_run;
    const QPointer<ScenarioControl> self(this);
    closeShutters();
    if (!self || isRunStale(run)) {
        return;
    }
    applySettings();
    if (!self || isRunStale(run)) {
        return;
    }
    m_host.showStatus(tr("Loading scenario: %1").arg(onOneLine(name)));
    m_closing = true;
    m_reportTimer.start(ChannelPanel::reportTime);
    m_askTimer.start();
    onChannelChanged();
}

void ScenarioControl::askForReports()
{
    if (!m_reportTimer.isActive()) {
        m_askTimer.stop();
    } else if (m_device.isApplicationConnected() && !m_update.isInProgress()) {
        m_device.pollDevice();
    }
}

void ScenarioControl::closeShutters()
{
    const int run = m_run;
    const QPointer<ScenarioControl> self(this);
    const QList<channel*> channels = m_host.scenario()->channels();
    for (channel* laser : channels) {
        if (m_values.at(laser->index()).shutterOpen) {
            continue;
        }
        const bool mayBeOpen = laser->isShutterOpen() || m_panel.isOpeningPending(laser->index() + 1);
        const ShutterAnswer answer = m_host.changeShutter(*laser, false);
        if (!self || isRunStale(run)) {
            return;
        }
        // Asked of all, as the last report may be old; missed only where it matters.
        if (mayBeOpen) {
            note(*laser, answer);
            m_askedToClose.at(laser->index()) = answer.refusal.isEmpty() && answer.code == 0;
        }
    }
}

void ScenarioControl::applySettings()
{
    const int run = m_run;
    const QPointer<ScenarioControl> self(this);
    const QList<channel*> channels = m_host.scenario()->channels();
    for (channel* laser : channels) {
        const QString refusal = m_host.applyChannel(*laser, m_values.at(laser->index()).settings);
        if (!self || isRunStale(run)) {
            return;
        }
        note(*laser, {refusal, 0});
    }
}

bool ScenarioControl::isClosingPending() const
{
    const QList<channel*> channels = m_host.scenario()->channels();
    return std::any_of(channels.begin(), channels.end(), [this](const channel* laser) {
        return m_askedToClose.at(laser->index()) && laser->isShutterOpen();
    });
}

void ScenarioControl::openShutters()
{
    m_closing = false;
    m_reportTimer.start(ChannelPanel::reportTime);
    const int run = m_run;
    const QPointer<ScenarioControl> self(this);
    const QList<channel*> channels = m_host.scenario()->channels();
    for (channel* laser : channels) {
        // Open for now only, where the operator's closing has not been reported yet.
        const bool staysOpen = laser->isShutterOpen() && !m_panel.isClosingPending(laser->index() + 1);
        if (!m_values.at(laser->index()).shutterOpen || staysOpen || m_movedByHand.at(laser->index())) {
            continue;
        }
        if (!laser->isVisible()) {
            // There is no button to close it with.
            note(*laser, {tr("The channel is hidden."), 0});
            continue;
        }
        const ShutterAnswer answer = m_host.changeShutter(*laser, true);
        if (!self || isRunStale(run)) {
            return;
        }
        note(*laser, answer);
    }
    finish();
}

void ScenarioControl::note(const channel& laser, const ShutterAnswer& answer)
{
    QString reason = answer.refusal;
    if (reason.isEmpty() && answer.code != 0) {
        reason = tr("Unable to change shutter state. Error = %1").arg(answer.code);
    }
    if (reason.isEmpty()) {
        return;
    }
    const auto known = std::find_if(m_refusals.begin(), m_refusals.end(),
                                    [&reason](const Refusal& refusal) { return refusal.reason == reason; });
    const QString name = onOneLine(laser.name());
    if (known == m_refusals.end()) {
        m_refusals.append({reason, {name}});
    } else {
        known->channelNames.append(name);
    }
}

void ScenarioControl::finish()
{
    m_loading = false;
    m_host.showStatus(tr("Scenario loaded: %1").arg(onOneLine(m_name)));
    onChannelChanged();
    if (m_refusals.isEmpty()) {
        return;
    }
    QString text = tr("Not everything is as in the scenario:");
    for (const Refusal& refusal : qAsConst(m_refusals)) {
        // Joined, not filled in: the names are the operator's and may contain place markers.
        text += QLatin1String("\n\n") + refusal.channelNames.join(QLatin1String(", ")) +
                QLatin1String(":\n") + refusal.reason;
    }
    m_refusals.clear();
    m_host.warn(text);
}

void ScenarioControl::onDeviceDisconnected()
{
    if (!m_loading) {
        return;
    }
    // Opening on a device that comes back later is not what was asked for.
    ++m_run;
    m_loading = false;
    m_closing = false;
    m_reportTimer.stop();
    showModified();
    // Later: whoever tells of the disconnection is not to be held up by a box. Closing the window disconnects
    // as well, and then there is nobody left to tell.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_window.isVisible()) {
                m_host.warn(tr("The scenario was not loaded completely: the device was disconnected."));
            }
        },
        Qt::QueuedConnection);
}

void ScenarioControl::onShutterMoved(const channel& laser)
{
    m_movedByHand.at(laser.index()) = true;
}

void ScenarioControl::onChannelChanged()
{
    if (m_closing && !isClosingPending()) {
        // Not from inside the report: opening can wait for the device.
        m_reportTimer.start(std::chrono::milliseconds::zero());
        return;
    }
    showModified();
}

void ScenarioControl::showModified()
{
    if (m_name.isEmpty()) {
        return;
    }
    ScenarioValues now = valuesOf(m_host.scenario()->channels());
    if (now == m_values) {
        m_reportTimer.stop();
    }
    if (m_reportTimer.isActive()) {
        // What was asked for and cannot be reported yet is no change.
        for (std::size_t index = 0; index < now.size(); ++index) {
            now.at(index).shutterOpen = m_values.at(index).shutterOpen;
        }
    }
    m_modifiedLabel->setVisible(now != m_values);
}
