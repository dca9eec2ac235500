#include "device/DeviceFixture.h"

#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;
using QsLogging::LogLevel;

class tst_DeviceConnection : public PluggedTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void foundPortsAreLogged();
    void otherPortsAreLeftAlone_data();
    void otherPortsAreLeftAlone();
    void firstOfTwoDevicesIsUsed();
    void scanRunsByItself();
    void selectPortClosesTheOpenOne();
    void selectPortWhileClosed();
    void portThatCannotBeOpened();
    void portThatAnotherProgramHolds();
    void unlistedPortIsClosed();
    void disconnectionFindsTheLinkClosed();
    void destructionTellsNobody();
};

void tst_DeviceConnection::foundPortsAreLogged()
{
    m_bench->wire().unplug();
    m_bench->ports().addPortInFront({QStringLiteral("one"), 1, 2});
    m_bench->ports().addPortInFront({QStringLiteral("two"), {}, {}});
    Device device;
    {
        const LogCapture log(LogLevel::Warn);
        device.checkConnectionStatus();
        QCOMPARE(log.lines(), QStringList());
    }
    const LogCapture log;
    device.checkConnectionStatus();
    QCOMPARE(messages(log.lines(LogLevel::Info)),
             (QStringList{QStringLiteral("Found vendorID:  1 prodID:  2 Matching to: 12070 15000"),
                          QStringLiteral("Found vendorID:  0 prodID:  0 Matching to: 12070 15000")}));
}

using Identifier = std::optional<quint16>;
Q_DECLARE_METATYPE(Identifier)

void tst_DeviceConnection::otherPortsAreLeftAlone_data()
{
    QTest::addColumn<Identifier>("vendor");
    QTest::addColumn<Identifier>("product");
    QTest::addColumn<bool>("opened");

    QTest::newRow("first pair") << Identifier(0x2F26) << Identifier(0x3A98) << true;
    QTest::newRow("second pair") << Identifier(0x03EB) << Identifier(0x2404) << true;
    QTest::newRow("mixed pair") << Identifier(0x2F26) << Identifier(0x2404) << false;
    QTest::newRow("no identifiers") << Identifier() << Identifier() << false;
}

void tst_DeviceConnection::otherPortsAreLeftAlone()
{
    QFETCH(const Identifier, vendor);
    QFETCH(const Identifier, product);
    m_bench->ports().setUsbIdentifiers(vendor, product);
    Device device;
    device.checkConnectionStatus();
    QTEST(device.isOpen(), "opened");
    QTEST(!m_bench->received().isEmpty(), "opened");
}

void tst_DeviceConnection::firstOfTwoDevicesIsUsed()
{
    ScriptedBench second;
    answerAsApplication(second, "2.7.9");
    Device device;
    QVERIFY(connectWithoutPoll(device));
    QCOMPARE(device.portName(), m_bench->portName());
    QCOMPARE(second.received().size(), 0);
    m_bench->wire().unplug();
    QVERIFY(waitUntil([&] { return !device.isOpen(); }));
    QVERIFY(connectWithoutPoll(device));
    QCOMPARE(device.portName(), second.portName());
    QCOMPARE(device.runningVersion().version.toString(), QStringLiteral("2.7.9"));
    // Back again, it is left alone: the open one serves.
    m_bench->clearReceived();
    QVERIFY(m_bench->wire().plug());
    device.checkConnectionStatus();
    QCOMPARE(device.portName(), second.portName());
    QCOMPARE(m_bench->received().size(), 0);
}

void tst_DeviceConnection::scanRunsByItself()
{
    const Stopwatch watch;
    Device device;
    const Announcements heard(device);
    QVERIFY(waitUntil([&] { return heard.count(QStringLiteral("connected")) == 1; }, 2s));
    QVERIFY2(watch.elapsed() >= 900ms && watch.elapsed() < 1300ms,
             qPrintable(QString::number(watch.elapsed().count())));
}

void tst_DeviceConnection::selectPortClosesTheOpenOne()
{
    Device device;
    QVERIFY(connectWithoutPoll(device));
    const Announcements heard(device);
    const LogCapture log;
    device.selectPort(QStringLiteral("COM7"));
    QVERIFY(!device.isOpen());
    QCOMPARE(device.portName(), QStringLiteral("COM7"));
    QCOMPARE(messages(log.lines(LogLevel::Warn)), QStringList{QStringLiteral("Closing the previous port")});
    QCOMPARE(messages(log.lines(LogLevel::Info)), QStringList{QStringLiteral("**Port Closed**")});
    QCOMPARE(heard.all, QStringList{QStringLiteral("disconnected COM7")});
    // The next check opens the first device found.
    device.checkConnectionStatus();
    QCOMPARE(device.portName(), m_bench->portName());
    QVERIFY(device.isApplicationConnected());
}

void tst_DeviceConnection::selectPortWhileClosed()
{
    Device device;
    const Announcements heard(device);
    const LogCapture log;
    device.selectPort(QStringLiteral("COM7"));
    QCOMPARE(device.portName(), QStringLiteral("COM7"));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(heard.all, QStringList());
}

void tst_DeviceConnection::portThatCannotBeOpened()
{
    m_bench->ports().addPortInFront({QStringLiteral("/nowhere/ttyVYR9"), 0x2F26, 0x3A98});
    Device device;
    const Announcements heard(device);
    const LogCapture log;
    for (int i = 0; i < 3; ++i)
        device.checkConnectionStatus();
    QVERIFY(!device.isOpen());
    QCOMPARE(messages(log.lines(LogLevel::Info)).count(QStringLiteral("Error opening device")), 3);
    QCOMPARE(errorMessages(log), QStringList{QStringLiteral("Serial port error DeviceNotFoundError")});
    QCOMPARE(heard.count(QStringLiteral("error No such file or directory")), 3);
    QCOMPARE(heard.count(QStringLiteral("connected")) + heard.count(QStringLiteral("disconnected")), 0);
    QCOMPARE(device.deviceMode(), DeviceMode::NotIdentified);
    m_bench->ports().removeAddedPorts();
    QVERIFY(connectWithoutPoll(device));
}

void tst_DeviceConnection::portThatAnotherProgramHolds()
{
    auto holder = std::make_unique<Device>();
    QVERIFY(connectWithoutPoll(*holder));
    Device device;
    const LogCapture log;
    for (int i = 0; i < 3; ++i)
        device.checkConnectionStatus();
    QVERIFY(!device.isOpen());
    QCOMPARE(errorMessages(log), QStringList{QStringLiteral("Serial port error PermissionError")});
    QCOMPARE(messages(log.lines(LogLevel::Info)).count(QStringLiteral("Error opening device")), 3);
    holder.reset();
    QVERIFY(connectWithoutPoll(device));
}

void tst_DeviceConnection::unlistedPortIsClosed()
{
    Device device;
    QVERIFY(connectWithoutPoll(device));
    const Announcements heard(device);
    const LogCapture log;
    m_bench->ports().setUsbIdentifiers(1, 2);
    QVERIFY(waitUntil([&] { return !device.isOpen(); }, 1500ms));
    const QStringList texts = messages(log.lines(LogLevel::Info));
    QCOMPARE(texts.count(QStringLiteral("Device not communicating.  Closing port")), 1);
    QCOMPARE(texts.last(), QStringLiteral("**Port Closed**"));
    QCOMPARE(heard.all, QStringList{QStringLiteral("disconnected ") + m_bench->portName()});
    QCOMPARE(device.deviceMode(), DeviceMode::NotIdentified);
}

void tst_DeviceConnection::disconnectionFindsTheLinkClosed()
{
    Device device;
    QVERIFY(connectWithoutPoll(device));
    m_bench->clearReceived();
    QStringList found;
    connect(&device, &Device::deviceDisconnected, this, [&] {
        found = QStringList{QString::number(device.isOpen()), QString::number(device.clearFaults()),
                            QString::number(device.goLoader()), QString::number(int(device.deviceMode()))};
        device.selectPort(QStringLiteral("again"));
        device.checkConnectionStatus();
        device.setPolling(true);
    });
    const LogCapture log;
    device.selectPort({});
    QCOMPARE(log.count(QStringLiteral("Product match")), 0); // no opening inside the closing
    QCOMPARE(found, (QStringList{QStringLiteral("0"), QStringLiteral("-40010"), QStringLiteral("-40010"),
                                 QStringLiteral("0")}));
    QVERIFY(!device.isOpen());
    listenFor(50ms);
    QCOMPARE(m_bench->received().size(), 0);
}

void tst_DeviceConnection::destructionTellsNobody()
{
    auto device = std::make_unique<Device>();
    QVERIFY(connectWithoutPoll(*device));
    const Announcements heard(*device);
    const LogCapture log;
    device.reset();
    QCOMPARE(heard.all, QStringList());
    QCOMPARE(messages(log.lines()), QStringList{QStringLiteral("**Port Closed**")});
}

QTEST_GUILESS_MAIN(tst_DeviceConnection)
#include "tst_DeviceConnection.moc"
