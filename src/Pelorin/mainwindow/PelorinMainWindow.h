#pragma once

#include "device/DeviceTypes.h"
#include "mainwindow/LaserDisplay.h"
#include "mainwindow/NumberedChannelSlots.h"
#include "mainwindow/ScenarioControl.h"
#include "mainwindow/UserSettings.h"
#include "mainwindow/channel.h"

#include <QString>

#include <memory>

class ChannelPanel;
class Device;
class OpenFailureNotice;
class QKeyEvent;
class QMouseEvent;
class QSettings;
class Scenario;
class SettingsDialog;
class Update;

namespace Ui {
class PelorinMainWindow;
}

/// The window: turns what the operator does into commands. The laser's state and the shutters change only
/// when the device reports them; levels, names and choices are shown at once. Channels count from 1 here.
class PelorinMainWindow : public NumberedChannelSlots, private ScenarioHost
{
    Q_OBJECT

public:
    explicit PelorinMainWindow(QWidget* parent = nullptr);
    ~PelorinMainWindow() override;
    Q_DISABLE_COPY_MOVE(PelorinMainWindow)

    /// Builds a fresh set of channels from the settings store and applies every stored choice; the channels
    /// of an earlier call stay alive as long as the window.
    void loadSettings();
    /// Interprets the arguments (see CommandLine) and creates the settings dialog; to be called once.
    void processCommandLine(const QString& arguments);
    void saveSettings();      ///< all but the window's layout, which is stored when the window closes
    void setLaserOn(bool on); ///< asks the device for run or idle; the pictures follow its report

    // All of these stay the window's.
    Device* device() const { return m_device.get(); }
    Update* update() const { return m_update; }
    Scenario* scenario() const override { return m_scenario; }
    /// Null before the command line is read.
    SettingsDialog* settingsDialog() const { return m_settingsDialog; }
    bool isUpdateForced() const { return m_forceUpdate; }

public slots:
    void onDataReceivedFromDevice(QByteArray& bytes);
    void onDeviceError(const QString& errorString);
    void onOpenFailureChanged(const QString& portName, OpenFailure cause);
    void onDeviceDisconnected(const QString& portName);
    void onDeviceConnected(const QString& portName);
    void onFunctionalModeChanged(FunctionalMode_t mode);
    void onFaultStateChanged(bool state, const QString& message);
    void onWarningStateChanged(bool state, const QString& message);
    void onShutterChanged(const bool* shutterStates);      ///< eight entries in channel order
    void onIntensityChanged(const float* intensityLevels); ///< eight entries in percent in channel order

    void onShutterControlChanged(quint8 mode);   ///< 1 this computer, else the external inputs
    void onIntensityControlChanged(quint8 mode); ///< 1 this computer, else the external inputs
    void onSleepTimerChanged(int minutes);
    void onSleepTimerEnableChanged(bool enable);
    void onSpeckleControlChanged(bool enable);
    void onEnhancedDiagsChanged(bool enabled);
    void onInvertTTLChanged(quint8 channelIndex, bool inverted); ///< counts from 0
    void onSettingsDialogClosed(int result);
    void onUpdateFinished(bool touched); ///< see Update::finished()

    void updateChannelName(channel* laser, const QString& name);
    void updateChannelIntensity(channel* laser, float intensityPercent); ///< stores the level and sends it

signals:
    // The channel container stores the first three; nobody listens to the last one yet.
    void channelNameChanged(channel* laser, const QString& name);
    void channelIntensityChanged(channel* laser, float intensityPercent); ///< also sent to the device
    void channelShutterChanged(channel* laser, bool shutterIsOpen);       ///< as the device reports it
    void channelEnableChanged(channel* laser, bool enabled);              ///< by a fibre interlock

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void on_pushButtonSaveScenario_clicked();
    void on_pushButtonLoadScenario_clicked();
    void on_pushButtonSettings_clicked();
    void on_pushButtonExpandCollapseWindow_clicked();

private:
    void sliderMoved(int number, int value) override;
    void percentageTyped(int number) override;
    void nameTyped(int number) override;
    QString applyChannel(channel& laser, const ChannelSettings& settings) override;
    ShutterAnswer changeShutter(channel& laser, bool open) override;
    void showStatus(const QString& text) override; ///< in the status bar, until the next one
    void warn(const QString& text) override;
    bool isUpdateInTheWay();

    void connectDevice();
    void createSettingsDialog(bool diagnostic);
    void connectSettingsDialog();
    void refreshSettingsDialog();
    channel* laser(int number) const; ///< null for a number that no channel has
    void mouseReleased(const QObject* widget, const QMouseEvent& event);
    void keyPressed(const QObject* widget, const QKeyEvent& event); ///< Ctrl+Return clicks
    void activated(const QObject* widget);
    void arrowsClicked(int number, int step);
    void shutterClicked(int number);
    QString shutterRefusal(const channel& laser, bool open) const; ///< empty when it may change now
    void setCollapsed(bool collapsed);
    void laserOnOffClicked();
    void laserStatusClicked();
    void requestRun();
    void showModeInStatusBar();
    void greetDevice(const ShutterStates& states);
    void readIdentity();
    void sendEverything(const ShutterStates& states);
    void keepClosingsInMind(bool all);
    void createChannels(const UserSettings& settings);
    void connectChannels();
    int effectiveSleepMinutes() const; ///< 0 while the timer is switched off
    void sendSleepTime(const char* busyText, const char* errorText);

    std::unique_ptr<Ui::PelorinMainWindow> m_ui;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<Device> m_device;
    std::unique_ptr<ChannelPanel> m_panel;
    std::unique_ptr<LaserDisplay> m_display;
    ScenarioControl* m_scenarioControl = nullptr;
    Update* m_update = nullptr;
    OpenFailureNotice* m_openFailure = nullptr;
    SettingsDialog* m_settingsDialog = nullptr;
    Scenario* m_scenario = nullptr;
    OperatingChoices m_choices;
    LaserState m_state;
    QString m_versionString;
    quint8 m_maximumEnabledChannels = 4;
    bool m_forceUpdate = false;
    bool m_laserOn = false; ///< run mode is shown, and no fault
    bool m_collapsed = false;
    bool m_handlingInput = false;
};
