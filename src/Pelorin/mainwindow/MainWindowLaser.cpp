// The laser system as a whole: on and off, mode, faults and warnings, connecting and disconnecting.

#include "QsLog2_1_0/QsLog.h"
#include "device/Device.h"
#include "mainwindow/ChannelPanel.h"
#include "mainwindow/OpenFailureNotice.h"
#include "mainwindow/PelorinMainWindow.h"
#include "scenario/Scenario.h"
#include "ui_PelorinMainWindow.h"
#include "update/Update.h"

#include <QPointer>
#include <QScopedValueRollback>

namespace {
// Of the whole process, like the one device that the clicks are for.
bool laserButtonBusy = false;
bool onOffClickBusy = false;
bool statusClickBusy = false;

/// Empty while it is not known what runs; the application, which runs every day, is told by its version
/// alone.
QString firmwareText(DeviceMode mode, const ImageVersion& running)
{
    if (mode == DeviceMode::NotIdentified) {
        return {};
    }
    const QString version = QLatin1Char('V') + running.version.toString();
    return mode == DeviceMode::Application ? version : QString(running.kind + QLatin1Char(' ') + version);
}

ShutterStates knownShutterStates(const Scenario* scenario)
{
    ShutterStates states{};
    if (scenario != nullptr) {
        for (const channel* laser : scenario->channels()) {
            states.at(laser->index()) = laser->isShutterOpen();
        }
    }
    return states;
}
} // namespace

void PelorinMainWindow::laserOnOffClicked()
{
    if (onOffClickBusy || !m_device || isUpdateInTheWay()) {
        return;
    }
    const QScopedValueRollback<bool> guard(onOffClickBusy, true);
    // During warm-up the click is refused, and then nothing goes over the line.
    const bool mayTurnOn = !m_laserOn && m_state.mode != FunctionalModeWarmup;
    if (mayTurnOn && m_choices.isIntensityControlHost() && m_scenario != nullptr) {
        const QList<channel*> channels = m_scenario->channels();
        for (const channel* laser : channels) {
            m_device->setIntensity(*laser, laser->intensity());
        }
    }
    setLaserOn(!m_laserOn);
}

void PelorinMainWindow::setLaserOn(bool on)
{
    QS_INFO() << "Laser On/Off pressed <<" << on;
    if (laserButtonBusy) {
        QS_WARN() << "Laser On/Off button BUSY";
        return;
    }
    const QScopedValueRollback<bool> guard(laserButtonBusy, true);
    if (isUpdateInTheWay()) {
        return;
    }
    if (on) {
        requestRun();
    } else if (m_device && m_device->setFunctionalMode(FunctionalModeIdle) != DeviceResult::Ok) {
        QS_ERROR() << "Error setting idle mode";
    }
}

void PelorinMainWindow::requestRun()
{
    if (m_device && m_state.mode == FunctionalModeIdle && !m_device->faultState()) {
        QS_INFO() << "Attempt to set run mode";
        if (m_device->setFunctionalMode(FunctionalModeRun) != DeviceResult::Ok) {
            QS_ERROR() << "Error setting run mode";
        }
        return;
    }
    if (m_device && m_state.mode == FunctionalModeRun) {
        QS_ERROR() << "Ignoring set to run mode, going to idle";
        m_device->setFunctionalMode(FunctionalModeIdle);
        return;
    }
    QS_ERROR() << "Not ready to run or error";
    if (m_state.mode == FunctionalModeWarmup) {
        showStatus(tr("System warming up.  Not ready to run."));
    } else if (m_device && m_device->faultState()) {
        showStatus(tr("System in fault state.  Not ready to run."));
    }
}

void PelorinMainWindow::laserStatusClicked()
{
    if (statusClickBusy || !m_device || isUpdateInTheWay()) {
        return;
    }
    const QScopedValueRollback<bool> guard(statusClickBusy, true);
    QS_INFO() << "Clear faults pressed <<";
    m_device->clearFaults();
}

void PelorinMainWindow::onFunctionalModeChanged(FunctionalMode_t mode)
{
    if (mode == FunctionalModeRun) {
        QS_INFO() << "Mode Changed to RUN";
    } else if (mode == FunctionalModeIdle) {
        QS_INFO() << "Mode Changed to IDLE";
    } else if (mode == FunctionalModeWarmup) {
        QS_INFO() << "Mode Changed to WARMUP";
    }
    m_state.mode = mode;
    m_state.fault = m_device && m_device->faultState();
    m_laserOn = mode == FunctionalModeRun && !m_state.fault;
    showModeInStatusBar();
    m_display->showState(m_state);
}

void PelorinMainWindow::showModeInStatusBar()
{
    if (m_device && m_device->warningState()) {
        return;
    }
    if (m_state.mode == FunctionalModeWarmup) {
        showStatus(tr("Warm up mode"));
    } else if (!m_state.fault) {
        showStatus(m_state.mode == FunctionalModeRun ? tr("Run mode") : tr("Idle mode"));
    }
}

void PelorinMainWindow::onFaultStateChanged(bool state, const QString& message)
{
    QS_INFO() << "Received change in fault state from device =" << state << "msg =" << message;
    m_state.faultText = state ? message : QString();
    showStatus(state ? message : tr("System Fault Cleared"));
    onFunctionalModeChanged(m_state.mode);
}

void PelorinMainWindow::onWarningStateChanged(bool state, const QString& message)
{
    QS_INFO() << "Received change in warning state from device =" << state << "msg =" << message;
    m_state.warningText = state ? message : QString();
    if (m_device && !m_device->faultState()) {
        showStatus(state ? message : tr("Warnings Cleared"));
    }
    m_state.no555Warning = !message.contains(QLatin1String("555"));
    m_state.noNovalumWarning = !message.contains(QLatin1String("Novalum"), Qt::CaseInsensitive);
    if (m_scenario != nullptr) {
        const QList<channel*> channels = m_scenario->channels();
        for (channel* laser : channels) {
            // By the operator's name: whoever moves the 555 nm laser to another channel renames that channel.
            const bool isOn555Fiber = laser->name().contains(QLatin1String("555"), Qt::CaseInsensitive);
            const bool enabled = isOn555Fiber ? m_state.no555Warning : m_state.noNovalumWarning;
            if (laser->isEnabled() != enabled) {
                laser->setEnabled(enabled);
                emit channelEnableChanged(laser, enabled);
            }
        }
    }
    onFunctionalModeChanged(m_state.mode);
}

void PelorinMainWindow::onDeviceConnected(const QString& portName)
{
    showStatus(tr("Device connected on %1").arg(portName));
    m_laserOn = false;
    // As they were known before the connection: what an old queue may open meanwhile is closed again.
    const ShutterStates states = knownShutterStates(m_scenario);
    m_display->showConnected(m_device->deviceMode());
    if (!m_update->isInProgress()) {
        greetDevice(states);
    }
}

void PelorinMainWindow::onUpdateFinished(bool touched)
{
    if (!m_device || m_scenario == nullptr) {
        return;
    }
    if (touched) {
        // A device with new firmware begins dark, whatever was open before, and whenever it is connected.
        keepClosingsInMind(true);
    }
    if (!m_device->isOpen()) {
        // Whatever else stands there was told after the run had begun, and holds.
        if (m_ui->statusBar->currentMessage() == Update::inProgressText()) {
            m_ui->statusBar->clearMessage();
        }
        return;
    }
    if (!m_device->isApplicationConnected()) {
        showStatus(tr("Device connected on %1").arg(m_device->portName()));
    } else if (m_device->faultState()) {
        showStatus(m_state.faultText);
    } else if (m_device->warningState()) {
        showStatus(m_state.warningText);
    } else {
        showModeInStatusBar();
    }
    if (touched) {
        greetDevice(knownShutterStates(m_scenario));
    }
}

void PelorinMainWindow::greetDevice(const ShutterStates& states)
{
    const QPointer<PelorinMainWindow> self(this);
    readIdentity();
    // Reading waits for the device; by now the window may be closing, or the device may be gone again.
    if (!self || m_update->isInProgress() || m_scenario == nullptr || !m_device ||
        !m_device->isApplicationConnected()) {
        return;
    }
    sendEverything(states);
}

void PelorinMainWindow::readIdentity()
{
    const QString firmware = firmwareText(m_device->deviceMode(), m_device->runningVersion());
    m_display->showFirmware(firmware);
    ProductConfig product;
    const QPointer<PelorinMainWindow> self(this);
    if (m_device->readProductConfig(product) != DeviceResult::Ok || !self || !m_device->isOpen()) {
        return;
    }
    m_display->showIdentity(product, firmware);
    QS_INFO() << "VYR Serial Number" << product.serialNumber;
    QS_INFO() << "Necsel Serial Number" << product.necselSerialNumber;
    QS_INFO() << "Novalum Serial Number" << product.novalumSerialNumber;
    QS_INFO() << "VYR Hardware Version" << product.hardwareVersion;
    QS_INFO() << "VYR Part Number" << product.partNumber;
}

void PelorinMainWindow::sendEverything(const ShutterStates& states)
{
    setLaserOn(false);
    m_device->setShutterMode(m_choices.shutterControl);
    m_device->setIntensityMode(m_choices.intensityControl);
    m_device->setSpeckle(m_choices.speckleReducer);
    m_device->setSleepTime(static_cast<quint16>(effectiveSleepMinutes()));
    const QList<channel*> channels = m_scenario->channels();
    for (const channel* laser : channels) {
        if (m_choices.isIntensityControlHost()) {
            m_device->setIntensity(*laser, laser->intensity());
        }
        if (m_choices.isShutterControlHost()) {
            m_device->setShutter(*laser, states.at(laser->index()));
        }
        m_device->setTTLInvert(*laser, laser->isTtlInverted());
    }
}

/// The states are sent again on connecting. A shutter that was to be closed must not come back open because
/// its report was lost with the connection, nor one that the external inputs had opened because this computer
/// got the control meanwhile, nor any of a device that was restarted (`all`).
void PelorinMainWindow::keepClosingsInMind(bool all)
{
    const bool openedByInputs = !m_choices.isShutterControlHost();
    for (int number = 1; number <= channelCount; ++number) {
        if (all || openedByInputs || m_panel->isClosingPending(number)) {
            emit channelShutterChanged(laser(number), false);
            m_panel->showShutter(number, false);
        }
    }
}

void PelorinMainWindow::onDeviceDisconnected(const QString& portName)
{
    showStatus(tr("Device disconnected on %1").arg(portName));
    m_laserOn = false;
    m_scenarioControl->onDeviceDisconnected();
    keepClosingsInMind(false);
    m_panel->forgetRequests();
    m_panel->forgetReportedIntensities();
    m_display->showDisconnected();
    m_display->clearIdentity();
}

void PelorinMainWindow::onDeviceError(const QString& errorString)
{
    // While the device cannot be opened each attempt tells its errors here, too, and says less by them.
    if (!m_openFailure->isStanding()) {
        showStatus(tr("Port error %1").arg(errorString));
    }
}

void PelorinMainWindow::onOpenFailureChanged(const QString& portName, OpenFailure cause)
{
    m_openFailure->tell(portName, cause);
    // Once it is open, its identification says more in a moment.
    if (cause == OpenFailure::None && !m_device->isOpen() && !m_update->isInProgress()) {
        showStatus(tr("Device disconnected on %1").arg(portName));
    }
}

void PelorinMainWindow::onDataReceivedFromDevice(QByteArray& bytes)
{
    QString text = QString::fromUtf8(bytes);
    if (!m_device || !text.contains(QLatin1String("Firmware Update"))) {
        return;
    }
    // The device is busy with its own laser controller and is left alone until that is done.
    m_device->setUpdatingLaserController();
    m_device->setPolling(false);
    text.remove(QLatin1Char('\n'));
    QS_INFO() << text;
    showStatus(text);
}

void PelorinMainWindow::onIntensityControlChanged(quint8 mode)
{
    const bool wasExternal = !m_choices.isIntensityControlHost();
    m_choices.intensityControl = mode;
    // Shown first: sending can wait for the device, and the choice may be another one by then.
    const bool isHost = m_choices.isIntensityControlHost();
    m_display->showIntensityControl(isHost);
    if (isHost) {
        m_panel->forgetReportedIntensities();
    }
    if (isHost && wasExternal) {
        // What the inputs asked for holds no longer; the device goes on with what this computer set.
        for (int number = 1; number <= channelCount; ++number) {
            if (const channel* const kept = laser(number)) {
                m_panel->showIntensity(number, kept->intensity());
            }
        }
    }
    if (m_device && !isUpdateInTheWay()) {
        m_device->setIntensityMode(mode);
    }
}

void PelorinMainWindow::onShutterControlChanged(quint8 mode)
{
    m_choices.shutterControl = mode;
    m_display->showShutterControl(m_choices.isShutterControlHost());
    if (m_device && !isUpdateInTheWay()) {
        m_device->setShutterMode(mode);
    }
    if (!m_choices.isShutterControlHost()) {
        return;
    }
    m_display->showLaserOff();
    if (m_scenario != nullptr && m_device) {
        setLaserOn(false);
    }
}
