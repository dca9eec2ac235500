// The whole program on a simulated illuminator, closing its window in the middle of a wait of the kind that
// its first argument names. It says "closing" when it does; the test measures how long it takes to end.

#include "app/Startup.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"
#include "mainwindow/channel.h"
#include "support/SimulatedBench.h"

#include <QApplication>
#include <QHash>
#include <QMouseEvent>
#include <QPushButton>
#include <QTextStream>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

namespace {
using Simulator::WireFault;
constexpr std::chrono::milliseconds kInsideTheWait{100};

class Scene
{
public:
    explicit Scene(PelorinMainWindow& window) : m_window(window)
    {
        window.onWarningStateChanged(false, "ok");
    }

    SimulatedBench& bench() { return m_bench; }
    PelorinMainWindow& window() { return m_window; }
    Device& device() { return *m_window.device(); }

    /// From now on the device is silent on lines that begin so.
    void silence(const QByteArray& line)
    {
        WireFault fault;
        fault.count = -1;
        fault.match = line;
        m_bench.wire().addFault(fault);
    }

    /// Runs `act`, once, when such a line has come in.
    void onLine(const QByteArray& line, const std::function<void()>& act)
    {
        const auto done = std::make_shared<bool>(false);
        QObject::connect(&m_bench.wire(), &Simulator::Wire::lineReceived, &m_window,
                         [line, act, done](const QByteArray& received) {
                             if (!*done && received.startsWith(line)) {
                                 *done = true;
                                 act();
                             }
                         });
    }

    void closeSoon()
    {
        QTimer::singleShot(kInsideTheWait, &m_window, [this] {
            QTextStream(stdout) << "closing\n" << Qt::flush;
            m_window.close();
        });
    }

    void closeWhenUnanswered(const QByteArray& line)
    {
        silence(line);
        onLine(line, [this] { closeSoon(); });
    }

    /// `act` runs from a timer once the device is connected and polled.
    void whenPolled(const std::function<void()>& act)
    {
        onLine("shutter?", [this, act] { QTimer::singleShot(0, &m_window, act); });
    }

private:
    PelorinMainWindow& m_window;
    SimulatedBench m_bench;
};

void closeInQueueDrain(Scene& scene)
{
    scene.closeWhenUnanswered("speckle=off");
    // The tick that is under way makes the command wait in the queue.
    scene.onLine("fault?", [&scene] { scene.device().setSpeckle(false); });
}

void closeInBusyWait(Scene& scene)
{
    scene.closeWhenUnanswered("defaults");
    scene.whenPolled([&scene] {
        scene.device().setPolling(false);
        QTimer::singleShot(kInsideTheWait, &scene.window(), [&scene] {
            scene.device().restoreDefaults();
            ProductConfig ignored;
            scene.device().readProductConfig(ignored);
        });
    });
}

void closeInImageSwitch(Scene& scene)
{
    scene.closeWhenUnanswered("goloader");
    scene.whenPolled([&scene] { scene.device().goLoader(); });
}

void closeInReconnection(Scene& scene)
{
    scene.bench().illuminator().setReenumerates(true);
    scene.bench().illuminator().setRestartTime(std::chrono::minutes(1));
    QObject::connect(&scene.bench().wire(), &Simulator::Wire::pluggedChanged, &scene.window(),
                     [&scene](bool plugged) {
                         if (!plugged) {
                             scene.closeSoon();
                         }
                     });
    scene.whenPolled([&scene] { scene.device().goLoader(); });
}

void closeUnderMessageBox(Scene& scene)
{
    scene.whenPolled([&scene] {
        scene.window().onShutterControlChanged(0);
        auto* button = scene.window().findChild<QPushButton*>(QStringLiteral("pushButtonChannelShutter1"));
        scene.closeSoon();
        const QPoint middle = button->rect().center();
        QMouseEvent release(QEvent::MouseButtonRelease, middle, button->mapToGlobal(middle), Qt::LeftButton,
                            Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(button, &release);
    });
}

const QHash<QString, std::function<void(Scene&)>>& scenes()
{
    static const QHash<QString, std::function<void(Scene&)>> all{
        {"identification", [](Scene& scene) { scene.closeWhenUnanswered("v"); }},
        {"identity", [](Scene& scene) { scene.closeWhenUnanswered("prod_config"); }},
        {"poll", [](Scene& scene) { scene.closeWhenUnanswered("f_mode?"); }},
        {"queue", closeInQueueDrain},
        {"busy", closeInBusyWait},
        {"switch", closeInImageSwitch},
        {"reconnection", closeInReconnection},
        {"box", closeUnderMessageBox},
    };
    return all;
}
} // namespace

int main(int argc, char** argv)
{
    const auto scene = scenes().value(QString::fromLocal8Bit(argc == 2 ? argv[1] : ""));
    if (!scene) {
        return 2;
    }
    std::unique_ptr<Scene> running;
    int programArguments = 1;
    return runProgram(programArguments, argv, [&](PelorinMainWindow& window) {
        running = std::make_unique<Scene>(window);
        scene(*running);
        // The port outlives the link, but not the application that its notifiers need.
        QObject::connect(&window, &QObject::destroyed, [&running] { running.reset(); });
    });
}
