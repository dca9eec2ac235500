#include "settings/SettingsDialog.h"

#include "device/Device.h"
#include "settings/Console.h"
#include "ui_SettingsDialog.h"
#include "update/Update.h"

namespace {
constexpr int systemConfigPosition = 1;
constexpr int serviceDevelopmentPosition = 6;
} // namespace

SettingsDialog::SettingsDialog(QWidget* parent, Device* device, Update* update, QSettings* /*store*/,
                               bool diagnostic, const QString& versionString)
    : QDialog(parent), m_ui(std::make_unique<Ui::SettingsDialog>()), m_device(device), m_update(update)
{
    m_ui->setupUi(this);
    m_ui->labelApplicationSoftwareVersion->setText(versionString.trimmed());
    setServiceLevel(diagnostic);
}

SettingsDialog::~SettingsDialog() = default;

Console* SettingsDialog::console() const
{
    return m_ui->consoleWindow;
}

void SettingsDialog::setServiceLevel(bool service)
{
    setTabPresent(m_ui->tabSystemConfig, tr("System Config"), systemConfigPosition, service);
    setTabPresent(m_ui->tabServiceDevelopment, tr("Service && Development"), serviceDevelopmentPosition,
                  service);
}

void SettingsDialog::setTabPresent(QWidget* page, const QString& caption, int position, bool present)
{
    const int index = m_ui->tabWidget->indexOf(page);
    if (present && index < 0) {
        m_ui->tabWidget->insertTab(position, page, caption);
    } else if (!present && index >= 0) {
        m_ui->tabWidget->removeTab(index);
    }
}

void SettingsDialog::receivedDataFromDevice(QByteArray& bytes)
{
    // The programming traffic of an update would flush everything of interest out of the terminal.
    if (m_update && m_update->isInProgress()) {
        return;
    }
    m_ui->consoleWindow->putData(bytes);
}

void SettingsDialog::onDeviceConnected(const QString& portName)
{
    showConnection(tr("Device connected on %1").arg(portName), QStringLiteral("green"));
}

void SettingsDialog::onDeviceDisconnected(const QString& portName)
{
    showConnection(tr("Device disconnected on %1").arg(portName), QStringLiteral("red"));
}

void SettingsDialog::showConnection(const QString& text, const QString& colourName)
{
    m_ui->labelComStatus->setText(text);
    m_ui->labelComStatus->setStyleSheet(QStringLiteral("color:%1").arg(colourName));
}

void SettingsDialog::onInvertedTTLStateChanged(const bool* invertedTTLStates)
{
    Q_UNUSED(invertedTTLStates)
}

void SettingsDialog::on_tabWidget_tabBarClicked(int index)
{
    // An update has the line for itself, and a click beside the tabs chooses none.
    if (!m_device || index < 0 || (m_update && m_update->isInProgress())) {
        return;
    }
    // Polling would mix its replies into what service staff type by hand.
    m_device->setPolling(m_ui->tabWidget->widget(index) != m_ui->tabServiceDevelopment);
}

void SettingsDialog::on_SettingsDialog_finished(int result)
{
    // Every choice was told when it was made, so that closing the dialog decides nothing.
    Q_UNUSED(result)
}
