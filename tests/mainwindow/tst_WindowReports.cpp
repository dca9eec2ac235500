#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "scenario/Scenario.h"
#include "settings/SettingsDialog.h"
#include "update/Update.h"

#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>

#include <memory>

/// What the device reports of faults, warnings, fibres and itself, and the control modes.
class tst_WindowReports : public ConnectedWindowTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void faultReports();
    void faultKeepsTheStatusBarFromWarnings();
    void updateGivesTheBarBack_data();
    void updateGivesTheBarBack();
    void updateWithoutADeviceGivesTheBarBack();
    void warningReports();
    void interlock_data();
    void interlock();
    void interlockFollowsTheName();
    void hostileTextsStayPlain();
    void controlModes_data();
    void controlModes();
    void usbIntensityControlShowsTheKeptLevelsAgain();
    void usbShutterControlSwitchesTheLaserOff();
    void firmwareUpdateTextLeavesTheDeviceAlone();
    void otherDataChangesNothing();
};

void tst_WindowReports::init()
{
    qRegisterMetaType<channel*>();
    QVERIFY(buildConnectedWindow());
    quiet();
}

void tst_WindowReports::cleanup()
{
    removeWindow();
}

void tst_WindowReports::faultReports()
{
    QVERIFY(waitForMode("run", QStringLiteral("Run")));
    quiet();
    m_illuminator->fault = "FAULT: <b>hot</b>";
    QTRY_COMPARE(statusText(*m_window), QStringLiteral("FAULT: <b>hot</b>"));
    QCOMPARE(m_bench->log().count(QStringLiteral("Received change in fault state from device = true msg = "
                                                 "\"FAULT: <b>hot</b>\""),
                                  QsLogging::LogLevel::Info),
             1);
    QCOMPARE(picture("labelLaserStatus"), QStringLiteral("Circle_LaserFault.png"));
    QCOMPARE(picture("labelLaserOnOff"), QStringLiteral("LaserOff.png"));
    QCOMPARE(label(*m_window, "labelLaserStatusText")->text(), QStringLiteral("Fault"));
    // With the fault shown the laser counts as off, so that the next click asks for run and is refused.
    m_illuminator->fault = "ok";
    m_illuminator->warning = "WARN: something";
    QTRY_VERIFY(m_window->device()->warningState());
    QTRY_VERIFY(!m_window->device()->faultState());
    m_window->onFaultStateChanged(false, QStringLiteral("ok"));
    QCOMPARE(statusText(*m_window), QStringLiteral("System Fault Cleared"));
    QCOMPARE(m_bench->log().count(
                 QStringLiteral("Received change in fault state from device = false msg = \"ok\"")),
             2);
}

void tst_WindowReports::faultKeepsTheStatusBarFromWarnings()
{
    m_illuminator->warning = "WARN: first";
    QTRY_VERIFY(m_window->device()->warningState());
    m_illuminator->fault = "FAULT: hot";
    QTRY_COMPARE(statusText(*m_window), QStringLiteral("FAULT: hot"));
    m_bench->log().clear();
    m_illuminator->warning = "WARN: second";
    QTRY_COMPARE(m_bench->log().count(QStringLiteral("msg = \"WARN: second\"")), 1);
    QCOMPARE(statusText(*m_window), QStringLiteral("FAULT: hot"));
}

void tst_WindowReports::updateGivesTheBarBack_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QByteArray>("warning");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QByteArray("ok") << QByteArray("ok") << "Idle mode";
    QTest::newRow("warning") << QByteArray("ok") << QByteArray("WARN: 555 open") << "WARN: 555 open";
    QTest::newRow("fault") << QByteArray("FAULT: hot") << QByteArray("ok") << "FAULT: hot";
    QTest::newRow("both") << QByteArray("FAULT: hot") << QByteArray("WARN: 555 open") << "FAULT: hot";
}

void tst_WindowReports::updateGivesTheBarBack()
{
    QFETCH(const QByteArray, fault);
    QFETCH(const QByteArray, warning);
    QFETCH(const QString, text);
    m_illuminator->fault = fault;
    m_illuminator->warning = warning;
    QTRY_COMPARE(m_window->device()->faultState(), fault != "ok");
    QTRY_COMPARE(m_window->device()->warningState(), warning != "ok");
    {
        const Update::InProgress run(*m_window->update());
        QCOMPARE(statusText(*m_window), Update::inProgressText());
    }
    QCOMPARE(statusText(*m_window), text);
}

void tst_WindowReports::updateWithoutADeviceGivesTheBarBack()
{
    {
        const Update::InProgress run(*m_window->update());
        m_illuminator->bench().wire().unplug();
        QTRY_VERIFY(statusText(*m_window) != Update::inProgressText());
    }
    // Told meanwhile, and true still.
    QVERIFY2(statusText(*m_window).contains(QLatin1String("error")) ||
                 statusText(*m_window).contains(QLatin1String("disconnected")),
             qPrintable(statusText(*m_window)));
    {
        const Update::InProgress run(*m_window->update());
        QCOMPARE(statusText(*m_window), Update::inProgressText());
    }
    QCOMPARE(statusText(*m_window), QString());
}

void tst_WindowReports::warningReports()
{
    m_illuminator->warning = "WARN: fan";
    QTRY_COMPARE(statusText(*m_window), QStringLiteral("WARN: fan"));
    QCOMPARE(m_bench->log().count(
                 QStringLiteral("Received change in warning state from device = true msg = \"WARN: fan\""),
                 QsLogging::LogLevel::Info),
             1);
    // While the link still holds the warning, the cleared text stays to be read.
    m_window->onWarningStateChanged(false, QStringLiteral("ok"));
    QCOMPARE(statusText(*m_window), QStringLiteral("Warnings Cleared"));
    m_illuminator->warning = "ok";
    QTRY_COMPARE(m_bench->log().count(
                     QStringLiteral("Received change in warning state from device = false msg = \"ok\"")),
                 2);
}

void tst_WindowReports::interlock_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("enabled555");
    QTest::addColumn<bool>("enabledOthers");
    QTest::newRow("none") << QStringLiteral("ok") << true << true;
    QTest::newRow("555") << QStringLiteral("WARN: 555 fiber open") << false << true;
    QTest::newRow("Novalum") << QStringLiteral("WARN: Novalum fiber open") << true << false;
    QTest::newRow("NOVALUM") << QStringLiteral("WARN: NOVALUM FIBER") << true << false;
    QTest::newRow("both") << QStringLiteral("WARN: 555, novalum") << false << false;
    QTest::newRow("another") << QStringLiteral("WARN: fan") << true << true;
}

void tst_WindowReports::interlock()
{
    QFETCH(QString, message);
    QFETCH(bool, enabled555);
    QFETCH(bool, enabledOthers);
    const QSignalSpy changes(m_window.get(), &PelorinMainWindow::channelEnableChanged);
    m_window->onWarningStateChanged(message != QLatin1String("ok"), message);
    for (quint8 number = 1; number <= 8; ++number) {
        QCOMPARE(m_window->scenario()->channelByNumber(number)->isEnabled(),
                 number == 6 ? enabled555 : enabledOthers);
    }
    // Only what changed is told.
    QCOMPARE(changes.size(), (enabled555 ? 0 : 1) + (enabledOthers ? 0 : 7));
}

void tst_WindowReports::interlockFollowsTheName()
{
    Column(*m_window, 6).name->selectAll();
    QTest::keyClicks(Column(*m_window, 6).name, QStringLiteral("Green"));
    QTest::keyClick(Column(*m_window, 6).name, Qt::Key_Return);
    Column(*m_window, 1).name->selectAll();
    QTest::keyClicks(Column(*m_window, 1).name, QStringLiteral("the 555 one"));
    QTest::keyClick(Column(*m_window, 1).name, Qt::Key_Return);
    m_window->onWarningStateChanged(true, QStringLiteral("WARN: 555 fiber"));
    QVERIFY(m_window->scenario()->channelByNumber(6)->isEnabled());
    QVERIFY(!m_window->scenario()->channelByNumber(1)->isEnabled());
}

void tst_WindowReports::hostileTextsStayPlain()
{
    const QString text = QStringLiteral("WARN: <img src='x'>\t%1 %2 &amp;");
    m_window->onWarningStateChanged(true, text);
    m_window->onFaultStateChanged(true, text);
    m_window->onDeviceError(text);
    QCOMPARE(statusText(*m_window), QString(QStringLiteral("Port error ") + text));
    m_window->onDeviceDisconnected(text);
    QCOMPARE(statusText(*m_window), QString(QStringLiteral("Device disconnected on ") + text));
}

void tst_WindowReports::controlModes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("intensity");
    QTest::addColumn<QString>("shutter");
    QTest::addColumn<QList<QByteArray>>("commands");
    QTest::newRow("1") << 1 << QStringLiteral("Intensity Control: USB")
                       << QStringLiteral("Shutter Control: USB")
                       << QList<QByteArray>{"int_mode=pc", "sh_mode=pc", "idle!"};
    QTest::newRow("0") << 0 << QStringLiteral("Intensity Control: External Analog")
                       << QStringLiteral("Shutter Control: External Digital")
                       << QList<QByteArray>{"int_mode=ext", "sh_mode=ext"};
    QTest::newRow("any other") << 2 << QStringLiteral("Intensity Control: External Analog")
                               << QStringLiteral("Shutter Control: External Digital") << QList<QByteArray>();
}

void tst_WindowReports::controlModes()
{
    QFETCH(int, mode);
    emit m_window->settingsDialog()->intensityControlChanged(static_cast<quint8>(mode));
    emit m_window->settingsDialog()->shutterControlChanged(static_cast<quint8>(mode));
    QTEST(label(*m_window, "labelIntensityControl")->text(), "intensity");
    QTEST(label(*m_window, "labelShutterControl")->text(), "shutter");
    QVERIFY(m_illuminator->settle(*m_window));
    QTEST(m_illuminator->commands(), "commands");
}

void tst_WindowReports::usbIntensityControlShowsTheKeptLevelsAgain()
{
    const Column third(*m_window, 3);
    third.slider->setValue(42);
    emit m_window->settingsDialog()->intensityControlChanged(0);
    const std::array<float, channelCount> inputs{1, 2, 85, 4, 5, 6, 7, 8};
    m_window->onIntensityChanged(inputs.data());
    QCOMPARE(third.percentage->text(), QStringLiteral("85"));
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();

    emit m_window->settingsDialog()->intensityControlChanged(1);

    QCOMPARE(third.percentage->text(), QStringLiteral("42"));
    QCOMPARE(third.slider->value(), 42);
    QCOMPARE(Column(*m_window, 4).slider->value(),
             int(m_window->scenario()->channelByNumber(4)->intensity()));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>{"int_mode=pc"});
}

void tst_WindowReports::usbShutterControlSwitchesTheLaserOff()
{
    QVERIFY(waitForMode("run", QStringLiteral("Run")));
    quiet();
    emit m_window->settingsDialog()->shutterControlChanged(1);
    QCOMPARE(picture("labelLaserOnOff"), QStringLiteral("LaserOff.png"));
    QTRY_COMPARE(m_illuminator->commands(), QList<QByteArray>({"sh_mode=pc", "idle!"}));
}

void tst_WindowReports::firmwareUpdateTextLeavesTheDeviceAlone()
{
    m_illuminator->bench().wire().sendUnsolicited("Firmware Update of the controller\n 10%\n");
    QTRY_COMPARE(statusText(*m_window), QStringLiteral("Firmware Update of the controller 10%"));
    QCOMPARE(m_window->device()->deviceMode(), DeviceMode::UpdatingLaserController);
    QCOMPARE(m_bench->log().count(QStringLiteral("Firmware Update of the controller 10%"),
                                  QsLogging::LogLevel::Info),
             1);
    const int polls = m_illuminator->bench().count("f_mode?");
    QVERIFY(!m_illuminator->bench().waitForLine("f_mode?", polls + 2, std::chrono::milliseconds(700)));
}

void tst_WindowReports::otherDataChangesNothing()
{
    QByteArray bytes("firmware update\n");
    m_window->onDataReceivedFromDevice(bytes);
    QCOMPARE(statusText(*m_window), QString());
    QCOMPARE(m_window->device()->deviceMode(), DeviceMode::Application);
}

QTEST_MAIN(tst_WindowReports)
#include "tst_WindowReports.moc"
