#pragma once

#include <QByteArray>
#include <QDialog>
#include <QPointer>
#include <QString>

#include <memory>

class Console;
class Device;
class QSettings;
class Update;

namespace Ui {
class SettingsDialog;
}

/// The dialog "System Info & Settings". It tells the user's choices through its signals only; the main window
/// carries them out and keeps them. It borrows the link and the update, and notices when they go.
class SettingsDialog : public QDialog
{
    Q_OBJECT

public:
    /// @p versionString is the program's version as the title shows it, with its leading blank.
    SettingsDialog(QWidget* parent, Device* device, Update* update, QSettings* store, bool diagnostic,
                   const QString& versionString);
    ~SettingsDialog() override;

    SettingsDialog(const SettingsDialog&) = delete;
    SettingsDialog& operator=(const SettingsDialog&) = delete;

    /// Shows what is for service staff only, or takes it away: the tabs of the system configuration and of
    /// service and development.
    void setServiceLevel(bool service);
    /// The terminal of the service tab; it exists at either level.
    Console* console() const;

public slots:
    void receivedDataFromDevice(QByteArray& bytes);
    void onDeviceConnected(const QString& portName);
    void onDeviceDisconnected(const QString& portName);
    /// Accepted and ignored: the polarities shown are the ones this program set.
    void onInvertedTTLStateChanged(const bool* invertedTTLStates);

signals:
    void comPortChanged(const QString& portName);
    void shutterControlChanged(quint8 mode);   ///< 1 from this computer, 0 from the digital inputs
    void intensityControlChanged(quint8 mode); ///< 1 from this computer, 0 from the analogue inputs
    void sleepTimerChanged(int minutes);
    void sleepTimerEnableChanged(bool enable);
    void speckleControlChanged(quint8 mode);                   ///< 1 on, 0 off
    void invertTTLChanged(quint8 channelIndex, bool inverted); ///< index 0 to 7 in channel order
    void enhancedDiagsChanged(bool enabled);

private slots:
    void on_tabWidget_tabBarClicked(int index);
    void on_SettingsDialog_finished(int result);

private:
    void showConnection(const QString& text, const QString& colourName);
    void setTabPresent(QWidget* page, const QString& caption, int position, bool present);

    std::unique_ptr<Ui::SettingsDialog> m_ui;
    QPointer<Device> m_device;
    QPointer<Update> m_update;
};
