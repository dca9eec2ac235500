#include "device/DeviceFixture.h"
#include "mainwindow/channel.h"

#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;
using QsLogging::LogLevel;

class tst_DeviceQueue : public ConnectedTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void idleLineSendsAtOnce();
    void secondCommandWaitsForTheFirst();
    void olderCommandsGoFirst();
    void commandsOfAWaitAreSentInOrder();
    void commandsGivenDuringADrainJoinIt();
    void drainIsNotEntered();
    void unansweredCommandEndsTheDrain();
    void unansweredDirectCommandFreesTheLine();
    void shortWriteEndsTheDrain();
    void queueOutlivesTheConnection();
    void twoHundredIntensitiesDuringPolling();

private:
    void queueUp(const QByteArrayList& commands);
};

/// Leaves the commands in the queue, with the line free.
void tst_DeviceQueue::queueUp(const QByteArrayList& commands)
{
    m_bench->setAnswer("temps", "temps:\n", 30ms);
    later(5ms, [&] {
        for (const QByteArray& command : commands)
            QCOMPARE(m_device->sendOrEnqueue(command), 0);
    });
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"temps"});
    m_bench->clearReceived();
}

void tst_DeviceQueue::idleLineSendsAtOnce()
{
    m_bench->setAnswer("clear", "ok\n", 50ms);
    const Announcements heard(*m_device);
    const LogCapture log(LogLevel::Trace);
    QCOMPARE(m_device->clearFaults(), 0);
    QCOMPARE(heard.chunks.size(), 0); // back before the reply
    QCOMPARE(log.count(QStringLiteral(" To device -> \"clear\\n\"")), 1);
    QCOMPARE(log.count(QStringLiteral("Enqueue")), 0);
    QVERIFY(waitUntil([&] { return heard.chunks.size() == 1; }));
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"clear"});
    QCOMPARE(m_device->waitWhileBusy(), 0);
}

void tst_DeviceQueue::secondCommandWaitsForTheFirst()
{
    m_bench->setAnswer("clear", "ok\n", 50ms);
    const LogCapture log(LogLevel::Trace);
    QCOMPARE(m_device->clearFaults(), 0);
    QCOMPARE(m_device->setSpeckle(true), 0);
    QCOMPARE(log.count(QStringLiteral("Enqueue  \"speckle=on\\n\"")), 1);
    listenFor(100ms);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"clear"});
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"clear", "speckle=on"}));
}

void tst_DeviceQueue::olderCommandsGoFirst()
{
    queueUp({"clear\n", "run!\n"});
    const LogCapture log(LogLevel::Trace);
    QCOMPARE(m_device->setFunctionalMode(FunctionalModeIdle), 0);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"clear", "run!", "idle!"}));
    QStringList traces = messages(log.lines(LogLevel::Trace));
    traces = traces.filter(QStringLiteral("Queued Commands")) + traces.filter(QStringLiteral("Enqueue")) +
             traces.filter(QStringLiteral("Q:To device -> "));
    QCOMPARE(traces.size(), 6);
    QCOMPARE(traces[0], QStringLiteral("Sending Queued Commands"));
    QCOMPARE(traces[1], QStringLiteral("Done Sending Queued Commands"));
    QVERIFY(traces[2].contains(QStringLiteral("idle!")));
}

void tst_DeviceQueue::commandsOfAWaitAreSentInOrder()
{
    queueUp({"set:405=1.00\n", "set:405=2.00\n", "set:405=3.00\n", "set:405=3.00\n"});
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(m_bench->lines(),
             (QList<QByteArray>{"set:405=1.00", "set:405=2.00", "set:405=3.00", "set:405=3.00"}));
    m_bench->clearReceived();
    const LogCapture log(LogLevel::Trace);
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(log.lines(), QStringList()); // an empty queue says nothing
    QCOMPARE(m_bench->received().size(), 0);
}

void tst_DeviceQueue::commandsGivenDuringADrainJoinIt()
{
    queueUp({"clear\n"});
    m_bench->setAnswer("clear", "ok\n", 50ms);
    later(10ms, [&] {
        QCOMPARE(m_device->setSpeckle(true), 0);
        QCOMPARE(m_device->setSpeckle(false), 0);
    });
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"clear", "speckle=on", "speckle=off"}));
}

void tst_DeviceQueue::drainIsNotEntered()
{
    queueUp({"clear\n", "speckle=on\n"});
    int nested = -1;
    runWithTheReplyTo(*m_device, *m_bench, "clear", [&] {
        nested = m_device->drainQueue(); // the line is free
        QCOMPARE(m_bench->lines(), QList<QByteArray>{"clear"});
    });
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(nested, 0);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"clear", "speckle=on"}));
}

void tst_DeviceQueue::unansweredCommandEndsTheDrain()
{
    queueUp({"clear\n", "speckle=on\n", "idle!\n"});
    m_bench->setAnswer("clear", {});
    const LogCapture log(LogLevel::Trace);
    const Stopwatch watch;
    QCOMPARE(m_device->drainQueue(), -40007);
    QVERIFY(watch.elapsed() >= 1490ms && watch.elapsed() < 1700ms);
    QCOMPARE(errorMessages(log), QStringList{QStringLiteral("Q:Write timeout error.")});
    QCOMPARE(log.count(QStringLiteral("Timed out waiting for response")), 1);
    QCOMPARE(log.count(QStringLiteral("Done Sending Queued Commands")), 1);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"clear"});
    // The one that failed is gone, the others wait for the next drain.
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"clear", "speckle=on", "idle!"}));
}

void tst_DeviceQueue::unansweredDirectCommandFreesTheLine()
{
    m_bench->setAnswer("clear", {});
    const LogCapture log(LogLevel::Trace);
    QCOMPARE(m_device->clearFaults(), 0);
    QString reply;
    QCOMPARE(m_device->transaction("v\n", reply), -40013);
    QVERIFY(waitUntil([&] { return log.contains(QStringLiteral("Timed out waiting for response")); }));
    QCOMPARE(errorMessages(log), QStringList());
    QCOMPARE(m_device->transaction("v\n", reply), 0);
}

void tst_DeviceQueue::shortWriteEndsTheDrain()
{
    queueUp({"clear\n", "speckle=on\n"});
    m_bench->wire().setStalled(true);
    const LogCapture log;
    QCOMPARE(m_device->drainQueue(), -40006);
    QCOMPARE(errorMessages(log).count(QStringLiteral("Q:Write command error.")), 1);
    QVERIFY(m_device->isOpen());
    m_bench->wire().setStalled(false);
    QString reply;
    QCOMPARE(m_device->transaction("v\n", reply), -40013); // the line stays taken
    const Announcements heard(*m_device);
    m_bench->wire().sendUnsolicited("hello\n");
    QVERIFY(waitUntil([&] { return !heard.chunks.isEmpty(); }));
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"speckle=on"});
}

void tst_DeviceQueue::queueOutlivesTheConnection()
{
    queueUp({"clear\n", "speckle=on\n"});
    m_device->selectPort(QStringLiteral("another"));
    QVERIFY(!m_device->isOpen());
    QCOMPARE(m_device->drainQueue(), -40010);
    QVERIFY(connectWithoutPoll(*m_device));
    m_bench->clearReceived();
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"clear", "speckle=on"}));
}

void tst_DeviceQueue::twoHundredIntensitiesDuringPolling()
{
    channel laser;
    laser.setWavelength(QStringLiteral("405"));
    m_device->setPolling(true);
    QList<QByteArray> expected;
    for (int i = 0; i < 200; ++i) {
        QCOMPARE(m_device->setIntensity(laser, static_cast<float>(i) / 2.0F), 0);
        expected.append("set:405=" + QByteArray::number(i / 2.0, 'f', 2));
        if (i % 10 == 0)
            listenFor(40ms);
    }
    QVERIFY(m_bench->waitForLine(expected.last()));
    QList<QByteArray> sent;
    const auto lines = m_bench->lines();
    for (const QByteArray& line : lines) {
        if (line.startsWith("set:"))
            sent.append(line);
    }
    QCOMPARE(sent, expected);
    QVERIFY(m_bench->waitForLine("shutter?", 2)); // the poll goes on beside it
}

QTEST_GUILESS_MAIN(tst_DeviceQueue)
#include "tst_DeviceQueue.moc"
