#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "settings/SettingsDialog.h"
#include "update/Update.h"

#include <QStatusBar>
#include <QTest>

#include <memory>

/// Switching the laser system on and off, clearing faults, and the pictures of every state.
class tst_WindowLaser : public ConnectedWindowTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void pictures_data();
    void pictures();
    void interlockPicture();
    void onInIdleAsksForRun();
    void onSendsIntensitiesFirst();
    void onLeavesIntensitiesOutInExternalControl();
    void offInRunAsksForIdle();
    void onInRunModeGoesToIdle();
    void onDuringWarmupIsRefused();
    void onWithAFaultIsRefused();
    void onInAnUnknownModeIsRefusedSilently();
    void failuresAreLogged();
    void picturesFollowTheReportOnly();
    void clearFaults();
    void clicksOutsideOrWithOtherButtonsDoNothing();
    void laserFlowDoesNotNest();
    void secondClickInAWaitDoesNothing();
    void updateRefuses();

private:
    QLabel* onOff() const { return label(*m_window, "labelLaserOnOff"); }
};

void tst_WindowLaser::init()
{
    QVERIFY(buildConnectedWindow());
    quiet();
}

void tst_WindowLaser::cleanup()
{
    removeWindow();
}

void tst_WindowLaser::pictures_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("fault");
    QTest::addColumn<QString>("warning");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("onOff");
    QTest::addColumn<bool>("necselLit");
    QTest::addColumn<bool>("novalumLit");
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("message");
    struct Mode
    {
        int mode;
        const char* name;
        const char* picture;
        const char* onOff;
        const char* word;
        const char* message;
        bool ready;
        bool messageWithFault;
    };
    const std::array<Mode, 4> modes{
        {{0, "warmup", "Circle_LaserWarmup.png", "LaserOff.png", "Warm-up", "Warm up mode", false, true},
         {1, "idle", "Circle_LaserReady.png", "LaserOff.png", "Idle", "Idle mode", true, false},
         {2, "run", "Circle_LaserOn.png", "Laser On.png", "Run", "Run mode", true, false},
         {7, "unknown", "Circle_LaserReady.png", "LaserOff.png", "Idle", "Idle mode", false, false}}};
    const std::array<const char*, 5> warnings{"ok", "WARN: 555 fiber", "WARN: NOVALUM fiber",
                                              "WARN: 555 and Novalum", "WARN: something else"};
    for (const Mode& mode : modes) {
        for (const bool fault : {false, true}) {
            for (const char* warning : warnings) {
                const QString text = QString::fromLatin1(warning);
                const bool warns = text != QLatin1String("ok");
                const bool tellsMode = !warns && (!fault || mode.messageWithFault);
                QTest::addRow("%s%s, %s", mode.name, fault ? " with fault" : "", warning)
                    << mode.mode << fault << text
                    << QString::fromLatin1(fault ? "Circle_LaserFault.png" : mode.picture)
                    << QString::fromLatin1(fault ? "LaserOff.png" : mode.onOff)
                    << (mode.ready && !fault && !text.contains(QLatin1String("555")))
                    << (mode.ready && !fault && !text.contains(QLatin1String("Novalum"), Qt::CaseInsensitive))
                    << QString::fromLatin1(fault ? "Fault" : mode.word)
                    << QString::fromLatin1(tellsMode ? mode.message : "");
            }
        }
    }
}

void tst_WindowLaser::pictures()
{
    QFETCH(int, mode);
    QFETCH(bool, fault);
    QFETCH(QString, warning);
    QFETCH(bool, necselLit);
    QFETCH(bool, novalumLit);
    m_illuminator->fault = fault ? "FAULT: hot" : "ok";
    m_illuminator->warning = warning.toLatin1();
    const bool warns = warning != QLatin1String("ok");
    FakeIlluminator::pollEverything(*m_window);
    QCOMPARE(m_window->device()->faultState(), fault);
    QCOMPARE(m_window->device()->warningState(), warns);
    m_window->onWarningStateChanged(warns, warning);
    m_window->statusBar()->clearMessage();

    m_window->onFunctionalModeChanged(static_cast<FunctionalMode_t>(mode));
    QTEST(picture("labelLaserStatus"), "status");
    QTEST(picture("labelLaserOnOff"), "onOff");
    QCOMPARE(picture("labelNecselFiber"),
             necselLit ? QStringLiteral("ledBlue80x80.png") : QStringLiteral("ledBlue80x80OFF.png"));
    QCOMPARE(picture("labelNovalumFiber"),
             novalumLit ? QStringLiteral("ledBlue80x80.png") : QStringLiteral("ledBlue80x80OFF.png"));
    QTEST(label(*m_window, "labelLaserStatusText")->text(), "word");
    QTEST(statusText(*m_window), "message");
}

/// Nothing sets the flag yet; it chooses the picture of an idle system with a fault and no other.
void tst_WindowLaser::interlockPicture()
{
    LaserDisplay display(*m_window);
    LaserState state;
    state.fault = true;
    state.interlockImage = true;
    display.showState(state);
    QCOMPARE(picture("labelLaserStatus"), QStringLiteral("Circle_LaserInterlock.png"));
    state.mode = FunctionalModeRun;
    display.showState(state);
    QCOMPARE(picture("labelLaserStatus"), QStringLiteral("Circle_LaserFault.png"));
}

void tst_WindowLaser::onInIdleAsksForRun()
{
    QTest::mouseClick(onOff(), Qt::LeftButton);
    QVERIFY(m_illuminator->waitForCommand("run!"));
    QCOMPARE(m_bench->log().count(QStringLiteral("Laser On/Off pressed << true"), QsLogging::LogLevel::Info),
             1);
    QCOMPARE(m_bench->log().count(QStringLiteral("Attempt to set run mode"), QsLogging::LogLevel::Info), 1);
    QVERIFY(m_bench->log().lines(QsLogging::LogLevel::Error).isEmpty());
}

void tst_WindowLaser::onSendsIntensitiesFirst()
{
    Column(*m_window, 3).slider->setValue(40);
    quiet();
    QTest::mouseClick(onOff(), Qt::LeftButton);
    QTRY_COMPARE(m_illuminator->commands(),
                 QList<QByteArray>({"set:405=0.00", "set:445=0.00", "set:470=40.00", "set:520=0.00",
                                    "set:528=0.00", "set:555=0.00", "set:640=0.00", "set:730=0.00", "run!"}));
}

void tst_WindowLaser::onLeavesIntensitiesOutInExternalControl()
{
    emit m_window->settingsDialog()->intensityControlChanged(0);
    quiet();
    QTest::mouseClick(onOff(), Qt::LeftButton);
    QTRY_COMPARE(m_illuminator->commands(), QList<QByteArray>{"run!"});
}

void tst_WindowLaser::offInRunAsksForIdle()
{
    QVERIFY(waitForMode("run", QStringLiteral("Run")));
    quiet();
    QTest::mouseClick(onOff(), Qt::LeftButton);
    QTRY_COMPARE(m_illuminator->commands(), QList<QByteArray>{"idle!"});
    QCOMPARE(m_bench->log().count(QStringLiteral("Laser On/Off pressed << false")), 1);
}

void tst_WindowLaser::onInRunModeGoesToIdle()
{
    QVERIFY(waitForMode("run", QStringLiteral("Run")));
    quiet();
    m_window->setLaserOn(true);
    QTRY_COMPARE(m_illuminator->commands(), QList<QByteArray>{"idle!"});
    QCOMPARE(m_bench->log().count(QStringLiteral("Ignoring set to run mode, going to idle"),
                                  QsLogging::LogLevel::Error),
             1);
}

void tst_WindowLaser::onDuringWarmupIsRefused()
{
    emit m_window->settingsDialog()->intensityControlChanged(0);
    QVERIFY(waitForMode("warmup", QStringLiteral("Warm-up")));
    quiet();
    QTest::mouseClick(onOff(), Qt::LeftButton);
    QCOMPARE(statusText(*m_window), QStringLiteral("System warming up.  Not ready to run."));
    QCOMPARE(m_bench->log().count(QStringLiteral("Not ready to run or error"), QsLogging::LogLevel::Error),
             1);
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    QCOMPARE(picture("labelLaserOnOff"), QStringLiteral("LaserOff.png"));
}

void tst_WindowLaser::onWithAFaultIsRefused()
{
    m_illuminator->fault = "FAULT: interlock";
    QTRY_VERIFY(m_window->device()->faultState());
    quiet();
    m_window->setLaserOn(true);
    QCOMPARE(statusText(*m_window), QStringLiteral("System in fault state.  Not ready to run."));
    QCOMPARE(m_bench->log().count(QStringLiteral("Not ready to run or error"), QsLogging::LogLevel::Error),
             1);
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowLaser::onInAnUnknownModeIsRefusedSilently()
{
    m_window->onFunctionalModeChanged(static_cast<FunctionalMode_t>(9));
    m_window->statusBar()->clearMessage();
    m_window->setLaserOn(true);
    QCOMPARE(statusText(*m_window), QString());
    QCOMPARE(m_bench->log().count(QStringLiteral("Not ready to run or error"), QsLogging::LogLevel::Error),
             1);
}

void tst_WindowLaser::failuresAreLogged()
{
    m_illuminator->bench().wire().unplug();
    QTRY_VERIFY(!m_window->device()->isOpen());
    m_bench->log().clear();
    m_window->setLaserOn(true);
    QCOMPARE(m_bench->log().count(QStringLiteral("Error setting run mode"), QsLogging::LogLevel::Error), 1);
    m_window->setLaserOn(false);
    QCOMPARE(m_bench->log().count(QStringLiteral("Error setting idle mode"), QsLogging::LogLevel::Error), 1);
    QCOMPARE(m_bench->log().count(QStringLiteral("BUSY")), 0);
}

void tst_WindowLaser::picturesFollowTheReportOnly()
{
    QTest::mouseClick(onOff(), Qt::LeftButton);
    QVERIFY(m_illuminator->waitForCommand("run!"));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(picture("labelLaserOnOff"), QStringLiteral("LaserOff.png"));
    QVERIFY(waitForMode("run", QStringLiteral("Run")));
    QCOMPARE(picture("labelLaserOnOff"), QStringLiteral("Laser On.png"));
    QCOMPARE(m_bench->log().count(QStringLiteral("Mode Changed to RUN"), QsLogging::LogLevel::Info), 1);
    QVERIFY(waitForMode("warmup", QStringLiteral("Warm-up")));
    QCOMPARE(m_bench->log().count(QStringLiteral("Mode Changed to WARMUP"), QsLogging::LogLevel::Info), 1);
    QVERIFY(waitForMode("idle", QStringLiteral("Idle")));
    QCOMPARE(m_bench->log().count(QStringLiteral("Mode Changed to IDLE"), QsLogging::LogLevel::Info), 1);
    m_window->onFunctionalModeChanged(static_cast<FunctionalMode_t>(9));
    QCOMPARE(m_bench->log().count(QStringLiteral("Mode Changed")), 3);
}

void tst_WindowLaser::clearFaults()
{
    QTest::mouseClick(label(*m_window, "labelLaserStatus"), Qt::LeftButton);
    QTRY_COMPARE(m_illuminator->commands(), QList<QByteArray>{"clear"});
    QCOMPARE(m_bench->log().count(QStringLiteral("Clear faults pressed <<"), QsLogging::LogLevel::Info), 1);
}

void tst_WindowLaser::clicksOutsideOrWithOtherButtonsDoNothing()
{
    for (const char* name : {"labelLaserOnOff", "labelLaserStatus"}) {
        QLabel* image = label(*m_window, name);
        QTest::mouseClick(image, Qt::RightButton);
        QTest::mouseClick(image, Qt::MiddleButton);
        QTest::mousePress(image, Qt::LeftButton);
        QTest::mouseRelease(image, Qt::LeftButton, Qt::NoModifier, QPoint(image->width(), 1));
        QTest::mousePress(image, Qt::LeftButton);
        QTest::mouseRelease(image, Qt::LeftButton, Qt::NoModifier, QPoint(1, -1));
    }
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowLaser::laserFlowDoesNotNest()
{
    // A device that takes its time keeps the first flow waiting behind a queued command.
    QVERIFY(m_illuminator->leaveOneQueued(*m_window));
    m_illuminator->clearCommands();
    m_illuminator->thinkTime = std::chrono::milliseconds(150);
    bool nested = false;
    runLater(m_window.get(), std::chrono::milliseconds(50), [this, &nested] {
        nested = true;
        m_window->setLaserOn(true);
    });
    m_window->setLaserOn(false);
    QVERIFY(nested);
    QCOMPARE(m_bench->log().count(QStringLiteral("Laser On/Off button BUSY")), 1);
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>({"speckle=on", "idle!"}));
    // The guard is let go on every way out.
    m_bench->log().clear();
    m_window->setLaserOn(false);
    QCOMPARE(m_bench->log().count(QStringLiteral("Laser On/Off button BUSY")), 0);
}

void tst_WindowLaser::secondClickInAWaitDoesNothing()
{
    QVERIFY(m_illuminator->leaveOneQueued(*m_window));
    m_illuminator->clearCommands();
    m_bench->log().clear();
    m_illuminator->thinkTime = std::chrono::milliseconds(150);
    runLater(m_window.get(), std::chrono::milliseconds(50), [this] {
        QTest::mouseClick(onOff(), Qt::LeftButton);
        QTest::mouseClick(label(*m_window, "labelLaserStatus"), Qt::LeftButton);
    });
    QTest::mouseClick(label(*m_window, "labelLaserStatus"), Qt::LeftButton);
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>({"speckle=on", "clear"}));
    QCOMPARE(m_bench->log().count(QStringLiteral("Clear faults pressed <<")), 1);
    QCOMPARE(m_bench->log().count(QStringLiteral("Laser On/Off pressed")), 0);
}

void tst_WindowLaser::updateRefuses()
{
    {
        const Update::InProgress run(*m_window->update());
        QTest::mouseClick(onOff(), Qt::LeftButton);
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
        m_window->statusBar()->clearMessage();
        QTest::mouseClick(label(*m_window, "labelLaserStatus"), Qt::LeftButton);
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
        m_window->statusBar()->clearMessage();
        m_window->setLaserOn(false);
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
        emit m_window->settingsDialog()->shutterControlChanged(1);
        emit m_window->settingsDialog()->intensityControlChanged(0);
        emit m_window->settingsDialog()->speckleControlChanged(0);
        emit m_window->settingsDialog()->sleepTimerChanged(3);
        emit m_window->settingsDialog()->sleepTimerEnableChanged(false);
    }
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

QTEST_MAIN(tst_WindowLaser)
#include "tst_WindowLaser.moc"
