#pragma once

#include <chrono>
#include <functional>

/// A clock for the whole process that leaves out the waiting. Whenever the main thread's event loop would
/// sleep until its next timer, the clock jumps to that time instead; while the program works, the clock runs
/// as it always does. Timers, time-outs, the simulated device's clock and the log's time stamps all go by it,
/// and keep their proportions. What is left as it is: the sleep of other threads, and waits with a time-out
/// on locks.
namespace Soak::FastClock {

/// From now on; to be called once, on the main thread, before the application object is made. The event loop
/// must be the plain one of the system, which the environment chooses (QT_NO_GLIB).
void start();

/// Bytes take their real time through the kernel to the other end of a terminal. A jump is therefore put off
/// for a little, and for longer while this returns true: somebody waits for bytes that should come.
void setAnswerExpected(std::function<bool()> expected);

/// How much was left out so far.
std::chrono::nanoseconds skipped();

/// The system's own time, for figures of what the run costs.
std::chrono::nanoseconds realTime();

} // namespace Soak::FastClock
