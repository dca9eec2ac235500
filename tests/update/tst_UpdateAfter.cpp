// What the rest of the program does when an update is over, whichever way it ended.

#include "device/Device.h"
#include "settings/FileChooser.h"
#include "support/BoxAnswerer.h"
#include "update/Update.h"
#include "update/UpdateBench.h"

#include <QApplication>
#include <QMessageBox>
#include <QTest>

#include <algorithm>

namespace {
using namespace std::chrono_literals;
const QString complete = QStringLiteral("information: Update complete!");
/// Until the dialog has begun everything that it reads by itself.
constexpr int readingMs = 8000;
/// At this moment the program shows a box that keeps nobody from clicking. The loader updater's question is
/// the first one of this kind.
constexpr const char* whenRestarting = "isappvalid";
constexpr int restartingQuestion = 3;
} // namespace

class tst_UpdateAfter : public UpdateTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildUpdate()); }
    void cleanup() { removeUpdate(); }
    void pollingAfterwards_data();
    void pollingAfterwards();
    void greeting();
    void untouchedDeviceIsNotGreeted_data();
    void untouchedDeviceIsNotGreeted();
    void dialogReadsAgain();
    void choicesMadeMeanwhile();
    void unplugged_data();
    void unplugged();
    void windowGone_data();
    void windowGone();
    void starterIsActiveAgain_data();
    void starterIsActiveAgain();

private:
    void click(const char* name) const { m_hand->click(name); }
    int asked(const char* line) const { return m_illuminator->bench().count(line); }
};

void tst_UpdateAfter::pollingAfterwards_data()
{
    QTest::addColumn<QByteArray>("beginning");
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("isPolled");
    QTest::newRow("complete") << QByteArray() << 0 << true;
    QTest::newRow("canceled in the loader") << QByteArray("wf:") << 1 << false;
    QTest::newRow("loader refuses to start") << QByteArray("goloader") << 1 << true;
    QTest::newRow("loader damaged") << QByteArray("isloadervalid") << 1 << true;
    QTest::newRow("application damaged") << QByteArray("isappvalid") << 3 << false;
}

void tst_UpdateAfter::pollingAfterwards()
{
    QFETCH(QByteArray, beginning);
    QFETCH(int, number);
    QFETCH(bool, isPolled);
    if (beginning == "wf:") {
        m_device->when(beginning, number, &cancelProgress);
    } else if (beginning == "goloader") {
        m_device->start(beginning, number, "VYRApp V2.7.0");
    } else if (!beginning.isEmpty()) {
        m_device->answer(beginning, number, "No");
    }
    QCOMPARE(update().constLast() == complete, beginning.isEmpty());
    QVERIFY(!m_window->update()->isInProgress());
    m_illuminator->clearCommands();
    QCOMPARE(
        QTest::qWaitFor([this] { return asked("f_mode?") > 1; }, isPolled ? 5000 : int(severalPolls.count())),
        isPolled);
}

void tst_UpdateAfter::greeting()
{
    Column shutter(*m_window, 1);
    m_illuminator->shutters.at(0) = true;
    m_illuminator->shutters.at(4) = true;
    FakeIlluminator::pollEverything(*m_window);
    m_device->when("goapp", 2, [this] {
        m_illuminator->shutters.fill(false);
        m_illuminator->clearCommands(); // a run sends nothing of what follows
    });
    QCOMPARE(update().constLast(), complete);
    QVERIFY(m_illuminator->settle(*m_window));
    const QList<QByteArray> commands = m_illuminator->commands();
    for (const char* command : {"idle!", "sh_mode=", "int_mode=", "speckle=", "sleep="}) {
        const auto isIt = [command](const QByteArray& line) { return line.startsWith(command); };
        QVERIFY2(std::count_if(commands.begin(), commands.end(), isIt) == 1, command);
    }
    for (const char* channel : {"405", "445", "470", "520", "528", "555", "640", "730"}) {
        QVERIFY2(commands.count(QByteArray("shutter:") + channel + "=0") == 1, channel);
        QVERIFY2(commands.count(QByteArray("shutter:") + channel + "=1") == 0, channel);
    }
    QCOMPARE(label(*m_window, "labelSystemId")->text(), QStringLiteral("SN 1234  V3.0.0"));
}

void tst_UpdateAfter::untouchedDeviceIsNotGreeted_data()
{
    QTest::addColumn<QByteArray>("running");
    QTest::addColumn<bool>("hasRelease");
    QTest::addColumn<QString>("last");
    QTest::newRow("no release") << QByteArray("VYRApp V2.7.0") << false
                                << QStringLiteral("warning: Invalid archive file.");
    QTest::newRow("loader damaged") << QByteArray("VYRApp V2.7.0") << true
                                    << QStringLiteral("warning: Error updating firmware.  Error -40011");
    QTest::newRow("no loader updater") << QByteArray("Loader V1.5.0") << true
                                       << QStringLiteral("warning: Error updating firmware.  Error -40011");
}

void tst_UpdateAfter::untouchedDeviceIsNotGreeted()
{
    QFETCH(QByteArray, running);
    QFETCH(bool, hasRelease);
    QFETCH(QString, last);
    removeUpdate();
    QVERIFY(buildUpdate([&running](UpdatableDevice& device) { device.running = running; }));
    // What connecting began is over.
    QTRY_VERIFY_WITH_TIMEOUT(asked("prod_config") >= 2, readingMs);
    QVERIFY(m_illuminator->settle(*m_window));
    m_release.contents[QStringLiteral("LoaderUpdaterOut.srec")] = "none";
    m_device->answer("isloadervalid", 1, "No");
    m_illuminator->clearCommands();
    const QStringList entries = hasRelease ? update() : updateWith({});
    QCOMPARE(entries.last(), last);
    QVERIFY(m_illuminator->settle(*m_window));
    QVERIFY(!QTest::qWaitFor([this] { return asked("prod_config") > 0; }, 1500));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_UpdateAfter::dialogReadsAgain()
{
    constexpr int tries = 3; // of each record, as the device has none; a second apart
    // The first of them, and the identity, have been read because of the connection.
    QTRY_VERIFY_WITH_TIMEOUT(asked("prod_config") >= 2, readingMs);
    m_device->when("goapp", 2, [this] { m_illuminator->clearCommands(); });
    QCOMPARE(update().constLast(), complete);
    // The window asks for the identity, and a second later the dialog does.
    QTRY_VERIFY_WITH_TIMEOUT(asked("prod_config") >= 2, readingMs);
    QTRY_VERIFY_WITH_TIMEOUT(asked("hours?") >= 1, readingMs);
    QTRY_VERIFY_WITH_TIMEOUT(asked("issysconfigvalid") >= tries, readingMs);
}

/// What is chosen while a run has the line is kept, and sent with the greeting.
void tst_UpdateAfter::choicesMadeMeanwhile()
{
    m_device->when(whenRestarting, restartingQuestion, [this] {
        Column(*m_window, 2).slider->setValue(37);
        click("radioButtonDespecklerOff");
        click("radioButtonTTLShutterClosed405");
    });
    m_device->when("goapp", 2, [this] { m_illuminator->clearCommands(); });
    QCOMPARE(update().constLast(), complete);
    QVERIFY(m_illuminator->settle(*m_window));
    const QList<QByteArray> commands = m_illuminator->commands();
    QVERIFY2(commands.contains("set:445=37.00"), commands.join('|'));
    QVERIFY2(commands.contains("speckle=off"), commands.join('|'));
    QVERIFY2(commands.contains("ttl_invert:405=1"), commands.join('|'));
}

void tst_UpdateAfter::unplugged_data()
{
    QTest::addColumn<QString>("kind"); // of the dialog that is open then
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QString>("last");
    QTest::newRow("file dialog") << QStringLiteral("QFileDialog") << QByteArray()
                                 << QStringLiteral("warning: Error communicating with device.");
    QTest::newRow("box of a failure") << QStringLiteral("QMessageBox") << QByteArray("VYRApp V2.7.0")
                                      << QStringLiteral("warning: Error updating firmware.  Error -40011");
    QTest::newRow("progress") << QStringLiteral("QProgressDialog") << QByteArray()
                              << QStringLiteral("warning: Error updating firmware.  Error -40007");
    QTest::newRow("last box") << QStringLiteral("last") << QByteArray() << complete;
    QTest::newRow("restart") << QStringLiteral("status") << QByteArray()
                             << QStringLiteral(
                                    "warning: Error - Application failed CRC check after programming.");
}

void tst_UpdateAfter::unplugged()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, start);
    QFETCH(QString, last);
    m_illuminator->shutters.at(0) = true;
    FakeIlluminator::pollEverything(*m_window);
    const auto unplug = [this] {
        m_trace->setOnShow({});
        m_illuminator->bench().wire().unplug();
        m_window->device()->checkConnectionStatus();
        QVERIFY(!m_window->device()->isOpen());
    };
    if (!start.isEmpty()) {
        m_device->start("goloader", 1, start);
    }
    m_trace->setOnShow([unplug, kind](QWidget& widget) {
        const auto* const box = qobject_cast<QMessageBox*>(&widget);
        const bool isLast = box != nullptr && complete.endsWith(box->text());
        const bool isStatus = box != nullptr && !box->isModal();
        if ((kind == QLatin1String("last") && isLast) || (kind == QLatin1String("status") && isStatus) ||
            (kind == QLatin1String(widget.metaObject()->className()) && !isStatus)) {
            unplug();
        }
    });
    QCOMPARE(update().constLast(), last);
    QVERIFY(!m_window->update()->isInProgress());
    QVERIFY(!m_window->device()->isOpen());
    QCOMPARE(label(*m_window, "labelLaserStatusText")->text(), QStringLiteral("Disconnected"));
    // It is found again, and can be updated then.
    m_trace->setOnShow({});
    m_device->clearPlans();
    m_device->running = m_device->application = "VYRApp V2.7.0";
    m_illuminator->clearCommands();
    QVERIFY(plugIn());
    // What was open before comes back only with a device that the run did nothing to.
    QCOMPARE(m_illuminator->commands().count("shutter:405=1"), kind == QLatin1String("QFileDialog") ? 1 : 0);
    QCOMPARE(update().constLast(), complete);
}

void tst_UpdateAfter::windowGone_data()
{
    QTest::addColumn<int>("dialogNumber"); // counted from the start of the run
    QTest::addColumn<bool>("hasRelease");
    QTest::newRow("file dialog") << 1 << true;
    QTest::newRow("box of the archive") << 2 << false;
    QTest::newRow("box behind it") << 3 << false;
    QTest::newRow("last box") << 6 << true; // behind the dialogs of three images and the status
}

void tst_UpdateAfter::windowGone()
{
    QFETCH(int, dialogNumber);
    QFETCH(bool, hasRelease);
    QVERIFY(packRelease());
    std::unique_ptr<FileChooser> chooser;
    std::unique_ptr<BoxAnswerer> answerer;
    int count = 0;
    QPointer<QWidget> last;
    m_trace->setOnShow([&](QWidget& widget) {
        if (++count != dialogNumber) {
            return;
        }
        last = &widget;
        chooser.reset();
        answerer.reset();
        m_hand.reset();
        m_trace->setOnShow({});
        runLater(QCoreApplication::instance(), 20ms, [this] { m_window.reset(); });
    });
    chooser = std::make_unique<FileChooser>(hasRelease ? QStringList{archivePath()} : QStringList());
    answerer = std::make_unique<BoxAnswerer>();
    // Not by a click: the button would go under its own event.
    QMetaObject::invokeMethod(&m_hand->dialog(), "on_pushButtonUpdateFirmware_clicked");
    QVERIFY(!m_window);
    QVERIFY(!last);
    QCOMPARE(count, dialogNumber);
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void tst_UpdateAfter::starterIsActiveAgain_data()
{
    QTest::addColumn<bool>("isCanceled");
    QTest::newRow("complete") << false;
    QTest::newRow("canceled") << true;
}

void tst_UpdateAfter::starterIsActiveAgain()
{
    QFETCH(bool, isCanceled);
    if (isCanceled) {
        m_device->when("wf:", 1, &cancelProgress);
    }
    m_hand->dialog().activateWindow();
    QTRY_COMPARE(QApplication::activeWindow(), &m_hand->dialog());
    // The progress and the boxes are the main window's, which is what a desktop goes back to.
    m_trace->setOnShow([this](QWidget&) { m_window->activateWindow(); });
    QCOMPARE(update().constLast() == complete, !isCanceled);
    QTRY_COMPARE(QApplication::activeWindow(), &m_hand->dialog());
}

QTEST_MAIN(tst_UpdateAfter)
#include "tst_UpdateAfter.moc"
