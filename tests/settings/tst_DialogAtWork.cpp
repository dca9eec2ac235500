#include "device/Device.h"
#include "settings/Console.h"
#include "settings/DialogBench.h"
#include "update/Update.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <functional>

namespace {
using namespace std::chrono_literals;
const QString serviceTab = QStringLiteral("Service && Development");

Simulator::WireFault instead(const QByteArray& match, const QByteArray& bytes, int count = 1)
{
    Simulator::WireFault fault;
    fault.kind = Simulator::WireFault::Kind::Noise;
    fault.match = match;
    fault.bytes = bytes;
    fault.count = count;
    return fault;
}

Simulator::WireFault late(const QByteArray& match, std::chrono::milliseconds delay)
{
    Simulator::WireFault fault;
    fault.kind = Simulator::WireFault::Kind::LateReply;
    fault.match = match;
    fault.delay = delay;
    return fault;
}
} // namespace

/// The open dialog while the device works: what it reads by itself, the terminal, and the operator's panel
/// behind it.
class tst_DialogAtWork : public SimulatedDialogTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildDialog()); }
    void cleanup() { removeDialog(); }
    void panelBehind_data();
    void panelBehind();
    void quickDragOnTheServiceTab_data();
    void quickDragOnTheServiceTab();
    void identityWhileCommandsAreOnTheirWay();
    void panelFollowsAgainAfterTheServiceTab_data();
    void panelFollowsAgainAfterTheServiceTab();
    void hours_data();
    void hours();
    void hoursAreReadAgainWhereTheLineWasBusy();
    void identityASecondAfterConnecting();
    void identityInThreeTries_data();
    void identityInThreeTries();
    void identityOfAnotherDevice();
    void systemInfoTabReadsTheIdentity();
    void terminal();
    void terminalIsSilentDuringAnUpdate();

private:
    Column column(int number) const { return {*m_window, number}; }
    void reconnect();
    void waitForReadings();
    /// Calls @p what once, from the event loop, while the device has not answered this line yet.
    void atLine(const QByteArray& line, const std::function<void()>& what);
    QString shownHours() const;
    void typeLine(const QString& text) const;
};

void tst_DialogAtWork::reconnect()
{
    illuminator().unplug();
    QTRY_COMPARE_WITH_TIMEOUT(modeWord(), QStringLiteral("Disconnected"), 10000);
    m_lines->clear();
    QVERIFY(illuminator().plug());
    QTRY_COMPARE_WITH_TIMEOUT(modeWord(), QStringLiteral("Idle"), 10000);
}

/// What the dialog asks by itself after connecting is over.
void tst_DialogAtWork::waitForReadings()
{
    QTRY_COMPARE(m_hand->fieldText("lineEditVYRSerialNumber"), QStringLiteral("VYR-00042"));
    QTRY_VERIFY(m_lines->count("hours?") > 0);
}

void tst_DialogAtWork::atLine(const QByteArray& line, const std::function<void()>& what)
{
    m_device->wire().addFault(late(line, 100ms));
    auto* const once = new QObject(m_window.get());
    connect(
        &m_device->wire(), &Simulator::Wire::lineReceived, once,
        [once, line, what](const QByteArray& received) {
            if (received == line && !once->property("done").toBool()) {
                once->setProperty("done", true);
                once->deleteLater();
                what();
            }
        },
        Qt::QueuedConnection);
}

void tst_DialogAtWork::panelBehind_data()
{
    QTest::addColumn<QString>("caption");
    for (const char* caption : {"System Info", "System Config", "Operating Info", "Control Mode",
                                "TTL Configuration", "Update", "Service && Development"}) {
        QTest::newRow(caption) << QString::fromLatin1(caption);
    }
}

void tst_DialogAtWork::panelBehind()
{
    QFETCH(QString, caption);
    QVERIFY(m_hand->clickTab(caption));
    QVERIFY(!m_hand->dialog().isModal());
    column(3).slider->setValue(40);
    QTRY_COMPARE(lasers().level(2), 40.0);
    QTest::mouseClick(column(3).shutter, Qt::LeftButton);
    QTRY_VERIFY(lasers().isShutterOpen(2));
    if (caption == serviceTab) {
        // The poll rests there, so the panel learns of it once another tab is in front.
        QVERIFY(m_hand->clickTab(QStringLiteral("Update")));
    }
    QTRY_VERIFY(column(3).shutter->isChecked());
    QTest::mouseClick(label(*m_window, "labelLaserOnOff"), Qt::LeftButton);
    QTRY_COMPARE(modeWord(), QStringLiteral("Run"));
    QVERIFY(lasers().isEmitting(2));
}

void tst_DialogAtWork::quickDragOnTheServiceTab_data()
{
    QTest::addColumn<bool>("paced");
    QTest::addColumn<int>("stepMs");
    QTest::newRow("all at once") << false << 0;
    QTest::newRow("at a hand's speed, at the line's speed") << true << 10;
}

void tst_DialogAtWork::quickDragOnTheServiceTab()
{
    QFETCH(bool, paced);
    QFETCH(int, stepMs);
    constexpr int lastValue = 60;
    constexpr int atMostMs = 1500;
    waitForReadings();
    QVERIFY(m_hand->clickTab(serviceTab));
    QTRY_COMPARE(m_window->device()->waitWhileBusy(), 0);
    m_device->wire().setPaced(paced);
    for (int value = 1; value <= lastValue; ++value) {
        column(5).slider->setValue(value);
        if (stepMs > 0) {
            QTest::qWait(stepMs); // the drag itself
        }
    }
    QTRY_COMPARE_WITH_TIMEOUT(lasers().level(4), double(lastValue), atMostMs);
    QCOMPARE(m_lines->count("set:528=60.00"), 1);
    // Every value on the way arrives, too.
    QCOMPARE(m_lines->count("set:528=1.00"), 1);
    QCOMPARE(m_lines->count("set:528=59.00"), 1);
    const int polls = m_lines->count("f_mode?");
    QVERIFY(!QTest::qWaitFor([&] { return m_lines->count("f_mode?") > polls; }, int(severalPolls.count())));
}

void tst_DialogAtWork::identityWhileCommandsAreOnTheirWay()
{
    constexpr int lastValue = 60;
    constexpr int longerThanAnyTimeOutMs = 3500;
    waitForReadings();
    QVERIFY(m_hand->clickTab(QStringLiteral("Update")));
    const QSignalSpy disconnected(m_window->device(), &Device::deviceDisconnected);
    illuminator().model().product().assign("vyr_sn=VYR-00099");
    bool clicked = false;
    atLine("set:528=5.00", [&] {
        QVERIFY(m_hand->clickTab(QStringLiteral("System Info")));
        clicked = true;
    });
    m_device->wire().setPaced(true);
    for (int value = 1; value <= lastValue; ++value) {
        column(5).slider->setValue(value);
    }
    QTRY_COMPARE_WITH_TIMEOUT(lasers().level(4), double(lastValue), 2500);
    QVERIFY(clicked);
    QTRY_COMPARE(m_hand->fieldText("lineEditVYRSerialNumber"), QStringLiteral("VYR-00099"));
    QVERIFY(!QTest::qWaitFor([&] { return !disconnected.isEmpty(); }, longerThanAnyTimeOutMs));
}

void tst_DialogAtWork::panelFollowsAgainAfterTheServiceTab_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("another tab, mouse") << 0;
    QTest::newRow("another tab, keyboard") << 1;
    QTest::newRow("close") << 2;
    QTest::newRow("Escape") << 3;
}

void tst_DialogAtWork::panelFollowsAgainAfterTheServiceTab()
{
    QFETCH(int, way);
    QVERIFY(m_hand->clickTab(serviceTab));
    QTRY_COMPARE(m_window->device()->waitWhileBusy(), 0);
    const int polls = m_lines->count("f_mode?");
    illuminator().setFault(QStringLiteral("Over temperature"));
    QVERIFY(
        !QTest::qWaitFor([&] { return m_lines->count("f_mode?") > polls + 1; }, int(severalPolls.count())));
    QCOMPARE(modeWord(), QStringLiteral("Idle"));
    auto* const tabs = m_hand->part<QWidget>("tabWidget");
    switch (way) {
    case 0:
        QVERIFY(m_hand->clickTab(QStringLiteral("Update")));
        break;
    case 1:
        QTest::keyClick(tabs, Qt::Key_Tab, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(m_hand->captionInFront(), QStringLiteral("Update"));
        break;
    case 2:
        m_hand->dialog().close();
        break;
    default:
        QTest::keyClick(tabs, Qt::Key_Escape);
        QVERIFY(!m_hand->dialog().isVisible());
        break;
    }
    QTRY_COMPARE(modeWord(), QStringLiteral("Fault"));
}

void tst_DialogAtWork::hours_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("shown");
    QTest::newRow("cut, not rounded")
        << QByteArray("hours:405=0.00,445=0.98,470=12.99,520=1234,528=1000000.50,555=1e5,640=7.5,730=99.01\n")
        << QStringLiteral("0 0 12 1234 1000000 100000 7 99");
    QTest::newRow("odd") << QByteArray(
                                "hours:405=nan,445=inf,470=-inf,520=<b>%1</b>,528=,555=-3.7,640=-0.40,730\n")
                         << QStringLiteral("? ? ? 0 0 -3 0 0");
    QTest::newRow("too few") << QByteArray("hours:405=5.5,445=6.5\n") << QStringLiteral("5 6 0 0 0 0 0 0");
    QTest::newRow("too many") << QByteArray("hours:1=1,2=2,3=3,4=4,5=5,6=6,7=7,8=8,9=9,10=10\n")
                              << QStringLiteral("1 2 3 4 5 6 7 8");
}

QString tst_DialogAtWork::shownHours() const
{
    QStringList hours;
    for (const char* wavelength : {"405", "445", "470", "520", "528", "555", "640", "730"}) {
        const QString text =
            m_hand->text(QByteArray(QByteArray("labelOperatingHours") + wavelength).constData());
        hours.append(text.endsWith(QStringLiteral(" hrs")) ? text.chopped(4) : text);
    }
    return hours.join(QLatin1Char(' '));
}

void tst_DialogAtWork::hours()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, shown);
    waitForReadings();
    QVERIFY(m_hand->clickTab(QStringLiteral("Update")));
    m_device->wire().addFault(instead("hours?", reply));
    QVERIFY(m_hand->clickTab(QStringLiteral("Operating Info")));
    QTRY_COMPARE(shownHours(), shown);
}

void tst_DialogAtWork::hoursAreReadAgainWhereTheLineWasBusy()
{
    waitForReadings();
    QVERIFY(m_hand->clickTab(QStringLiteral("Update")));
    illuminator().setHours(6, 321.5);
    const int before = m_lines->count("hours?");
    int afterClick = -1;
    atLine("f_mode?", [&] {
        QVERIFY(m_hand->clickTab(QStringLiteral("Operating Info")));
        afterClick = m_lines->count("hours?");
    });
    QTRY_COMPARE(afterClick, before);
    QTRY_COMPARE(shownHours(), QStringLiteral("0 0 0 0 0 0 321 0"));
}

void tst_DialogAtWork::identityASecondAfterConnecting()
{
    reconnect();
    // The main window reads it for its own label at once, the dialog a second later.
    QTRY_COMPARE(m_lines->count("prod_config"), 2);
    const auto times = m_lines->timesOf("prod_config");
    QVERIFY2(times.at(1) - times.at(0) >= 950ms,
             QByteArray::number(qint64((times.at(1) - times.at(0)).count())));
    QTRY_COMPARE(m_hand->fieldText("lineEditVYRSerialNumber"), QStringLiteral("VYR-00042"));
    QCOMPARE(m_hand->fieldText("lineEditVYRPartNumber"), QStringLiteral("VYR-8-0001"));
    QCOMPARE(m_hand->fieldText("lineEditNovalumSerialNumber"), QStringLiteral("NOV-55018"));
    QCOMPARE(m_hand->fieldText("lineEditNecselLaserSerialNumber"), QStringLiteral("NLM-10731"));
    QCOMPARE(m_hand->fieldText("lineEditNecselControllerSerialNumber"), QStringLiteral("NLC-20417"));
    QCOMPARE(m_hand->fieldText("lineEditNecselControllerVersion"), QStringLiteral("3.4.1"));
    QCOMPARE(m_hand->fieldText("lineEditVYRHardwareRev"), QStringLiteral("01.02.00"));
    QCOMPARE(m_hand->text("labelControlBoardFirmwareVersion"), QStringLiteral("2.7.0"));
}

void tst_DialogAtWork::identityInThreeTries_data()
{
    QTest::addColumn<int>("failures");
    QTest::newRow("second try") << 1;
    QTest::newRow("third try") << 2;
    QTest::newRow("never") << 3;
}

void tst_DialogAtWork::identityInThreeTries()
{
    QFETCH(int, failures);
    // What the last connection asked for is over before the count begins.
    waitForReadings();
    illuminator().model().product().assign("vyr_sn=VYR-77777");
    m_lines->clear();
    m_device->wire().addFault(instead("prod_config", "nonsense\n", failures));
    m_hand->dialog().UpdateProductConfigDisplay();
    const int tries = std::min(failures + 1, 3);
    QTRY_COMPARE_WITH_TIMEOUT(m_lines->count("prod_config"), tries, 6000);
    const auto times = m_lines->timesOf("prod_config");
    for (int i = 1; i < times.size(); ++i) {
        QVERIFY2(times.at(i) - times.at(i - 1) >= 950ms, QByteArray::number(i));
    }
    if (failures < 3) {
        QTRY_COMPARE(m_hand->fieldText("lineEditVYRSerialNumber"), QStringLiteral("VYR-77777"));
    }
    QVERIFY(!QTest::qWaitFor([&] { return m_lines->count("prod_config") > tries; }, 1500));
    QCOMPARE(m_hand->fieldText("lineEditVYRSerialNumber"),
             failures < 3 ? QStringLiteral("VYR-77777") : QStringLiteral("VYR-00042"));
}

void tst_DialogAtWork::identityOfAnotherDevice()
{
    waitForReadings();
    illuminator().model().product().assign("vyr_sn=<b>%1</b>,vyr_hw_ver=4");
    illuminator().model().controller().setVersion("9.9.9");
    reconnect();
    QTRY_COMPARE(m_hand->fieldText("lineEditVYRSerialNumber"), QStringLiteral("<b>%1</b>"));
    QCOMPARE(m_hand->fieldText("lineEditVYRHardwareRev"), QStringLiteral("04.00.00"));
    QCOMPARE(m_hand->fieldText("lineEditNecselControllerVersion"), QStringLiteral("9.9.9"));
}

void tst_DialogAtWork::systemInfoTabReadsTheIdentity()
{
    waitForReadings();
    QVERIFY(m_hand->clickTab(QStringLiteral("Update")));
    illuminator().model().product().assign("vyr_sn=VYR-00099");
    // The line is in use at the very moment of the click.
    atLine("f_mode?", [this] { QVERIFY(m_hand->clickTab(QStringLiteral("System Info"))); });
    QTRY_COMPARE(m_hand->fieldText("lineEditVYRSerialNumber"), QStringLiteral("VYR-00099"));
}

void tst_DialogAtWork::typeLine(const QString& text) const
{
    Console* const console = m_hand->dialog().console();
    m_hand->bringIntoView(console);
    console->setFocus();
    QTest::keyClicks(console, text);
    QTest::keyClick(console, Qt::Key_Return);
}

void tst_DialogAtWork::terminal()
{
    waitForReadings();
    QVERIFY(m_hand->clickTab(serviceTab));
    QTRY_COMPARE(m_window->device()->waitWhileBusy(), 0);
    illuminator().setFault(QStringLiteral("Over temperature"));
    m_lines->clear();
    typeLine(QStringLiteral("fault?"));
    QTRY_COMPARE(m_lines->count("fault?"), 1);
    const auto shown = [this] { return m_hand->dialog().console()->toPlainText(); };
    QTRY_VERIFY(shown().endsWith(QStringLiteral("Over temperature\n")));
    QVERIFY2(shown().contains(QStringLiteral("fault?\n")), qPrintable(shown()));
    typeLine(QStringLiteral("v"));
    QTRY_VERIFY(shown().endsWith(QStringLiteral("v\nVYRApp V2.7.0\n")));
    QCOMPARE(m_lines->texts(), QList<QByteArray>({"fault?", "v"}));
    QVERIFY(m_hand->dialog().isVisible());
}

void tst_DialogAtWork::terminalIsSilentDuringAnUpdate()
{
    waitForReadings();
    QVERIFY(m_hand->clickTab(serviceTab));
    QTRY_COMPARE(m_window->device()->waitWhileBusy(), 0);
    m_lines->clear();
    {
        const Update::InProgress run(*m_window->update());
        typeLine(QStringLiteral("run!"));
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
        QVERIFY(!QTest::qWaitFor([this] { return !m_lines->texts().isEmpty(); }, int(severalPolls.count())));
    }
    // Not even the beginning of a line was left over.
    typeLine(QStringLiteral("v"));
    QTRY_COMPARE(m_lines->texts(), QList<QByteArray>{"v"});
}

QTEST_MAIN(tst_DialogAtWork)
#include "tst_DialogAtWork.moc"
