#include "device/DeviceFixture.h"
#include "device/SerialLine.h"

#include <QMetaType>
#include <QTest>

#include <cerrno>

using namespace DeviceTest;
using namespace std::chrono_literals;

/// The port by itself: what it makes of errors. Errors that no pseudo-terminal shows are emitted in the
/// port's place.
class tst_SerialLine : public WatchedTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void portSettings();
    void openingClearsWhatWaited();
    void errorsThatLeaveThePortOpen_data();
    void errorsThatLeaveThePortOpen();
    void vanishedDevice_data();
    void vanishedDevice();
    void receptionForgivesAFailedRead();
    void vanishedDeviceThatNeverSaysSo();
    void errorsOfAClosedPortAreNoNews();
    void opensAndClosesOnce();

private:
    void report(QSerialPort::SerialPortError error) { emit m_port->errorOccurred(error); }

    std::unique_ptr<ScriptedBench> m_bench;
    std::unique_ptr<LogCapture> m_log;
    std::unique_ptr<SerialLine> m_line;
    QSerialPort* m_port = nullptr;
    int m_failures = 0;
    int m_closings = 0;
    QByteArray m_received;
};

/// The error's type becomes known by name with the first line, so that it can travel through queues.
void tst_SerialLine::initTestCase()
{
    constexpr auto name = "QSerialPort::SerialPortError";
    QCOMPARE(QMetaType::type(name), int(QMetaType::UnknownType));
    const SerialLine line;
    QVERIFY(QMetaType::type(name) != QMetaType::UnknownType);
}

void tst_SerialLine::init()
{
    beginWatch();
    m_failures = 0;
    m_closings = 0;
    m_received.clear();
    m_bench = std::make_unique<ScriptedBench>();
    m_line = std::make_unique<SerialLine>();
    m_port = m_line->findChild<QSerialPort*>();
    QVERIFY(m_line->open(m_bench->portName()));
    connect(m_line.get(), &SerialLine::failed, this, [this] { ++m_failures; });
    connect(m_line.get(), &SerialLine::aboutToClose, this, [this] { ++m_closings; });
    connect(m_line.get(), &SerialLine::received, this,
            [this](const QByteArray& chunk) { m_received += chunk; });
    m_log = std::make_unique<LogCapture>();
}

void tst_SerialLine::cleanup()
{
    m_log.reset();
    m_line.reset();
    m_bench.reset();
    endWatch();
}

void tst_SerialLine::portSettings()
{
    QCOMPARE(m_port->baudRate(QSerialPort::Input), 19200);
    QCOMPARE(m_port->baudRate(QSerialPort::Output), 19200);
    QCOMPARE(m_port->dataBits(), QSerialPort::Data8);
    QCOMPARE(m_port->parity(), QSerialPort::NoParity);
    QCOMPARE(m_port->stopBits(), QSerialPort::OneStop);
    QCOMPARE(m_port->flowControl(), QSerialPort::NoFlowControl);
    QVERIFY(m_line->isOpen());
    QCOMPARE(m_line->portName(), m_bench->portName());
}

void tst_SerialLine::openingClearsWhatWaited()
{
    m_line->close();
    m_bench->wire().sendUnsolicited("from before");
    QVERIFY(m_line->open(m_bench->portName()));
    listenFor(50ms);
    QCOMPARE(m_received, QByteArray());
    m_bench->wire().sendUnsolicited("new");
    QVERIFY(waitUntil([this] { return m_received == "new"; }));
}

void tst_SerialLine::errorsThatLeaveThePortOpen_data()
{
    QTest::addColumn<QSerialPort::SerialPortError>("error");
    QTest::addColumn<QStringList>("logged");

    QTest::newRow("none") << QSerialPort::NoError << QStringList();
    const auto row = [](QSerialPort::SerialPortError error, const char* name) {
        QTest::newRow(name) << error
                            << QStringList{QStringLiteral("Serial port error ") + QString::fromLatin1(name)};
    };
    row(QSerialPort::WriteError, "WriteError");
    row(QSerialPort::ReadError, "ReadError");
    row(QSerialPort::TimeoutError, "TimeoutError");
    row(QSerialPort::UnsupportedOperationError, "UnsupportedOperationError");
    row(QSerialPort::UnknownError, "UnknownError");
}

void tst_SerialLine::errorsThatLeaveThePortOpen()
{
    QFETCH(const QSerialPort::SerialPortError, error);
    report(error);
    QTEST(errorMessages(*m_log), "logged");
    QCOMPARE(m_failures, 1);
    QCOMPARE(m_closings, 0);
    QVERIFY(m_line->isOpen());
}

void tst_SerialLine::vanishedDevice_data()
{
    QTest::addColumn<QList<QSerialPort::SerialPortError>>("errors");
    QTest::addColumn<bool>("listed");
    QTest::addColumn<QString>("logged");

    const auto read = QSerialPort::ReadError;
    const auto resource = QSerialPort::ResourceError;
    using Errors = QList<QSerialPort::SerialPortError>;
    QTest::newRow("says so") << Errors{resource} << true << "ResourceError";
    QTest::newRow("goes on saying so") << Errors{resource, resource, resource} << false << "ResourceError";
    QTest::newRow("cannot be read twice") << Errors{read, read} << true << "ReadError";
    QTest::newRow("a storm") << Errors{read, read, read, read, resource} << true << "ReadError";
    QTest::newRow("read, then gone") << Errors{read, resource} << true << "ReadError";
    QTest::newRow("is not listed any more") << Errors{read} << false << "ReadError";
}

/// Logged once, closed once, announced once.
void tst_SerialLine::vanishedDevice()
{
    QFETCH(const QList<QSerialPort::SerialPortError>, errors);
    QFETCH(const bool, listed);
    QFETCH(const QString, logged);
    if (!listed)
        m_bench->ports().setUsbIdentifiers({}, {});
    for (const QSerialPort::SerialPortError error : errors)
        report(error);
    QVERIFY(!m_line->isOpen());
    QCOMPARE(errorMessages(*m_log), QStringList{QStringLiteral("Serial port error ") + logged});
    QCOMPARE(m_failures, 1);
    QCOMPARE(m_closings, 1);
}

void tst_SerialLine::receptionForgivesAFailedRead()
{
    for (int i = 0; i < 3; ++i) {
        report(QSerialPort::ReadError);
        QVERIFY(m_line->isOpen());
        m_received.clear();
        m_bench->wire().sendUnsolicited("hello");
        QVERIFY(waitUntil([this] { return m_received == "hello"; }));
    }
    QCOMPARE(errorMessages(*m_log).size(), 3);
    QCOMPARE(m_failures, 3);
    QCOMPARE(m_closings, 0);
}

/// The reading of a vanished device fails with whatever cause the system call before it left behind.
void tst_SerialLine::vanishedDeviceThatNeverSaysSo()
{
    m_bench->ports().addPortInFront({m_bench->portName(), 0x2F26, 0x3A98}); // stays listed for a while
    std::function<void()> leaveACause = [&] {
        errno = ENOTTY;
        if (m_line->isOpen())
            QMetaObject::invokeMethod(m_line.get(), leaveACause, Qt::QueuedConnection);
    };
    leaveACause();
    m_bench->wire().unplug();
    QVERIFY(waitUntil([this] { return !m_line->isOpen(); }));
    QCOMPARE(errorMessages(*m_log), QStringList{QStringLiteral("Serial port error ReadError")});
    QCOMPARE(m_failures, 1);
    QCOMPARE(m_closings, 1);
    const auto before = cpuTime();
    listenFor(300ms);
    QVERIFY(cpuTime() - before < 30ms);
}

void tst_SerialLine::errorsOfAClosedPortAreNoNews()
{
    connect(m_line.get(), &SerialLine::aboutToClose, this, [this] {
        QVERIFY(!m_line->isOpen());
        QVERIFY(m_line->isChanging());
        report(QSerialPort::ResourceError);
        report(QSerialPort::ReadError);
        m_line->close();
        QVERIFY(!m_line->open(m_bench->portName()));
        QCOMPARE(m_line->write("x"), qint64(-1));
        m_line->discardInput();
    });
    m_line->close();
    report(QSerialPort::ResourceError);
    report(QSerialPort::WriteError);
    QCOMPARE(m_closings, 1);
    QCOMPARE(m_failures, 0);
    QCOMPARE(m_log->lines(), QStringList());
    QCOMPARE(m_line->write("x"), qint64(-1));
}

void tst_SerialLine::opensAndClosesOnce()
{
    QVERIFY(!m_line->open(m_bench->portName()));
    QVERIFY(m_line->isOpen());
    m_line->close();
    m_line->close();
    QCOMPARE(m_closings, 1);
    QVERIFY(m_line->open(m_bench->portName()));
    QVERIFY(m_line->isOpen());
}

QTEST_GUILESS_MAIN(tst_SerialLine)
#include "tst_SerialLine.moc"
