#include "settings/SystemConfigBench.h"

namespace {
using namespace std::chrono_literals;
constexpr int slowMs = 40000;
/// As many as the coarsest clock may take off a second.
constexpr std::chrono::milliseconds tryInterval = 990ms;
const QString hoursText = QStringLiteral("1234 hrs");
const QString channelName = QStringLiteral("slow");
} // namespace

/// What connecting brings onto the pages when the device is slow, or does not have all of it.
class tst_ConnectedPages : public SystemConfigTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { removeDialog(); }
    void slowDevice();
    void threeTries_data();
    void threeTries();
    void oneGarbledAnswerEach();

private:
    bool isEditorFilled() const { return texts() == deviceTexts(); }
    bool isTableFilled() const { return m_hand->fieldText("lineEditChannelName1") == channelName; }
    bool areHoursShown() const { return m_hand->text("labelOperatingHours405") == hoursText; }
};

/// Everything was read once; the unit that is plugged in next has other values.
void tst_ConnectedPages::init()
{
    QVERIFY(buildEditor());
    QTRY_VERIFY(m_hand->text("labelOperatingHours405") == QStringLiteral("0 hrs"));
    QVERIFY(unplug());
    setDeviceRecord(SystemConfigRecord::fromTexts(likelyTexts(), deviceRecord()));
    QByteArray channels = records().bytes(Record::Channels);
    channels.replace(4 + 2, 4, channelName.toLatin1());
    records().setBytes(Record::Channels, channels);
    illuminator().setHours(0, 1234);
    QVERIFY(!isEditorFilled() && !isTableFilled() && !areHoursShown());
    m_lines->clear();
}

void tst_ConnectedPages::slowDevice()
{
    Simulator::WireFault slow;
    slow.kind = Simulator::WireFault::Kind::LateReply;
    slow.count = -1;
    slow.delay = 200ms;
    m_device->wire().addFault(slow);
    const QSignalSpy lost(m_window->device(), &Device::deviceDisconnected);
    QVERIFY(plugIn());
    QTRY_VERIFY_WITH_TIMEOUT(isEditorFilled() && isTableFilled() && areHoursShown(), slowMs);
    QCOMPARE(lost.size(), 0);
    QCOMPARE(m_lines->count("reset_cause"), 1);
    m_device->wire().clearFaults();
}

void tst_ConnectedPages::threeTries_data()
{
    QTest::addColumn<QByteArray>("question");
    QTest::newRow("system record") << QByteArray("issysconfigvalid");
    QTest::newRow("channel record") << QByteArray("ischanconfigvalid");
}

void tst_ConnectedPages::threeTries()
{
    QFETCH(QByteArray, question);
    const bool isSystem = question == "issysconfigvalid";
    const Record record = isSystem ? Record::System : Record::Channels;
    records().setValid(record, false);
    QVERIFY(plugIn());
    // What is there arrives all the same.
    QTRY_VERIFY_WITH_TIMEOUT(areHoursShown() && (isSystem ? isTableFilled() : isEditorFilled()), slowMs);
    QTRY_COMPARE_WITH_TIMEOUT(m_lines->count(question), 3, slowMs);
    const auto times = m_lines->timesOf(question);
    QVERIFY(times.at(1) - times.at(0) >= tryInterval);
    QVERIFY(times.at(2) - times.at(1) >= tryInterval);
    QTest::qWait(1300);
    QCOMPARE(m_lines->count(question), 3);
    QVERIFY(isSystem ? !isEditorFilled() : !isTableFilled());
}

void tst_ConnectedPages::oneGarbledAnswerEach()
{
    for (const char* question : {"issysconfigvalid", "ischanconfigvalid", "hours?"}) {
        Simulator::WireFault noise;
        noise.kind = Simulator::WireFault::Kind::Noise;
        noise.match = question;
        noise.bytes = "temps:Necsel=1\n";
        m_device->wire().addFault(noise);
    }
    QVERIFY(plugIn());
    QTRY_VERIFY_WITH_TIMEOUT(isEditorFilled() && isTableFilled() && areHoursShown(), slowMs);
    QCOMPARE(m_device->wire().pendingFaults(), 0);
}

QTEST_MAIN(tst_ConnectedPages)
#include "tst_ConnectedPages.moc"
