#include "device/SerialLine.h"

#include "QsLog2_1_0/QsLog.h"
#include "device/FailedOpening.h"
#include "device/SerialPorts.h"

#include <QMetaEnum>
#include <QScopedValueRollback>

#include <cerrno>
#include <utility>

namespace {
const char* nameOf(QSerialPort::SerialPortError error)
{
    const char* name = QMetaEnum::fromType<QSerialPort::SerialPortError>().valueToKey(error);
    return name ? name : "UnknownError";
}
} // namespace

SerialLine::SerialLine(QObject* parent) : QObject(parent)
{
    qRegisterMetaType<QSerialPort::SerialPortError>("QSerialPort::SerialPortError");
    m_port.setBaudRate(QSerialPort::Baud19200);
    m_port.setDataBits(QSerialPort::Data8);
    m_port.setParity(QSerialPort::NoParity);
    m_port.setStopBits(QSerialPort::OneStop);
    m_port.setFlowControl(QSerialPort::NoFlowControl);
    connect(&m_port, &QSerialPort::readyRead, this, &SerialLine::readAvailable);
    connect(&m_port, &QSerialPort::errorOccurred, this, &SerialLine::handleError);
    connect(&m_port, &QSerialPort::aboutToClose, this, &SerialLine::aboutToClose);
}

SerialLine::~SerialLine()
{
    close();
}

bool SerialLine::open(const QString& portName)
{
    if (isChanging() || m_port.isOpen())
        return false;
    const bool isAnotherPort = m_portName != portName;
    if (isAnotherPort)
        m_openError = QSerialPort::NoError;
    m_portName = portName;
    if (tryToOpen()) {
        forgetOpenFailure();
        return isOpen(); // whoever heard of it may have closed it
    }
    const OpenFailure cause = FailedOpening::of(portName, m_openError, m_openErrorText).cause();
    if (std::exchange(m_openFailure, cause) != cause || isAnotherPort)
        emit openFailureChanged(portName, cause);
    return false;
}

bool SerialLine::tryToOpen()
{
    const QScopedValueRollback<bool> opening(m_opening, true);
    m_readFailed = false;
    m_port.setPortName(m_portName);
    if (!m_port.open(QIODevice::ReadWrite))
        return false;
    m_openError = QSerialPort::NoError;
    // What the system gathered before is no answer to anything that we ask.
    m_port.clear();
    return true;
}

void SerialLine::forgetOpenFailure()
{
    if (std::exchange(m_openFailure, OpenFailure::None) != OpenFailure::None)
        emit openFailureChanged(m_portName, OpenFailure::None);
}

void SerialLine::close()
{
    if (m_closing || !m_port.isOpen())
        return;
    const QScopedValueRollback<bool> closing(m_closing, true);
    m_port.close();
}

bool SerialLine::isOpen() const
{
    return m_port.isOpen() && !isChanging();
}

qint64 SerialLine::write(const QByteArray& bytes)
{
    if (!isOpen())
        return -1;
    const QScopedValueRollback<bool> writing(m_writing, true);
    const qint64 accepted = qMax<qint64>(m_port.write(bytes), 0);
    m_port.flush();
    if (!isOpen())
        return -1;
    const qint64 left = qMin(m_port.bytesToWrite(), accepted);
    if (left > 0)
        m_port.clear(QSerialPort::Output);
    return accepted - left;
}

void SerialLine::discardInput()
{
    if (!isOpen())
        return;
    m_port.readAll();
    // Bytes that still wait in the system would be taken for the answer to the next command.
    m_port.clear(QSerialPort::Input);
}

void SerialLine::readAvailable()
{
    m_readFailed = false;
    emit received(m_port.readAll());
}

void SerialLine::handleError(QSerialPort::SerialPortError error)
{
    const QString text = m_port.errorString(); // closing wipes it
    if (error == QSerialPort::NoError) {
        emit failed(text);
        return;
    }
    // What a port says while it closes, or once it is closed, is no news.
    if (m_closing || (!m_opening && !m_port.isOpen()))
        return;
    if (m_opening) {
        tellOpenError(error, text);
        return;
    }
    const bool readTrouble =
        error == QSerialPort::ReadError || (error == QSerialPort::ResourceError && !isLineFull());
    // A device that vanished repeats itself without end: it is told once.
    const bool toldBefore = readTrouble && m_readFailed;
    if (!toldBefore)
        QS_ERROR() << "Serial port error" << nameOf(error);
    if (readTrouble && tellsVanishedDevice(error))
        close();
    if (!toldBefore)
        emit failed(text);
}

/// A port that another program holds is tried again every second; its log line comes once.
void SerialLine::tellOpenError(QSerialPort::SerialPortError error, const QString& text)
{
    if (std::exchange(m_openError, error) != error)
        QS_ERROR() << "Serial port error" << nameOf(error);
    m_openErrorText = text;
    emit failed(text);
}

/// A single failed read may be a passing trouble; the next one in a row is not. Some systems never say more
/// than that when the device is unplugged.
bool SerialLine::tellsVanishedDevice(QSerialPort::SerialPortError error)
{
    if (error == QSerialPort::ResourceError || std::exchange(m_readFailed, true))
        return true;
    return !SerialPorts::isListedIlluminator(SerialPorts::available(), m_portName);
}

/// The system had no room for a command: a short write, told by the same code as a device that is gone.
bool SerialLine::isLineFull() const
{
    return m_writing && m_port.errorString() == qt_error_string(EAGAIN);
}
