#include "Day.h"

#include "FastClock.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"
#include "settings/SettingsDialog.h"

#include <QApplication>
#include <QSaveFile>
#include <QThread>
#include <QWidget>

#include <cstdio>
#include <fcntl.h>
#include <utility>

namespace {
constexpr double minutesPerHour = 60.0;
constexpr int shortestBreak = 2000; // ms between two tasks
constexpr int longestBreak = 28000;
constexpr int tasksBetweenComparisons = 5;
constexpr int retryBreak = 20; // ms
} // namespace

namespace Soak {

Day::Day(Plan plan, Room& room)
    : m_plan(std::move(plan)), m_room(room), m_tasks(operatorTasks() + serviceTasks() + troubles()),
      m_nextSample(m_plan.warmUpMinutes / minutesPerHour)
{
    for (Task& task : m_tasks) {
        if (!m_plan.only.isEmpty() && m_plan.only != QLatin1String(task.name)) {
            task.weight = 0;
        }
        m_totalWeight += task.weight;
    }
    m_steps.setSingleShot(true);
    connect(&m_steps, &QTimer::timeout, this, &Day::step);
}

void Day::start()
{
    m_start = Clock::now();
    m_realStart = FastClock::realTime();
    QStringList heads{QStringLiteral("hours"), QStringLiteral("polls"), QStringLiteral("tasks"),
                      QStringLiteral("real s")};
    for (const Measure& measure : measures()) {
        heads.append(QString::fromLatin1(measure.name));
    }
    tell(heads.join(QLatin1Char(',')));
    m_steps.start(shortestBreak);
}

double Day::hoursSince(Clock::time_point start) const
{
    return std::chrono::duration<double, std::ratio<3600>>(Clock::now() - start).count();
}

/// A task that began inside a reply's wait or inside a box would hold up what waits there, the poll above
/// all.
bool Day::isOutermost() const
{
    return !m_room.device().isWaiting() && QThread::currentThread()->loopLevel() == 1;
}

void Day::step()
{
    if (!isOutermost()) {
        m_steps.start(retryBreak);
        return;
    }
    if (hoursSince(m_start) >= m_nextSample) {
        sample();
        m_nextSample += m_plan.minutesPerSample / minutesPerHour;
    } else {
        runNextTask();
    }
    const bool isLast = m_nextSample > m_plan.hours + 1e-6;
    if (isLast || !m_room.failure.isEmpty()) {
        finish();
    } else {
        m_steps.start(m_room.chance.between(shortestBreak, longestBreak));
    }
}

void Day::runNextTask()
{
    // One task alone needs the scenarios that the first one saves, and nothing else.
    const auto tourEnd = m_plan.only.isEmpty() ? m_tasks.size() : 1;
    const Task& task = m_tour < tourEnd ? m_tasks.at(m_tour++) : randomTask();
    task.run(m_room);
    if (++m_done % tasksBetweenComparisons == 0) {
        comeToRest();
    }
    if (!WarningWatch::messages().isEmpty()) {
        m_room.fail(QStringLiteral("Warned of: ") + WarningWatch::messages().join(QLatin1Char('|')));
    }
    if (!m_room.failure.isEmpty()) {
        m_findings.append(QStringLiteral("\"%1\", after %2 h and %3 tasks: %4")
                              .arg(QLatin1String(task.name))
                              .arg(hoursSince(m_start), 0, 'f', 4)
                              .arg(m_done)
                              .arg(m_room.failure));
        std::printf("The last on the line:\n%s\n",
                    qPrintable(m_room.desk.lastLines().join(QLatin1Char('\n'))));
    }
}

const Task& Day::randomTask()
{
    int left = m_room.chance.below(m_totalWeight);
    auto task = m_tasks.constBegin();
    while (left >= task->weight) {
        left -= task->weight;
        ++task;
    }
    return *task;
}

/// Boxes that a task has left behind are answered before long.
void Day::comeToRest()
{
    m_room.waitFor("an idle application", 60,
                   [this] { return m_room.isAtWork() && QApplication::activeModalWidget() == nullptr; });
    m_room.compare();
}

void Day::sample()
{
    Person::wait(10000);
    comeToRest();
    leak();
    const Sizes sizes = sizesNow(m_room.window);
    m_samples.append(sizes);
    const double realSeconds = std::chrono::duration<double>(FastClock::realTime() - m_realStart).count();
    QStringList cells{QString::number(hoursSince(m_start), 'f', 2), QString::number(m_room.desk.polls()),
                      QString::number(m_done), QString::number(realSeconds, 'f', 0)};
    for (const double size : sizes) {
        cells.append(QString::number(size, 'f', size == static_cast<int>(size) ? 0 : 1));
    }
    tell(cells.join(QLatin1Char(',')));
    if (!m_room.failure.isEmpty()) {
        m_findings.append(m_room.failure);
    }
}

/// Kept where nobody looks, so that it is lost for the program but no mistake of this one.
void Day::leak()
{
    static QList<QByteArray> bytes;
    if (m_plan.leakedBytes > 0) {
        bytes.append(QByteArray(m_plan.leakedBytes, '?'));
    }
    for (int i = 0; i < m_plan.leakedWidgets; ++i) {
        new QWidget(&m_room.window);
    }
    for (int i = 0; i < m_plan.leakedHandles; ++i) {
        ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
}

void Day::tell(const QString& values)
{
    m_table.append(values);
    QString line;
    const QStringList cells = values.split(QLatin1Char(','));
    for (const QString& cell : cells) {
        line += QStringLiteral("%1 ").arg(cell, 12);
    }
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

void Day::finish()
{
    m_findings.append(growths(m_samples, m_plan.minutesPerSample / minutesPerHour));
    if (m_samples.size() < 2) {
        m_findings.append(QStringLiteral("Too short to tell whether anything grows"));
    }
    if (!m_plan.tableFile.isEmpty()) {
        QSaveFile file(m_plan.tableFile);
        const QByteArray text = m_table.join(QLatin1Char('\n')).toUtf8() + '\n';
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
            m_findings.append(QStringLiteral("The table could not be written"));
        }
    }
    m_room.window.close();
}

} // namespace Soak
