#include "PortClient.h"
#include "Simulator/CommandInterpreter.h"
#include "Simulator/SimulatedIlluminator.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Simulator;
using namespace std::chrono_literals;

class tst_CommandInterpreter : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void refusesWhatMakesNoSense_data();
    void refusesWhatMakesNoSense();
    void passesOverBlankLinesAndComments_data();
    void passesOverBlankLinesAndComments();
    void everyCommandIsInTheHelp();
    void statusTellsTheState();

    void changesAnswers_data();
    void changesAnswers();
    void disturbsAnswers_data();
    void disturbsAnswers();
    void stallsAndRecovers();
    void pacesTheLine();
    void pullsTheCable();
    void plugFailsWithACause();
    void startsImages();
    void reenumerates();
    void babbles();
    void updatesTheController();
    void logsTraffic();
    void readableBytes();
    void waitsAndQuits();

private:
    /// Runs a command that is expected to work.
    bool run(const QString& line) { return m_interpreter->run(line).ok; }
    QByteArray ask(const QByteArray& line) { return m_client->ask(line); }

    std::unique_ptr<SimulatedIlluminator> m_device;
    std::unique_ptr<CommandInterpreter> m_interpreter;
    std::unique_ptr<PortClient> m_client;
};

void tst_CommandInterpreter::init()
{
    m_device = std::make_unique<SimulatedIlluminator>();
    m_device->setRestartTime(20ms);
    m_device->model().lasers().setWarmupDuration(0ms);
    QVERIFY(m_device->plug());
    m_interpreter = std::make_unique<CommandInterpreter>(*m_device);
    m_client = std::make_unique<PortClient>(m_device->portName());
}

void tst_CommandInterpreter::cleanup()
{
    m_client.reset();
    m_interpreter.reset();
    m_device.reset();
}

void tst_CommandInterpreter::refusesWhatMakesNoSense_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("complaint");
    const auto row = [](const char* line, const char* complaint) {
        QTest::newRow(line) << QString::fromLatin1(line) << QString::fromLatin1(complaint);
    };
    row("bogus", "unknown command \"bogus\"");
    row("FAULT x", "unknown command \"FAULT\"");
    row("fault", "usage: fault TEXT");
    row("help me", "usage: help");
    row("analog 405", "usage: analog CHANNEL PERCENT");
    row("analog 406 1", "no sense here: 406");
    row("analog 405 lots", "no sense here: lots");
    row("ttl 405 up", "no sense here: up");
    row("ttl x high", "no sense here: x");
    row("hours 405 -1", "no sense here: -1");
    row("hours 405 nan", "no sense here: nan");
    row("clear everything", "no sense here: everything");
    row("warmup soon", "no sense here: soon");
    row("warmup -1", "no sense here: -1");
    row("wait 86400001", "no sense here: 86400001");
    row("image kernel", "no sense here: kernel");
    row("version loader 1.2", "no sense here: 1.2");
    row("version loader 1.2.256", "no sense here: 1.2.256");
    row("version x 1.2.3", "no sense here: x");
    row("checksum updater bad", "no sense here: updater");
    row("checksum loader broken", "no sense here: broken");
    row("controller-update x", "no sense here: x");
    row("controller-update 1 now", "no sense here: now");
    row("speed -1", "no sense here: -1");
    row("speed nan", "no sense here: nan");
    row("pass x", "no sense here: x");
    row("noreply f 0", "no sense here: 0");
    row("noreply f often", "no sense here: often");
    row("late f", "usage: late MATCH MS [COUNT]");
    row("late f x", "no sense here: x");
    row("split f x 1", "no sense here: x");
    row("split f 1 x", "no sense here: x");
    row("noise f 1", "no sense here: 1");
    row("noise f xy", "no sense here: xy");
    row("zero f -1", "no sense here: -1");
    row("stall maybe", "no sense here: maybe");
    row("paced maybe", "no sense here: maybe");
    row("babble 1048577", "no sense here: 1048577");
    row("reenumerate", "usage: reenumerate");
    row("reenumerate perhaps", "no sense here: perhaps");
    row("reenumerate on soon", "no sense here: soon");
    row("reenumerate off 10", "no sense here: 10");
    row("restart-time x", "no sense here: x");
    row("log everything", "no sense here: everything");
}

void tst_CommandInterpreter::refusesWhatMakesNoSense()
{
    QFETCH(QString, line);
    QFETCH(QString, complaint);
    const IlluminatorState before = m_device->state();
    const Outcome outcome = m_interpreter->run(line);
    QVERIFY(!outcome.ok);
    QVERIFY2(outcome.text.contains(complaint), qPrintable(outcome.text));
    QVERIFY(m_device->state() == before);
    QCOMPARE(m_device->wire().pendingFaults(), 0);
}

void tst_CommandInterpreter::passesOverBlankLinesAndComments_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("empty") << QString();
    QTest::newRow("blanks") << QStringLiteral(" \t ");
    QTest::newRow("comment") << QStringLiteral("# fault x");
    QTest::newRow("comment without a blank") << QStringLiteral("  #fault x");
}

void tst_CommandInterpreter::passesOverBlankLinesAndComments()
{
    QFETCH(QString, line);
    const Outcome outcome = m_interpreter->run(line);
    QVERIFY(outcome.ok);
    QVERIFY(outcome.text.isEmpty());
    QVERIFY(m_device->state().fault.isEmpty());
}

void tst_CommandInterpreter::everyCommandIsInTheHelp()
{
    const Outcome outcome = m_interpreter->run(QStringLiteral("help"));
    QVERIFY(outcome.ok);
    int count = 0;
    for (const auto* entries : {&sceneCommands(), &deviceCommands(), &cableCommands()}) {
        for (const CommandInterpreter::Entry& entry : *entries) {
            QVERIFY2(outcome.text.contains(QStringLiteral("\n  %1 ").arg(QLatin1String(entry.name))) ||
                         outcome.text.startsWith(QStringLiteral("  %1 ").arg(QLatin1String(entry.name))),
                     entry.name);
            ++count;
        }
    }
    QVERIFY(count > 30);
}

void tst_CommandInterpreter::statusTellsTheState()
{
    ask("int_mode=ext");
    QVERIFY(run(QStringLiteral("analog 445 66.5")));
    QVERIFY(run(QStringLiteral("warn Novalum  fiber")));
    const QString text = m_interpreter->run(QStringLiteral("status")).text;
    for (const char* part :
         {"image: VYRApp\n", "mode: idle\n", "fault: none\n", "warning: Novalum fiber\n",
          "intensity from: external\n", "shutters from: host\n", "445: 66.50 %, closed\n"}) {
        QVERIFY2(text.contains(QLatin1String(part)), qPrintable(text));
    }
    QVERIFY(text.contains(QStringLiteral("port: ") + m_device->portName()));
    QVERIFY(run(QStringLiteral("unplug")));
    QVERIFY(m_interpreter->run(QStringLiteral("status")).text.contains(QStringLiteral("port: unplugged\n")));
}

void tst_CommandInterpreter::changesAnswers_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QByteArray>("query");
    QTest::addColumn<QByteArray>("answer");
    const auto row = [](const char* lines, const char* query, const char* answer) {
        QTest::newRow(lines) << QString::fromLatin1(lines).split(QLatin1Char(';')) << QByteArray(query)
                             << QByteArray(answer);
    };
    row("fault Laser  too hot", "fault?", "FAULT: Laser too hot\n");
    row("fault x;clear", "fault?", "ok\n");
    row("fault x;clear fault", "fault?", "ok\n");
    row("fault x;clear warning", "fault?", "FAULT: x\n");
    row("warn y;clear", "warn?", "ok\n");
    row("warn y;clear warning", "warn?", "ok\n");
    row("warn y;clear fault", "warn?", "WARN: y\n");
    row("warn y;held-fault z;", "fault?", "FAULT: z\n");
    row("hours 405 7.25", "hours?",
        "hours:405=7.25,445=0.00,470=0.00,520=0.00,528=0.00,555=0.00,640=0.00,730=0.00\n");
    row("version application 1.1.14", "v", "VYRApp V1.1.14\n");
    row("version loader 9.8.7", "v?l", "Loader V9.8.7\n");
    row("checksum application bad", "isappvalid", "No\n");
    row("checksum loader bad", "isloadervalid", "No\n");
    row("checksum loader bad;checksum loader good", "isloadervalid", "Yes\n");
    row("analog 405 5", "set?",
        "set:405=0.00,445=0.00,470=0.00,520=0.00,528=0.00,555=0.00,640=0.00,730=0.00\n");
}

void tst_CommandInterpreter::changesAnswers()
{
    QFETCH(QStringList, lines);
    QFETCH(QByteArray, query);
    for (const QString& line : lines) {
        QVERIFY(run(line));
    }
    QTEST(ask(query), "answer");
}

void tst_CommandInterpreter::disturbsAnswers_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("answers"); // to "v", "fault?" and "fault?", each of which is always sent
    const auto row = [](const char* line, const QByteArray& answers) {
        QTest::newRow(line) << QString::fromLatin1(line) << answers;
    };
    row("noreply fault?", "VYRApp V2.7.0\nok\n");
    row("noreply fault? 2", "VYRApp V2.7.0\n");
    row("noreply * 2", "ok\n");
    row("noreply f forever", "VYRApp V2.7.0\n");
    row("late v 30", "VYRApp V2.7.0\nok\nok\n");
    row("split v 3 30", "VYRApp V2.7.0\nok\nok\n");
    row("noise fault? 23fF0a", "VYRApp V2.7.0\n#\xff\nok\n");
    row("zero v 6 1", QByteArray("VYRApp\0 V2.7.0\nok\nok\n", 21));
    row("good", "VYRApp V2.7.0\nok\nok\n");
}

void tst_CommandInterpreter::disturbsAnswers()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, answers);
    QVERIFY(run(line));
    m_client->write("v\nfault?\nfault?\n");
    QSignalSpy finished(&m_device->wire(), &Wire::answerFinished);
    QTRY_COMPARE(finished.size(), 3);
    QCOMPARE(m_client->readNow(), answers);
    QVERIFY(run(QStringLiteral("good")));
    QCOMPARE(m_device->wire().pendingFaults(), 0);
}

void tst_CommandInterpreter::stallsAndRecovers()
{
    QVERIFY(run(QStringLiteral("stall on")));
    QCOMPARE(m_client->write("v\n"), -1);
    QVERIFY(run(QStringLiteral("stall off")));
    QCOMPARE(ask("fault?"), QByteArray("ok\n"));
    QVERIFY(run(QStringLiteral("stall on")));
    QVERIFY(run(QStringLiteral("good")));
    QCOMPARE(ask("fault?"), QByteArray("ok\n"));
}

void tst_CommandInterpreter::pacesTheLine()
{
    QVERIFY(run(QStringLiteral("paced on")));
    QVERIFY(m_device->wire().isPaced());
    QVERIFY(run(QStringLiteral("paced off")));
    QVERIFY(!m_device->wire().isPaced());
}

void tst_CommandInterpreter::pullsTheCable()
{
    QVERIFY(run(QStringLiteral("unplug")));
    QVERIFY(m_client->isHungUp());
    QVERIFY(run(QStringLiteral("plug")));
    QVERIFY(m_device->portName().endsWith(QStringLiteral("/ttyVYR0")));
    QVERIFY(run(QStringLiteral("replug ttyVYR5")));
    QVERIFY(m_device->portName().endsWith(QStringLiteral("/ttyVYR5")));
}

void tst_CommandInterpreter::plugFailsWithACause()
{
    const Outcome outcome = m_interpreter->run(QStringLiteral("replug a/b"));
    QVERIFY(!outcome.ok);
    QVERIFY(outcome.text.contains(QStringLiteral("a/b")));
    QVERIFY(!m_device->isPlugged());
}

void tst_CommandInterpreter::startsImages()
{
    QVERIFY(run(QStringLiteral("restart-time 5")));
    for (const auto& [word, image] :
         {std::pair{"loader", Image::Loader}, std::pair{"updater", Image::LoaderUpdater},
          std::pair{"application", Image::Application}}) {
        QVERIFY(run(QStringLiteral("image ") + QLatin1String(word)));
        QTRY_VERIFY(m_device->isPlugged() && m_device->state().image == image);
    }
    QSignalSpy restarted(m_device.get(), &SimulatedIlluminator::restarted);
    QVERIFY(run(QStringLiteral("power-cycle")));
    QTRY_COMPARE(restarted.size(), 1);
}

void tst_CommandInterpreter::reenumerates()
{
    QVERIFY(run(QStringLiteral("reenumerate on 10 ttyVYR2")));
    m_client->write("goloader\n");
    QTRY_VERIFY(m_client->isHungUp());
    QTRY_VERIFY(m_device->portName().endsWith(QStringLiteral("/ttyVYR2")));
    QVERIFY(run(QStringLiteral("reenumerate off")));
    m_client = std::make_unique<PortClient>(m_device->portName());
    QCOMPARE(ask("goapp"), QByteArray("done\n"));
}

void tst_CommandInterpreter::babbles()
{
    QVERIFY(run(QStringLiteral("babble 300")));
    QCOMPARE(m_client->read(300).size(), 300);
    QVERIFY(run(QStringLiteral("say  Hello   there")));
    QCOMPARE(m_client->readLine(), QByteArray("Hello there\n"));
}

void tst_CommandInterpreter::updatesTheController()
{
    QVERIFY(run(QStringLiteral("speed 0")));
    QVERIFY(run(QStringLiteral("controller-update 1000")));
    QVERIFY(m_device->model().controller().isUpdating());
    QSignalSpy restarted(m_device.get(), &SimulatedIlluminator::restarted);
    QVERIFY(run(QStringLiteral("pass 1000")));
    QVERIFY(!m_device->model().controller().isUpdating());
    QTRY_COMPARE(restarted.size(), 1);

    QVERIFY(run(QStringLiteral("controller-update 1000 next")));
    QVERIFY(!m_device->model().controller().isUpdating());
    QVERIFY(run(QStringLiteral("power-cycle")));
    QTRY_VERIFY(m_device->model().controller().isUpdating());
}

void tst_CommandInterpreter::logsTraffic()
{
    QSignalSpy log(m_interpreter.get(), &CommandInterpreter::trafficLogged);
    ask("fault?");
    QCOMPARE(log.size(), 0);
    QVERIFY(run(QStringLiteral("log on")));
    QVERIFY(run(QStringLiteral("log on"))); // twice is still once
    ask("fault?");
    QCOMPARE(log.size(), 2);
    QVERIFY(log.at(0).first().toString().endsWith(QStringLiteral(" -> fault?")));
    QVERIFY(log.at(1).first().toString().endsWith(QStringLiteral(" <- ok\\n")));
    QVERIFY(run(QStringLiteral("log off")));
    ask("fault?");
    QCOMPARE(log.size(), 2);
}

void tst_CommandInterpreter::readableBytes()
{
    QCOMPARE(readable("a b~\n"), QStringLiteral("a b~\\n"));
    QCOMPARE(readable(QByteArray("\0\r\x7f\xff", 4)), QStringLiteral("\\x00\\x0d\\x7f\\xff"));
}

void tst_CommandInterpreter::waitsAndQuits()
{
    const Outcome wait = m_interpreter->run(QStringLiteral("wait 250"));
    QVERIFY(wait.ok && !wait.quit);
    QVERIFY(wait.wait == 250ms);
    const Outcome quit = m_interpreter->run(QStringLiteral("quit"));
    QVERIFY(quit.ok && quit.quit);
}

QTEST_GUILESS_MAIN(tst_CommandInterpreter)
#include "tst_CommandInterpreter.moc"
