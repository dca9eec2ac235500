#include "BenchWindow.h"

#include "BenchTools.h"
#include "app/Startup.h"
#include "device/Device.h"
#include "device/SerialPorts.h"
#include "mainwindow/PelorinMainWindow.h"

#include <QDir>
#include <QFile>
#include <QTimer>

#include <memory>

Bench::Home::Home()
{
    const QDir folder(m_folder.path());
    folder.mkdir(QStringLiteral("Documents")); // where the log goes; it would end up elsewhere without it
    qputenv("HOME", QFile::encodeName(m_folder.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.filePath(QStringLiteral(".config"))));
}

void Bench::listPort(const QString& portName)
{
    SerialPorts::setLister([portName] {
        QList<SerialPortEntry> ports;
        if (!portName.isEmpty()) {
            ports.append({portName, 0x2F26, 0x3A98});
        }
        return ports;
    });
}

int Bench::runInProgram(int argc, char** argv, const std::function<bool(PelorinMainWindow&)>& body)
{
    const auto allWell = std::make_shared<bool>(false);
    const int exitCode = runProgram(argc, argv, [allWell, body](PelorinMainWindow& window) {
        auto* timer = new QTimer(&window);
        timer->setSingleShot(true);
        QObject::connect(timer, &QTimer::timeout, &window, [allWell, body, shown = &window] {
            *allWell = body(*shown);
            shown->close();
        });
        timer->start(0);
    });
    return exitCode == 0 && *allWell ? 0 : 1;
}

bool Bench::waitUntilSettled(PelorinMainWindow& window)
{
    constexpr std::chrono::seconds settingsSentWithin{3};
    Device& device = *window.device();
    if (!waitUntil([&device] { return device.isApplicationConnected(); })) {
        return false;
    }
    pause(settingsSentWithin);
    return device.waitWhileBusy() == DeviceResult::Ok;
}
