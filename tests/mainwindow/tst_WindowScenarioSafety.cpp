#include "device/Device.h"
#include "mainwindow/ScenarioBench.h"
#include "scenario/Scenario.h"
#include "update/Update.h"

#include <QTest>

namespace {
using Shutters = std::array<bool, 8>;
constexpr Shutters allClosed{};
constexpr Shutters firstOpen{true, false, false, false, false, false, false, false};
constexpr Shutters secondOpen{false, true, false, false, false, false, false, false};
} // namespace

/// What loading a scenario must never do: let out light that nobody asked for.
class tst_WindowScenarioSafety : public ScenarioWindowTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildScenarioWindow()); }
    void cleanup() { removeScenarioWindow(); }
    void polarityStaysUnderExternalControl();
    void shutterMovedByHandIsLeftAlone();
    void hiddenChannelIsNotOpened();
    void closingWithoutADeviceIsKeptInMind();
    void notLoadedIntoTheLoader();
    void nothingIsAskedDuringAnUpdate();
    void aScenarioOvertakesAClosing();
    void whatTheInputsOpenedIsNotOpenedAgain();
    void notSavedWhileItIsLoaded();
};

void tst_WindowScenarioSafety::polarityStaysUnderExternalControl()
{
    m_window->onInvertTTLChanged(0, true);
    QVERIFY(keepScenario(QStringLiteral("inverted"), allClosed));
    m_window->onInvertTTLChanged(0, false);
    m_window->onShutterControlChanged(0);
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();
    QVERIFY(loadWhole(QStringLiteral("inverted")));
    QVERIFY(!m_illuminator->commands().contains("ttl_invert:405=1"));
    // What the settings dialog shows of it is still what the device has.
    QVERIFY(!laser(1).isTtlInverted());
    QTRY_VERIFY(m_boxes->sawOneWarning(QStringLiteral(
        "Not everything is as in the scenario:\n\n405nm:\nTTL polarity change not allowed.  System is in "
        "External Shutter Control Mode.")));
    QTRY_VERIFY(isModifiedShown());
}

void tst_WindowScenarioSafety::shutterMovedByHandIsLeftAlone()
{
    QVERIFY(keepScenario(QStringLiteral("first"), firstOpen));
    QVERIFY(reportShutters({true, true, false, false, false, false, false, false}));
    m_illuminator->obeysShutters = false;
    load(QStringLiteral("first"));
    QVERIFY(m_illuminator->waitForCommand("shutter:445=0"));
    // The loading waits for the second to close; meanwhile the operator closes the first.
    QTest::mouseClick(Column(*m_window, 1).shutter, Qt::LeftButton);
    QVERIFY(m_illuminator->waitForCommand("shutter:405=0"));
    m_illuminator->obeysShutters = true;
    m_illuminator->shutters = allClosed;
    QTRY_VERIFY(statusText(*m_window).startsWith(QLatin1String("Scenario loaded: ")));
    QVERIFY(m_illuminator->settle(*m_window));
    QVERIFY(!m_illuminator->commands().contains("shutter:405=1"));
    QCOMPARE(m_illuminator->shutters, allClosed);
}

void tst_WindowScenarioSafety::hiddenChannelIsNotOpened()
{
    laser(2).setVisible(false);
    QVERIFY(keepScenario(QStringLiteral("hidden"), secondOpen));
    QVERIFY(loadWhole(QStringLiteral("hidden")));
    QVERIFY(!m_illuminator->commands().contains("shutter:445=1"));
    QTRY_VERIFY(m_boxes->sawOneWarning(
        QStringLiteral("Not everything is as in the scenario:\n\n445nm:\nThe channel is hidden.")));
}

void tst_WindowScenarioSafety::closingWithoutADeviceIsKeptInMind()
{
    QVERIFY(keepScenario(QStringLiteral("dark"), allClosed));
    QVERIFY(reportShutters(firstOpen));
    m_illuminator->bench().wire().unplug();
    QTRY_VERIFY(!m_window->device()->isOpen());
    load(QStringLiteral("dark"));
    QTRY_VERIFY(!laser(1).isShutterOpen());
    m_illuminator->clearCommands();
    QVERIFY(m_illuminator->bench().wire().plug());
    QVERIFY(m_illuminator->connectTo(*m_window));
    QVERIFY(m_illuminator->commands().contains("shutter:405=0"));
    QVERIFY(!m_illuminator->commands().contains("shutter:405=1"));
}

void tst_WindowScenarioSafety::notLoadedIntoTheLoader()
{
    QVERIFY(keepScenario(QStringLiteral("first"), firstOpen));
    m_illuminator->bench().wire().unplug();
    QTRY_VERIFY(!m_window->device()->isOpen());
    m_illuminator->image = "Loader V1.5.0";
    QVERIFY(m_illuminator->bench().wire().plug());
    QVERIFY(m_illuminator->connectTo(*m_window));
    m_illuminator->clearCommands();
    load(QStringLiteral("first"));
    QVERIFY(m_boxes->sawOneWarning(
        QStringLiteral("The device does not run its application. Nothing was changed.")));
    QCOMPARE(m_dialogs->dialogs(), 0);
    QVERIFY(m_illuminator->commands().isEmpty());
}

void tst_WindowScenarioSafety::nothingIsAskedDuringAnUpdate()
{
    QVERIFY(keepScenario(QStringLiteral("second"), secondOpen));
    QVERIFY(reportShutters(firstOpen));
    m_window->device()->setPolling(false);
    m_illuminator->obeysShutters = false;
    load(QStringLiteral("second"));
    QVERIFY(m_illuminator->waitForCommand("shutter:405=0"));
    QVERIFY(QTest::qWaitFor([this] { return m_window->device()->waitWhileBusy() == DeviceResult::Ok; }));
    const Update::InProgress run(*m_window->update());
    const int asked = m_illuminator->bench().count("shutter?");
    QVERIFY(!QTest::qWaitFor([&] { return m_illuminator->bench().count("shutter?") > asked; }, 1000));
}

void tst_WindowScenarioSafety::aScenarioOvertakesAClosing()
{
    QVERIFY(keepScenario(QStringLiteral("first"), firstOpen));
    QVERIFY(reportShutters(firstOpen));
    m_illuminator->obeysShutters = false;
    // Closed by hand, not reported yet, and wanted open after that.
    QTest::mouseClick(Column(*m_window, 1).shutter, Qt::LeftButton);
    load(QStringLiteral("first"));
    QVERIFY(m_illuminator->waitForCommand("shutter:405=1"));
    const QByteArrayList commands = m_illuminator->commands();
    QVERIFY(commands.indexOf("shutter:405=0") >= 0);
    QVERIFY(commands.indexOf("shutter:405=0") < commands.indexOf("shutter:405=1"));
}

void tst_WindowScenarioSafety::whatTheInputsOpenedIsNotOpenedAgain()
{
    m_window->onShutterControlChanged(0);
    QVERIFY(m_illuminator->settle(*m_window));
    QVERIFY(reportShutters({true, true, true, true, true, true, true, true}));
    m_illuminator->bench().wire().unplug();
    QTRY_VERIFY(!m_window->device()->isOpen());
    m_window->onShutterControlChanged(1);
    m_illuminator->clearCommands();
    QVERIFY(m_illuminator->bench().wire().plug());
    QVERIFY(m_illuminator->connectTo(*m_window));
    const QList<QByteArray> commands = m_illuminator->commands();
    QCOMPARE(commands.count("shutter:405=0"), 1);
    for (const QByteArray& command : commands) {
        QVERIFY2(!command.startsWith("shutter:") || command.endsWith("=0"), command.constData());
    }
}

void tst_WindowScenarioSafety::notSavedWhileItIsLoaded()
{
    QVERIFY(keepScenario(QStringLiteral("second"), secondOpen));
    QVERIFY(reportShutters(firstOpen));
    m_illuminator->obeysShutters = false;
    load(QStringLiteral("second"));
    QVERIFY(m_illuminator->waitForCommand("shutter:405=0"));
    const int dialogs = m_dialogs->dialogs();
    m_window->findChild<QAbstractButton*>(QStringLiteral("pushButtonSaveScenario"))->click();
    QCOMPARE(statusText(*m_window), QStringLiteral("The scenario is still being loaded."));
    QCOMPARE(m_dialogs->dialogs(), dialogs);
    m_illuminator->obeysShutters = true;
    m_illuminator->shutters = allClosed;
    QTRY_COMPARE(m_illuminator->shutters, secondOpen);
}

QTEST_MAIN(tst_WindowScenarioSafety)
#include "tst_WindowScenarioSafety.moc"
