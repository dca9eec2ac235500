#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "scenario/Scenario.h"
#include "settings/SettingsDialog.h"
#include "support/BoxAnswerer.h"

#include <QLayout>
#include <QTest>

#include <algorithm>
#include <memory>

/// An operator who is faster than the device, or who uses the keyboard: what is shown, kept and sent is the
/// last choice, and the limit holds.
class tst_WindowHaste : public ConnectedWindowTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void newerLevelWins();
    void newerIntensityControlIsShown();
    void newerShutterControlIsShown();
    void fifthClickIsRefusedBeforeTheReports();
    void doubleClickIsNoFifth();
    void refusedOpeningCountsForAMomentOnly();
    void clickDuringWarmupSendsNothing();
    void typedLevelGoesBeforeTheLaser();
    void externalLevelStaysTheDevices();
    void passingThroughKeepsTheStoredLevel();
    void controlReturnActs();
    void bareKeysDoNotAct_data();
    void bareKeysDoNotAct();
    void tabOrderIsThatOfTheEye();
    void longNameShowsItsBeginning();
    void collapsedWindowCutsNothing();

private:
    Column column(int number) const { return Column(*m_window, number); }
    bool goExternal();

    std::unique_ptr<BoxAnswerer> m_boxes;
};

void tst_WindowHaste::init()
{
    m_boxes = std::make_unique<BoxAnswerer>();
    QVERIFY(buildConnectedWindow());
    m_illuminator->clearCommands();
}

void tst_WindowHaste::cleanup()
{
    m_boxes.reset();
    removeWindow();
}

void tst_WindowHaste::newerLevelWins()
{
    QVERIFY(m_illuminator->leaveOneQueued(*m_window));
    m_illuminator->thinkTime = std::chrono::milliseconds(150);
    runLater(m_window.get(), std::chrono::milliseconds(50), [this] { column(3).slider->setValue(40); });

    column(3).slider->setValue(10); // waits for the device, and 40 comes meanwhile

    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(column(3).slider->value(), 40);
    QCOMPARE(m_window->scenario()->channelByNumber(3)->intensity(), 40.0F);
    const QList<QByteArray> commands = m_illuminator->commands();
    QVERIFY(commands.indexOf("set:470=40.00") > commands.indexOf("set:470=10.00"));
}

void tst_WindowHaste::newerIntensityControlIsShown()
{
    QVERIFY(m_illuminator->leaveOneQueued(*m_window));
    m_illuminator->thinkTime = std::chrono::milliseconds(150);
    runLater(m_window.get(), std::chrono::milliseconds(50),
             [this] { emit m_window->settingsDialog()->intensityControlChanged(1); });

    emit m_window->settingsDialog()->intensityControlChanged(0);

    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(label(*m_window, "labelIntensityControl")->text(), QStringLiteral("Intensity Control: USB"));
}

void tst_WindowHaste::newerShutterControlIsShown()
{
    QVERIFY(m_illuminator->leaveOneQueued(*m_window));
    m_illuminator->thinkTime = std::chrono::milliseconds(150);
    runLater(m_window.get(), std::chrono::milliseconds(50),
             [this] { emit m_window->settingsDialog()->shutterControlChanged(0); });

    emit m_window->settingsDialog()->shutterControlChanged(1);

    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(label(*m_window, "labelShutterControl")->text(),
             QStringLiteral("Shutter Control: External Digital"));
}

void tst_WindowHaste::fifthClickIsRefusedBeforeTheReports()
{
    for (int number = 1; number <= 5; ++number) {
        QTest::mouseClick(column(number).shutter, Qt::LeftButton);
    }
    QVERIFY(m_illuminator->settle(*m_window));
    QVERIFY(m_boxes->sawOneWarning(
        QStringLiteral("System at limit of enabled channels.  Please disable a channel.")));
    const auto& shutters = m_illuminator->shutters;
    QCOMPARE(std::count(shutters.begin(), shutters.end(), true), 4);
    QVERIFY(!shutters.at(4));
}

void tst_WindowHaste::doubleClickIsNoFifth()
{
    for (int number = 1; number <= 3; ++number) {
        QTest::mouseClick(column(number).shutter, Qt::LeftButton);
    }
    QTest::mouseClick(column(4).shutter, Qt::LeftButton);
    QTest::mouseClick(column(4).shutter, Qt::LeftButton);
    QVERIFY(m_illuminator->settle(*m_window));
    QVERIFY(m_boxes->boxes().isEmpty());
    QVERIFY(m_illuminator->commands().contains("shutter:520=1"));
}

void tst_WindowHaste::refusedOpeningCountsForAMomentOnly()
{
    m_illuminator->obeysShutters = false;
    for (int number = 1; number <= 4; ++number) {
        QTest::mouseClick(column(number).shutter, Qt::LeftButton);
    }
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->obeysShutters = true;
    const auto opens = [this] {
        QTest::mouseClick(column(5).shutter, Qt::LeftButton);
        return m_illuminator->settle(*m_window) && m_illuminator->shutters.at(4);
    };
    QTRY_VERIFY_WITH_TIMEOUT(opens(), 4000);
}

void tst_WindowHaste::clickDuringWarmupSendsNothing()
{
    m_illuminator->mode = "warmup";
    QTRY_COMPARE(label(*m_window, "labelLaserStatusText")->text(), QStringLiteral("Warm-up"));
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();

    QTest::mouseClick(label(*m_window, "labelLaserOnOff"), Qt::LeftButton);

    QCOMPARE(statusText(*m_window), QStringLiteral("System warming up.  Not ready to run."));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowHaste::typedLevelGoesBeforeTheLaser()
{
    m_window->activateWindow();
    column(4).percentage->setFocus();
    QTRY_VERIFY(column(4).percentage->hasFocus());
    column(4).percentage->selectAll();
    QTest::keyClicks(column(4).percentage, QStringLiteral("50"));

    QTest::mouseClick(label(*m_window, "labelLaserOnOff"), Qt::LeftButton);

    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(column(4).slider->value(), 50);
    const QList<QByteArray> commands = m_illuminator->commands();
    QVERIFY(commands.contains("set:520=50.00"));
    QVERIFY(commands.indexOf("set:520=50.00") < commands.indexOf("run!"));
}

/// External control with the device's own level 40 on channel 2; false when that does not come to be shown.
bool tst_WindowHaste::goExternal()
{
    m_illuminator->levels.at(1) = "40";
    m_illuminator->intensitySource = "EXT";
    emit m_window->settingsDialog()->intensityControlChanged(0);
    return QTest::qWaitFor([this] { return column(2).slider->value() == 40; }) &&
           m_illuminator->settle(*m_window);
}

void tst_WindowHaste::externalLevelStaysTheDevices()
{
    QVERIFY(goExternal());
    column(2).slider->setValue(37);
    QVERIFY(m_illuminator->settle(*m_window));
    QVERIFY(m_illuminator->commands().contains("set:445=37.00"));
    QCOMPARE(column(2).slider->value(), 40);
    QCOMPARE(column(2).percentage->text(), QStringLiteral("40"));
    QCOMPARE(m_window->scenario()->channelByNumber(2)->intensity(), 37.0F);

    // Under this computer's control the slider is the operator's again.
    emit m_window->settingsDialog()->intensityControlChanged(1);
    m_illuminator->intensitySource = "PC";
    column(2).slider->setValue(12);
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(column(2).slider->value(), 12);
}

void tst_WindowHaste::passingThroughKeepsTheStoredLevel()
{
    column(2).slider->setValue(55);
    QVERIFY(m_illuminator->settle(*m_window));
    QVERIFY(goExternal());
    m_illuminator->clearCommands();
    m_window->activateWindow();
    column(2).percentage->setFocus();
    QTRY_VERIFY(column(2).percentage->hasFocus());
    QTest::keyClick(column(2).percentage, Qt::Key_Tab);
    QVERIFY(!column(2).percentage->hasFocus());
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    QCOMPARE(m_window->scenario()->channelByNumber(2)->intensity(), 55.0F);
}

void tst_WindowHaste::controlReturnActs()
{
    QTest::keyClick(column(1).shutter, Qt::Key_Return, Qt::ControlModifier);
    QVERIFY(m_illuminator->waitForCommand("shutter:405=1"));
    QTest::keyClick(label(*m_window, "labelLaserOnOff"), Qt::Key_Return, Qt::ControlModifier);
    QVERIFY(m_illuminator->waitForCommand("run!"));
    QTest::keyClick(label(*m_window, "labelLaserStatus"), Qt::Key_Enter, Qt::ControlModifier);
    QVERIFY(m_illuminator->waitForCommand("clear"));
}

void tst_WindowHaste::bareKeysDoNotAct_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("return") << Qt::Key_Return;
    QTest::newRow("enter") << Qt::Key_Enter;
    QTest::newRow("space") << Qt::Key_Space;
}

void tst_WindowHaste::bareKeysDoNotAct()
{
    QFETCH(Qt::Key, key);
    for (QWidget* widget : {static_cast<QWidget*>(column(1).shutter),
                            static_cast<QWidget*>(label(*m_window, "labelLaserOnOff")),
                            static_cast<QWidget*>(label(*m_window, "labelLaserStatus"))}) {
        widget->setFocus();
        QTest::keyClick(widget, key);
    }
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowHaste::tabOrderIsThatOfTheEye()
{
    QStringList expected{"labelLaserOnOff",        "labelLaserStatus",   "pushButtonSaveScenario",
                         "pushButtonLoadScenario", "pushButtonSettings", "pushButtonExpandCollapseWindow"};
    for (int number = 1; number <= channelCount; ++number) {
        for (const char* name : {"lineEditSliderName", "lineEditSliderPercentage", "pushButtonChannelShutter",
                                 "verticalSliderChannel"}) {
            expected.append(QLatin1String(name) + QString::number(number));
        }
    }
    QStringList order;
    auto* widget = label(*m_window, "labelLaserOnOff");
    const QWidget* next = widget;
    do {
        if ((next->focusPolicy() & Qt::TabFocus) != 0 && next->isVisibleTo(m_window.get())) {
            order.append(next->objectName());
            QVERIFY2(!next->accessibleName().isEmpty(), qPrintable(next->objectName()));
            QVERIFY2(!next->toolTip().isEmpty(), qPrintable(next->objectName()));
        }
        next = next->nextInFocusChain();
    } while (next != widget);
    QCOMPARE(order, expected);
}

void tst_WindowHaste::longNameShowsItsBeginning()
{
    m_window.reset();
    m_bench->store(QStringLiteral("Channel1/Channel Name"), QString(200, QLatin1Char('x')));
    m_window = m_bench->start();
    QCOMPARE(column(1).name->cursorPosition(), 0);
}

void tst_WindowHaste::collapsedWindowCutsNothing()
{
    QTest::mouseClick(m_window->findChild<QWidget*>(QStringLiteral("pushButtonExpandCollapseWindow")),
                      Qt::LeftButton);
    QCOMPARE(m_window->size(), QSize(800, 400));
    m_window->resize(800, 100);
    QTRY_VERIFY(m_window->height() > 100);
    for (int number = 1; number <= channelCount; ++number) {
        const QWidget* frame = column(number).frame;
        QVERIFY(frame->height() >= frame->layout()->minimumSize().height());
    }
    QTest::mouseClick(m_window->findChild<QWidget*>(QStringLiteral("pushButtonExpandCollapseWindow")),
                      Qt::LeftButton);
    QCOMPARE(m_window->size(), QSize(1024, 775));
}

QTEST_MAIN(tst_WindowHaste)
#include "tst_WindowHaste.moc"
