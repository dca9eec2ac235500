#include "Demo/DemoHome.h"
#include "Demo/DemoPanel.h"
#include "Demo/DemoScene.h"
#include "Simulator/SimulatedIlluminator.h"
#include "app/Startup.h"
#include "device/SerialPorts.h"
#include "mainwindow/PelorinMainWindow.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <optional>
#include <vector>

namespace {
constexpr UsbIdentifiers kUsbIdentifiers = SerialPorts::illuminators.front();
constexpr std::chrono::seconds kWarmup{8};
/// Still there when a busy machine has connected, and for the time in which its picture is taken.
constexpr std::chrono::seconds kTourWarmup{6};
constexpr std::chrono::minutes kLongestTour{3};
/// Of a unit that a lab has used for a while.
constexpr std::array<double, Simulator::kChannelCount> kHoursInUse{812.4, 95.0,  1203.7, 340.2,
                                                                   77.9,  655.5, 1480.1, 12.6};

/// A tour that plays itself instead of an operator, and where its pictures go.
struct Tour
{
    std::vector<DemoStation> (*stations)(QWidget& window, Simulator::SimulatedIlluminator& illuminator);
    QString folder;
    bool isAtServiceLevel;
};

SerialPortEntry listed(const QString& portName)
{
    return {portName, kUsbIdentifiers.vendorId, kUsbIdentifiers.productId};
}

void listAsOnlyPort(Simulator::SimulatedIlluminator& illuminator)
{
    SerialPorts::setLister([&illuminator]() -> QList<SerialPortEntry> {
        if (!illuminator.isPlugged()) {
            return {};
        }
        return {listed(illuminator.portName())};
    });
}

/// The port's folder has another name in each run, which would be in the pictures.
void listWithoutFolder(Simulator::SimulatedIlluminator& illuminator)
{
    const QFileInfo port(illuminator.portName());
    if (QDir::setCurrent(port.path())) {
        SerialPorts::setLister([&illuminator, name = QString(QStringLiteral("./") + port.fileName())] {
            return illuminator.isPlugged() ? QList<SerialPortEntry>{listed(name)} : QList<SerialPortEntry>();
        });
    }
}

/// The illuminator belongs to the window, so that its port stays as long as the link may use it.
Simulator::SimulatedIlluminator& attachIlluminator(PelorinMainWindow& window,
                                                   std::chrono::milliseconds warmup)
{
    auto* illuminator = new Simulator::SimulatedIlluminator(&window);
    illuminator->model().lasers().setWarmupDuration(warmup);
    illuminator->wire().setPaced(true);
    for (int channel = 0; channel < Simulator::kChannelCount; ++channel) {
        illuminator->setHours(channel, kHoursInUse.at(static_cast<std::size_t>(channel)));
    }
    listAsOnlyPort(*illuminator);
    if (!illuminator->plug()) {
        QTextStream(stderr) << illuminator->wire().errorString() << '\n';
    }
    window.setWindowTitle(window.windowTitle() + QStringLiteral(" - simulated illuminator"));
    return *illuminator;
}

void play(PelorinMainWindow& window, Simulator::SimulatedIlluminator& illuminator, const Tour& tour)
{
    listWithoutFolder(illuminator);
    auto* player = new DemoTour(window, tour.stations(window, illuminator), tour.folder);
    QObject::connect(player, &DemoTour::finished, &window, [&window](bool complete) {
        window.close();
        QApplication::exit(complete ? 0 : 1);
    });
    player->start();
}

/// The ports of all tours have one name, by which the system locks them, so one is played after the other.
bool awaitTurn(QLockFile& turn, const QString& fileName)
{
    turn.setStaleLockTime(0); // however long it plays
    if (turn.tryLock()) {
        return true;
    }
    QTextStream(stderr) << "Waiting for the end of another scene." << Qt::endl;
    if (turn.tryLock(std::chrono::milliseconds(kLongestTour).count())) {
        return true;
    }
    QTextStream(stderr) << "It does not end, or has left this file behind: " << fileName << '\n';
    return false;
}

/// Takes @p name and the folder behind it out of the arguments; the rest is the program's.
std::optional<QString> takeFolder(std::vector<char*>& arguments, const char* name)
{
    const auto found = std::find_if(arguments.begin(), arguments.end(), [name](const char* argument) {
        return std::strcmp(argument, name) == 0;
    });
    if (found == arguments.end() || found + 1 == arguments.end()) {
        return std::nullopt;
    }
    const QString folder = QDir(QString::fromLocal8Bit(*(found + 1))).absolutePath();
    arguments.erase(found, found + 2);
    return folder;
}

/// "--scene FOLDER" is the operator's day, "--pictures FOLDER" makes the pictures of the manual.
std::optional<Tour> takeTour(std::vector<char*>& arguments)
{
    if (const std::optional<QString> folder = takeFolder(arguments, "--scene")) {
        return Tour{&DemoScene::operatorsDay, *folder, false};
    }
    if (const std::optional<QString> folder = takeFolder(arguments, "--pictures")) {
        return Tour{&DemoScene::manualPictures, *folder, true};
    }
    return std::nullopt;
}
} // namespace

int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    const std::optional<Tour> tour = takeTour(arguments);
    const QTemporaryDir tourHome;
    if (!DemoHome::enter(tour ? tourHome.path() : DemoHome::defaultFolder())) {
        QTextStream(stderr) << "The demo's folder cannot be made.\n";
        return 1;
    }
    if (tour && !qEnvironmentVariableIsSet("QT_FONT_DPI")) {
        // A virtual display tells its resolution a little off, which is enough to blur every line.
        qputenv("QT_FONT_DPI", "96");
    }
    char serviceLevel[] = "-diag";
    if (tour && tour->isAtServiceLevel) {
        arguments.push_back(serviceLevel);
    }
    const QString turnFile = QDir::temp().filePath(QStringLiteral("vyr-demo-tour.lock"));
    QLockFile turn(turnFile);
    if (tour && !awaitTurn(turn, turnFile)) {
        return 1;
    }
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    return runProgram(count, arguments.data(), [&tour](PelorinMainWindow& window) {
        auto& illuminator = attachIlluminator(window, tour ? kTourWarmup : kWarmup);
        if (tour) {
            play(window, illuminator, *tour);
        } else {
            new DemoPanel(illuminator, window); // the window's
        }
    });
}
