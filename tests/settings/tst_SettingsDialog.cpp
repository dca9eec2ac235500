#include "Resources/Resources.h"
#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "settings/Console.h"
#include "settings/SettingsDialog.h"
#include "settings/SystemInfoPage.h"
#include "support/BoxAnswerer.h"
#include "update/Update.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QMetaMethod>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QWheelEvent>

#include <chrono>
#include <memory>

namespace {
/// Long enough for more than two polls.
constexpr std::chrono::milliseconds silence(700);
} // namespace

/// The dialog's frame: tabs, connection label, terminal and the polling that goes with the tabs.
class tst_SettingsDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
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
    void readingsRestWhileHidden();
    void outlivesTheLinkAndTheUpdate();
    void openPortListIsLeftAlone();
    void identityCanBeEditedAtServiceLevelOnly_data();
    void identityCanBeEditedAtServiceLevelOnly();
    void fieldBeingEditedKeepsItsText();
    void hardwareRevision_data();
    void hardwareRevision();
    void wheelNeedsTheFocus();
    void updateOfTheProgramIsExplained();
    void dialogMayGoWithItsBox();
    void commandDuringAnUpdateIsToldWithoutAPort();

private:
    void make(bool diagnostic);
    void connectDevice();
    template<typename Widget>
    Widget* part(const char* name) const
    {
        return m_dialog->findChild<Widget*>(QLatin1String(name));
    }
    QTabWidget* tabWidget() const { return m_dialog->findChild<QTabWidget*>(QStringLiteral("tabWidget")); }
    void clickTab(const QString& caption) const;

    std::unique_ptr<WindowBench> m_bench;
    std::unique_ptr<FakeIlluminator> m_illuminator;
    std::unique_ptr<QWidget> m_parent;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<Device> m_device;
    std::unique_ptr<SettingsDialog> m_dialog;
    Update* m_update = nullptr;
};

void tst_SettingsDialog::init()
{
    m_bench = std::make_unique<WindowBench>();
    m_illuminator = std::make_unique<FakeIlluminator>();
    m_parent = std::make_unique<QWidget>();
    m_store =
        std::make_unique<QSettings>(QSettings::UserScope, QStringLiteral("Tarnwick"), QStringLiteral("VYR"));
    m_device = std::make_unique<Device>();
    m_update = new Update(m_parent.get(), m_store.get());
}

void tst_SettingsDialog::cleanup()
{
    m_dialog.reset();
    m_device.reset();
    m_parent.reset();
    m_store.reset();
    m_illuminator.reset();
    m_bench.reset();
}

void tst_SettingsDialog::make(bool diagnostic)
{
    m_dialog = std::make_unique<SettingsDialog>(m_parent.get(), m_device.get(), m_update, m_store.get(),
                                                diagnostic, QStringLiteral(" 02.07.00"));
    m_dialog->setServiceLevel(diagnostic);
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
}

void tst_SettingsDialog::connectDevice()
{
    const QSignalSpy connected(m_device.get(), &Device::deviceConnected);
    m_device->checkConnectionStatus();
    QTRY_COMPARE(connected.size(), 1);
}

void tst_SettingsDialog::clickTab(const QString& caption) const
{
    QTabBar* bar = tabWidget()->tabBar();
    for (int i = 0; i < bar->count(); ++i) {
        if (bar->tabText(i) == caption) {
            QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->tabRect(i).center());
            return;
        }
    }
    QFAIL("No such tab");
}

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
        const Update::Run run(*m_update);
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
    const Update::Run run(*m_update);
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

void tst_SettingsDialog::openPortListIsLeftAlone()
{
    QStringList names{QStringLiteral("ttyA"), QStringLiteral("ttyB")};
    SerialPorts::setLister([&names] {
        QList<SerialPortEntry> ports;
        for (const QString& name : qAsConst(names)) {
            ports.append({name, {}, {}});
        }
        return ports;
    });
    make(false);
    auto* const ports = part<QComboBox>("comboBoxComPort");
    const QSignalSpy chosen(m_dialog.get(), &SettingsDialog::comPortChanged);
    ports->showPopup();
    QVERIFY(ports->view()->isVisible());
    names = QStringList{QStringLiteral("ttyC"), QStringLiteral("ttyB")};
    m_dialog->onDeviceDisconnected(QStringLiteral("ttyA"));
    QCOMPARE(ports->itemText(0), QStringLiteral("ttyA"));
    ports->setCurrentIndex(0);
    QTest::keyClick(ports->view(), Qt::Key_Return);
    // A port that has gone meanwhile is still the one that was meant.
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen.first().first().toString(), QStringLiteral("ttyA"));
    QCOMPARE(m_store->value(QStringLiteral("Device Com Port")).toString(), QStringLiteral("ttyA"));
    QTRY_COMPARE(ports->itemText(0), QStringLiteral("ttyC"));
    QCOMPARE(ports->currentIndex(), -1);
}

void tst_SettingsDialog::identityCanBeEditedAtServiceLevelOnly_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<bool>("editable");
    for (const char* name : {"VYRSerialNumber", "VYRPartNumber", "NovalumSerialNumber",
                             "NecselControllerSerialNumber", "NecselLaserSerialNumber"}) {
        QTest::newRow(name) << QByteArray(QByteArray("lineEdit") + name) << true;
    }
    QTest::newRow("controller's version") << QByteArray("lineEditNecselControllerVersion") << false;
    QTest::newRow("hardware revision") << QByteArray("lineEditVYRHardwareRev") << false;
}

void tst_SettingsDialog::identityCanBeEditedAtServiceLevelOnly()
{
    QFETCH(QByteArray, field);
    QFETCH(bool, editable);
    for (const bool service : {true, false, true}) {
        if (m_dialog) {
            m_dialog->setServiceLevel(service);
        } else {
            make(service);
        }
        QCOMPARE(part<QLineEdit>(field.constData())->isReadOnly(), !(service && editable));
        QCOMPARE(part<QWidget>("groupBoxChannelConfiguration")->isVisible(), service);
        QCOMPARE(part<QWidget>("pushButtonSetProductConfigData")->isVisible(), service);
    }
}

void tst_SettingsDialog::fieldBeingEditedKeepsItsText()
{
    make(true);
    auto* const edited = part<QLineEdit>("lineEditVYRSerialNumber");
    edited->setFocus();
    QTest::keyClicks(edited, QStringLiteral("77"));
    QVERIFY(edited->hasFocus());
    connectDevice();
    m_dialog->UpdateProductConfigDisplay();
    QTRY_COMPARE(part<QLineEdit>("lineEditVYRPartNumber")->text(), QStringLiteral("PN-7"));
    QCOMPARE(edited->text(), QStringLiteral("77"));
    part<QLineEdit>("lineEditVYRPartNumber")->setFocus();
    m_dialog->UpdateProductConfigDisplay();
    QTRY_COMPARE(edited->text(), QStringLiteral("1234"));
}

void tst_SettingsDialog::hardwareRevision_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("shown");
    QTest::newRow("one digit") << QStringLiteral("1.2.3") << QStringLiteral("01.02.03");
    QTest::newRow("more digits") << QStringLiteral("10.99.123") << QStringLiteral("10.99.123");
    QTest::newRow("missing") << QStringLiteral("4") << QStringLiteral("04.00.00");
    QTest::newRow("nothing") << QString() << QStringLiteral("00.00.00");
    QTest::newRow("unreadable") << QStringLiteral("x.-1.%1") << QStringLiteral("00.00.00");
    QTest::newRow("too many") << QStringLiteral("1.2.3.4") << QStringLiteral("01.02.03");
}

void tst_SettingsDialog::hardwareRevision()
{
    QFETCH(QString, version);
    QFETCH(QString, shown);
    QCOMPARE(hardwareRevisionText(version), shown);
}

void tst_SettingsDialog::wheelNeedsTheFocus()
{
    make(false);
    clickTab(QStringLiteral("Control Mode"));
    auto* const minutes = part<QSpinBox>("spinBoxSleepTimer");
    minutes->setEnabled(true);
    minutes->setValue(30);
    const QSignalSpy changed(m_dialog.get(), &SettingsDialog::sleepTimerChanged);
    const auto turn = [minutes] {
        const QPointF place = QRectF(minutes->rect()).center();
        QWheelEvent event(place, minutes->mapToGlobal(place.toPoint()), {}, {0, 120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(minutes, &event);
    };
    turn();
    QCOMPARE(minutes->value(), 30);
    QVERIFY(changed.isEmpty());
    minutes->setFocus();
    turn();
    QCOMPARE(minutes->value(), 31);
    QCOMPARE(changed.size(), 1);
}

void tst_SettingsDialog::updateOfTheProgramIsExplained()
{
    make(false);
    const BoxAnswerer boxes;
    part<QAbstractButton>("pushButtonUpdateApplication")->click();
    QCOMPARE(boxes.boxes().size(), 1);
    const BoxAnswerer::Box& box = boxes.boxes().first();
    QCOMPARE(box.title, QString());
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.textFormat, Qt::PlainText);
    QVERIFY(box.text.contains(QStringLiteral("installing a newer package")));
}

void tst_SettingsDialog::dialogMayGoWithItsBox()
{
    make(false);
    auto* const button = part<QAbstractButton>("pushButtonUpdateApplication");
    bool boxWasOpen = false;
    runLater(m_parent.get(), std::chrono::milliseconds(50), [&] {
        boxWasOpen = QApplication::activeModalWidget() != nullptr;
        m_dialog.reset();
    });
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(boxWasOpen);
    QVERIFY(m_dialog == nullptr);
}

void tst_SettingsDialog::commandDuringAnUpdateIsToldWithoutAPort()
{
    make(false);
    const QSignalSpy refused(m_update, &Update::actionRefused);
    auto* const reset = part<QAbstractButton>("pushButtonSystemReset");
    reset->click();
    QCOMPARE(refused.size(), 0);
    const Update::Run run(*m_update);
    reset->click();
    QCOMPARE(refused.size(), 1);
}

QTEST_MAIN(tst_SettingsDialog)
#include "tst_SettingsDialog.moc"
