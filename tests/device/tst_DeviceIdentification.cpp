#include "device/DeviceFixture.h"

#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;
using QsLogging::LogLevel;

class tst_DeviceIdentification : public PluggedTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void applicationIsIdentified();
    void firstVersionOnlyWakesTheLine();
    void runningImages_data();
    void runningImages();
    void failedIdentification_data();
    void failedIdentification();
    void invalidImagesAreLogged();
    void silentDeviceIsTriedAgain();
    void earlierIdentityIsForgotten();
    void unidentifiedDeviceIsOpenedAnew();
    void tickDuringIdentificationKeepsThePort();
    void tickDuringTheAnnouncementKeepsThePort();
    void laserControllerUpdateIsLeftAlone();
    void laserControllerUpdateKeepsThePollOff();
};

void tst_DeviceIdentification::applicationIsIdentified()
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

void tst_DeviceIdentification::firstVersionOnlyWakesTheLine()
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

void tst_DeviceIdentification::runningImages_data()
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

void tst_DeviceIdentification::runningImages()
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

void tst_DeviceIdentification::failedIdentification_data()
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

void tst_DeviceIdentification::failedIdentification()
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

void tst_DeviceIdentification::invalidImagesAreLogged()
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

void tst_DeviceIdentification::silentDeviceIsTriedAgain()
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

void tst_DeviceIdentification::earlierIdentityIsForgotten()
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

void tst_DeviceIdentification::unidentifiedDeviceIsOpenedAnew()
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

void tst_DeviceIdentification::tickDuringIdentificationKeepsThePort()
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

void tst_DeviceIdentification::tickDuringTheAnnouncementKeepsThePort()
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

void tst_DeviceIdentification::laserControllerUpdateIsLeftAlone()
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

void tst_DeviceIdentification::laserControllerUpdateKeepsThePollOff()
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

QTEST_GUILESS_MAIN(tst_DeviceIdentification)
#include "tst_DeviceIdentification.moc"
