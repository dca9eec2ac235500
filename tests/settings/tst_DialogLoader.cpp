#include "device/Device.h"
#include "settings/Console.h"
#include "settings/DialogBench.h"
#include "update/Update.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <functional>
#include <optional>

namespace {
using namespace std::chrono_literals;
const QString waitingText = QStringLiteral("Waiting for the device to restart...");
constexpr int reconnectionMs = 10000;
} // namespace

/// "Loader Mode": the device restarts into its other image, and window and dialog wait for it without
/// standing still.
class tst_DialogLoader : public SimulatedDialogTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildDialog()); }
    void cleanup() { removeDialog(); }
    void thereAndBack_data() { restarts(); }
    void thereAndBack();
    void eventLoopGoesOn();
    void otherClicksWhileItWaits_data();
    void otherClicksWhileItWaits();
    void doubleClick();
    void dialogClosedWhileItWaits();
    void windowClosedWhileItWaits_data() { restarts(); }
    void windowClosedWhileItWaits();
    void unpluggedWhileItWaits_data() { restarts(); }
    void unpluggedWhileItWaits();
    void unpluggedForGood();
    void refused_data();
    void refused();
    void loaderUpdater();
    void focusComesBack_data();
    void focusComesBack();
    void keysDoNotStrayIntoTheTerminal();
    void duringAnUpdateNothingIsSwitched();

private:
    static void restarts();
    void setRestart(std::chrono::milliseconds time, bool reenumerates, const QString& name = {});
    /// Does this once the device is gone to restart and the dialog waits for it.
    void whileItWaits(const std::function<void()>& what);
    bool isWaiting() const { return running() == waitingText; }
    QString running() const { return m_hand->text("labelRunningImage"); }
    bool isLoaderShown() const;
    bool isApplicationShown() const;
    bool serviceButtonsAre(bool enabled) const;
};

void tst_DialogLoader::setRestart(std::chrono::milliseconds time, bool reenumerates, const QString& name)
{
    illuminator().setRestartTime(time);
    illuminator().setReenumerates(reenumerates, name);
}

void tst_DialogLoader::whileItWaits(const std::function<void()>& what)
{
    auto* const look = new QTimer(m_window.get());
    connect(look, &QTimer::timeout, look, [this, look, what] {
        if (isWaiting() && !m_device->model().runningImage()) {
            look->stop();
            look->deleteLater();
            what();
        }
    });
    look->start(5ms);
}

bool tst_DialogLoader::isLoaderShown() const
{
    const QString text = QStringLiteral("Running: loader 1.5.0");
    return running() == text && m_hand->text("labelRunningImage2") == text &&
           modeWord() == QStringLiteral("Loader") &&
           label(*m_window, "labelSystemId")->text().endsWith(QStringLiteral("Loader V1.5.0"));
}

bool tst_DialogLoader::isApplicationShown() const
{
    const QString text = QStringLiteral("Running: application 2.7.0");
    return running() == text && m_hand->text("labelRunningImage2") == text &&
           modeWord() == QStringLiteral("Idle") &&
           label(*m_window, "labelSystemId")->text() == QStringLiteral("SN VYR-00042  V2.7.0");
}

bool tst_DialogLoader::serviceButtonsAre(bool enabled) const
{
    const QList<const char*> names{"pushButtonSystemReset", "pushButtonSystemReset2", "pushButtonLoaderMode",
                                   "pushButtonLoaderMode2", "pushButtonRestoreDefaults"};
    return std::all_of(names.begin(), names.end(), [&](const char* name) {
        return m_hand->part<QAbstractButton>(name)->isEnabled() == enabled;
    });
}

void tst_DialogLoader::restarts()
{
    QTest::addColumn<int>("restartMs");
    QTest::addColumn<bool>("reenumerates");
    QTest::addColumn<QString>("name");
    QTest::newRow("same port, at once") << 40 << false << QString();
    QTest::newRow("same port, in a while") << 700 << false << QString();
    QTest::newRow("port anew") << 300 << true << QString();
    QTest::newRow("port anew, by another name") << 300 << true << QStringLiteral("ttyVYR7");
}

void tst_DialogLoader::thereAndBack()
{
    QFETCH(int, restartMs);
    QFETCH(bool, reenumerates);
    QFETCH(QString, name);
    setRestart(std::chrono::milliseconds(restartMs), reenumerates, name);
    m_hand->click("pushButtonLoaderMode");
    QTRY_VERIFY_WITH_TIMEOUT(isLoaderShown(), reconnectionMs);
    QCOMPARE(m_device->model().runningImage(), std::optional(Simulator::Image::Loader));
    QVERIFY(serviceButtonsAre(true));
    QVERIFY(m_hand->text("labelComStatus").startsWith(QStringLiteral("Device connected on ")));
    QVERIFY(m_hand->text("labelComStatus").endsWith(m_device->portName()));
    // The loader answers no questions about the laser, so none may be asked.
    m_lines->clear();
    QVERIFY(!QTest::qWaitFor([this] { return m_lines->count("f_mode?") > 0; }, int(severalPolls.count())));

    m_hand->click("pushButtonLoaderMode2");
    QTRY_VERIFY_WITH_TIMEOUT(isApplicationShown(), reconnectionMs);
    QCOMPARE(m_device->model().runningImage(), std::optional(Simulator::Image::Application));
    QCOMPARE(m_lines->count("goapp"), 1);
    QCOMPARE(m_lines->count("goloader"), 0);
    const int polls = m_lines->count("f_mode?");
    QTRY_VERIFY(m_lines->count("f_mode?") > polls + 2);
    QVERIFY(serviceButtonsAre(true));
}

void tst_DialogLoader::eventLoopGoesOn()
{
    constexpr int tickMs = 10;
    setRestart(800ms, false);
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, &timer, [&] { ticks += isWaiting() ? 1 : 0; });
    timer.start(tickMs);
    bool moved = false;
    whileItWaits([&] {
        Column(*m_window, 1).slider->setValue(33);
        moved = Column(*m_window, 1).percentage->text() == QStringLiteral("33");
    });
    m_hand->click("pushButtonLoaderMode");
    QVERIFY(moved);
    QVERIFY2(ticks > 40, QByteArray::number(ticks));
    QVERIFY(isLoaderShown());
    m_hand->click("pushButtonLoaderMode");
    QTRY_COMPARE(lasers().level(0), 33.0);
}

void tst_DialogLoader::otherClicksWhileItWaits_data()
{
    QTest::addColumn<QByteArray>("button");
    for (const char* name : {"pushButtonLoaderMode", "pushButtonLoaderMode2", "pushButtonSystemReset",
                             "pushButtonSystemReset2", "pushButtonRestoreDefaults"}) {
        QTest::newRow(name) << QByteArray(name);
    }
}

void tst_DialogLoader::otherClicksWhileItWaits()
{
    QFETCH(QByteArray, button);
    setRestart(500ms, false);
    const ChoiceSpy spy(m_hand->dialog());
    m_lines->clear();
    bool clicked = false;
    whileItWaits([&] {
        QVERIFY(serviceButtonsAre(false));
        auto* const widget = m_hand->part<QWidget>(button.constData());
        m_hand->bringIntoView(widget);
        // As from the mouse: a disabled widget decides for itself what becomes of it.
        QTest::mouseClick(m_hand->dialog().windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          widget->mapTo(&m_hand->dialog(), widget->rect().center()));
        clicked = true;
    });
    m_hand->click("pushButtonLoaderMode");
    QVERIFY(clicked);
    QTRY_VERIFY(isLoaderShown());
    QCOMPARE(m_lines->count("goloader"), 1);
    for (const char* command : {"goapp", "reset", "defaults"}) {
        QCOMPARE(m_lines->count(command), 0);
    }
    QCOMPARE(spy.choices(), QStringList());
}

void tst_DialogLoader::doubleClick()
{
    constexpr auto betweenClicks = 120ms;
    setRestart(500ms, false);
    auto* const button = m_hand->part<QWidget>("pushButtonLoaderMode2");
    m_hand->bringIntoView(button);
    const QPoint place = button->mapTo(&m_hand->dialog(), button->rect().center());
    QWindow* const window = m_hand->dialog().windowHandle();
    runLater(m_window.get(), betweenClicks, [&] { QTest::mouseDClick(window, Qt::LeftButton, {}, place); });
    m_lines->clear();
    QTest::mouseClick(window, Qt::LeftButton, {}, place);
    QTRY_VERIFY(isLoaderShown());
    QCOMPARE(m_lines->count("goloader"), 1);
    QCOMPARE(m_lines->count("goapp"), 0);
}

void tst_DialogLoader::dialogClosedWhileItWaits()
{
    setRestart(400ms, false);
    whileItWaits([this] { m_hand->dialog().close(); });
    m_hand->click("pushButtonLoaderMode");
    QVERIFY(!m_hand->dialog().isVisible());
    QTRY_VERIFY(isLoaderShown());
    QVERIFY(m_hand->open());
    QVERIFY(isLoaderShown());
    m_hand->click("pushButtonLoaderMode");
    QTRY_VERIFY(isApplicationShown());
}

void tst_DialogLoader::windowClosedWhileItWaits()
{
    QFETCH(bool, reenumerates);
    QFETCH(QString, name);
    constexpr int soonMs = 2000;
    setRestart(20s, reenumerates, name);
    whileItWaits([this] { QVERIFY(m_window->close()); });
    QElapsedTimer time;
    time.start();
    m_hand->click("pushButtonLoaderMode");
    QVERIFY2(time.elapsed() < soonMs, QByteArray::number(time.elapsed()));
    QVERIFY(!m_window->isVisible());
    QVERIFY(!m_window->device()->isOpen());
    m_hand.reset();
    m_window.reset();
}

void tst_DialogLoader::unpluggedWhileItWaits()
{
    QFETCH(bool, reenumerates);
    QFETCH(QString, name);
    setRestart(400ms, reenumerates, name);
    whileItWaits([this] {
        illuminator().unplug();
        runLater(m_window.get(), 800ms, [this] { QVERIFY(illuminator().plug(QStringLiteral("ttyVYR3"))); });
    });
    m_hand->click("pushButtonLoaderMode");
    QTRY_VERIFY_WITH_TIMEOUT(isLoaderShown(), reconnectionMs);
    QVERIFY(serviceButtonsAre(true));
    m_hand->click("pushButtonLoaderMode");
    QTRY_VERIFY_WITH_TIMEOUT(isApplicationShown(), reconnectionMs);
}

void tst_DialogLoader::unpluggedForGood()
{
    setRestart(400ms, false);
    whileItWaits([this] { illuminator().unplug(); });
    bool toldWhileWaiting = false;
    runLater(m_window.get(), 3s, [&] {
        toldWhileWaiting =
            isWaiting() && modeWord() == QStringLiteral("Disconnected") &&
            m_hand->text("labelComStatus").startsWith(QStringLiteral("Device disconnected on "));
        QVERIFY(m_window->close());
    });
    m_hand->click("pushButtonLoaderMode");
    QVERIFY(toldWhileWaiting);
    QVERIFY(!m_window->isVisible());
}

void tst_DialogLoader::refused_data()
{
    QTest::addColumn<bool>("inLoader");
    QTest::newRow("loader is damaged") << false;
    QTest::newRow("application is damaged") << true;
}

void tst_DialogLoader::refused()
{
    QFETCH(bool, inLoader);
    if (inLoader) {
        m_hand->click("pushButtonLoaderMode");
        QTRY_VERIFY(isLoaderShown());
        m_device->model().firmware().setApplicationCrcValid(false);
    } else {
        m_device->model().firmware().setLoaderCrcValid(false);
    }
    const QString text = QString(QStringLiteral("The device did not change its image. ") + running());
    m_lines->clear();
    for (int i = 1; i <= 2; ++i) {
        m_hand->click("pushButtonLoaderMode");
        QCOMPARE(running(), text);
        QCOMPARE(m_hand->text("labelRunningImage2"), text);
        QVERIFY(serviceButtonsAre(true));
        QCOMPARE(m_lines->count(inLoader ? "goapp" : "goloader"), i);
    }
    if (!inLoader) {
        const int polls = m_lines->count("f_mode?");
        QTRY_VERIFY(m_lines->count("f_mode?") > polls + 2);
        QTRY_COMPARE(modeWord(), QStringLiteral("Idle"));
    }
}

void tst_DialogLoader::loaderUpdater()
{
    illuminator().startImage(Simulator::Image::LoaderUpdater);
    QTRY_COMPARE_WITH_TIMEOUT(running(), QStringLiteral("Running: loader updater 1.2.0"), reconnectionMs);
    QCOMPARE(modeWord(), QStringLiteral("Loader updater"));
    m_lines->clear();
    m_hand->click("pushButtonLoaderMode");
    QTRY_VERIFY(isLoaderShown());
    QCOMPARE(m_lines->count("goloader"), 1);
}

void tst_DialogLoader::focusComesBack_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QByteArray>("meanwhile");
    QTest::addColumn<QByteArray>("atTheEnd");
    QTest::newRow("update tab") << QByteArray("pushButtonLoaderMode") << QByteArray()
                                << QByteArray("pushButtonLoaderMode");
    QTest::newRow("service tab") << QByteArray("pushButtonLoaderMode2") << QByteArray()
                                 << QByteArray("pushButtonLoaderMode2");
    // Whoever went on to the terminal must not find the next key on a button.
    QTest::newRow("gone on to the terminal")
        << QByteArray("pushButtonLoaderMode2") << QByteArray("consoleWindow") << QByteArray("consoleWindow");
}

void tst_DialogLoader::focusComesBack()
{
    QFETCH(QByteArray, button);
    QFETCH(QByteArray, meanwhile);
    QFETCH(QByteArray, atTheEnd);
    setRestart(300ms, false);
    auto* const pressed = m_hand->part<QWidget>(button.constData());
    m_hand->bringIntoView(pressed);
    pressed->setFocus();
    bool lost = false;
    whileItWaits([&] {
        lost = !pressed->hasFocus();
        if (!meanwhile.isEmpty()) {
            m_hand->click(meanwhile.constData());
        }
    });
    QTest::keyClick(pressed, Qt::Key_Space);
    QVERIFY(lost);
    QVERIFY(isLoaderShown());
    QCOMPARE(m_hand->dialog().focusWidget()->objectName().toLatin1(), atTheEnd);
}

void tst_DialogLoader::keysDoNotStrayIntoTheTerminal()
{
    setRestart(300ms, false);
    auto* const pressed = m_hand->part<QWidget>("pushButtonLoaderMode2");
    m_hand->bringIntoView(pressed);
    pressed->setFocus();
    bool inTheTerminal = true;
    whileItWaits([&] { inTheTerminal = m_hand->dialog().console()->hasFocus(); });
    QTest::keyClick(pressed, Qt::Key_Space);
    // A key pressed once more would go to the device, in the middle of its restart.
    QVERIFY(!inTheTerminal);
}

void tst_DialogLoader::duringAnUpdateNothingIsSwitched()
{
    m_lines->clear();
    const Update::Run run(*m_window->update());
    m_hand->click("pushButtonLoaderMode2");
    QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
    QVERIFY(!isWaiting());
    QVERIFY(!QTest::qWaitFor([this] { return m_lines->count("goloader") > 0; }, int(severalPolls.count())));
}

QTEST_MAIN(tst_DialogLoader)
#include "tst_DialogLoader.moc"
