// What is done in the settings dialog, at service level, and with the device's firmware.

#include "Tasks.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"
#include "settings/SettingsDialog.h"
#include "update/Update.h"

#include <QApplication>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace Soak {
namespace {
constexpr int restartSeconds = 60;

void visitAllTabs(Room& room)
{
    room.person.openDialog();
    for (int index = 0; index < room.person.tabCount(); ++index) {
        room.person.clickTab(index);
        Person::wait(room.chance.between(500, 3000));
    }
    room.person.clickTab(0);
    room.person.closeDialog();
}

void changeModes(Room& room)
{
    room.person.openDialog();
    room.person.clickTabOf("tabControlMode");
    room.person.click(room.chance.percent(50) ? "radioButtonDespecklerOn" : "radioButtonDespecklerOff");
    room.person.click("checkBoxSleepTimer");
    Person::wait(1000);
    room.person.clickTabOf("tabTTLConfiguration");
    room.person.click(room.chance.percent(50) ? "radioButtonTTLShutterOpen470"
                                              : "radioButtonTTLShutterClosed470");
    Person::wait(1000);
    room.person.closeDialog();
}

void switchVerboseLogging(Room& room)
{
    room.person.openDialog();
    room.person.clickTabOf("tabServiceDevelopment");
    room.person.click("checkBoxEnhancedDiags");
    Person::wait(500);
    room.person.closeDialog();
}

void typeIntoConsole(Room& room)
{
    room.person.openDialog();
    room.person.clickTabOf("tabServiceDevelopment");
    auto* const console = room.person.dialog().findChild<QWidget*>(QStringLiteral("consoleWindow"));
    for (const char* command : {"v", "set?", "temps?", "nonsense"}) {
        QTest::keyClicks(console, QLatin1String(command));
        QTest::keyClick(console, Qt::Key_Return);
        Person::wait(room.chance.between(300, 1500));
    }
    room.person.closeDialog();
}

void saveAndLoadCalibration(Room& room)
{
    room.person.setFile(room.calibration);
    room.person.openDialog();
    room.person.clickTabOf("tabSystemConfig");
    room.person.click("pushButtonGetSystemConfigData");
    Person::wait(1500);
    room.person.click("pushButtonSaveSystemConfigData");
    Person::wait(500);
    room.person.click("pushButtonLoadSystemConfigData");
    Person::wait(1500);
    room.person.closeDialog();
}

/// The configuration is written in the loader only.
void writeConfiguration(Room& room)
{
    room.person.openDialog();
    room.person.clickTabOf("tabUpdate");
    room.person.click("pushButtonLoaderMode");
    const auto isInLoader = [&room] { return room.device().deviceMode() == DeviceMode::Loader; };
    if (room.waitFor("the loader", restartSeconds, isInLoader)) {
        Person::wait(5000);
        room.compare();
        room.person.forgetBoxes();
        room.person.clickTabOf("tabSystemConfig");
        room.person.click("pushButtonSetSystemConfigData");
        room.waitFor("the written configuration", restartSeconds, [&room] {
            return room.person.lastBox() == QLatin1String("System configuration updated");
        });
        room.person.clickTabOf("tabUpdate");
        room.person.click("pushButtonLoaderMode");
    }
    room.waitFor("the application again", restartSeconds, [&room] { return room.isAtWork(); });
    room.person.closeDialog();
}

void cancelProgress()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        auto* const progress = qobject_cast<QProgressDialog*>(window);
        if (progress != nullptr && progress->isVisible()) {
            progress->findChild<QPushButton*>()->click();
        }
    }
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
    room.person.openDialog();
    room.person.clickTabOf("tabUpdate");
    runUpdate(room, "Update complete!");
    room.waitFor("the new application", restartSeconds, [&room] { return room.isAtWork(); });
    room.person.closeDialog();
    room.desk.illuminator().setReenumerates(false);
}

/// Leaves a device without an application behind, until the second run.
void cancelUpdate(Room& room)
{
    room.person.openDialog();
    room.person.clickTabOf("tabUpdate");
    int lines = room.chance.between(2, 60);
    const auto watch = QObject::connect(&room.desk.wire(), &Simulator::Wire::lineReceived, &room.window,
                                        [&lines](const QByteArray& line) {
                                            if (line.startsWith("wf:") && --lines == 0) {
                                                QTimer::singleShot(0, qApp, cancelProgress);
                                            }
                                        });
    runUpdate(room, "User canceled programming.");
    QObject::disconnect(watch);
    room.person.closeDialog();
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
