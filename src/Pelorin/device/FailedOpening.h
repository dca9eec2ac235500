#pragma once

#include "device/DeviceTypes.h"

#include <QSerialPort>
#include <QString>

/// An attempt to open a port that failed: what the port said, and what stands in the file system under its
/// name. Where ports are no files, both flags stay true.
struct FailedOpening
{
    QSerialPort::SerialPortError error = QSerialPort::UnknownError;
    QString errorString; ///< the port's own words
    bool exists = true;
    bool accessible = true; ///< this user may read and write it

    /// An attempt that failed just now, with a look at the port's file.
    static FailedOpening of(const QString& portName, QSerialPort::SerialPortError error,
                            const QString& errorString);

    /// Why it failed; never None. The port's error alone does not tell a missing right from a port in use.
    OpenFailure cause() const;
};
