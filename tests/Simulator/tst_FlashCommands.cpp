#include "FlashBench.h"
#include "Simulator/CommandInterpreter.h"
#include "WireTools.h"

#include <QTest>

#include <memory>

// Firmware through the cable, and the commands by which a person disturbs that.

using namespace Simulator;
using namespace std::chrono_literals;
using FirmwareImages::Role;

class tst_FlashCommands : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void programsThroughTheCable_data();
    void programsThroughTheCable();
    void commandOf64BytesIsAnsweredOnce();

    void commandsSetTraps();
    void commandsRefuseWhatMakesNoSense_data();
    void commandsRefuseWhatMakesNoSense();
    void commandsSwitchThePower();
    void commandsTellOfProgramming();

private:
    QByteArray ask(const QByteArray& line) { return m_bench->ask(line); }
    Outcome run(const char* line) { return m_interpreter->run(QLatin1String(line)); }

    std::unique_ptr<FlashBench> m_bench;
    std::unique_ptr<CommandInterpreter> m_interpreter;
    QList<QByteArray> m_lines = programCommands(smallImage(Role::Application));
};

void tst_FlashCommands::init()
{
    m_bench = std::make_unique<FlashBench>();
    m_interpreter = std::make_unique<CommandInterpreter>(m_bench->device());
}

void tst_FlashCommands::cleanup()
{
    m_interpreter.reset();
    m_bench.reset();
}

void tst_FlashCommands::programsThroughTheCable_data()
{
    QTest::addColumn<bool>("paced");
    QTest::newRow("at once") << false;
    QTest::newRow("at its pace") << true;
}

void tst_FlashCommands::programsThroughTheCable()
{
    QFETCH(bool, paced);
    m_bench->device().wire().setPaced(paced);
    for (const QByteArray& line : qAsConst(m_lines)) {
        QCOMPARE(ask(line), QByteArray("Wrote\n")); // with the image's own "\r" before the line feed
    }
    QCOMPARE(ask("isappvalid"), QByteArray("Yes\n"));
    QCOMPARE(ask("goapp"), QByteArray("done\n"));
    QCOMPARE(ask("v"), QByteArray("VYRApp V3.1.4\n"));
    QCOMPARE(m_bench->device().linesReceived(), m_lines.size() + 3);
}

void tst_FlashCommands::commandOf64BytesIsAnsweredOnce()
{
    FirmwareImages::Image image = smallImage(Role::Application);
    image.bytesPerLine = 23;
    image.lineEnd = "\n";
    const auto lines = programCommands(image);
    int full = 0;
    for (const QByteArray& line : lines) {
        QByteArray command = line + '\n';
        if (command.size() == 64) {
            command += '\n';
            ++full;
        }
        m_bench->client().write(command);
        QCOMPARE(m_bench->client().readLine(), QByteArray("Wrote\n"));
    }
    QVERIFY(full > 3);
    QCOMPARE(m_bench->client().read(1, kSilence), QByteArray()); // an empty line has no answer
    QCOMPARE(ask("isappvalid"), QByteArray("Yes\n"));
    QCOMPARE(m_bench->device().linesReceived(), lines.size() + 1);
}

void tst_FlashCommands::commandsSetTraps()
{
    QVERIFY(run("trap isappvalid 2 refuse").ok);
    QCOMPARE(ask("isappvalid"), QByteArray("Yes\n"));
    QCOMPARE(ask("isappvalid"), QByteArray("refused\n"));
    QCOMPARE(ask("isappvalid"), QByteArray("Yes\n"));
    QVERIFY(run("trap * 1 garbage").ok);
    QVERIFY(!ask("v").startsWith("Loader"));
    QVERIFY(run("trap * 1 refuse").ok);
    QVERIFY(run("good").ok);
    QCOMPARE(ask("v"), QByteArray("Loader V1.5.0\n"));
    QCOMPARE(run("lines").text, QStringLiteral("5"));
    QVERIFY(run("trap wf: 1 noreply done").ok);
    m_bench->client().write(m_lines.first() + '\n');
    QTRY_VERIFY(!m_bench->applicationPlace().crcValid);
    QCOMPARE(m_bench->client().read(1, kSilence), QByteArray()); // that answer was trapped
    QVERIFY(run("trap v 1 unplug").ok);
    m_bench->client().write("v\n");
    QTRY_VERIFY(m_bench->client().isHungUp());
    QVERIFY(m_bench->device().isPowered());
    QVERIFY(run("plug").ok);
    QVERIFY(run("trap v 1 power-off").ok);
    m_bench->connectAgain();
    m_bench->client().write("v\n");
    QTRY_VERIFY(!m_bench->device().isPowered());
}

void tst_FlashCommands::commandsRefuseWhatMakesNoSense_data()
{
    QTest::addColumn<QString>("complaint");
    const auto row = [](const char* line, const char* complaint) {
        QTest::newRow(line) << QString::fromLatin1(complaint);
    };
    row("trap wf: 1", "usage: trap MATCH NUMBER ACTION [done]");
    row("trap wf: 0 refuse", "no sense here: 0");
    row("trap wf: x refuse", "no sense here: x");
    row("trap wf: 1 explode", "no sense here: explode");
    row("trap wf: 1 noreply soon", "no sense here: soon");
    row("trap wf: 1 refuse done", "no sense here: done");
    row("power maybe", "no sense here: maybe");
    row("flash-time x", "no sense here: x");
    row("controller-update x programmed", "no sense here: x");
    row("controller-update 1 later", "no sense here: later");
    row("lines 1", "usage: lines");
}

void tst_FlashCommands::commandsRefuseWhatMakesNoSense()
{
    QFETCH(QString, complaint);
    const Outcome outcome = run(QTest::currentDataTag());
    QVERIFY(!outcome.ok);
    QVERIFY2(outcome.text.contains(complaint), qPrintable(outcome.text));
    QVERIFY(!m_bench->device().isTrapSet());
    QVERIFY(m_bench->device().isPowered());
}

void tst_FlashCommands::commandsSwitchThePower()
{
    QVERIFY(run("power off").ok);
    QTRY_VERIFY(m_bench->client().isHungUp());
    QVERIFY(run("status").ok);
    QVERIFY(run("power on").ok);
    QVERIFY(m_bench->comesBack());
    QCOMPARE(ask("v"), QByteArray("VYRApp V2.7.0\n"));
    QVERIFY(run("power off").ok);
    QVERIFY(run("power-cycle").ok);
    QVERIFY(m_bench->comesBack());
}

void tst_FlashCommands::commandsTellOfProgramming()
{
    QVERIFY(run("flash-time 7").ok);
    QVERIFY(m_bench->device().model().flashWriteTime() == 7ms);
    QVERIFY(run("controller-update 60000 programmed").ok);
    QCOMPARE(m_bench->send(m_lines), m_lines.size());
    QCOMPARE(ask("goapp"), QByteArray("done\n"));
    QVERIFY(m_bench->device().model().controller().isUpdating());
    QVERIFY(run("controller-update 0 programmed").ok);
    m_bench->device().model().boot(Image::Loader, "Test");
    m_bench->device().model().controller() = LaserController();
    QCOMPARE(m_bench->send(m_lines), m_lines.size());
    QCOMPARE(ask("goapp"), QByteArray("done\n"));
    QVERIFY(!m_bench->device().model().controller().isUpdating());
}

QTEST_GUILESS_MAIN(tst_FlashCommands)
#include "tst_FlashCommands.moc"
