// The system configuration between device, editor and calibration file.

#include "QsLog2_1_0/QsLog.h"
#include "boxes/ChooseFile.h"
#include "boxes/TellUser.h"
#include "device/Device.h"
#include "settings/CalibrationFile.h"
#include "settings/NovalumBlock.h"
#include "settings/ServicePage.h"
#include "settings/SettingsDialog.h"
#include "settings/SystemConfigPage.h"
#include "settings/SystemConfigRecord.h"
#include "settings/SystemInfoPage.h"
#include "ui_SettingsDialog.h"
#include "update/Update.h"

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>

namespace {
/// Many times what a calibration takes, and little enough for a click on the wrong file.
constexpr qint64 maximumFileSize = qint64(64) * 1024 * 1024;

QString chooseCalibration(QWidget* parent, const QString& caption, QFileDialog::AcceptMode mode)
{
    return chooseFile(parent, mode, caption, QDir::homePath(),
                      SettingsDialog::tr("JSON files (*.json);;All files (*.*)"));
}

QString chooseFileToWrite(QWidget* parent)
{
    return chooseCalibration(parent, SettingsDialog::tr("Choose a directory and JSON file name to write to"),
                             QFileDialog::AcceptSave);
}

/// Nothing for what cannot be read or can be no calibration; the read of a device or a pipe might never end.
QByteArray readCalibration(const QString& pathName)
{
    QFile file(pathName);
    if (!QFileInfo(pathName).isFile() || file.size() > maximumFileSize ||
        !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    return file.read(maximumFileSize);
}

/// Writes what the editor shows, and what it does not show as the device has it.
int writeConfig(Device& device, const SystemConfigTexts& texts)
{
    SystemConfigBytes rest = device.knownSystemConfig().value_or(SystemConfigBytes{});
    if (!device.knownSystemConfig()) {
        const int code = device.readSystemConfig(rest.data());
        // A device that has no record yet has nothing to lose.
        if (code != DeviceResult::Ok && code != DeviceResult::RecordNotValid) {
            return code;
        }
    }
    const SystemConfigBytes record = SystemConfigRecord::fromTexts(texts, rest);
    return device.writeSystemConfig(record.data());
}
} // namespace

bool SettingsDialog::readSystemConfig()
{
    if (!mayRead()) {
        return true;
    }
    if (m_systemConfig->isTransferring()) {
        return false;
    }
    m_systemConfig->belongTo(m_device->deviceNumber());
    if (m_systemConfig->isChanged()) {
        return true;
    }
    const QPointer<SettingsDialog> self(this);
    const SystemConfigPage::Transfer transfer(*m_systemConfig);
    SystemConfigBytes record{};
    const int code = m_device->readSystemConfig(record.data());
    if (self && code == DeviceResult::Ok && !m_systemConfig->isChanged()) {
        m_systemConfig->showFromDevice(SystemConfigRecord::toTexts(record));
    }
    // One garbled answer is enough to take a record for one that is not valid.
    return code == DeviceResult::Ok || code == DeviceResult::NotOpen;
}

void SettingsDialog::on_pushButtonGetSystemConfigData_clicked()
{
    if (m_systemConfig->isTransferring() || (m_update && m_update->refusesAction()) || !mayRead() ||
        m_service->isSwitching()) {
        return;
    }
    const QPointer<SettingsDialog> self(this);
    const SystemConfigPage::Transfer transfer(*m_systemConfig);
    SystemConfigBytes record{};
    const int code = m_device->readSystemConfig(record.data());
    if (self && code == DeviceResult::Ok) {
        m_systemConfig->showFromDevice(SystemConfigRecord::toTexts(record));
    }
}

bool SettingsDialog::mayWriteRecord()
{
    if (m_service->isRecordWriting() || (m_update && m_update->refusesAction())) {
        return false;
    }
    if (!m_device || !m_device->isOpen()) {
        tellUser(this, QMessageBox::Warning, tr("Please connect to device"));
        return false;
    }
    // A loader that was told to start the application is not to be relied on any more.
    if (m_device->deviceMode() != DeviceMode::Loader || m_service->isSwitching()) {
        tellUser(this, QMessageBox::Warning, tr("Device must be running loader for this command."));
        return false;
    }
    return true;
}

bool SettingsDialog::endRecordWriting(const QPointer<SettingsDialog>& self)
{
    if (!self) {
        return false;
    }
    self->m_service->setRecordWriting(false);
    // A box would keep a program alive whose window has been closed meanwhile.
    return self->m_device && !self->m_device->isShutDown();
}

void SettingsDialog::on_pushButtonSetSystemConfigData_clicked()
{
    if (m_systemConfig->isTransferring() || !mayWriteRecord()) {
        return;
    }
    m_systemConfig->finishTyping();
    const int written = m_systemConfig->changeCount();
    const QPointer<SettingsDialog> self(this);
    // Cells of a device that is gone are not for the one that was plugged in since.
    int code = DeviceResult::NotOpen;
    if (m_systemConfig->isFor(m_device->deviceNumber())) {
        const SystemConfigPage::Transfer transfer(*m_systemConfig);
        m_service->setRecordWriting(true);
        code = writeConfig(*m_device, m_systemConfig->texts());
    }
    if (!endRecordWriting(self)) {
        return;
    }
    if (code == DeviceResult::Ok) {
        m_systemConfig->markKept(written);
        tellUser(this, QMessageBox::Information, tr("System configuration updated"));
    } else {
        tellUser(this, QMessageBox::Warning, tr("Error writing system configuration"));
    }
}

void SettingsDialog::on_pushButtonLoadSystemConfigData_clicked()
{
    const QPointer<SettingsDialog> self(this);
    const QString pathName =
        chooseCalibration(this, tr("Choose a JSON file to open"), QFileDialog::AcceptOpen);
    if (!self || pathName.isEmpty()) {
        return;
    }
    SystemConfigTexts texts = m_systemConfig->texts();
    if (CalibrationFile::fromJson(readCalibration(pathName), m_systemConfig->novalumHeaders(), texts)) {
        m_systemConfig->show(texts);
    }
}

void SettingsDialog::on_pushButtonSaveSystemConfigData_clicked()
{
    const QPointer<SettingsDialog> self(this);
    const QString pathName = chooseFileToWrite(this);
    if (self && !pathName.isEmpty()) {
        saveSystemConfigData(pathName, true);
    }
}

void SettingsDialog::saveSystemConfigData(QString pathName, bool promptForFileSave)
{
    const QPointer<SettingsDialog> self(this);
    if (promptForFileSave) {
        pathName = chooseFileToWrite(this);
    }
    if (!self || pathName.isEmpty()) {
        return;
    }
    m_systemConfig->finishTyping();
    if (!CalibrationFile::write(
            pathName, CalibrationFile::toJson(m_systemConfig->texts(), m_systemConfig->novalumHeaders()))) {
        QS_ERROR() << "Calibration file not written:" << pathName;
    }
}

void SettingsDialog::saveCalibrationBackup(const QString& pathName)
{
    const QPointer<SettingsDialog> self(this);
    // A device that was plugged in just before the update: the cells may still be another one's.
    if (m_device && !m_systemConfig->isFor(m_device->deviceNumber())) {
        m_systemConfig->belongTo(m_device->deviceNumber());
        SystemConfigBytes record{};
        const int code = m_device->readSystemConfig(record.data());
        if (!self) {
            return;
        }
        if (code == DeviceResult::Ok) {
            m_systemConfig->showFromDevice(SystemConfigRecord::toTexts(record));
        }
    }
    saveSystemConfigData(pathName, false);
}

void SettingsDialog::pasteData()
{
    if (m_ui->tabWidget->tabText(m_ui->tabWidget->currentIndex()) != tr("System Config")) {
        return;
    }
    if (const auto block = parseNovalumBlock(QGuiApplication::clipboard()->text())) {
        m_systemConfig->pasteNovalum(*block);
    } else {
        tellUser(this, QMessageBox::Warning, tr("Data is invalid"));
    }
}
