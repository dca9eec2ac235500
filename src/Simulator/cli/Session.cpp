#include "Session.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

namespace Simulator {

Session::Session(const Options& options)
    : m_options(options), m_out(stdout), m_err(stderr), m_interpreter(m_illuminator),
      m_script(m_interpreter, options.scriptPath), m_typed(m_interpreter, QStringLiteral("input"))
{
    connect(&m_illuminator, &SimulatedIlluminator::trapSprung, this,
            [this](const QByteArray& line) { say(QStringLiteral("trap: ") + readable(line)); });
    m_script.setStopsAtError(true);
    listenTo(m_script);
    listenTo(m_typed);
    connect(&m_interpreter, &CommandInterpreter::trafficLogged, this, &Session::say);
    connect(&m_illuminator.wire(), &Wire::pluggedChanged, this, [this](bool plugged) {
        say(plugged ? QStringLiteral("port: ") + m_illuminator.portName() : QStringLiteral("unplugged"));
    });
    connect(&m_script, &ScenePlayer::finished, this, [this](bool allWell) {
        m_scriptDone = true;
        if (allWell) {
            endWhenAllIsDone();
        } else {
            QCoreApplication::exit(ScriptFailed);
        }
    });
    connect(&m_typed, &ScenePlayer::finished, this, [this] {
        m_typedDone = true;
        endWhenAllIsDone();
    });
    connect(&m_input, &InputLines::lineRead, &m_typed, &ScenePlayer::add);
    connect(&m_input, &InputLines::ended, &m_typed, &ScenePlayer::end);
}

void Session::listenTo(ScenePlayer& player)
{
    connect(&player, &ScenePlayer::output, this, &Session::say);
    connect(&player, &ScenePlayer::failed, this, [this](const QString& text) {
        m_err << text << '\n';
        m_err.flush();
    });
    connect(&player, &ScenePlayer::quitRequested, this, [] { QCoreApplication::exit(Ended); });
}

ExitCode Session::start()
{
    if (!loadScript()) {
        return ScriptFailed;
    }
    m_illuminator.wire().setPaced(m_options.paced);
    if (m_options.image != Image::Application) {
        m_illuminator.model().firmware().store(m_options.image);
        m_illuminator.model().boot(m_options.image, m_illuminator.model().resetCause());
    }
    if (!m_illuminator.plug(m_options.name)) {
        m_error = m_illuminator.wire().errorString();
        return NoPort;
    }
    return Ended;
}

bool Session::loadScript()
{
    if (m_options.scriptPath.isEmpty()) {
        m_scriptDone = true;
        return true;
    }
    QFile file(m_options.scriptPath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        m_error = m_options.scriptPath + QStringLiteral(": ") + file.errorString();
        return false;
    }
    while (!file.atEnd()) {
        m_script.add(QString::fromUtf8(file.readLine()));
    }
    m_script.end();
    return true;
}

void Session::say(const QString& text)
{
    m_out << text << '\n';
    m_out.flush();
}

void Session::endWhenAllIsDone() const
{
    if (m_scriptDone && m_typedDone && !m_options.stay) {
        QCoreApplication::exit(Ended);
    }
}

} // namespace Simulator
