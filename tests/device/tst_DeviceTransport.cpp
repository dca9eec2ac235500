#include "device/DeviceFixture.h"

#include <QRegularExpression>
#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;
using QsLogging::LogLevel;

class tst_DeviceTransport : public ConnectedTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void closedPortAnswersNotOpen();
    void replyIsHandedOver();
    void replyEndsAtTheNulByte();
    void replyIsUtf8();
    void nestedTransactionIsRefused();
    void trafficIsTracedAtTraceLevelOnly();
    void sendCommandLogsTheReply();
    void rawBytesGoOutAsTheyAre();
    void waitingCostsNoProcessorTime();
    void timeouts();
    void goCommandOutlastsOrdinaryTimeouts();
    void listenerCannotWaitForAReply();
    void outerWaitKeepsItsOwnReply();
    void lostReplyAfterAnOuterWaitFreesTheLine();
    void waitWhileBusy();
    void busyTimeoutEndsEvenWithAQueue();
    void queueOfTheApplicationDoesNotHoldUpTheLoader();
};

void tst_DeviceTransport::closedPortAnswersNotOpen()
{
    Device device;
    QString reply = QStringLiteral("before");
    QCOMPARE(device.transaction("v\n", reply), -40010);
    QCOMPARE(reply, QStringLiteral("before"));
    QCOMPARE(device.sendCommand("reset_cause"), 0);
    QCOMPARE(device.sendGoCommand("goloader"), -40010);
    QCOMPARE(device.goLoader(), -40010);
    QCOMPARE(device.goApp(), -40010);
    QCOMPARE(device.sendOrEnqueue("clear\n"), -40010);
    QCOMPARE(device.drainQueue(), -40010);
    QCOMPARE(device.waitWhileBusy(), -40010);
    QCOMPARE(device.writeCommand("v\n"), qint64(-1));
    QVERIFY(!device.isOpen());
    QVERIFY(!device.isApplicationConnected());
    device.flushInput();
    device.writeRaw("x");
    device.setPolling(true);
    device.pollDevice();
    QCOMPARE(m_bench->received().size(), 0);
}

void tst_DeviceTransport::replyIsHandedOver()
{
    m_bench->setAnswer("temps", "temps:Necsel=25.1\n");
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(reply, QStringLiteral("temps:Necsel=25.1\n"));
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"temps"});
    QVERIFY(m_device->isOpen());
}

void tst_DeviceTransport::replyEndsAtTheNulByte()
{
    m_bench->setAnswer("temps", QByteArray("temps:A=1\0,B=2\n", 15));
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(reply, QStringLiteral("temps:A=1"));
    m_bench->setAnswer("temps", QByteArray("\0temps", 6));
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(reply, QString());
}

void tst_DeviceTransport::replyIsUtf8()
{
    m_bench->setAnswer("temps", "temps:A=25\xC2\xB0\xFF\n");
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(reply, QStringLiteral("temps:A=25\u00B0\uFFFD\n"));
}

void tst_DeviceTransport::nestedTransactionIsRefused()
{
    m_bench->setAnswer("temps", "temps:\n", 100ms);
    int nestedCode = 0;
    QString nestedReply = QStringLiteral("before");
    QStringList nestedLog;
    later(20ms, [&] {
        const LogCapture log(LogLevel::Trace);
        nestedCode = m_device->transaction("v\n", nestedReply);
        nestedLog = log.lines();
    });
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(reply, QStringLiteral("temps:\n"));
    QCOMPARE(nestedCode, -40013);
    QCOMPARE(nestedReply, QStringLiteral("before"));
    QCOMPARE(nestedLog, QStringList());
    listenFor(50ms);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"temps"});
}

void tst_DeviceTransport::trafficIsTracedAtTraceLevelOnly()
{
    QString reply;
    {
        const LogCapture log(LogLevel::Debug);
        QCOMPARE(m_device->transaction("temps\n", reply), 0);
        QCOMPARE(log.lines(), QStringList());
    }
    const LogCapture log(LogLevel::Trace);
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    const QStringList traces = messages(log.lines(LogLevel::Trace));
    QCOMPARE(traces.size(), 2);
    const QRegularExpression sent(QStringLiteral(R"(^\d\d:\d\d:\d\d\.\d{3} To device -> "temps\\n"$)"));
    const QRegularExpression received(QStringLiteral(R"(^\d\d:\d\d:\d\d\.\d{3} From device <- "ok\\n"$)"));
    QVERIFY2(sent.match(traces[0]).hasMatch(), qPrintable(traces[0]));
    QVERIFY2(received.match(traces[1]).hasMatch(), qPrintable(traces[1]));
}

void tst_DeviceTransport::sendCommandLogsTheReply()
{
    const LogCapture log;
    QCOMPARE(m_device->sendCommand("reset_cause"), 0);
    QCOMPARE(messages(log.lines()), QStringList{QStringLiteral(R"("reset_cause=power on\n")")});
}

void tst_DeviceTransport::rawBytesGoOutAsTheyAre()
{
    const Announcements heard(*m_device);
    m_bench->setAnswer("help", "yes?\n");
    m_device->writeRaw("he");
    m_device->writeRaw("lp\n");
    QVERIFY(waitUntil([&] { return !heard.chunks.isEmpty(); }));
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"help"});
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0); // the line was never taken
}

void tst_DeviceTransport::waitingCostsNoProcessorTime()
{
    m_bench->setAnswer("temps", "temps:\n", 1000ms);
    QString reply;
    const auto before = cpuTime();
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    const auto used = cpuTime() - before;
    qInfo("%lld ms of processor time in a wait of 1 s", static_cast<long long>(used.count()));
    QVERIFY(used < 100ms);
}

/// No reply at all, in each kind of wait; and the line is free again after it.
void tst_DeviceTransport::timeouts()
{
    m_bench->setAnswer("temps", {});
    const LogCapture log(LogLevel::Trace);
    QString reply = QStringLiteral("before");
    const Stopwatch watch;
    QCOMPARE(m_device->transaction("temps\n", reply), -40007);
    QVERIFY2(watch.elapsed() >= 1490ms && watch.elapsed() < 1700ms,
             qPrintable(QString::number(watch.elapsed().count())));
    QCOMPARE(reply, QStringLiteral("before"));
    QCOMPARE(log.count(QStringLiteral("Timed out waiting for response"), LogLevel::Trace), 1);
    QCOMPARE(errorMessages(log), QStringList{QStringLiteral("Write timeout error.")});
    QVERIFY(m_device->isOpen());
    QCOMPARE(m_device->transaction("v\n", reply), 0);
    QCOMPARE(reply, QStringLiteral("VYRApp V2.7.0\n"));
}

void tst_DeviceTransport::goCommandOutlastsOrdinaryTimeouts()
{
    m_bench->setAnswer("goloader", "ok\n", 2000ms);
    const LogCapture log(LogLevel::Trace);
    int busyCode = 0;
    int nestedCode = 0;
    int queuedCode = -1;
    int secondCode = 0;
    later(100ms, [&] {
        busyCode = m_device->waitWhileBusy(); // which frees the line for others, but not from the switch
        QString reply;
        nestedCode = m_device->transaction("v\n", reply);
        queuedCode = m_device->sendOrEnqueue("clear\n");
        secondCode = m_device->sendGoCommand("goapp");
    });
    const Stopwatch watch;
    QCOMPARE(m_device->sendGoCommand("goloader"), 0);
    QVERIFY(watch.elapsed() >= 1990ms);
    QCOMPARE(busyCode, -40007);
    QCOMPARE(nestedCode, -40013);
    QCOMPARE(queuedCode, 0);
    QCOMPARE(secondCode, -40013);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"goloader"});
    QCOMPARE(log.count(QStringLiteral("To device ->")), 0);
    QCOMPARE(log.count(QStringLiteral("Enqueue")), 1);
    QCOMPARE(m_device->drainQueue(), 0);
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"goloader", "clear"}));
}

void tst_DeviceTransport::listenerCannotWaitForAReply()
{
    int code = 0;
    const auto ask = [this, &code] {
        QString reply;
        code = m_device->transaction("v\n", reply);
    };
    connect(m_device.get(), &Device::receivedDataFromDevice, this, ask);
    const Stopwatch watch;
    m_bench->wire().sendUnsolicited("hello\n");
    QVERIFY(waitUntil([&] { return code != 0; }));
    QCOMPARE(code, -40013);
    QVERIFY(watch.elapsed() < 1000ms);
}

/// While a wait is over but has not come back yet, another one may begin and end inside it.
void tst_DeviceTransport::outerWaitKeepsItsOwnReply()
{
    QString nestedReply;
    runWithTheReplyTo(*m_device, *m_bench, "temps",
                      [&] { QCOMPARE(m_device->transaction("v\n", nestedReply), 0); });
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(nestedReply, QStringLiteral("VYRApp V2.7.0\n"));
    QCOMPARE(reply, QStringLiteral("ok\n"));
}

void tst_DeviceTransport::lostReplyAfterAnOuterWaitFreesTheLine()
{
    m_bench->setAnswer("clear", {});
    runWithTheReplyTo(*m_device, *m_bench, "temps", [&] { QCOMPARE(m_device->clearFaults(), 0); });
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(m_device->transaction("v\n", reply), -40013);
    QVERIFY(waitUntil([&] { return m_device->transaction("v\n", reply) == 0; }, 2s));
}

void tst_DeviceTransport::waitWhileBusy()
{
    QCOMPARE(m_device->waitWhileBusy(), 0);
    m_bench->setAnswer("clear", "ok\n", 100ms);
    const Stopwatch watch;
    QCOMPARE(m_device->clearFaults(), 0);
    QCOMPARE(m_device->waitWhileBusy(), 0);
    QVERIFY(watch.elapsed() >= 100ms && watch.elapsed() < 1000ms);
    const LogCapture log(LogLevel::Trace);
    listenFor(1700ms); // the timer does not go on
    QVERIFY(!log.contains(QStringLiteral("Timed out waiting for busy")));
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
}

void tst_DeviceTransport::queueOfTheApplicationDoesNotHoldUpTheLoader()
{
    m_bench->setAnswer("temps", "temps:\n", 50ms);
    later(10ms, [&] { QCOMPARE(m_device->clearFaults(), 0); });
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    m_bench->setAnswer("v", "Loader V1.5.0\n");
    m_device->selectPort({});
    QVERIFY(connectWithoutPoll(*m_device));
    QCOMPARE(m_device->deviceMode(), DeviceMode::Loader);
    m_bench->clearReceived();

    QCOMPARE(m_device->waitWhileBusy(), 0);

    QCOMPARE(m_device->deviceMode(), DeviceMode::Loader);
    QCOMPARE(m_bench->lines(), QList<QByteArray>()); // the queue is the application's
}

void tst_DeviceTransport::busyTimeoutEndsEvenWithAQueue()
{
    m_bench->setAnswer("temps", "temps:\n", 50ms);
    later(10ms, [&] { QCOMPARE(m_device->clearFaults(), 0); });
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    // The queue holds a command that nobody sends while the poll is off.
    const LogCapture log(LogLevel::Trace);
    const QString timeout = QStringLiteral("Timed out waiting for busy");
    const Stopwatch watch;
    QCOMPARE(m_device->waitWhileBusy(), -40007);
    QVERIFY(watch.elapsed() >= 1490ms && watch.elapsed() < 1700ms);
    QCOMPARE(log.count(timeout, LogLevel::Trace), 1);
    QCOMPARE(m_device->deviceMode(), DeviceMode::NotIdentified);
    // Nothing takes the timer back until the device is identified anew.
    m_bench->ports().setUsbIdentifiers({}, {});
    QVERIFY(waitUntil([&] { return log.count(timeout) == 2; }, 2s));
    QVERIFY(watch.elapsed() >= 2900ms);
    m_bench->ports().setUsbIdentifiers(0x2F26, 0x3A98);
    m_device->checkConnectionStatus();
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
    listenFor(1700ms);
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
    QCOMPARE(log.count(timeout), 2);
}

QTEST_GUILESS_MAIN(tst_DeviceTransport)
#include "tst_DeviceTransport.moc"
