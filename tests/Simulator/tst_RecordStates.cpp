#include "PortClient.h"
#include "RecordTools.h"
#include "Simulator/CommandInterpreter.h"
#include "Simulator/RecordContents.h"
#include "Simulator/SimulatedIlluminator.h"

#include <QSignalSpy>
#include <QStringBuilder>
#include <QTest>

using namespace Simulator;
using namespace std::chrono_literals;

namespace {
using Record = RecordMemory::Record;
} // namespace

/// The configuration records of a whole illuminator, asked through its port.
class tst_RecordStates : public QObject
{
    Q_OBJECT

private slots:
    void throughTheWire();
    void recordStates_data();
    void recordStates();
    void recordStatesAreRefused_data();
    void recordStatesAreRefused();
};

void tst_RecordStates::throughTheWire()
{
    SimulatedIlluminator device;
    device.setRestartTime(20ms);
    QVERIFY(device.plug());
    const PortClient client(device.portName());
    const auto say = [&client](const QByteArray& line) { return client.ask(line); };
    QCOMPARE(readSystem(kSystem, say), RecordContents::factorySystem());
    QCOMPARE(say("wf:" + s2(kSystem, "x")), QByteArray("refused\n"));

    QCOMPARE(say("goloader"), QByteArray("done\n"));
    const QByteArray record = countingBytes(308, 77);
    const auto systemLines = writeCommands(kSystem, record);
    for (const QByteArray& line : systemLines) {
        QCOMPARE(say(line), QByteArray("Wrote\n"));
    }
    QCOMPARE(say("issysconfigvalid"), QByteArray("No\n"));
    QCOMPARE(say("setsysconfigvalid"), QByteArray("done\n"));
    QCOMPARE(say("goapp"), QByteArray("done\n"));
    QCOMPARE(say("issysconfigvalid"), QByteArray("Yes\n"));
    QCOMPARE(readSystem(kSystem, say), record);

    QSignalSpy restarted(&device, &SimulatedIlluminator::restarted);
    device.powerCycle();
    QTRY_COMPARE(restarted.size(), 1);
    const PortClient again(device.portName());
    QCOMPARE(readSystem(kSystem, [&again](const QByteArray& line) { return again.ask(line); }), record);
}

void tst_RecordStates::recordStates_data()
{
    QTest::addColumn<QStringList>("commands");
    QTest::addColumn<QByteArray>("query");
    QTest::addColumn<QByteArray>("answer");
    const auto row = [](const char* commands, const QByteArray& query, const QByteArray& answer) {
        QTest::newRow(QByteArray(commands + (": " + query)).constData())
            << QString::fromLatin1(commands).split(QLatin1Char(';')) << query << QByteArray(answer + '\n');
    };
    const QByteArray first = readCommand(kSystem, 40);
    const auto rf = [](const QByteArray& bytes) -> QByteArray { return "rf:" + bytes.toHex(); };
    const auto channels = [](const QByteArray& bytes) -> QByteArray {
        return "chan_config:" + bytes.toHex();
    };
    row("record system invalid", "issysconfigvalid", "No");
    row("record system invalid", "ischanconfigvalid", "Yes");
    row("record channel invalid", "ischanconfigvalid", "No");
    row("record channel invalid", "issysconfigvalid", "Yes");
    row("record system invalid;record system valid", "issysconfigvalid", "Yes");
    row("record system short", "issysconfigvalid", "Yes");
    row("record system short", first, rf(RecordContents::factorySystem().left(39)));
    row("record system short", "chan_config", channels(RecordContents::factoryChannels()));
    row("record system short;record system valid", first, rf(RecordContents::factorySystem().left(40)));
    row("record channel short", "chan_config", channels(RecordContents::factoryChannels().left(99)));
    row("record channel invalid;record channel short", "ischanconfigvalid", "Yes");
    row("record system odd", first, rf(RecordContents::oddSystem().left(40)));
    row("record system odd", "issysconfigvalid", "Yes");
    row("record channel odd", "chan_config", channels(RecordContents::oddChannels()));
    row("record channel odd;record channel valid", "chan_config", channels(RecordContents::oddChannels()));
    row("record channel odd;record channel factory", "chan_config",
        channels(RecordContents::factoryChannels()));
    row("record system odd;record system invalid;record system factory", first,
        rf(RecordContents::factorySystem().left(40)));
    row("record system invalid;record system factory", "issysconfigvalid", "Yes");
}

void tst_RecordStates::recordStates()
{
    QFETCH(QStringList, commands);
    QFETCH(QByteArray, query);
    SimulatedIlluminator device;
    CommandInterpreter interpreter(device);
    QVERIFY(device.plug());
    const PortClient client(device.portName());
    for (const QString& command : commands) {
        QVERIFY2(interpreter.run(command).ok, qPrintable(command));
    }
    QTEST(client.ask(query), "answer");
}

void tst_RecordStates::recordStatesAreRefused_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("complaint");
    const auto row = [](const char* command, const char* complaint) {
        QTest::newRow(command) << QString::fromLatin1(command) << QString::fromLatin1(complaint);
    };
    row("record", "usage: record system|channel STATE");
    row("record system", "usage: record system|channel STATE");
    row("record system odd now", "usage: record system|channel STATE");
    row("record product odd", "no sense here: product");
    row("record system lost", "no sense here: lost");
    row("record System odd", "no sense here: System");
}

void tst_RecordStates::recordStatesAreRefused()
{
    QFETCH(QString, command);
    QFETCH(QString, complaint);
    SimulatedIlluminator device;
    CommandInterpreter interpreter(device);
    const Outcome outcome = interpreter.run(command);
    QVERIFY(!outcome.ok);
    QVERIFY2(outcome.text.contains(complaint), qPrintable(outcome.text));
    const RecordMemory& records = device.model().records();
    QVERIFY(records.isValid(Record::System));
    QVERIFY(records.isValid(Record::Channels));
    QCOMPARE(records.record(Record::System), RecordContents::factorySystem());
    QCOMPARE(records.record(Record::Channels), RecordContents::factoryChannels());
}

QTEST_GUILESS_MAIN(tst_RecordStates)
#include "tst_RecordStates.moc"
