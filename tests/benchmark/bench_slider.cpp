// A slider dragged over two hundred steps while the device is polled: whether each step reaches the device,
// in order, and how long the event loop was held meanwhile, against the same drag with no device attached.
// Prints figures, judges nothing.

#include "BenchTools.h"
#include "BenchWindow.h"
#include "LoopWatch.h"
#include "SimulatorThread.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSlider>
#include <QTimer>

namespace {
constexpr int steps = 200;
constexpr std::chrono::milliseconds mouseInterval{16}; // a mouse reports about sixty times a second
constexpr std::chrono::seconds shownWithin{1};
const char* const setCommand = "set:405=";

/// Moves the handle of a slider up and down by mouse events, a step at a time.
class Drag : public QObject
{
public:
    explicit Drag(QSlider& slider) : m_slider(slider)
    {
        // The program hears of a value first and may run the event loop in there; a move is told before that.
        connect(&slider, &QSlider::sliderMoved, this, [this](int value) { m_values.append(value); });
        connect(&m_timer, &QTimer::timeout, this, &Drag::moveOn);
        m_timer.setTimerType(Qt::PreciseTimer);
    }

    /// Every value that the slider went through.
    const QList<int>& values() const { return m_values; }

    bool run()
    {
        m_y = m_slider.height() - 1 - edge;
        m_pixels = -qMax(1, (m_slider.height() - 2 * edge) / 100);
        send(QEvent::MouseButtonPress, Qt::LeftButton);
        m_timer.start(mouseInterval);
        const bool done = Bench::waitUntil([this] { return m_values.size() >= steps; });
        m_timer.stop();
        send(QEvent::MouseButtonRelease, Qt::NoButton);
        return done;
    }

private:
    static constexpr int edge = 12; // inside the handle when it stands at an end of its way

    void moveOn()
    {
        const int next = m_y + m_pixels;
        if (next < edge || next > m_slider.height() - 1 - edge) {
            m_pixels = -m_pixels;
        }
        m_y += m_pixels;
        send(QEvent::MouseMove, Qt::LeftButton);
    }

    /// Through the event queue, as the events of a mouse come.
    void send(QEvent::Type type, Qt::MouseButtons buttons)
    {
        const QPoint place(m_slider.width() / 2, m_y);
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const QPoint inWindow = m_slider.mapTo(m_slider.window(), place);
        QCoreApplication::postEvent(&m_slider,
                                    new QMouseEvent(type, place, inWindow, m_slider.mapToGlobal(place),
                                                    button, buttons, Qt::NoModifier));
    }

    QSlider& m_slider;
    QTimer m_timer;
    QList<int> m_values;
    int m_y = 0;
    int m_pixels = -1;
};

struct Figures
{
    QList<int> values;
    double hold = 0.0;
    double work = 0.0;
    int knocks = 0;
    bool complete = false;
};

Figures dragWatched(QSlider& slider)
{
    Drag drag(slider);
    const Bench::LoopWatch watch;
    const bool complete = drag.run();
    return {drag.values(), watch.longestHold(), watch.longestWork(), watch.knocks(), complete};
}

QList<QByteArray> expectedCommands(const QList<int>& values)
{
    QList<QByteArray> commands;
    for (const int value : values) {
        commands.append(setCommand + QByteArray::number(value) + ".00");
    }
    return commands;
}

QList<QByteArray> sliderCommands(const QList<QByteArray>& lines)
{
    QList<QByteArray> commands;
    for (const QByteArray& line : lines) {
        if (line.startsWith(setCommand)) {
            commands.append(line);
        }
    }
    return commands;
}

void print(const Figures& with, const Figures& without, const QList<QByteArray>& arrived, int polls)
{
    const bool inOrder = with.complete && arrived == expectedCommands(with.values);
    Bench::Table::printRow(QStringLiteral("slider steps that reached the device, steps dragged"),
                           static_cast<double>(arrived.size()), static_cast<double>(with.values.size()), "",
                           "all, in order");
    Bench::Table::printNote(QStringLiteral("%1; %2 polls meanwhile")
                                .arg(inOrder ? QStringLiteral("in order, none lost, none twice")
                                             : QStringLiteral("NOT what was dragged, or not in its order"))
                                .arg(polls));
    Bench::Table::printRow(QStringLiteral("longest hold of the event loop, without a device"), with.hold,
                           without.hold, "ms", "<= 50 ms");
    Bench::Table::printRow(QStringLiteral("  of which the thread itself worked"), with.work, without.work,
                           "ms", "<= 50 ms");
    Bench::Table::printNote(
        QStringLiteral("looked at the loop %1 and %2 times").arg(with.knocks).arg(without.knocks));
}

bool measure(PelorinMainWindow& window)
{
    auto* slider = window.findChild<QSlider*>(QStringLiteral("verticalSliderChannel1"));
    if (slider == nullptr) {
        return false;
    }
    Bench::pause(shownWithin); // what comes with the first paint is not the drag's
    const Figures without = dragWatched(*slider);

    Bench::SimulatorThread simulator;
    Bench::listPort(simulator.portName());
    if (simulator.portName().isEmpty() || !Bench::waitUntilSettled(window)) {
        return false;
    }
    slider->setValue(0);
    if (window.device()->waitWhileBusy() != DeviceResult::Ok) {
        return false;
    }
    simulator.takeTraffic();
    const Figures with = dragWatched(*slider);
    Bench::waitUntil([&window] { return window.device()->waitWhileBusy() == DeviceResult::Ok; });
    const QList<QByteArray> lines = simulator.takeTraffic().lines;
    print(with, without, sliderCommands(lines), int(lines.count("f_mode?")));

    Bench::listPort({}); // the port goes with the simulator
    return with.complete && without.complete &&
           Bench::waitUntil([&window] { return !window.device()->isOpen(); });
}
} // namespace

int main(int argc, char** argv)
{
    const Bench::Home home;
    Bench::listPort({});
    Bench::Table::printHead();
    return Bench::runInProgram(argc, argv, measure);
}
