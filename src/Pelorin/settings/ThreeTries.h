#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

/// Does something that can fail because the line is busy: up to three times, a second apart, and then no
/// more.
class ThreeTries : public QObject
{
    Q_OBJECT

public:
    /// @p attempt returns true when no further try is wanted; it may run the event loop, and even @p parent
    /// may go in it.
    ThreeTries(std::function<bool()> attempt, QObject* parent);

    void start();      ///< over again, with the first try in the next turn of the event loop
    void startLater(); ///< over again, with the first try in a second
    void stop();       ///< no further try until the next start
    /// Has @p next, which must not go before this, start after each try, whatever became of it.
    void setFollower(ThreeTries* next) { m_follower = next; }

private:
    void startAfter(std::chrono::milliseconds time);
    void tryOnce();

    std::function<bool()> m_attempt;
    QTimer m_timer;
    ThreeTries* m_follower = nullptr;
    int m_left = 0;
    int m_run = 0; ///< tells a try that waited whether a newer run has begun meanwhile
};
