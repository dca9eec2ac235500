#include "Simulator/ScenePlayer.h"

#include "Simulator/CommandInterpreter.h"

#include <utility>

namespace Simulator {

ScenePlayer::ScenePlayer(CommandInterpreter& interpreter, QString source, QObject* parent)
    : QObject(parent), m_interpreter(interpreter), m_source(std::move(source))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ScenePlayer::runNext);
}

void ScenePlayer::add(const QString& line)
{
    m_lines.enqueue(line);
    if (!m_timer.isActive()) {
        m_timer.start(0);
    }
}

void ScenePlayer::end()
{
    m_ended = true;
    if (!m_timer.isActive()) {
        m_timer.start(0);
    }
}

void ScenePlayer::runNext()
{
    if (m_lines.isEmpty()) {
        if (m_ended) {
            m_ended = false;
            emit finished(m_allWell);
        }
        return;
    }
    ++m_lineNumber;
    const Outcome outcome = m_interpreter.run(m_lines.dequeue());
    if (!outcome.ok) {
        m_allWell = false;
        if (m_stopsAtError) {
            m_lines.clear();
        }
        emit failed(QStringLiteral("%1:%2: %3").arg(m_source).arg(m_lineNumber).arg(outcome.text));
    } else if (!outcome.text.isEmpty()) {
        emit output(outcome.text);
    }
    if (outcome.quit) {
        emit quitRequested();
    }
    m_timer.start(outcome.wait);
}

} // namespace Simulator
