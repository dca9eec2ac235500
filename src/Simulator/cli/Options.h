#pragma once

#include "Simulator/ModelTypes.h"

#include <QString>
#include <QStringList>

namespace Simulator {

/// How the program ended, as its exit code.
enum ExitCode {
    Ended = 0,       ///< by end of input, "quit" or a signal
    BadUsage = 1,    ///< the command line was not understood
    NoPort = 2,      ///< the system gave no pseudo-terminal
    ScriptFailed = 3 ///< the script could not be read or has an error
};

/// The command line.
struct Options
{
    bool paced = true;
    bool stay = false;
    Image image = Image::Application;
    QString name;
    QString scriptPath; ///< empty = none
};

/// What the command line comes to: options, or a text to show and an exit code to end with.
struct ParsedOptions
{
    bool goesOn = false;
    Options options;
    QString text;
    int exitCode = Ended;
};

/// `arguments` begin with the program's name.
ParsedOptions parseOptions(const QStringList& arguments);

} // namespace Simulator
