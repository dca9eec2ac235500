// How long the settings dialog takes to open with the device connected, from the click to the end of the
// paint, against an empty dialog of its size. The device is polled neither by the program nor by the dialog
// while it opens, so no exchange on the wire is in the figures. Prints figures, judges nothing.

#include "BenchTools.h"
#include "BenchWindow.h"
#include "SimulatorThread.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"
#include "settings/SettingsDialog.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QPushButton>

#include <algorithm>
#include <vector>

namespace {
constexpr int rounds = 15;

/// Notices that a widget was painted.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget& widget) { widget.installEventFilter(this); }
    bool isPainted() const { return m_painted; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        m_painted = m_painted || event->type() == QEvent::Paint;
        return QObject::eventFilter(watched, event);
    }

private:
    bool m_painted = false;
};

/// Milliseconds from the opening to the end of the first paint; less than none when there was none.
template<typename Opening>
double opened(QWidget& dialog, Opening open)
{
    const PaintWatch watch(dialog);
    const auto start = Bench::Clock::now();
    open();
    const bool painted = Bench::waitUntil([&watch] { return watch.isPainted(); });
    const double milliseconds = Bench::since(start).count() * 1000.0;
    dialog.close();
    Bench::pause(std::chrono::milliseconds(100));
    return painted ? milliseconds : -1.0;
}

bool measure(PelorinMainWindow& window)
{
    auto* button = window.findChild<QPushButton*>(QStringLiteral("pushButtonSettings"));
    SettingsDialog* const dialog = window.settingsDialog();
    if (button == nullptr || dialog == nullptr || !window.device()->isApplicationConnected()) {
        return false;
    }
    QDialog bare(&window);
    bare.resize(dialog->size());
    const auto openDialog = [&] {
        // Closing the dialog has switched the poll on again.
        window.device()->setPolling(false);
        return opened(*dialog, [button] { button->click(); });
    };
    const auto openBare = [&bare] { return opened(bare, [&bare] { bare.show(); }); };

    const double first = openDialog();
    const double firstBare = openBare();
    std::vector<double> later;
    std::vector<double> laterBare;
    Bench::interleave(
        rounds, [&] { later.push_back(openDialog()); }, [&] { laterBare.push_back(openBare()); });
    const bool complete = first > 0.0 && *std::min_element(later.begin(), later.end()) > 0.0;
    Bench::Table::printNote(complete ? QStringLiteral("device connected, every opening painted")
                                     : QStringLiteral("NOT every opening was painted"));
    Bench::Table::printRow(QStringLiteral("settings dialog, first opening, an empty dialog"), first,
                           firstBare, "ms", "<= 100 ms");
    Bench::Table::printRow(QStringLiteral("settings dialog, later openings, an empty dialog"),
                           Bench::median(later), Bench::median(laterBare), "ms", "<= 100 ms");
    return complete;
}
} // namespace

int main(int argc, char** argv)
{
    const Bench::Home home;
    const Bench::SimulatorThread device;
    Bench::listPort(device.portName());
    Bench::Table::printHead();
    return Bench::runInProgram(argc, argv, [](PelorinMainWindow& window) {
        return Bench::waitUntilSettled(window) && measure(window);
    });
}
