#include "QsLog2_1_0/QsLog.h"
#include "device/Device.h"
#include "settings/DialogBench.h"
#include "update/Update.h"

#include <QComboBox>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

namespace {
const QString otherPort = QStringLiteral("ttyOther9");

QString storedPort()
{
    return QSettings(QSettings::UserScope, QStringLiteral("Tarnwick"), QStringLiteral("VYR"))
        .value(QStringLiteral("Device Com Port"))
        .toString();
}
} // namespace

/// What the dialog shows of the choices in force, and the choice of the port, which it stores itself.
class tst_DialogStored : public AnsweringDialogTest
{
    Q_OBJECT

private slots:
    void cleanup() { removeDialog(); }
    void everyChoiceComesBackAfterARestart();
    void storedChoicesAreShown_data();
    void storedChoicesAreShown();
    void openingTellsAndSendsNothing();
    void openingShowsWhatIsInForce();
    void connectedPortIsSelected();
    void portChoice();
    void portThatIsNotListedIsChosenAtTheNextConnection();
    void portChoiceIsRefusedDuringAnUpdate();
    void nobodyListsPorts();

private:
    QComboBox* ports() const { return m_hand->part<QComboBox>("comboBoxComPort"); }
    QStringList listedPorts() const;
    void restart();
    void choosePortBelow() const;
};

QStringList tst_DialogStored::listedPorts() const
{
    QStringList names;
    for (int i = 0; i < ports()->count(); ++i) {
        names.append(ports()->itemText(i));
    }
    return names;
}

void tst_DialogStored::restart()
{
    QVERIFY(m_window->close());
    m_window->saveSettings();
    m_hand.reset();
    m_window = m_bench->start(QStringLiteral("-diag"));
    m_hand = std::make_unique<DialogHand>(*m_window);
    QVERIFY(m_hand->open());
}

void tst_DialogStored::choosePortBelow() const
{
    ports()->setFocus();
    QTest::keyClick(ports(), Qt::Key_Down);
}

void tst_DialogStored::everyChoiceComesBackAfterARestart()
{
    QVERIFY(buildDialog());
    const QList<const char*> chosen{"radioButtonIntensityControlExternal",
                                    "radioButtonShutterControlExternal",
                                    "radioButtonDespecklerOff",
                                    "radioButtonTTLShutterClosed405",
                                    "radioButtonTTLShutterClosed528",
                                    "radioButtonTTLShutterClosed730",
                                    "checkBoxEnhancedDiags"};
    for (const char* name : chosen) {
        QVERIFY2(!m_hand->isChecked(name), name);
        m_hand->click(name);
    }
    m_hand->part<QSpinBox>("spinBoxSleepTimer")->setValue(99);
    m_hand->click("checkBoxSleepTimer");
    QVERIFY(m_illuminator->settle(*m_window));

    restart();
    for (const char* name : chosen) {
        QVERIFY2(m_hand->isChecked(name), name);
    }
    for (const char* name :
         {"radioButtonTTLShutterOpen445", "radioButtonTTLShutterOpen470", "radioButtonTTLShutterOpen520",
          "radioButtonTTLShutterOpen555", "radioButtonTTLShutterOpen640"}) {
        QVERIFY2(m_hand->isChecked(name), name);
    }
    QVERIFY(!m_hand->isChecked("checkBoxSleepTimer"));
    QCOMPARE(m_hand->part<QSpinBox>("spinBoxSleepTimer")->value(), 99);
    QVERIFY(!m_hand->part<QSpinBox>("spinBoxSleepTimer")->isEnabled());
    QCOMPARE(QsLogging::Logger::instance().level(), QsLogging::LogLevel::Trace);
}

void tst_DialogStored::storedChoicesAreShown_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QByteArray>("checked");
    QTest::newRow("nothing stored: shutter")
        << QString() << QVariant() << QByteArray("radioButtonShutterControlUSB");
    QTest::newRow("nothing stored: intensity")
        << QString() << QVariant() << QByteArray("radioButtonIntensityControlUSB");
    QTest::newRow("nothing stored: despeckler")
        << QString() << QVariant() << QByteArray("radioButtonDespecklerOn");
    QTest::newRow("nothing stored: sleep timer")
        << QString() << QVariant() << QByteArray("checkBoxSleepTimer");
    QTest::newRow("shutter 0") << QStringLiteral("Shutter Control") << QVariant(0)
                               << QByteArray("radioButtonShutterControlExternal");
    QTest::newRow("shutter 7") << QStringLiteral("Shutter Control") << QVariant(7)
                               << QByteArray("radioButtonShutterControlExternal");
    QTest::newRow("intensity 0") << QStringLiteral("Intensity Control") << QVariant(0)
                                 << QByteArray("radioButtonIntensityControlExternal");
    QTest::newRow("despeckler off") << QStringLiteral("Speckle Reducer Enable") << QVariant(false)
                                    << QByteArray("radioButtonDespecklerOff");
    QTest::newRow("logging on") << QStringLiteral("Verbose Data Logging") << QVariant(true)
                                << QByteArray("checkBoxEnhancedDiags");
    QTest::newRow("polarity") << QStringLiteral("Channel4/Channel Shutter TTL Invert") << QVariant(true)
                              << QByteArray("radioButtonTTLShutterClosed520");
}

void tst_DialogStored::storedChoicesAreShown()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(QByteArray, checked);
    m_bench = std::make_unique<WindowBench>();
    if (!key.isEmpty()) {
        m_bench->store(key, value);
    }
    m_window = m_bench->start(QStringLiteral("-diag"));
    m_hand = std::make_unique<DialogHand>(*m_window);
    const ChoiceSpy spy(m_hand->dialog());
    QVERIFY(m_hand->open());
    QVERIFY(m_hand->isChecked(checked.constData()));
    QCOMPARE(m_hand->part<QSpinBox>("spinBoxSleepTimer")->value(), 30);
    QCOMPARE(spy.choices(), QStringList());
}

void tst_DialogStored::openingTellsAndSendsNothing()
{
    QVERIFY(buildDialog());
    m_hand->click("radioButtonShutterControlExternal");
    m_hand->click("radioButtonDespecklerOff");
    m_hand->click("radioButtonTTLShutterClosed640");
    m_hand->part<QSpinBox>("spinBoxSleepTimer")->setValue(7);
    QVERIFY(!newCommands().isEmpty());
    const ChoiceSpy spy(m_hand->dialog());
    for (int i = 0; i < 3; ++i) {
        QVERIFY(m_hand->openAnew());
    }
    QVERIFY(m_hand->open()); // once more while it is open
    QCOMPARE(spy.choices(), QStringList());
    QCOMPARE(newCommands(), QList<QByteArray>());
}

void tst_DialogStored::openingShowsWhatIsInForce()
{
    QVERIFY(buildDialog());
    m_hand->dialog().close();
    m_window->onShutterControlChanged(0);
    m_window->onIntensityControlChanged(0);
    m_window->onSpeckleControlChanged(false);
    m_window->onSleepTimerChanged(11);
    m_window->onSleepTimerEnableChanged(false);
    m_window->onInvertTTLChanged(2, true);
    QVERIFY(m_illuminator->settle(*m_window));
    const ChoiceSpy spy(m_hand->dialog());
    QVERIFY(m_hand->open());
    QVERIFY(m_hand->isChecked("radioButtonShutterControlExternal"));
    QVERIFY(m_hand->isChecked("radioButtonIntensityControlExternal"));
    QVERIFY(m_hand->isChecked("radioButtonDespecklerOff"));
    QVERIFY(m_hand->isChecked("radioButtonTTLShutterClosed470"));
    QVERIFY(!m_hand->isChecked("checkBoxSleepTimer"));
    QCOMPARE(m_hand->part<QSpinBox>("spinBoxSleepTimer")->value(), 11);
    QVERIFY(!m_hand->part<QSpinBox>("spinBoxSleepTimer")->isEnabled());
    QCOMPARE(spy.choices(), QStringList());
}

void tst_DialogStored::connectedPortIsSelected()
{
    QVERIFY(buildDialog());
    const QString port = m_illuminator->bench().portName();
    QCOMPARE(ports()->currentText(), port);
    QCOMPARE(m_hand->text("labelComStatus"), QString(QStringLiteral("Device connected on ") + port));
    QCOMPARE(label(m_hand->dialog(), "labelComStatus")->styleSheet(), QStringLiteral("color:green"));
    m_illuminator->bench().wire().unplug();
    m_window->device()->checkConnectionStatus();
    QTRY_COMPARE(m_hand->text("labelComStatus"), QString(QStringLiteral("Device disconnected on ") + port));
    QCOMPARE(label(m_hand->dialog(), "labelComStatus")->styleSheet(), QStringLiteral("color:red"));
    QCOMPARE(listedPorts(), QStringList());
}

void tst_DialogStored::portChoice()
{
    QVERIFY(buildDialog());
    const QString port = m_illuminator->bench().portName();
    m_illuminator->bench().ports().addPortBehind({otherPort, {}, {}});
    QVERIFY(m_hand->openAnew());
    QCOMPARE(listedPorts(), QStringList({port, otherPort}));
    QCOMPARE(ports()->currentText(), port);
    const ChoiceSpy spy(m_hand->dialog());
    const QSignalSpy disconnected(m_window->device(), &Device::deviceDisconnected);
    choosePortBelow();
    QCOMPARE(spy.choices(), QStringList{QString(QStringLiteral("comPortChanged(") + otherPort + ')')});
    QCOMPARE(storedPort(), otherPort);
    QCOMPARE(disconnected.size(), 1);
    QVERIFY(!m_window->device()->isOpen());
    QCOMPARE(m_window->device()->portName(), otherPort);
    QCOMPARE(ports()->currentText(), otherPort);
    // The link knows its device by what it is, so the illuminator is found again where it is.
    QVERIFY(m_illuminator->connectTo(*m_window));
    QCOMPARE(ports()->currentText(), port);
    QCOMPARE(m_hand->text("labelComStatus"), QString(QStringLiteral("Device connected on ") + port));
}

void tst_DialogStored::portThatIsNotListedIsChosenAtTheNextConnection()
{
    QVERIFY(buildDialog(false));
    QCOMPARE(m_hand->text("labelComStatus"), QStringLiteral("No connection to device"));
    m_illuminator->bench().ports().addPortBehind({otherPort, {}, {}});
    QVERIFY(m_hand->openAnew());
    // The stored port of another computer is in no list here.
    QCOMPARE(ports()->currentIndex(), -1);
    choosePortBelow();
    QCOMPARE(storedPort(), otherPort);
    QCOMPARE(m_window->device()->portName(), otherPort);
    QVERIFY(m_hand->openAnew());
    QCOMPARE(ports()->currentText(), otherPort);
}

void tst_DialogStored::portChoiceIsRefusedDuringAnUpdate()
{
    QVERIFY(buildDialog());
    const QString port = m_illuminator->bench().portName();
    m_illuminator->bench().ports().addPortBehind({otherPort, {}, {}});
    QVERIFY(m_hand->openAnew());
    const QString storedBefore = storedPort();
    const ChoiceSpy spy(m_hand->dialog());
    const Update::InProgress run(*m_window->update());
    choosePortBelow();
    QCOMPARE(spy.choices(), QStringList());
    QCOMPARE(storedPort(), storedBefore);
    QVERIFY(m_window->device()->isOpen());
    QCOMPARE(ports()->currentText(), port);
    QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
}

void tst_DialogStored::nobodyListsPorts()
{
    QVERIFY(buildDialog(false));
    QCOMPARE(listedPorts(), QStringList());
    const ChoiceSpy spy(m_hand->dialog());
    choosePortBelow();
    QTest::keyClick(ports(), Qt::Key_Return);
    QCOMPARE(spy.choices(), QStringList());
    QCOMPARE(storedPort(), QString());
}

QTEST_MAIN(tst_DialogStored)
#include "tst_DialogStored.moc"
