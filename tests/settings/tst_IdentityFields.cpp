#include "settings/ChannelBench.h"
#include "support/BoxAnswerer.h"

#include <QClipboard>

namespace {
constexpr char serialField[] = "lineEditVYRSerialNumber";
constexpr char partField[] = "lineEditVYRPartNumber";
constexpr char controllerField[] = "lineEditNecselControllerSerialNumber";
constexpr int reconnectionMs = 10000;
} // namespace

/// The identity fields: what they show, what they let in, what they keep and what they write.
class tst_IdentityFields : public ChannelDialogTest
{
    Q_OBJECT

private slots:
    void init() { buildDialog(); }
    void cleanup() { removeRoom(); }
    void showTheUnit();
    void letIn_data();
    void letIn();
    void oddTextStaysEditable_data();
    void oddTextStaysEditable();
    void fieldIsWritten_data();
    void fieldIsWritten();
    void hardwareVersionIsWrittenAsRead_data();
    void hardwareVersionIsWrittenAsRead();
    void unknownUnitIsReadFirst();
    void unreadableUnitIsNotWritten();
    void controllerNumberComesBack();
    void controllerIsKnownInTheLoader();
    void typedTextOutlivesTheSwitch();
    void tableOutlivesTheSwitch();
    void tableFollowsTheDeviceAfterTheWrite();
    void anotherUnitShowsItsOwn();
    void anotherUnitKeepsItsOwn();

private:
    void refresh();
    void replug();
};

/// The fields are read once more, to the end.
void tst_IdentityFields::refresh()
{
    const int before = m_illuminator->bench().count("prod_config");
    m_dialog->UpdateProductConfigDisplay();
    QVERIFY(m_illuminator->bench().waitForLine("prod_config", before + 1));
    bool isOver = false;
    // Whoever waits for the reply comes first.
    runLater(m_dialog.get(), std::chrono::milliseconds(50), [&isOver] { isOver = true; });
    QTRY_VERIFY(isOver);
}

void tst_IdentityFields::replug()
{
    const QSignalSpy connected(m_device.get(), &Device::deviceConnected);
    m_illuminator->bench().wire().unplug();
    m_device->checkConnectionStatus();
    QTRY_VERIFY(!m_device->isOpen());
    QVERIFY(m_illuminator->bench().wire().plug());
    m_device->checkConnectionStatus();
    QTRY_VERIFY_WITH_TIMEOUT(!connected.isEmpty(), reconnectionMs);
}

void tst_IdentityFields::showTheUnit()
{
    m_unit.image = "VYRApp V2.7.0";
    connectUnit();
    QCOMPARE(text(serialField), QStringLiteral("SN-1"));
    QCOMPARE(text(partField), QStringLiteral("PN-7"));
    QCOMPARE(text("lineEditNovalumSerialNumber"), QStringLiteral("V88"));
    QCOMPARE(text("lineEditNecselLaserSerialNumber"), QStringLiteral("N55"));
    QCOMPARE(text(controllerField), QStringLiteral("77"));
    QCOMPARE(text("lineEditNecselControllerVersion"), QStringLiteral("3.4.1"));
    QCOMPARE(text("lineEditVYRHardwareRev"), QStringLiteral("01.02.03"));
}

void tst_IdentityFields::letIn_data()
{
    QTest::addColumn<QString>("added");
    QTest::addColumn<QString>("kept");
    const QString same = QStringLiteral("SN-1");
    QTest::newRow("letters") << QStringLiteral("aZ 9") << QString(same + QStringLiteral("aZ 9"));
    QTest::newRow("signs") << QStringLiteral("~!:;%1&<") << QString(same + QStringLiteral("~!:;%1&<"));
    QTest::newRow("comma") << QStringLiteral(",") << same;
    QTest::newRow("equals sign") << QStringLiteral("=") << same;
    QTest::newRow("comma within") << QStringLiteral("1,2") << same;
    QTest::newRow("another item") << QStringLiteral("2,vyr_pn=X") << same;
    QTest::newRow("line feed within") << QStringLiteral("1\n2") << same;
    QTest::newRow("line feed at the end") << QStringLiteral("2\n") << QString(same + QLatin1Char('2'));
    QTest::newRow("line end at the end") << QStringLiteral("2\r\n") << QString(same + QLatin1Char('2'));
    QTest::newRow("tab") << QStringLiteral("1\t2") << same;
    QTest::newRow("null") << QString(QChar(0)) << same;
    QTest::newRow("delete") << QString(QChar(0x7f)) << same;
    QTest::newRow("beyond ASCII") << QStringLiteral("ü") << same;
    QTest::newRow("line separator") << QString(QChar(0x2028)) << same;
}

void tst_IdentityFields::letIn()
{
    QFETCH(QString, added);
    QFETCH(QString, kept);
    connectUnit();
    for (const char* name : {serialField, partField, controllerField, "lineEditNovalumSerialNumber",
                             "lineEditNecselLaserSerialNumber"}) {
        auto* const field = part<QLineEdit>(name);
        field->setText(QStringLiteral("SN-1"));
        QGuiApplication::clipboard()->setText(added);
        field->paste();
        QCOMPARE(field->text(), kept);
    }
    auto* const typedInto = part<QLineEdit>(serialField);
    typedInto->setText(QStringLiteral("SN-1"));
    typedInto->setFocus();
    if (added.size() == 1) {
        QTest::sendKeyEvent(QTest::Click, typedInto, Qt::Key_unknown, added, Qt::NoModifier);
        QCOMPARE(typedInto->text(), kept);
    }
}

void tst_IdentityFields::oddTextStaysEditable_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::newRow("beyond ASCII") << QByteArray("L\xc3\xbc");
    QTest::newRow("equals sign") << QByteArray("a=b");
    QTest::newRow("control") << QByteArray("a\x07");
    QTest::newRow("markup") << QByteArray("<b>%1</b>");
}

void tst_IdentityFields::oddTextStaysEditable()
{
    QFETCH(QByteArray, sent);
    m_unit.product.replace("SN-1", sent);
    connectUnit();
    const QString shown = QString::fromUtf8(sent);
    QCOMPARE(text(serialField), shown);
    auto* const field = part<QLineEdit>(serialField);
    field->end(false);
    QTest::keyClicks(field, QStringLiteral("1,2"));
    QCOMPARE(field->text(), QString(shown + QStringLiteral("12")));
    const BoxAnswerer boxes;
    setButton();
    QCOMPARE(boxes.boxes().size(), 1);
    QVERIFY(m_unit.product.contains(QByteArray("vyr_sn=" + sent + "12,necsel_laser_sn=")));
}

void tst_IdentityFields::fieldIsWritten_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("unit") << QByteArray(serialField) << QByteArray("vyr_sn");
    QTest::newRow("part number") << QByteArray(partField) << QByteArray("vyr_pn");
    QTest::newRow("laser module") << QByteArray("lineEditNovalumSerialNumber") << QByteArray("novalum_sn");
    QTest::newRow("555 laser") << QByteArray("lineEditNecselLaserSerialNumber")
                               << QByteArray("necsel_laser_sn");
}

void tst_IdentityFields::fieldIsWritten()
{
    QFETCH(QByteArray, field);
    QFETCH(QByteArray, key);
    connectUnit();
    QList<QByteArray> expected = m_unit.product.split(',');
    for (QByteArray& item : expected) {
        item = item.startsWith(QByteArray(key + '=')) ? QByteArray(key + "=New 1") : item;
    }
    type(field.constData(), QStringLiteral("New 1"));
    refresh();
    QCOMPARE(text(field.constData()), QStringLiteral("New 1"));
    const BoxAnswerer boxes;
    setButton();
    QCOMPARE(boxes.boxes().size(), 1);
    QCOMPARE(m_unit.product, expected.join(','));
    // From here on the field follows the device again.
    m_unit.product.replace("New 1", "Other");
    refresh();
    QCOMPARE(text(field.constData()), QStringLiteral("Other"));
}

void tst_IdentityFields::hardwareVersionIsWrittenAsRead_data()
{
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<QString>("shown");
    QTest::newRow("usual") << QByteArray("1.2.3") << QStringLiteral("01.02.03");
    QTest::newRow("with zeros") << QByteArray("01.2.03") << QStringLiteral("01.02.03");
    QTest::newRow("with a letter") << QByteArray("1.2.3b") << QStringLiteral("01.02.00");
    QTest::newRow("short") << QByteArray("4") << QStringLiteral("04.00.00");
    QTest::newRow("none") << QByteArray() << QStringLiteral("00.00.00");
}

void tst_IdentityFields::hardwareVersionIsWrittenAsRead()
{
    QFETCH(QByteArray, version);
    QFETCH(QString, shown);
    m_unit.product.replace("1.2.3", version);
    connectUnit();
    QCOMPARE(text("lineEditVYRHardwareRev"), shown);
    const QByteArray before = m_unit.product;
    for (int time = 0; time < 2; ++time) {
        const BoxAnswerer boxes;
        setButton();
        QCOMPARE(boxes.boxes().size(), 1);
        QCOMPARE(m_unit.product, before);
    }
    QCOMPARE(text("lineEditVYRHardwareRev"), shown);
}

void tst_IdentityFields::unknownUnitIsReadFirst()
{
    // Clicked before the identity was read, which is a second after connecting.
    connectDevice();
    const QByteArray before = m_unit.product;
    const BoxAnswerer boxes;
    setButton();
    QCOMPARE(boxes.boxes().size(), 1);
    QCOMPARE(boxes.boxes().first().text, QStringLiteral("Device configuration updated"));
    QCOMPARE(m_unit.product, before);
    QCOMPARE(text(serialField), QStringLiteral("SN-1"));
}

void tst_IdentityFields::unreadableUnitIsNotWritten()
{
    m_unit.odd.insert("prod_config", "nonsense");
    connectDevice();
    const QByteArray before = m_unit.product;
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(boxes.sawOneWarning(QStringLiteral("Error writing product configuration")));
    QVERIFY(written().isEmpty());
    QCOMPARE(m_unit.product, before);
}

void tst_IdentityFields::controllerNumberComesBack()
{
    m_unit.image = "VYRApp V2.7.0";
    connectUnit();
    type(controllerField, QStringLiteral("MINE"));
    refresh();
    QCOMPARE(text(controllerField), QStringLiteral("MINE"));
    QCOMPARE(m_device->goLoader(), int(DeviceResult::Ok));
    refresh();
    QCOMPARE(text(controllerField), QStringLiteral("MINE"));
    const BoxAnswerer boxes;
    setButton();
    QCOMPARE(boxes.boxes().size(), 1);
    QCOMPARE(text(controllerField), QStringLiteral("77"));
    QVERIFY(!m_unit.product.contains("MINE"));
}

void tst_IdentityFields::controllerIsKnownInTheLoader()
{
    m_unit.image = "VYRApp V2.7.0";
    connectUnit();
    QCOMPARE(m_device->goLoader(), int(DeviceResult::Ok));
    refresh();
    QCOMPARE(text(controllerField), QStringLiteral("77"));
    QCOMPARE(text("lineEditNecselControllerVersion"), QStringLiteral("3.4.1"));
    // Another one has not told yet.
    replug();
    refresh();
    QCOMPARE(text(controllerField), QString());
}

void tst_IdentityFields::typedTextOutlivesTheSwitch()
{
    m_unit.image = "VYRApp V2.7.0";
    connectUnit();
    type(serialField, QStringLiteral("NEW"));
    part<QWidget>(partField)->setFocus();
    m_unit.product.replace("PN-7", "PN-8");
    QCOMPARE(m_device->goLoader(), int(DeviceResult::Ok));
    QTRY_COMPARE(text(partField), QStringLiteral("PN-8"));
    QCOMPARE(text(serialField), QStringLiteral("NEW"));
    const BoxAnswerer boxes;
    setButton();
    QCOMPARE(boxes.boxes().size(), 1);
    QVERIFY(m_unit.product.contains("vyr_sn=NEW"));
}

void tst_IdentityFields::tableOutlivesTheSwitch()
{
    m_unit.image = "VYRApp V2.7.0";
    m_unit.setEntry(2, QByteArray(12, '\x01'));
    connectUnit();
    QTRY_COMPARE(laser(2)->currentIndex(), 1);
    secondary(2)->click();
    QVERIFY(!secondary(2)->isChecked());
    QCOMPARE(m_device->goLoader(), int(DeviceResult::Ok));
    refresh();
    QVERIFY(!secondary(2)->isChecked());
    const BoxAnswerer boxes;
    setButton();
    QCOMPARE(m_unit.entry(2).at(9), '\0');
}

void tst_IdentityFields::tableFollowsTheDeviceAfterTheWrite()
{
    m_unit.setEntry(2, QByteArray(12, '\x01'));
    connectUnit();
    QTRY_COMPARE(laser(2)->currentIndex(), 1);
    laser(2)->setCurrentIndex(4);
    const BoxAnswerer boxes;
    setButton();
    QCOMPARE(m_unit.entry(2).at(1), '\x04');
    m_unit.setEntry(2, QByteArray(12, '\x01'));
    QCOMPARE(m_device->goApp(), int(DeviceResult::Ok));
    QTRY_COMPARE(laser(2)->currentIndex(), 1);
}

void tst_IdentityFields::anotherUnitShowsItsOwn()
{
    m_unit.setEntry(2, QByteArray(12, '\x01'));
    connectUnit();
    QTRY_COMPARE(laser(2)->currentIndex(), 1);
    type(serialField, QStringLiteral("NEW"));
    laser(2)->setCurrentIndex(4);
    m_unit.product.replace("SN-1", "SN-2");
    replug();
    QTRY_COMPARE(laser(2)->currentIndex(), 1);
    QTRY_COMPARE(text(serialField), QStringLiteral("SN-2"));
    QVERIFY(!m_unit.product.contains("NEW"));
}

void tst_IdentityFields::anotherUnitKeepsItsOwn()
{
    connectUnit();
    type(serialField, QStringLiteral("NEW"));
    const QByteArray another = "vyr_hw_ver=9.8.7,vyr_pn=A,vyr_sn=B,necsel_laser_sn=C,novalum_sn=D";
    m_unit.product = another;
    replug();
    // Sooner than anything of its own is shown.
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(boxes.sawOneWarning(QStringLiteral("Error writing product configuration")));
    QCOMPARE(m_unit.product, another);
}

QTEST_MAIN(tst_IdentityFields)
#include "tst_IdentityFields.moc"
