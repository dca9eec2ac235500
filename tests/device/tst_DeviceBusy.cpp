#include "device/DeviceFixture.h"

#include <QTest>
#include <QTimer>

using namespace DeviceTest;
using namespace std::chrono_literals;

namespace {
/// How long the link takes a quiet device for one that still thinks.
constexpr Milliseconds silence = 1500ms;
constexpr Milliseconds limit = 10 * silence;
constexpr char chatter[] = "warming up\n";
} // namespace

/// How long a wait for an idle link goes on at a device that keeps talking.
class tst_DeviceBusy : public ConnectedTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void everyChunkGivesItsTimeAgain();
    void silenceAfterTalkIsSilence();
    void silenceAfterTheReplyIsNone();
    void commandInAWaitOfOthers();
    void talkWithoutEnd();

private:
    /// Keeps a command in the queue: the poll, which would send it, is off.
    void queueUp();
};

void tst_DeviceBusy::queueUp()
{
    m_bench->setAnswer("temps", "temps:\n", 30ms);
    later(5ms, [this] { QCOMPARE(m_device->clearFaults(), 0); });
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(m_bench->count("clear"), 0);
}

void tst_DeviceBusy::everyChunkGivesItsTimeAgain()
{
    queueUp();
    // Each pause is well within the time, all of them are far beyond it.
    constexpr Milliseconds pause = silence / 2;
    int chunks = 0;
    QTimer talk;
    connect(&talk, &QTimer::timeout, this, [&] {
        if (++chunks == 4)
            QCOMPARE(m_device->drainQueue(), 0);
        else
            m_bench->wire().sendUnsolicited(chatter);
    });
    talk.start(pause);
    const Stopwatch watch;
    QCOMPARE(m_device->waitWhileBusy(), 0);
    QVERIFY(watch.elapsed() > silence);
    QCOMPARE(chunks, 4);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"temps", "clear"}));
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
    QVERIFY(m_device->isOpen());
}

void tst_DeviceBusy::silenceAfterTalkIsSilence()
{
    queueUp();
    Stopwatch sinceTalk;
    later(silence / 3, [&] {
        m_bench->wire().sendUnsolicited(chatter);
        sinceTalk = Stopwatch();
    });
    QCOMPARE(m_device->waitWhileBusy(), int(DeviceResult::NoReply));
    QVERIFY(sinceTalk.elapsed() >= silence - 10ms);
    QCOMPARE(m_device->deviceMode(), DeviceMode::NotIdentified);
}

/// Nobody has asked anything of a device that is quiet then, while a box holds up the wait.
void tst_DeviceBusy::silenceAfterTheReplyIsNone()
{
    m_bench->setAnswer("clear", "ok\n", 50ms);
    QCOMPARE(m_device->clearFaults(), 0);
    later(10ms, [] { listenFor(silence + 200ms); });
    const int code = m_device->waitWhileBusy();
    QCOMPARE(code, 0);
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
}

/// Whoever has the line cannot send the queue before the wait inside him returns, so the wait must not be for
/// that, even where the command came later than the wait.
void tst_DeviceBusy::commandInAWaitOfOthers()
{
    m_bench->setAnswer("temps", "temps:\n", 100ms);
    int code = 1;
    later(10ms, [&] {
        later(10ms, [this] { QCOMPARE(m_device->clearFaults(), 0); });
        code = m_device->waitWhileBusy();
    });
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(code, int(DeviceResult::Busy));
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"temps", "clear"}));
}

/// Takes its whole time, so a wait inside another one shares it.
void tst_DeviceBusy::talkWithoutEnd()
{
    queueUp();
    QTimer talk;
    connect(&talk, &QTimer::timeout, this, [this] { m_bench->wire().sendUnsolicited(chatter); });
    talk.start(silence / 5);
    int nestedCode = 1;
    Milliseconds nestedTime{0};
    later(10ms, [&] {
        const Stopwatch watch;
        nestedCode = m_device->waitWhileBusy();
        nestedTime = watch.elapsed();
        // The outer wait is over by now as well, and finds the link idle.
        QCOMPARE(m_device->drainQueue(), 0);
    });
    const int outerCode = m_device->waitWhileBusy();
    QCOMPARE(nestedCode, int(DeviceResult::Busy));
    QVERIFY2(nestedTime >= limit - 10ms && nestedTime < 2 * limit,
             qPrintable(QString::number(nestedTime.count())));
    QCOMPARE(outerCode, 0);
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
    QVERIFY(m_device->isOpen());
}

QTEST_GUILESS_MAIN(tst_DeviceBusy)
#include "tst_DeviceBusy.moc"
