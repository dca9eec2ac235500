// What is done in the settings dialog, at service level, and with the device's firmware.

#include "Tasks.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"
#include "settings/SettingsDialog.h"
#include "support/ShownWindow.h"
#include "update/Update.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

namespace Soak {
namespace {
void visitAllTabs(Room& room)
{
    room.person.openDialog();
    for (int index = 0; index < room.person.tabCount(); ++index) {
        room.person.clickTab(index);
        room.pause(500, 3000);
    }
    room.person.clickTab(0);
    room.person.closeDialog();
}

void changeModes(Room& room)
{
    room.onPage("tabControlMode", [&room] {
        room.person.click(room.chance.percent(50) ? "radioButtonDespecklerOn" : "radioButtonDespecklerOff");
        room.person.click("checkBoxSleepTimer");
        Person::wait(1000);
        room.person.clickTabOf("tabTTLConfiguration");
        room.person.click(room.chance.percent(50) ? "radioButtonTTLShutterOpen470"
                                                  : "radioButtonTTLShutterClosed470");
        Person::wait(1000);
    });
}

void switchVerboseLogging(Room& room)
{
    room.onPage("tabServiceDevelopment", [&room] {
        room.person.click("checkBoxEnhancedDiags");
        Person::wait(500);
    });
}

void typeIntoConsole(Room& room)
{
    room.onPage("tabServiceDevelopment", [&room] {
        auto* const console = room.person.dialog().findChild<QWidget*>(QStringLiteral("consoleWindow"));
        for (const char* command : {"v", "set?", "temps?", "nonsense"}) {
            QTest::keyClicks(console, QLatin1String(command));
            QTest::keyClick(console, Qt::Key_Return);
            room.pause(300, 1500);
        }
    });
}

void saveAndLoadCalibration(Room& room)
{
    room.person.setFile(room.calibration);
    room.onPage("tabSystemConfig", [&room] {
        room.person.click("pushButtonGetSystemConfigData");
        Person::wait(1500);
        room.person.click("pushButtonSaveSystemConfigData");
        Person::wait(500);
        room.person.click("pushButtonLoadSystemConfigData");
        Person::wait(1500);
    });
}

/// With the tab of the update in front.
void writeInLoader(Room& room)
{
    Person::wait(5000);
    room.compare();
    room.person.forgetBoxes();
    room.person.clickTabOf("tabSystemConfig");
    room.person.click("pushButtonSetSystemConfigData");
    room.waitFor("the written configuration", restartSeconds,
                 [&room] { return room.person.lastBox() == QLatin1String("System configuration updated"); });
    room.person.clickTabOf("tabUpdate");
    room.person.click("pushButtonLoaderMode");
}

/// The configuration is written in the loader only.
void writeConfiguration(Room& room)
{
    room.onPage("tabUpdate", [&room] {
        room.person.click("pushButtonLoaderMode");
        const auto isInLoader = [&room] { return room.device().deviceMode() == DeviceMode::Loader; };
        if (room.waitFor("the loader", restartSeconds, isInLoader)) {
            writeInLoader(room);
        }
        room.waitForWork("the application again");
    });
}

/// With the tab of the update in front.
void runUpdate(Room& room, const char* lastBox)
{
    room.person.setFile(room.releases.at(room.chance.below(static_cast<int>(room.releases.size()))));
    room.person.forgetBoxes();
    room.person.click("pushButtonUpdateFirmware");
    constexpr int updateSeconds = 300;
    const bool ended = room.waitFor("the end of an update", updateSeconds, [&room] {
        return !room.window.update()->isInProgress() && !room.person.lastBox().isEmpty();
    });
    if (!ended || room.person.lastBox() != QLatin1String(lastBox)) {
        room.fail(QStringLiteral("An update ended with \"%1\"").arg(room.person.lastBox()));
    }
}

void update(Room& room)
{
    room.desk.illuminator().setReenumerates(room.chance.percent(30));
    room.onPage("tabUpdate", [&room] {
        runUpdate(room, "Update complete!");
        room.waitForWork("the new application");
    });
    room.desk.illuminator().setReenumerates(false);
}

/// Leaves a device without an application behind, until the second run.
void cancelUpdate(Room& room)
{
    int lines = room.chance.between(2, 60);
    const auto watch = QObject::connect(&room.desk.wire(), &Simulator::Wire::lineReceived, &room.window,
                                        [&lines](const QByteArray& line) {
                                            if (line.startsWith("wf:") && --lines == 0) {
                                                QTimer::singleShot(0, qApp, cancelProgress);
                                            }
                                        });
    room.onPage("tabUpdate", [&room] { runUpdate(room, "User canceled programming."); });
    QObject::disconnect(watch);
    update(room);
}
} // namespace

QVector<Task> serviceTasks()
{
    return {{"visit all tabs", 30, visitAllTabs},
            {"change modes", 20, changeModes},
            {"switch verbose logging", 20, switchVerboseLogging},
            {"type into the console", 10, typeIntoConsole},
            {"save and load a calibration", 12, saveAndLoadCalibration},
            {"write the configuration", 3, writeConfiguration},
            {"update the firmware", 1, update},
            {"cancel an update", 1, cancelUpdate}};
}

} // namespace Soak
