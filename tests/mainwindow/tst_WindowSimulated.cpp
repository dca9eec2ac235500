#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "scenario/Scenario.h"
#include "settings/SettingsDialog.h"
#include "support/BoxAnswerer.h"
#include "support/SimulatedBench.h"

#include <QTest>

#include <memory>

/// The operator's day at a whole simulated illuminator: whatever the window shows must be what the device is
/// in.
class tst_WindowSimulated : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void laserOnAndOff();
    void warmupIsShown();
    void shutterAndIntensity();
    void faultAndClear();
    void fiberInterlock();
    void externalInputs();
    void unplugAndReplug();
    void powerCycle();
    void pacedLine();

private:
    Simulator::LaserHead& lasers() { return m_device->model().lasers(); }
    Column column(int number) const { return {*m_window, number}; }
    QString word() const { return label(*m_window, "labelLaserStatusText")->text(); }
    QString picture(const char* name) const { return pictureOn(label(*m_window, name)); }
    void clickOnOff() { QTest::mouseClick(label(*m_window, "labelLaserOnOff"), Qt::LeftButton); }
    bool windowShowsTheDevice();

    std::unique_ptr<WindowBench> m_bench;
    std::unique_ptr<SimulatedBench> m_device;
    std::unique_ptr<PelorinMainWindow> m_window;
};

void tst_WindowSimulated::init()
{
    m_bench = std::make_unique<WindowBench>();
    m_device = std::make_unique<SimulatedBench>();
    m_window = m_bench->start();
    m_window->device()->checkConnectionStatus();
    QTRY_COMPARE(word(), QStringLiteral("Idle"));
    // The link tells an unchanged "ok" once per process only.
    m_window->onWarningStateChanged(false, QStringLiteral("ok"));
}

void tst_WindowSimulated::cleanup()
{
    m_window.reset();
    m_device.reset();
    m_bench.reset();
}

bool tst_WindowSimulated::windowShowsTheDevice()
{
    for (int i = 0; i < 8; ++i) {
        const QPushButton* button = column(i + 1).shutter;
        const bool open = lasers().isShutterOpen(i);
        if (button->isChecked() != open ||
            button->text() != (open ? QStringLiteral("Shutter Open") : QStringLiteral("Shutter Closed")) ||
            m_window->scenario()->channels().at(i)->isShutterOpen() != open) {
            return false;
        }
    }
    const bool running = lasers().mode() == Simulator::Mode::Run && !lasers().hasFault();
    return (picture("labelLaserOnOff") == QStringLiteral("Laser On.png")) == running;
}

void tst_WindowSimulated::laserOnAndOff()
{
    clickOnOff();
    QTRY_COMPARE(lasers().mode(), Simulator::Mode::Run);
    QTRY_COMPARE(word(), QStringLiteral("Run"));
    QCOMPARE(picture("labelLaserOnOff"), QStringLiteral("Laser On.png"));
    QCOMPARE(picture("labelLaserStatus"), QStringLiteral("Circle_LaserOn.png"));
    clickOnOff();
    QTRY_COMPARE(lasers().mode(), Simulator::Mode::Idle);
    QTRY_COMPARE(word(), QStringLiteral("Idle"));
    QVERIFY(windowShowsTheDevice());
}

void tst_WindowSimulated::warmupIsShown()
{
    lasers().setWarmupDuration(std::chrono::minutes(5));
    m_device->illuminator().setRestartTime(std::chrono::milliseconds(100));
    m_device->illuminator().powerCycle();
    QTRY_COMPARE_WITH_TIMEOUT(word(), QStringLiteral("Warm-up"), 15000);
    clickOnOff();
    QTRY_COMPARE(statusText(*m_window), QStringLiteral("System warming up.  Not ready to run."));
    QCOMPARE(lasers().mode(), Simulator::Mode::Warmup);
    QCOMPARE(picture("labelLaserStatus"), QStringLiteral("Circle_LaserWarmup.png"));
}

void tst_WindowSimulated::shutterAndIntensity()
{
    column(2).percentage->setFocus();
    column(2).percentage->selectAll();
    QTest::keyClicks(column(2).percentage, QStringLiteral("60"));
    QTest::keyClick(column(2).percentage, Qt::Key_Return);
    QTRY_COMPARE(lasers().level(1), 60.0);
    QTest::mouseClick(column(2).shutter, Qt::LeftButton);
    QTRY_VERIFY(lasers().isShutterOpen(1));
    QTRY_VERIFY(windowShowsTheDevice());
    clickOnOff();
    QTRY_VERIFY(lasers().isEmitting(1));
    QTest::mouseClick(column(2).shutter, Qt::LeftButton);
    QTRY_VERIFY(!lasers().isShutterOpen(1));
    QTRY_VERIFY(windowShowsTheDevice());
}

void tst_WindowSimulated::faultAndClear()
{
    clickOnOff();
    QTRY_COMPARE(word(), QStringLiteral("Run"));
    QTest::mouseClick(column(3).shutter, Qt::LeftButton);
    QTRY_VERIFY(column(3).shutter->isChecked());
    m_device->illuminator().setFault(QStringLiteral("Over temperature"));
    QTRY_COMPARE(word(), QStringLiteral("Fault"));
    QTRY_VERIFY(windowShowsTheDevice());
    QVERIFY(!column(3).shutter->isChecked());
    m_window->setLaserOn(true);
    QCOMPARE(statusText(*m_window), QStringLiteral("System in fault state.  Not ready to run."));
    QTest::mouseClick(label(*m_window, "labelLaserStatus"), Qt::LeftButton);
    QTRY_VERIFY(!lasers().hasFault());
    QTRY_COMPARE(word(), QStringLiteral("Idle"));
    QVERIFY(windowShowsTheDevice());
}

void tst_WindowSimulated::fiberInterlock()
{
    BoxAnswerer boxes;
    m_device->illuminator().setWarning(QStringLiteral("555 fiber disconnected"));
    QTRY_COMPARE(picture("labelNecselFiber"), QStringLiteral("ledBlue80x80OFF.png"));
    QCOMPARE(picture("labelNovalumFiber"), QStringLiteral("ledBlue80x80.png"));
    QTest::mouseClick(column(6).shutter, Qt::LeftButton);
    QVERIFY(boxes.sawOneWarning(QStringLiteral("Channel is disabled due to fiber interlock.")));
    m_device->illuminator().clearWarning();
    QTRY_COMPARE(picture("labelNecselFiber"), QStringLiteral("ledBlue80x80.png"));
    QTest::mouseClick(column(6).shutter, Qt::LeftButton);
    QTRY_VERIFY(lasers().isShutterOpen(5));
}

void tst_WindowSimulated::externalInputs()
{
    emit m_window->settingsDialog()->intensityControlChanged(0);
    emit m_window->settingsDialog()->shutterControlChanged(0);
    QTRY_COMPARE(lasers().intensitySource(), Simulator::Source::External);
    QTRY_COMPARE(lasers().shutterSource(), Simulator::Source::External);
    m_device->illuminator().setExternalIntensity(4, 33.4);
    m_device->illuminator().setTtlInput(4, true);
    QTRY_COMPARE(column(5).percentage->text(), QStringLiteral("33"));
    QTRY_COMPARE(column(5).shutter->isChecked(), lasers().isShutterOpen(4));
    QTRY_VERIFY(windowShowsTheDevice());
    emit m_window->settingsDialog()->shutterControlChanged(1);
    QTRY_COMPARE(lasers().shutterSource(), Simulator::Source::Host);
    QTRY_VERIFY(windowShowsTheDevice());
}

void tst_WindowSimulated::unplugAndReplug()
{
    clickOnOff();
    QTRY_COMPARE(word(), QStringLiteral("Run"));
    QTest::mouseClick(column(1).shutter, Qt::LeftButton);
    QTRY_VERIFY(column(1).shutter->isChecked());
    m_device->illuminator().unplug();
    QTRY_COMPARE(word(), QStringLiteral("Disconnected"));
    QCOMPARE(picture("labelLaserOnOff"), QStringLiteral("LaserDisconnected.png"));
    QVERIFY(m_device->illuminator().plug(QStringLiteral("ttyVYR5")));
    // Connecting asks for idle; the device kept running meanwhile.
    QTRY_COMPARE(word(), QStringLiteral("Idle"));
    QTRY_COMPARE(lasers().mode(), Simulator::Mode::Idle);
    QTRY_VERIFY(windowShowsTheDevice());
    QVERIFY(label(*m_window, "labelSystemId")->text().startsWith(QStringLiteral("SN ")));
}

void tst_WindowSimulated::powerCycle()
{
    column(1).slider->setValue(20);
    QTRY_COMPARE(lasers().level(0), 20.0);
    m_device->illuminator().setRestartTime(std::chrono::milliseconds(100));
    m_device->illuminator().powerCycle();
    QTRY_COMPARE(word(), QStringLiteral("Disconnected"));
    QTRY_COMPARE_WITH_TIMEOUT(word(), QStringLiteral("Idle"), 15000);
    // The new start knew nothing of the operator's level; connecting has told it.
    QTRY_COMPARE(lasers().level(0), 20.0);
    QTRY_VERIFY(windowShowsTheDevice());
}

void tst_WindowSimulated::pacedLine()
{
    m_device->wire().setPaced(true);
    for (int value = 1; value <= 10; ++value) {
        column(7).slider->setValue(value);
    }
    QTest::mouseClick(column(7).shutter, Qt::LeftButton);
    QTRY_COMPARE(lasers().level(6), 10.0);
    QTRY_VERIFY(lasers().isShutterOpen(6));
    QTRY_VERIFY(windowShowsTheDevice());
    QCOMPARE(column(7).percentage->text(), QStringLiteral("10"));
}

QTEST_MAIN(tst_WindowSimulated)
#include "tst_WindowSimulated.moc"
