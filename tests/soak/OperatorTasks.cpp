// What an operator does at the main window in the course of a day.

#include "Tasks.h"
#include "mainwindow/PelorinMainWindow.h"

#include <QPushButton>
#include <QTest>
#include <QTextBrowser>

namespace Soak {
namespace {
constexpr int scenarios = 4;

QString scenarioName(int number)
{
    return QStringLiteral("Soak/%1 %").arg(number);
}

void dragSlider(Room& room)
{
    room.person.drag(room.randomChannel(), room.chance.between(5, 60));
}

void typePercentage(Room& room)
{
    room.person.typeInto("lineEditSliderPercentage", room.randomChannel(),
                         QString::number(room.chance.between(0, 100)));
}

void clickArrows(Room& room)
{
    const int channel = room.randomChannel();
    for (int i = room.chance.between(1, 8); i > 0; --i) {
        room.person.clickLeftHalf("labelSliderUpDownButtons", channel);
        Person::wait(120);
    }
}

void rename(Room& room)
{
    const int channel = room.randomChannel();
    room.person.typeInto("lineEditSliderName", channel,
                         QStringLiteral("Ch%1 %2").arg(channel).arg(room.chance.between(100, 999)));
}

/// At the limit of open channels, or with a fibre out, a box refuses it.
void clickShutter(Room& room)
{
    room.person.clickLeftHalf("pushButtonChannelShutter", room.randomChannel());
}

void clickLaser(Room& room)
{
    room.person.click("labelLaserOnOff");
}

void saveScenario(Room& room)
{
    room.person.setScenarioName(scenarioName(room.chance.below(scenarios)));
    room.person.click("pushButtonSaveScenario");
}

/// At first all of them, as the settings file would grow with every new name.
void saveAllScenarios(Room& room)
{
    for (int number = 0; number < scenarios; ++number) {
        room.person.setScenarioName(scenarioName(number));
        room.person.click("pushButtonSaveScenario");
        Person::wait(500);
        clickShutter(room);
        dragSlider(room);
    }
}

void loadScenario(Room& room)
{
    room.person.setScenarioName(scenarioName(room.chance.below(scenarios)));
    room.person.click("pushButtonLoadScenario");
    Person::wait(5000);
}

void cancelScenario(Room& room)
{
    room.person.setScenarioName({});
    room.person.click("pushButtonLoadScenario");
}

void collapse(Room& room)
{
    room.person.click("pushButtonExpandCollapseWindow");
    Person::wait(1500);
    room.person.click("pushButtonExpandCollapseWindow");
}

void readHelp(Room& room)
{
    room.window.activateWindow();
    Person::wait(500);
    QTest::keyClick(&room.window, Qt::Key_F1);
    const auto browser = [&room] {
        auto* const found = room.window.findChild<QTextBrowser*>(QStringLiteral("manualBrowser"));
        return found != nullptr && found->isVisible() ? found : nullptr;
    };
    if (!room.waitFor("the help window", 10, [&browser] { return browser() != nullptr; })) {
        return;
    }
    for (int i = 0; i < 4; ++i) {
        room.person.click("pushButtonContents");
        for (int link = room.chance.between(1, 5); link > 0; --link) {
            QTest::keyClick(browser(), Qt::Key_Tab);
        }
        QTest::keyClick(browser(), Qt::Key_Return);
        Person::wait(1000);
        room.person.click("pushButtonBack");
    }
    browser()->window()->close();
}
} // namespace

QVector<Task> operatorTasks()
{
    return {{"save all scenarios", 0, saveAllScenarios},
            {"drag a slider", 180, dragSlider},
            {"type a level", 70, typePercentage},
            {"click the arrows", 60, clickArrows},
            {"rename a channel", 15, rename},
            {"click a shutter", 200, clickShutter},
            {"click the laser", 90, clickLaser},
            {"save a scenario", 25, saveScenario},
            {"load a scenario", 60, loadScenario},
            {"leave the choice of a scenario", 10, cancelScenario},
            {"collapse and expand", 20, collapse},
            {"read the help", 15, readHelp}};
}

} // namespace Soak
