#include "settings/LoaderBench.h"
#include "update/Update.h"

#include <optional>

namespace {
using namespace std::chrono_literals;
} // namespace

/// "Loader Mode": the device restarts into its other image, and window and dialog wait for it without
/// standing still.
class tst_DialogLoader : public LoaderDialogTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildDialog()); }
    void cleanup() { removeDialog(); }
    void thereAndBack_data() { restarts(); }
    void thereAndBack();
    void eventLoopGoesOn();
    void unpluggedWhileItWaits_data() { restarts(); }
    void unpluggedWhileItWaits();
    void unpluggedForGood();
    void refused_data();
    void refused();
    void loaderUpdater();
    void duringAnUpdateNothingIsSwitched();
};

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

void tst_DialogLoader::duringAnUpdateNothingIsSwitched()
{
    m_lines->clear();
    const Update::InProgress run(*m_window->update());
    m_hand->click("pushButtonLoaderMode2");
    QCOMPARE(statusText(*m_window), QStringLiteral("Firmware update in progress."));
    QVERIFY(!isWaiting());
    QVERIFY(!QTest::qWaitFor([this] { return m_lines->count("goloader") > 0; }, int(severalPolls.count())));
}

QTEST_MAIN(tst_DialogLoader)
#include "tst_DialogLoader.moc"
