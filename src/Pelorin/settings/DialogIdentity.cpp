// The unit's identity and its channel configuration between device and dialog.

#include "boxes/TellUser.h"
#include "device/Device.h"
#include "settings/ChannelConfigTable.h"
#include "settings/OperatingInfoPage.h"
#include "settings/ServicePage.h"
#include "settings/SettingsDialog.h"
#include "settings/SystemInfoPage.h"
#include "settings/ThreeTries.h"
#include "update/Update.h"

namespace {
/// Writes what the dialog shows of one unit, as long as that unit stays in its loader. It waits for the
/// device, and even the dialog may go meanwhile.
class ConfigurationWriter
{
public:
    ConfigurationWriter(SettingsDialog& dialog, Device& device)
        : m_dialog(&dialog), m_device(&device), m_number(device.deviceNumber())
    {
    }
    bool writeProduct(SystemInfoPage& page);
    /// What was shown when writing began.
    bool writeChannels(ChannelConfigTable& table, const ChannelConfigEntries& entries, int revision);
    bool isSupportingChannels() const { return m_supportsChannels; }

private:
    bool mayGoOn() const
    {
        return m_dialog && m_device && m_device->isOpen() && m_device->deviceMode() == DeviceMode::Loader &&
               m_device->deviceNumber() == m_number;
    }
    bool learnProduct(SystemInfoPage& page);

    QPointer<SettingsDialog> m_dialog;
    QPointer<Device> m_device;
    int m_number;
    bool m_supportsChannels = false;
};

bool ConfigurationWriter::learnProduct(SystemInfoPage& page)
{
    page.setDevice(m_number);
    if (page.product()) {
        return true;
    }
    // The hardware version, which cannot be edited, must be written as the device has it.
    ProductConfig product;
    if (m_device->readProductConfig(product) != DeviceResult::Ok || !mayGoOn()) {
        return false;
    }
    page.showProduct(product);
    return true;
}

bool ConfigurationWriter::writeProduct(SystemInfoPage& page)
{
    // A query of the dialog's own, as a tab was clicked just before, must not make the write fail.
    m_device->waitWhileBusy();
    if (!mayGoOn() || !learnProduct(page)) {
        return false;
    }
    m_supportsChannels = m_device->isVersionAboveConfigLimit();
    const ProductConfig product = *page.product();
    if (m_device->writeProductConfig(product) != DeviceResult::Ok || !m_dialog) {
        return false;
    }
    page.setWritten(product);
    return true;
}

bool ConfigurationWriter::writeChannels(ChannelConfigTable& table, const ChannelConfigEntries& entries,
                                        int revision)
{
    if (!mayGoOn()) {
        return false;
    }
    ChannelConfigBytes base = m_device->knownChannelConfig().value_or(ChannelConfigBytes{});
    if (!m_device->knownChannelConfig()) {
        const int code = m_device->readChannelConfig(base.data());
        // For the bytes that no cell shows; a device that has no valid record has none to keep.
        if (code != DeviceResult::Ok && code != DeviceResult::RecordNotValid) {
            return false;
        }
    }
    if (!mayGoOn()) {
        return false;
    }
    const ChannelConfigBytes record = ChannelConfigRecord::encode(entries, base);
    if (m_device->writeChannelConfig(record.data()) != DeviceResult::Ok || !m_dialog) {
        return false;
    }
    if (table.revision() == revision) {
        table.setUnchanged();
    }
    return true;
}
} // namespace

void SettingsDialog::UpdateProductConfigDisplay()
{
    m_identityReader->start();
}

bool SettingsDialog::readIdentity()
{
    if (!mayRead()) {
        return true;
    }
    m_systemInfo->setDevice(m_device->deviceNumber());
    const ImageVersion& running = m_device->runningVersion();
    m_systemInfo->showFirmware(running.kind.isEmpty() ? QString() : running.version.toString());
    m_systemInfo->showController(m_device->necselController());
    const int writtenBefore = m_systemInfo->writtenCount();
    const int device = m_device->deviceNumber();
    const QPointer<SettingsDialog> self(this);
    ProductConfig product;
    const int code = m_device->readProductConfig(product);
    if (!self) {
        return true;
    }
    // What was read before a write, or of another device, is not what this one keeps.
    const bool isOutdated =
        m_systemInfo->writtenCount() != writtenBefore || !m_device || m_device->deviceNumber() != device;
    if (code != DeviceResult::Ok || isOutdated) {
        return false;
    }
    m_systemInfo->showProduct(product);
    // Right after connecting the line is full of settings; now that it has an answer, it has another.
    if (!m_operatingInfo->isUpToDate()) {
        m_hoursReader->start();
    }
    return true;
}

bool SettingsDialog::readChannelConfig()
{
    if (!mayRead()) {
        return true;
    }
    const int device = m_device->deviceNumber();
    m_systemInfo->setDevice(device);
    m_channelConfig->setDevice(device);
    if (!m_device->isVersionAboveConfigLimit() || m_channelConfig->isChanged()) {
        return true;
    }
    const int revision = m_channelConfig->revision();
    const QPointer<SettingsDialog> self(this);
    ChannelConfigBytes record{};
    const int code = m_device->readChannelConfig(record.data());
    if (!self) {
        return true;
    }
    // Somebody who edits while it is read, or writes, wants to see that.
    const bool isWanted =
        m_device && m_device->deviceNumber() == device && m_channelConfig->revision() == revision;
    if (code == DeviceResult::Ok && isWanted) {
        m_channelConfig->show(ChannelConfigRecord::decode(record));
    }
    // One garbled answer is enough to take a record for one that is not valid.
    return code == DeviceResult::Ok || code == DeviceResult::NotOpen;
}

void SettingsDialog::on_channelEnabledCheckboxClicked(bool enabled)
{
    Q_UNUSED(enabled)
    m_channelConfig->enabledClicked(sender());
}

void SettingsDialog::on_channelTypeIndexChanged(int index)
{
    Q_UNUSED(index)
    m_channelConfig->typeChosen(sender());
}

void SettingsDialog::on_secondaryChannelCheckboxClicked(bool secondary)
{
    Q_UNUSED(secondary)
    m_channelConfig->secondaryClicked(sender());
}

void SettingsDialog::on_primaryChannelIndexChanged(int index)
{
    Q_UNUSED(index)
    m_channelConfig->primaryChosen(sender());
}

void SettingsDialog::on_pushButtonSetProductConfigData_clicked()
{
    if (!mayWriteRecord()) {
        return;
    }
    const ChannelConfigEntries entries = m_channelConfig->entries();
    const int revision = m_channelConfig->revision();
    const QPointer<SettingsDialog> self(this);
    m_service->setRecordWriting(true);
    ConfigurationWriter writer(*this, *m_device);
    // Cells of a device that is gone are not for the one that was plugged in since.
    const bool productWritten =
        m_channelConfig->isFor(m_device->deviceNumber()) && writer.writeProduct(*m_systemInfo);
    const bool channelsWritten =
        productWritten &&
        (!writer.isSupportingChannels() || writer.writeChannels(*m_channelConfig, entries, revision));
    if (!endRecordWriting(self)) {
        return;
    }
    if (!productWritten) {
        tellUser(this, QMessageBox::Warning, tr("Error writing product configuration"));
    } else if (!channelsWritten) {
        tellUser(this, QMessageBox::Warning, tr("Error writing channel configuration"));
    } else {
        tellUser(this, QMessageBox::Information, tr("Device configuration updated"));
    }
}
