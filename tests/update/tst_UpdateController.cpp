// A device that reprograms its laser controller after a new application is waited for.

#include "device/Device.h"
#include "update/Update.h"
#include "update/UpdateBench.h"

#include <QElapsedTimer>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <ctime>

namespace {
using namespace std::chrono_literals;
constexpr int limitMs = 30000;
constexpr int lookedLateMs = 50;  ///< the watch of this test looks that late at most, as a rule
constexpr int endedLateMs = 1500; ///< on a busy machine
/// What the link needs at most to find a device that was plugged in again.
constexpr int reconnectionMs = 8000;
const QString restartingText = QStringLiteral("Restarting application. Please wait...");
const QString waitingText = QStringLiteral("Completing firmware update. Please wait...");
} // namespace

class tst_UpdateController : public UpdateTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { removeUpdate(); }
    void staysBusy();
    void comesBack();

private:
    DeviceMode mode() const { return m_window->device()->deviceMode(); }
    void watch(const QMessageBox& status);

    QStringList m_texts; ///< of the status box, one for each time it changed
    qint64 m_waitedMs = 0;
    std::clock_t m_processorTime = 0;
    int m_linesBefore = 0;
    int m_linesInWait = 0;
    int m_ticks = 0; ///< while it waits
    QElapsedTimer m_sinceWaiting;
    std::function<void()> m_whenWaiting; ///< called once, when the box tells that it waits
};

void tst_UpdateController::init()
{
    m_texts.clear();
    m_waitedMs = 0;
    m_ticks = 0;
    m_sinceWaiting.invalidate();
    m_whenWaiting = {};
    QVERIFY(buildUpdate());
    m_device->loader = "Loader V3.0.0";
    m_device->when("goapp", 1, [this] { m_device->controller = "Firmware Update 12 %"; });
    m_trace->setOnShow([this](QWidget& widget) {
        const auto* const box = qobject_cast<QMessageBox*>(&widget);
        if (box != nullptr && !box->isModal()) {
            watch(*box);
        } else if (box != nullptr && m_sinceWaiting.isValid()) {
            m_waitedMs = m_sinceWaiting.elapsed();
            m_linesInWait = int(m_illuminator->bench().received().size()) - m_linesBefore;
            m_sinceWaiting.invalidate();
        }
    });
    auto* const look = new QTimer(m_window.get());
    connect(look, &QTimer::timeout, look, [this] {
        if (const QMessageBox* const status = UpdateTrace::statusBox()) {
            watch(*status);
        }
    });
    look->start(5ms);
}

void tst_UpdateController::watch(const QMessageBox& status)
{
    m_ticks += m_sinceWaiting.isValid() ? 1 : 0;
    if (!m_texts.isEmpty() && m_texts.last() == status.text()) {
        return;
    }
    m_texts.append(status.text());
    if (status.text() == waitingText) {
        QCOMPARE(mode(), DeviceMode::UpdatingLaserController);
        m_sinceWaiting.start();
        m_processorTime = std::clock();
        m_linesBefore = int(m_illuminator->bench().received().size());
        if (m_whenWaiting) {
            m_whenWaiting();
        }
    }
}

void tst_UpdateController::staysBusy()
{
    const QStringList entries = update();
    QVERIFY2(m_waitedMs >= limitMs - lookedLateMs && m_waitedMs < limitMs + endedLateMs,
             QByteArray::number(m_waitedMs));
    QCOMPARE(m_texts, (QStringList{restartingText, waitingText}));
    QCOMPARE(entries.last(), QStringLiteral("information: Update complete!"));
    // The window answered, without keeping the processor busy for it.
    QVERIFY2(m_ticks > limitMs / 100, QByteArray::number(m_ticks));
    const double processorSeconds = double(std::clock() - m_processorTime) / CLOCKS_PER_SEC;
    QVERIFY2(processorSeconds < 10, QByteArray::number(processorSeconds));
    // It is left alone, as long as it waits and afterwards.
    QCOMPARE(mode(), DeviceMode::UpdatingLaserController);
    QCOMPARE(m_linesInWait, 0);
    m_illuminator->clearCommands();
    QVERIFY(!QTest::qWaitFor([this] { return m_illuminator->bench().count("f_mode?") > 0; },
                             int(severalPolls.count())));
}

void tst_UpdateController::comesBack()
{
    m_whenWaiting = [this] {
        m_device->controller = "3.5.0";
        Simulator::Wire& wire = m_illuminator->bench().wire();
        wire.unplug();
        runLater(m_window.get(), 200ms, [&wire] { QVERIFY(wire.plug()); });
    };
    const QStringList entries = update();
    QCOMPARE(m_texts, (QStringList{restartingText, waitingText}));
    QVERIFY2(m_waitedMs >= 200 - lookedLateMs && m_waitedMs < reconnectionMs, QByteArray::number(m_waitedMs));
    QCOMPARE(entries.last(), QStringLiteral("information: Update complete!"));
    QCOMPARE(mode(), DeviceMode::Application);
    m_illuminator->clearCommands();
    QVERIFY(m_illuminator->waitForCommand("f_mode?"));
}

QTEST_MAIN(tst_UpdateController)
#include "tst_UpdateController.moc"
