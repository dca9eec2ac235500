#pragma once

#include "device/DeviceTypes.h"

#include <QCoreApplication>
#include <QString>

class QLabel;
class QWidget;

/// What the upper part of the window shows of the laser system.
struct LaserState
{
    FunctionalMode_t mode = FunctionalModeIdle; ///< any other number is shown like idle
    bool fault = false;
    QString faultText;             ///< of the standing fault; empty without one
    QString warningText;           ///< of the standing warning; empty without one
    bool interlockImage = false;   ///< selects the interlock picture instead of the fault picture in idle
    bool no555Warning = false;     ///< the last warning did not concern the 555 nm module
    bool noNovalumWarning = false; ///< the last warning did not concern the Novalum module
};

/// The pictures and words of the laser system's state; the labels stay the window's.
class LaserDisplay
{
    Q_DECLARE_TR_FUNCTIONS(LaserDisplay)

public:
    /// Finds the labels below @p window by their object names; all of them must exist.
    explicit LaserDisplay(const QWidget& window);

    void showState(const LaserState& state);
    /// A device is there, but has not told its state yet; only the application image ever will.
    void showConnected(DeviceMode running);
    void showDisconnected();
    void showLaserOff(); ///< the on/off picture alone

    void showIntensityControl(bool host); ///< this computer, or the external inputs
    void showShutterControl(bool host);   ///< this computer, or the external inputs
    void showSleepTimer(int minutes);     ///< 0 = disabled
    // @p firmware tells the running image and its version, empty when it is not known; texts of the device
    // stay plain text.
    void showFirmware(const QString& firmware);
    void showIdentity(const ProductConfig& product, const QString& firmware);
    void clearIdentity();

    bool isOnOffImage(const QObject* object) const;
    bool isStatusImage(const QObject* object) const;
    void installEventFilter(QObject* filter) const;

private:
    void showOnOff(const char* picture, const QString& meaning) const;
    void showStatus(const char* picture, const QString& word) const;
    void showFiber(QLabel* label, bool lit) const;

    QLabel* m_onOff;
    QLabel* m_status;
    QLabel* m_statusText;
    QLabel* m_necselFiber;
    QLabel* m_novalumFiber;
    QLabel* m_intensityControl;
    QLabel* m_shutterControl;
    QLabel* m_sleepTimer;
    QLabel* m_systemId;
    QString m_systemIdToolTip; ///< the form's own, for when there is no device to tell about
};
