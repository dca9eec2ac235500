// What the settings dialog and the device have to do with each other.

#include "device/Device.h"
#include "settings/Console.h"
#include "settings/OperatingInfoPage.h"
#include "settings/PortChooser.h"
#include "settings/ServicePage.h"
#include "settings/SettingsDialog.h"
#include "settings/SystemConfigPage.h"
#include "settings/SystemInfoPage.h"
#include "settings/ThreeTries.h"
#include "ui_SettingsDialog.h"
#include "update/Update.h"

bool SettingsDialog::isUpdating() const
{
    return m_update && m_update->isInProgress();
}

bool SettingsDialog::mayRead() const
{
    return m_device && m_device->isOpen() && !isUpdating();
}

void SettingsDialog::receivedDataFromDevice(QByteArray& bytes)
{
    // The programming traffic of an update would flush everything of interest out of the terminal.
    if (!isUpdating()) {
        m_ui->consoleWindow->putData(bytes);
    }
}

void SettingsDialog::onDeviceConnected(const QString& portName)
{
    m_ports->showConnected(portName);
    m_service->showRunning();
    if (isUpdating()) {
        return;
    }
    m_identityReader->startLater();
    m_hoursKnown = false;
    m_hoursReader->start();
}

void SettingsDialog::onDeviceDisconnected(const QString& portName)
{
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
    if (m_device && !isUpdating()) {
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
    if (m_device->getHours(hours) != DeviceResult::Ok) {
        return false;
    }
    if (self) {
        m_hoursKnown = true;
        m_operatingInfo->showHours(hours);
    }
    return true;
}

void SettingsDialog::UpdateProductConfigDisplay()
{
    m_identityReader->start();
}

bool SettingsDialog::readIdentity()
{
    if (!mayRead()) {
        return true;
    }
    const ImageVersion& running = m_device->runningVersion();
    m_systemInfo->showFirmware(running.kind.isEmpty() ? QString() : running.version.toString());
    m_systemInfo->showController(m_device->necselController());
    const QPointer<SettingsDialog> self(this);
    ProductConfig product;
    if (m_device->readProductConfig(product) != DeviceResult::Ok) {
        return false;
    }
    if (!self) {
        return true;
    }
    m_systemInfo->showProduct(product);
    // Right after connecting the line is full of settings; now that it has an answer, it has another.
    if (!m_hoursKnown) {
        m_hoursReader->start();
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
        const QPointer<SettingsDialog> self(this);
        Temperatures readings;
        if (m_device->getTemperatures(readings) == DeviceResult::Ok && self) {
            m_systemConfig->showReadings(readings);
        }
    } else if (m_ui->tabWidget->currentWidget() == m_ui->tabServiceDevelopment) {
        // The poll, which does this otherwise, rests; the main window's commands must not wait for ever.
        m_device->drainQueue();
    }
}
