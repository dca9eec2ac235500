#include "WireBench.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <cerrno>
#include <memory>

using namespace Simulator;
using namespace std::chrono_literals;

class tst_WireFaults : public WireTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void noReply();
    void lateReply();
    void splitReply_data();
    void splitReply();
    void noise();
    void zeroByte();
    void faultsStrikeOneAfterTheOther();
    void faultMatchesTheBeginning();
    void faultForever();

    void stallMakesWritesComeUpShort();
    void stallOutlivesUnplugging();
};

void tst_WireFaults::noReply()
{
    m_wire->addFault(fault(WireFault::Kind::NoReply));
    QCOMPARE(m_wire->pendingFaults(), 1);
    m_client->write("a\nb\n");
    QCOMPARE(m_client->readLine(), QByteArray("[b]\n"));
    QCOMPARE(m_wire->pendingFaults(), 0);
}

void tst_WireFaults::lateReply()
{
    WireFault late = fault(WireFault::Kind::LateReply);
    late.delay = 150ms;
    m_wire->addFault(late);
    QElapsedTimer clock;
    clock.start();
    m_client->write("a\nb\n");
    QCOMPARE(m_client->read(8), QByteArray("[a]\n[b]\n")); // a device that is late with one is late with all
    QVERIFY2(clock.elapsed() >= 150, qPrintable(QString::number(clock.elapsed())));
}

void tst_WireFaults::splitReply_data()
{
    QTest::addColumn<int>("splitAt");
    QTest::addColumn<QList<QByteArray>>("pieces");

    QTest::newRow("first byte") << 1 << (QList<QByteArray>{"[", "abc]\n"});
    QTest::newRow("middle") << 3 << (QList<QByteArray>{"[ab", "c]\n"});
    QTest::newRow("before the line feed") << 5 << (QList<QByteArray>{"[abc]", "\n"});
    QTest::newRow("nothing first") << 0 << (QList<QByteArray>{"[abc]\n"});
    QTest::newRow("behind the end") << 99 << (QList<QByteArray>{"[abc]\n"});
    QTest::newRow("negative") << -1 << (QList<QByteArray>{"[abc]\n"});
}

void tst_WireFaults::splitReply()
{
    QFETCH(int, splitAt);
    WireFault split = fault(WireFault::Kind::SplitReply);
    split.splitAt = splitAt;
    split.delay = 40ms;
    m_wire->addFault(split);
    connect(m_wire.get(), &Wire::bytesSent, this, [this](const QByteArray& bytes) {
        m_log.append(bytes);
        m_timesMs.append(static_cast<double>(m_clock.elapsed()));
    });
    m_clock.start();
    QCOMPARE(m_client->ask("abc"), QByteArray("[abc]\n"));
    QTEST(m_log, "pieces");
    if (m_log.size() > 1) {
        QVERIFY(m_timesMs.at(1) - m_timesMs.at(0) >= 39);
    }
}

void tst_WireFaults::noise()
{
    WireFault noise = fault(WireFault::Kind::Noise);
    noise.bytes = QByteArray("\xfe\x00\x81~", 4);
    m_wire->addFault(noise);
    m_client->write("a\nb\n");
    QCOMPARE(m_client->read(8), noise.bytes + "[b]\n");
}

void tst_WireFaults::zeroByte()
{
    WireFault zero = fault(WireFault::Kind::ZeroByte);
    zero.splitAt = 2;
    m_wire->addFault(zero);
    QCOMPARE(m_client->ask("ab"), QByteArray("[a\0b]\n", 6));
}

void tst_WireFaults::faultsStrikeOneAfterTheOther()
{
    WireFault noise = fault(WireFault::Kind::Noise, 2);
    noise.bytes = "#\n";
    m_wire->addFault(noise);
    m_wire->addFault(fault(WireFault::Kind::NoReply));
    m_client->write("a\nb\nc\nd\n");
    QCOMPARE(m_client->read(8), QByteArray("#\n#\n[d]\n"));
}

void tst_WireFaults::faultMatchesTheBeginning()
{
    m_wire->addFault(fault(WireFault::Kind::NoReply, 1, "f_mode"));
    m_client->write("fault?\nf_mode?\nf_mode?\n");
    QCOMPARE(m_client->read(19), QByteArray("[fault?]\n[f_mode?]\n"));
    QCOMPARE(m_wire->pendingFaults(), 0);
}

void tst_WireFaults::faultForever()
{
    m_wire->addFault(fault(WireFault::Kind::NoReply, -1));
    QSignalSpy received(m_wire.get(), &Wire::lineReceived);
    m_client->write("a\nb\nc\n");
    QTRY_COMPARE(received.size(), 3);
    QCOMPARE(m_client->read(1, kSilence), QByteArray());
    QCOMPARE(m_wire->pendingFaults(), 1);
    m_wire->clearFaults();
    QCOMPARE(m_client->ask("d"), QByteArray("[d]\n"));
}

void tst_WireFaults::stallMakesWritesComeUpShort()
{
    m_wire->setStalled(true);
    errno = 0;
    QCOMPARE(m_client->write("a\n"), -1);
    QCOMPARE(errno, EAGAIN);
    m_wire->sendUnsolicited("still talking\n"); // only the way to the device is blocked
    QCOMPARE(m_client->readLine(), QByteArray("still talking\n"));
    m_wire->setStalled(false);
    QCOMPARE(m_client->ask("b"), QByteArray("[b]\n"));
}

void tst_WireFaults::stallOutlivesUnplugging()
{
    m_wire->setStalled(true);
    m_wire->unplug();
    QVERIFY(m_wire->plug());
    const PortClient client(m_wire->portName());
    QCOMPARE(client.write("a\n"), -1);
    m_wire->setStalled(false);
    QCOMPARE(client.ask("b"), QByteArray("[b]\n"));
}

QTEST_GUILESS_MAIN(tst_WireFaults)
#include "tst_WireFaults.moc"
