#pragma once

#include <QObject>
#include <QTimer>

class QWidget;

namespace Bench {

/// Waits for the window's first paint, prints how many milliseconds the process was old when it was over and
/// closes the window. To be made when the application exists; the parent sees the moment at which it started
/// the process in the environment variable below.
class FirstPaint : public QObject
{
public:
    explicit FirstPaint(QWidget& window);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void report();

    QWidget& m_window;
    double m_readyAt; ///< milliseconds since the process started when the window was about to be shown
    QTimer m_afterPaint;
    bool m_painted = false;
};

/// Nanoseconds of the steady clock, decimal.
constexpr const char* startTimeVariable = "VYR_BENCH_START";

} // namespace Bench
