#include "Simulator/CommandInterpreter.h"
#include "Simulator/ScenePlayer.h"
#include "Simulator/SimulatedIlluminator.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Simulator;

class tst_ScenePlayer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void keepsTheOrderAndWaits();
    void stopsAtAnError();
    void goesOnAfterAnError();
    void quits();

private:
    std::unique_ptr<SimulatedIlluminator> m_device;
    std::unique_ptr<CommandInterpreter> m_interpreter;
};

void tst_ScenePlayer::init()
{
    m_device = std::make_unique<SimulatedIlluminator>();
    m_interpreter = std::make_unique<CommandInterpreter>(*m_device);
}

void tst_ScenePlayer::cleanup()
{
    m_interpreter.reset();
    m_device.reset();
}

void tst_ScenePlayer::keepsTheOrderAndWaits()
{
    ScenePlayer player(*m_interpreter, QStringLiteral("scene"));
    QSignalSpy finished(&player, &ScenePlayer::finished);
    QElapsedTimer clock;
    clock.start();
    player.add(QStringLiteral("fault first"));
    player.add(QStringLiteral("wait 80"));
    player.add(QStringLiteral("fault second"));
    QVERIFY(m_device->state().fault.isEmpty()); // nothing runs inside add
    QTRY_COMPARE(m_device->state().fault, QByteArray("first"));
    player.end();
    QTRY_COMPARE(m_device->state().fault, QByteArray("second"));
    QVERIFY(clock.elapsed() >= 79);
    QTRY_COMPARE(finished.size(), 1);
    QVERIFY(finished.first().first().toBool());
}

void tst_ScenePlayer::stopsAtAnError()
{
    ScenePlayer player(*m_interpreter, QStringLiteral("scene"));
    player.setStopsAtError(true);
    QSignalSpy failed(&player, &ScenePlayer::failed);
    QSignalSpy finished(&player, &ScenePlayer::finished);
    for (const char* line : {"warn one", "", "nonsense", "warn two"}) {
        player.add(QLatin1String(line));
    }
    player.end();
    QTRY_COMPARE(finished.size(), 1);
    QVERIFY(!finished.first().first().toBool());
    QCOMPARE(failed.size(), 1);
    QVERIFY(failed.first().first().toString().startsWith(QStringLiteral("scene:3: unknown command")));
    QCOMPARE(m_device->state().warning, QByteArray("one"));
}

void tst_ScenePlayer::goesOnAfterAnError()
{
    ScenePlayer player(*m_interpreter, QStringLiteral("input"));
    QSignalSpy failed(&player, &ScenePlayer::failed);
    QSignalSpy output(&player, &ScenePlayer::output);
    QSignalSpy finished(&player, &ScenePlayer::finished);
    for (const char* line : {"nonsense", "warn two", "status"}) {
        player.add(QLatin1String(line));
    }
    player.end();
    QTRY_COMPARE(finished.size(), 1);
    QVERIFY(!finished.first().first().toBool());
    QCOMPARE(failed.size(), 1);
    QCOMPARE(output.size(), 1);
    QCOMPARE(m_device->state().warning, QByteArray("two"));
}

void tst_ScenePlayer::quits()
{
    ScenePlayer player(*m_interpreter, QStringLiteral("input"));
    QSignalSpy quit(&player, &ScenePlayer::quitRequested);
    player.add(QStringLiteral("quit"));
    QTRY_COMPARE(quit.size(), 1);
}

QTEST_GUILESS_MAIN(tst_ScenePlayer)
#include "tst_ScenePlayer.moc"
