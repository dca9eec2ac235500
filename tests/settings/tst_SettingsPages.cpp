#include "device/SerialPorts.h"
#include "settings/LoneDialogTest.h"
#include "settings/SystemInfoPage.h"
#include "support/BoxAnswerer.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QSpinBox>
#include <QWheelEvent>

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
    const Update::Run run(*m_update);
    reset->click();
    QCOMPARE(refused.size(), 1);
}

QTEST_MAIN(tst_SettingsPages)
#include "tst_SettingsPages.moc"
