#include "FastClock.h"

#include <algorithm>
#include <atomic>
#include <ctime>
#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

// Below stand, under their own names, the functions of the C library by which a process learns the time or
// sleeps. The libraries find those of the program first.

namespace {
using std::chrono::nanoseconds;
using std::chrono::seconds;

/// What is on its way through a terminal has usually arrived within the first; a busy machine takes longer.
constexpr nanoseconds graceForAnyBytes = std::chrono::microseconds(40);
constexpr nanoseconds graceForAnAnswer = std::chrono::milliseconds(20);

using ReadClock = int (*)(clockid_t, timespec*);
using Poll = int (*)(pollfd*, nfds_t, const timespec*, const sigset_t*);

std::atomic<nanoseconds::rep> skippedTime{0};
std::atomic<bool> running{false};
pthread_t mainThread;
ReadClock systemClock = nullptr;
Poll systemPoll = nullptr;

std::function<bool()>& answerExpected()
{
    static std::function<bool()> expected;
    return expected;
}

int readSystemClock(clockid_t clock, timespec* time)
{
    // Before the start nothing may be looked up yet, as the loader itself may be asking.
    return systemClock != nullptr ? systemClock(clock, time)
                                  : static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
}

nanoseconds fromTimespec(const timespec& time)
{
    return seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

timespec toTimespec(nanoseconds time)
{
    const auto whole = std::chrono::floor<seconds>(time);
    timespec result{};
    result.tv_sec = whole.count();
    result.tv_nsec = (time - whole).count();
    return result;
}

bool isOnMainThread()
{
    return running && ::pthread_equal(::pthread_self(), mainThread) != 0;
}

/// The clocks that pass while nobody works; those of the processor are left alone.
bool isOfTheDay(clockid_t clock)
{
    return clock == CLOCK_MONOTONIC || clock == CLOCK_REALTIME || clock == CLOCK_MONOTONIC_COARSE ||
           clock == CLOCK_REALTIME_COARSE || clock == CLOCK_BOOTTIME;
}

int pollFor(pollfd* files, nfds_t count, nanoseconds time, const sigset_t* signalMask)
{
    const timespec limit = toTimespec(time);
    return systemPoll(files, count, &limit, signalMask);
}
} // namespace

void Soak::FastClock::start()
{
    systemClock = reinterpret_cast<ReadClock>(::dlsym(RTLD_NEXT, "clock_gettime"));
    systemPoll = reinterpret_cast<Poll>(::dlsym(RTLD_NEXT, "ppoll"));
    mainThread = ::pthread_self();
    ::prctl(PR_SET_TIMERSLACK, 1UL); // a short sleep takes half as long again otherwise
    running = true;
}

void Soak::FastClock::setAnswerExpected(std::function<bool()> expected)
{
    answerExpected() = std::move(expected);
}

nanoseconds Soak::FastClock::skipped()
{
    return nanoseconds(skippedTime.load());
}

nanoseconds Soak::FastClock::realTime()
{
    timespec time{};
    readSystemClock(CLOCK_MONOTONIC, &time);
    return fromTimespec(time);
}

// The library's own names for the parameters are not for others to use.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    const int result = readSystemClock(clock, time);
    if (result == 0 && running && isOfTheDay(clock)) {
        *time = toTimespec(fromTimespec(*time) + Soak::FastClock::skipped());
    }
    return result;
}

int gettimeofday(timeval* time, void* /*zone*/) noexcept
{
    timespec now{};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return result;
}

int timespec_get(timespec* time, int base) noexcept
{
    return clock_gettime(CLOCK_REALTIME, time) == 0 ? base : 0;
}

int ppoll(pollfd* files, nfds_t count, const timespec* timeout, const sigset_t* signalMask)
{
    if (!isOnMainThread()) {
        timespec rest = timeout != nullptr ? *timeout : timespec{}; // which the system counts down
        return static_cast<int>(::syscall(SYS_ppoll, files, count, timeout != nullptr ? &rest : nullptr,
                                          signalMask, sizeof(unsigned long)));
    }
    if (timeout == nullptr) {
        return systemPoll(files, count, timeout, signalMask);
    }
    const nanoseconds asked = fromTimespec(*timeout);
    const nanoseconds before = Soak::FastClock::realTime();
    const nanoseconds grace = answerExpected() && answerExpected()() ? graceForAnAnswer : graceForAnyBytes;
    const int ready = pollFor(files, count, std::min(asked, grace), signalMask);
    if (ready == 0) {
        const nanoseconds left = asked - (Soak::FastClock::realTime() - before);
        skippedTime += std::max(left, nanoseconds::zero()).count();
    }
    return ready;
}

int nanosleep(const timespec* time, timespec* rest)
{
    if (!isOnMainThread()) {
        return static_cast<int>(::syscall(SYS_nanosleep, time, rest));
    }
    skippedTime += fromTimespec(*time).count();
    return 0;
}

} // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
