#include "settings/LoneDialogTest.h"

#include <QElapsedTimer>
#include <QLabel>

#include <optional>

namespace {
constexpr int longerThanAnAnswerMs = 2000;
const QLatin1String systemConfig("System Config");
} // namespace

/// What the dialog does while the device keeps quiet.
class tst_DialogWaits : public LoneDialogTest
{
    Q_OBJECT

private slots:
    void init() { buildRoom(); }
    void cleanup() { removeRoom(); }
    void silentLoaderIsAskedOnce();
    void silentApplicationIsAskedAgain();
    void readingsComeBesideThePoll();
    void tabComesBeforeTheAnswer();
    void dialogGoesInTheWait_data();
    void dialogGoesInTheWait();
    void connectionThatIsOverIsNotShown();

private:
    /// No answer to lines that begin so.
    void silence(const QByteArray& beginning);
    void makeListening();
    ScriptedBench& line() { return m_illuminator->bench(); }
};

void tst_DialogWaits::silence(const QByteArray& beginning)
{
    line().setResponder([this, beginning](const QByteArray& text) {
        return std::optional(text.startsWith(beginning) ? Simulator::Answer{}
                                                        : m_illuminator->answerTo(text));
    });
}

void tst_DialogWaits::makeListening()
{
    make(true);
    connect(m_device.get(), &Device::deviceConnected, m_dialog.get(), &SettingsDialog::onDeviceConnected);
    connect(m_device.get(), &Device::deviceDisconnected, m_dialog.get(),
            &SettingsDialog::onDeviceDisconnected);
}

void tst_DialogWaits::silentLoaderIsAskedOnce()
{
    m_illuminator->image = "Loader V1.5.0";
    silence("temps");
    makeListening();
    connectDevice();
    clickTab(systemConfig);
    QVERIFY(line().waitForLine("temps"));
    // The line is free for the editor from here on.
    QVERIFY(!line().waitForLine("temps", 2, std::chrono::seconds(4)));
    QVERIFY(m_device->isOpen());
    // Another image may answer.
    line().wire().unplug();
    QTRY_VERIFY(!m_device->isOpen());
    QVERIFY(line().wire().plug());
    connectDevice();
    QVERIFY(line().waitForLine("temps", 2));
}

void tst_DialogWaits::silentApplicationIsAskedAgain()
{
    silence("temps");
    makeListening();
    connectDevice();
    m_device->setPolling(false);
    clickTab(systemConfig);
    QVERIFY(line().waitForLine("temps", 2));
}

void tst_DialogWaits::readingsComeBesideThePoll()
{
    constexpr int seconds = 5;
    // The poll has the line for most of its interval.
    m_illuminator->thinkTime = std::chrono::milliseconds(25);
    makeListening();
    connectDevice();
    QVERIFY(line().waitForLine("prod_config"));
    clickTab(systemConfig);
    const int before = line().count("temps");
    QTest::qWait(seconds * 1000);
    QVERIFY2(line().count("temps") - before >= seconds - 1,
             QByteArray::number(line().count("temps") - before).constData());
    QVERIFY(m_device->isOpen());
}

void tst_DialogWaits::tabComesBeforeTheAnswer()
{
    makeListening();
    connectDevice();
    QVERIFY(line().waitForLine("prod_config"));
    silence("");
    clickTab(QStringLiteral("Update"));
    m_device->setPolling(false);
    QElapsedTimer clock;
    clock.start();
    clickTab(QStringLiteral("System Info"));
    QVERIFY(clock.elapsed() < 500);
    QCOMPARE(tabWidget()->currentWidget()->objectName(), QStringLiteral("tabSystemInfo"));
}

void tst_DialogWaits::dialogGoesInTheWait_data()
{
    QTest::addColumn<QByteArray>("asked");
    for (const char* asked :
         {"issysconfigvalid", "rf:", "ischanconfigvalid", "chan_config", "hours?", "prod_config"}) {
        QTest::newRow(asked) << QByteArray(asked);
    }
}

void tst_DialogWaits::dialogGoesInTheWait()
{
    QFETCH(QByteArray, asked);
    makeListening();
    bool gone = false;
    line().setResponder([&](const QByteArray& text) {
        if (!gone && text.startsWith(asked)) {
            gone = true;
            QTimer::singleShot(0, m_device.get(), [this] { m_dialog.reset(); });
            return std::optional(Simulator::Answer{});
        }
        if (text.endsWith("configvalid")) {
            return std::optional(Simulator::Answer{"Yes\n", {}});
        }
        if (text.startsWith("rf:")) {
            const int bytes = text.mid(text.lastIndexOf(' ') + 1).toInt();
            return std::optional(Simulator::Answer{"rf:" + QByteArray(2 * bytes, '0') + '\n', {}});
        }
        return std::optional(m_illuminator->answerTo(text));
    });
    connectDevice();
    QTRY_VERIFY(gone);
    QTRY_VERIFY(!m_dialog);
    QTest::qWait(longerThanAnAnswerMs); // for the wait to unwind
    QVERIFY(m_device->isOpen());
}

void tst_DialogWaits::connectionThatIsOverIsNotShown()
{
    makeListening();
    connectDevice();
    const auto* const state = part<QLabel>("labelComStatus");
    QVERIFY(state->text().startsWith(QLatin1String("Device connected on ")));
    line().wire().unplug();
    QTRY_VERIFY(!m_device->isOpen());
    // Another listener lost the device before the dialog's turn came.
    m_dialog->onDeviceDisconnected(m_device->portName());
    m_dialog->onDeviceConnected(m_device->portName());
    QCOMPARE(state->text(), QString(QLatin1String("Device disconnected on ") + m_device->portName()));
}

QTEST_MAIN(tst_DialogWaits)
#include "tst_DialogWaits.moc"
