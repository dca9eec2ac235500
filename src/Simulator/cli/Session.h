#pragma once

#include "InputLines.h"
#include "Options.h"
#include "Simulator/CommandInterpreter.h"
#include "Simulator/ScenePlayer.h"
#include "Simulator/SimulatedIlluminator.h"

#include <QObject>
#include <QTextStream>

namespace Simulator {

/// One run of the program: the illuminator, its script and its input.
class Session : public QObject
{
    Q_OBJECT

public:
    explicit Session(const Options& options);

    /// Ended when the event loop shall run, otherwise why not; then a text is in errorString().
    ExitCode start();
    QString errorString() const { return m_error; }

private:
    bool loadScript();
    void listenTo(ScenePlayer& player);
    void say(const QString& text);
    void endWhenAllIsDone() const;

    Options m_options;
    QString m_error;
    QTextStream m_out;
    QTextStream m_err;
    SimulatedIlluminator m_illuminator;
    CommandInterpreter m_interpreter;
    ScenePlayer m_script;
    ScenePlayer m_typed;
    InputLines m_input;
    bool m_scriptDone = false;
    bool m_typedDone = false;
};

} // namespace Simulator
