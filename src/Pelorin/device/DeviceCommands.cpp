#include "device/Commands.h"
#include "device/DevicePrivate.h"
#include "device/Replies.h"
#include "mainwindow/channel.h"

/// Sends a query and hands its reply to the parser; nothing is stored when no reply came.
template<typename Parser, typename Result>
int Device::Private::ask(const char* command, Parser parser, Result& result)
{
    QString reply;
    const int code = q->transaction(QByteArray(command) + '\n', reply);
    return code == DeviceResult::Ok ? parser(reply, result) : code;
}

int Device::getFunctionalMode(FunctionalMode_t& mode)
{
    return d->ask("f_mode?", Replies::functionalMode, mode);
}

int Device::getSleepTime(quint8& minutes)
{
    return d->ask("sleep?", Replies::sleepTime, minutes);
}

int Device::getIntensityMode(ControlSource& source)
{
    return d->ask("int_mode?", Replies::intensitySource, source);
}

int Device::getFaultState(StateReport& report)
{
    return d->ask("fault?", Replies::fault, report);
}

int Device::getWarningState(StateReport& report)
{
    return d->ask("warn?", Replies::warning, report);
}

int Device::getHours(OperatingHours& hours)
{
    return d->ask("hours?", Replies::hours, hours);
}

int Device::getShutterStates(ShutterStates& states)
{
    return d->ask("shutter?", Replies::shutterStates, states);
}

int Device::getTTLInvertStates(TtlInvertStates& states)
{
    return d->ask("ttl_invert?", Replies::ttlInvertStates, states);
}

int Device::getIntensityLevels(IntensityLevels& levels)
{
    return d->ask("set?", Replies::intensityLevels, levels);
}

int Device::getTemperatures(Temperatures& readings)
{
    return d->ask("temps", Replies::temperatures, readings);
}

int Device::getVersion(const char* query, ImageVersion& image)
{
    return d->ask(query, Replies::imageVersion, image);
}

bool Device::isApplicationValid()
{
    QString reply;
    return transaction(QByteArrayLiteral("isappvalid\n"), reply) == DeviceResult::Ok && Replies::isYes(reply);
}

bool Device::isLoaderValid()
{
    QString reply;
    return transaction(QByteArrayLiteral("isloadervalid\n"), reply) == DeviceResult::Ok &&
           Replies::isYes(reply);
}

int Device::getNecselControllerInfo(NecselControllerInfo& info)
{
    // The second is asked whatever became of the first; the first failure is the one to tell.
    const int versionCode = d->askNecselController("necsel_controller_ver", info.version);
    const int serialNumberCode = d->askNecselController("necsel_controller_sn", info.serialNumber);
    return versionCode != DeviceResult::Ok ? versionCode : serialNumberCode;
}

int Device::Private::askNecselController(const char* key, QString& text)
{
    QString reply;
    const int code = q->transaction(QByteArray(key) + '\n', reply);
    if (code != DeviceResult::Ok)
        return code;
    const bool updating = Replies::tellsFirmwareUpdate(reply);
    if (updating)
        setMode(DeviceMode::UpdatingLaserController);
    const bool told = Replies::keyedText(reply, QString::fromLatin1(key), text);
    return told || updating ? DeviceResult::Ok : DeviceResult::MarkerMissing;
}

/// An empty command is one whose argument the device does not accept.
int Device::Private::set(const QByteArray& command) const
{
    if (!q->isOpen())
        return DeviceResult::NotOpen;
    return command.isEmpty() ? int(DeviceResult::BadArgument) : q->sendOrEnqueue(command);
}

int Device::setIntensity(const channel& laser, float percent)
{
    return d->set(Commands::setIntensity(laser.wavelength(), percent));
}

int Device::setShutter(const channel& laser, bool open)
{
    return d->set(Commands::setShutter(laser.wavelength(), open));
}

int Device::setTTLInvert(const channel& laser, bool inverted)
{
    return d->set(Commands::setTtlInvert(laser.wavelength(), inverted));
}

int Device::setIntensityMode(int source)
{
    return d->set(Commands::setIntensityMode(source));
}

int Device::setShutterMode(int source)
{
    return d->set(Commands::setShutterMode(source));
}

int Device::setSpeckle(bool on)
{
    return d->set(Commands::setSpeckle(on));
}

int Device::setFunctionalMode(int mode)
{
    return d->set(Commands::setFunctionalMode(mode));
}

int Device::setSleepTime(quint16 minutes)
{
    return d->set(Commands::setSleepTime(minutes));
}

int Device::clearFaults()
{
    return d->set(Commands::clearFaults());
}

int Device::resetDevice()
{
    return d->set(Commands::resetDevice());
}

int Device::restoreDefaults()
{
    return d->set(Commands::restoreDefaults());
}
