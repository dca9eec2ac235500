#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "scenario/Scenario.h"
#include "update/Update.h"

#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>

#include <cmath>
#include <memory>

namespace {
const std::array<const char*, 8> wavelengths{"405", "445", "470", "520", "528", "555", "640", "730"};

QByteArray setCommand(int number, const QByteArray& level)
{
    return QByteArray("set:") + wavelengths.at(static_cast<std::size_t>(number - 1)) + '=' + level;
}

void typeInto(QLineEdit* edit, const QString& text)
{
    edit->selectAll();
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
}
} // namespace

/// Sliders, percentages, arrows and names: what is sent for them, and what the device reports.
class tst_WindowChannels : public ConnectedWindowTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void sliderStepIsOneCommand_data() { allChannels_data(); }
    void sliderStepIsOneCommand();
    void everyValueWhileDraggingIsSent();
    void typedPercentageIsOneCommand_data() { allChannels_data(); }
    void typedPercentageIsOneCommand();
    void typingHundredMovesTheSliderOnce();
    void refusedPercentageSendsNothing();
    void refusedPercentageIsTakenBack();
    void arrows_data() { allChannels_data(); }
    void arrows();
    void arrowAtTheEndStillSends_data();
    void arrowAtTheEndStillSends();
    void arrowHalves_data();
    void arrowHalves();
    void arrowReleasedOutsideDoesNothing();
    void arrowNeedsTheLeftButton();
    void typedName_data() { allChannels_data(); }
    void typedName();
    void reportedLevels_data();
    void reportedLevels();
    void reportedLevelsSendNothingAndLeaveTheModel();
    void refusingLinkLeavesTheSlider();
    void errorOfTheLinkIsLogged();
    void commandsWithoutPort();
    void nothingIsSentDuringAnUpdate();

private:
    static void allChannels_data();
};

void tst_WindowChannels::init()
{
    qRegisterMetaType<channel*>();
    QVERIFY(buildConnectedWindow());
    m_illuminator->clearCommands();
}

void tst_WindowChannels::cleanup()
{
    removeWindow();
}

void tst_WindowChannels::allChannels_data()
{
    QTest::addColumn<int>("number");
    for (int number = 1; number <= 8; ++number) {
        QTest::addRow("channel %d", number) << number;
    }
}

void tst_WindowChannels::sliderStepIsOneCommand()
{
    QFETCH(int, number);
    const Column column(*m_window, number);
    column.slider->setFocus();
    QTest::keyClick(column.slider, Qt::Key_Up);
    QVERIFY(m_illuminator->waitForCommand(setCommand(number, "1.00")));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>{setCommand(number, "1.00")});
    QCOMPARE(column.slider->value(), 1);
    QCOMPARE(column.percentage->text(), QStringLiteral("1"));
    for (int other = 1; other <= 8; ++other) {
        QCOMPARE(m_window->scenario()->channelByNumber(static_cast<quint8>(other))->intensity(),
                 other == number ? 1.0F : 0.0F);
    }
}

void tst_WindowChannels::everyValueWhileDraggingIsSent()
{
    const Column column(*m_window, 2);
    QList<QByteArray> expected;
    for (int value = 10; value <= 30; value += 5) {
        column.slider->setValue(value);
        expected.append(setCommand(2, QByteArray::number(value) + ".00"));
    }
    QTRY_COMPARE(m_illuminator->commands(), expected);
}

void tst_WindowChannels::typedPercentageIsOneCommand()
{
    QFETCH(int, number);
    const Column column(*m_window, number);
    typeInto(column.percentage, QStringLiteral("42"));
    QVERIFY(m_illuminator->waitForCommand(setCommand(number, "42.00")));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>{setCommand(number, "42.00")});
    QCOMPARE(column.slider->value(), 42);
    QCOMPARE(m_window->scenario()->channelByNumber(static_cast<quint8>(number))->intensity(), 42.0F);
}

void tst_WindowChannels::typingHundredMovesTheSliderOnce()
{
    const Column column(*m_window, 3);
    const QSignalSpy changes(m_window.get(), &PelorinMainWindow::channelIntensityChanged);
    typeInto(column.percentage, QStringLiteral("100"));
    QCOMPARE(column.slider->value(), 100);
    QCOMPARE(changes.size(), 1);
}

void tst_WindowChannels::refusedPercentageSendsNothing()
{
    const Column column(*m_window, 3);
    const QSignalSpy changes(m_window.get(), &PelorinMainWindow::channelIntensityChanged);
    column.percentage->selectAll();
    QTest::keyClicks(column.percentage, QStringLiteral("abc-.,"));
    QCOMPARE(column.percentage->text(), QStringLiteral("0"));
    column.percentage->clear();
    QTest::keyClick(column.percentage, Qt::Key_Return);
    QVERIFY(changes.isEmpty());
}

void tst_WindowChannels::refusedPercentageIsTakenBack()
{
    const Column column(*m_window, 3);
    column.slider->setValue(25);
    for (const char* text : {"", "101", "999"}) {
        column.percentage->setFocus();
        QTRY_VERIFY(column.percentage->hasFocus());
        column.percentage->selectAll();
        QTest::keyClick(column.percentage, Qt::Key_Delete);
        QTest::keyClicks(column.percentage, QLatin1String(text));
        QTest::keyClick(column.percentage, Qt::Key_Return);
        QCOMPARE(column.slider->value(), 25);
        QCOMPARE(column.percentage->text(), QLatin1String(text));
        // What cannot be sent must not stay on the screen as if it were the channel's level.
        column.slider->setFocus();
        QTRY_COMPARE(column.percentage->text(), QStringLiteral("25"));
    }
    QCOMPARE(m_window->scenario()->channelByNumber(3)->intensity(), 25.0F);
}

void tst_WindowChannels::arrows()
{
    QFETCH(int, number);
    const Column column(*m_window, number);
    clickHalf(column.arrows, true);
    clickHalf(column.arrows, true);
    clickHalf(column.arrows, false);
    QCOMPARE(column.percentage->text(), QStringLiteral("1"));
    QCOMPARE(column.slider->value(), 1);
    QTRY_COMPARE(m_illuminator->commands(),
                 QList<QByteArray>(
                     {setCommand(number, "1.00"), setCommand(number, "2.00"), setCommand(number, "1.00")}));
}

void tst_WindowChannels::arrowAtTheEndStillSends_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<bool>("up");
    QTest::newRow("up at 100") << 100 << true;
    QTest::newRow("down at 0") << 0 << false;
}

void tst_WindowChannels::arrowAtTheEndStillSends()
{
    QFETCH(int, start);
    QFETCH(bool, up);
    const Column column(*m_window, 5);
    column.slider->setValue(start);
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();
    clickHalf(column.arrows, up);
    QCOMPARE(column.percentage->text(), QString::number(start));
    QTRY_COMPARE(m_illuminator->commands(),
                 QList<QByteArray>{setCommand(5, QByteArray::number(start) + ".00")});
}

void tst_WindowChannels::arrowHalves_data()
{
    QTest::addColumn<int>("fromMiddle");
    QTest::addColumn<int>("step");
    QTest::newRow("the middle is up") << 0 << 1;
    QTest::newRow("right of the middle is down") << 1 << -1;
}

void tst_WindowChannels::arrowHalves()
{
    QFETCH(int, fromMiddle);
    QFETCH(int, step);
    const Column column(*m_window, 1);
    column.slider->setValue(50);
    const QPoint position(column.arrows->width() / 2 + fromMiddle, 3);
    QTest::mouseClick(column.arrows, Qt::LeftButton, Qt::NoModifier, position);
    QCOMPARE(column.slider->value(), 50 + step);
}

void tst_WindowChannels::arrowReleasedOutsideDoesNothing()
{
    const Column column(*m_window, 1);
    QTest::mousePress(column.arrows, Qt::LeftButton);
    QTest::mouseRelease(column.arrows, Qt::LeftButton, Qt::NoModifier, QPoint(-2, 3));
    QTest::mousePress(column.arrows, Qt::LeftButton);
    QTest::mouseRelease(column.arrows, Qt::LeftButton, Qt::NoModifier, QPoint(3, column.arrows->height()));
    QCOMPARE(column.slider->value(), 0);
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowChannels::arrowNeedsTheLeftButton()
{
    const Column column(*m_window, 1);
    QTest::mouseClick(column.arrows, Qt::RightButton, Qt::NoModifier, QPoint(3, 3));
    QTest::mouseClick(column.arrows, Qt::MiddleButton, Qt::NoModifier, QPoint(3, 3));
    QCOMPARE(column.slider->value(), 0);
}

void tst_WindowChannels::typedName()
{
    QFETCH(int, number);
    const Column column(*m_window, number);
    const QSignalSpy changes(m_window.get(), &PelorinMainWindow::channelNameChanged);
    typeInto(column.name, QStringLiteral("GFP <b>%1</b>"));
    QCOMPARE(changes.size(), 1);
    QCOMPARE(m_window->scenario()->channelByNumber(static_cast<quint8>(number))->name(),
             QStringLiteral("GFP <b>%1</b>"));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowChannels::reportedLevels_data()
{
    QTest::addColumn<float>("level");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("slider");
    QTest::newRow("too high") << 150.7F << QStringLiteral("100") << 100;
    QTest::newRow("negative") << -3.0F << QStringLiteral("0") << 0;
    QTest::newRow("rounded down") << 33.4F << QStringLiteral("33") << 33;
    QTest::newRow("rounded up") << 33.5F << QStringLiteral("34") << 34;
    QTest::newRow("infinite") << INFINITY << QStringLiteral("100") << 100;
    QTest::newRow("no number") << NAN << QString() << 20;
}

void tst_WindowChannels::reportedLevels()
{
    QFETCH(float, level);
    const Column column(*m_window, 4);
    std::array<float, 8> levels{};
    levels.at(3) = 20.0F;
    m_window->onIntensityChanged(levels.data());
    levels.at(3) = level;
    m_window->onIntensityChanged(levels.data());
    QTEST(column.percentage->text(), "text");
    QTEST(column.slider->value(), "slider");
    QCOMPARE(Column(*m_window, 3).percentage->text(), QStringLiteral("0"));
}

void tst_WindowChannels::reportedLevelsSendNothingAndLeaveTheModel()
{
    const QSignalSpy changes(m_window.get(), &PelorinMainWindow::channelIntensityChanged);
    m_illuminator->levels = {"1", "2", "3", "4", "5", "6", "7", "8"};
    m_illuminator->intensitySource = "EXT";
    const Column last(*m_window, 8);
    QTRY_COMPARE(last.percentage->text(), QStringLiteral("8"));
    for (int number = 1; number <= 8; ++number) {
        QCOMPARE(Column(*m_window, number).slider->value(), number);
        QCOMPARE(m_window->scenario()->channelByNumber(static_cast<quint8>(number))->intensity(), 0.0F);
    }
    QVERIFY(changes.isEmpty());
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowChannels::refusingLinkLeavesTheSlider()
{
    const Column column(*m_window, 2);
    column.slider->setValue(77);
    m_bench->log().clear();
    m_window->updateChannelIntensity(m_window->scenario()->channelByNumber(2), NAN);
    QCOMPARE(
        m_bench->log().count(QStringLiteral("setChannelIntensity error -40014"), QsLogging::LogLevel::Error),
        1);
    QCOMPARE(column.slider->value(), 77);
    QCOMPARE(column.percentage->text(), QStringLiteral("77"));
}

void tst_WindowChannels::errorOfTheLinkIsLogged()
{
    m_illuminator->bench().wire().unplug();
    QTRY_VERIFY(!m_window->device()->isOpen());
    m_bench->log().clear();
    Column(*m_window, 1).slider->setValue(9);
    QCOMPARE(
        m_bench->log().count(QStringLiteral("setChannelIntensity error -40010"), QsLogging::LogLevel::Error),
        1);
    QCOMPARE(Column(*m_window, 1).percentage->text(), QStringLiteral("9"));
}

void tst_WindowChannels::commandsWithoutPort()
{
    const WindowBench& bench = *m_bench;
    m_window.reset();
    m_illuminator.reset();
    const auto window = bench.start();
    Column(*window, 1).slider->setValue(5);
    QCOMPARE(m_bench->log().count(QStringLiteral("setChannelIntensity error -40010")), 1);
    window->updateChannelIntensity(nullptr, 5.0F);
    QCOMPARE(m_bench->log().count(QStringLiteral("setChannelIntensity error")), 1);
}

void tst_WindowChannels::nothingIsSentDuringAnUpdate()
{
    {
        const Update::InProgress run(*m_window->update());
        Column(*m_window, 1).slider->setValue(5);
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
        m_window->statusBar()->clearMessage();
        typeInto(Column(*m_window, 2).percentage, QStringLiteral("6"));
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
        m_window->statusBar()->clearMessage();
        clickHalf(Column(*m_window, 3).arrows, true);
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
        m_window->statusBar()->clearMessage();
        m_window->onInvertTTLChanged(3, true);
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
    }
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    // What was chosen is kept, and goes to the device when it connects again.
    QCOMPARE(m_window->scenario()->channelByNumber(1)->intensity(), 5.0F);
    QVERIFY(m_window->scenario()->channelByNumber(4)->isTtlInverted());
}

QTEST_MAIN(tst_WindowChannels)
#include "tst_WindowChannels.moc"
