// What the rest of the program does while an update runs.

#include "device/Device.h"
#include "settings/FileChooser.h"
#include "support/BoxAnswerer.h"
#include "update/Update.h"
#include "update/UpdateBench.h"

#include <QApplication>
#include <QComboBox>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

namespace {
using namespace std::chrono_literals;
const QString inProgress = QStringLiteral("Firmware update in progress.");
const QString complete = QStringLiteral("information: Update complete!");
/// With a loader that needs no update.
QStringList shortRun()
{
    return {
        QStringLiteral("isloadervalid"),
        QStringLiteral("goloader"),
        QStringLiteral("backup"),
        QStringLiteral("progress: Programming the Application"),
        QStringLiteral("wrote application"),
        QStringLiteral(
            "information [Firmware Update] [not modal] [no buttons]: Restarting application. Please wait..."),
        QStringLiteral("isappvalid"),
        QStringLiteral("isappvalid"),
        QStringLiteral("goapp"),
        complete};
}
/// At this moment the program shows a box that keeps nobody from clicking. The loader updater's question is
/// the first one of this kind.
constexpr const char* whenRestarting = "isappvalid";
constexpr int restartingQuestion = 3;
} // namespace

class tst_UpdateAround : public UpdateTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildUpdate()); }
    void cleanup() { removeUpdate(); }
    void refusals_data();
    void refusals();
    void closingIsRefused();
    void secondClick();
    void nothingWhileConfigIsWritten();
    void nothingWhileTheImageIsSwitched();
    void lineIsTheRuns();
    void terminalShowsNothing();

private:
    struct Click
    {
        const char* name;
        std::function<void(tst_UpdateAround&)> doIt;
    };
    static std::vector<Click> windowClicks();
    static std::vector<Click> dialogClicks();
    static std::vector<Click> clicks();
    void click(const char* name) const { m_hand->click(name); }
    QWidget* part(const char* name) const { return m_window->findChild<QWidget*>(QLatin1String(name)); }
};

std::vector<tst_UpdateAround::Click> tst_UpdateAround::windowClicks()
{
    using Test = tst_UpdateAround;
    const auto on = [](const char* name) {
        return [name](Test& t) { QTest::mouseClick(t.part(name), Qt::LeftButton); };
    };
    return {
        {"shutter", on("pushButtonChannelShutter1")},
        {"intensity",
         [](Test& t) {
             auto* const slider = Column(*t.m_window, 2).slider;
             QTest::keyClick(slider, slider->value() < slider->maximum() ? Qt::Key_Up : Qt::Key_Down);
         }},
        {"arrows", [](Test& t) { clickHalf(Column(*t.m_window, 3).arrows, false); }},
        {"laser on", on("labelLaserOnOff")},
        {"clear faults", on("labelLaserStatus")},
        {"load a scenario", on("pushButtonLoadScenario")},
    };
}

std::vector<tst_UpdateAround::Click> tst_UpdateAround::dialogClicks()
{
    using Test = tst_UpdateAround;
    const auto on = [](const char* name) { return [name](Test& t) { t.click(name); }; };
    return {
        {"restore defaults", on("pushButtonRestoreDefaults")},
        {"reset", on("pushButtonSystemReset")},
        {"reset on the service page", on("pushButtonSystemReset2")},
        {"loader mode", on("pushButtonLoaderMode")},
        {"loader mode on the service page", on("pushButtonLoaderMode2")},
        {"get configuration", on("pushButtonGetSystemConfigData")},
        {"set configuration", on("pushButtonSetSystemConfigData")},
        {"set identity", on("pushButtonSetProductConfigData")},
        {"shutter control", on("radioButtonShutterControlExternal")},
        {"intensity control", on("radioButtonIntensityControlExternal")},
        {"despeckler", on("radioButtonDespecklerOff")},
        {"polarity", on("radioButtonTTLShutterClosed405")},
        {"sleep timer", on("checkBoxSleepTimer")},
        {"minutes of the sleep timer",
         [](Test& t) {
             auto* const minutes = t.m_hand->part<QSpinBox>("spinBoxSleepTimer");
             minutes->setValue(minutes->value() + 1);
         }},
        {"port",
         [](Test& t) {
             QMetaObject::invokeMethod(&t.m_hand->dialog(), "on_comboBoxComPort_activated", Q_ARG(int, 0));
         }},
        {"save diagnostics", on("pushButtonSaveDiagnostics")},
        {"terminal",
         [](Test& t) {
             auto* const console = t.m_hand->part<QWidget>("consoleWindow");
             t.m_hand->bringIntoView(console);
             QTest::keyClicks(console, QStringLiteral("reset"));
             QTest::keyClick(console, Qt::Key_Return);
         }},
    };
}

std::vector<tst_UpdateAround::Click> tst_UpdateAround::clicks()
{
    std::vector<Click> all = windowClicks();
    const std::vector<Click> others = dialogClicks();
    all.insert(all.end(), others.begin(), others.end());
    return all;
}

void tst_UpdateAround::refusals_data()
{
    QTest::addColumn<int>("number");
    int number = 0;
    for (const Click& click : clicks()) {
        QTest::newRow(click.name) << number++;
    }
}

void tst_UpdateAround::refusals()
{
    QFETCH(int, number);
    const Click click = clicks().at(std::size_t(number));
    m_device->loader = "Loader V3.0.0";
    QString status;
    QStringList opened;
    m_device->when(whenRestarting, 1, [&] {
        m_window->findChild<QStatusBar*>()->clearMessage();
        m_trace->setOnShow([&opened](QWidget& widget) { opened.append(widget.metaObject()->className()); });
        click.doIt(*this);
        m_trace->setOnShow({});
        status = statusText(*m_window);
    });
    QCOMPARE(update(), shortRun());
    QCOMPARE(status, inProgress);
    QCOMPARE(opened, QStringList());
    // Nor does it wait for the end of the run.
    m_device->clearLines();
    QVERIFY(m_illuminator->settle(*m_window));
    for (const char* command : {"reset", "defaults", "clear", "run!", "go", "wr"}) {
        QCOMPARE(m_device->count(command), 0);
    }
    QVERIFY(statusText(*m_window) != inProgress);
}

void tst_UpdateAround::closingIsRefused()
{
    bool wasClosed = true;
    m_device->when(whenRestarting, restartingQuestion, [&] {
        m_window->findChild<QStatusBar*>()->clearMessage();
        wasClosed = m_window->close();
        QCOMPARE(statusText(*m_window), inProgress);
    });
    QCOMPARE(update().constLast(), complete);
    QVERIFY(!wasClosed);
    QVERIFY(m_window->isVisible());
    QVERIFY(m_window->device()->isOpen());
    QVERIFY(m_window->close());
}

void tst_UpdateAround::secondClick()
{
    QVERIFY(packRelease());
    const FileChooser chooser({archivePath(), archivePath()});
    const BoxAnswerer answerer;
    m_device->when("goloader", 1, [this] { clickUpdate(); });
    m_device->when("wf:", 2, [this] { m_window->update()->firmwareUpdate(m_window->device()); });
    m_device->when(whenRestarting, restartingQuestion, [this] { clickUpdate(); });
    clickUpdate();
    QCOMPARE(chooser.choosers().size(), 1);
    QCOMPARE(answerer.boxes().size(), 1);
    QCOMPARE(m_trace->entries().last(), complete);
    QCOMPARE(m_device->count("goloader"), 2);
}

void tst_UpdateAround::nothingWhileConfigIsWritten()
{
    removeUpdate();
    QVERIFY(buildUpdate([](UpdatableDevice& device) { device.running = device.loader; }));
    const FileChooser chooser;
    const BoxAnswerer answerer;
    bool wasWriting = false;
    // The device says that it has no record yet; the first line behind that writes one.
    m_device->when("w", 1, [&] {
        wasWriting = true;
        QMetaObject::invokeMethod(&m_hand->dialog(), "on_pushButtonUpdateFirmware_clicked");
        QVERIFY(!m_window->update()->isInProgress());
    });
    click("pushButtonSetSystemConfigData");
    QVERIFY(wasWriting);
    QVERIFY(chooser.choosers().isEmpty());
    QVERIFY(m_trace->entries().isEmpty());
}

void tst_UpdateAround::nothingWhileTheImageIsSwitched()
{
    const FileChooser chooser;
    m_device->when("goloader", 1, [&] {
        QVERIFY(!m_hand->part<QPushButton>("pushButtonUpdateFirmware")->isEnabled());
        QMetaObject::invokeMethod(&m_hand->dialog(), "on_pushButtonUpdateFirmware_clicked");
        QVERIFY(!m_window->update()->isInProgress());
    });
    click("pushButtonLoaderMode2");
    QCOMPARE(m_device->count("goloader"), 1);
    QVERIFY(chooser.choosers().isEmpty());
    QVERIFY(m_hand->part<QPushButton>("pushButtonUpdateFirmware")->isEnabled());
}

/// Slowly, so that every timer of the program comes due several times.
void tst_UpdateAround::lineIsTheRuns()
{
    QVERIFY(m_hand->clickTab(QStringLiteral("System Config")));
    m_device->lineTime = 60ms;
    QList<QByteArray> others;
    bool isAtWork = false;
    // Before and after, when it runs an application, the link polls it.
    m_device->when("goloader", 1, [&isAtWork] { isAtWork = true; });
    m_device->when("goapp", 2, [&isAtWork] { isAtWork = false; });
    m_device->setListener([&](const QByteArray& line) {
        m_trace->addLine(line);
        static const QList<QByteArray> own{"isloadervalid", "isappvalid", "goloader", "goapp"};
        if (isAtWork && !own.contains(line) && !line.startsWith("wf:")) {
            others.append(line);
        }
    });
    QVERIFY(packRelease());
    const FileChooser chooser({archivePath()});
    const BoxAnswerer answerer;
    m_window->update()->firmwareUpdate(m_window->device());
    QCOMPARE(m_trace->entries().last(), complete);
    QVERIFY(!isAtWork);
    QCOMPARE(others, QList<QByteArray>());
}

void tst_UpdateAround::terminalShowsNothing()
{
    const auto* const console = m_hand->part<QPlainTextEdit>("consoleWindow");
    QString before;
    QString after;
    m_device->when("goloader", 1, [&] { before = console->toPlainText(); });
    m_device->when(whenRestarting, restartingQuestion, [&] { after = console->toPlainText(); });
    QCOMPARE(update().constLast(), complete);
    QVERIFY(!after.isNull());
    QCOMPARE(after, before);
    QVERIFY(!after.contains(QStringLiteral("Wrote")));
}

QTEST_MAIN(tst_UpdateAround)
#include "tst_UpdateAround.moc"
