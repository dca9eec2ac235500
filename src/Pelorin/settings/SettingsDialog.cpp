#include "settings/SettingsDialog.h"

#include "boxes/TellUser.h"
#include "compat/QtVersion.h"
#include "device/Device.h"
#include "help/Help.h"
#include "mainwindow/channel.h"
#include "settings/ChannelConfigTable.h"
#include "settings/Console.h"
#include "settings/ControlModePage.h"
#include "settings/DiagnosticsSaver.h"
#include "settings/FocusInView.h"
#include "settings/OperatingChoices.h"
#include "settings/OperatingInfoPage.h"
#include "settings/PortChooser.h"
#include "settings/ServicePage.h"
#include "settings/SystemConfigPage.h"
#include "settings/SystemInfoPage.h"
#include "settings/ThreeTries.h"
#include "settings/TtlPage.h"
#include "settings/WheelGuard.h"
#include "ui_SettingsDialog.h"
#include "update/Update.h"

#include <QScopedValueRollback>
#include <QScreen>
#include <QSettings>
#include <QShortcut>
#include <QShowEvent>

#include <chrono>

namespace {
constexpr int systemConfigPosition = 1;
constexpr int serviceDevelopmentPosition = 6;
constexpr std::chrono::seconds pollInterval{1};
constexpr std::chrono::milliseconds retryInterval{5};

void setTabPresent(QTabWidget& tabs, QWidget* page, const QString& caption, int position, bool present)
{
    const int index = tabs.indexOf(page);
    if (present && index < 0) {
        tabs.insertTab(position, page, caption);
    } else if (!present && index >= 0) {
        tabs.removeTab(index);
    }
}
} // namespace

SettingsDialog::SettingsDialog(QWidget* parent, Device* device, Update* update, QSettings* store,
                               bool diagnostic, const QString& versionString)
    : TtlChoiceSlots(parent), m_ui(std::make_unique<Ui::SettingsDialog>()), m_device(device),
      m_update(update), m_store(store)
{
    m_ui->setupUi(this);
    m_ports = new PortChooser(*this);
    m_service = new ServicePage(*this, device, update);
    m_hoursReader = new ThreeTries([this] { return readHours(); }, this);
    m_identityReader = new ThreeTries([this] { return readIdentity(); }, this);
    m_systemReader = new ThreeTries([this] { return readSystemConfig(); }, this);
    m_channelReader = new ThreeTries([this] { return readChannelConfig(); }, this);
    m_systemReader->setFollower(m_channelReader);
    m_channelReader->setFollower(m_hoursReader);
    m_systemInfo = std::make_unique<SystemInfoPage>(*this);
    m_channelConfig = std::make_unique<ChannelConfigTable>(*this);
    m_systemConfig = std::make_unique<SystemConfigPage>(*this);
    m_operatingInfo = std::make_unique<OperatingInfoPage>(*this);
    m_controlMode = std::make_unique<ControlModePage>(*this);
    m_ttl = std::make_unique<TtlPage>(*this);

    m_systemInfo->showApplicationSoftware(versionString.trimmed());
    new DiagnosticsSaver(*this, *m_systemInfo, device, update, store, versionString.trimmed());
    auto* wheelGuard = new WheelGuard(this);
    m_ui->comboBoxComPort->installEventFilter(wheelGuard);
    m_ui->spinBoxSleepTimer->installEventFilter(wheelGuard);
    new FocusInView(*this);
    connect(new QShortcut(QKeySequence::Paste, this), &QShortcut::activated, this,
            &SettingsDialog::pasteData);
    // The keyboard changes tabs without clicking on one.
    connect(m_ui->tabWidget, &QTabWidget::currentChanged, this, [this](int index) {
        if (isVisible() && !m_suppressed) {
            letPollingFollow(m_ui->tabWidget->widget(index));
        }
    });
    if (m_update) {
        connect(m_update, &Update::saveSettingsInfo, this, &SettingsDialog::saveCalibrationBackup);
        connect(m_update, &Update::finished, this, &SettingsDialog::catchUpWithUpdate);
    }
    Help::install(this,
                  [this] { return Help::pageAt(m_ui->tabWidget->currentWidget(), QStringLiteral("index")); });
    setServiceLevel(diagnostic);
}

SettingsDialog::~SettingsDialog() = default;

Console* SettingsDialog::console() const
{
    return m_ui->consoleWindow;
}

void SettingsDialog::setServiceLevel(bool service)
{
    const QWidget* const before = m_ui->tabWidget->currentWidget();
    {
        const QScopedValueRollback<bool> suppressed(m_suppressed, true);
        QTabWidget& tabs = *m_ui->tabWidget;
        setTabPresent(tabs, m_ui->tabSystemConfig, tr("System Config"), systemConfigPosition, service);
        setTabPresent(tabs, m_ui->tabServiceDevelopment, tr("Service && Development"),
                      serviceDevelopmentPosition, service);
    }
    // Tabs that come and go beside the one in front leave the polling alone.
    const QWidget* const after = m_ui->tabWidget->currentWidget();
    if (isVisible() && after != before) {
        letPollingFollow(after);
    }
    m_systemInfo->setServiceLevel(service);
    connect(&m_pollTimer, &QTimer::timeout, this, &SettingsDialog::pollDevice, Qt::UniqueConnection);
    m_pollTimer.start(pollInterval);
}

void SettingsDialog::showChoices(const OperatingChoices& choices)
{
    const QScopedValueRollback<bool> suppressed(m_suppressed, true);
    m_controlMode->show(choices);
    showWhoControls();
}

void SettingsDialog::showTTLChoices(const QList<channel*>& channels)
{
    const QScopedValueRollback<bool> suppressed(m_suppressed, true);
    for (int index = 0; index < channels.size() && index < channelCount; ++index) {
        m_ttl->showInverted(index, channels.at(index)->isTtlInverted());
    }
}

void SettingsDialog::showWhoControls()
{
    m_controlMode->refresh();
    m_ttl->showShutterControl(m_controlMode->isShutterControlExternal());
}

void SettingsDialog::showEvent(QShowEvent* event)
{
    TtlChoiceSlots::showEvent(event);
    if (event->spontaneous()) {
        return;
    }
    // On a screen with large pixels the form's own size is more than there is; its pages scroll then.
    const QSize frame = frameSize() - size();
    resize(size().boundedTo(screen()->availableGeometry().size() - frame));
    listPorts();
    // The first arrow key must not choose another port.
    m_ui->tabWidget->setFocus();
    if (m_ui->tabWidget->currentWidget() == m_ui->tabServiceDevelopment) {
        letPollingFollow(m_ui->tabServiceDevelopment);
    }
}

void SettingsDialog::listPorts()
{
    const bool isOpen = m_device && m_device->isOpen();
    const QString lastPort = QtVersion::storedText(m_store->value(QLatin1String(comPortKey)));
    m_ports->listPorts(isOpen ? m_device->portName() : lastPort);
}

void SettingsDialog::on_comboBoxComPort_activated(int arg1)
{
    const QString portName = m_ports->portAt(arg1);
    if (m_suppressed || portName.isEmpty()) {
        return;
    }
    if (m_update && m_update->refusesAction()) {
        listPorts();
        return;
    }
    m_store->setValue(QLatin1String(comPortKey), QtVersion::storable(portName));
    emit comPortChanged(portName);
}

void SettingsDialog::on_checkBoxSleepTimer_clicked(bool checked)
{
    m_controlMode->refresh();
    if (!m_suppressed) {
        emit sleepTimerEnableChanged(checked);
    }
}

void SettingsDialog::on_spinBoxSleepTimer_valueChanged(int minutes)
{
    if (!m_suppressed) {
        emit sleepTimerChanged(minutes);
    }
}

void SettingsDialog::chooseIntensityControl(quint8 mode)
{
    showWhoControls();
    if (!m_suppressed) {
        emit intensityControlChanged(mode);
    }
}

void SettingsDialog::chooseShutterControl(quint8 mode)
{
    showWhoControls();
    if (!m_suppressed) {
        emit shutterControlChanged(mode);
    }
}

void SettingsDialog::chooseDespeckler(quint8 mode)
{
    if (!m_suppressed) {
        emit speckleControlChanged(mode);
    }
}

void SettingsDialog::ttlChosen(quint8 channelIndex, bool inverted)
{
    if (!m_suppressed) {
        emit invertTTLChanged(channelIndex, inverted);
    }
}

void SettingsDialog::on_checkBoxEnhancedDiags_clicked(bool checked)
{
    if (!m_suppressed) {
        emit enhancedDiagsChanged(checked);
    }
}

void SettingsDialog::on_pushButtonRestoreDefaults_clicked()
{
    {
        const QScopedValueRollback<bool> suppressed(m_suppressed, true);
        m_controlMode->showDefaults();
        showWhoControls();
    }
    // Whoever listens may wait for the device, and the dialog may go meanwhile.
    const QPointer<SettingsDialog> self(this);
    chooseShutterControl(1);
    if (self) {
        chooseIntensityControl(1);
    }
    if (self) {
        chooseDespeckler(1);
    }
    if (self) {
        m_service->restoreDefaults();
    }
}

void SettingsDialog::on_pushButtonRestoreDefaults2_clicked()
{
    // On the screen alone: the polarities in the device are those of its wiring and stay.
    const QScopedValueRollback<bool> suppressed(m_suppressed, true);
    m_ttl->showDefaults();
}

void SettingsDialog::on_pushButtonLoaderMode_clicked()
{
    m_service->switchImage();
}

void SettingsDialog::on_pushButtonLoaderMode2_clicked()
{
    on_pushButtonLoaderMode_clicked();
}

void SettingsDialog::on_pushButtonSystemReset_clicked()
{
    m_service->resetDevice();
}

void SettingsDialog::on_pushButtonSystemReset2_clicked()
{
    on_pushButtonSystemReset_clicked();
}

void SettingsDialog::on_pushButtonUpdateFirmware_clicked()
{
    // What is being written to the device would go on in the middle of the update, or after it.
    if (!m_update || m_update->isInProgress() || m_service->isRecordWriting() || m_service->isSwitching()) {
        return;
    }
    // So would whatever this click was handled in; it comes to its end before long.
    if (m_device && m_device->isWaiting()) {
        QTimer::singleShot(retryInterval, this, &SettingsDialog::on_pushButtonUpdateFirmware_clicked);
        return;
    }
    m_update->firmwareUpdate(m_device);
}

void SettingsDialog::on_pushButtonUpdateApplication_clicked()
{
    tellUser(this, QMessageBox::Information,
             tr("This program is updated by installing a newer package of it. Close the program before, and "
                "start it again afterwards; its settings and those of the device are kept."));
}

void SettingsDialog::on_SettingsDialog_finished(int result)
{
    // Every choice was told when it was made, so that closing the dialog decides nothing.
    Q_UNUSED(result)
}
