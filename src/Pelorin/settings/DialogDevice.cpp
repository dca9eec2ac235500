// What the settings dialog and the device have to do with each other.

#include "device/Device.h"
#include "settings/Console.h"
#include "settings/OperatingInfoPage.h"
#include "settings/PortChooser.h"
#include "settings/ServicePage.h"
#include "settings/SettingsDialog.h"
#include "settings/SystemConfigPage.h"
#include "settings/ThreeTries.h"
#include "ui_SettingsDialog.h"
#include "update/Update.h"

namespace {
bool isRunning(const Update* update)
{
    return update != nullptr && update->isInProgress();
}
} // namespace

bool SettingsDialog::mayRead() const
{
    return m_device && m_device->isOpen() && !isRunning(m_update);
}

void SettingsDialog::receivedDataFromDevice(QByteArray& bytes)
{
    // The programming traffic of an update would flush everything of interest out of the terminal.
    if (!isRunning(m_update)) {
        m_ui->consoleWindow->putData(bytes);
    }
}

void SettingsDialog::onDeviceConnected(const QString& portName)
{
    // Who heard of it before may have lost the device meanwhile, which was told then.
    if (m_device && m_device->portName() == portName && !m_device->isOpen()) {
        return;
    }
    m_ports->showConnected(portName);
    m_service->showRunning();
    if (isRunning(m_update)) {
        return;
    }
    m_operatingInfo->setOutdated();
    m_readingsAnswered = true;
    m_systemReader->start();
    m_identityReader->startLater();
}

void SettingsDialog::catchUpWithUpdate(bool touched)
{
    if (isVisible()) {
        letPollingFollow(m_ui->tabWidget->currentWidget());
    }
    if (touched && m_device && m_device->isOpen()) {
        onDeviceConnected(m_device->portName());
    }
}

void SettingsDialog::onDeviceDisconnected(const QString& portName)
{
    // A device that comes back at once has its own times; what was begun for the last one must not fall into
    // them.
    m_systemReader->stop();
    m_identityReader->stop();
    m_ports->showDisconnected(portName);
    listPorts();
    m_service->showRunning();
}

void SettingsDialog::onInvertedTTLStateChanged(const bool* invertedTTLStates)
{
    Q_UNUSED(invertedTTLStates)
}

void SettingsDialog::on_tabWidget_tabBarClicked(int index)
{
    // A click beside the tabs chooses none.
    const QWidget* const page = m_ui->tabWidget->widget(index);
    if (page == nullptr) {
        return;
    }
    letPollingFollow(page);
    if (page == m_ui->tabSystemInfo) {
        UpdateProductConfigDisplay();
    } else if (page == m_ui->tabOperatingInfo) {
        m_hoursReader->start();
    }
}

void SettingsDialog::letPollingFollow(const QWidget* page)
{
    if (m_device && !isRunning(m_update)) {
        m_device->setPolling(page != m_ui->tabServiceDevelopment);
    }
}

bool SettingsDialog::readHours()
{
    if (!mayRead() || !m_device->isApplicationConnected()) {
        return true;
    }
    const QPointer<SettingsDialog> self(this);
    OperatingHours hours{};
    // Tries that meet a poll would meet another one a second later, and so for ever.
    const int code = m_device->waitWhileBusy();
    if (code != DeviceResult::Ok || !self || !m_device || m_device->getHours(hours) != DeviceResult::Ok) {
        return false;
    }
    if (self) {
        m_operatingInfo->showHours(hours);
    }
    return true;
}

void SettingsDialog::pollDevice()
{
    if (!isVisible() || !mayRead()) {
        return;
    }
    const int index = m_ui->tabWidget->currentIndex();
    if (m_ui->tabWidget->tabText(index) == tr("System Config")) {
        readReadings();
    } else if (m_ui->tabWidget->currentWidget() == m_ui->tabServiceDevelopment) {
        // The poll, which does this otherwise, rests; the main window's commands must not wait for ever.
        m_device->drainQueue();
    }
}

void SettingsDialog::readReadings()
{
    // A device that restarts into another image is not to be taken for a silent one.
    if (!m_readingsAnswered || m_service->isSwitching()) {
        return;
    }
    const QPointer<SettingsDialog> self(this);
    // The poll runs in step with this timer; whoever does not wait for it may meet it every time.
    if (m_device->waitWhileBusy() != DeviceResult::Ok || !self || !m_device) {
        return;
    }
    Temperatures readings;
    const int code = m_device->getTemperatures(readings);
    if (!self) {
        return;
    }
    if (code == DeviceResult::Ok) {
        m_systemConfig->showReadings(readings);
    }
    // A loader that keeps quiet would have the line taken for most of the time, and the editor's transfers
    // would have to wait for it.
    const bool isLoader = m_device && m_device->deviceMode() == DeviceMode::Loader;
    m_readingsAnswered = code != DeviceResult::NoReply || !isLoader;
}
