#pragma once

#include <QString>

#include <chrono>
#include <functional>
#include <vector>

/// What the benchmarks share: time, processor time, and a table to print.
namespace Bench {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

Seconds since(Clock::time_point start);
/// Processor time that the whole process has used so far, in user and in kernel mode.
Seconds processorTime();
/// The same of the calling thread alone, finer.
Seconds threadProcessorTime();
/// The time that `work` takes.
Seconds timed(const std::function<void()>& work);
/// The processor time that `work` takes, all threads of the process together.
Seconds processorTimed(const std::function<void()>& work);

/// The upper one of the two in the middle when their number is even; 0 of nothing.
double median(std::vector<double> values);

/// Runs the two in turn, `rounds` times, so that whatever else the machine does befalls both.
void interleave(int rounds, const std::function<void()>& measured, const std::function<void()>& baseline);

/// Figures as one line of a table each: name | measured | baseline | ratio | goal.
namespace Table {
/// What the figures were taken under: the machine's load now. Lines that are no figures begin with "#".
void printHead();
/// The ratio is `measured` divided by `baseline`.
void printRow(const QString& name, double measured, double baseline, const char* unit, const char* goal);
void printNote(const QString& text);
} // namespace Table

/// Runs the event loop for a time.
void pause(std::chrono::milliseconds time);
/// Runs the event loop until the condition holds; false when it does not in time.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(20));

} // namespace Bench
