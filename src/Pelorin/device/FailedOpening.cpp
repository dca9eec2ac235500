#include "device/FailedOpening.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>

OpenFailure FailedOpening::cause() const
{
    // Not every system error has an error of the port's own; their texts do tell them apart.
    const auto says = [this](int systemError) { return errorString == qt_error_string(systemError); };
    if (!exists || error == QSerialPort::DeviceNotFoundError || error == QSerialPort::ResourceError ||
        says(ENXIO))
        return OpenFailure::Gone;
    if (error != QSerialPort::PermissionError)
        return OpenFailure::Other;
    // A file that looks open to everybody may still be closed by another rule of the system.
    return !accessible || says(EACCES) || says(EPERM) ? OpenFailure::Denied : OpenFailure::Busy;
}

FailedOpening FailedOpening::of(const QString& portName, QSerialPort::SerialPortError error,
                                const QString& errorString)
{
    FailedOpening attempt{error, errorString};
#ifdef Q_OS_UNIX
    const QFileInfo file(QDir(QStringLiteral("/dev")), portName); // an absolute name stays as it is
    attempt.exists = file.exists();
    attempt.accessible = file.isReadable() && file.isWritable();
#else
    Q_UNUSED(portName)
#endif
    return attempt;
}
