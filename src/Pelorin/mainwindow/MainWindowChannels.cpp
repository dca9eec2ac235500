// The channel columns: what the operator does to them, and what the device reports of them.

#include "QsLog2_1_0/QsLog.h"
#include "device/Device.h"
#include "mainwindow/ChannelPanel.h"
#include "mainwindow/CommandResult.h"
#include "mainwindow/PelorinMainWindow.h"
#include "scenario/Scenario.h"
#include "ui_PelorinMainWindow.h"
#include "update/Update.h"

#include <QIcon>
#include <QKeyEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QScopedValueRollback>

#include <algorithm>

namespace {
constexpr QSize collapsedSize(800, 400);
constexpr QSize expandedSize(1024, 775);
} // namespace

channel* PelorinMainWindow::laser(int number) const
{
    return m_scenario == nullptr ? nullptr : m_scenario->channelByNumber(static_cast<quint8>(number));
}

bool PelorinMainWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (!m_handlingInput && event->type() == QEvent::MouseButtonRelease) {
        // A box or a wait runs the event loop; a second click meanwhile must not start a second flow.
        const QScopedValueRollback<bool> guard(m_handlingInput, true);
        mouseReleased(watched, *static_cast<QMouseEvent*>(event));
    } else if (!m_handlingInput && event->type() == QEvent::KeyPress) {
        const QScopedValueRollback<bool> guard(m_handlingInput, true);
        keyPressed(watched, *static_cast<QKeyEvent*>(event));
    } else if (event->type() == QEvent::FocusOut) {
        m_panel->takeBackRefusedPercentage(watched);
    }
    return NumberedChannelSlots::eventFilter(watched, event);
}

void PelorinMainWindow::mouseReleased(const QObject* widget, const QMouseEvent& event)
{
    const QRect area = static_cast<const QWidget*>(widget)->rect();
    if (event.button() != Qt::LeftButton || !area.contains(event.pos())) {
        return;
    }
    if (const int number = m_panel->channelOfArrows(widget); number != 0) {
        arrowsClicked(number, event.x() <= area.width() / 2 ? +1 : -1);
    } else {
        activated(widget);
    }
}

void PelorinMainWindow::keyPressed(const QObject* widget, const QKeyEvent& event)
{
    // A bare key is struck too easily to let light out.
    const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    if (isReturn && event.modifiers().testFlag(Qt::ControlModifier) && !event.isAutoRepeat()) {
        activated(widget);
    }
}

void PelorinMainWindow::activated(const QObject* widget)
{
    if (m_display->isOnOffImage(widget)) {
        laserOnOffClicked();
    } else if (m_display->isStatusImage(widget)) {
        laserStatusClicked();
    } else if (const int number = m_panel->channelOfShutterButton(widget); number != 0) {
        shutterClicked(number);
    }
}

void PelorinMainWindow::sliderMoved(int number, int value)
{
    if (m_panel->isMovingSlider()) {
        return;
    }
    m_panel->showPercentage(number, value);
    emit channelIntensityChanged(laser(number), static_cast<float>(value));
}

void PelorinMainWindow::percentageTyped(int number)
{
    const float typed = m_panel->percentageText(number).toFloat();
    const int rounded = qRound(typed);
    // The edit also finishes when the focus merely passes through it; where the device sets the levels, its
    // own must not replace the one that is kept for this computer's control.
    if (!m_choices.isIntensityControlHost() && rounded == m_panel->sliderValue(number)) {
        return;
    }
    m_panel->moveSlider(number, rounded);
    // Channel 1 passes on what was typed, the others what the slider shows.
    emit channelIntensityChanged(laser(number), number == 1 ? typed : static_cast<float>(rounded));
}

void PelorinMainWindow::nameTyped(int number)
{
    emit channelNameChanged(laser(number), m_panel->nameText(number));
}

void PelorinMainWindow::arrowsClicked(int number, int step)
{
    const int value =
        std::clamp(m_panel->percentageText(number).toInt() + step, minimumPercent, maximumPercent);
    m_panel->showPercentage(number, value);
    m_panel->moveSlider(number, value);
    emit channelIntensityChanged(laser(number), static_cast<float>(value));
}

void PelorinMainWindow::updateChannelName(channel* laser, const QString& name)
{
    // The container keeps the name; the device knows its channels by wavelength.
    Q_UNUSED(laser)
    Q_UNUSED(name)
}

void PelorinMainWindow::updateChannelIntensity(channel* laser, float intensityPercent)
{
    if (!m_device || laser == nullptr) {
        return;
    }
    laser->setIntensity(intensityPercent);
    if (isUpdateInTheWay()) {
        return;
    }
    logCommandResult(m_device->setIntensity(*laser, intensityPercent), "Update intensity BUSY",
                     "setChannelIntensity error");
    if (!m_choices.isIntensityControlHost()) {
        // The level is kept, but the device goes on with that of its input.
        m_panel->showReportedIntensity(laser->index() + 1);
    }
}

void PelorinMainWindow::onIntensityChanged(const float* intensityLevels)
{
    QS_TRACE() << "Received change in intensity level from device =" << intensityLevels;
    for (int number = 1; number <= channelCount; ++number) {
        m_panel->showReportedIntensity(number, intensityLevels[number - 1]);
    }
}

void PelorinMainWindow::shutterClicked(int number)
{
    channel* const clicked = laser(number);
    if (clicked == nullptr || isUpdateInTheWay()) {
        return;
    }
    m_scenarioControl->onShutterMoved(*clicked);
    const ShutterAnswer answer = changeShutter(*clicked, !clicked->isShutterOpen());
    if (!answer.refusal.isEmpty()) {
        warn(answer.refusal);
    } else if (answer.code != DeviceResult::Ok) {
        showStatus(tr("Unable to change shutter state. Error = %1").arg(answer.code));
    }
}

ShutterAnswer PelorinMainWindow::changeShutter(channel& laser, bool open)
{
    if (const QString refusal = shutterRefusal(laser, open); !refusal.isEmpty()) {
        return {refusal, DeviceResult::Ok};
    }
    if (open && m_choices.isIntensityControlHost()) {
        // The device must know how bright the channel is to be before light comes out of it.
        updateChannelIntensity(&laser, laser.intensity());
        // Sending can wait for the device, and what it reported meanwhile may forbid what was allowed.
        if (const QString refusal = shutterRefusal(laser, open); !refusal.isEmpty()) {
            return {refusal, DeviceResult::Ok};
        }
    }
    const int number = laser.index() + 1;
    if (!open) {
        // Before it is sent: sending can wait, and end with the connection.
        m_panel->noteShutterRequest(number, false);
    }
    const int code = m_device->setShutter(laser, open);
    if (open && code == DeviceResult::Ok) {
        m_panel->noteShutterRequest(number, true);
    } else if (code == DeviceResult::NotOpen) {
        keepClosingsInMind(false);
    }
    return {QString(), code};
}

QString PelorinMainWindow::shutterRefusal(const channel& laser, bool open) const
{
    if (m_update->isInProgress()) {
        return Update::inProgressText();
    }
    if (!m_choices.isShutterControlHost()) {
        return tr("Shutter change not allowed.  System is in External Shutter Control Mode.");
    }
    if (!open) {
        return {};
    }
    if (!laser.isEnabled()) {
        return tr("Channel is disabled due to fiber interlock.");
    }
    if (m_panel->openShutterCountBeside(laser.index() + 1) >= m_maximumEnabledChannels) {
        return tr("System at limit of enabled channels.  Please disable a channel.");
    }
    return {};
}

QString PelorinMainWindow::applyChannel(channel& laser, const ChannelSettings& settings)
{
    const int number = laser.index() + 1;
    m_panel->showName(number, settings.name);
    emit channelNameChanged(&laser, settings.name);
    laser.setVisible(settings.visible);
    m_panel->showVisible(number, settings.visible);
    laser.setColour(settings.colour);
    m_panel->showColour(number, settings.colour);
    m_panel->showIntensity(number, settings.intensity);
    if (m_choices.isIntensityControlHost()) {
        emit channelIntensityChanged(&laser, settings.intensity);
    } else {
        // Kept for this computer's control; what the device takes from its input goes on being shown.
        laser.setIntensity(settings.intensity);
        m_panel->showReportedIntensity(number);
    }
    if (m_choices.isShutterControlHost()) {
        onInvertTTLChanged(laser.index(), settings.ttlInverted);
        return {};
    }
    // The other polarity would move the shutter at once, past limit and interlock.
    return laser.isTtlInverted() == settings.ttlInverted
               ? QString()
               : tr("TTL polarity change not allowed.  System is in External Shutter Control Mode.");
}

void PelorinMainWindow::onShutterChanged(const bool* shutterStates)
{
    for (int number = 1; number <= channelCount; ++number) {
        const bool open = shutterStates[number - 1];
        QS_INFO() << "Received change in shutter state. Channel" << number << "State" << open;
        emit channelShutterChanged(laser(number), open);
        m_panel->showShutter(number, open);
    }
}

void PelorinMainWindow::onInvertTTLChanged(quint8 channelIndex, bool inverted)
{
    if (m_scenario == nullptr || channelIndex >= m_scenario->channels().size()) {
        return;
    }
    channel* const changed = m_scenario->channels().at(channelIndex);
    changed->setTtlInverted(inverted);
    m_scenarioControl->onChannelChanged();
    if (m_device && !isUpdateInTheWay()) {
        m_device->setTTLInvert(*changed, inverted);
    }
}

void PelorinMainWindow::on_pushButtonExpandCollapseWindow_clicked()
{
    setCollapsed(!m_collapsed);
}

void PelorinMainWindow::setCollapsed(bool collapsed)
{
    m_panel->setCollapsed(collapsed);
    // Until the layouts know of the change, the old minimum size would stand in the way of the new size.
    m_ui->centralwidget->layout()->activate();
    layout()->activate();
    // The columns' fixed minimum lets them be squeezed until texts are cut; the window keeps that from
    // happening.
    setMinimumHeight(0);
    if (collapsed) {
        const int needed = layout()->minimumSize().height() + m_panel->heightBeyondCollapsedMinimum();
        setMinimumHeight(std::min(needed, collapsedSize.height()));
    }
    resize(collapsed ? collapsedSize : expandedSize);
    if (collapsed) {
        repaint();
    }
    m_ui->pushButtonExpandCollapseWindow->setText(collapsed ? tr("Expand") : tr("Collapse"));
    m_ui->pushButtonExpandCollapseWindow->setIcon(
        QIcon(collapsed ? QStringLiteral(":/Resources/buttons/expand.png")
                        : QStringLiteral(":/Resources/buttons/collapse.png")));
    m_collapsed = collapsed;
}
