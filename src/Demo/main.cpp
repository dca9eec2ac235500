#include "Demo/DemoHome.h"
#include "Demo/DemoPanel.h"
#include "Demo/DemoScene.h"
#include "Simulator/SimulatedIlluminator.h"
#include "app/Startup.h"
#include "device/SerialPorts.h"
#include "mainwindow/PelorinMainWindow.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <optional>
#include <vector>

namespace {
constexpr quint16 kVendorId = 0x2F26;
constexpr quint16 kProductId = 0x3A98;
constexpr std::chrono::seconds kWarmup{8};
constexpr std::chrono::seconds kSceneWarmup{3};
/// Of a unit that a lab has used for a while.
constexpr std::array<double, Simulator::kChannelCount> kHoursInUse{812.4, 95.0,  1203.7, 340.2,
                                                                   77.9,  655.5, 1480.1, 12.6};

void listAsOnlyPort(Simulator::SimulatedIlluminator& illuminator)
{
    SerialPorts::setLister([&illuminator]() -> QList<SerialPortEntry> {
        if (!illuminator.isPlugged()) {
            return {};
        }
        return {{illuminator.portName(), kVendorId, kProductId}};
    });
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

void playScene(PelorinMainWindow& window, Simulator::SimulatedIlluminator& illuminator, const QString& folder)
{
    auto* scene = new DemoScene(window, illuminator, folder);
    QObject::connect(scene, &DemoScene::finished, &window, [&window](bool complete) {
        window.close();
        QApplication::exit(complete ? 0 : 1);
    });
    scene->start();
}

/// Takes "--scene FOLDER" out of the arguments; the rest is the program's.
std::optional<QString> takeSceneFolder(std::vector<char*>& arguments)
{
    const auto found = std::find_if(arguments.begin(), arguments.end(), [](const char* argument) {
        return std::strcmp(argument, "--scene") == 0;
    });
    if (found == arguments.end() || found + 1 == arguments.end()) {
        return std::nullopt;
    }
    const QString folder = QString::fromLocal8Bit(*(found + 1));
    arguments.erase(found, found + 2);
    return folder;
}
} // namespace

int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    const std::optional<QString> sceneFolder = takeSceneFolder(arguments);
    const QTemporaryDir sceneHome;
    if (!DemoHome::enter(sceneFolder ? sceneHome.path() : DemoHome::defaultFolder())) {
        QTextStream(stderr) << "The demo's folder cannot be made.\n";
        return 1;
    }
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    return runProgram(count, arguments.data(), [&sceneFolder](PelorinMainWindow& window) {
        auto& illuminator = attachIlluminator(window, sceneFolder ? kSceneWarmup : kWarmup);
        if (sceneFolder) {
            playScene(window, illuminator, *sceneFolder);
        } else {
            new DemoPanel(illuminator, window); // the window's
        }
    });
}
