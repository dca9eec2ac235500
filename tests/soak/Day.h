#pragma once

#include "Sizes.h"
#include "Tasks.h"
#include "support/WarningWatch.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <chrono>

namespace Soak {

struct Plan
{
    double hours = 24;            ///< of device time, the warm-up included
    double warmUpMinutes = 60;    ///< before the first sample that is judged
    double minutesPerSample = 60; ///< of device time
    quint32 seed = 1;
    QString tableFile; ///< the samples as comma-separated values; empty: none
    QString only;      ///< the name of the one task that is repeated; empty: all of them, each once at first
    // What grows on purpose with every sample, to see that it is found.
    int leakedBytes = 0;
    int leakedWidgets = 0;
    int leakedHandles = 0;
};

/// The device time that a plan asks for, filled with tasks in an order of chance, and the samples on the way.
/// Tasks are begun by the outermost event loop, so that nothing of the last one is left when the next begins.
class Day : public QObject
{
    Q_OBJECT

public:
    Day(Plan plan, Room& room);

    /// Closes the window at its end.
    void start();
    /// What went wrong or grew; empty when all is well.
    QStringList findings() const { return m_findings; }

private:
    using Clock = std::chrono::steady_clock;

    bool isOutermost() const;
    void step();
    void runNextTask();
    const Task& randomTask();
    void comeToRest();
    void sample();
    void leak();
    void finish();
    void tell(const QString& values);
    double hoursSince(Clock::time_point start) const;

    const Plan m_plan;
    Room& m_room;
    WarningWatch m_warnings;
    QTimer m_steps;
    QVector<Task> m_tasks;
    int m_tour = 0; ///< tasks done so far, of those that each are done once at the beginning
    int m_done = 0;
    int m_totalWeight = 0;
    Clock::time_point m_start;
    std::chrono::nanoseconds m_realStart{0};
    double m_nextSample; ///< hours
    QVector<Sizes> m_samples;
    QStringList m_table;
    QStringList m_findings;
};

} // namespace Soak
