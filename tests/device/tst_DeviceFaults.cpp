#include "device/DeviceFixture.h"

#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;
using QsLogging::LogLevel;
using Simulator::WireFault;

/// What can go wrong on the line without the device being gone.
class tst_DeviceFaults : public ConnectedTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void firstChunkIsTheReply();
    void bytesThatWaitInTheSystemAreNoReply();
    void bytesFromBeforeOpeningAreNoReply();
    void lateReplyIsNobodysReply();
    void strangeBytes_data();
    void strangeBytes();
    void shortWrite();
    void shortWriteIsOverAfterTheTimeout();
    void shortDirectWriteFreesTheLine();
    void restOfAShortWriteIsNeverSent();
};

void tst_DeviceFaults::firstChunkIsTheReply()
{
    m_bench->setAnswer("temps", "temps:Necsel=25.1\n");
    m_bench->wire().addFault({WireFault::Kind::SplitReply, 1, "temps", 50ms, 9, {}});
    const Announcements heard(*m_device);
    const LogCapture log(LogLevel::Trace);
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), 0);
    QCOMPARE(reply, QStringLiteral("temps:Nec"));
    QVERIFY(waitUntil([&] { return heard.chunks.size() == 2; }));
    QCOMPARE(heard.chunks, (QByteArrayList{"temps:Nec", "sel=25.1\n"}));
    QCOMPARE(log.count(QStringLiteral("From device <-")), 2);
    QCOMPARE(m_device->transaction("v\n", reply), 0);
    QCOMPARE(reply, QStringLiteral("VYRApp V2.7.0\n"));
}

void tst_DeviceFaults::bytesThatWaitInTheSystemAreNoReply()
{
    for (int i = 0; i < 50; ++i) {
        // Nothing has run the event loop since: the bytes are in the system only.
        m_bench->wire().sendUnsolicited("noise\n");
        QString reply;
        QCOMPARE(m_device->transaction("v\n", reply), 0);
        QCOMPARE(reply, QStringLiteral("VYRApp V2.7.0\n"));
    }
    QVERIFY(m_device->isOpen());
}

void tst_DeviceFaults::bytesFromBeforeOpeningAreNoReply()
{
    m_device.reset();
    // Most of it has time to reach the port's buffer in the system while nobody reads.
    m_bench->wire().sendUnsolicited("VYRApp V9.9.9\n");
    Device device;
    const Announcements heard(device);
    QVERIFY(connectWithoutPoll(device));
    QCOMPARE(heard.chunks.value(0), QByteArray("VYRApp V2.7.0\n"));
    QCOMPARE(device.runningVersion().version.toString(), QStringLiteral("2.7.0"));
}

void tst_DeviceFaults::lateReplyIsNobodysReply()
{
    m_bench->setAnswer("temps", "temps:Necsel=1\n");
    m_bench->wire().addFault({WireFault::Kind::LateReply, 1, "temps", 1550ms, 0, {}});
    const Announcements heard(*m_device);
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), -40007);
    QVERIFY(waitUntil([&] { return !heard.chunks.isEmpty(); }));
    QCOMPARE(m_device->transaction("v\n", reply), 0);
    QCOMPARE(reply, QStringLiteral("VYRApp V2.7.0\n"));
}

void tst_DeviceFaults::strangeBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("code");

    QByteArray everyByte;
    for (int i = 0; i < 256; ++i)
        everyByte += static_cast<char>(i);
    QTest::newRow("every byte") << everyByte << -40009;
    QTest::newRow("zero bytes") << QByteArray(64, '\0') << -40009;
    QTest::newRow("zero in front") << QByteArray("\0set:405=1\n", 11) << -40009;
    QTest::newRow("broken characters") << QByteArray("\xC3\x28\xFE\xFF\xF8\n") << -40009;
    QTest::newRow("64 KiB without a line end") << QByteArray(64 * 1024, 'x') << -40009;
    QTest::newRow("64 KiB of items") << "set:" + QByteArray("1=2,").repeated(16 * 1024) << 0;
    QTest::newRow("line feeds") << QByteArray(100, '\n') << -40009;
}

void tst_DeviceFaults::strangeBytes()
{
    QFETCH(const QByteArray, bytes);
    m_bench->setAnswer("set?", bytes);
    IntensityLevels levels{};
    QTEST(m_device->getIntensityLevels(levels), "code");
    // All of it is taken in, and none of it is left for the next reply.
    listenFor(50ms);
    QString reply;
    QCOMPARE(m_device->transaction("v\n", reply), 0);
    QCOMPARE(reply, QStringLiteral("VYRApp V2.7.0\n"));
    QVERIFY(m_device->isOpen());
}

void tst_DeviceFaults::shortWrite()
{
    m_bench->wire().setStalled(true);
    const LogCapture log(LogLevel::Trace);
    QString reply = QStringLiteral("before");
    QCOMPARE(m_device->transaction("temps\n", reply), -40006);
    QCOMPARE(errorMessages(log).count(QStringLiteral("Write command error.")), 1);
    QVERIFY(m_device->isOpen());
    // The line counts as taken until a chunk arrives.
    QCOMPARE(m_device->transaction("v\n", reply), -40013);
    QCOMPARE(reply, QStringLiteral("before"));
    m_bench->wire().setStalled(false);
    const Announcements heard(*m_device);
    m_bench->wire().sendUnsolicited("hello\n");
    QVERIFY(waitUntil([&] { return !heard.chunks.isEmpty(); }));
    QCOMPARE(m_device->transaction("v\n", reply), 0);
    QCOMPARE(reply, QStringLiteral("VYRApp V2.7.0\n"));
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"v"});
}

void tst_DeviceFaults::shortWriteIsOverAfterTheTimeout()
{
    m_bench->wire().setStalled(true);
    QString reply;
    QCOMPARE(m_device->transaction("temps\n", reply), -40006);
    m_bench->wire().setStalled(false);
    QCOMPARE(m_device->clearFaults(), 0); // queued, as the line still counts as taken
    QCOMPARE(m_bench->lines(), QList<QByteArray>());
    m_device->setPolling(true);
    QVERIFY(m_bench->waitForLine("clear", 1, std::chrono::seconds(3)));
    QVERIFY(m_bench->waitForLine("shutter?"));
}

void tst_DeviceFaults::shortDirectWriteFreesTheLine()
{
    m_bench->wire().setStalled(true);
    const LogCapture log;
    QCOMPARE(m_device->clearFaults(), -40006);
    QCOMPARE(errorMessages(log).count(QStringLiteral("Write command error.")), 1);
    m_bench->wire().setStalled(false);
    QString reply;
    QCOMPARE(m_device->transaction("v\n", reply), 0);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"v"});
}

void tst_DeviceFaults::restOfAShortWriteIsNeverSent()
{
    // More than the system's buffers hold: the first part goes out, the rest must not follow later.
    m_bench->setAnswer("v", "VYRApp V2.7.0\n");
    const QByteArray command = QByteArray(1024 * 1024, 'x') + '\n';
    const qint64 taken = m_device->writeCommand(command);
    QVERIFY2(taken > 0 && taken < command.size(), qPrintable(QString::number(taken)));
    QVERIFY(m_device->isOpen());
    listenFor(200ms);
    QCOMPARE(m_bench->received().size(), 0); // the line feed never came
}

QTEST_GUILESS_MAIN(tst_DeviceFaults)
#include "tst_DeviceFaults.moc"
