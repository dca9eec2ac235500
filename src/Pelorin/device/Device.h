#pragma once

#include "device/DeviceTypes.h"
#include "device/FirmwareVersion.h"
#include "device/ResultCodes.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class channel;
/// The link to the one illuminator: it owns the serial port, finds and identifies the device, polls its
/// state and carries every command. All operations return a DeviceResult code (see ResultCodes.h).
///
/// Everything runs on the thread that created the object. An operation that waits for a reply sleeps in the
/// event loop, so timers and user actions run inside it; the Device must outlive every such call. A wait ends
/// at once, with NotOpen, when the port closes. Queries asked while another one is out, or in a slot of
/// receivedDataFromDevice, return Busy and send nothing; settings given then are queued, and return Ok.
class Device : public QObject
{
    Q_OBJECT

public:
    explicit Device(QObject* parent = nullptr);
    ~Device() override;

    // --- Transport ---------------------------------------------------------------------------------
    bool isOpen() const;
    QString portName() const; ///< in use, or last asked for
    /// Bytes handed to the system, whose rest is dropped; -1 when the port is not open.
    qint64 writeCommand(const QByteArray& bytes);
    void flushInput();
    /// Sends `command` (with its line feed), waits up to 1500 ms; `reply` is left alone on failure.
    int transaction(const QByteArray& command, QString& reply);
    int sendCommand(const char* text); ///< a transaction, its reply logged only; 0 at once when not open
    /// Sends "goloader" or "goapp" and waits up to 45 s for the answer, whatever else uses the line.
    int sendGoCommand(const char* text);
    /// Sends `command` (with its line feed) at once without waiting, or queues it while the line is in use;
    /// where older ones are queued, sends them all first and waits for their replies.
    int sendOrEnqueue(const QByteArray& command);
    /// Sends all that is queued, each command with its reply; the first failure ends it and is returned.
    int drainQueue();
    /// Waits until nothing is queued and no reply is due. NoReply after 1500 ms of silence: the device counts
    /// as not identified then, and is opened anew. Busy where the wait would keep the queue from being sent.
    int waitWhileBusy();
    bool isWaiting() const; ///< some operation is, further up the stack
    /// The terminal's bytes, as they are, outside any transaction; nothing when the port is not open.
    void writeRaw(const QByteArray& bytes);
    /// Ends every wait and lets none begin, for the end of the program: operations return NotOpen then.
    void shutDown();
    bool isShutDown() const;

    // --- Connection (see DeviceConnection.cpp) -----------------------------------------------------
    DeviceMode deviceMode() const;
    /// Another one for each device plugged in; one that restarts into another image keeps its own.
    int deviceNumber() const;
    /// The port is open, and the application image answered its identification.
    bool isApplicationConnected() const;
    /// The device told that it reprograms its laser controller: it is left alone from here on.
    void setUpdatingLaserController();
    const ImageVersion& runningVersion() const;
    const ImageVersion& applicationVersion() const;
    const ImageVersion& loaderVersion() const;
    bool applicationValid() const;
    bool loaderValid() const;
    const NecselControllerInfo& necselController() const;
    /// True when the running firmware knows the channel record and the newer record address.
    bool isVersionAboveConfigLimit() const;

    // --- Last states told by the device (see DevicePolling.cpp) ------------------------------------
    bool faultState() const;
    bool warningState() const;
    void setPolling(bool on); ///< the status poll; never in Loader, LoaderUpdater, UpdatingLaserController

    // --- Queries -----------------------------------------------------------------------------------
    int getFunctionalMode(FunctionalMode_t& mode);
    int getSleepTime(quint8& minutes);
    int getIntensityMode(ControlSource& source);
    int getFaultState(StateReport& report);
    int getWarningState(StateReport& report);
    int getHours(OperatingHours& hours);
    int getShutterStates(ShutterStates& states);
    int getTTLInvertStates(TtlInvertStates& states);
    int getIntensityLevels(IntensityLevels& levels);
    int getTemperatures(Temperatures& readings);
    /// `query` is "v" (running image), "v?a" (stored application) or "v?l" (stored loader).
    int getVersion(const char* query, ImageVersion& image);
    bool isApplicationValid();
    bool isLoaderValid();
    int getNecselControllerInfo(NecselControllerInfo& info);

    // --- Configuration records (see DeviceRecords.cpp) ---------------------------------------------
    /// The buffers hold systemConfigSize or channelConfigSize bytes and stay the caller's; NotOpen without
    /// one. A failed read leaves the buffer as it was. A write marks the record valid once all is written.
    int readSystemConfig(quint8* buffer);
    int writeSystemConfig(const quint8* buffer);
    int readChannelConfig(quint8* buffer);
    int writeChannelConfig(const quint8* buffer);
    int readProductConfig(ProductConfig& record);
    int writeProductConfig(const ProductConfig& record);
    /// As last read or written since the device was plugged in, whatever image it ran since.
    const std::optional<SystemConfigBytes>& knownSystemConfig() const;
    const std::optional<ChannelConfigBytes>& knownChannelConfig() const;

    // --- Settings and actions ----------------------------------------------------------------------
    /// `percent` 0 to 100; a value that is no number gives BadArgument.
    int setIntensity(const channel& laser, float percent);
    int setShutter(const channel& laser, bool open);
    int setTTLInvert(const channel& laser, bool inverted);
    int setIntensityMode(int source);
    int setShutterMode(int source);
    int setSpeckle(bool on);
    int setFunctionalMode(int mode);
    int setSleepTime(quint16 minutes);
    int clearFaults();
    int resetDevice();
    int restoreDefaults();
    /// Switch the image and identify it anew, on the same port or another: Ok once that is over, Busy while
    /// another switch waits; NoReplyToSwitch after 45 s, when the image is unknown and asked for anew.
    int goLoader();
    int goApp();

public slots:
    void selectPort(const QString& portName); ///< closes an open port; the next check opens one again
    void checkConnectionStatus();
    void pollDevice();

signals:
    void deviceConnected(const QString& portName);
    void deviceDisconnected(const QString& portName);
    void portError(const QString& errorString);
    /// A listed device cannot be opened, at another port or for another cause than told last; None as soon as
    /// it can, or is no longer listed. The same failure of later attempts is not told again.
    void openFailureChanged(const QString& portName, OpenFailure cause);
    void functionalModeChanged(FunctionalMode_t mode);
    void faultStateChanged(bool faultState, const QString& errorMessage);
    void warningStateChanged(bool warningState, const QString& warningMessage);
    /// Eight entries in channel order (intensities in percent), owned by the Device, valid during the call.
    void shutterChanged(bool* shutterStates);
    void intensityChanged(float* intensityLevels);
    void invertedStateChanged(bool* invertedTTLStates); ///< declared only; the poll does not emit it
    void receivedDataFromDevice(QByteArray& data);      ///< every chunk, before anything is made of it

private:
    struct Private;
    const std::unique_ptr<Private> d;
};
