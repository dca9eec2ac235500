#pragma once

#include <QString>

/// What the command line asks of the main window.
struct CommandLine
{
    bool diagnostic = false;    ///< "-diag": service functions are shown
    bool forceUpdate = false;   ///< "-forceupdate": marks the title only
    bool limitChannels = false; ///< "-maxchannels"
    QString titleSuffix;        ///< one mark per switch, in the order in which they were given

    /// Reads arguments that are joined by single blanks. An empty piece ends them, and so does a file name
    /// that ends in ".prf", which may be spread over several pieces; other pieces are ignored.
    static CommandLine parse(const QString& arguments);
};
