#include "QsLog2_1_0/QsLog.h"
#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "scenario/Scenario.h"
#include "settings/Console.h"
#include "settings/SettingsDialog.h"
#include "update/Update.h"

#include <QIntValidator>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

#include <memory>

/// The window's construction, the command line and every connection made at the start.
class tst_WindowStart : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_bench = std::make_unique<WindowBench>(); }
    void cleanup() { m_bench.reset(); }
    void construction();
    void logsItsVersionOnce();
    void formIsComplete_data();
    void formIsComplete();
    void percentagesAcceptWholeNumbersOnly_data();
    void percentagesAcceptWholeNumbersOnly();
    void titles_data();
    void titles();
    void loadingTwiceReplacesTheChannels();
    void channelsHaveTheirDefaults();
    void settingsButtonShowsTheDialog();
    void linkReachesTheWindow();
    void linkReachesTheDialog();
    void terminalReachesTheLink();
    void portChoiceReachesTheLink();
    void dialogReachesTheWindow();
    void closingTheDialogResumesPolling();
    void closingTheDialogDuringAnUpdateDoesNot();
    void verboseLoggingSwitchesTheLevel();
    void manyWindowsInOneProcess();

private:
    std::unique_ptr<WindowBench> m_bench;
};

void tst_WindowStart::construction()
{
    PelorinMainWindow window;
    QCOMPARE(window.windowTitle(), QStringLiteral("VYR Laser Illuminator 02.07.00"));
    for (const Qt::WindowType flag : {Qt::CustomizeWindowHint, Qt::WindowCloseButtonHint,
                                      Qt::WindowMinimizeButtonHint, Qt::WindowMaximizeButtonHint}) {
        QVERIFY(window.windowFlags().testFlag(flag));
    }
    QVERIFY(window.settingsDialog() == nullptr);
    QVERIFY(window.device() != nullptr);
    QVERIFY(window.device()->parent() == nullptr);
    QCOMPARE(window.update()->parent(), &window);
    QCOMPARE(window.scenario()->parent(), &window);
    QCOMPARE(window.scenario()->channels().size(), 8);
    QCOMPARE(window.isUpdateForced(), false);
}

void tst_WindowStart::logsItsVersionOnce()
{
    const PelorinMainWindow window;
    QCOMPARE(m_bench->log().count(QStringLiteral("Program started: "), QsLogging::LogLevel::Info), 1);
    QVERIFY(m_bench->log().contains(QStringLiteral(" 02.07.00")));
}

void tst_WindowStart::formIsComplete_data()
{
    QTest::addColumn<int>("number");
    for (int number = 1; number <= 8; ++number) {
        QTest::addRow("channel %d", number) << number;
    }
}

void tst_WindowStart::formIsComplete()
{
    QFETCH(int, number);
    const PelorinMainWindow window;
    const Column column(window, number);
    QVERIFY(column.frame && column.lowerPart && column.name && column.percentage && column.arrows &&
            column.slider && column.shutter);
    QCOMPARE(column.slider->orientation(), Qt::Vertical);
    QCOMPARE(column.slider->minimum(), 0);
    QCOMPARE(column.slider->maximum(), 100);
    QVERIFY(column.shutter->isCheckable());
    QVERIFY(!column.shutter->isChecked());
    QCOMPARE(column.shutter->text(), QStringLiteral("Shutter Closed"));
    QCOMPARE(column.percentage->validator(), Column(window, 1).percentage->validator());
}

void tst_WindowStart::percentagesAcceptWholeNumbersOnly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("0") << QStringLiteral("0") << true;
    QTest::newRow("100") << QStringLiteral("100") << true;
    QTest::newRow("101") << QStringLiteral("101") << false;
    QTest::newRow("999") << QStringLiteral("999") << false;
    QTest::newRow("minus") << QStringLiteral("-1") << false;
    QTest::newRow("fraction") << QStringLiteral("1.5") << false;
    QTest::newRow("separator") << QStringLiteral("1,0") << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("letters") << QStringLiteral("ab") << false;
    QTest::newRow("other digits") << QString::fromUtf8("٥") << false;
}

void tst_WindowStart::percentagesAcceptWholeNumbersOnly()
{
    QFETCH(QString, text);
    const PelorinMainWindow window;
    const auto* validator = qobject_cast<const QIntValidator*>(Column(window, 4).percentage->validator());
    QVERIFY(validator != nullptr);
    QCOMPARE(validator->bottom(), 0);
    QCOMPARE(validator->top(), 100);
    QCOMPARE(validator->parent(), &window);
    int position = 0;
    QTEST(validator->validate(text, position) == QValidator::Acceptable, "accepted");
}

void tst_WindowStart::titles_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("diagnostic");
    QTest::addColumn<bool>("forced");
    const auto row = [](const char* arguments, const char* marks, bool diagnostic, bool forced) {
        QTest::newRow(*arguments == '\0' ? "none" : arguments)
            << QString::fromLatin1(arguments)
            << QString(QLatin1String("VYR Laser Illuminator 02.07.00") + QLatin1String(marks)) << diagnostic
            << forced;
    };
    row("", "", false, false);
    row("-diag", " (diag)", true, false);
    row("-forceupdate", " (forceupdate)", false, true);
    row("-maxchannels", " (max channels = 4)", false, false);
    row("-diag -maxchannels", " (diag) (max channels = 4)", true, false);
    row("-diag -forceupdate -maxchannels", " (diag) (forceupdate) (max channels = 4)", true, true);
    row("-maxchannels -forceupdate -diag", " (max channels = 4) (forceupdate) (diag)", true, true);
    row("-DIAG", "", false, false);
    row("my own setup.PRF -diag", "", false, false);
    row("  -diag", "", false, false);
}

void tst_WindowStart::titles()
{
    QFETCH(QString, arguments);
    QFETCH(bool, diagnostic);
    PelorinMainWindow window;
    window.processCommandLine(arguments);
    QTEST(window.windowTitle(), "title");
    QTEST(window.isUpdateForced(), "forced");
    QVERIFY(window.settingsDialog() != nullptr);
    QCOMPARE(window.settingsDialog()->parent(), &window);
    const auto* tabs = window.settingsDialog()->findChild<QTabWidget*>(QStringLiteral("tabWidget"));
    QCOMPARE(tabs->count(), diagnostic ? 7 : 5);
}

void tst_WindowStart::loadingTwiceReplacesTheChannels()
{
    PelorinMainWindow window;
    const Scenario* first = window.scenario();
    const channel* firstChannel = first->channelByNumber(1);
    window.loadSettings();
    QVERIFY(window.scenario() != first);
    QCOMPARE(window.scenario()->channels().size(), 8);
    QVERIFY(window.scenario()->channelByNumber(1) != firstChannel);
    QCOMPARE(window.findChildren<Scenario*>().size(), 2);

    // The window works on the second set; the first one stays untouched and alive.
    window.processCommandLine({});
    emit window.settingsDialog()->invertTTLChanged(0, true);
    QVERIFY(window.scenario()->channelByNumber(1)->isTtlInverted());
    QVERIFY(!firstChannel->isTtlInverted());
}

void tst_WindowStart::channelsHaveTheirDefaults()
{
    const PelorinMainWindow window;
    const QStringList wavelengths{QStringLiteral("405"), QStringLiteral("445"), QStringLiteral("470"),
                                  QStringLiteral("520"), QStringLiteral("528"), QStringLiteral("555"),
                                  QStringLiteral("640"), QStringLiteral("730")};
    for (int index = 0; index < 8; ++index) {
        const channel* laser = window.scenario()->channels().at(index);
        QCOMPARE(int(laser->index()), index);
        QCOMPARE(laser->wavelength(), wavelengths.at(index));
        QCOMPARE(laser->name(), QString(wavelengths.at(index) + QStringLiteral("nm")));
        QCOMPARE(laser->intensity(), 0.0F);
        QVERIFY(!laser->isShutterOpen());
        QVERIFY(laser->isVisible());
        QVERIFY(!laser->isEnabled());
        QVERIFY(!laser->isTtlInverted());
        QVERIFY(laser->colour().isValid());
        QVERIFY(laser->parent() == nullptr);
        QCOMPARE(Column(window, index + 1).name->text(), laser->name());
    }
}

void tst_WindowStart::settingsButtonShowsTheDialog()
{
    const auto window = m_bench->start();
    QVERIFY(!window->settingsDialog()->isVisible());
    auto* button = window->findChild<QPushButton*>(QStringLiteral("pushButtonSettings"));
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(window->settingsDialog()->isVisible());
    QVERIFY(!window->settingsDialog()->isModal());
    // A second click brings the same dialog forward.
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(window->settingsDialog()->isVisible());
    QCOMPARE(window->findChildren<SettingsDialog*>().size(), 1);
}

void tst_WindowStart::linkReachesTheWindow()
{
    const auto window = m_bench->start();
    Device* device = window->device();
    std::array<bool, 8> shutters{false, true};
    std::array<float, 8> levels{1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F, 7.0F, 8.0F};
    QByteArray bytes("Firmware Update 10%\n");

    emit device->portError(QStringLiteral("gone"));
    QCOMPARE(statusText(*window), QStringLiteral("Port error gone"));
    emit device->deviceDisconnected(QStringLiteral("P1"));
    QCOMPARE(statusText(*window), QStringLiteral("Device disconnected on P1"));
    emit device->deviceConnected(QStringLiteral("P2"));
    QCOMPARE(statusText(*window), QStringLiteral("Device connected on P2"));
    emit device->functionalModeChanged(FunctionalModeWarmup);
    QCOMPARE(statusText(*window), QStringLiteral("Warm up mode"));
    m_bench->log().clear();
    emit device->faultStateChanged(true, QStringLiteral("FAULT: hot"));
    QCOMPARE(m_bench->log().count(QStringLiteral("Received change in fault state from device = true")), 1);
    emit device->warningStateChanged(true, QStringLiteral("WARN: cold"));
    QCOMPARE(m_bench->log().count(QStringLiteral("Received change in warning state from device = true")), 1);
    emit device->shutterChanged(shutters.data());
    QVERIFY(Column(*window, 2).shutter->isChecked());
    emit device->intensityChanged(levels.data());
    QCOMPARE(Column(*window, 8).percentage->text(), QStringLiteral("8"));
    emit device->receivedDataFromDevice(bytes);
    QCOMPARE(statusText(*window), QStringLiteral("Firmware Update 10%"));
    // Each report is heard once.
    QCOMPARE(m_bench->log().count(QStringLiteral("Received change in shutter state. Channel 2")), 1);
}

void tst_WindowStart::linkReachesTheDialog()
{
    const auto window = m_bench->start(QStringLiteral("-diag"));
    const QLabel* status = label(*window->settingsDialog(), "labelComStatus");
    emit window->device()->deviceConnected(QStringLiteral("P1"));
    QCOMPARE(status->text(), QStringLiteral("Device connected on P1"));
    emit window->device()->deviceDisconnected(QStringLiteral("P1"));
    QCOMPARE(status->text(), QStringLiteral("Device disconnected on P1"));
    QByteArray bytes("ok\n");
    emit window->device()->receivedDataFromDevice(bytes);
    QCOMPARE(window->settingsDialog()->console()->toPlainText(), QStringLiteral("ok\n"));
    std::array<bool, 8> inverted{true};
    emit window->device()->invertedStateChanged(inverted.data());
    QVERIFY(disconnect(window->device(), &Device::invertedStateChanged, window->settingsDialog(),
                       &SettingsDialog::onInvertedTTLStateChanged));
}

void tst_WindowStart::terminalReachesTheLink()
{
    FakeIlluminator illuminator;
    const auto window = m_bench->start(QStringLiteral("-diag"));
    QVERIFY(illuminator.connectTo(*window));
    QTest::keyClicks(window->settingsDialog()->console(), QStringLiteral("temps"));
    QTest::keyClick(window->settingsDialog()->console(), Qt::Key_J, Qt::ControlModifier); // a line feed
    QTRY_VERIFY(std::any_of(illuminator.bench().received().begin(), illuminator.bench().received().end(),
                            [](const ScriptedBench::Received& line) { return line.line.contains("temps"); }));
}

void tst_WindowStart::portChoiceReachesTheLink()
{
    const auto window = m_bench->start();
    QCOMPARE(window->device()->portName(), QStringLiteral("COM4"));
    emit window->settingsDialog()->comPortChanged(QStringLiteral("ttyACM5"));
    QCOMPARE(window->device()->portName(), QStringLiteral("ttyACM5"));
}

void tst_WindowStart::dialogReachesTheWindow()
{
    const auto window = m_bench->start();
    SettingsDialog* dialog = window->settingsDialog();
    emit dialog->shutterControlChanged(0);
    QCOMPARE(label(*window, "labelShutterControl")->text(),
             QStringLiteral("Shutter Control: External Digital"));
    emit dialog->intensityControlChanged(0);
    QCOMPARE(label(*window, "labelIntensityControl")->text(),
             QStringLiteral("Intensity Control: External Analog"));
    emit dialog->sleepTimerChanged(17);
    QCOMPARE(label(*window, "labelSleepTimer")->text(), QStringLiteral("Sleep Timer: 17 min"));
    emit dialog->sleepTimerEnableChanged(false);
    QCOMPARE(label(*window, "labelSleepTimer")->text(), QStringLiteral("Sleep Timer Disabled"));
    emit dialog->invertTTLChanged(6, true);
    QVERIFY(window->scenario()->channelByNumber(7)->isTtlInverted());
    emit dialog->speckleControlChanged(0);
    emit dialog->enhancedDiagsChanged(true);
    window->saveSettings();
    QCOMPARE(m_bench->stored(QStringLiteral("Speckle Reducer Enable")).toBool(), false);
    QCOMPARE(m_bench->stored(QStringLiteral("Verbose Data Logging")).toBool(), true);
}

void tst_WindowStart::closingTheDialogResumesPolling()
{
    FakeIlluminator illuminator;
    const auto window = m_bench->start();
    QVERIFY(illuminator.connectTo(*window));
    window->device()->setPolling(false);
    QCOMPARE(window->device()->waitWhileBusy(), 0);
    const int polls = illuminator.bench().count("f_mode?");
    window->settingsDialog()->show();
    QVERIFY(QTest::qWaitForWindowExposed(window->settingsDialog()));
    window->settingsDialog()->close();
    QVERIFY(illuminator.bench().waitForLine("f_mode?", polls + 2));
}

void tst_WindowStart::closingTheDialogDuringAnUpdateDoesNot()
{
    FakeIlluminator illuminator;
    const auto window = m_bench->start();
    QVERIFY(illuminator.connectTo(*window));
    window->device()->setPolling(false);
    QCOMPARE(window->device()->waitWhileBusy(), 0);
    const int polls = illuminator.bench().count("f_mode?");
    const Update::InProgress run(*window->update());
    window->settingsDialog()->show();
    window->settingsDialog()->close();
    QVERIFY(!illuminator.bench().waitForLine("f_mode?", polls + 2, std::chrono::milliseconds(700)));
}

void tst_WindowStart::verboseLoggingSwitchesTheLevel()
{
    const auto window = m_bench->start();
    QCOMPARE(QsLogging::Logger::instance().level(), QsLogging::LogLevel::Info);
    emit window->settingsDialog()->enhancedDiagsChanged(true);
    QCOMPARE(QsLogging::Logger::instance().level(), QsLogging::LogLevel::Trace);
    emit window->settingsDialog()->enhancedDiagsChanged(false);
    QCOMPARE(QsLogging::Logger::instance().level(), QsLogging::LogLevel::Info);
}

void tst_WindowStart::manyWindowsInOneProcess()
{
    for (int i = 0; i < 5; ++i) {
        const auto window = m_bench->start(QStringLiteral("-diag"));
        QCOMPARE(window->windowTitle(), QStringLiteral("VYR Laser Illuminator 02.07.00 (diag)"));
        QVERIFY(window->close());
    }
}

QTEST_MAIN(tst_WindowStart)
#include "tst_WindowStart.moc"
