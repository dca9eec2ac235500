#include "device/RecordsBench.h"

using namespace DeviceTest;
using namespace std::chrono_literals;

/// What each transfer puts on the wire, what it makes of the replies, and what the link remembers of it.
class tst_DeviceRecords : public RecordsTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void withoutPortOrBuffer();
    void systemRecordInThreeChunks_data();
    void systemRecordInThreeChunks();
    void systemRecordInFiveLines();
    void channelRecord();
    void productConfig();
    void refusedReplies_data();
    void refusedReplies();
    void everyStepCanFail_data() { addTransferSteps(); }
    void everyStepCanFail();
    void everyStepCanBeUnplugged_data() { addTransferSteps(); }
    void everyStepCanBeUnplugged();
    void everyStepCanMeetAnotherDevice_data() { addTransferSteps(); }
    void everyStepCanMeetAnotherDevice();
    void queuedCommandsGoFirst();
    void aWriteAwaitsTheReplyOfOthers();
    void recordsAreKnownUntilAnotherDeviceComes();
    void aSilentDeviceStaysTheSame();

private:
    void plugInAnother();
};

void tst_DeviceRecords::withoutPortOrBuffer()
{
    QCOMPARE(m_device->readSystemConfig(nullptr), -40010);
    QCOMPARE(m_device->writeSystemConfig(nullptr), -40010);
    QCOMPARE(m_device->readChannelConfig(nullptr), -40010);
    QCOMPARE(m_device->writeChannelConfig(nullptr), -40010);
    Device closed;
    for (const RecordTransfer& transfer : transfers())
        QCOMPARE(transfer.run(closed), -40010);
    QCOMPARE(m_bench->lines(), QList<QByteArray>());
}

void tst_DeviceRecords::systemRecordInThreeChunks_data()
{
    QTest::addColumn<QByteArray>("running");
    QTest::addColumn<QList<QByteArray>>("lines");
    const QList<QByteArray> newer{"issysconfigvalid", "rf: 8388708 128", "rf: 8388836 128", "rf: 8388964 52"};
    const QList<QByteArray> older{"issysconfigvalid", "rf: 8388736 128", "rf: 8388864 128", "rf: 8388992 52"};
    QTest::newRow("application above the limit") << QByteArray("VYRApp V2.6.3\n") << newer;
    QTest::newRow("application at the limit") << QByteArray("VYRApp V2.6.2\n") << older;
    QTest::newRow("loader above the limit") << QByteArray("Loader V1.4.7\n") << newer;
    QTest::newRow("loader at the limit") << QByteArray("Loader V1.4.6\n") << older;
}

void tst_DeviceRecords::systemRecordInThreeChunks()
{
    QFETCH(QByteArray, running);
    QFETCH(QList<QByteArray>, lines);
    m_bench->setAnswer("v", running);
    connectDevice();
    SystemConfigBytes bytes{};
    QCOMPARE(m_device->readSystemConfig(bytes.data()), 0);
    QCOMPARE(m_bench->lines(), lines);
    QVERIFY(std::all_of(bytes.begin(), bytes.begin() + 256, [](quint8 byte) { return byte == 0x11; }));
    QVERIFY(std::all_of(bytes.begin() + 256, bytes.end(), [](quint8 byte) { return byte == 0x22; }));
    QCOMPARE(m_device->knownSystemConfig(), std::optional(bytes));
}

void tst_DeviceRecords::systemRecordInFiveLines()
{
    // Older firmware is asked for its record elsewhere, and told to write it where all others have it.
    m_bench->setAnswer("v", "Loader V1.4.6\n");
    connectDevice();
    const SystemConfigBytes bytes = countingBytes();
    QCOMPARE(m_device->writeSystemConfig(bytes.data()), 0);
    QList<QByteArray> expected;
    const auto commands = Records::writeCommands(0x800064, bytes.data(), systemConfigSize);
    QCOMPARE(commands.size(), 5);
    for (const QByteArray& command : commands)
        expected.append(command.chopped(1));
    expected.append("setsysconfigvalid");
    QCOMPARE(m_bench->lines(), expected);
    QCOMPARE(m_device->knownSystemConfig(), std::optional(bytes));
}

void tst_DeviceRecords::channelRecord()
{
    ChannelConfigBytes bytes{};
    QCOMPARE(m_device->readChannelConfig(bytes.data()), 0);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"ischanconfigvalid", "chan_config"}));
    QVERIFY(std::all_of(bytes.begin(), bytes.end(), [](quint8 byte) { return byte == 0x33; }));
    m_bench->clearReceived();
    bytes.at(99) = 0xfe;
    QCOMPARE(m_device->writeChannelConfig(bytes.data()), 0);
    const QList<QByteArray> lines = m_bench->lines();
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines.at(0).startsWith("wf:S244800198"));
    QVERIFY(lines.at(1).startsWith("wf:S2288001d8"));
    QVERIFY(lines.at(1).contains("33fe"));
    QCOMPARE(lines.at(2), QByteArray("setchanconfigvalid"));
    QCOMPARE(m_device->knownChannelConfig(), std::optional(bytes));
}

void tst_DeviceRecords::productConfig()
{
    ProductConfig record;
    QCOMPARE(m_device->readProductConfig(record), 0);
    QCOMPARE(record.serialNumber, QStringLiteral("S1"));
    record.novalumSerialNumber = QStringLiteral("V9");
    QCOMPARE(m_device->writeProductConfig(record), 0);
    QCOMPARE(m_bench->lines().last(),
             QByteArray("prod_config:vyr_hw_ver=,vyr_pn=,vyr_sn=S1,necsel_laser_sn=,novalum_sn=V9"));
}

void tst_DeviceRecords::refusedReplies_data()
{
    QTest::addColumn<int>("transfer");
    QTest::addColumn<int>("step");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("code");
    QTest::newRow("system record not valid") << 0 << 0 << QByteArray("No\n") << -40002;
    QTest::newRow("system record: garbage") << 0 << 0 << QByteArray("\xff\xfe?\n") << -40002;
    QTest::newRow("system record: short") << 0 << 1 << QByteArray("rf:" + digits52() + '\n') << -40003;
    QTest::newRow("system record: refused") << 0 << 2 << QByteArray("refused\n") << -40003;
    QTest::newRow("system record: long") << 0 << 3 << QByteArray("rf:" + digits128() + '\n') << -40003;
    QTest::newRow("write: refused") << 1 << 4 << QByteArray("refused\n") << -40009;
    QTest::newRow("channel record not valid") << 2 << 0 << QByteArray("No\n") << -40002;
    QTest::newRow("channel record: 198 digits")
        << 2 << 1 << QByteArray("chan_config:" + QByteArray(198, '3') + '\n') << -40003;
    QTest::newRow("channel record: 202 digits")
        << 2 << 1 << QByteArray("chan_config:" + QByteArray(202, '3') + '\n') << -40003;
    QTest::newRow("channel record: unknown") << 2 << 1 << QByteArray("?\n") << -40003;
    QTest::newRow("channel write: refused") << 3 << 0 << QByteArray("refused\n") << -40009;
    QTest::newRow("product data: another reply") << 4 << 0 << QByteArray("ok\n") << -40009;
}

void tst_DeviceRecords::refusedReplies()
{
    QFETCH(int, transfer);
    QFETCH(int, step);
    QFETCH(QByteArray, reply);
    m_oddStep = step;
    m_oddAnswer = [reply] { return Simulator::Answer{reply, {}}; };
    QTEST(transfers().at(std::size_t(transfer)).run(*m_device), "code");
    QCOMPARE(transferLines().size(), step + 1); // nothing goes on after it
    QVERIFY(!m_device->knownSystemConfig());
    QVERIFY(!m_device->knownChannelConfig());
    QVERIFY(m_device->isOpen());
}

void tst_DeviceRecords::everyStepCanFail()
{
    QFETCH(int, transfer);
    QFETCH(int, step);
    const RecordTransfer& tried = transfers().at(std::size_t(transfer));
    m_oddStep = step;
    m_oddAnswer = [] { return Simulator::Answer{}; };
    // An unanswered question for the channel record is a no.
    const bool isAsked = tried.closedCode == DeviceResult::RecordNotValid && step == 0;
    QCOMPARE(tried.run(*m_device), int(isAsked ? DeviceResult::RecordNotValid : DeviceResult::NoReply));
    QCOMPARE(transferLines().size(), step + 1);
    QVERIFY(!m_device->knownSystemConfig());
    QVERIFY(!m_device->knownChannelConfig());
    // The line is free again for a whole transfer.
    m_bench->clearReceived();
    QCOMPARE(tried.run(*m_device), 0);
    QCOMPARE(transferLines().size(), tried.lines);
}

void tst_DeviceRecords::everyStepCanBeUnplugged()
{
    QFETCH(int, transfer);
    QFETCH(int, step);
    const RecordTransfer& tried = transfers().at(std::size_t(transfer));
    m_oddStep = step;
    m_oddAnswer = [this] {
        later(1ms, [this] { m_bench->wire().unplug(); });
        return Simulator::Answer{};
    };
    QCOMPARE(tried.run(*m_device), step == 0 ? tried.closedCode : int(DeviceResult::NotOpen));
    QCOMPARE(transferLines().size(), step + 1);
    QVERIFY(!m_device->isOpen());
    QVERIFY(!m_device->knownSystemConfig());
    QVERIFY(!m_device->knownChannelConfig());
    m_oddStep = -1;
    QVERIFY(m_bench->wire().plug());
    QVERIFY(connectWithoutPoll(*m_device));
    m_bench->clearReceived();
    QCOMPARE(tried.run(*m_device), 0);
    QCOMPARE(transferLines().size(), tried.lines);
}

void tst_DeviceRecords::plugInAnother()
{
    m_bench->wire().unplug();
    QVERIFY(waitUntil([this] { return !m_device->isOpen(); }));
    QVERIFY(m_bench->wire().plug());
    QVERIFY(connectWithoutPoll(*m_device));
    QCOMPARE(m_device->deviceNumber(), 2);
    m_bench->clearReceived();
}

void tst_DeviceRecords::everyStepCanMeetAnotherDevice()
{
    QFETCH(int, transfer);
    QFETCH(int, step);
    const RecordTransfer& tried = transfers().at(std::size_t(transfer));
    bool swapped = false;
    m_oddStep = step;
    m_oddAnswer = [this, &swapped] {
        // As a box does that is opened meanwhile: the answer is there, and the transfer cannot go on yet.
        later(0ms, [this, &swapped] {
            const Announcements heard(*m_device);
            QVERIFY(waitUntil([&heard] { return !heard.chunks.isEmpty(); }));
            plugInAnother();
            swapped = true;
        });
        return std::nullopt;
    };
    QCOMPARE(tried.run(*m_device), step == 0 ? tried.closedCode : int(DeviceResult::NotOpen));
    QVERIFY(swapped);
    QVERIFY(m_device->isOpen());
    QCOMPARE(m_bench->lines(), QList<QByteArray>());
    QVERIFY(!m_device->knownSystemConfig());
    QVERIFY(!m_device->knownChannelConfig());
    QCOMPARE(tried.run(*m_device), 0);
    QCOMPARE(transferLines().size(), tried.lines);
}

void tst_DeviceRecords::queuedCommandsGoFirst()
{
    // Slow enough that a wait for all of them would take the device for a silent one.
    m_bench->setDefaultAnswer({});
    m_bench->setAnswer("clear", "ok\n", 450ms);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(m_device->clearFaults(), 0);
    SystemConfigBytes bytes{};
    QCOMPARE(m_device->readSystemConfig(bytes.data()), 0);
    QCOMPARE(m_bench->lines(),
             (QList<QByteArray>{"clear", "clear", "clear", "clear", "clear", "issysconfigvalid",
                                "rf: 8388708 128", "rf: 8388836 128", "rf: 8388964 52"}));
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
}

void tst_DeviceRecords::aWriteAwaitsTheReplyOfOthers()
{
    m_bench->setAnswer("temps", "temps:Necsel=25\n", 100ms);
    int code = 1;
    later(20ms, [&] { code = m_device->writeChannelConfig(countingBytes().data()); });
    Temperatures readings;
    QCOMPARE(m_device->getTemperatures(readings), 0);
    QCOMPARE(readings.necsel, QStringLiteral("25"));
    QCOMPARE(code, 0);
}

void tst_DeviceRecords::recordsAreKnownUntilAnotherDeviceComes()
{
    QCOMPARE(m_device->deviceNumber(), 1);
    QCOMPARE(readSystem(*m_device), 0);
    QCOMPARE(readChannels(*m_device), 0);
    m_bench->setAnswer("goloader", "ok\n");
    QCOMPARE(m_device->goLoader(), 0);
    QCOMPARE(m_device->deviceNumber(), 1);
    QVERIFY(m_device->knownSystemConfig());
    // Away for its restart.
    m_bench->setAnswer("goapp", {});
    later(10ms, [this] { m_bench->wire().unplug(); });
    later(300ms, [this] { QVERIFY(m_bench->wire().plug(QStringLiteral("ttyACM7"))); });
    QCOMPARE(m_device->goApp(), 0);
    QVERIFY(m_device->portName().endsWith(QLatin1String("ttyACM7")));
    QCOMPARE(m_device->deviceNumber(), 1);
    QVERIFY(m_device->knownSystemConfig());
    QVERIFY(m_device->knownChannelConfig());

    m_bench->wire().unplug();
    QVERIFY(waitUntil([this] { return !m_device->isOpen(); }));
    QVERIFY(m_device->knownSystemConfig()); // for whoever shows it
    QVERIFY(m_bench->wire().plug(QStringLiteral("ttyACM7")));
    QVERIFY(connectWithoutPoll(*m_device));
    QCOMPARE(m_device->deviceNumber(), 2);
    QVERIFY(!m_device->knownSystemConfig());
    QVERIFY(!m_device->knownChannelConfig());
}

void tst_DeviceRecords::aSilentDeviceStaysTheSame()
{
    QCOMPARE(readSystem(*m_device), 0);
    m_bench->setResponder([](const QByteArray&) { return std::optional(Simulator::Answer{}); });
    m_bench->setAnswer("clear", {});
    QCOMPARE(m_device->clearFaults(), 0);
    QCOMPARE(m_device->waitWhileBusy(), -40007);
    m_device->checkConnectionStatus();
    QVERIFY(!m_device->isOpen());
    m_bench->setResponder({});
    QVERIFY(connectWithoutPoll(*m_device));
    QCOMPARE(m_device->deviceNumber(), 1);
    QVERIFY(m_device->knownSystemConfig());

    // Gone from the list while it was closed: whatever comes then is another one.
    m_bench->setResponder([](const QByteArray&) { return std::optional(Simulator::Answer{}); });
    QCOMPARE(m_device->clearFaults(), 0);
    QCOMPARE(m_device->waitWhileBusy(), -40007);
    m_device->checkConnectionStatus();
    QVERIFY(!m_device->isOpen());
    m_bench->wire().unplug();
    m_device->checkConnectionStatus();
    m_bench->setResponder({});
    QVERIFY(m_bench->wire().plug());
    QVERIFY(connectWithoutPoll(*m_device));
    QCOMPARE(m_device->deviceNumber(), 2);
    QVERIFY(!m_device->knownSystemConfig());
}

QTEST_GUILESS_MAIN(tst_DeviceRecords)
#include "tst_DeviceRecords.moc"
