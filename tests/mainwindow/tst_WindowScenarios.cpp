#include "device/Device.h"
#include "mainwindow/ScenarioBench.h"
#include "scenario/Scenario.h"
#include "update/Update.h"

#include <QSettings>
#include <QTest>

namespace {
const QString limitText = QStringLiteral("System at limit of enabled channels.  Please disable a channel.");
const QString externalText =
    QStringLiteral("Shutter change not allowed.  System is in External Shutter Control Mode.");
const QString interlockText = QStringLiteral("Channel is disabled due to fiber interlock.");
const QString refusalsBegin = QStringLiteral("Not everything is as in the scenario:\n\n");

using Shutters = std::array<bool, 8>;
constexpr Shutters allClosed{};
constexpr Shutters firstFour{true, true, true, true, false, false, false, false};
constexpr Shutters lastFour{false, false, false, false, true, true, true, true};

QList<QByteArray> startingWith(const QList<QByteArray>& lines, const QByteArray& begin)
{
    QList<QByteArray> found;
    for (const QByteArray& line : lines) {
        if (line.startsWith(begin)) {
            found.append(line);
        }
    }
    return found;
}
} // namespace

/// Loading scenarios: what goes to the device in which order, and what is refused.
class tst_WindowScenarios : public ScenarioWindowTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildScenarioWindow()); }
    void cleanup() { removeScenarioWindow(); }
    void closesFirstAndOpensLast();
    void waitsForTheClosedOnesBeforeOpening();
    void opensThoughTheClosedOnesAreNotReported();
    void setsModelAndWidgets();
    void limitIsObeyed();
    void interlockIsObeyed();
    void externalShutterControlSendsNone();
    void externalIntensityControlSendsNone();
    void nothingWithoutADevice();
    void unpluggedWhileItWaits();
    void secondLoadReplacesTheFirst();
    void closesAnOpeningThatIsNotReportedYet();
    void refusedByAnUpdate();
    void updateThatBeginsWhileItWaits();
    void incompleteScenarioChangesNothing();
    void loadsWhileThePollRests();
    void windowGoesWhileItWaits();

private:
    bool loadHalf();
};

/// A scenario that closes four shutters and opens the others, at a device that takes the commands but moves
/// nothing for now.
bool tst_WindowScenarios::loadHalf()
{
    if (!keepScenario(QStringLiteral("B"), lastFour) || !reportShutters(firstFour)) {
        return false;
    }
    m_illuminator->obeysShutters = false;
    m_illuminator->clearCommands();
    load(QStringLiteral("B"));
    return m_illuminator->waitForCommand("shutter:520=0");
}

void tst_WindowScenarios::closesFirstAndOpensLast()
{
    QVERIFY(keepScenario(QStringLiteral("B"), lastFour));
    QVERIFY(reportShutters(firstFour));
    m_illuminator->clearCommands();
    QVERIFY(loadWhole(QStringLiteral("B")));

    const QList<QByteArray> commands = m_illuminator->commands();
    const QList<QByteArray> closings{"shutter:405=0", "shutter:445=0", "shutter:470=0", "shutter:520=0"};
    QCOMPARE(commands.mid(0, 4), closings);
    const auto firstOpening = commands.indexOf("shutter:528=1");
    QVERIFY(firstOpening > 4);
    // Levels and polarities of all eight lie between the closings and the first opening.
    const QList<QByteArray> between = commands.mid(4, firstOpening - 4);
    QCOMPARE(startingWith(between, "ttl_invert:").size(), 8);
    QVERIFY(startingWith(between, "set:").size() >= 8);
    QVERIFY(startingWith(between, "shutter:").isEmpty());
    QCOMPARE(startingWith(commands.mid(firstOpening), "shutter:"),
             QList<QByteArray>({"shutter:528=1", "shutter:555=1", "shutter:640=1", "shutter:730=1"}));
    QCOMPARE(m_illuminator->shutters, lastFour);
    QVERIFY(m_boxes->boxes().isEmpty());
    QTRY_VERIFY(!isModifiedShown());
    QCOMPARE(scenarioText(), QStringLiteral("Scenario: B"));
}

void tst_WindowScenarios::waitsForTheClosedOnesBeforeOpening()
{
    QVERIFY(loadHalf());
    QVERIFY(m_illuminator->settle(*m_window));
    QVERIFY(!m_illuminator->commands().contains("shutter:528=1"));
    m_illuminator->obeysShutters = true;
    m_illuminator->shutters = allClosed;
    QVERIFY(m_illuminator->waitForCommand("shutter:730=1"));
    QVERIFY(m_boxes->boxes().isEmpty());
}

void tst_WindowScenarios::opensThoughTheClosedOnesAreNotReported()
{
    QVERIFY(keepScenario(QStringLiteral("B"), {false, false, false, false, true, true, false, false}));
    QVERIFY(reportShutters({true, true, true, false, false, false, false, false}));
    m_illuminator->obeysShutters = false;
    m_illuminator->clearCommands();
    QVERIFY(loadWhole(QStringLiteral("B")));
    // Three are still reported open: one more is within the limit, the next is not.
    QCOMPARE(startingWith(m_illuminator->commands(), "shutter:528=1").size(), 1);
    QCOMPARE(startingWith(m_illuminator->commands(), "shutter:555=1").size(), 0);
    QTRY_VERIFY(m_boxes->sawOneWarning(refusalsBegin + QStringLiteral("555nm:\n") + limitText));
    QTRY_VERIFY(isModifiedShown());
}

void tst_WindowScenarios::setsModelAndWidgets()
{
    const Column column(*m_window, 3);
    m_window->onInvertTTLChanged(2, true);
    column.name->setText(QStringLiteral("GFP %1 <b>"));
    emit column.name->editingFinished();
    column.slider->setValue(42);
    laser(3).setVisible(false);
    laser(3).setColour(QColor(1, 2, 3));
    QVERIFY(m_illuminator->settle(*m_window));
    save(QStringLiteral("kept"));
    laser(3).setVisible(true);
    laser(3).setColour(QColor(Qt::white));
    m_window->onInvertTTLChanged(2, false);
    column.name->setText(QStringLiteral("other"));
    emit column.name->editingFinished();
    column.slider->setValue(7);
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();

    QVERIFY(loadWhole(QStringLiteral("kept")));
    QCOMPARE(column.name->text(), QStringLiteral("GFP %1 <b>"));
    QCOMPARE(laser(3).name(), QStringLiteral("GFP %1 <b>"));
    QCOMPARE(column.slider->value(), 42);
    QCOMPARE(column.percentage->text(), QStringLiteral("42"));
    QCOMPARE(laser(3).intensity(), 42.0F);
    QVERIFY(!laser(3).isVisible());
    QVERIFY(column.frame->isHidden());
    QCOMPARE(laser(3).colour(), QColor(1, 2, 3));
    QVERIFY(laser(3).isTtlInverted());
    QVERIFY(m_illuminator->commands().contains("set:470=42.00"));
    QVERIFY(m_illuminator->commands().contains("ttl_invert:470=1"));
    QVERIFY(!isModifiedShown());
}

void tst_WindowScenarios::limitIsObeyed()
{
    QVERIFY(keepScenario(QStringLiteral("six"), {true, true, true, true, true, true, false, false}));
    QVERIFY(loadWhole(QStringLiteral("six")));
    QCOMPARE(m_illuminator->shutters, firstFour);
    QCOMPARE(startingWith(m_illuminator->commands(), "shutter:528=1").size(), 0);
    QTRY_VERIFY(m_boxes->sawOneWarning(refusalsBegin + QStringLiteral("528nm, 555nm:\n") + limitText));
    QTRY_VERIFY(isModifiedShown());
}

void tst_WindowScenarios::interlockIsObeyed()
{
    QVERIFY(keepScenario(QStringLiteral("555"), {true, false, false, false, false, true, false, false}));
    m_illuminator->warning = "WARN: 555 fiber";
    m_illuminator->pollEverything(*m_window);
    QVERIFY(loadWhole(QStringLiteral("555")));
    QVERIFY(m_illuminator->commands().contains("shutter:405=1"));
    QVERIFY(!m_illuminator->commands().contains("shutter:555=1"));
    QTRY_VERIFY(m_boxes->sawOneWarning(refusalsBegin + QStringLiteral("555nm:\n") + interlockText));
}

void tst_WindowScenarios::externalShutterControlSendsNone()
{
    QVERIFY(keepScenario(QStringLiteral("x"), {true, true, false, false, false, false, false, false}));
    m_window->onShutterControlChanged(0);
    QVERIFY(reportShutters({false, true, true, false, false, false, false, false}));
    m_illuminator->clearCommands();
    QVERIFY(loadWhole(QStringLiteral("x")));
    QVERIFY(startingWith(m_illuminator->commands(), "shutter:").isEmpty());
    QVERIFY(startingWith(m_illuminator->commands(), "ttl_invert:").isEmpty());
    // The second is as the scenario has it; the third should be closed, the first open.
    QTRY_VERIFY(m_boxes->sawOneWarning(refusalsBegin + QStringLiteral("470nm, 405nm:\n") + externalText));
}

void tst_WindowScenarios::externalIntensityControlSendsNone()
{
    Column(*m_window, 2).slider->setValue(60);
    QVERIFY(m_illuminator->settle(*m_window));
    save(QStringLiteral("sixty"));
    Column(*m_window, 2).slider->setValue(10);
    m_window->onIntensityControlChanged(0);
    m_illuminator->intensitySource = "EXT";
    m_illuminator->levels.at(1) = "33.00";
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();
    QVERIFY(loadWhole(QStringLiteral("sixty")));
    QVERIFY(startingWith(m_illuminator->commands(), "set:").isEmpty());
    QCOMPARE(laser(2).intensity(), 60.0F);
    QCOMPARE(Column(*m_window, 2).slider->value(), 33);
}

void tst_WindowScenarios::nothingWithoutADevice()
{
    QVERIFY(keepScenario(QStringLiteral("open"), firstFour));
    m_illuminator->bench().wire().unplug();
    QTRY_VERIFY(!m_window->device()->isOpen());
    load(QStringLiteral("open"));
    QTRY_VERIFY(m_boxes->sawOneWarning(refusalsBegin + QStringLiteral("405nm, 445nm, 470nm, 520nm:\n") +
                                       QStringLiteral("Unable to change shutter state. Error = -40010")));
    // Connecting later opens nothing of what was refused.
    m_illuminator->clearCommands();
    QVERIFY(m_illuminator->bench().wire().plug());
    QVERIFY(m_illuminator->connectTo(*m_window));
    const QList<QByteArray> moves = startingWith(m_illuminator->commands(), "shutter:");
    QCOMPARE(moves.size(), 8);
    for (const QByteArray& line : moves) {
        QVERIFY2(line.endsWith("=0"), line.constData());
    }
}

void tst_WindowScenarios::unpluggedWhileItWaits()
{
    QVERIFY(loadHalf());
    m_illuminator->bench().wire().unplug();
    QTRY_VERIFY(m_boxes->sawOneWarning(
        QStringLiteral("The scenario was not loaded completely: the device was disconnected.")));
    m_illuminator->obeysShutters = true;
    m_illuminator->shutters = allClosed;
    m_illuminator->clearCommands();
    QVERIFY(m_illuminator->bench().wire().plug());
    QVERIFY(m_illuminator->connectTo(*m_window));
    // Neither the opening that was given up nor the state before the closing comes back.
    const QList<QByteArray> moves = startingWith(m_illuminator->commands(), "shutter:");
    QCOMPARE(moves.size(), 8);
    for (const QByteArray& line : moves) {
        QVERIFY2(line.endsWith("=0"), line.constData());
    }
    QTRY_VERIFY(isModifiedShown());
}

void tst_WindowScenarios::secondLoadReplacesTheFirst()
{
    QVERIFY(keepScenario(QStringLiteral("B"), lastFour));
    QVERIFY(keepScenario(QStringLiteral("dark"), allClosed));
    QVERIFY(reportShutters(firstFour));
    m_illuminator->obeysShutters = false;
    load(QStringLiteral("B"));
    QVERIFY(m_illuminator->waitForCommand("shutter:520=0"));
    m_illuminator->obeysShutters = true;
    m_illuminator->clearCommands();
    QVERIFY(loadWhole(QStringLiteral("dark")));
    QCOMPARE(m_illuminator->shutters, allClosed);
    const QList<QByteArray> moves = startingWith(m_illuminator->commands(), "shutter:");
    for (const QByteArray& line : moves) {
        QVERIFY2(line.endsWith("=0"), line.constData());
    }
    QCOMPARE(scenarioText(), QStringLiteral("Scenario: dark"));
}

void tst_WindowScenarios::closesAnOpeningThatIsNotReportedYet()
{
    QVERIFY(keepScenario(QStringLiteral("dark"), allClosed));
    // The settings dialog asks for the identity a second after connecting; that must be over.
    QVERIFY(m_illuminator->settle(*m_window));
    m_window->device()->setPolling(false);
    QTest::mouseClick(Column(*m_window, 1).shutter, Qt::LeftButton);
    load(QStringLiteral("dark"));
    QVERIFY(m_illuminator->waitForCommand("shutter:405=0"));
    QVERIFY(m_illuminator->settle(*m_window));
    const QByteArrayList moves = startingWith(m_illuminator->commands(), "shutter:405");
    QVERIFY2(moves == QList<QByteArray>({"shutter:405=1", "shutter:405=0"}), moves.join(' ').constData());
    QCOMPARE(m_illuminator->shutters, allClosed);
}

void tst_WindowScenarios::refusedByAnUpdate()
{
    QVERIFY(keepScenario(QStringLiteral("B"), lastFour));
    const Update::InProgress run(*m_window->update());
    load(QStringLiteral("B"));
    QCOMPARE(m_dialogs->dialogs(), 0);
    QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
    QVERIFY(scenarioText().isEmpty());
    QVERIFY(m_illuminator->commands().isEmpty());
    // Keeping something disturbs nobody.
    save(QStringLiteral("kept meanwhile"));
    QVERIFY(m_window->scenario()->names().contains(QStringLiteral("kept meanwhile")));
}

void tst_WindowScenarios::updateThatBeginsWhileItWaits()
{
    QVERIFY(loadHalf());
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->clearCommands();
    const Update::InProgress run(*m_window->update());
    m_illuminator->shutters = allClosed;
    QTRY_VERIFY(m_boxes->sawOneWarning(refusalsBegin + QStringLiteral("528nm, 555nm, 640nm, 730nm:\n") +
                                       QStringLiteral("Firmware update in progress.")));
    QVERIFY(m_illuminator->commands().isEmpty());
}

void tst_WindowScenarios::incompleteScenarioChangesNothing()
{
    m_window->scenario()->addName(QStringLiteral("name only"));
    load(QStringLiteral("name only"));
    QTRY_VERIFY(m_boxes->sawOneWarning(
        QStringLiteral("The scenario has no complete set of stored values. Nothing was changed.")));
    QVERIFY(m_illuminator->commands().isEmpty());
    QVERIFY(scenarioText().isEmpty());
}

void tst_WindowScenarios::loadsWhileThePollRests()
{
    QVERIFY(keepScenario(QStringLiteral("B"), lastFour));
    QVERIFY(reportShutters(firstFour));
    m_window->device()->setPolling(false);
    load(QStringLiteral("B"));
    QVERIFY(m_illuminator->waitForCommand("shutter:730=1"));
    QVERIFY(m_boxes->boxes().isEmpty());
}

void tst_WindowScenarios::windowGoesWhileItWaits()
{
    QVERIFY(loadHalf());
    m_window->close();
    m_window.reset();
    QCoreApplication::processEvents();
    QVERIFY(m_boxes->boxes().isEmpty());
}

QTEST_MAIN(tst_WindowScenarios)
#include "tst_WindowScenarios.moc"
