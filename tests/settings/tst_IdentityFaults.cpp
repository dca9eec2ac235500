#include "settings/ChannelBench.h"
#include "support/BoxAnswerer.h"

namespace {
using namespace std::chrono_literals;
constexpr char serialField[] = "lineEditVYRSerialNumber";
constexpr int threeTriesMs = 12000;
/// As many as the coarsest clock may take off a second.
constexpr std::chrono::milliseconds tryInterval = 990ms;
} // namespace

/// Reading identity and channel table from a unit that does not play along.
class tst_IdentityFaults : public ChannelDialogTest
{
    Q_OBJECT

private slots:
    void init() { buildDialog(); }
    void cleanup() { removeRoom(); }
    void threeTries_data();
    void threeTries();
    void laterTryFills_data();
    void laterTryFills();
    void nothingIsReadDuringAnUpdate();
    void refusedTable_data();
    void refusedTable();
    void unpluggedWhileItReads_data() { readLines(); }
    void unpluggedWhileItReads();
    void dialogGoesWhileItReads_data() { readLines(); }
    void dialogGoesWhileItReads();
    void editedWhileItReads();

private:
    static void readLines();
    /// What a fresh dialog shows in the first column, and an unread field.
    bool isUntouched() const
    {
        return name(0)->text() == QStringLiteral("445") && color(0)->text() == QStringLiteral("0019ff") &&
               text(serialField).isEmpty();
    }
};

void tst_IdentityFaults::readLines()
{
    QTest::addColumn<QByteArray>("line");
    for (const char* line : {"ischanconfigvalid", "chan_config", "prod_config"}) {
        QTest::newRow(line) << QByteArray(line);
    }
}

void tst_IdentityFaults::threeTries_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("silence") << QByteArray();
    QTest::newRow("nonsense") << QByteArray("nonsense");
    QTest::newRow("no list") << QByteArray("prod_config");
}

void tst_IdentityFaults::threeTries()
{
    QFETCH(QByteArray, answer);
    connectUnit();
    m_unit.product.replace("SN-1", "SN-2");
    m_unit.odd.insert("prod_config", answer);
    const BoxAnswerer boxes;
    clickTab(QStringLiteral("System Info"));
    QTRY_COMPARE_WITH_TIMEOUT(m_illuminator->bench().count("prod_config"), 3, threeTriesMs);
    QVERIFY(!QTest::qWaitFor([this] { return m_illuminator->bench().count("prod_config") > 3; }, 3000));
    std::chrono::milliseconds before = -tryInterval;
    for (const ScriptedBench::Received& received : m_illuminator->bench().received()) {
        if (received.line == "prod_config") {
            QVERIFY(received.at - before >= tryInterval);
            before = received.at;
        }
    }
    QCOMPARE(text(serialField), QStringLiteral("SN-1"));
    QCOMPARE(text("lineEditVYRHardwareRev"), QStringLiteral("01.02.03"));
    QVERIFY(boxes.boxes().isEmpty());
}

void tst_IdentityFaults::laterTryFills_data()
{
    QTest::addColumn<int>("failures");
    QTest::newRow("second") << 1;
    QTest::newRow("third") << 2;
}

void tst_IdentityFaults::laterTryFills()
{
    QFETCH(int, failures);
    connectUnit();
    m_unit.product.replace("SN-1", "SN-2");
    m_unit.odd.insert("prod_config", "nonsense");
    int asked = 0;
    m_unit.heard = [&](const QByteArray& line) {
        if (line == "prod_config" && ++asked > failures) {
            m_unit.odd.clear();
        }
    };
    clickTab(QStringLiteral("System Info"));
    QTRY_COMPARE_WITH_TIMEOUT(text(serialField), QStringLiteral("SN-2"), threeTriesMs);
    QCOMPARE(asked, failures + 1);
}

void tst_IdentityFaults::nothingIsReadDuringAnUpdate()
{
    connectUnit();
    m_illuminator->clearCommands();
    const Update::InProgress run(*m_update);
    m_dialog->UpdateProductConfigDisplay();
    clickTab(QStringLiteral("System Info"));
    m_dialog->onDeviceConnected(m_device->portName());
    QVERIFY(!QTest::qWaitFor([this] { return !m_illuminator->bench().lines().isEmpty(); }, 1500));
}

void tst_IdentityFaults::refusedTable_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("not valid") << QByteArray("ischanconfigvalid") << QByteArray("No");
    QTest::newRow("validity, nonsense") << QByteArray("ischanconfigvalid") << QByteArray("nonsense");
    QTest::newRow("validity, silence") << QByteArray("ischanconfigvalid") << QByteArray();
    QTest::newRow("short") << QByteArray("chan_config") << QByteArray("chan_config:" + QByteArray(198, '1'));
    QTest::newRow("long") << QByteArray("chan_config") << QByteArray("chan_config:" + QByteArray(202, '1'));
    QTest::newRow("no digits") << QByteArray("chan_config")
                               << QByteArray("chan_config:" + QByteArray(199, '1') + 'x');
    QTest::newRow("nonsense") << QByteArray("chan_config") << QByteArray("nonsense");
    QTest::newRow("silence") << QByteArray("chan_config") << QByteArray();
}

void tst_IdentityFaults::refusedTable()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, answer);
    m_unit.channels.fill('\x01');
    m_unit.odd.insert(line, answer);
    const BoxAnswerer boxes;
    connectDevice();
    QVERIFY(m_illuminator->bench().waitForLine(line));
    QTRY_COMPARE_WITH_TIMEOUT(text(serialField), QStringLiteral("SN-1"), threeTriesMs);
    QCOMPARE(name(0)->text(), QStringLiteral("445"));
    QCOMPARE(laser(7)->currentText(), QStringLiteral("555"));
    QVERIFY(boxes.boxes().isEmpty());
}

void tst_IdentityFaults::unpluggedWhileItReads()
{
    QFETCH(QByteArray, line);
    bool wasPulled = false;
    m_unit.odd.insert("ischanconfigvalid", line == "prod_config" ? "No" : "Yes");
    m_unit.heard = [&](const QByteArray& heard) {
        if (!wasPulled && heard == line) {
            wasPulled = true;
            m_illuminator->bench().wire().unplug();
        }
    };
    const BoxAnswerer boxes;
    connectDevice();
    QTRY_VERIFY(wasPulled);
    m_device->checkConnectionStatus();
    QTRY_VERIFY(!m_device->isOpen());
    QVERIFY(isUntouched());
    QVERIFY(boxes.boxes().isEmpty());

    m_unit.odd.clear();
    QVERIFY(m_illuminator->bench().wire().plug());
    m_device->checkConnectionStatus();
    QTRY_COMPARE_WITH_TIMEOUT(text(serialField), QStringLiteral("SN-1"), threeTriesMs);
    QTRY_COMPARE(name(0)->text(), QString());
}

void tst_IdentityFaults::dialogGoesWhileItReads()
{
    QFETCH(QByteArray, line);
    bool isGone = false;
    m_unit.heard = [&](const QByteArray& heard) {
        if (m_dialog && heard == line) {
            m_dialog.reset();
            isGone = true;
        }
    };
    connectDevice();
    QTRY_VERIFY(isGone);
    QTRY_COMPARE(m_device->waitWhileBusy(), int(DeviceResult::Ok));
}

void tst_IdentityFaults::editedWhileItReads()
{
    m_unit.channels.fill('\x01');
    m_unit.heard = [this](const QByteArray& heard) {
        if (heard == "chan_config") {
            QTest::keyClicks(name(0), QStringLiteral("x"));
        } else if (heard == "prod_config") {
            QTest::keyClicks(part<QLineEdit>(serialField), QStringLiteral("x"));
        }
    };
    connectDevice();
    QTRY_COMPARE(text("lineEditVYRHardwareRev"), QStringLiteral("01.02.03"));
    QCOMPARE(text(serialField), QStringLiteral("x"));
    QCOMPARE(name(0)->text(), QStringLiteral("445x"));
    QCOMPARE(laser(1)->currentText(), QStringLiteral("520"));
}

QTEST_MAIN(tst_IdentityFaults)
#include "tst_IdentityFaults.moc"
