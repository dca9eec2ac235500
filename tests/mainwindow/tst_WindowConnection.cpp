#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "scenario/Scenario.h"
#include "settings/SettingsDialog.h"
#include "update/Update.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {
QList<QByteArray> everythingSent(const QByteArray& shutter = "=0")
{
    QList<QByteArray> commands{"idle!", "sh_mode=pc", "int_mode=pc", "speckle=on", "sleep=30"};
    for (const char* wavelength : {"405", "445", "470", "520", "528", "555", "640", "730"}) {
        commands.append(QByteArray("set:") + wavelength + "=0.00");
        commands.append(QByteArray("shutter:") + wavelength + shutter);
        commands.append(QByteArray("ttl_invert:") + wavelength + "=0");
    }
    return commands;
}
} // namespace

/// Connecting, disconnecting, and closing the window whatever is going on.
class tst_WindowConnection : public WindowTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void startsDisconnected();
    void connectingSendsEverything();
    void externalSourcesAreNotSentValues();
    void disabledSleepTimerIsSentAsZero();
    void storedValuesAreSent();
    void identityIsShown();
    void hostileIdentityStaysPlain();
    void silentIdentityShowsTheVersion();
    void loaderImageIsShownAndLeftAlone();
    void updateKeepsTheConnectHandlerAway();
    void disconnecting();
    void replugShowsTheDevicesState();
    void unpluggedWhileReadingTheIdentity();
    void closingStoresTheLayout();
    void closingIsRefusedDuringAnUpdate();
    void closingEndsAWaitAtOnce();

private:
    QString systemId() const { return label(*m_window, "labelSystemId")->text(); }
};

void tst_WindowConnection::init()
{
    buildWindow();
}

void tst_WindowConnection::cleanup()
{
    removeWindow();
}

void tst_WindowConnection::startsDisconnected()
{
    QCOMPARE(label(*m_window, "labelLaserStatusText")->text(), QStringLiteral("Disconnected"));
    QCOMPARE(systemId(), QString());
    QCOMPARE(picture("labelLaserStatus"), QStringLiteral("Circle_LaserOff.png"));
    QCOMPARE(picture("labelNecselFiber"), QStringLiteral("ledBlue80x80OFF.png"));
    QCOMPARE(picture("labelNovalumFiber"), QStringLiteral("ledBlue80x80OFF.png"));
}

void tst_WindowConnection::connectingSendsEverything()
{
    QVERIFY(m_illuminator->connectTo(*m_window));
    QCOMPARE(m_illuminator->commands(), everythingSent());
}

void tst_WindowConnection::externalSourcesAreNotSentValues()
{
    emit m_window->settingsDialog()->intensityControlChanged(0);
    emit m_window->settingsDialog()->shutterControlChanged(0);
    emit m_window->settingsDialog()->speckleControlChanged(0);
    QVERIFY(m_illuminator->connectTo(*m_window));
    QList<QByteArray> expected{"idle!", "sh_mode=ext", "int_mode=ext", "speckle=off", "sleep=30"};
    for (const char* wavelength : {"405", "445", "470", "520", "528", "555", "640", "730"}) {
        expected.append(QByteArray("ttl_invert:") + wavelength + "=0");
    }
    QCOMPARE(m_illuminator->commands(), expected);
}

void tst_WindowConnection::disabledSleepTimerIsSentAsZero()
{
    emit m_window->settingsDialog()->sleepTimerEnableChanged(false);
    QVERIFY(m_illuminator->connectTo(*m_window));
    QCOMPARE(m_illuminator->bench().count("sleep=0"), 1);
    QCOMPARE(m_illuminator->bench().count("sleep=30"), 0);
}

void tst_WindowConnection::storedValuesAreSent()
{
    m_bench->store(QStringLiteral("Channel2/Channel Intensity"), 12.5);
    m_bench->store(QStringLiteral("Channel4/Channel Shutter TTL Invert"), true);
    m_bench->store(QStringLiteral("Sleep Timer"), 7);
    m_window->loadSettings();
    QVERIFY(m_illuminator->connectTo(*m_window));
    QCOMPARE(m_illuminator->bench().count("set:445=12.50"), 1);
    QCOMPARE(m_illuminator->bench().count("ttl_invert:520=1"), 1);
    QCOMPARE(m_illuminator->bench().count("sleep=7"), 1);
}

void tst_WindowConnection::identityIsShown()
{
    QVERIFY(m_illuminator->connectTo(*m_window));
    QCOMPARE(systemId(), QStringLiteral("SN 1234  V2.7.0"));
    const QString tip = label(*m_window, "labelSystemId")->toolTip();
    for (const char* line :
         {"VYR Serial Number: 1234", "Necsel Serial Number: N55", "Novalum Serial Number: V88",
          "VYR Hardware Version: 1.2.3", "VYR Part Number: PN-7"}) {
        QVERIFY2(tip.contains(QLatin1String(line)), line);
    }
    for (const char* line :
         {"VYR Serial Number \"1234\"", "Necsel Serial Number \"N55\"", "Novalum Serial Number \"V88\"",
          "VYR Hardware Version \"1.2.3\"", "VYR Part Number \"PN-7\""}) {
        QVERIFY2(m_bench->log().count(QLatin1String(line), QsLogging::LogLevel::Info) == 1, line);
    }
}

void tst_WindowConnection::hostileIdentityStaysPlain()
{
    m_illuminator->product = "vyr_sn=<b>7</b>&amp;%1,vyr_pn=<img src='x'>";
    QVERIFY(m_illuminator->connectTo(*m_window));
    QCOMPARE(systemId(), QStringLiteral("SN <b>7</b>&amp;%1  V2.7.0"));
    QCOMPARE(label(*m_window, "labelSystemId")->textFormat(), Qt::PlainText);
    const QString tip = label(*m_window, "labelSystemId")->toolTip();
    QVERIFY(tip.contains(QStringLiteral("&lt;b&gt;7&lt;/b&gt;&amp;amp;%1")));
    QVERIFY(!tip.contains(QStringLiteral("<img")));
}

void tst_WindowConnection::silentIdentityShowsTheVersion()
{
    m_illuminator->product.clear();
    m_illuminator->bench().setResponder({});
    m_illuminator->bench().setAnswers({{"v", "VYRApp V2.6.11\n"},
                                       {"v?a", "VYRApp V2.6.11\n"},
                                       {"v?l", "Loader V1.5.0\n"},
                                       {"isloadervalid", "Yes\n"},
                                       {"isappvalid", "Yes\n"},
                                       {"prod_config", "nothing\n"}});
    m_illuminator->bench().setDefaultAnswer("ok\n");
    QVERIFY(m_illuminator->connectTo(*m_window));
    QCOMPARE(systemId(), QStringLiteral("V2.6.11"));
    QVERIFY(!label(*m_window, "labelSystemId")->toolTip().contains(QStringLiteral("VYR Serial Number")));
    QCOMPARE(m_bench->log().count(QStringLiteral("VYR Serial Number")), 0);
    // The settings go to the device even so.
    QCOMPARE(m_illuminator->commands(), everythingSent());
}

void tst_WindowConnection::loaderImageIsShownAndLeftAlone()
{
    m_illuminator->image = "Loader V1.5.0";
    QVERIFY(m_illuminator->connectTo(*m_window));
    QCOMPARE(systemId(), QStringLiteral("SN 1234  Loader V1.5.0"));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    QCOMPARE(label(*m_window, "labelLaserStatusText")->text(), QStringLiteral("Loader"));
    QCOMPARE(statusText(*m_window),
             QString(QStringLiteral("Device connected on ") + m_illuminator->bench().portName()));
}

void tst_WindowConnection::updateKeepsTheConnectHandlerAway()
{
    const Update::InProgress run(*m_window->update());
    QVERIFY(m_illuminator->connectTo(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    QCOMPARE(m_illuminator->bench().count("prod_config"), 0);
    QCOMPARE(systemId(), QString());
}

void tst_WindowConnection::disconnecting()
{
    QVERIFY(m_illuminator->connectTo(*m_window));
    // The link tells an unchanged "ok" once per process only.
    m_window->onWarningStateChanged(false, QStringLiteral("ok"));
    m_illuminator->mode = "run";
    QTRY_COMPARE(picture("labelLaserOnOff"), QStringLiteral("Laser On.png"));
    QTRY_COMPARE(picture("labelNecselFiber"), QStringLiteral("ledBlue80x80.png"));
    const QString port = m_illuminator->bench().portName();
    const QSignalSpy disconnected(m_window->device(), &Device::deviceDisconnected);
    QStringList texts;
    connect(m_window->device(), &Device::deviceDisconnected, m_window.get(),
            [this, &texts] { texts.append(statusText(*m_window)); });
    m_illuminator->bench().wire().unplug();
    QTRY_COMPARE(disconnected.size(), 1);
    QCOMPARE(texts, QStringList(QStringLiteral("Device disconnected on ") + port));
    QCOMPARE(picture("labelLaserOnOff"), QStringLiteral("LaserDisconnected.png"));
    QCOMPARE(picture("labelLaserStatus"), QStringLiteral("Circle_LaserOff.png"));
    QCOMPARE(picture("labelNecselFiber"), QStringLiteral("ledBlue80x80OFF.png"));
    QCOMPARE(picture("labelNovalumFiber"), QStringLiteral("ledBlue80x80OFF.png"));
    QCOMPARE(label(*m_window, "labelLaserStatusText")->text(), QStringLiteral("Disconnected"));
    QCOMPARE(systemId(), QString());
    QVERIFY(!label(*m_window, "labelSystemId")->toolTip().contains(QStringLiteral("1234")));
}

void tst_WindowConnection::replugShowsTheDevicesState()
{
    QVERIFY(m_illuminator->connectTo(*m_window));
    m_illuminator->shutters = {true, true, false, false, false, false, false, false};
    QTRY_VERIFY(Column(*m_window, 2).shutter->isChecked());
    m_illuminator->bench().wire().unplug();
    QTRY_VERIFY(!m_window->device()->isOpen());
    // Away from the computer the device was switched off and on: everything closed, warming up.
    m_illuminator->shutters = {};
    m_illuminator->obeysShutters = false;
    m_illuminator->mode = "warmup";
    QVERIFY(m_illuminator->bench().wire().plug(QStringLiteral("ttyVYR1")));
    QTRY_COMPARE(label(*m_window, "labelLaserStatusText")->text(), QStringLiteral("Warm-up"));
    QTRY_VERIFY(!Column(*m_window, 1).shutter->isChecked());
    QVERIFY(!Column(*m_window, 2).shutter->isChecked());
    QVERIFY(!m_window->scenario()->channelByNumber(1)->isShutterOpen());
    QCOMPARE(picture("labelLaserOnOff"), QStringLiteral("LaserOff.png"));
    QCOMPARE(picture("labelLaserStatus"), QStringLiteral("Circle_LaserWarmup.png"));
}

void tst_WindowConnection::unpluggedWhileReadingTheIdentity()
{
    m_illuminator->bench().setResponder({});
    m_illuminator->bench().setAnswers({{"v", "VYRApp V2.7.0\n"},
                                       {"v?a", "VYRApp V2.7.0\n"},
                                       {"v?l", "Loader V1.5.0\n"},
                                       {"isloadervalid", "Yes\n"},
                                       {"isappvalid", "Yes\n"},
                                       {"prod_config", ""}});
    m_illuminator->bench().setDefaultAnswer("ok\n");
    connect(&m_illuminator->bench().wire(), &Simulator::Wire::lineReceived, m_window.get(),
            [this](const QByteArray& line) {
                if (line == "prod_config") {
                    m_illuminator->bench().wire().unplug();
                }
            });
    m_window->device()->checkConnectionStatus();
    QTRY_VERIFY(!m_window->device()->isOpen() && m_illuminator->bench().count("prod_config") == 1);
    QTRY_COMPARE(label(*m_window, "labelLaserStatusText")->text(), QStringLiteral("Disconnected"));
    QCOMPARE(systemId(), QString());
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowConnection::closingStoresTheLayout()
{
    m_window->resize(1200, 900);
    QTest::mouseClick(m_window->findChild<QPushButton*>(QStringLiteral("pushButtonExpandCollapseWindow")),
                      Qt::LeftButton);
    QVERIFY(m_window->close());
    QCOMPARE(m_bench->stored(QStringLiteral("Window Minimized")).toBool(), true);
    QCOMPARE(m_bench->stored(QStringLiteral("geometry")).toByteArray(), m_window->saveGeometry());
    QCOMPARE(m_bench->stored(QStringLiteral("windowState")).toByteArray(), m_window->saveState(0));
    // The rest is stored after the event loop has ended.
    QVERIFY(!m_bench->stored(QStringLiteral("Device Com Port")).isValid());
    m_window->saveSettings();
    QCOMPARE(m_bench->stored(QStringLiteral("Device Com Port")).toString(), QStringLiteral("COM4"));
}

void tst_WindowConnection::closingIsRefusedDuringAnUpdate()
{
    {
        const Update::InProgress run(*m_window->update());
        QVERIFY(!m_window->close());
        QVERIFY(m_window->isVisible());
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
        QCOMPARE(m_bench->settingsFileContent(), QByteArray());
    }
    QVERIFY(m_window->close());
    QVERIFY(!m_window->isVisible());
}

void tst_WindowConnection::closingEndsAWaitAtOnce()
{
    QVERIFY(m_illuminator->connectTo(*m_window));
    m_window->device()->setPolling(false);
    QCOMPARE(m_window->device()->waitWhileBusy(), 0);
    m_illuminator->bench().setResponder({});
    m_illuminator->bench().setDefaultAnswer({});
    runLater(m_window.get(), std::chrono::milliseconds(100), [this] { QVERIFY(m_window->close()); });
    QElapsedTimer clock;
    clock.start();
    QVERIFY(m_window->device()->goLoader() != DeviceResult::Ok); // would wait for 45 s
    QVERIFY(clock.elapsed() < 2000);
    QVERIFY(!m_window->isVisible());
    // Whoever comes back from a wait finds a link that refuses and widgets that are still there.
    m_window->setLaserOn(false);
    Column(*m_window, 1).slider->setValue(5);
    QVERIFY(m_bench->log().contains(QStringLiteral("setChannelIntensity error -40010")));
    m_window->saveSettings();
    m_window.reset();
}

QTEST_MAIN(tst_WindowConnection)
#include "tst_WindowConnection.moc"
