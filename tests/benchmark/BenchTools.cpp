#include "BenchTools.h"

#include <QEventLoop>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <sys/resource.h>

namespace {
Bench::Seconds secondsOf(const timeval& time)
{
    return Bench::Seconds(static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6);
}

QString loadAverage()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readLine().trimmed())
                                          : QStringLiteral("unknown");
}

void printLine(const QString& text)
{
    std::printf("%s\n", qPrintable(text));
    std::fflush(stdout);
}

QString cell(double value, const char* unit)
{
    return QStringLiteral("%1 %2").arg(value, 0, 'f', 3).arg(QLatin1String(unit));
}
} // namespace

Bench::Seconds Bench::since(Clock::time_point start)
{
    return Clock::now() - start;
}

Bench::Seconds Bench::processorTime()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
}

Bench::Seconds Bench::threadProcessorTime()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

Bench::Seconds Bench::timed(const std::function<void()>& work)
{
    const auto start = Clock::now();
    work();
    return since(start);
}

Bench::Seconds Bench::processorTimed(const std::function<void()>& work)
{
    const Seconds before = processorTime();
    work();
    return processorTime() - before;
}

double Bench::median(std::vector<double> values)
{
    if (values.empty()) {
        return 0.0;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void Bench::interleave(int rounds, const std::function<void()>& measured,
                       const std::function<void()>& baseline)
{
    for (int round = 0; round < rounds; ++round) {
        measured();
        baseline();
    }
}

void Bench::Table::printHead()
{
    printNote(QStringLiteral("load average: ") + loadAverage());
    printLine(QStringLiteral("%1 | %2 | %3 | %4 | goal")
                  .arg(QStringLiteral("name"), -58)
                  .arg(QStringLiteral("measured"), 14)
                  .arg(QStringLiteral("baseline"), 14)
                  .arg(QStringLiteral("ratio"), 8));
}

void Bench::Table::printRow(const QString& name, double measured, double baseline, const char* unit,
                            const char* goal)
{
    const QString ratio =
        baseline == 0.0 ? QStringLiteral("-") : QString::number(measured / baseline, 'f', 4);
    printLine(QStringLiteral("%1 | %2 | %3 | %4 | %5")
                  .arg(name, -58)
                  .arg(cell(measured, unit), 14)
                  .arg(cell(baseline, unit), 14)
                  .arg(ratio, 8)
                  .arg(QLatin1String(goal)));
}

void Bench::Table::printNote(const QString& text)
{
    printLine(QStringLiteral("# ") + text);
}

void Bench::pause(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    timer.start(time);
    loop.exec();
}

bool Bench::waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit)
{
    constexpr std::chrono::milliseconds lookEvery{5};
    const auto start = Clock::now();
    while (!condition()) {
        if (since(start) > limit) {
            return false;
        }
        pause(lookEvery);
    }
    return true;
}
