#include "settings/TwoUnitsBench.h"

#include <QClipboard>

#include <optional>

namespace {
using namespace std::chrono_literals;
using Record = Simulator::RecordMemory::Record;
constexpr char setSystem[] = "pushButtonSetSystemConfigData";
constexpr char getSystem[] = "pushButtonGetSystemConfigData";
constexpr char setProduct[] = "pushButtonSetProductConfigData";
const QString systemFailed = QStringLiteral("Error writing system configuration");
const QString productFailed = QStringLiteral("Error writing product configuration");
const QString channelsFailed = QStringLiteral("Error writing channel configuration");
const QString systemUpdated = QStringLiteral("System configuration updated");
constexpr int severalTriesMs = 10000;

bool isWriting(const QByteArray& line)
{
    return line.startsWith("wf:") || line.startsWith("set") || line.startsWith("prod_config:");
}

bool isReadingMemory(const QByteArray& line)
{
    return line.startsWith("rf:");
}
} // namespace

/// Another unit in the place of the one that the dialog has read: neither may get what is the other's.
class tst_AnotherUnit : public TwoUnitsTest
{
    Q_OBJECT

private slots:
    void init() { buildUnits(); }
    void cleanup()
    {
        m_boxes.reset();
        removeUnits();
    }
    void withinATransfer_data();
    void withinATransfer();
    void beforeItIsRead_data();
    void beforeItIsRead();
    void withoutRecords_data();
    void withoutRecords();

private:
    void swapUnderABox();

    bool m_answered = false; ///< since a box was about to open
    bool m_swapped = false;
    std::optional<BoxAnswerer> m_boxes; ///< from the second unit on
};

/// A box keeps a transfer from going on for as long as nobody answers it, and a unit can be replaced
/// meanwhile.
void tst_AnotherUnit::swapUnderABox()
{
    QTimer look;
    m_answered = false;
    connect(m_device.get(), &Device::receivedDataFromDevice, &look, [this] { m_answered = true; });
    connect(&look, &QTimer::timeout, &look, [this, &look] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr || !m_answered) {
            return;
        }
        look.stop();
        m_swapped = plugInSecond();
        m_boxes.emplace();
        box->accept();
    });
    look.start(1ms);
    clickTab(QStringLiteral("System Config"));
    QGuiApplication::clipboard()->setText(QStringLiteral("no numbers"));
    QTest::keyClick(m_dialog.get(), Qt::Key_V, Qt::ControlModifier);
}

void tst_AnotherUnit::withinATransfer_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QStringList>("told");
    const auto row = [](const char* name, const char* line, const char* button, const QStringList& told) {
        QTest::newRow(name) << QByteArray(line) << QByteArray(button) << told;
    };
    row("system record, written", "wf:S2448000a4", setSystem, {systemFailed});
    row("system record, read", "rf: 8388836 128", getSystem, {});
    row("system record, read by itself", "rf: 8388836 128", "", {});
    row("product data, written", "prod_config:", setProduct, {productFailed});
    row("channel record, written", "wf:S244800198", setProduct, {channelsFailed});
    row("channel record, read by itself", "chan_config", "", {});
}

void tst_AnotherUnit::withinATransfer()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, button);
    QFETCH(QStringList, told);
    m_swapped = false;
    if (!button.isEmpty()) {
        connectDevice();
        QTRY_VERIFY(isShown(*m_first));
        QTRY_COMPARE(m_device->waitWhileBusy(), int(DeviceResult::Ok));
        firstCell()->setText(QStringLiteral("33"));
    }
    m_odd = [this, &line](const QByteArray& heard) -> std::optional<Simulator::Answer> {
        if (heard.startsWith(line)) {
            m_odd = {};
            runLater(m_dialog.get(), 0ms, [this] { swapUnderABox(); });
        }
        return std::nullopt;
    };
    if (button.isEmpty()) {
        connectDevice();
        QTRY_VERIFY(m_swapped);
    } else {
        click(button.constData());
    }
    QVERIFY(m_swapped);
    QCOMPARE(textsOf(*m_boxes), told);
    // Whatever was meant for the first unit has ended with it; the second is asked from the beginning.
    QTRY_VERIFY_WITH_TIMEOUT(isShown(*m_second), severalTriesMs);
    QTRY_VERIFY(m_device->knownChannelConfig().has_value());
    const QList<QByteArray> lines = recordLines();
    QVERIFY(std::none_of(lines.begin(), lines.end(), isWriting));
    QCOMPARE(lines.count("issysconfigvalid"), 1);
    QVERIFY(lines.indexOf("issysconfigvalid") < lines.indexOf("rf: 8388708 128"));
    QCOMPARE(std::count_if(lines.begin(), lines.end(), isReadingMemory), 3);
    QCOMPARE(lines.count("chan_config"), lines.count("ischanconfigvalid"));
    QVERIFY(lines.indexOf("ischanconfigvalid") < lines.indexOf("chan_config"));
    QVERIFY(m_second->isAsItWas());
    QVERIFY(m_second->model.records().isValid(Record::System));
    QVERIFY(m_second->model.records().isValid(Record::Channels));
    QVERIFY(std::equal(m_device->knownSystemConfig()->begin(), m_device->knownSystemConfig()->end(),
                       m_second->system.begin(),
                       [](quint8 known, char own) { return known == quint8(own); }));
}

void tst_AnotherUnit::beforeItIsRead_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QString>("told");
    QTest::newRow("system configuration") << QByteArray(setSystem) << systemFailed;
    QTest::newRow("product configuration") << QByteArray(setProduct) << productFailed;
}

void tst_AnotherUnit::beforeItIsRead()
{
    QFETCH(QByteArray, button);
    QFETCH(QString, told);
    connectDevice();
    QTRY_VERIFY(isShown(*m_first));
    QVERIFY(plugInSecond());
    QVERIFY(isShown(*m_first));
    const BoxAnswerer boxes;
    click(button.constData());
    QVERIFY(boxes.sawOneWarning(told));
    QTRY_VERIFY(isShown(*m_second));
    QVERIFY(m_second->isAsItWas());
    const QList<QByteArray> lines = recordLines();
    QVERIFY(std::none_of(lines.begin(), lines.end(), isWriting));
}

void tst_AnotherUnit::withoutRecords_data()
{
    QTest::addColumn<QByteArray>("validity");
    QTest::newRow("none") << QByteArray("No\n");
    QTest::newRow("garbled") << QByteArray("temps:Necsel=1\n");
}

void tst_AnotherUnit::withoutRecords()
{
    QFETCH(QByteArray, validity);
    const QString usualName = firstName();
    connectDevice();
    QTRY_VERIFY(isShown(*m_first));
    m_odd = [&validity](const QByteArray& line) {
        return line.startsWith("is") && line.endsWith("configvalid")
                   ? std::optional(Simulator::Answer{validity, {}})
                   : std::nullopt;
    };
    QVERIFY(plugInSecond());
    QTRY_COMPARE(firstCell()->text(), QStringLiteral("0"));
    QTRY_COMPARE(firstName(), usualName);
    const auto* const novalum = part<QTableWidget>("tableWidgetNovalumParams");
    QCOMPARE(novalum->item(novalum->rowCount() - 1, novalum->columnCount() - 1)->text(), QStringLiteral("0"));
    // No click was needed, and nothing was written for it.
    QVERIFY(m_second->isAsItWas());
    QVERIFY(!m_device->knownSystemConfig());
    QVERIFY(!m_device->knownChannelConfig());
    m_odd = {};
    QTRY_COMPARE(m_device->waitWhileBusy(), int(DeviceResult::Ok));
    click(getSystem);
    QTRY_COMPARE(firstCell()->text(), m_second->firstCell);
}

QTEST_MAIN(tst_AnotherUnit)
#include "tst_AnotherUnit.moc"
