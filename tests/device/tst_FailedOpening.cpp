#include "device/FailedOpening.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>

using Error = QSerialPort::SerialPortError;
Q_DECLARE_METATYPE(OpenFailure)

/// What is made of an attempt to open a port: the facts are given, so that no right of the user matters.
class tst_FailedOpening : public QObject
{
    Q_OBJECT

private slots:
    void causes_data();
    void causes();
    void fileOfThePort_data();
    void fileOfThePort();

private:
    QTemporaryDir m_folder;
};

void tst_FailedOpening::causes_data()
{
    QTest::addColumn<QSerialPort::SerialPortError>("error");
    QTest::addColumn<QString>("errorString");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("accessible");
    QTest::addColumn<OpenFailure>("cause");

    const QString locked = QStringLiteral("Permission error while locking the device");
    const auto row = [](const char* name, Error error, const QString& text, bool exists, bool accessible,
                        OpenFailure cause) {
        QTest::newRow(name) << error << text << exists << accessible << cause;
    };
    const auto denied = OpenFailure::Denied;
    const auto busy = OpenFailure::Busy;
    const auto gone = OpenFailure::Gone;
    const auto other = OpenFailure::Other;
    row("no right", QSerialPort::PermissionError, qt_error_string(EACCES), true, false, denied);
    row("no right but by the file", QSerialPort::PermissionError, qt_error_string(EACCES), true, true,
        denied);
    row("not permitted", QSerialPort::PermissionError, qt_error_string(EPERM), true, true, denied);
    row("no right, told otherwise", QSerialPort::PermissionError, QStringLiteral("?"), true, false, denied);
    row("locked, and no right either", QSerialPort::PermissionError, locked, true, false, denied);
    row("held exclusively", QSerialPort::PermissionError, qt_error_string(EBUSY), true, true, busy);
    row("locked", QSerialPort::PermissionError, locked, true, true, busy);
    row("locked, file gone", QSerialPort::PermissionError, locked, false, false, gone);
    row("no such file", QSerialPort::DeviceNotFoundError, qt_error_string(ENOENT), false, false, gone);
    row("no such device", QSerialPort::DeviceNotFoundError, qt_error_string(ENODEV), true, true, gone);
    row("device in ruins", QSerialPort::ResourceError, qt_error_string(EIO), true, true, gone);
    row("nobody behind the file", QSerialPort::UnknownError, qt_error_string(ENXIO), true, true, gone);
    row("file gone since", QSerialPort::UnknownError, qt_error_string(EISDIR), false, false, gone);
    row("no serial port", QSerialPort::UnsupportedOperationError, qt_error_string(ENOTTY), true, true, other);
    row("no serial port, no right", QSerialPort::UnsupportedOperationError, {}, true, false, other);
    row("unknown", QSerialPort::UnknownError, qt_error_string(EISDIR), true, true, other);
    row("nothing said", QSerialPort::NoError, {}, true, true, other);
}

void tst_FailedOpening::causes()
{
    QFETCH(const QSerialPort::SerialPortError, error);
    QFETCH(const QString, errorString);
    QFETCH(const bool, exists);
    QFETCH(const bool, accessible);
    QFETCH(const OpenFailure, cause);
    QCOMPARE(int((FailedOpening{error, errorString, exists, accessible}.cause())), int(cause));
}

void tst_FailedOpening::fileOfThePort_data()
{
    QTest::addColumn<QString>("portName");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("accessible");

    const QString file = m_folder.filePath(QStringLiteral("file"));
    QVERIFY(QFile(file).open(QIODevice::WriteOnly));
    const QString link = m_folder.filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(file, link));
    const QString loose = m_folder.filePath(QStringLiteral("loose"));
    QVERIFY(QFile::link(m_folder.filePath(QStringLiteral("nothing")), loose));

    QTest::newRow("by its name among the devices") << QStringLiteral("null") << true << true;
    QTest::newRow("by its path") << file << true << true;
    QTest::newRow("through a link") << link << true << true;
    QTest::newRow("link to nothing") << loose << false << false;
    QTest::newRow("unknown name") << QStringLiteral("ttyNowhere9") << false << false;
}

void tst_FailedOpening::fileOfThePort()
{
    QFETCH(const QString, portName);
    const FailedOpening attempt =
        FailedOpening::of(portName, QSerialPort::WriteError, QStringLiteral("words"));
    QTEST(attempt.exists, "exists");
    QTEST(attempt.accessible, "accessible");
    QCOMPARE(attempt.error, QSerialPort::WriteError);
    QCOMPARE(attempt.errorString, QStringLiteral("words"));
}

QTEST_GUILESS_MAIN(tst_FailedOpening)
#include "tst_FailedOpening.moc"
