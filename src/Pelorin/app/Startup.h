#pragma once

#include <QString>

#include <functional>

class PelorinMainWindow;

// The program's start, in small steps, for the thin main functions that share it.

/// The program's data folder (see dataFolder()), created where it is missing; whether that worked is not
/// told, because the program runs without its log file, too.
QString prepareDataFolder();

/// Sets the log to level Info with two destinations that stay for the process's life: a rotating file
/// "VYR_Log.txt" in @p folder, and the debugger's output.
void configureLog(const QString& folder);

/// argv[1] to argv[argc - 1] in the local 8-bit encoding, joined by single blanks.
QString joinArguments(int argc, const char* const* argv);

/// Runs the whole program until its window is closed and returns the event loop's exit code. @p beforeShow,
/// where given, sees the finished window just before it is shown.
int runProgram(int argc, char** argv, const std::function<void(PelorinMainWindow&)>& beforeShow = {});
