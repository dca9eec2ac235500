#include "settings/SystemConfigBench.h"

namespace {
const ConfigCell firstNecsel{ConfigTable::Necsel, 0, 0};
const ConfigCell lastNovalum{ConfigTable::Novalum, novalumRowCount - 1, novalumChannelCount - 1};
const QString typedText = QStringLiteral("4321");
} // namespace

/// What the user has edited and not written, while the device is switched, read, written or another one.
class tst_UnwrittenEdits : public SystemConfigTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildEditor()); }
    void cleanup() { removeDialog(); }
    void editsSurviveTheSwitch_data();
    void editsSurviveTheSwitch();
    void unchangedPageFollowsTheDevice();
    void typedWhileItIsRead();
    void anotherDeviceReplacesEdits();
    void editsAfterFailedReadSurvive();
    void typingInSettingIsNotLost();

private:
    SystemConfigTexts editedTexts() const;
    QMetaObject::Connection typeAtEach(const QByteArray& beginning);
};

/// What is shown, but for the first cell.
SystemConfigTexts tst_UnwrittenEdits::editedTexts() const
{
    SystemConfigTexts edited = texts();
    edited[0] = QStringLiteral("3.75");
    return edited;
}

/// Changes the last cell of the Novalum table whenever the device gets a line that begins so.
QMetaObject::Connection tst_UnwrittenEdits::typeAtEach(const QByteArray& beginning)
{
    return connect(&m_device->wire(), &Simulator::Wire::lineReceived, this,
                   [this, beginning](const QByteArray& line) {
                       if (line.startsWith(beginning)) {
                           item(lastNovalum)->setText(typedText);
                       }
                   });
}

void tst_UnwrittenEdits::editsSurviveTheSwitch_data()
{
    QTest::addColumn<bool>("typing");
    QTest::newRow("changed cells") << false;
    QTest::newRow("an open cell") << true;
}

void tst_UnwrittenEdits::editsSurviveTheSwitch()
{
    QFETCH(bool, typing);
    const SystemConfigTexts edited = editedTexts();
    if (typing) {
        beginTyping(firstNecsel, edited[0]);
    } else {
        enter(edited);
    }
    m_lines->clear();
    QVERIFY(switchTo(DeviceMode::Loader));
    QCOMPARE(countBeginning("rf:"), 0); // nobody would see it
    const BoxAnswerer boxes;
    set(); // the click leaves the cell
    QVERIFY(sawDone(boxes));
    QVERIFY(texts() == edited);
    QVERIFY(deviceTexts() == edited);
    // Written is written: from here on the device's values are shown again.
    QVERIFY(switchTo(DeviceMode::Application));
    setDeviceTexts(likelyTexts());
    QVERIFY(switchTo(DeviceMode::Loader));
    QTRY_VERIFY(texts() == likelyTexts());
}

void tst_UnwrittenEdits::unchangedPageFollowsTheDevice()
{
    setDeviceTexts(likelyTexts());
    QVERIFY(switchTo(DeviceMode::Loader));
    QTRY_VERIFY(texts() == likelyTexts());
}

void tst_UnwrittenEdits::typedWhileItIsRead()
{
    const auto connection = typeAtEach("rf:");
    QVERIFY(switchTo(DeviceMode::Loader));
    disconnect(connection);
    QCOMPARE(item(lastNovalum)->text(), typedText);
}

void tst_UnwrittenEdits::anotherDeviceReplacesEdits()
{
    enter(likelyTexts());
    QVERIFY(unplug());
    QVERIFY(texts() == likelyTexts());
    QVERIFY(plugIn());
    QTRY_VERIFY(texts() == deviceTexts());
    QVERIFY(texts() != likelyTexts());
}

void tst_UnwrittenEdits::editsAfterFailedReadSurvive()
{
    QVERIFY(unplug());
    records().setValid(Record::System, false);
    QVERIFY(plugIn());
    QTRY_VERIFY(m_lines->count("ischanconfigvalid") > 1);
    enter(likelyTexts());
    records().setValid(Record::System, true);
    QVERIFY(switchTo(DeviceMode::Loader));
    QVERIFY(texts() == likelyTexts());
}

void tst_UnwrittenEdits::typingInSettingIsNotLost()
{
    QVERIFY(switchTo(DeviceMode::Loader));
    const SystemConfigTexts edited = editedTexts();
    enter(edited);
    const BoxAnswerer boxes;
    const auto connection = typeAtEach("wf:");
    set();
    disconnect(connection);
    QCOMPARE(boxes.boxes().size(), 1);
    QVERIFY(deviceTexts() == edited);
    // It came too late for the device, which must not take it from the table again.
    QVERIFY(switchTo(DeviceMode::Application));
    QCOMPARE(item(lastNovalum)->text(), typedText);
}

QTEST_MAIN(tst_UnwrittenEdits)
#include "tst_UnwrittenEdits.moc"
