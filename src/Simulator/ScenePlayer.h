#pragma once

#include <QObject>
#include <QQueue>
#include <QString>
#include <QTimer>

namespace Simulator {

class CommandInterpreter;

/// Runs commands one after the other, each when the waits before it are over. Needs an event loop: nothing
/// runs inside add() itself.
class ScenePlayer : public QObject
{
    Q_OBJECT

public:
    /// `source` stands in front of what the player reports, for instance a file's name. The interpreter must
    /// outlive the player.
    ScenePlayer(CommandInterpreter& interpreter, QString source, QObject* parent = nullptr);

    void add(const QString& line); ///< lines are counted from 1 in this order
    /// No further line comes; finished() follows once the last one has run.
    void end();
    /// An error drops the lines that follow it. Off at first.
    void setStopsAtError(bool stops) { m_stopsAtError = stops; }

signals:
    void output(const QString& text);
    void failed(const QString& text); ///< with source and line number
    void quitRequested();
    void finished(bool allWell); ///< once, after end()

private:
    void runNext();

    CommandInterpreter& m_interpreter;
    QString m_source;
    QQueue<QString> m_lines;
    QTimer m_timer;
    int m_lineNumber = 0;
    bool m_stopsAtError = false;
    bool m_allWell = true;
    bool m_ended = false;
};

} // namespace Simulator
