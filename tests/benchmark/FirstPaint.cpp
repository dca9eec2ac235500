#include "FirstPaint.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

#include <chrono>
#include <cstdio>

namespace {
double millisecondsSinceStart()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const qint64 start = qgetenv(Bench::startTimeVariable).toLongLong();
    const qint64 passed = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() - start;
    return static_cast<double>(passed) * 1e-6;
}
} // namespace

Bench::FirstPaint::FirstPaint(QWidget& window) : m_window(window), m_readyAt(millisecondsSinceStart())
{
    m_afterPaint.setSingleShot(true);
    connect(&m_afterPaint, &QTimer::timeout, this, &FirstPaint::report);
    qApp->installEventFilter(this);
}

bool Bench::FirstPaint::eventFilter(QObject* watched, QEvent* event)
{
    if (!m_painted && event->type() == QEvent::Paint && watched->isWidgetType() &&
        static_cast<const QWidget*>(watched)->window() == &m_window) {
        m_painted = true;
        // The whole window is painted and handed to the display before the event loop runs again.
        m_afterPaint.start(0);
    }
    return QObject::eventFilter(watched, event);
}

void Bench::FirstPaint::report()
{
    std::printf("%.3f %.3f\n", millisecondsSinceStart(), m_readyAt);
    std::fflush(stdout);
    m_window.close();
}
