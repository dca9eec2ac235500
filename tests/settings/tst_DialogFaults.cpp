#include "device/Device.h"
#include "settings/DialogBench.h"

#include <QLabel>
#include <QSignalSpy>
#include <QTest>

namespace {
using namespace std::chrono_literals;
constexpr int longerThanAnyTimeOutMs = 4000;
} // namespace

/// The settings dialog at a device that goes away, says nothing or talks nonsense.
class tst_DialogFaults : public SimulatedDialogTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildDialog()); }
    void cleanup() { removeDialog(); }
    void unpluggedOnEachTab_data();
    void unpluggedOnEachTab();
    void serviceCommandWithoutAnswer_data();
    void serviceCommandWithoutAnswer();
    void silentDevice_data();
    void silentDevice();
    void closedWhileItReads_data();
    void closedWhileItReads();
    void oddIdentity_data();
    void oddIdentity();

private:
    bool reconnect();
};

bool tst_DialogFaults::reconnect()
{
    const QSignalSpy connected(m_window->device(), &Device::deviceConnected);
    return illuminator().plug() && QTest::qWaitFor([&] { return !connected.isEmpty(); }, 10000);
}

void tst_DialogFaults::unpluggedOnEachTab_data()
{
    QTest::addColumn<QString>("caption");
    for (const char* caption : {"System Info", "System Config", "Operating Info", "Control Mode",
                                "TTL Configuration", "Update", "Service && Development"}) {
        QTest::newRow(caption) << QString::fromLatin1(caption);
    }
}

void tst_DialogFaults::unpluggedOnEachTab()
{
    QFETCH(QString, caption);
    QVERIFY(m_hand->clickTab(caption));
    const QString port = m_window->device()->portName();
    illuminator().unplug();
    QTRY_COMPARE(m_hand->text("labelComStatus"), QString(QStringLiteral("Device disconnected on ") + port));
    QCOMPARE(m_hand->part<QLabel>("labelComStatus")->styleSheet(), QStringLiteral("color:red"));
    QCOMPARE(m_hand->text("labelRunningImage"), QStringLiteral("Not connected"));
    // Nothing of the page waits for a device that is not there.
    m_hand->click("pushButtonSystemReset");
    m_hand->click("pushButtonLoaderMode");
    QVERIFY(m_hand->part<QWidget>("pushButtonLoaderMode")->isEnabled());

    QVERIFY(m_hand->clickTab(caption));
    m_lines->clear();
    QVERIFY(reconnect());
    QCOMPARE(m_hand->part<QLabel>("labelComStatus")->styleSheet(), QStringLiteral("color:green"));
    QTRY_COMPARE(m_hand->text("labelRunningImage"), QStringLiteral("Running: application 2.7.0"));
    QTRY_VERIFY(!m_hand->fieldText("lineEditVYRSerialNumber").isEmpty());
    QCOMPARE(m_lines->count("reset"), 0);
    QCOMPARE(m_lines->count("goloader"), 0);
}

void tst_DialogFaults::serviceCommandWithoutAnswer_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("button");
    QTest::newRow("reset") << QByteArray("reset") << QByteArray("pushButtonSystemReset");
    QTest::newRow("reset, service tab") << QByteArray("reset") << QByteArray("pushButtonSystemReset2");
    QTest::newRow("defaults") << QByteArray("defaults") << QByteArray("pushButtonRestoreDefaults");
}

void tst_DialogFaults::serviceCommandWithoutAnswer()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, button);
    Simulator::WireFault silence;
    silence.kind = Simulator::WireFault::Kind::NoReply;
    silence.match = line;
    m_device->wire().addFault(silence);
    const QSignalSpy disconnected(m_window->device(), &Device::deviceDisconnected);
    m_hand->click(button.constData());
    QTRY_COMPARE(m_lines->count(line), 1);
    // The line comes free by itself, and the next command arrives.
    m_window->device()->setPolling(true);
    QTRY_VERIFY_WITH_TIMEOUT(m_window->device()->setSpeckle(false) == DeviceResult::Ok &&
                                 m_lines->count("speckle=off") > 0,
                             longerThanAnyTimeOutMs);
    QCOMPARE(m_lines->count(line), 1);
    QVERIFY(disconnected.isEmpty());
}

void tst_DialogFaults::silentDevice_data()
{
    QTest::addColumn<QString>("caption");
    QTest::newRow("identity") << QStringLiteral("System Info");
    QTest::newRow("readings") << QStringLiteral("System Config");
    QTest::newRow("hours") << QStringLiteral("Operating Info");
}

void tst_DialogFaults::silentDevice()
{
    QFETCH(QString, caption);
    QTRY_COMPARE(m_hand->fieldText("lineEditVYRSerialNumber"), QStringLiteral("VYR-00042"));
    QTRY_VERIFY(m_hand->text("labelOperatingHours405") == QStringLiteral("0 hrs"));
    m_device->wire().setStalled(true);
    QVERIFY(m_hand->clickTab(caption));
    int ticks = 0;
    QTimer alive;
    connect(&alive, &QTimer::timeout, this, [&ticks] { ++ticks; });
    alive.start(20);
    QTest::qWait(int(std::chrono::milliseconds(1700).count())); // one whole response time-out
    QVERIFY2(ticks > 40, qPrintable(QString::number(ticks)));
    QCOMPARE(m_hand->fieldText("lineEditVYRSerialNumber"), QStringLiteral("VYR-00042"));
    QVERIFY(m_hand->dialog().isVisible());
    m_device->wire().setStalled(false);
}

void tst_DialogFaults::closedWhileItReads_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<bool>("window");
    for (const bool window : {false, true}) {
        const char* const what = window ? "window" : "dialog";
        QTest::addRow("%s, identity", what) << QStringLiteral("System Info") << window;
        QTest::addRow("%s, hours", what) << QStringLiteral("Operating Info") << window;
        QTest::addRow("%s, readings", what) << QStringLiteral("System Config") << window;
    }
}

void tst_DialogFaults::closedWhileItReads()
{
    QFETCH(QString, caption);
    QFETCH(bool, window);
    m_device->wire().setStalled(true);
    QElapsedTimer clock;
    clock.start();
    // Told here, as the wait that this runs in may be followed by others of the poll.
    qint64 closedAfterMs = -1;
    runLater(m_window.get(), 1200ms, [this, window, &clock, &closedAfterMs] {
        if (window) {
            m_window->close();
        } else {
            m_hand->dialog().close();
        }
        closedAfterMs = m_hand->dialog().isVisible() && m_window->isVisible() ? -1 : clock.elapsed();
    });
    QVERIFY(m_hand->clickTab(caption));
    QTRY_VERIFY_WITH_TIMEOUT(closedAfterMs >= 0, longerThanAnyTimeOutMs);
    QVERIFY2(closedAfterMs < longerThanAnyTimeOutMs, qPrintable(QString::number(closedAfterMs)));
    QCOMPARE(m_window->isVisible(), !window);
    m_device->wire().setStalled(false);
}

void tst_DialogFaults::oddIdentity_data()
{
    QTest::addColumn<QByteArray>("serial");
    QTest::newRow("markup") << QByteArray("<b>bold</b>&amp;");
    QTest::newRow("place markers") << QByteArray("%1%2%n");
    // A pseudo-terminal hands over what is longer than 1792 bytes in two pieces, and the first is the reply.
    QTest::newRow("long") << QByteArray(1000, 'x');
    QTest::newRow("no text") << QByteArray("\x01\x1b[2J\xff\xfe");
}

void tst_DialogFaults::oddIdentity()
{
    QFETCH(QByteArray, serial);
    const QSize before = m_hand->dialog().size();
    illuminator().model().product().assign("vyr_sn=" + serial);
    QVERIFY(m_hand->clickTab(QStringLiteral("System Info")));
    QTRY_COMPARE(m_hand->fieldText("lineEditVYRSerialNumber"), QString::fromUtf8(serial));
    QCOMPARE(m_hand->dialog().size(), before);
}

QTEST_MAIN(tst_DialogFaults)
#include "tst_DialogFaults.moc"
