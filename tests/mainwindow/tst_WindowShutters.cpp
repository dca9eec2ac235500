#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "scenario/Scenario.h"
#include "settings/SettingsDialog.h"
#include "support/BoxAnswerer.h"
#include "update/Update.h"

#include <QStatusBar>
#include <QTest>

#include <memory>

namespace {
const QString externalText =
    QStringLiteral("Shutter change not allowed.  System is in External Shutter Control Mode.");
const QString interlockText = QStringLiteral("Channel is disabled due to fiber interlock.");
const QString limitText = QStringLiteral("System at limit of enabled channels.  Please disable a channel.");
} // namespace

/// The shutter buttons: what a click sends, what refuses it, and that nothing else ever opens a shutter.
class tst_WindowShutters : public ConnectedWindowTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void clickOpensAndCloses_data();
    void clickOpensAndCloses();
    void buttonWaitsForTheReport();
    void intensityGoesFirst();
    void intensityIsLeftOutInExternalControl();
    void closingSendsNoIntensity();
    void externalControlRefuses_data();
    void externalControlRefuses();
    void interlockRefusesOpeningOnly();
    void limitRefusesTheFifth();
    void closingIsAllowedAtTheLimit();
    void refusalDuringTheSendingOfTheIntensity();
    void failureIsTold();
    void updateRefuses();
    void otherButtonsAndPlacesDoNothing();
    void keysNeverOpen_data();
    void keysNeverOpen();
    void programmaticClickChangesNothing();
    void secondClickDuringABoxDoesNothing();
    void reportsAreShownAndLogged();
    void externalInputsAreShown();

private:
    QPushButton* button(int number) const { return Column(*m_window, number).shutter; }
    bool openByClick(int number);

    std::unique_ptr<BoxAnswerer> m_boxes;
};

void tst_WindowShutters::init()
{
    m_boxes = std::make_unique<BoxAnswerer>();
    QVERIFY(buildConnectedWindow());
    m_illuminator->clearCommands();
}

void tst_WindowShutters::cleanup()
{
    m_boxes.reset();
    removeWindow();
}

bool tst_WindowShutters::openByClick(int number)
{
    QTest::mouseClick(button(number), Qt::LeftButton);
    return QTest::qWaitFor([this, number] { return button(number)->isChecked(); });
}

void tst_WindowShutters::clickOpensAndCloses_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QByteArray>("wavelength");
    const std::array<const char*, 8> wavelengths{"405", "445", "470", "520", "528", "555", "640", "730"};
    for (int number = 1; number <= 8; ++number) {
        QTest::addRow("channel %d", number)
            << number << QByteArray(wavelengths.at(static_cast<std::size_t>(number - 1)));
    }
}

void tst_WindowShutters::clickOpensAndCloses()
{
    QFETCH(int, number);
    QFETCH(QByteArray, wavelength);
    QTest::mouseClick(button(number), Qt::LeftButton);
    QTRY_COMPARE(m_illuminator->commands(),
                 QList<QByteArray>({"set:" + wavelength + "=0.00", "shutter:" + wavelength + "=1"}));
    QTRY_VERIFY(button(number)->isChecked());
    QCOMPARE(button(number)->text(), QStringLiteral("Shutter Open"));
    QVERIFY(m_window->scenario()->channelByNumber(static_cast<quint8>(number))->isShutterOpen());
    m_illuminator->clearCommands();
    QTest::mouseClick(button(number), Qt::LeftButton);
    QTRY_COMPARE(m_illuminator->commands(), QList<QByteArray>{"shutter:" + wavelength + "=0"});
    QTRY_VERIFY(!button(number)->isChecked());
    QCOMPARE(button(number)->text(), QStringLiteral("Shutter Closed"));
    QVERIFY(m_boxes->boxes().isEmpty());
}

void tst_WindowShutters::buttonWaitsForTheReport()
{
    m_illuminator->obeysShutters = false;
    QTest::mouseClick(button(2), Qt::LeftButton);
    QVERIFY(m_illuminator->waitForCommand("shutter:445=1"));
    QVERIFY(m_illuminator->settle(*m_window));
    QVERIFY(!button(2)->isChecked());
    QCOMPARE(button(2)->text(), QStringLiteral("Shutter Closed"));
    QVERIFY(!m_window->scenario()->channelByNumber(2)->isShutterOpen());
}

void tst_WindowShutters::intensityGoesFirst()
{
    Column(*m_window, 6).slider->setValue(35);
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();
    QTest::mouseClick(button(6), Qt::LeftButton);
    QTRY_COMPARE(m_illuminator->commands(), QList<QByteArray>({"set:555=35.00", "shutter:555=1"}));
}

void tst_WindowShutters::intensityIsLeftOutInExternalControl()
{
    emit m_window->settingsDialog()->intensityControlChanged(0);
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();
    QTest::mouseClick(button(6), Qt::LeftButton);
    QTRY_COMPARE(m_illuminator->commands(), QList<QByteArray>({"shutter:555=1"}));
}

void tst_WindowShutters::closingSendsNoIntensity()
{
    QVERIFY(openByClick(1));
    m_illuminator->clearCommands();
    QTest::mouseClick(button(1), Qt::LeftButton);
    QTRY_COMPARE(m_illuminator->commands(), QList<QByteArray>{"shutter:405=0"});
}

void tst_WindowShutters::externalControlRefuses_data()
{
    QTest::addColumn<bool>("open");
    QTest::newRow("closed shutter") << false;
    QTest::newRow("open shutter") << true;
}

void tst_WindowShutters::externalControlRefuses()
{
    QFETCH(bool, open);
    m_illuminator->shutters.at(3) = open;
    QTRY_COMPARE(button(4)->isChecked(), open);
    emit m_window->settingsDialog()->shutterControlChanged(0);
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();
    QTest::mouseClick(button(4), Qt::LeftButton);
    QVERIFY(m_boxes->sawOneWarning(externalText));
    QCOMPARE(m_boxes->boxes().first().parent, m_window.get());
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    QCOMPARE(button(4)->isChecked(), open);
}

void tst_WindowShutters::interlockRefusesOpeningOnly()
{
    QVERIFY(openByClick(6));
    m_window->onWarningStateChanged(true, QStringLiteral("WARN: 555 fiber"));
    QVERIFY(!m_window->scenario()->channelByNumber(6)->isEnabled());
    m_illuminator->clearCommands();
    QTest::mouseClick(button(6), Qt::LeftButton);
    QTRY_VERIFY(!button(6)->isChecked());
    QVERIFY(m_boxes->boxes().isEmpty());
    m_illuminator->clearCommands();
    QTest::mouseClick(button(6), Qt::LeftButton);
    QVERIFY(m_boxes->sawOneWarning(interlockText));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowShutters::limitRefusesTheFifth()
{
    m_illuminator->shutters = {true, true, false, true, false, false, true, false};
    QTRY_VERIFY(button(7)->isChecked());
    m_illuminator->clearCommands();
    QTest::mouseClick(button(3), Qt::LeftButton);
    QVERIFY(m_boxes->sawOneWarning(limitText));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    QVERIFY(!button(3)->isChecked());
}

void tst_WindowShutters::closingIsAllowedAtTheLimit()
{
    m_illuminator->shutters = {true, true, true, true, false, false, false, false};
    QTRY_VERIFY(button(4)->isChecked());
    QTest::mouseClick(button(4), Qt::LeftButton);
    QTRY_VERIFY(!button(4)->isChecked());
    QVERIFY(openByClick(5));
    QVERIFY(m_boxes->boxes().isEmpty());
}

void tst_WindowShutters::refusalDuringTheSendingOfTheIntensity()
{
    // Sending can wait, and a report that comes in the wait forbids what was allowed before it.
    QVERIFY(m_illuminator->leaveOneQueued(*m_window));
    m_illuminator->thinkTime = std::chrono::milliseconds(150);
    runLater(m_window.get(), std::chrono::milliseconds(50),
             [this] { m_window->onWarningStateChanged(true, QStringLiteral("WARN: Novalum fiber")); });
    QVERIFY(m_window->scenario()->channelByNumber(1)->isEnabled());
    QTest::mouseClick(button(1), Qt::LeftButton);
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->bench().count("set:405=0.00"), 1);
    QCOMPARE(m_illuminator->bench().count("shutter:405=1"), 0);
    QVERIFY(m_boxes->sawOneWarning(interlockText));
}

void tst_WindowShutters::failureIsTold()
{
    m_illuminator->bench().wire().unplug();
    QTRY_VERIFY(!m_window->device()->isOpen());
    QTest::mouseClick(button(1), Qt::LeftButton);
    QCOMPARE(statusText(*m_window), QStringLiteral("Unable to change shutter state. Error = -40010"));
    QVERIFY(!button(1)->isChecked());
}

void tst_WindowShutters::updateRefuses()
{
    {
        const Update::InProgress run(*m_window->update());
        QTest::mouseClick(button(1), Qt::LeftButton);
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
    }
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    QVERIFY(m_boxes->boxes().isEmpty());
}

void tst_WindowShutters::otherButtonsAndPlacesDoNothing()
{
    QTest::mouseClick(button(1), Qt::RightButton);
    QTest::mouseClick(button(1), Qt::MiddleButton);
    QTest::mousePress(button(1), Qt::LeftButton);
    QTest::mouseRelease(button(1), Qt::LeftButton, Qt::NoModifier, QPoint(-1, 5));
    QTest::mousePress(button(1), Qt::LeftButton);
    QTest::mouseRelease(button(1), Qt::LeftButton, Qt::NoModifier, QPoint(button(1)->width(), 5));
    QTest::mouseMove(button(1));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    QVERIFY(!button(1)->isChecked());
}

void tst_WindowShutters::keysNeverOpen_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Space") << int(Qt::Key_Space);
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Enter") << int(Qt::Key_Enter);
}

void tst_WindowShutters::keysNeverOpen()
{
    QFETCH(int, key);
    button(1)->setFocus();
    QTRY_VERIFY(button(1)->hasFocus());
    QTest::keyClick(button(1), static_cast<Qt::Key>(key));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    QVERIFY(!button(1)->isChecked());
}

void tst_WindowShutters::programmaticClickChangesNothing()
{
    button(1)->click();
    button(1)->animateClick();
    QVERIFY(m_illuminator->settle(*m_window));
    QVERIFY(!button(1)->isChecked());
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowShutters::secondClickDuringABoxDoesNothing()
{
    emit m_window->settingsDialog()->shutterControlChanged(0);
    m_boxes.reset();
    int clicksInTheBox = 0;
    BoxAnswerer answerer;
    runLater(m_window.get(), std::chrono::milliseconds(0), [this, &clicksInTheBox] {
        // The box may not be up yet; the click counts in either case, as the first one is still handled.
        QTest::mouseClick(button(2), Qt::LeftButton);
        ++clicksInTheBox;
    });
    QTest::mouseClick(button(1), Qt::LeftButton);
    QCOMPARE(clicksInTheBox, 1);
    QVERIFY(answerer.sawOneWarning(externalText));
}

void tst_WindowShutters::reportsAreShownAndLogged()
{
    m_bench->log().clear();
    const std::array<bool, 8> states{true, false, true, false, false, false, false, true};
    m_window->onShutterChanged(states.data());
    for (int number = 1; number <= 8; ++number) {
        const bool open = states.at(static_cast<std::size_t>(number - 1));
        QCOMPARE(button(number)->isChecked(), open);
        QCOMPARE(button(number)->text(),
                 open ? QStringLiteral("Shutter Open") : QStringLiteral("Shutter Closed"));
        QCOMPARE(m_window->scenario()->channelByNumber(static_cast<quint8>(number))->isShutterOpen(), open);
        QCOMPARE(m_bench->log().count(QStringLiteral("Received change in shutter state. Channel %1 State %2")
                                          .arg(number)
                                          .arg(open ? QStringLiteral("true") : QStringLiteral("false")),
                                      QsLogging::LogLevel::Info),
                 1);
    }
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowShutters::externalInputsAreShown()
{
    emit m_window->settingsDialog()->shutterControlChanged(0);
    m_illuminator->shutters.at(0) = true;
    QTRY_VERIFY(button(1)->isChecked());
    m_illuminator->shutters.at(0) = false;
    QTRY_VERIFY(!button(1)->isChecked());
}

QTEST_MAIN(tst_WindowShutters)
#include "tst_WindowShutters.moc"
