#include "WireBench.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cerrno>
#include <memory>

using namespace Simulator;
using namespace std::chrono_literals;

namespace {
auto openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size();
}
} // namespace

class tst_Wire : public WireTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void answersALine();
    void neverEchoesNorRewrites();
    void answersLinesInOrder();
    void emptyAnswerIsSilence();
    void handlesALineAfterTheAnswerBeforeIt();
    void tellsWhenAnAnswerIsFinished();
    void answersMuchLater();
    void unplugInsideTheHandler();
    void deletedInsideTheHandler();

    void pacing_data();
    void pacing();

    void unplugHangsUp();
    void replug_data();
    void replug();
    void refusesNamesThatAreNoFileNames_data();
    void refusesNamesThatAreNoFileNames();
    void hundredCyclesLeakNothing();
    void unplugLosesWhatWasOnItsWay();
    void leavesNothingBehind();

    void largeNoiseArrivesWhole();
    void largeNoiseWithoutAReaderIsKept();
};

void tst_Wire::answersALine()
{
    QSignalSpy received(m_wire.get(), &Wire::lineReceived);
    QSignalSpy sent(m_wire.get(), &Wire::bytesSent);
    QCOMPARE(m_client->ask("f_mode?"), QByteArray("[f_mode?]\n"));
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.first().first().toByteArray(), QByteArray("f_mode?"));
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.first().first().toByteArray(), QByteArray("[f_mode?]\n"));
}

void tst_Wire::neverEchoesNorRewrites()
{
    // Bytes that a terminal in its usual mode would echo, translate or act on.
    m_wire->setHandler([](const QByteArray&) {
        return Answer{QByteArray("a\r\n\x03\x04\x11\x13\x7f\xff", 10), 0ms};
    });
    QSignalSpy received(m_wire.get(), &Wire::lineReceived);
    QCOMPARE(m_client->write("x\x03\x04\x13y\n"), 6);
    QCOMPARE(m_client->read(10), QByteArray("a\r\n\x03\x04\x11\x13\x7f\xff", 10));
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.first().first().toByteArray(), QByteArray("x\x03\x04\x13y"));
}

void tst_Wire::answersLinesInOrder()
{
    QCOMPARE(m_client->write("a\nb\nc\n"), 6);
    QCOMPARE(m_client->read(12), QByteArray("[a]\n[b]\n[c]\n"));
}

void tst_Wire::emptyAnswerIsSilence()
{
    m_wire->setHandler([](const QByteArray& line) { return line == "quiet" ? Answer{} : echo(line); });
    m_client->write("quiet\nloud\n");
    QCOMPARE(m_client->readLine(), QByteArray("[loud]\n"));
}

void tst_Wire::handlesALineAfterTheAnswerBeforeIt()
{
    m_wire->setHandler([this](const QByteArray& line) {
        m_log.append("handle " + line);
        return Answer{line + '\n', 40ms};
    });
    connect(m_wire.get(), &Wire::bytesSent, this,
            [this](const QByteArray& bytes) { m_log.append("send " + bytes.trimmed()); });
    m_client->write("a\n");
    m_client->write("b\n");
    QCOMPARE(m_client->read(4), QByteArray("a\nb\n"));
    QCOMPARE(m_log, (QList<QByteArray>{"handle a", "send a", "handle b", "send b"}));
}

void tst_Wire::tellsWhenAnAnswerIsFinished()
{
    m_wire->setHandler([](const QByteArray& line) { return line == "quiet" ? Answer{} : echo(line); });
    WireFault split = fault(WireFault::Kind::SplitReply, 1, "split");
    split.splitAt = 2;
    split.delay = 20ms;
    m_wire->addFault(split);
    m_wire->addFault(fault(WireFault::Kind::NoReply, 1, "lost"));
    connect(m_wire.get(), &Wire::bytesSent, this, [this](const QByteArray& bytes) { m_log.append(bytes); });
    connect(m_wire.get(), &Wire::answerFinished, this,
            [this](const QByteArray& line) { m_log.append("/" + line); });
    m_client->write("quiet\nsplit\nlost\nplain\n");
    m_client->read(16);
    QCOMPARE(m_log, (QList<QByteArray>{"/quiet", "[s", "plit]\n", "/split", "/lost", "[plain]\n", "/plain"}));
}

void tst_Wire::answersMuchLater()
{
    m_wire->setHandler([](const QByteArray& line) { return line == "go" ? Answer{} : Answer{"ok\n", 40ms}; });
    m_wire->addFault(fault(WireFault::Kind::NoReply, 1, "go"));
    QSignalSpy received(m_wire.get(), &Wire::lineReceived);
    m_client->write("go\nother\n");
    QTRY_COMPARE(received.size(), 2);
    QCOMPARE(m_wire->pendingFaults(), 1); // silence is no answer that could be lost
    m_wire->sendAnswer("go", {"lost\n", 0ms});
    QCOMPARE(m_wire->pendingFaults(), 0);
    m_wire->sendAnswer("go", {"there\n", 0ms});
    QCOMPARE(m_client->read(9), QByteArray("ok\nthere\n")); // what was on its way comes first
    m_wire->unplug();
    m_wire->sendAnswer("go", {"into the air\n", 0ms});
}

void tst_Wire::unplugInsideTheHandler()
{
    m_wire->setHandler([this](const QByteArray& line) {
        m_wire->unplug();
        return echo(line);
    });
    m_client->write("a\nb\n");
    QTRY_VERIFY(m_client->isHungUp());
    QVERIFY(!m_wire->isPlugged());

    // The answer belonged to the old cable.
    m_wire->setHandler(echo);
    QVERIFY(m_wire->plug());
    const PortClient again(m_wire->portName());
    QCOMPARE(again.ask("c"), QByteArray("[c]\n"));
}

void tst_Wire::deletedInsideTheHandler()
{
    m_wire->setHandler([this](const QByteArray& line) {
        m_wire.reset();
        return echo(line);
    });
    m_client->write("a\nb\n");
    QTRY_VERIFY(m_client->isHungUp());
    QVERIFY(!m_wire);
}

void tst_Wire::pacing_data()
{
    QTest::addColumn<bool>("paced");
    QTest::addColumn<int>("commandBytes");
    QTest::addColumn<int>("answerBytes");
    QTest::addColumn<int>("thinkMs");

    QTest::newRow("unpaced") << false << 100 << 100 << 0;
    QTest::newRow("unpaced, thinking") << false << 100 << 100 << 50;
    QTest::newRow("short") << true << 8 << 12 << 0;
    QTest::newRow("long answer") << true << 8 << 264 << 0;
    QTest::newRow("long command") << true << 150 << 6 << 0;
    QTest::newRow("thinking") << true << 8 << 12 << 80;
}

void tst_Wire::pacing()
{
    QFETCH(bool, paced);
    QFETCH(int, commandBytes);
    QFETCH(int, answerBytes);
    QFETCH(int, thinkMs);
    m_wire->setPaced(paced);
    m_wire->setHandler([=](const QByteArray&) {
        return Answer{QByteArray(answerBytes - 1, 'y') + '\n', std::chrono::milliseconds(thinkMs)};
    });
    connect(m_wire.get(), &Wire::bytesSent, this,
            [this] { m_timesMs.append(static_cast<double>(m_clock.nsecsElapsed()) / 1e6); });

    // A busy computer makes a single answer late, but never early.
    for (int attempt = 0; attempt < 5; ++attempt) {
        m_clock.start();
        QCOMPARE(m_client->write(QByteArray(commandBytes - 1, 'x') + '\n'), commandBytes);
        QCOMPARE(m_client->read(answerBytes).size(), answerBytes);
    }
    QCOMPARE(m_timesMs.size(), 5); // each answer was one write
    const auto [fastest, slowest] = std::minmax_element(m_timesMs.cbegin(), m_timesMs.cend());
    const double dueMs = (paced ? (commandBytes + answerBytes) * 10.0 / 19.2 : 0.0) + thinkMs;
    QVERIFY2(*fastest >= dueMs, qPrintable(QString::number(*fastest)));
    QVERIFY2(*fastest <= dueMs + 50.0, qPrintable(QString::number(*fastest)));
    QVERIFY2(*slowest <= dueMs + 1000.0, qPrintable(QString::number(*slowest)));
}

void tst_Wire::unplugHangsUp()
{
    QSignalSpy plugged(m_wire.get(), &Wire::pluggedChanged);
    const QString name = m_wire->portName();
    QVERIFY(QFileInfo::exists(name));
    QVERIFY(!m_client->isHungUp());
    connect(m_wire.get(), &Wire::pluggedChanged, this,
            [this, name] { m_log.append(QFileInfo(name).isSymLink() ? "still listed" : "not listed"); });

    m_wire->unplug();

    QVERIFY(m_client->isHungUp());
    QCOMPARE(m_client->write("a\n"), -1);
    QCOMPARE(errno, EIO);
    QCOMPARE(m_log, QList<QByteArray>{"not listed"});
    QVERIFY(m_wire->portName().isEmpty());
    QCOMPARE(plugged.size(), 1);
    QCOMPARE(plugged.first().first().toBool(), false);
    m_wire->unplug();
    m_wire->sendUnsolicited("into the air\n");
    QCOMPARE(plugged.size(), 1);
}

void tst_Wire::replug_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("same name") << QStringLiteral("ttyVYR0");
    QTest::newRow("another name") << QStringLiteral("ttyVYR7");
}

void tst_Wire::replug()
{
    QFETCH(QString, name);
    const QString before = m_wire->portName();
    m_wire->unplug();
    QVERIFY(m_wire->plug(name));
    QCOMPARE(QFileInfo(m_wire->portName()).fileName(), name);
    QCOMPARE(QFileInfo(m_wire->portName()).path(), QFileInfo(before).path());
    QCOMPARE(QFileInfo(before).isSymLink(), before == m_wire->portName());
    const PortClient again(m_wire->portName());
    QCOMPARE(again.ask("a"), QByteArray("[a]\n"));
    QVERIFY(m_client->isHungUp()); // the old port stays dead
}

void tst_Wire::refusesNamesThatAreNoFileNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << QString();
    QTest::newRow("path") << QStringLiteral("../ttyVYR0");
    QTest::newRow("folder itself") << QStringLiteral(".");
    QTest::newRow("parent") << QStringLiteral("..");
}

void tst_Wire::refusesNamesThatAreNoFileNames()
{
    QFETCH(QString, name);
    QVERIFY(!m_wire->plug(name));
    QVERIFY(m_wire->errorString().contains(QStringLiteral("not a port name")));
    QVERIFY(!m_wire->isPlugged());
    QVERIFY(m_wire->portName().isEmpty());
}

void tst_Wire::hundredCyclesLeakNothing()
{
    m_client.reset();
    const auto before = openDescriptors();
    for (int cycle = 0; cycle < 100; ++cycle) {
        m_wire->unplug();
        QVERIFY2(m_wire->plug(), qPrintable(m_wire->errorString()));
        const PortClient client(m_wire->portName());
        QCOMPARE(client.ask("a"), QByteArray("[a]\n"));
    }
    QCOMPARE(openDescriptors(), before);
}

void tst_Wire::unplugLosesWhatWasOnItsWay()
{
    m_wire->setHandler([](const QByteArray& line) { return Answer{line + '\n', 30ms}; });
    QSignalSpy received(m_wire.get(), &Wire::lineReceived);
    m_client->write("a\nb\nhalf");
    QTRY_COMPARE(received.size(), 2);
    m_wire->unplug();
    QVERIFY(m_wire->plug());
    const PortClient again(m_wire->portName());
    QCOMPARE(again.ask("c"), QByteArray("c\n"));
}

void tst_Wire::leavesNothingBehind()
{
    const QString folder = QFileInfo(m_wire->portName()).path();
    QVERIFY(QFileInfo::exists(folder));
    m_wire.reset();
    QVERIFY(!QFileInfo::exists(folder));
    QVERIFY(m_client->isHungUp());
}

void tst_Wire::largeNoiseArrivesWhole()
{
    QByteArray noise(64 * 1024, '\0');
    for (int i = 0; i < noise.size(); ++i) {
        noise[i] = static_cast<char>(i * 31 % 251);
    }
    m_wire->sendUnsolicited(noise);
    QCOMPARE(m_client->read(noise.size()), noise);
    QCOMPARE(m_client->ask("a"), QByteArray("[a]\n"));
}

void tst_Wire::largeNoiseWithoutAReaderIsKept()
{
    m_client.reset();
    const QByteArray noise(64 * 1024, 'n');
    m_wire->sendUnsolicited(noise);
    const PortClient client(m_wire->portName());
    QCOMPARE(client.read(noise.size()).size(), noise.size());
}

QTEST_GUILESS_MAIN(tst_Wire)
#include "tst_Wire.moc"
