#include "device/SerialPorts.h"
#include "settings/LoneDialogTest.h"
#include "settings/OperatingChoices.h"
#include "settings/SystemInfoPage.h"
#include "settings/ThreeTries.h"
#include "support/BoxAnswerer.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QSpinBox>
#include <QWheelEvent>

namespace {
/// A second passes between two tries.
constexpr int longerThanBetweenTriesMs = 1400;
} // namespace

/// What the dialog's pages decide by themselves.
class tst_SettingsPages : public LoneDialogTest
{
    Q_OBJECT

private slots:
    void init() { buildRoom(); }
    void cleanup() { removeRoom(); }
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
    void whoControlsIsTold_data();
    void whoControlsIsTold();
    void runningImageFollowsTheConnection();
    void failedRestartIsToldUntilTheNextChange();
    void triesEnd_data();
    void triesEnd();
    void newTriesReplaceTheOld();
    void triesMayGoInsideATry();
};

void tst_SettingsPages::openPortListIsLeftAlone()
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

void tst_SettingsPages::identityCanBeEditedAtServiceLevelOnly_data()
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

void tst_SettingsPages::identityCanBeEditedAtServiceLevelOnly()
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

void tst_SettingsPages::fieldBeingEditedKeepsItsText()
{
    make(true);
    connectDevice();
    auto* const edited = part<QLineEdit>("lineEditVYRSerialNumber");
    const auto* const followed = part<QLineEdit>("lineEditVYRPartNumber");
    m_dialog->UpdateProductConfigDisplay();
    QTRY_COMPARE(edited->text(), QStringLiteral("1234"));
    edited->setFocus();
    QTest::keyClicks(edited, QStringLiteral("77"));
    m_illuminator->product.replace("PN-7", "PN-8");
    m_dialog->UpdateProductConfigDisplay();
    QTRY_COMPARE(followed->text(), QStringLiteral("PN-8"));
    QCOMPARE(edited->text(), QStringLiteral("771234"));
    // What was typed waits to be written, wherever the focus went.
    part<QLineEdit>("lineEditVYRPartNumber")->setFocus();
    m_illuminator->product.replace("PN-8", "PN-9");
    m_dialog->UpdateProductConfigDisplay();
    QTRY_COMPARE(followed->text(), QStringLiteral("PN-9"));
    QCOMPARE(edited->text(), QStringLiteral("771234"));
}

void tst_SettingsPages::hardwareRevision_data()
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

void tst_SettingsPages::hardwareRevision()
{
    QFETCH(QString, version);
    QFETCH(QString, shown);
    QCOMPARE(hardwareRevisionText(version), shown);
}

void tst_SettingsPages::wheelNeedsTheFocus()
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

void tst_SettingsPages::updateOfTheProgramIsExplained()
{
    make(false);
    const BoxAnswerer boxes;
    part<QAbstractButton>("pushButtonUpdateApplication")->click();
    QCOMPARE(boxes.boxes().size(), 1);
    const BoxAnswerer::Box& box = boxes.boxes().first();
    QCOMPARE(box.title, QString());
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.spokenName, QStringLiteral("Information"));
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.textFormat, Qt::PlainText);
    QVERIFY(box.text.contains(QStringLiteral("installing a newer package")));
}

void tst_SettingsPages::dialogMayGoWithItsBox()
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

void tst_SettingsPages::commandDuringAnUpdateIsToldWithoutAPort()
{
    make(false);
    const QSignalSpy refused(m_update, &Update::actionRefused);
    auto* const reset = part<QAbstractButton>("pushButtonSystemReset");
    reset->click();
    QCOMPARE(refused.size(), 0);
    const Update::InProgress run(*m_update);
    reset->click();
    QCOMPARE(refused.size(), 1);
}

void tst_SettingsPages::whoControlsIsTold_data()
{
    QTest::addColumn<bool>("shuttersExternal");
    QTest::addColumn<bool>("intensitiesExternal");
    QTest::addColumn<QString>("controlMode");
    QTest::addColumn<QString>("ttl");
    const QString shuttersHere = QStringLiteral("Shutters are opened and closed by this program");
    const QString shuttersThere =
        QStringLiteral("Shutters follow the external inputs; the shutter buttons are off.");
    const QString levelsHere = QStringLiteral(" Intensities are set by this program.");
    const QString levelsThere =
        QStringLiteral(" Intensities follow the external inputs; the sliders are off.");
    const QString inputsOff(shuttersHere + QStringLiteral("; the external inputs have no effect now."));
    const QString shuttersHereOnly(shuttersHere + QLatin1Char('.'));
    QTest::newRow("all here") << false << false << QString(shuttersHereOnly + levelsHere) << inputsOff;
    QTest::newRow("shutters external")
        << true << false << QString(shuttersThere + levelsHere) << shuttersThere;
    QTest::newRow("intensities external")
        << false << true << QString(shuttersHereOnly + levelsThere) << inputsOff;
    QTest::newRow("all external") << true << true << QString(shuttersThere + levelsThere) << shuttersThere;
}

void tst_SettingsPages::whoControlsIsTold()
{
    QFETCH(bool, shuttersExternal);
    QFETCH(bool, intensitiesExternal);
    QFETCH(QString, controlMode);
    QFETCH(QString, ttl);
    make(false);
    const auto isTold = [&] {
        return part<QLabel>("labelControlModeSummary")->text() == controlMode &&
               part<QLabel>("labelTTLSummary")->text() == ttl;
    };
    OperatingChoices choices;
    choices.shutterControl = shuttersExternal ? 0 : 1;
    choices.intensityControl = intensitiesExternal ? 0 : 1;
    m_dialog->showChoices(choices);
    QVERIFY(isTold());

    choices.shutterControl = shuttersExternal ? 1 : 0;
    choices.intensityControl = intensitiesExternal ? 1 : 0;
    m_dialog->showChoices(choices);
    QVERIFY(!isTold());
    part<QAbstractButton>(shuttersExternal ? "radioButtonShutterControlExternal"
                                           : "radioButtonShutterControlUSB")
        ->click();
    part<QAbstractButton>(intensitiesExternal ? "radioButtonIntensityControlExternal"
                                              : "radioButtonIntensityControlUSB")
        ->click();
    QVERIFY(isTold());

    part<QAbstractButton>("pushButtonRestoreDefaults")->click();
    QCOMPARE(isTold(), !shuttersExternal && !intensitiesExternal);
}

void tst_SettingsPages::runningImageFollowsTheConnection()
{
    make(true);
    connect(m_device.get(), &Device::deviceConnected, m_dialog.get(), &SettingsDialog::onDeviceConnected);
    connect(m_device.get(), &Device::deviceDisconnected, m_dialog.get(),
            &SettingsDialog::onDeviceDisconnected);
    const auto isTold = [this](const QString& text) {
        return part<QLabel>("labelRunningImage")->text() == text &&
               part<QLabel>("labelRunningImage2")->text() == text;
    };
    QVERIFY(isTold(QStringLiteral("Not connected")));
    m_illuminator->image = "Loader V1.5.0";
    connectDevice();
    QVERIFY(isTold(QStringLiteral("Running: loader 1.5.0")));
    m_device->selectPort({});
    QVERIFY(isTold(QStringLiteral("Not connected")));
    m_illuminator->image = "<b>%1</b> V1.0.0";
    connectDevice();
    QVERIFY(isTold(QStringLiteral("Running: <b>%1</b> 1.0.0")));
    QCOMPARE(part<QLabel>("labelRunningImage")->textFormat(), Qt::PlainText);
    QCOMPARE(part<QLabel>("labelRunningImage2")->textFormat(), Qt::PlainText);
}

void tst_SettingsPages::failedRestartIsToldUntilTheNextChange()
{
    make(true);
    connectDevice();
    auto* const button = part<QAbstractButton>("pushButtonLoaderMode2");
    QString told;
    // The link takes no second switch while one waits for the device.
    m_illuminator->thinkTime = std::chrono::milliseconds(400);
    runLater(m_dialog.get(), std::chrono::milliseconds(100), [&] {
        m_illuminator->thinkTime = {};
        button->click();
        told = part<QLabel>("labelRunningImage2")->text();
    });
    QCOMPARE(m_device->goLoader(), int(DeviceResult::Ok));
    QCOMPARE(told, QStringLiteral("The device did not restart (error -40013)."));
    QCOMPARE(part<QLabel>("labelRunningImage")->text(), told);
    QVERIFY(button->isEnabled());
    QCOMPARE(m_illuminator->bench().count("goloader"), 1);
    m_dialog->onDeviceConnected(m_device->portName());
    QCOMPARE(part<QLabel>("labelRunningImage2")->text(), QStringLiteral("Running: application 2.7.0"));
}

void tst_SettingsPages::triesEnd_data()
{
    QTest::addColumn<int>("failures");
    QTest::addColumn<int>("tries");
    QTest::newRow("first") << 0 << 1;
    QTest::newRow("second") << 1 << 2;
    QTest::newRow("third") << 2 << 3;
    QTest::newRow("never") << 9 << 3;
}

void tst_SettingsPages::triesEnd()
{
    QFETCH(int, failures);
    QFETCH(int, tries);
    int made = 0;
    ThreeTries reader([&] { return ++made > failures; }, nullptr);
    reader.start();
    // Whoever asks comes first.
    QCOMPARE(made, 0);
    QTRY_COMPARE(made, 1);
    QTRY_COMPARE(made, tries);
    QVERIFY(!QTest::qWaitFor([&] { return made > tries; }, longerThanBetweenTriesMs));
}

void tst_SettingsPages::newTriesReplaceTheOld()
{
    int made = 0;
    ThreeTries reader(
        [&] {
            // As when the user asks again while the device has not answered yet.
            if (++made == 1) {
                reader.start();
            }
            return false;
        },
        nullptr);
    reader.start();
    QTRY_COMPARE(made, 4);
    QVERIFY(!QTest::qWaitFor([&] { return made > 4; }, longerThanBetweenTriesMs));
    reader.startLater();
    QCOMPARE(made, 4);
    QTRY_COMPARE(made, 7);
}

void tst_SettingsPages::triesMayGoInsideATry()
{
    auto* const parent = new QObject;
    bool made = false;
    auto* const reader = new ThreeTries(
        [&made, parent] {
            made = true;
            delete parent;
            return false;
        },
        parent);
    const QPointer<ThreeTries> watched(reader);
    reader->start();
    QTRY_VERIFY(made);
    QVERIFY(watched.isNull());
}

QTEST_MAIN(tst_SettingsPages)
#include "tst_SettingsPages.moc"
