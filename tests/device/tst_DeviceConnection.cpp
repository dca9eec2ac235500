#include "device/DeviceFixture.h"

#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;
using QsLogging::LogLevel;

class tst_DeviceConnection : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void foundPortsAreLogged();
    void otherPortsAreLeftAlone_data();
    void otherPortsAreLeftAlone();
    void applicationIsIdentified();
    void firstVersionOnlyWakesTheLine();
    void runningImages_data();
    void runningImages();
    void failedIdentification_data();
    void failedIdentification();
    void invalidImagesAreLogged();
    void silentDeviceIsTriedAgain();
    void earlierIdentityIsForgotten();
    void firstOfTwoDevicesIsUsed();
    void scanRunsByItself();
    void selectPortClosesTheOpenOne();
    void selectPortWhileClosed();
    void portThatCannotBeOpened();
    void portThatAnotherProgramHolds();
    void unlistedPortIsClosed();
    void unidentifiedDeviceIsOpenedAnew();
    void tickDuringIdentificationKeepsThePort();
    void tickDuringTheAnnouncementKeepsThePort();
    void disconnectionFindsTheLinkClosed();
    void destructionTellsNobody();
    void laserControllerUpdateIsLeftAlone();
    void laserControllerUpdateKeepsThePollOff();

private:
    QtWarnings m_warnings;
    std::unique_ptr<ScriptedBench> m_bench;
};

void tst_DeviceConnection::init()
{
    m_bench = std::make_unique<ScriptedBench>();
    answerAsApplication(*m_bench);
}

void tst_DeviceConnection::cleanup()
{
    m_bench.reset();
    QCOMPARE(m_warnings.take(), QStringList());
}

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

void tst_DeviceConnection::applicationIsIdentified()
{
    Device device;
    const Announcements heard(device);
    const LogCapture log;
    device.checkConnectionStatus();
    QCOMPARE(m_bench->lines(),
             (QList<QByteArray>{"v", "reset_cause", "v", "v?a", "v?l", "isloadervalid", "isappvalid",
                                "necsel_controller_ver", "necsel_controller_sn"}));
    const QString quotedPort = QLatin1Char('"') + m_bench->portName() + QLatin1Char('"');
    QCOMPARE(messages(log.lines()),
             (QStringList{QStringLiteral("Found vendorID:  12070 prodID:  15000 Matching to: 12070 15000"),
                          QStringLiteral("Product match on port ") + quotedPort,
                          QStringLiteral("Successfully opened device ") + quotedPort,
                          QStringLiteral(R"("reset_cause=power on\n")"),
                          QStringLiteral(R"(Running the application version "2.7.0")")}));
    QCOMPARE(heard.all, (QStringList{QStringLiteral("error No error"),
                                     QStringLiteral("connected ") + m_bench->portName()}));
    QCOMPARE(device.portName(), m_bench->portName());
    QVERIFY(device.isApplicationConnected());
    QCOMPARE(device.runningVersion().kind, QStringLiteral("VYRApp"));
    QCOMPARE(device.runningVersion().version.toString(), QStringLiteral("2.7.0"));
    QCOMPARE(device.applicationVersion().version.toString(), QStringLiteral("2.7.0"));
    QCOMPARE(device.loaderVersion().version.toString(), QStringLiteral("1.4.7"));
    QVERIFY(device.applicationValid() && device.loaderValid());
    QCOMPARE(device.necselController().version, QStringLiteral("3.1"));
    QCOMPARE(device.necselController().serialNumber, QStringLiteral("N-77"));
}

void tst_DeviceConnection::firstVersionOnlyWakesTheLine()
{
    m_bench->setAnswers("v", {"Loader V1.1.1\n", "VYRApp V2.7.0\n"});
    Device device;
    QVERIFY(connectWithoutPoll(device));
    QCOMPARE(device.deviceMode(), DeviceMode::Application);
    QCOMPARE(device.runningVersion().version.toString(), QStringLiteral("2.7.0"));
    m_bench->setAnswers("v", {"\x01\x02\n", "VYRApp V2.7.1\n"});
    device.selectPort({});
    QVERIFY(connectWithoutPoll(device));
    QCOMPARE(device.runningVersion().version.toString(), QStringLiteral("2.7.1"));
}

void tst_DeviceConnection::runningImages_data()
{
    QTest::addColumn<QByteArray>("running");
    QTest::addColumn<QByteArray>("laserController");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("logged");
    QTest::addColumn<bool>("polled");

    const QByteArray told = "necsel_controller_ver=3.1\n";
    QTest::newRow("loader") << QByteArray("Loader V1.4.7\n") << told << 1
                            << "Running the loader version \"1.4.7\"" << false;
    QTest::newRow("updater") << QByteArray("LoaderUpdater V1.0.2\n") << told << 2
                             << "Running the loader updater version \"1.0.2\"" << false;
    QTest::newRow("application") << QByteArray("VYRApp V2.7.0\n") << told << 3
                                 << "Running the application version \"2.7.0\"" << true;
    QTest::newRow("laser controller") << QByteArray("VYRApp V2.7.0\n") << QByteArray("Firmware Update\n") << 4
                                      << "Running the application version \"2.7.0\"" << false;
    QTest::newRow("some other") << QByteArray("SelfTest V0.0.1\n") << told << 5 << "Running version \"0.0.1\""
                                << true;
    QTest::newRow("unknown") << QByteArray("Unknown V0.0.1\n") << told << 5 << "Running version \"0.0.0\""
                             << true;
}

void tst_DeviceConnection::runningImages()
{
    QFETCH(const QByteArray, running);
    QFETCH(const QByteArray, laserController);
    QFETCH(const QString, logged);
    QFETCH(const bool, polled);
    QFETCH(const int, mode);
    m_bench->setAnswer("v", running);
    m_bench->setAnswer("necsel_controller_ver", laserController);
    Device device;
    const Announcements heard(device);
    const LogCapture log;
    device.checkConnectionStatus();
    QTEST(int(device.deviceMode()), "mode");
    QCOMPARE(messages(log.lines()).constLast(), logged);
    QCOMPARE(device.isApplicationConnected(), mode == 3);
    QCOMPARE(heard.count(QStringLiteral("connected")), 1);
    QCOMPARE(m_bench->count("necsel_controller_ver"), mode == 3 || mode == 4 ? 1 : 0);
    listenFor(400ms);
    QCOMPARE(m_bench->count("shutter?") > 0, polled);
    // Asking for the poll does not help where none may be.
    device.setPolling(true);
    m_bench->clearReceived();
    listenFor(400ms);
    QCOMPARE(m_bench->count("shutter?") > 0, polled);
}

void tst_DeviceConnection::failedIdentification_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("logged");
    QTest::addColumn<QByteArrayList>("lines");

    const QByteArrayList start{"v", "reset_cause", "v"};
    QTest::newRow("running") << QByteArray("v") << "Unable to get running version information" << start;
    QTest::newRow("application") << QByteArray("v?a") << "Unable to get application version information"
                                 << start + QByteArrayList{"v?a", "necsel_controller_ver",
                                                           "necsel_controller_sn"};
    QTest::newRow("loader") << QByteArray("v?l") << "Unable to get loader version information"
                            << start + QByteArrayList{"v?a", "v?l"};
}

void tst_DeviceConnection::failedIdentification()
{
    QFETCH(const QByteArray, line);
    QFETCH(const QString, logged);
    QFETCH(const QByteArrayList, lines);
    m_bench->setAnswer(line, "x\n");
    Device device;
    const Announcements heard(device);
    const LogCapture log;
    device.checkConnectionStatus();
    QCOMPARE(m_bench->lines(), lines);
    QCOMPARE(messages(log.lines()).constLast(), logged);
    QCOMPARE(device.deviceMode(), DeviceMode::NotIdentified);
    QVERIFY(device.isOpen());
    QVERIFY(!device.isApplicationConnected());
    QCOMPARE(heard.count(QStringLiteral("connected")), 1);
    device.checkConnectionStatus();
    QVERIFY(!device.isOpen());
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 1);
}

void tst_DeviceConnection::invalidImagesAreLogged()
{
    m_bench->setAnswer("isloadervalid", "No\n");
    m_bench->setAnswer("isappvalid", "No\n");
    Device device;
    const LogCapture log;
    QVERIFY(connectWithoutPoll(device));
    const QStringList texts = messages(log.lines(LogLevel::Info));
    QCOMPARE(texts.indexOf(QStringLiteral("Loader CRC is invalid")) + 1,
             texts.indexOf(QStringLiteral("Application CRC is invalid")));
    QVERIFY(texts.contains(QStringLiteral("Loader CRC is invalid")));
    QVERIFY(!device.applicationValid() && !device.loaderValid());
    QCOMPARE(device.deviceMode(), DeviceMode::Application);
}

void tst_DeviceConnection::silentDeviceIsTriedAgain()
{
    m_bench->setResponder([](const QByteArray&) { return Simulator::Answer{}; });
    Device device;
    const Announcements heard(device);
    const LogCapture log;
    QVERIFY(waitUntil([&] { return heard.count(QStringLiteral("connected")) == 1; }, 7s));
    QCOMPARE(device.deviceMode(), DeviceMode::NotIdentified);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"v", "reset_cause", "v"}));
    QVERIFY(waitUntil([&] { return heard.count(QStringLiteral("disconnected")) == 1; }, 1500ms));
    QVERIFY(!device.isOpen());
    m_bench->setResponder({});
    QVERIFY(waitUntil([&] { return device.isApplicationConnected(); }, 1500ms));
    // The time-outs of the identification are told; those of waits that the closing ended are not.
    QCOMPARE(errorMessages(log).count(QStringLiteral("Write timeout error.")), 3);
    QCOMPARE(errorMessages(log).size(), 3);
}

void tst_DeviceConnection::earlierIdentityIsForgotten()
{
    Device device;
    QVERIFY(connectWithoutPoll(device));
    device.selectPort({});
    QCOMPARE(device.deviceMode(), DeviceMode::NotIdentified);
    m_bench->setAnswer("v", "x\n");
    QVERIFY(!connectWithoutPoll(device));
    QCOMPARE(device.runningVersion().kind, QString());
    QCOMPARE(device.runningVersion().version.toString(), QStringLiteral("0.0.0"));
    QCOMPARE(device.loaderVersion().kind, QString());
    QVERIFY(!device.loaderValid() && !device.applicationValid());
    QCOMPARE(device.necselController().version, QString());
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

void tst_DeviceConnection::unidentifiedDeviceIsOpenedAnew()
{
    m_bench->setAnswers("v?l", {"x\n", "Loader V1.4.7\n"});
    Device device;
    QVERIFY(!connectWithoutPoll(device));
    m_bench->clearReceived();
    device.checkConnectionStatus();
    QVERIFY(!device.isOpen());
    QCOMPARE(m_bench->received().size(), 0); // opened by the next check only
    device.checkConnectionStatus();
    QVERIFY(device.isApplicationConnected());
    device.checkConnectionStatus();
    QVERIFY(device.isOpen());
}

void tst_DeviceConnection::tickDuringIdentificationKeepsThePort()
{
    m_bench->setAnswer("reset_cause", "x\n", 1200ms);
    Device device;
    const Announcements heard(device);
    const LogCapture log;
    device.checkConnectionStatus();
    // The check has run inside the identification.
    QVERIFY(log.count(QStringLiteral("Found vendorID")) >= 2);
    QVERIFY(device.isApplicationConnected());
    QCOMPARE(heard.count(QStringLiteral("disconnected")), 0);
    QCOMPARE(m_bench->count("v"), 2);
}

void tst_DeviceConnection::tickDuringTheAnnouncementKeepsThePort()
{
    m_bench->setAnswer("v?l", "x\n"); // the mode stays 0
    m_bench->setAnswer("temps", "temps:\n", 1200ms);
    Device device;
    int code = -1;
    int checks = 0;
    const LogCapture log;
    connect(&device, &Device::deviceConnected, this, [&] {
        const int before = log.count(QStringLiteral("Found vendorID"));
        QString reply;
        device.setPolling(false);
        code = device.transaction("temps\n", reply);
        checks = log.count(QStringLiteral("Found vendorID")) - before;
    });
    device.checkConnectionStatus();
    QCOMPARE(code, 0);
    QVERIFY(checks >= 1);
    QVERIFY(device.isOpen());
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

void tst_DeviceConnection::laserControllerUpdateIsLeftAlone()
{
    Device device;
    device.checkConnectionStatus();
    m_bench->setAnswer("fault?", "Firmware Update 3 %\n");
    connect(&device, &Device::receivedDataFromDevice, this, [&](const QByteArray& chunk) {
        if (chunk.contains("Firmware Update"))
            device.setUpdatingLaserController();
    });
    QVERIFY(waitUntil([&] { return device.deviceMode() == DeviceMode::UpdatingLaserController; }));
    listenFor(100ms);
    // The tick that heard of it asks nothing more.
    QCOMPARE(m_bench->lines().last(), QByteArray("fault?"));
    m_bench->clearReceived();
    listenFor(400ms);
    QCOMPARE(m_bench->received().size(), 0);
    QVERIFY(device.isOpen());
    QVERIFY(!device.isApplicationConnected());
}

void tst_DeviceConnection::laserControllerUpdateKeepsThePollOff()
{
    Device device;
    connect(&device, &Device::receivedDataFromDevice, this, [&](const QByteArray& chunk) {
        if (chunk.startsWith("Loader"))
            device.setUpdatingLaserController();
    });
    device.checkConnectionStatus();
    listenFor(400ms);
    QCOMPARE(m_bench->count("shutter?"), 0);
    device.setPolling(true);
    QVERIFY(m_bench->waitForLine("shutter?"));
}

QTEST_GUILESS_MAIN(tst_DeviceConnection)
#include "tst_DeviceConnection.moc"
