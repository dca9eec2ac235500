// How fast an image is programmed, against what the line and the device allow, and what the progress dialog
// takes of it; how long a whole update holds the event loop. Prints figures, judges nothing.

#include "BenchTools.h"
#include "BenchWindow.h"
#include "LineFigures.h"
#include "LoopWatch.h"
#include "Simulator/SimulatedIlluminator.h"
#include "SimulatorThread.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"
#include "support/FirmwareImages.h"
#include "support/ReleaseArchive.h"
#include "update/FlashProgramming.h"
#include "update/Update.h"
#include "update/UpdateResult.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>

namespace {
using FirmwareImages::Role;
using std::chrono::milliseconds;

constexpr int pacedSize = 1500; // bytes of program
constexpr int pacedRounds = 3;
constexpr int largeSize = 0x27FC0; // all that an application may have
constexpr int releaseLoaderSize = 70000;
constexpr int rounds = 9;

FirmwareImages::Image imageOf(Role role, int size)
{
    FirmwareImages::Image image;
    image.role = role;
    image.major = 3;
    image.dataSize = size;
    return image;
}

/// An image of that many bytes of program in a file that is gone with this object.
class ImageFile
{
public:
    explicit ImageFile(int size)
        : m_file(FirmwareImages::write(m_folder.path(), imageOf(Role::Application, size)))
    {
        m_file.open(QIODevice::ReadOnly | QIODevice::Text);
        m_lineCount = FirmwareImages::lineCount(m_file.readAll());
    }
    QFile& file() { return m_file; }
    int lineCount() const { return m_lineCount; }

private:
    QTemporaryDir m_folder;
    QFile m_file;
    int m_lineCount = 0;
};

Bench::SimulatorThread::Preparation inLoader(bool paced)
{
    return [paced](Simulator::SimulatedIlluminator& illuminator) {
        illuminator.wire().setPaced(paced);
        illuminator.model().boot(Simulator::Image::Loader, "Benchmark");
    };
}

bool connectTo(const Bench::SimulatorThread& simulator, Device& device)
{
    Bench::listPort(simulator.portName());
    device.checkConnectionStatus();
    return device.deviceMode() == DeviceMode::Loader;
}

bool program(Device& device, ImageFile& image, QWidget& window)
{
    return FlashProgramming::sendWithDialog(device, image.file(), image.lineCount(),
                                            QStringLiteral("Programming the Application"),
                                            &window) == UpdateResult::Ok;
}

bool measurePaced(QWidget& window)
{
    Bench::SimulatorThread simulator(inLoader(true));
    Device device;
    ImageFile image(pacedSize);
    if (!connectTo(simulator, device)) {
        return false;
    }
    Bench::LineFigures figures(Simulator::Image::Loader);
    if (!figures.measure(simulator, pacedRounds, [&] { return program(device, image, window); })) {
        return false;
    }
    figures.print(QStringLiteral("programming an image"), "<= 1.031 (ratio)");
    return true;
}

bool measureUnpaced(QWidget& window)
{
    const Bench::SimulatorThread simulator(inLoader(false));
    Device device;
    ImageFile image(largeSize);
    if (!connectTo(simulator, device)) {
        return false;
    }
    bool done = true;
    std::vector<double> with;
    std::vector<double> without;
    const auto perLine = [&image](Bench::Seconds time) { return time.count() * 1e6 / image.lineCount(); };
    Bench::interleave(
        rounds,
        [&] {
            with.push_back(perLine(Bench::timed([&] { done = program(device, image, window) && done; })));
        },
        [&] {
            without.push_back(perLine(Bench::timed([&] {
                done = FlashProgramming::sendLines(device, image.file(), [](int) { return true; }) ==
                           UpdateResult::Ok &&
                       done;
            })));
        });
    Bench::Table::printRow(QStringLiteral("line of an image, with and without the dialog"),
                           Bench::median(with), Bench::median(without), "us", "<= 200 us, <= 1.05 (ratio)");
    Bench::Table::printNote(QStringLiteral("%1 lines in each of %2 rounds; %3 lines a second with the dialog")
                                .arg(image.lineCount())
                                .arg(rounds)
                                .arg(1e6 / Bench::median(with), 0, 'f', 0));
    return done;
}

/// Chooses the archive and confirms every box.
class Operator : public QObject
{
public:
    explicit Operator(QString archivePath) : m_archivePath(std::move(archivePath)) { startTimer(5); }
    QString lastText() const { return m_lastText; }

protected:
    void timerEvent(QTimerEvent*) override
    {
        QWidget* const dialog = QApplication::activeModalWidget();
        if (auto* const chooser = qobject_cast<QFileDialog*>(dialog)) {
            chooser->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(m_archivePath);
            QMetaObject::invokeMethod(chooser, "accept");
        } else if (auto* const box = qobject_cast<QMessageBox*>(dialog)) {
            m_lastText = box->text();
            box->accept();
        }
    }

private:
    QString m_archivePath;
    QString m_lastText;
};

bool writeRelease(const QString& path)
{
    QList<ReleaseArchive::Member> members;
    for (const auto& [role, size] :
         {std::pair(Role::Loader, releaseLoaderSize), std::pair(Role::LoaderUpdater, largeSize),
          std::pair(Role::Application, largeSize)}) {
        members.append({FirmwareImages::fileName(role), FirmwareImages::text(imageOf(role, size))});
    }
    return ReleaseArchive::write(path, members);
}

bool measureWholeUpdate(PelorinMainWindow& window)
{
    const QTemporaryDir folder;
    const QString archivePath = folder.filePath(QStringLiteral("VYR.7z"));
    if (!writeRelease(archivePath)) {
        return false;
    }
    const Bench::SimulatorThread simulator([](Simulator::SimulatedIlluminator& illuminator) {
        illuminator.wire().setPaced(false);
        illuminator.setRestartTime(milliseconds(200));
    });
    Bench::listPort(simulator.portName());
    if (!Bench::waitUntilSettled(window)) {
        return false;
    }
    const Operator person(archivePath);
    const Bench::LoopWatch watch;
    const Bench::Seconds time = Bench::timed([&] { window.update()->firmwareUpdate(window.device()); });
    Bench::Table::printRow(QStringLiteral("longest hold of the event loop in a whole update"),
                           watch.longestHold(), 0.0, "ms", "<= 100 ms");
    Bench::Table::printNote(QStringLiteral("the thread itself worked for %1 ms at most; the update took %2 s")
                                .arg(watch.longestWork(), 0, 'f', 1)
                                .arg(time.count(), 0, 'f', 1));
    return person.lastText() == QLatin1String("Update complete!");
}

bool measure(PelorinMainWindow& window)
{
    window.device()->setPolling(false);
    Bench::Table::printHead();
    const bool whole = measureWholeUpdate(window);
    window.device()->shutDown(); // the other two have links of their own
    const bool paced = measurePaced(window);
    const bool unpaced = measureUnpaced(window);
    return whole && paced && unpaced;
}
} // namespace

int main(int argc, char** argv)
{
    const Bench::Home home;
    Bench::listPort({});
    return Bench::runInProgram(argc, argv, measure);
}
