#include "QsLog2_1_0/QsLog.h"
#include "device/Device.h"
#include "scenario/Scenario.h"
#include "settings/DialogBench.h"
#include "update/Update.h"

#include <QAbstractButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QTest>

#include <array>

namespace {
constexpr std::array<const char*, 8> wavelengths{"405", "445", "470", "520", "528", "555", "640", "730"};

QByteArray ttlButton(int index, bool inverted)
{
    return QByteArray(inverted ? "radioButtonTTLShutterClosed" : "radioButtonTTLShutterOpen") +
           wavelengths.at(static_cast<std::size_t>(index));
}

QByteArray ttlCommand(int index, bool inverted)
{
    return QByteArray("ttl_invert:") + wavelengths.at(static_cast<std::size_t>(index)) +
           (inverted ? "=1" : "=0");
}
} // namespace

/// The dialog's choices and service commands: what each tells, and what reaches the device of it.
class tst_DialogOperation : public AnsweringDialogTest
{
    Q_OBJECT

private slots:
    void cleanup();
    void choices_data();
    void choices();
    void ttlChoices_data();
    void ttlChoices();
    void sleepTimer();
    void sleepMinutesAreSentOnce();
    void restoreDefaults();
    void restoreDefaultsWithoutDevice();
    void restoreTtlDefaults();
    void systemReset_data();
    void systemReset();
    void withoutDevice_data() { controls(); }
    void withoutDevice();
    void choicesMadeWithoutDeviceAreSentOnConnecting();
    void duringAnUpdate_data() { controls(); }
    void duringAnUpdate();
    void verboseLogging();
    void sevenChannels();

private:
    static void controls();
    void chooseEverythingElse() const;
    QList<bool> inversions() const;
};

void tst_DialogOperation::cleanup()
{
    removeDialog();
}

void tst_DialogOperation::choices_data()
{
    using Lines = QList<QByteArray>;
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QStringList>("told");
    QTest::addColumn<QList<QByteArray>>("sent");
    QTest::addColumn<QString>("summary");
    const QString hostShutters = QStringLiteral("Shutters are opened and closed by this program.");
    const QString hostLevels = QStringLiteral("Intensities are set by this program.");
    const QString host = hostShutters + QLatin1Char(' ') + hostLevels;

    QTest::newRow("intensity external")
        << QByteArray("radioButtonIntensityControlExternal")
        << QStringList{QStringLiteral("intensityControlChanged(0)")} << Lines{"int_mode=ext"}
        << QString(hostShutters +
                   QStringLiteral(" Intensities follow the external inputs; the sliders are off."));
    QTest::newRow("intensity host") << QByteArray("radioButtonIntensityControlUSB")
                                    << QStringList{QStringLiteral("intensityControlChanged(1)")}
                                    << Lines{"int_mode=pc"} << host;
    QTest::newRow("shutter external")
        << QByteArray("radioButtonShutterControlExternal")
        << QStringList{QStringLiteral("shutterControlChanged(0)")} << Lines{"sh_mode=ext"}
        << QString(QStringLiteral("Shutters follow the external inputs; the shutter buttons are off. ") +
                   hostLevels);
    // Taking the shutters back puts the laser out, lest light come out of what the inputs had open.
    QTest::newRow("shutter host") << QByteArray("radioButtonShutterControlUSB")
                                  << QStringList{QStringLiteral("shutterControlChanged(1)")}
                                  << Lines{"sh_mode=pc", "idle!"} << host;
    QTest::newRow("despeckler off") << QByteArray("radioButtonDespecklerOff")
                                    << QStringList{QStringLiteral("speckleControlChanged(0)")}
                                    << Lines{"speckle=off"} << host;
    QTest::newRow("despeckler on") << QByteArray("radioButtonDespecklerOn")
                                   << QStringList{QStringLiteral("speckleControlChanged(1)")}
                                   << Lines{"speckle=on"} << host;
    QTest::newRow("sleep timer off") << QByteArray("checkBoxSleepTimer")
                                     << QStringList{QStringLiteral("sleepTimerEnableChanged(0)")}
                                     << Lines{"sleep=0"} << host;
}

void tst_DialogOperation::choices()
{
    QFETCH(QByteArray, button);
    QFETCH(QStringList, told);
    QFETCH(QList<QByteArray>, sent);
    QFETCH(QString, summary);
    QVERIFY(buildDialog());
    const ChoiceSpy spy(m_hand->dialog());
    const bool checkedBefore = m_hand->isChecked(button.constData());
    m_hand->click(button.constData());
    QCOMPARE(spy.choices(), told);
    QCOMPARE(newCommands(), sent);
    const bool isCheckBox = button.startsWith("check");
    QCOMPARE(m_hand->isChecked(button.constData()), isCheckBox ? !checkedBefore : true);
    QCOMPARE(m_hand->text("labelControlModeSummary"), summary);
}

void tst_DialogOperation::ttlChoices_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("inverted");
    for (int index = 0; index < channelCount; ++index) {
        QTest::newRow(ttlButton(index, false).constData()) << index << false;
        QTest::newRow(ttlButton(index, true).constData()) << index << true;
    }
}

void tst_DialogOperation::ttlChoices()
{
    QFETCH(int, index);
    QFETCH(bool, inverted);
    QVERIFY(buildDialog());
    m_hand->click(ttlButton(index, !inverted).constData());
    QCOMPARE(newCommands(), QList<QByteArray>{ttlCommand(index, !inverted)});
    QCOMPARE(inversions().at(index), !inverted);

    const ChoiceSpy spy(m_hand->dialog());
    m_hand->click(ttlButton(index, inverted).constData());
    const QString told = QStringLiteral("invertTTLChanged(%1,%2)").arg(index).arg(inverted ? 1 : 0);
    QCOMPARE(spy.choices(), QStringList{told});
    QCOMPARE(newCommands(), QList<QByteArray>{ttlCommand(index, inverted)});
    QCOMPARE(inversions().at(index), inverted);
    QCOMPARE(inversions().count(true), inverted ? 1 : 0);
    for (int i = 0; i < channelCount; ++i) {
        QCOMPARE(m_hand->isChecked(ttlButton(i, true).constData()), inversions().at(i));
        QCOMPARE(m_hand->isChecked(ttlButton(i, false).constData()), !inversions().at(i));
    }
}

QList<bool> tst_DialogOperation::inversions() const
{
    QList<bool> inversions;
    const QList<channel*> channels = m_window->scenario()->channels();
    for (const channel* laser : channels) {
        inversions.append(laser->isTtlInverted());
    }
    return inversions;
}

void tst_DialogOperation::sleepTimer()
{
    QVERIFY(buildDialog());
    auto* const minutes = m_hand->part<QSpinBox>("spinBoxSleepTimer");
    const QLabel* const shown = label(*m_window, "labelSleepTimer");
    QVERIFY(minutes->isEnabled());
    minutes->setValue(45);
    QCOMPARE(newCommands(), QList<QByteArray>{"sleep=45"});
    QCOMPARE(shown->text(), QStringLiteral("Sleep Timer: 45 min"));

    m_hand->click("checkBoxSleepTimer");
    QVERIFY(!minutes->isEnabled());
    QCOMPARE(newCommands(), QList<QByteArray>{"sleep=0"});
    QCOMPARE(shown->text(), QStringLiteral("Sleep Timer Disabled"));

    m_hand->click("checkBoxSleepTimer");
    QVERIFY(minutes->isEnabled());
    QCOMPARE(newCommands(), QList<QByteArray>{"sleep=45"});
    QCOMPARE(shown->text(), QStringLiteral("Sleep Timer: 45 min"));

    minutes->setValue(0);
    QCOMPARE(newCommands(), QList<QByteArray>{"sleep=0"});
    QCOMPARE(shown->text(), QStringLiteral("Sleep Timer Disabled"));
    QVERIFY(m_hand->isChecked("checkBoxSleepTimer"));
}

void tst_DialogOperation::sleepMinutesAreSentOnce()
{
    QVERIFY(buildDialog());
    auto* const minutes = m_hand->part<QSpinBox>("spinBoxSleepTimer");
    m_hand->bringIntoView(minutes);
    const ChoiceSpy spy(m_hand->dialog());
    minutes->setFocus();
    minutes->selectAll();
    QTest::keyClicks(minutes, QStringLiteral("57"));
    QCOMPARE(spy.choices(), QStringList());
    // Return ends the typing, and must neither press a button of the dialog nor close it.
    QTest::keyClick(minutes, Qt::Key_Return);
    QCOMPARE(spy.choices(), QStringList{QStringLiteral("sleepTimerChanged(57)")});
    QCOMPARE(newCommands(), QList<QByteArray>{"sleep=57"});
    QVERIFY(m_hand->dialog().isVisible());
}

void tst_DialogOperation::chooseEverythingElse() const
{
    m_hand->click("radioButtonIntensityControlExternal");
    m_hand->click("radioButtonShutterControlExternal");
    m_hand->click("radioButtonDespecklerOff");
    m_hand->part<QSpinBox>("spinBoxSleepTimer")->setValue(45);
    m_hand->click(ttlButton(0, true).constData());
    m_hand->click(ttlButton(6, true).constData());
}

void tst_DialogOperation::restoreDefaults()
{
    QVERIFY(buildDialog());
    chooseEverythingElse();
    QVERIFY(newCommands().contains("sleep=45"));
    const ChoiceSpy spy(m_hand->dialog());
    m_hand->click("pushButtonRestoreDefaults");
    QCOMPARE(spy.choices(), QStringList({QStringLiteral("shutterControlChanged(1)"),
                                         QStringLiteral("intensityControlChanged(1)"),
                                         QStringLiteral("speckleControlChanged(1)")}));
    QCOMPARE(newCommands(),
             QList<QByteArray>({"sh_mode=pc", "idle!", "int_mode=pc", "speckle=on", "defaults"}));
    QVERIFY(m_hand->isChecked("radioButtonIntensityControlUSB"));
    QVERIFY(m_hand->isChecked("radioButtonShutterControlUSB"));
    QVERIFY(m_hand->isChecked("radioButtonDespecklerOn"));
    QCOMPARE(m_hand->part<QSpinBox>("spinBoxSleepTimer")->value(), 45);
    QCOMPARE(inversions().count(true), 2);
}

void tst_DialogOperation::restoreDefaultsWithoutDevice()
{
    QVERIFY(buildDialog(false));
    chooseEverythingElse();
    const ChoiceSpy spy(m_hand->dialog());
    m_hand->click("pushButtonRestoreDefaults");
    QCOMPARE(spy.choices().size(), 3);
    QVERIFY(m_hand->isChecked("radioButtonShutterControlUSB"));
    QVERIFY(plugIn());
    const QList<QByteArray> sent = newCommands();
    QVERIFY(sent.contains("sh_mode=pc"));
    QVERIFY(!sent.contains("defaults"));
}

void tst_DialogOperation::restoreTtlDefaults()
{
    QVERIFY(buildDialog());
    chooseEverythingElse();
    QVERIFY(newCommands().contains(ttlCommand(6, true)));
    const ChoiceSpy spy(m_hand->dialog());
    m_hand->click("pushButtonRestoreDefaults2");
    QCOMPARE(spy.choices(), QStringList());
    QCOMPARE(newCommands(), QList<QByteArray>());
    QCOMPARE(inversions(), QList<bool>({true, false, false, false, false, false, true, false}));
    for (int i = 0; i < channelCount; ++i) {
        QVERIFY(m_hand->isChecked(ttlButton(i, false).constData()));
    }
    // What is in force is shown again when the dialog is opened anew.
    QVERIFY(m_hand->openAnew());
    QVERIFY(m_hand->isChecked(ttlButton(0, true).constData()));
    QVERIFY(m_hand->isChecked(ttlButton(6, true).constData()));
    QVERIFY(m_hand->isChecked(ttlButton(7, false).constData()));
}

void tst_DialogOperation::systemReset_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::newRow("update tab") << QByteArray("pushButtonSystemReset");
    QTest::newRow("service tab") << QByteArray("pushButtonSystemReset2");
}

void tst_DialogOperation::systemReset()
{
    QFETCH(QByteArray, button);
    QVERIFY(buildDialog());
    const ChoiceSpy spy(m_hand->dialog());
    m_hand->click(button.constData());
    QCOMPARE(newCommands(), QList<QByteArray>{"reset"});
    QCOMPARE(spy.choices(), QStringList());
}

/// Everything that has a command for the device.
void tst_DialogOperation::controls()
{
    QTest::addColumn<QByteArray>("button");
    for (const char* name :
         {"radioButtonIntensityControlUSB", "radioButtonIntensityControlExternal",
          "radioButtonShutterControlUSB", "radioButtonShutterControlExternal", "radioButtonDespecklerOn",
          "radioButtonDespecklerOff", "checkBoxSleepTimer", "pushButtonRestoreDefaults",
          "radioButtonTTLShutterOpen405", "radioButtonTTLShutterClosed730", "pushButtonRestoreDefaults2",
          "pushButtonSystemReset", "pushButtonSystemReset2", "pushButtonLoaderMode",
          "pushButtonLoaderMode2"}) {
        QTest::newRow(name) << QByteArray(name);
    }
}

void tst_DialogOperation::withoutDevice()
{
    QFETCH(QByteArray, button);
    QVERIFY(buildDialog(false));
    m_hand->click(button.constData());
    QVERIFY(m_hand->part<QAbstractButton>(button.constData())->isEnabled());
    QCOMPARE(statusText(*m_window), QStringLiteral("Idle mode"));
    QCOMPARE(m_hand->text("labelRunningImage"), QStringLiteral("Not connected"));
    QVERIFY(plugIn());
    for (const char* command : {"reset", "defaults", "goloader", "goapp"}) {
        QVERIFY(!m_illuminator->commands().contains(command));
    }
}

void tst_DialogOperation::choicesMadeWithoutDeviceAreSentOnConnecting()
{
    QVERIFY(buildDialog(false));
    chooseEverythingElse();
    QVERIFY(plugIn());
    const QList<QByteArray> sent = newCommands();
    for (const char* command : {"int_mode=ext", "sh_mode=ext", "speckle=off", "sleep=45", "ttl_invert:405=1",
                                "ttl_invert:445=0", "ttl_invert:640=1"}) {
        QVERIFY2(sent.count(command) == 1, command);
    }
}

void tst_DialogOperation::duringAnUpdate()
{
    QFETCH(QByteArray, button);
    QVERIFY(buildDialog());
    const bool sendsNothingAnyway = button == "pushButtonRestoreDefaults2";
    {
        const Update::InProgress run(*m_window->update());
        QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
        m_window->statusBar()->clearMessage();
        m_hand->click(button.constData());
        QCOMPARE(newCommands(), QList<QByteArray>());
        QCOMPARE(statusText(*m_window) == QStringLiteral("Firmware update in progress."),
                 !sendsNothingAnyway);
    }
    QCOMPARE(statusText(*m_window), QStringLiteral("Idle mode"));
    QCOMPARE(newCommands(), QList<QByteArray>());
}

void tst_DialogOperation::verboseLogging()
{
    QVERIFY(buildDialog());
    const auto level = [] { return QsLogging::Logger::instance().level(); };
    QCOMPARE(level(), QsLogging::LogLevel::Info);
    const ChoiceSpy spy(m_hand->dialog());
    m_hand->click("checkBoxEnhancedDiags");
    QCOMPARE(level(), QsLogging::LogLevel::Trace);
    QCOMPARE(spy.choices(), QStringList{QStringLiteral("enhancedDiagsChanged(1)")});
    m_hand->click("checkBoxEnhancedDiags");
    QCOMPARE(level(), QsLogging::LogLevel::Info);
    QCOMPARE(newCommands(), QList<QByteArray>());
}

void tst_DialogOperation::sevenChannels()
{
    QVERIFY(buildDialog());
    QList<channel*> channels = m_window->scenario()->channels();
    for (channel* laser : qAsConst(channels)) {
        laser->setTtlInverted(true);
    }
    const ChoiceSpy spy(m_hand->dialog());
    channels.removeLast();
    m_hand->dialog().showTTLChoices(channels);
    for (int i = 0; i < channelCount; ++i) {
        QCOMPARE(m_hand->isChecked(ttlButton(i, true).constData()), i < channelCount - 1);
    }
    QCOMPARE(spy.choices(), QStringList());
    QCOMPARE(newCommands(), QList<QByteArray>());
}

QTEST_MAIN(tst_DialogOperation)
#include "tst_DialogOperation.moc"
