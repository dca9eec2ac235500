#pragma once

#include "settings/TtlChoiceSlots.h"

#include <QList>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <memory>

class ChannelConfigTable;
class Console;
class ControlModePage;
class Device;
class OperatingInfoPage;
class PortChooser;
class QSettings;
class ServicePage;
class SystemConfigPage;
class SystemInfoPage;
class ThreeTries;
class TtlPage;
class Update;
class channel;
struct OperatingChoices;

namespace Ui {
class SettingsDialog;
}

/// The dialog "System Info & Settings". It tells choices by signals, and the main window carries them out. By
/// itself it sends service commands, records and the queries that fill its pages, but nothing while an update
/// has the line. It borrows the link, the update and the store.
class SettingsDialog : public TtlChoiceSlots
{
    Q_OBJECT

public:
    /// @p versionString is the program's version as the title shows it.
    SettingsDialog(QWidget* parent, Device* device, Update* update, QSettings* store, bool diagnostic,
                   const QString& versionString);
    ~SettingsDialog() override;
    Q_DISABLE_COPY_MOVE(SettingsDialog)

    /// Shows or hides what is for service staff: two tabs, the channel table, the editing of the identity.
    void setServiceLevel(bool service);
    Console* console() const; ///< of the service tab; it exists at either level
    /// Sets the widgets of the control modes, the sleep timer, the despeckler and the logging; emits nothing.
    void showChoices(const OperatingChoices& choices);
    /// Sets the TTL choices of the first seven channels, and of the eighth where there is one; emits nothing.
    void showTTLChoices(const QList<channel*>& channels);

public slots:
    void receivedDataFromDevice(QByteArray& bytes);
    void onDeviceConnected(const QString& portName);
    void onDeviceDisconnected(const QString& portName);
    void onInvertedTTLStateChanged(const bool* invertedTTLStates); ///< ignored: those set here are shown
    /// Reads the unit's identity into its fields: up to three tries, a second apart.
    void UpdateProductConfigDisplay();
    /// Reads what the page in front shows live; the dialog's timer calls it once a second.
    void pollDevice();
    /// Writes the cells of the system configuration into a calibration file: the one that the user chooses
    /// where @p promptForFileSave, else @p pathName. Tells nothing when that fails.
    void saveSystemConfigData(QString pathName, bool promptForFileSave);

signals:
    void comPortChanged(const QString& portName);
    void shutterControlChanged(quint8 mode);   ///< 1 from this computer, 0 from the digital inputs
    void intensityControlChanged(quint8 mode); ///< 1 from this computer, 0 from the analogue inputs
    void sleepTimerChanged(int minutes);
    void sleepTimerEnableChanged(bool enable);
    void speckleControlChanged(quint8 mode);                   ///< 1 on, 0 off
    void invertTTLChanged(quint8 channelIndex, bool inverted); ///< index 0 to 7 in channel order
    void enhancedDiagsChanged(bool enabled);

protected:
    void showEvent(QShowEvent* event) override;

private slots:
    void on_comboBoxComPort_activated(int arg1);
    void on_checkBoxSleepTimer_clicked(bool checked);
    void on_spinBoxSleepTimer_valueChanged(int minutes);
    void on_radioButtonIntensityControlUSB_clicked() { chooseIntensityControl(1); }
    void on_radioButtonIntensityControlExternal_clicked() { chooseIntensityControl(0); }
    void on_radioButtonShutterControlUSB_clicked() { chooseShutterControl(1); }
    void on_radioButtonShutterControlExternal_clicked() { chooseShutterControl(0); }
    void on_radioButtonDespecklerOn_clicked() { chooseDespeckler(1); }
    void on_radioButtonDespecklerOff_clicked() { chooseDespeckler(0); }
    void on_pushButtonRestoreDefaults_clicked();
    void on_pushButtonRestoreDefaults2_clicked();
    void on_pushButtonUpdateFirmware_clicked();
    void on_pushButtonUpdateApplication_clicked();
    void on_pushButtonLoaderMode_clicked();
    void on_pushButtonLoaderMode2_clicked();
    void on_pushButtonSystemReset_clicked();
    void on_pushButtonSystemReset2_clicked();
    void on_checkBoxEnhancedDiags_clicked(bool checked);
    void on_pushButtonGetSystemConfigData_clicked();
    void on_pushButtonSetSystemConfigData_clicked();
    void on_pushButtonLoadSystemConfigData_clicked();
    void on_pushButtonSaveSystemConfigData_clicked();
    void pasteData();
    void on_channelEnabledCheckboxClicked(bool enabled);
    void on_channelTypeIndexChanged(int index);
    void on_secondaryChannelCheckboxClicked(bool secondary);
    void on_primaryChannelIndexChanged(int index);
    void on_pushButtonSetProductConfigData_clicked();
    void on_tabWidget_tabBarClicked(int index);
    void on_SettingsDialog_finished(int result);

private:
    void ttlChosen(quint8 channelIndex, bool inverted) override;
    void chooseIntensityControl(quint8 mode);
    void chooseShutterControl(quint8 mode);
    void chooseDespeckler(quint8 mode);
    void showWhoControls();
    void letPollingFollow(const QWidget* page); ///< its replies would mix into what is typed by hand
    void listPorts();
    void readReadings();
    bool readHours(); // these return true when no further try is wanted
    bool readIdentity();
    bool readSystemConfig();
    bool readChannelConfig();
    void catchUpWithUpdate(bool touched);
    void saveCalibrationBackup(const QString& pathName);
    bool mayWriteRecord();                                              ///< tells the user why not
    static bool endRecordWriting(const QPointer<SettingsDialog>& self); ///< true to tell the user how it went
    bool mayRead() const; ///< the device is there, and nobody has it for himself

    std::unique_ptr<Ui::SettingsDialog> m_ui;
    QPointer<Device> m_device;
    QPointer<Update> m_update;
    QSettings* m_store;
    PortChooser* m_ports; // these six are children of the dialog
    ServicePage* m_service;
    ThreeTries* m_hoursReader;
    ThreeTries* m_identityReader;
    ThreeTries* m_systemReader;
    ThreeTries* m_channelReader;
    std::unique_ptr<SystemInfoPage> m_systemInfo;
    std::unique_ptr<ChannelConfigTable> m_channelConfig;
    std::unique_ptr<SystemConfigPage> m_systemConfig;
    std::unique_ptr<OperatingInfoPage> m_operatingInfo;
    std::unique_ptr<ControlModePage> m_controlMode;
    std::unique_ptr<TtlPage> m_ttl;
    QTimer m_pollTimer;
    bool m_readingsAnswered = true; ///< by the image that runs
    bool m_suppressed = false;      ///< the dialog sets its own widgets, which is nobody's choice
};
