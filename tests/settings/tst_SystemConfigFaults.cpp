#include "Simulator/IlluminatorModel.h"
#include "settings/LoneDialogTest.h"
#include "support/BoxAnswerer.h"

#include <QFileDialog>
#include <QPointer>
#include <QPushButton>
#include <QTableWidget>

namespace {
using Simulator::IlluminatorModel;
using Simulator::Image;
using Record = Simulator::RecordMemory::Record;
/// How many lines each transfer takes: four to read, six to write.
constexpr std::array<int, 5> lineCounts{4, 4, 6, 10, 7};
const QString writingFailed = QStringLiteral("Error writing system configuration");
const QString updated = QStringLiteral("System configuration updated");

bool isTransferLine(const QByteArray& line)
{
    return line.startsWith("rf:") || line.startsWith("wf:") || line == "issysconfigvalid" ||
           line == "setsysconfigvalid";
}

QStringList boxTexts(const BoxAnswerer& boxes)
{
    QStringList texts;
    for (const BoxAnswerer::Box& box : boxes.boxes()) {
        texts.append(box.text);
    }
    return texts;
}
} // namespace

/// Each step of each transfer at a device that goes away, keeps quiet or talks nonsense in just that step.
class tst_SystemConfigFaults : public LoneDialogTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void everyStep_data();
    void everyStep();
    void dialogGoesInEveryStep_data();
    void dialogGoesInEveryStep();
    void dialogGoesWithItsFileDialog_data();
    void dialogGoesWithItsFileDialog();

private:
    enum class Transfer { Connecting, Get, SetKnown, SetUnknown, SetFresh };
    static void addSteps(const QList<const char*>& kinds);
    Simulator::Answer answer(const QByteArray& line);
    void prepare(Transfer transfer);
    void start(Transfer transfer);
    bool plugInAgain();
    void worksAgain();
    void click(const char* kind) const;
    QTableWidgetItem* firstCell() const { return part<QTableWidget>("tableWidgetNecselParams")->item(0, 0); }

    std::unique_ptr<IlluminatorModel> m_model;
    int m_count = 0; ///< of a transfer's lines so far
    int m_strikeAt = 0;
    std::function<std::optional<Simulator::Answer>()> m_strike; ///< the answer to that line
};

void tst_SystemConfigFaults::init()
{
    buildRoom();
    m_model = std::make_unique<IlluminatorModel>();
    m_model->boot(Image::Loader, "test");
    m_illuminator->bench().setResponder(
        [this](const QByteArray& line) { return std::optional(answer(line)); });
    m_strikeAt = 0;
    make(true);
    connect(m_device.get(), &Device::deviceConnected, m_dialog.get(), &SettingsDialog::onDeviceConnected);
    connect(m_device.get(), &Device::deviceDisconnected, m_dialog.get(),
            &SettingsDialog::onDeviceDisconnected);
    clickTab(QStringLiteral("System Config"));
}

void tst_SystemConfigFaults::cleanup()
{
    removeRoom();
    m_model.reset();
}

Simulator::Answer tst_SystemConfigFaults::answer(const QByteArray& line)
{
    if (isTransferLine(line) && ++m_count == m_strikeAt && m_strike) {
        if (const auto special = m_strike()) {
            return *special;
        }
    }
    return {m_model->handle(line).text, {}};
}

void tst_SystemConfigFaults::prepare(Transfer transfer)
{
    if (transfer == Transfer::Connecting) {
        return;
    }
    m_model->records().setValid(Record::System, transfer == Transfer::SetKnown || transfer == Transfer::Get);
    connectDevice();
    QVERIFY(m_illuminator->bench().waitForLine("ischanconfigvalid"));
    QCOMPARE(m_device->knownSystemConfig().has_value(), m_model->records().isValid(Record::System));
    m_model->records().setValid(Record::System, transfer != Transfer::SetFresh);
    firstCell()->setText(QStringLiteral("12.5"));
}

void tst_SystemConfigFaults::start(Transfer transfer)
{
    m_count = 0;
    if (transfer == Transfer::Connecting) {
        connectDevice();
        QTRY_VERIFY(m_count >= m_strikeAt);
    } else {
        click(transfer == Transfer::Get ? "Get" : "Set");
    }
}

void tst_SystemConfigFaults::click(const char* kind) const
{
    const QByteArray name = QByteArray("pushButton") + kind + "SystemConfigData";
    QTest::mouseClick(part<QPushButton>(name.constData()), Qt::LeftButton);
}

bool tst_SystemConfigFaults::plugInAgain()
{
    if (!m_illuminator->bench().wire().isPlugged() && !m_illuminator->bench().wire().plug()) {
        return false;
    }
    return QTest::qWaitFor(
        [this] { return m_device->isOpen() && m_device->deviceMode() == DeviceMode::Loader; }, 10000);
}

void tst_SystemConfigFaults::addSteps(const QList<const char*>& kinds)
{
    QTest::addColumn<int>("transfer");
    QTest::addColumn<QByteArray>("kind");
    QTest::addColumn<int>("step");
    const QList<const char*> names{"connecting", "get", "set", "set, record unknown", "set, no record"};
    for (const char* kind : kinds) {
        for (int transfer = 0; transfer < names.size(); ++transfer) {
            for (int step = 1; step <= lineCounts.at(std::size_t(transfer)); ++step) {
                QTest::addRow("%s, %s, line %d", kind, names.at(transfer), step)
                    << transfer << QByteArray(kind) << step;
            }
        }
    }
}

void tst_SystemConfigFaults::everyStep_data()
{
    addSteps({"unplugged", "silent", "nonsense"});
}

void tst_SystemConfigFaults::everyStep()
{
    QFETCH(int, transfer);
    QFETCH(QByteArray, kind);
    QFETCH(int, step);
    const auto which = Transfer(transfer);
    prepare(which);
    bool writing = false;
    m_strikeAt = step;
    m_strike = [&]() -> std::optional<Simulator::Answer> {
        writing = !m_model->records().isValid(Record::System);
        if (kind == "unplugged") {
            m_illuminator->bench().wire().unplug();
        }
        return Simulator::Answer{kind == "nonsense" ? QByteArray("<b>%1\n") : QByteArray(), {}};
    };
    // Nonsense in answer to the question for a record is a no, and behind the last line it is not judged.
    const bool asked = kind == "nonsense" && step == 1 && which > Transfer::SetKnown;
    QStringList expected;
    {
        const BoxAnswerer boxes;
        start(which);
        if (which >= Transfer::SetKnown) {
            const bool unjudged =
                asked || (kind == "nonsense" && step == lineCounts.at(std::size_t(transfer)));
            expected.append(unjudged ? updated : writingFailed);
        }
        QCOMPARE(boxTexts(boxes), expected);
    }
    QVERIFY(m_count >= step);
    QVERIFY(asked || !writing || !m_model->records().isValid(Record::System));
    m_strike = {};
    worksAgain();
}

/// The same dialog, at the same device.
void tst_SystemConfigFaults::worksAgain()
{
    const int asked = m_illuminator->bench().count("issysconfigvalid");
    const bool wasOpen = m_device->isOpen();
    QVERIFY(plugInAgain());
    // What is typed before the new connection is read is not for it.
    QTRY_VERIFY(wasOpen || m_illuminator->bench().count("issysconfigvalid") > asked);
    QTRY_VERIFY(part<QPushButton>("pushButtonSetSystemConfigData")->isEnabled());
    QTRY_VERIFY_WITH_TIMEOUT(m_device->waitWhileBusy() == DeviceResult::Ok, 10000);
    firstCell()->setText(QStringLiteral("7.25"));
    const BoxAnswerer boxes;
    click("Set");
    QCOMPARE(boxTexts(boxes), QStringList(updated));
    QVERIFY(m_model->records().isValid(Record::System));
    firstCell()->setText(QStringLiteral("1"));
    click("Get");
    QCOMPARE(firstCell()->text(), QStringLiteral("7.25"));
}

void tst_SystemConfigFaults::dialogGoesInEveryStep_data()
{
    addSteps({"dialog deleted"});
}

void tst_SystemConfigFaults::dialogGoesInEveryStep()
{
    QFETCH(int, transfer);
    QFETCH(int, step);
    prepare(Transfer(transfer));
    m_strikeAt = step;
    m_strike = [this]() -> std::optional<Simulator::Answer> {
        m_dialog.reset();
        return std::nullopt;
    };
    const BoxAnswerer boxes;
    if (Transfer(transfer) == Transfer::Connecting) {
        start(Transfer::Connecting);
    } else {
        // Not by a click: the button would go under its own event.
        const bool gets = Transfer(transfer) == Transfer::Get;
        m_count = 0;
        QMetaObject::invokeMethod(m_dialog.get(), gets ? "on_pushButtonGetSystemConfigData_clicked"
                                                       : "on_pushButtonSetSystemConfigData_clicked");
    }
    QTRY_VERIFY(!m_dialog);
    QVERIFY(boxes.boxes().isEmpty());
    QTRY_COMPARE(m_device->waitWhileBusy(), int(DeviceResult::Ok));
}

void tst_SystemConfigFaults::dialogGoesWithItsFileDialog_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::newRow("load") << QByteArray("on_pushButtonLoadSystemConfigData_clicked");
    QTest::newRow("save") << QByteArray("on_pushButtonSaveSystemConfigData_clicked");
}

void tst_SystemConfigFaults::dialogGoesWithItsFileDialog()
{
    QFETCH(QByteArray, slot);
    QPointer<QWidget> chooser;
    QTimer look;
    connect(&look, &QTimer::timeout, this, [this, &chooser, &look] {
        chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (chooser) {
            look.stop();
            m_dialog.reset();
        }
    });
    look.start(5);
    QMetaObject::invokeMethod(m_dialog.get(), slot.constData());
    QVERIFY(!m_dialog);
    QVERIFY(!chooser);
}

QTEST_MAIN(tst_SystemConfigFaults)
#include "tst_SystemConfigFaults.moc"
