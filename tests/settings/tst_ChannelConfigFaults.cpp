#include "settings/ChannelBench.h"

#include <algorithm>

namespace {
using namespace std::chrono_literals;
const QString productFailed = QStringLiteral("Error writing product configuration");
const QString channelsFailed = QStringLiteral("Error writing channel configuration");
constexpr int reconnectionMs = 10000;
} // namespace

/// "Set Configuration Data" at a unit that refuses or goes, and in a dialog that goes.
class tst_ChannelConfigFaults : public ChannelDialogTest
{
    Q_OBJECT

private slots:
    void init() { buildDialog(); }
    void cleanup() { removeRoom(); }
    void failure_data();
    void failure();
    void unpluggedAtEachLine_data() { eachLine(); }
    void unpluggedAtEachLine();
    void dialogGoesAtEachLine_data() { eachLine(); }
    void dialogGoesAtEachLine();
    void dialogGoesWithEachBox_data();
    void dialogGoesWithEachBox();
    void anotherUnitMeanwhile();

private:
    static void eachLine();
};

void tst_ChannelConfigFaults::eachLine()
{
    QTest::addColumn<int>("line");
    for (int i = 0; i < writeLines().size(); ++i) {
        QTest::newRow(writeLines().at(i).constData()) << i;
    }
}

void tst_ChannelConfigFaults::failure_data()
{
    QTest::addColumn<int>("line");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("told");
    QTest::newRow("product, silence") << 0 << QByteArray() << productFailed;
    QTest::newRow("first part, silence") << 1 << QByteArray() << channelsFailed;
    QTest::newRow("first part, refused") << 1 << QByteArray("ERROR") << channelsFailed;
    QTest::newRow("second part, silence") << 2 << QByteArray() << channelsFailed;
    QTest::newRow("second part, refused") << 2 << QByteArray("ERROR") << channelsFailed;
    QTest::newRow("marking, silence") << 3 << QByteArray() << channelsFailed;
}

void tst_ChannelConfigFaults::failure()
{
    QFETCH(int, line);
    QFETCH(QByteArray, answer);
    QFETCH(QString, told);
    m_unit.setEntry(0, QByteArray(12, '\x01'));
    connectUnit();
    type("lineEditVYRSerialNumber", QStringLiteral("NEW"));
    laser(0)->setCurrentIndex(8);
    name(0)->setText(QStringLiteral("mine"));
    m_unit.odd.insert(writeLines().at(line), answer);
    BoxAnswerer boxes;
    setButton();
    QVERIFY(boxes.sawOneWarning(told));
    // Nothing follows what failed; above all, nothing half written is marked valid.
    QCOMPARE(written().size(), line + 1);
    QCOMPARE(text("lineEditVYRSerialNumber"), QStringLiteral("NEW"));
    QCOMPARE(name(0)->text(), QStringLiteral("mine"));

    m_unit.odd.clear();
    m_illuminator->clearCommands();
    QTRY_COMPARE(m_device->waitWhileBusy(), int(DeviceResult::Ok));
    boxes.clear();
    setButton();
    QVERIFY(sawDone(boxes));
    QCOMPARE(written().size(), writeLines().size());
    QVERIFY(m_unit.product.contains("vyr_sn=NEW"));
    QCOMPARE(m_unit.entry(0).mid(2, 4), QByteArray("mine"));
}

void tst_ChannelConfigFaults::unpluggedAtEachLine()
{
    QFETCH(int, line);
    connectUnit();
    name(0)->setText(QStringLiteral("mine"));
    bool wasPulled = false;
    m_unit.heard = [&](const QByteArray& heard) {
        if (!wasPulled && heard.startsWith(writeLines().at(line))) {
            wasPulled = true;
            m_illuminator->bench().wire().unplug();
        }
    };
    {
        const BoxAnswerer boxes;
        setButton();
        QVERIFY(wasPulled);
        QVERIFY(boxes.sawOneWarning(line == 0 ? productFailed : channelsFailed));
    }
    QTRY_VERIFY(!m_device->isOpen());
    QCOMPARE(name(0)->text(), QStringLiteral("mine"));
    {
        const BoxAnswerer boxes;
        setButton();
        QVERIFY(boxes.sawOneWarning(QStringLiteral("Please connect to device")));
    }
    // The next one plugged in is shown as it is, and can be written.
    m_unit.channels.fill('\0');
    m_unit.product.replace("SN-1", "SN-2");
    m_illuminator->clearCommands();
    QVERIFY(m_illuminator->bench().wire().plug());
    m_device->checkConnectionStatus();
    QTRY_COMPARE_WITH_TIMEOUT(text("lineEditVYRSerialNumber"), QStringLiteral("SN-2"), reconnectionMs);
    QTRY_COMPARE(name(0)->text(), QString());
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(sawDone(boxes));
    QCOMPARE(written().size(), writeLines().size());
}

void tst_ChannelConfigFaults::dialogGoesAtEachLine()
{
    QFETCH(int, line);
    connectUnit();
    const BoxAnswerer boxes;
    bool isGone = false;
    m_unit.heard = [&](const QByteArray& heard) {
        if (m_dialog && heard.startsWith(writeLines().at(line))) {
            m_dialog.reset();
            isGone = true;
        }
    };
    QTest::mouseClick(part<QPushButton>("pushButtonSetProductConfigData"), Qt::LeftButton);
    QVERIFY(isGone);
    QVERIFY(boxes.boxes().isEmpty());
}

void tst_ChannelConfigFaults::dialogGoesWithEachBox_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<QByteArray>("silentTo");
    QTest::newRow("connect") << QByteArray() << QByteArray();
    QTest::newRow("loader") << QByteArray("VYRApp V2.7.0") << QByteArray();
    QTest::newRow("product") << QByteArray("Loader V1.5.0") << writeLines().at(0);
    QTest::newRow("channels") << QByteArray("Loader V1.5.0") << writeLines().at(2);
    QTest::newRow("done") << QByteArray("Loader V1.5.0") << QByteArray();
}

void tst_ChannelConfigFaults::dialogGoesWithEachBox()
{
    QFETCH(QByteArray, image);
    QFETCH(QByteArray, silentTo);
    if (!image.isEmpty()) {
        m_unit.image = image;
        connectUnit();
    }
    if (!silentTo.isEmpty()) {
        m_unit.odd.insert(silentTo, {});
    }
    QTimer look;
    connect(&look, &QTimer::timeout, this, [this] {
        if (QApplication::activeModalWidget() != nullptr) {
            m_dialog.reset();
        }
    });
    look.start(10ms);
    QTest::mouseClick(part<QPushButton>("pushButtonSetProductConfigData"), Qt::LeftButton);
    QVERIFY(m_dialog == nullptr);
}

void tst_ChannelConfigFaults::anotherUnitMeanwhile()
{
    connectUnit();
    type("lineEditVYRSerialNumber", QStringLiteral("NEW"));
    m_unit.heard = [this](const QByteArray& heard) {
        if (heard == writeLines().at(0) || heard.startsWith("prod_config:vyr_hw_ver")) {
            // Pulled after the answer, and another one is there before anything else is sent.
            runLater(m_dialog.get(), 0ms, [this] {
                m_illuminator->bench().wire().unplug();
                m_unit.heard = {};
                m_device->checkConnectionStatus();
                QVERIFY(m_illuminator->bench().wire().plug());
                m_device->checkConnectionStatus();
            });
        }
    };
    m_unit.thinkTime = 30ms;
    const BoxAnswerer boxes;
    setButton();
    QCOMPARE(boxes.boxes().size(), 1);
    QVERIFY(!sawDone(boxes));
    const QList<QByteArray> lines = written();
    QVERIFY(std::none_of(lines.begin(), lines.end(),
                         [](const QByteArray& line) { return line.startsWith("wf:"); }));
}

QTEST_MAIN(tst_ChannelConfigFaults)
#include "tst_ChannelConfigFaults.moc"
