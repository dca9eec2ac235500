#pragma once

#include "device/DeviceTypes.h"

#include <QByteArray>
#include <QObject>
#include <QSerialPort>
#include <QString>

/// The one serial port of the link with its fixed settings, and the judgement whether the device behind it
/// is still there. It logs and announces trouble; what goes over the line is its owner's business.
///
/// The signals are emitted from within the port's own slots or while it is being opened: a receiver may close
/// the line, but must not delete it and must not wait for bytes.
class SerialLine : public QObject
{
    Q_OBJECT

public:
    explicit SerialLine(QObject* parent = nullptr);
    ~SerialLine() override;

    /// Opens the port and throws away what the system had buffered for it. False, with the cause logged
    /// once per cause and announced, when the port cannot be opened.
    bool open(const QString& portName);
    /// The port that could not be opened is there no longer.
    void forgetOpenFailure();
    void close();
    /// False from the moment the line begins to close, and true only once opening is over.
    bool isOpen() const;
    /// True while a port is being opened or closed: neither may be asked for then.
    bool isChanging() const { return m_opening || m_closing; }
    /// Name under which the port was opened last.
    QString portName() const { return m_portName; }

    /// Hands bytes to the system now. Returns how many it took; the rest is dropped, so that a command
    /// reported as failed is not sent later. -1 when the line is not open, or closes because the device
    /// turns out to be gone.
    qint64 write(const QByteArray& bytes);
    /// Throws away everything that arrived and was not read, in the program and in the system.
    void discardInput();

signals:
    /// Everything that waited when the port became readable.
    void received(const QByteArray& chunk);
    void aboutToClose();
    /// Any error, "no error" included, in the port's own words.
    void failed(const QString& errorString);
    /// Opening failed, unlike the attempt before; None when it succeeds again, or the failure is forgotten.
    void openFailureChanged(const QString& portName, OpenFailure cause);

private:
    bool tryToOpen();
    void readAvailable();
    void handleError(QSerialPort::SerialPortError error);
    void tellOpenError(QSerialPort::SerialPortError error, const QString& text);
    bool tellsVanishedDevice(QSerialPort::SerialPortError error);
    bool isLineFull() const;

    QSerialPort m_port{this};
    QString m_portName;
    QSerialPort::SerialPortError m_openError = QSerialPort::NoError; // of the last attempt to open
    QString m_openErrorText;
    OpenFailure m_openFailure = OpenFailure::None; // as it was told last
    bool m_opening = false;
    bool m_closing = false;
    bool m_writing = false;
    bool m_readFailed = false; // and nothing was received since
};
