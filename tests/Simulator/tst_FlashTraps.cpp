#include "FlashBench.h"
#include "WireTools.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

// What can be made to go wrong at any line.

using namespace Simulator;
using namespace std::chrono_literals;
using FirmwareImages::Role;
using Action = Trap::Action;

Q_DECLARE_METATYPE(Action)

class tst_FlashTraps : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_bench = std::make_unique<FlashBench>(); }
    void cleanup() { m_bench.reset(); }

    void strikesTheLineThatWasMeant_data();
    void strikesTheLineThatWasMeant();
    void doesItsAction_data();
    void doesItsAction();
    void powerCutAtAnyLine_data();
    void powerCutAtAnyLine();
    void cableFallsOutAtAnyLine();
    void spoilsAnImageSwitch_data();
    void spoilsAnImageSwitch();
    void powerCutWhileItRestarts();
    void powerCutBeforeItRestarts();
    void cableIsMovedWhileThePowerIsOff();

private:
    QByteArray ask(const QByteArray& line) { return m_bench->ask(line); }

    std::unique_ptr<FlashBench> m_bench;
    QList<QByteArray> m_lines = programCommands(smallImage(Role::Application));
};

void tst_FlashTraps::strikesTheLineThatWasMeant_data()
{
    QTest::addColumn<QByteArray>("match");
    QTest::addColumn<int>("countdown");
    QTest::addColumn<int>("struck"); // of the lines sent; -1: none
    QTest::newRow("next") << QByteArray() << 1 << 0;
    QTest::newRow("third") << QByteArray() << 3 << 2;
    QTest::newRow("second of a kind") << QByteArray("is") << 2 << 3;
    QTest::newRow("a whole line") << QByteArray("isloadervalid") << 1 << 3;
    QTest::newRow("not so many") << QByteArray("is") << 4 << -1;
    QTest::newRow("no such line") << QByteArray("wf:") << 1 << -1;
}

void tst_FlashTraps::strikesTheLineThatWasMeant()
{
    QFETCH(QByteArray, match);
    QFETCH(int, countdown);
    QFETCH(int, struck);
    const QList<QByteArray> lines{"v", "isappvalid", "v?a", "isloadervalid", "reset_cause", "isappvalid"};
    QSignalSpy sprung(&m_bench->device(), &SimulatedIlluminator::trapSprung);
    m_bench->device().setTrap({match, countdown, Action::Refuse, false});
    QVERIFY(m_bench->device().isTrapSet());
    m_bench->client().write("\n\r\n \n"); // no lines that ask for anything
    for (int i = 0; i < lines.size(); ++i) {
        QCOMPARE(ask(lines.at(i)) == "refused\n", i == struck);
    }
    QCOMPARE(sprung.count(), struck < 0 ? 0 : 1);
    if (struck >= 0) {
        QCOMPARE(sprung.first().first().toByteArray(), lines.at(struck));
    }
    QCOMPARE(m_bench->device().isTrapSet(), struck < 0);
    m_bench->device().clearTrap();
    QVERIFY(!m_bench->device().isTrapSet());
}

void tst_FlashTraps::doesItsAction_data()
{
    QTest::addColumn<Action>("action");
    QTest::addColumn<bool>("carriesOut");
    QTest::addColumn<bool>("isAnswered");
    QTest::addColumn<bool>("isPowered");
    QTest::addColumn<bool>("isPlugged");
    for (const bool done : {false, true}) {
        const auto row = [done](const char* name, Action action, bool answered, bool powered, bool plugged) {
            const QByteArray title = QByteArray(name) + (done ? ", done" : "");
            QTest::newRow(title.constData()) << action << done << answered << powered << plugged;
        };
        row("no reply", Action::NoReply, false, true, true);
        row("refused", Action::Refuse, true, true, true);
        row("garbage", Action::Garbage, true, true, true);
        row("power cut", Action::CutPower, false, false, false);
        row("unplugged", Action::Unplug, false, true, false);
    }
}

void tst_FlashTraps::doesItsAction()
{
    QFETCH(Action, action);
    QFETCH(bool, carriesOut);
    QFETCH(bool, isAnswered);
    QSignalSpy sprung(&m_bench->device(), &SimulatedIlluminator::trapSprung);
    m_bench->device().setTrap({"wf:", 1, action, carriesOut});
    m_bench->client().write(m_lines.first() + '\n');
    QTRY_COMPARE(sprung.count(), 1);
    const QByteArray answer = m_bench->client().readLine(isAnswered ? 5000ms : kSilence);
    QCOMPARE(!answer.isEmpty(), isAnswered);
    QVERIFY(!answer.contains("Wrote"));
    QTEST(m_bench->device().isPowered(), "isPowered");
    QTEST(m_bench->device().isPlugged(), "isPlugged");
    QCOMPARE(m_bench->client().isHungUp(), !m_bench->device().isPlugged());
    // The first line written erases what was there.
    const bool isErased = carriesOut && action != Action::Refuse;
    QCOMPARE(m_bench->applicationPlace().crcValid, !isErased);
}

void tst_FlashTraps::powerCutAtAnyLine_data()
{
    QTest::addColumn<bool>("carriesOut");
    QTest::newRow("before it is done") << false;
    QTest::newRow("after it is done") << true;
}

void tst_FlashTraps::powerCutAtAnyLine()
{
    QFETCH(bool, carriesOut);
    for (int at = 1; at <= m_lines.size(); ++at) {
        m_bench->device().model().firmware().store(Image::Application);
        m_bench->startLoader();
        m_bench->device().setTrap({{}, at, Action::CutPower, carriesOut});
        QCOMPARE(m_bench->send(m_lines), at - 1);
        QVERIFY(!m_bench->device().isPowered());
        QVERIFY(!m_bench->device().state().image);
        QVERIFY(m_bench->client().isHungUp());

        m_bench->device().restorePower();
        QVERIFY(m_bench->device().isPowered());
        QVERIFY(m_bench->comesBack());
        const int written = at - (carriesOut ? 0 : 1);
        const bool isValid = written == 0 || written == m_lines.size();
        QCOMPARE(ask("v").startsWith("VYRApp"), isValid);
        QCOMPARE(ask("isappvalid"), QByteArray(isValid ? "Yes\n" : "No\n"));
        QCOMPARE(ask("reset_cause"), QByteArray("Power-on reset\n"));
        QCOMPARE(ask("goloader"), QByteArray("done\n"));
        QCOMPARE(m_bench->send(m_lines), m_lines.size());
        QCOMPARE(ask("goapp"), QByteArray("done\n"));
        QCOMPARE(ask("v"), QByteArray("VYRApp V3.1.4\n"));
    }
}

void tst_FlashTraps::cableFallsOutAtAnyLine()
{
    for (int at = 1; at <= m_lines.size(); ++at) {
        m_bench->device().model().firmware().store(Image::Application);
        m_bench->startLoader();
        m_bench->device().setTrap({"wf:", at, Action::Unplug, true});
        QCOMPARE(m_bench->send(m_lines), at - 1);
        QVERIFY(m_bench->device().isPowered());
        QVERIFY(m_bench->device().state().image == Image::Loader); // it goes on, and remembers
        QVERIFY(m_bench->device().plug());
        QVERIFY(m_bench->comesBack());
        QCOMPARE(ask("isappvalid"), QByteArray(at == m_lines.size() ? "Yes\n" : "No\n"));
        QCOMPARE(m_bench->send(m_lines.mid(at)), m_lines.size() - at);
        QCOMPARE(ask("isappvalid"), QByteArray("Yes\n"));
    }
}

void tst_FlashTraps::spoilsAnImageSwitch_data()
{
    QTest::addColumn<Action>("action");
    QTest::addColumn<bool>("carriesOut");
    QTest::addColumn<QByteArray>("runsAfterwards");
    QTest::newRow("no reply") << Action::NoReply << false << QByteArray("Loader");
    QTest::newRow("no reply, done") << Action::NoReply << true << QByteArray("VYRApp");
    QTest::newRow("refused") << Action::Refuse << true << QByteArray("Loader");
    QTest::newRow("garbage") << Action::Garbage << false << QByteArray("Loader");
    QTest::newRow("garbage, done") << Action::Garbage << true << QByteArray("VYRApp");
    QTest::newRow("unplugged") << Action::Unplug << false << QByteArray("Loader");
    QTest::newRow("unplugged, done") << Action::Unplug << true << QByteArray("VYRApp");
}

void tst_FlashTraps::spoilsAnImageSwitch()
{
    QFETCH(Action, action);
    QFETCH(bool, carriesOut);
    QFETCH(QByteArray, runsAfterwards);
    QSignalSpy sprung(&m_bench->device(), &SimulatedIlluminator::trapSprung);
    QSignalSpy restarted(&m_bench->device(), &SimulatedIlluminator::restarted);
    m_bench->device().setTrap({"goapp", 1, action, carriesOut});
    m_bench->client().write("goapp\n");
    QTRY_COMPARE(sprung.count(), 1);
    QTRY_COMPARE(restarted.count(), runsAfterwards == "VYRApp" ? 1 : 0);
    const QByteArray answer = m_bench->client().readLine(kSilence);
    QCOMPARE(answer.isEmpty(), action == Action::NoReply || action == Action::Unplug);
    QVERIFY(answer != "done\n");
    if (!m_bench->device().isPlugged()) {
        QVERIFY(m_bench->device().plug());
        m_bench->connectAgain();
    }
    QVERIFY(ask("v").startsWith(runsAfterwards));
}

void tst_FlashTraps::powerCutWhileItRestarts()
{
    QSignalSpy restarted(&m_bench->device(), &SimulatedIlluminator::restarted);
    m_bench->device().powerCycle();
    m_bench->device().cutPower();
    m_bench->device().cutPower();   // again does nothing more
    QTest::qWait(kSilence.count()); // the restart that was under way is forgotten
    QVERIFY(!m_bench->device().state().image);
    QVERIFY(!m_bench->device().isPlugged());
    m_bench->device().restorePower();
    QVERIFY(m_bench->comesBack());
    QCOMPARE(restarted.count(), 1);
    QCOMPARE(ask("reset_cause"), QByteArray("Power-on reset\n"));
    m_bench->device().restorePower(); // it is on
    QCOMPARE(ask("v"), QByteArray("VYRApp V2.7.0\n"));
    QCOMPARE(restarted.count(), 1);
}

void tst_FlashTraps::powerCutBeforeItRestarts()
{
    auto late = fault(WireFault::Kind::LateReply);
    late.delay = 1h;
    m_bench->device().wire().addFault(late);
    m_bench->client().write("reset\n"); // begins when its answer has left
    QTRY_COMPARE(m_bench->device().linesReceived(), 1);
    m_bench->device().cutPower();
    QVERIFY(!m_bench->device().isPowered());
    QTest::qWait(kSilence.count()); // a restart would be over long since
    QVERIFY(!m_bench->device().state().image);
}

void tst_FlashTraps::cableIsMovedWhileThePowerIsOff()
{
    m_bench->device().cutPower();
    m_bench->device().unplug();
    m_bench->device().restorePower();
    QTRY_VERIFY(m_bench->device().state().image);
    QVERIFY(!m_bench->device().isPlugged());

    m_bench->device().cutPower();
    QVERIFY(m_bench->device().plug(QStringLiteral("ttyVYR7")));
    QVERIFY(!m_bench->device().isPlugged());
    m_bench->device().powerCycle(); // ends with the power on, too
    QVERIFY(m_bench->comesBack());
    QVERIFY(m_bench->device().portName().endsWith(QStringLiteral("/ttyVYR7")));
    QVERIFY(m_bench->device().isPowered());
}

QTEST_GUILESS_MAIN(tst_FlashTraps)
#include "tst_FlashTraps.moc"
