#pragma once

/// Tells the log that a command did not get through: at Warn with @p busyText when the line was busy
/// (-40013), at Error with @p errorText and the number on any other failure. Success is not told.
void logCommandResult(int result, const char* busyText, const char* errorText);
