#include "device/Device.h"
#include "mainwindow/WindowBench.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QMessageBox>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <algorithm>

/// What stands behind a message box goes on following the device, even where the box was opened by a click
/// that came while a status poll waited for its answer.
class tst_WindowBehindABox : public ConnectedWindowTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void reportsAreShown();
    void reconnectionIsShown();
    void queuedClosingsAreSent();
    void slowTicksAreNotOvertaken();

private:
    static QMessageBox* box() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }
    void runWhen(const std::function<bool()>& condition, const std::function<void()>& what);
    void openBoxInAPollsWait();
    void closeBoxWhen(const std::function<bool()>& condition);

    bool m_wasShownBehindTheBox = false;
    bool m_isOver = false;
};

void tst_WindowBehindABox::init()
{
    m_wasShownBehindTheBox = false;
    m_isOver = false;
    QVERIFY(buildConnectedWindow());
    for (int number = 1; number <= 4; ++number) {
        QTest::mouseClick(Column(*m_window, number).shutter, Qt::LeftButton);
    }
    QVERIFY(m_illuminator->settle(*m_window));
}

void tst_WindowBehindABox::cleanup()
{
    removeWindow();
}

/// From the event loop, also from one that runs inside another.
void tst_WindowBehindABox::runWhen(const std::function<bool()>& condition, const std::function<void()>& what)
{
    runLater(m_window.get(), std::chrono::milliseconds(5), [=] {
        if (condition()) {
            what();
        } else {
            runWhen(condition, what);
        }
    });
}

/// One shutter too many, after the poll has asked and before it is answered.
void tst_WindowBehindABox::openBoxInAPollsWait()
{
    m_illuminator->thinkTime = std::chrono::milliseconds(50);
    m_illuminator->bench().clearReceived();
    runWhen([this] { return m_illuminator->bench().count("fault?") > 0; },
            [this] {
                QTest::mouseClick(Column(*m_window, 5).shutter, Qt::LeftButton);
                m_isOver = true;
            });
}

/// Closes it after five seconds in any case.
void tst_WindowBehindABox::closeBoxWhen(const std::function<bool()>& condition)
{
    const QDeadlineTimer limit(5000);
    runWhen([=] { return box() != nullptr && (condition() || limit.hasExpired()); },
            [=] {
                m_wasShownBehindTheBox = condition();
                box()->accept();
            });
}

void tst_WindowBehindABox::reportsAreShown()
{
    QSignalSpy faults(m_window->device(), &Device::faultStateChanged);
    runWhen([] { return box() != nullptr; }, [this] { m_illuminator->fault = "FAULT: hot"; });
    closeBoxWhen(
        [this] { return label(*m_window, "labelLaserStatusText")->text() == QStringLiteral("Fault"); });
    openBoxInAPollsWait();
    QTRY_VERIFY_WITH_TIMEOUT(m_isOver, 10000);
    QVERIFY(m_wasShownBehindTheBox);

    // The poll that was held up does not tell what it heard so long ago, and the next ones go on as ever.
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(faults.count(), 1);
    m_illuminator->fault = "ok";
    QTRY_COMPARE(faults.count(), 2);
}

void tst_WindowBehindABox::reconnectionIsShown()
{
    Simulator::Wire& wire = m_illuminator->bench().wire();
    runWhen([] { return box() != nullptr; }, [&wire] { wire.unplug(); });
    runWhen([this] { return !m_window->device()->isOpen(); },
            [this, &wire] {
                m_illuminator->mode = "run";
                QVERIFY(wire.plug());
            });
    closeBoxWhen(
        [this] { return label(*m_window, "labelLaserStatusText")->text() == QStringLiteral("Run"); });
    openBoxInAPollsWait();
    QTRY_VERIFY_WITH_TIMEOUT(m_isOver, 10000);
    QVERIFY(m_wasShownBehindTheBox);
}

/// The click comes while the first of three closings waits for its reply, and the others in the queue for it.
void tst_WindowBehindABox::queuedClosingsAreSent()
{
    m_illuminator->thinkTime = std::chrono::milliseconds(50);
    m_illuminator->clearCommands();
    const auto& lines = m_illuminator->bench();
    runWhen([&lines] { return lines.count("fault?") > 0; },
            [this] {
                for (int number = 1; number <= 3; ++number) {
                    QTest::mouseClick(Column(*m_window, number).shutter, Qt::LeftButton);
                }
            });
    runWhen([&lines] { return lines.count("shutter:405=0") > 0; },
            [this] {
                QTest::mouseClick(Column(*m_window, 5).shutter, Qt::LeftButton);
                m_isOver = true;
            });
    closeBoxWhen([&lines] { return lines.count("shutter:470=0") > 0; });
    QTRY_VERIFY_WITH_TIMEOUT(m_isOver, 10000);
    QVERIFY(m_wasShownBehindTheBox);
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(),
             (QList<QByteArray>{"shutter:405=0", "shutter:445=0", "shutter:470=0"}));
}

/// A tick that lasts longer than the interval, in a window that is busy besides, goes on to its end.
void tst_WindowBehindABox::slowTicksAreNotOvertaken()
{
    QVERIFY(m_illuminator->settle(*m_window));
    m_illuminator->thinkTime = std::chrono::milliseconds(300);
    m_illuminator->bench().clearReceived();
    QTimer work;
    connect(&work, &QTimer::timeout, &work, [] { QThread::msleep(350); });
    work.start(100);
    QTRY_VERIFY_WITH_TIMEOUT(m_illuminator->bench().count("int_mode?") >= 2, 30000);
    work.stop();
    const QList<QByteArray> steps{"shutter?", "fault?", "f_mode?", "int_mode?"};
    QList<QByteArray> asked = m_illuminator->bench().lines();
    const auto isNoStep = [&steps](const QByteArray& line) { return !steps.contains(line); };
    asked.erase(std::remove_if(asked.begin(), asked.end(), isNoStep), asked.end());
    QCOMPARE(asked.mid(asked.indexOf("shutter?"), 2 * steps.size()), steps + steps);
}

QTEST_MAIN(tst_WindowBehindABox)
#include "tst_WindowBehindABox.moc"
