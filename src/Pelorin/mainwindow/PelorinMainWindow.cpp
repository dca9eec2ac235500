#include "mainwindow/PelorinMainWindow.h"

#include "QsLog2_1_0/QsLog.h"
#include "Resources/Resources.h"
#include "boxes/TellUser.h"
#include "device/Device.h"
#include "help/Help.h"
#include "mainwindow/ChannelPanel.h"
#include "mainwindow/CommandLine.h"
#include "mainwindow/OpenFailureNotice.h"
#include "mainwindow/SettingsStore.h"
#include "scenario/Scenario.h"
#include "settings/Console.h"
#include "settings/DiagnosticsSaver.h"
#include "settings/SettingsDialog.h"
#include "ui_PelorinMainWindow.h"
#include "update/Update.h"

#include <QCloseEvent>
#include <QSettings>
#include <QVersionNumber>

namespace {
/// Of the project, with two digits for each part.
QString programVersion()
{
    const QVersionNumber version = QVersionNumber::fromString(QStringLiteral(VYR_VERSION));
    const auto twoDigits = [](int part) { return QStringLiteral("%1").arg(part, 2, 10, QLatin1Char('0')); };
    return QStringLiteral("%1.%2.%3")
        .arg(twoDigits(version.majorVersion()), twoDigits(version.minorVersion()),
             twoDigits(version.microVersion()));
}
} // namespace

PelorinMainWindow::PelorinMainWindow(QWidget* parent)
    : NumberedChannelSlots(parent), m_ui(std::make_unique<Ui::PelorinMainWindow>())
{
    initResources();
    m_ui->setupUi(this);
    m_panel = std::make_unique<ChannelPanel>(*this);
    m_display = std::make_unique<LaserDisplay>(*this);
    m_store = openSettingsStore();
    m_update = new Update(window(), m_store.get());
    const auto showUpdate = [this] { showStatus(Update::inProgressText()); };
    connect(m_update, &Update::started, this, showUpdate);
    connect(m_update, &Update::actionRefused, this, showUpdate);
    connect(m_update, &Update::finished, this, &PelorinMainWindow::onUpdateFinished);
    m_openFailure = new OpenFailureNotice(m_ui->statusBar, m_update, this);

    m_versionString = QLatin1Char(' ') + programVersion();
    setWindowTitle(windowTitle() + m_versionString);
    QS_INFO() << "Program started: " << m_versionString;

    setWindowFlags(windowFlags() | Qt::CustomizeWindowHint | Qt::WindowCloseButtonHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint);
    m_panel->restrictPercentages(this);
    m_panel->installEventFilter(this);
    m_display->installEventFilter(this);
    Help::install(this, [] { return QStringLiteral("main-window"); });

    m_device = std::make_unique<Device>();
    m_scenarioControl = new ScenarioControl(*this, *this, *m_panel, *m_device, *m_update);
    connectDevice();
    connect(this, &PelorinMainWindow::channelNameChanged, this, &PelorinMainWindow::updateChannelName,
            Qt::DirectConnection);
    connect(this, &PelorinMainWindow::channelIntensityChanged, this,
            &PelorinMainWindow::updateChannelIntensity, Qt::DirectConnection);
    loadSettings();
}

PelorinMainWindow::~PelorinMainWindow()
{
    // The link tells of its end, so it goes while everything that listens is still whole.
    m_device.reset();
    delete m_settingsDialog;
    delete m_update;
}

void PelorinMainWindow::connectDevice()
{
    Device* device = m_device.get();
    connect(device, &Device::receivedDataFromDevice, this, &PelorinMainWindow::onDataReceivedFromDevice,
            Qt::DirectConnection);
    connect(device, &Device::portError, this, &PelorinMainWindow::onDeviceError, Qt::DirectConnection);
    connect(device, &Device::openFailureChanged, this, &PelorinMainWindow::onOpenFailureChanged,
            Qt::DirectConnection);
    connect(device, &Device::deviceDisconnected, this, &PelorinMainWindow::onDeviceDisconnected,
            Qt::DirectConnection);
    connect(device, &Device::deviceConnected, this, &PelorinMainWindow::onDeviceConnected,
            Qt::DirectConnection);
    connect(device, &Device::functionalModeChanged, this, &PelorinMainWindow::onFunctionalModeChanged,
            Qt::DirectConnection);
    connect(device, &Device::faultStateChanged, this, &PelorinMainWindow::onFaultStateChanged,
            Qt::DirectConnection);
    connect(device, &Device::warningStateChanged, this, &PelorinMainWindow::onWarningStateChanged,
            Qt::DirectConnection);
    connect(device, &Device::shutterChanged, this, &PelorinMainWindow::onShutterChanged,
            Qt::DirectConnection);
    connect(device, &Device::intensityChanged, this, &PelorinMainWindow::onIntensityChanged,
            Qt::DirectConnection);
}

void PelorinMainWindow::processCommandLine(const QString& arguments)
{
    const CommandLine commandLine = CommandLine::parse(arguments);
    m_forceUpdate = commandLine.forceUpdate;
    if (commandLine.limitChannels) {
        m_maximumEnabledChannels = 4;
    }
    if (m_settingsDialog == nullptr) {
        createSettingsDialog(commandLine.diagnostic);
    }
    setWindowTitle(windowTitle() + commandLine.titleSuffix);
}

void PelorinMainWindow::createSettingsDialog(bool diagnostic)
{
    m_settingsDialog =
        new SettingsDialog(this, m_device.get(), m_update, m_store.get(), diagnostic, m_versionString);
    connect(m_settingsDialog->findChild<DiagnosticsSaver*>(), &DiagnosticsSaver::settingsWanted, this,
            &PelorinMainWindow::saveSettings, Qt::DirectConnection);
    connectSettingsDialog();
}

void PelorinMainWindow::connectSettingsDialog()
{
    Device* device = m_device.get();
    SettingsDialog* dialog = m_settingsDialog;
    connect(
        dialog->console(), &Console::getData, device,
        [this, device](const QByteArray& bytes) {
            if (!isUpdateInTheWay()) {
                device->writeRaw(bytes);
            }
        },
        Qt::DirectConnection);
    connect(device, &Device::receivedDataFromDevice, dialog, &SettingsDialog::receivedDataFromDevice,
            Qt::DirectConnection);
    connect(device, &Device::deviceDisconnected, dialog, &SettingsDialog::onDeviceDisconnected,
            Qt::DirectConnection);
    connect(device, &Device::deviceConnected, dialog, &SettingsDialog::onDeviceConnected,
            Qt::DirectConnection);
    connect(device, &Device::invertedStateChanged, dialog, &SettingsDialog::onInvertedTTLStateChanged,
            Qt::DirectConnection);
    connect(dialog, &SettingsDialog::comPortChanged, device, &Device::selectPort, Qt::DirectConnection);
    connect(dialog, &SettingsDialog::shutterControlChanged, this, &PelorinMainWindow::onShutterControlChanged,
            Qt::DirectConnection);
    connect(dialog, &SettingsDialog::intensityControlChanged, this,
            &PelorinMainWindow::onIntensityControlChanged, Qt::DirectConnection);
    connect(dialog, &SettingsDialog::sleepTimerChanged, this, &PelorinMainWindow::onSleepTimerChanged,
            Qt::DirectConnection);
    connect(dialog, &SettingsDialog::sleepTimerEnableChanged, this,
            &PelorinMainWindow::onSleepTimerEnableChanged, Qt::DirectConnection);
    connect(dialog, &SettingsDialog::speckleControlChanged, this, &PelorinMainWindow::onSpeckleControlChanged,
            Qt::DirectConnection);
    connect(dialog, &SettingsDialog::enhancedDiagsChanged, this, &PelorinMainWindow::onEnhancedDiagsChanged,
            Qt::DirectConnection);
    connect(dialog, &SettingsDialog::invertTTLChanged, this, &PelorinMainWindow::onInvertTTLChanged,
            Qt::DirectConnection);
    connect(dialog, &QDialog::finished, this, &PelorinMainWindow::onSettingsDialogClosed,
            Qt::DirectConnection);
}

void PelorinMainWindow::closeEvent(QCloseEvent* event)
{
    // A device whose firmware is half written does not start again by itself.
    if (isUpdateInTheWay()) {
        event->ignore();
        return;
    }
    writeWindowLayout(*m_store, {m_collapsed, saveGeometry(), saveState(0)});
    flushSettings(*m_store);
    NumberedChannelSlots::closeEvent(event);
    // The window may have been closed inside a wait for the device, which would hold up the program's end.
    m_device->shutDown();
}

void PelorinMainWindow::on_pushButtonSettings_clicked()
{
    if (m_settingsDialog == nullptr) {
        return;
    }
    refreshSettingsDialog();
    m_settingsDialog->show();
    m_settingsDialog->raise();
    m_settingsDialog->activateWindow();
}

void PelorinMainWindow::refreshSettingsDialog()
{
    if (m_settingsDialog != nullptr && m_scenario != nullptr) {
        m_settingsDialog->showChoices(m_choices);
        m_settingsDialog->showTTLChoices(m_scenario->channels());
    }
}

void PelorinMainWindow::on_pushButtonSaveScenario_clicked()
{
    m_scenarioControl->save();
}

void PelorinMainWindow::on_pushButtonLoadScenario_clicked()
{
    m_scenarioControl->load();
}

void PelorinMainWindow::onSettingsDialogClosed(int result)
{
    Q_UNUSED(result)
    // An update has the line for itself, whatever is closed meanwhile.
    if (m_device && !m_update->isInProgress()) {
        m_device->setPolling(true);
    }
}

void PelorinMainWindow::onEnhancedDiagsChanged(bool enabled)
{
    m_choices.verboseLogging = enabled;
    QsLogging::Logger::instance().setLevel(enabled ? QsLogging::LogLevel::Trace : QsLogging::LogLevel::Info);
}

void PelorinMainWindow::showStatus(const QString& text)
{
    m_ui->statusBar->showMessage(text);
}

void PelorinMainWindow::warn(const QString& text)
{
    tellUser(this, QMessageBox::Warning, text);
}

bool PelorinMainWindow::isUpdateInTheWay()
{
    return m_update->refusesAction();
}
