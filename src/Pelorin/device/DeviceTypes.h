#pragma once

#include <QMetaType>
#include <QString>

#include <array>

/// Channels of the device; every per-channel array is in the device's order, 405 to 730 nm.
constexpr int channelCount = 8;

/// The levels of a channel, in percent.
constexpr int minimumPercent = 0;
constexpr int maximumPercent = 100;

/// The longest time of idleness, in minutes, after which the device can be told to sleep.
constexpr int maximumSleepMinutes = 99;

/// The laser system's functional mode. Warm-up is entered by the device alone and cannot be requested.
enum FunctionalMode_t : int { FunctionalModeWarmup = 0, FunctionalModeIdle = 1, FunctionalModeRun = 2 };
Q_DECLARE_METATYPE(FunctionalMode_t)

/// Which firmware image runs in the device.
enum class DeviceMode : quint8 {
    NotIdentified = 0,
    Loader = 1,
    LoaderUpdater = 2,
    Application = 3,
    UpdatingLaserController = 4, ///< the application runs and reprograms its laser controller
    Other = 5,
};

/// Who sets intensities or shutters: the device's external inputs or this computer.
enum class ControlSource : quint8 { External = 0, Host = 1 };

/// Why a device that is listed cannot be opened.
enum class OpenFailure : quint8 {
    None,   ///< it is open, or none is listed
    Denied, ///< this user has no right to use its port
    Busy,   ///< another program holds its port, perhaps for some seconds only
    Gone,   ///< its port is listed still, and no device is behind it any more
    Other,  ///< anything else; the log has the port's error
};

using ShutterStates = std::array<bool, channelCount>;    ///< true = open
using IntensityLevels = std::array<float, channelCount>; ///< percent
using TtlInvertStates = std::array<bool, channelCount>;  ///< true = inverted
using OperatingHours = std::array<float, channelCount>;  ///< hours

/// A flag of the device ("fault?", "warn?") with the text of the reply that told it, without line feeds.
struct StateReport
{
    bool active = false;
    QString message;
};

/// The readings of "temps", each the text the device sent after "=" (empty when it sent none).
struct Temperatures
{
    QString necsel;       ///< degrees Celsius
    QString novalum1;     ///< degrees Celsius
    QString novalum2;     ///< degrees Celsius
    QString laserFan;     ///< fan speed
    QString heater;       ///< heater state
    QString laserCurrent; ///< amperes
};

/// The unit's identity as it is kept in the device; all fields are text of the device.
struct ProductConfig
{
    QString hardwareVersion;     ///< "vyr_hw_ver"
    QString partNumber;          ///< "vyr_pn"
    QString serialNumber;        ///< "vyr_sn"
    QString necselSerialNumber;  ///< "necsel_laser_sn"
    QString novalumSerialNumber; ///< "novalum_sn"
};

/// The binary records that the device keeps. What lies in them is the editors' business; the link moves
/// bytes.
constexpr int systemConfigSize = 308;
constexpr int channelConfigSize = 100;
using SystemConfigBytes = std::array<quint8, systemConfigSize>;
using ChannelConfigBytes = std::array<quint8, channelConfigSize>;

/// Identity of the Necsel module's own controller; both texts are the device's.
struct NecselControllerInfo
{
    QString version;
    QString serialNumber;
};
