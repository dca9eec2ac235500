#include "settings/SystemConfigBench.h"
#include "update/Update.h"

namespace {
using namespace std::chrono_literals;
const ConfigCell firstNecsel{ConfigTable::Necsel, 0, 0};
const QString needsLoader = QStringLiteral("Device must be running loader for this command.");
} // namespace

/// The system configuration between the device and the editor's tables.
class tst_SystemConfigEditor : public SystemConfigTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildEditor()); }
    void cleanup() { removeDialog(); }
    void getShowsTheDevice();
    void getWithoutRecordLeavesTheTables_data();
    void getWithoutRecordLeavesTheTables();
    void setNeedsADevice();
    void setNeedsTheLoader();
    void setWritesEveryCell();
    void whatIsNoNumberBecomesZero();
    void setKeepsWhatItDoesNotShow();
    void setReadsFirstWhatItDoesNotKnow();
    void secondClickStartsNothing_data();
    void secondClickStartsNothing();
    void nothingDuringAnUpdate();
    void nothingDuringARestart();
    void cellsAreEditedByKeyboard();

private:
    bool sawWarning(const BoxAnswerer& boxes, const QString& text) const;
    /// The lines that read or write the record, so far.
    int transferLines() const;
};

bool tst_SystemConfigEditor::sawWarning(const BoxAnswerer& boxes, const QString& text) const
{
    return boxes.sawOneWarning(text) && boxes.boxes().first().parent == &m_hand->dialog();
}

int tst_SystemConfigEditor::transferLines() const
{
    return countBeginning("rf:") + countBeginning("wf:") + m_lines->count("issysconfigvalid") +
           m_lines->count("setsysconfigvalid");
}

void tst_SystemConfigEditor::getShowsTheDevice()
{
    const SystemConfigTexts before = texts();
    QVERIFY(!before[0].isEmpty());
    setDeviceTexts(likelyTexts());
    enter(before);
    item(firstNecsel)->setText(QStringLiteral("77"));
    QCOMPARE(texts()[1], before[1]);
    get();
    QVERIFY(texts() == likelyTexts());
    QVERIFY(buttonsAre(true));
    // What is half typed is over, too.
    beginTyping(firstNecsel, QStringLiteral("88"));
    get();
    QVERIFY(texts() == likelyTexts());
    QVERIFY(table(ConfigTable::Necsel)->indexWidget(table(ConfigTable::Necsel)->currentIndex()) == nullptr);
}

void tst_SystemConfigEditor::getWithoutRecordLeavesTheTables_data()
{
    QTest::addColumn<QString>("trouble");
    for (const char* trouble : {"not connected", "not valid", "too short", "silent"}) {
        QTest::newRow(trouble) << QString::fromLatin1(trouble);
    }
}

void tst_SystemConfigEditor::getWithoutRecordLeavesTheTables()
{
    QFETCH(QString, trouble);
    const BoxAnswerer boxes;
    enter(likelyTexts());
    if (trouble == QLatin1String("not connected")) {
        QVERIFY(unplug());
    } else if (trouble == QLatin1String("not valid")) {
        records().setValid(Record::System, false);
    } else if (trouble == QLatin1String("too short")) {
        records().setShort(Record::System, true);
    } else {
        Simulator::WireFault silence;
        silence.match = "rf:";
        m_device->wire().addFault(silence);
    }
    get();
    QVERIFY(texts() == likelyTexts());
    QVERIFY(buttonsAre(true));
    QVERIFY(boxes.boxes().isEmpty());
}

void tst_SystemConfigEditor::setNeedsADevice()
{
    QVERIFY(unplug());
    const BoxAnswerer boxes;
    set();
    QVERIFY(sawWarning(boxes, QStringLiteral("Please connect to device")));
}

void tst_SystemConfigEditor::setNeedsTheLoader()
{
    const BoxAnswerer boxes;
    set();
    QVERIFY(sawWarning(boxes, needsLoader));
    QCOMPARE(countBeginning("wf:"), 0);
    QCOMPARE(m_lines->count("setsysconfigvalid"), 0);
}

void tst_SystemConfigEditor::setWritesEveryCell()
{
    QVERIFY(switchTo(DeviceMode::Loader));
    const SystemConfigBytes before = deviceRecord();
    enter(likelyTexts());
    const BoxAnswerer boxes;
    set();
    QVERIFY(sawDone(boxes));
    QVERIFY(deviceRecord() == SystemConfigRecord::fromTexts(likelyTexts(), before));
    QVERIFY(records().isValid(Record::System));
    QCOMPARE(countBeginning("wf:"), 5);
    QVERIFY(switchTo(DeviceMode::Application));
    enter(SystemConfigTexts());
    get();
    QVERIFY(texts() == likelyTexts());
}

void tst_SystemConfigEditor::whatIsNoNumberBecomesZero()
{
    QVERIFY(switchTo(DeviceMode::Loader));
    enter(likelyTexts());
    enter(allCells(QStringLiteral("abc")));
    const BoxAnswerer boxes;
    set();
    QCOMPARE(boxes.boxes().size(), 1);
    QVERIFY(deviceTexts() == allCells(QStringLiteral("0")));
    // The table is the user's and is not corrected.
    QCOMPARE(item(firstNecsel)->text(), QStringLiteral("abc"));
}

void tst_SystemConfigEditor::setKeepsWhatItDoesNotShow()
{
    SystemConfigBytes full;
    full.fill(0xa5);
    setDeviceRecord(full);
    QVERIFY(unplug());
    QVERIFY(plugIn());
    QTRY_VERIFY(texts() == deviceTexts());
    QVERIFY(switchTo(DeviceMode::Loader));
    enter(likelyTexts());
    const BoxAnswerer boxes;
    set();
    QCOMPARE(boxes.boxes().size(), 1);
    const SystemConfigBytes written = deviceRecord();
    for (const std::size_t hidden : {0, 7, 35 + 169, 207, 209, 239, 244, 263, 268, 272, 275, 286, 299}) {
        QCOMPARE(int(written.at(hidden)), 0xa5);
    }
    QCOMPARE(int(written[8]), 8);
    QCOMPARE(int(written[9]), 0);
}

void tst_SystemConfigEditor::setReadsFirstWhatItDoesNotKnow()
{
    // Nothing could be read while it was not valid; it became so behind the program's back.
    QVERIFY(unplug());
    records().setValid(Record::System, false);
    QVERIFY(plugIn());
    QVERIFY(switchTo(DeviceMode::Loader));
    QVERIFY(!m_window->device()->knownSystemConfig());
    SystemConfigBytes full;
    full.fill(0x5a);
    setDeviceRecord(full);
    records().setValid(Record::System, true);
    enter(likelyTexts());
    const BoxAnswerer boxes;
    set();
    QVERIFY(sawDone(boxes));
    QCOMPARE(int(deviceRecord().at(0)), 0x5a);
    QVERIFY(deviceTexts() == likelyTexts());
}

void tst_SystemConfigEditor::secondClickStartsNothing_data()
{
    QTest::addColumn<bool>("writes");
    QTest::addColumn<int>("lines");
    QTest::newRow("get") << false << 4;
    QTest::newRow("set") << true << 6;
}

void tst_SystemConfigEditor::secondClickStartsNothing()
{
    QFETCH(bool, writes);
    QFETCH(int, lines);
    QVERIFY(switchTo(DeviceMode::Loader));
    Simulator::WireFault late;
    late.kind = Simulator::WireFault::Kind::LateReply;
    late.match = writes ? "wf:" : "rf:";
    late.delay = 300ms;
    m_device->wire().addFault(late);
    const BoxAnswerer boxes;
    int ticks = 0;
    runLater(m_window.get(), 100ms, [this] {
        QVERIFY(buttonsAre(false));
        QVERIFY(m_hand->dialog().focusWidget() != nullptr);
        QVERIFY(!m_hand->dialog().focusWidget()->inherits("QTableWidget"));
        get();
        set();
        QTest::keyClick(m_hand->dialog().focusWidget(), Qt::Key_Space);
    });
    QTimer alive;
    connect(&alive, &QTimer::timeout, this, [&ticks] { ++ticks; });
    alive.start(10);
    m_lines->clear();
    const char* const name = writes ? "pushButtonSetSystemConfigData" : "pushButtonGetSystemConfigData";
    m_hand->part<QPushButton>(name)->setFocus();
    m_hand->click(name);
    QVERIFY2(ticks > 10, qPrintable(QString::number(ticks)));
    QCOMPARE(transferLines(), lines);
    QCOMPARE(boxes.boxes().size(), writes ? 1 : 0);
    QVERIFY(buttonsAre(true));
    QCOMPARE(m_hand->dialog().focusWidget(), m_hand->part<QWidget>(name));
}

void tst_SystemConfigEditor::nothingDuringAnUpdate()
{
    QVERIFY(switchTo(DeviceMode::Loader));
    auto* const update = m_window->findChild<Update*>();
    QVERIFY(update != nullptr);
    const QSignalSpy refused(update, &Update::actionRefused);
    const BoxAnswerer boxes;
    enter(likelyTexts());
    m_lines->clear();
    {
        const Update::InProgress run(*update);
        get();
        set();
    }
    QCOMPARE(refused.size(), 2);
    QVERIFY(boxes.boxes().isEmpty());
    QCOMPARE(transferLines(), 0);
    QVERIFY(texts() == likelyTexts());
}

void tst_SystemConfigEditor::nothingDuringARestart()
{
    QVERIFY(switchTo(DeviceMode::Loader));
    illuminator().setRestartTime(600ms);
    const BoxAnswerer boxes;
    m_lines->clear();
    int linesInRestart = -1;
    runLater(m_window.get(), 200ms, [&] {
        m_hand->clickTab(QStringLiteral("System Config"));
        get();
        set();
        linesInRestart = transferLines();
    });
    m_hand->click("pushButtonLoaderMode");
    QTRY_VERIFY(m_window->device()->isApplicationConnected());
    QCOMPARE(linesInRestart, 0);
    QVERIFY(sawWarning(boxes, needsLoader));
}

void tst_SystemConfigEditor::cellsAreEditedByKeyboard()
{
    QTableWidget* const novalum = table(ConfigTable::Novalum);
    novalum->setFocus();
    novalum->setCurrentCell(0, 0);
    m_lines->clear();
    // Typing begins in the cell at once, Return ends it and presses no button.
    QTest::keyClick(novalum, Qt::Key_4);
    QWidget* const editor = novalum->indexWidget(novalum->currentIndex());
    QVERIFY(editor != nullptr);
    QTest::keyClicks(editor, QStringLiteral("32"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(novalum->item(0, 0)->text(), QStringLiteral("432"));
    QVERIFY(m_hand->dialog().isVisible());
    // Escape leaves the cell as it was, and the dialog open.
    QTest::keyClick(novalum, Qt::Key_7);
    QTest::keyClick(novalum->indexWidget(novalum->currentIndex()), Qt::Key_Escape);
    QTRY_VERIFY(novalum->indexWidget(novalum->currentIndex()) == nullptr);
    QCOMPARE(novalum->item(0, 0)->text(), QStringLiteral("432"));
    QVERIFY(m_hand->dialog().isVisible());
    // Tab goes on to the next table, whichever cell is the current one.
    QTest::keyClick(novalum, Qt::Key_Tab);
    QVERIFY(!novalum->hasFocus());
    QCOMPARE(countBeginning("wf:") + countBeginning("rf:"), 0);
}

QTEST_MAIN(tst_SystemConfigEditor)
#include "tst_SystemConfigEditor.moc"
