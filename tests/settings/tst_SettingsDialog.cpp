#include "Resources/Resources.h"
#include "settings/Console.h"
#include "settings/LoneDialogTest.h"

#include <QMetaMethod>

#include <chrono>

namespace {
/// Long enough for more than two polls.
constexpr std::chrono::milliseconds silence(700);
} // namespace

/// The dialog's frame: tabs, connection label, terminal and the polling that goes with the tabs.
class tst_SettingsDialog : public LoneDialogTest
{
    Q_OBJECT

private slots:
    void init() { buildRoom(); }
    void cleanup() { removeRoom(); }
    void looks();
    void tabs_data();
    void tabs();
    void serviceLevelCanComeAndGo();
    void terminalKeepsItsColoursUnderTheStyleSheet();
    void signalsInOrder();
    void connectionLabel();
    void hostilePortNameIsPlainText();
    void receivedDataReachesTheConsole();
    void nothingReceivedDuringAnUpdate();
    void invertedStatesAreIgnored();
    void pollingFollowsTheTabs();
    void pollingIsLeftAloneDuringAnUpdate();
    void pollingFitsTheTabThatIsShownAgain();
    void pollingIsLeftAloneByTheServiceLevel();
    void pollingFollowsWhenTheTabInFrontIsTaken();
    void readingsRestWhileHidden();
    void outlivesTheLinkAndTheUpdate();
};

void tst_SettingsDialog::looks()
{
    make(false);
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("System Info & Settings"));
    QVERIFY(!m_dialog->isModal());
    QCOMPARE(label(*m_dialog, "labelComStatus")->text(), QStringLiteral("No connection to device"));
    QCOMPARE(label(*m_dialog, "labelComStatus")->styleSheet(), QStringLiteral("color:red"));
    QCOMPARE(label(*m_dialog, "labelApplicationSoftwareVersion")->text(), QStringLiteral("02.07.00"));
}

void tst_SettingsDialog::tabs_data()
{
    QTest::addColumn<bool>("diagnostic");
    QTest::addColumn<QStringList>("captions");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("user") << false
                          << QStringList{QStringLiteral("System Info"), QStringLiteral("Operating Info"),
                                         QStringLiteral("Control Mode"), QStringLiteral("TTL Configuration"),
                                         QStringLiteral("Update")}
                          << QStringList{QStringLiteral("tabSystemInfo"), QStringLiteral("tabOperatingInfo"),
                                         QStringLiteral("tabControlMode"),
                                         QStringLiteral("tabTTLConfiguration"), QStringLiteral("tabUpdate")};
    QTest::newRow("service")
        << true << QStringList{QStringLiteral("System Info"),           QStringLiteral("System Config"),
                               QStringLiteral("Operating Info"),        QStringLiteral("Control Mode"),
                               QStringLiteral("TTL Configuration"),     QStringLiteral("Update"),
                               QStringLiteral("Service && Development")}
        << QStringList{QStringLiteral("tabSystemInfo"),        QStringLiteral("tabSystemConfig"),
                       QStringLiteral("tabOperatingInfo"),     QStringLiteral("tabControlMode"),
                       QStringLiteral("tabTTLConfiguration"),  QStringLiteral("tabUpdate"),
                       QStringLiteral("tabServiceDevelopment")};
}

void tst_SettingsDialog::tabs()
{
    QFETCH(bool, diagnostic);
    QFETCH(QStringList, captions);
    QFETCH(QStringList, names);
    make(diagnostic);
    QStringList shownCaptions;
    QStringList shownNames;
    for (int i = 0; i < tabWidget()->count(); ++i) {
        shownCaptions.append(tabWidget()->tabText(i));
        shownNames.append(tabWidget()->widget(i)->objectName());
    }
    QCOMPARE(shownCaptions, captions);
    QCOMPARE(shownNames, names);
    QVERIFY(m_dialog->console() != nullptr);
    QCOMPARE(m_dialog->console()->objectName(), QStringLiteral("consoleWindow"));
}

void tst_SettingsDialog::serviceLevelCanComeAndGo()
{
    make(true);
    m_dialog->setServiceLevel(false);
    QCOMPARE(tabWidget()->count(), 5);
    m_dialog->setServiceLevel(true);
    QCOMPARE(tabWidget()->count(), 7);
    QCOMPARE(tabWidget()->tabText(1), QStringLiteral("System Config"));
    QCOMPARE(tabWidget()->tabText(6), QStringLiteral("Service && Development"));
}

void tst_SettingsDialog::terminalKeepsItsColoursUnderTheStyleSheet()
{
    qApp->setStyleSheet(loadStyleSheet());
    make(true);
    clickTab(QStringLiteral("Service && Development"));
    m_dialog->console()->putData("████████\n");
    QVERIFY(m_dialog->console()->isVisible());
    const QImage shown = m_dialog->console()->viewport()->grab().toImage();
    qApp->setStyleSheet({});
    QCOMPARE(shown.pixelColor(shown.width() - 5, shown.height() - 5), QColor(Qt::black));
    bool green = false;
    for (int x = 0; x < shown.width() && !green; ++x) {
        for (int y = 0; y < 40 && !green; ++y) {
            green = shown.pixelColor(x, y) == QColor(Qt::green);
        }
    }
    QVERIFY(green);
}

void tst_SettingsDialog::signalsInOrder()
{
    QStringList declared;
    const QMetaObject& meta = SettingsDialog::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == QMetaMethod::Signal) {
            declared.append(QString::fromLatin1(meta.method(i).name()));
        }
    }
    QCOMPARE(declared,
             QStringList({QStringLiteral("comPortChanged"), QStringLiteral("shutterControlChanged"),
                          QStringLiteral("intensityControlChanged"), QStringLiteral("sleepTimerChanged"),
                          QStringLiteral("sleepTimerEnableChanged"), QStringLiteral("speckleControlChanged"),
                          QStringLiteral("invertTTLChanged"), QStringLiteral("enhancedDiagsChanged")}));
}

void tst_SettingsDialog::connectionLabel()
{
    make(false);
    const QLabel* status = label(*m_dialog, "labelComStatus");
    m_dialog->onDeviceConnected(QStringLiteral("ttyACM3"));
    QCOMPARE(status->text(), QStringLiteral("Device connected on ttyACM3"));
    QCOMPARE(status->styleSheet(), QStringLiteral("color:green"));
    m_dialog->onDeviceDisconnected(QStringLiteral("ttyACM3"));
    QCOMPARE(status->text(), QStringLiteral("Device disconnected on ttyACM3"));
    QCOMPARE(status->styleSheet(), QStringLiteral("color:red"));
}

void tst_SettingsDialog::hostilePortNameIsPlainText()
{
    make(false);
    m_dialog->onDeviceConnected(QStringLiteral("<b>%1</b>"));
    QCOMPARE(label(*m_dialog, "labelComStatus")->text(), QStringLiteral("Device connected on <b>%1</b>"));
    QCOMPARE(label(*m_dialog, "labelComStatus")->textFormat(), Qt::PlainText);
}

void tst_SettingsDialog::receivedDataReachesTheConsole()
{
    make(true);
    QByteArray bytes("f_mode=idle\n");
    m_dialog->receivedDataFromDevice(bytes);
    QCOMPARE(m_dialog->console()->toPlainText(), QStringLiteral("f_mode=idle\n"));
    QCOMPARE(bytes, QByteArray("f_mode=idle\n"));
}

void tst_SettingsDialog::nothingReceivedDuringAnUpdate()
{
    make(true);
    QByteArray bytes("Wrote\n");
    {
        const Update::InProgress run(*m_update);
        m_dialog->receivedDataFromDevice(bytes);
        QCOMPARE(m_dialog->console()->toPlainText(), QString());
    }
    m_dialog->receivedDataFromDevice(bytes);
    QCOMPARE(m_dialog->console()->toPlainText(), QStringLiteral("Wrote\n"));
}

void tst_SettingsDialog::invertedStatesAreIgnored()
{
    make(false);
    std::array<bool, 8> states{true, true, true, true, true, true, true, true};
    m_dialog->onInvertedTTLStateChanged(states.data());
    m_dialog->onInvertedTTLStateChanged(nullptr);
    QCOMPARE(m_dialog->findChildren<QTabWidget*>().size(), 1);
}

void tst_SettingsDialog::pollingFollowsTheTabs()
{
    make(true);
    connectDevice();
    ScriptedBench& line = m_illuminator->bench();
    QVERIFY(line.waitForLine("f_mode?", 1));

    clickTab(QStringLiteral("Service && Development"));
    QTRY_COMPARE(m_device->waitWhileBusy(), 0);
    const int polls = line.count("f_mode?");
    QVERIFY(!line.waitForLine("f_mode?", polls + 2, silence));

    clickTab(QStringLiteral("Update"));
    QVERIFY(line.waitForLine("f_mode?", polls + 3));
}

void tst_SettingsDialog::pollingIsLeftAloneDuringAnUpdate()
{
    make(true);
    connectDevice();
    m_device->setPolling(false);
    QTRY_COMPARE(m_device->waitWhileBusy(), 0);
    const int polls = m_illuminator->bench().count("f_mode?");
    const Update::InProgress run(*m_update);
    clickTab(QStringLiteral("Update"));
    QVERIFY(!m_illuminator->bench().waitForLine("f_mode?", polls + 2, silence));
}

void tst_SettingsDialog::pollingFitsTheTabThatIsShownAgain()
{
    make(true);
    connectDevice();
    clickTab(QStringLiteral("Service && Development"));
    m_dialog->hide();
    m_device->setPolling(true);
    // Nobody sees these changes of tabs, so the poll goes on.
    tabWidget()->setCurrentIndex(0);
    tabWidget()->setCurrentIndex(6);
    ScriptedBench& line = m_illuminator->bench();
    QVERIFY(line.waitForLine("f_mode?", line.count("f_mode?") + 2));
    m_dialog->show();
    QTRY_COMPARE(m_device->waitWhileBusy(), 0);
    QVERIFY(!line.waitForLine("f_mode?", line.count("f_mode?") + 2, silence));
}

void tst_SettingsDialog::pollingIsLeftAloneByTheServiceLevel()
{
    make(true);
    connectDevice();
    clickTab(QStringLiteral("Update"));
    m_device->setPolling(false);
    QTRY_COMPARE(m_device->waitWhileBusy(), 0);
    ScriptedBench& line = m_illuminator->bench();
    const int polls = line.count("f_mode?");
    m_dialog->setServiceLevel(false);
    m_dialog->setServiceLevel(true);
    QCOMPARE(tabWidget()->currentWidget()->objectName(), QStringLiteral("tabUpdate"));
    QVERIFY(!line.waitForLine("f_mode?", polls + 2, silence));
}

void tst_SettingsDialog::pollingFollowsWhenTheTabInFrontIsTaken()
{
    make(true);
    connectDevice();
    clickTab(QStringLiteral("Service && Development"));
    QTRY_COMPARE(m_device->waitWhileBusy(), 0);
    ScriptedBench& line = m_illuminator->bench();
    const int polls = line.count("f_mode?");
    m_dialog->setServiceLevel(false);
    QVERIFY(line.waitForLine("f_mode?", polls + 2));
}

void tst_SettingsDialog::readingsRestWhileHidden()
{
    constexpr std::chrono::milliseconds longerThanTheInterval(1500);
    make(true);
    connectDevice();
    ScriptedBench& line = m_illuminator->bench();
    clickTab(QStringLiteral("System Config"));
    QVERIFY(line.waitForLine("temps", 1));
    m_dialog->hide();
    QVERIFY(!line.waitForLine("temps", line.count("temps") + 1, longerThanTheInterval));
    m_dialog->show();
    QVERIFY(line.waitForLine("temps", line.count("temps") + 1));
}

void tst_SettingsDialog::outlivesTheLinkAndTheUpdate()
{
    make(true);
    m_device.reset();
    delete m_update;
    QByteArray bytes("late\n");
    m_dialog->receivedDataFromDevice(bytes);
    clickTab(QStringLiteral("Service && Development"));
    clickTab(QStringLiteral("System Info"));
    QCOMPARE(m_dialog->console()->toPlainText(), QStringLiteral("late\n"));
}

QTEST_MAIN(tst_SettingsDialog)
#include "tst_SettingsDialog.moc"
