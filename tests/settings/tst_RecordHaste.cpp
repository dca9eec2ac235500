#include "settings/SystemConfigBench.h"

#include <QClipboard>
#include <QDialog>
#include <QElapsedTimer>
#include <QGuiApplication>

namespace {
using namespace std::chrono_literals;
constexpr char setSystem[] = "pushButtonSetSystemConfigData";
constexpr char getSystem[] = "pushButtonGetSystemConfigData";
constexpr char setProduct[] = "pushButtonSetProductConfigData";
constexpr int neverEndsMs = 10000;

/// Every dialog and box that appears while it lives.
class DialogWatch : public QObject
{
public:
    DialogWatch() { qApp->installEventFilter(this); }
    const QStringList& shown() const { return m_shown; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* const dialog = qobject_cast<QDialog*>(watched);
        if (dialog != nullptr && event->type() == QEvent::Show) {
            const auto* const box = qobject_cast<QMessageBox*>(watched);
            m_shown.append(box == nullptr ? dialog->windowTitle() : box->text());
        }
        return false;
    }

private:
    QStringList m_shown;
};
} // namespace

/// What the user does in the middle of a transfer, or under one of its boxes: clicks elsewhere, or closes the
/// window.
class tst_RecordHaste : public SystemConfigTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildEditor()); }
    void cleanup() { removeDialog(); }
    void clicksDuringAWrite_data();
    void clicksDuringAWrite();
    void windowClosesInATransfer_data();
    void windowClosesInATransfer();
    void windowClosesUnderABox_data();
    void windowClosesUnderABox();

private:
    void atLine(const QByteArray& beginning, const std::function<void()>& action);
    void closeWindow();
    void runProgram(const std::function<void()>& action);

    std::unique_ptr<DialogWatch> m_dialogs; ///< from the end of the window on
};

/// Does it while the device still thinks about the next line that begins so.
void tst_RecordHaste::atLine(const QByteArray& beginning, const std::function<void()>& action)
{
    Simulator::WireFault late;
    late.kind = Simulator::WireFault::Kind::LateReply;
    late.match = beginning;
    late.delay = 100ms;
    m_device->wire().addFault(late);
    auto* const once = new QObject(m_window.get());
    connect(&m_device->wire(), &Simulator::Wire::lineReceived, once,
            [this, beginning, action, once](const QByteArray& line) {
                if (line.startsWith(beginning)) {
                    once->deleteLater();
                    disconnect(&m_device->wire(), nullptr, once, nullptr);
                    runLater(m_window.get(), 0ms, action);
                }
            });
}

void tst_RecordHaste::closeWindow()
{
    QVERIFY(m_window->close());
    m_dialogs = std::make_unique<DialogWatch>();
}

/// As main() does it: until the last window is closed.
void tst_RecordHaste::runProgram(const std::function<void()>& action)
{
    constexpr int hung = 77;
    QTimer guard;
    connect(&guard, &QTimer::timeout, this, [] { QApplication::exit(hung); });
    guard.start(neverEndsMs);
    runLater(m_window.get(), 0ms, action);
    QCOMPARE(QApplication::exec(), 0);
    QVERIFY(m_dialogs != nullptr);
    QVERIFY(!m_window->isVisible());
    QCOMPARE(m_dialogs->shown(), QStringList());
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    m_dialogs.reset();
}

void tst_RecordHaste::clicksDuringAWrite_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QByteArray>("other");
    QTest::addColumn<QString>("told");
    QTest::addColumn<int>("lines");
    QTest::newRow("system configuration") << QByteArray(setSystem) << QByteArray(setProduct)
                                          << QStringLiteral("System configuration updated") << 6;
    QTest::newRow("product configuration") << QByteArray(setProduct) << QByteArray(setSystem)
                                           << QStringLiteral("Device configuration updated") << 4;
}

void tst_RecordHaste::clicksDuringAWrite()
{
    QFETCH(QByteArray, button);
    QFETCH(QByteArray, other);
    QFETCH(QString, told);
    QFETCH(int, lines);
    QVERIFY(switchTo(DeviceMode::Loader));
    QTRY_VERIFY(!m_hand->fieldText("lineEditVYRHardwareRev").isEmpty());
    int clicks = 0;
    atLine("wf:", [this, &other, &button, &clicks] {
        for (const char* name : {"pushButtonLoaderMode", "pushButtonLoaderMode2", "pushButtonSystemReset",
                                 "pushButtonSystemReset2", other.constData(), button.constData()}) {
            m_hand->click(name);
            ++clicks;
        }
    });
    const BoxAnswerer boxes;
    m_lines->clear();
    m_hand->click(button.constData());
    QCOMPARE(clicks, 6);
    QCOMPARE(boxes.boxes().size(), 1);
    QCOMPARE(boxes.boxes().first().text, told);
    QList<QByteArray> heard = m_lines->texts();
    heard.removeAll("temps");
    QCOMPARE(heard.size(), lines);
    QCOMPARE(countBeginning("wf:") + countBeginning("prod_config:") + countBeginning("set"), lines);
    QVERIFY(records().isValid(Record::System));
    QVERIFY(records().isValid(Record::Channels));
    QCOMPARE(m_window->device()->deviceMode(), DeviceMode::Loader);
    // Afterwards a click is a click again.
    m_hand->click("pushButtonLoaderMode");
    QTRY_VERIFY(m_window->device()->isApplicationConnected());
    QCOMPARE(m_lines->count("goapp"), 1);
}

void tst_RecordHaste::windowClosesInATransfer_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("system configuration, written") << QByteArray(setSystem) << QByteArray("wf:");
    QTest::newRow("system configuration, marked") << QByteArray(setSystem) << QByteArray("setsysconfigvalid");
    QTest::newRow("system configuration, read") << QByteArray(getSystem) << QByteArray("rf:");
    QTest::newRow("product configuration, written") << QByteArray(setProduct) << QByteArray("prod_config:");
    QTest::newRow("channel configuration, written") << QByteArray(setProduct) << QByteArray("wf:");
}

void tst_RecordHaste::windowClosesInATransfer()
{
    QFETCH(QByteArray, button);
    QFETCH(QByteArray, line);
    QVERIFY(switchTo(DeviceMode::Loader));
    bool returned = false;
    atLine(line, [this] { closeWindow(); });
    runProgram([this, &button, &returned] {
        m_hand->click(button.constData());
        returned = true;
    });
    QVERIFY(returned);
    QVERIFY(!m_window->device()->isOpen());
}

void tst_RecordHaste::windowClosesUnderABox_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<bool>("inLoader");
    QTest::newRow("refused") << QByteArray(setSystem) << false;
    QTest::newRow("system configuration written") << QByteArray(setSystem) << true;
    QTest::newRow("product configuration written") << QByteArray(setProduct) << true;
    QTest::newRow("choosing a file") << QByteArray("pushButtonLoadSystemConfigData") << false;
    QTest::newRow("paste") << QByteArray() << false;
}

void tst_RecordHaste::windowClosesUnderABox()
{
    QFETCH(QByteArray, button);
    QFETCH(bool, inLoader);
    QVERIFY(!inLoader || switchTo(DeviceMode::Loader));
    QTimer look;
    connect(&look, &QTimer::timeout, this, [this, &look] {
        if (QApplication::activeModalWidget() != nullptr) {
            look.stop();
            closeWindow();
        }
    });
    look.start(5ms);
    bool returned = false;
    QGuiApplication::clipboard()->setText(QStringLiteral("no numbers"));
    runProgram([this, &button, &returned] {
        if (button.isEmpty()) {
            QTest::keyClick(&m_hand->dialog(), Qt::Key_V, Qt::ControlModifier);
        } else {
            m_hand->click(button.constData());
        }
        returned = true;
    });
    QVERIFY(returned);
}

QTEST_MAIN(tst_RecordHaste)
#include "tst_RecordHaste.moc"
