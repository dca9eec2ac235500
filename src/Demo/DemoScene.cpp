#include "Demo/DemoScene.h"

#include "Demo/DemoHands.h"
#include "Simulator/SimulatedIlluminator.h"

#include <QCoreApplication>
#include <QWidget>

namespace {
using Stations = std::vector<DemoStation>;
using Simulator::SimulatedIlluminator;

QString tr(const char* text)
{
    return QCoreApplication::translate("DemoScene", text);
}

void doNothing() {}

bool isAlwaysSo()
{
    return true;
}

std::function<void()> clicking(const DemoHands& hands, const char* objectName)
{
    return [hands, objectName] { hands.click(QLatin1String(objectName)); };
}

std::function<bool()> statusIs(const DemoHands& hands, const char* word)
{
    return [hands, word] { return hands.labelShows(QStringLiteral("labelLaserStatusText"), tr(word)); };
}

DemoStation dragTo(const DemoHands& hands, SimulatedIlluminator& illuminator, int number, int percent)
{
    return {QStringLiteral("slider-%1").arg(number),
            [hands, number, percent] {
                hands.dragSlider(QStringLiteral("verticalSliderChannel%1").arg(number), percent);
            },
            [&illuminator, number, percent] {
                const auto channel = static_cast<std::size_t>(number - 1);
                return illuminator.state().level.at(channel).toDouble() == percent;
            }};
}

DemoStation openShutter(const DemoHands& hands, int number)
{
    const QString name = QStringLiteral("pushButtonChannelShutter%1").arg(number);
    return {QStringLiteral("shutter-%1-open").arg(number), [hands, name] { hands.click(name); },
            [hands, name] { return hands.buttonShows(name, QStringLiteral("Shutter Open")); }};
}

/// From connecting to a laser that gives light on two channels.
Stations firstLight(const DemoHands& hands, SimulatedIlluminator& illuminator)
{
    return {
        {QStringLiteral("warm-up"), doNothing, statusIs(hands, "Warm-up")},
        {QStringLiteral("idle"), doNothing, statusIs(hands, "Idle")},
        {QStringLiteral("run"), clicking(hands, "labelLaserOnOff"), statusIs(hands, "Run")},
        dragTo(hands, illuminator, 2, 75),
        dragTo(hands, illuminator, 6, 40),
        openShutter(hands, 2),
        openShutter(hands, 6),
    };
}

DemoStation fault(const DemoHands& hands, SimulatedIlluminator& illuminator)
{
    return {QStringLiteral("fault"),
            [&illuminator] { illuminator.setFault(QStringLiteral("Interlock open")); },
            statusIs(hands, "Fault")};
}

DemoStation faultCleared(const DemoHands& hands)
{
    return {QStringLiteral("fault-cleared"), clicking(hands, "labelLaserStatus"), statusIs(hands, "Idle")};
}

DemoStation withPicture(DemoStation station, const char* file)
{
    station.file = QLatin1String(file);
    return station;
}

void append(Stations& stations, const Stations& more)
{
    stations.insert(stations.end(), more.begin(), more.end());
}

DemoStation layoutChange(const DemoHands& hands, const char* name, const char* textAfterwards)
{
    return {QLatin1String(name), clicking(hands, "pushButtonExpandCollapseWindow"), [hands, textAfterwards] {
                return hands.buttonShows(QStringLiteral("pushButtonExpandCollapseWindow"),
                                         tr(textAfterwards));
            }};
}

Stations interlock(const DemoHands& hands, SimulatedIlluminator& illuminator)
{
    const auto fiberIs = [hands](const QString& word) {
        const QWidget* lamp = hands.find(QStringLiteral("labelNecselFiber"));
        return lamp && lamp->accessibleDescription() == word;
    };
    return {
        {QStringLiteral("fiber warning"),
         [&illuminator] { illuminator.setWarning(QStringLiteral("555 fiber interlock")); },
         [fiberIs] { return fiberIs(tr("Dark")); }},
        {QStringLiteral("locked shutter"), clicking(hands, "pushButtonChannelShutter6"),
         [] { return DemoHands::box() != nullptr; }, QStringLiteral("main-window-interlock")},
        {QStringLiteral("answered"), [] { DemoHands::answerBox(tr("OK")); },
         [] { return DemoHands::box() == nullptr; }},
        {QStringLiteral("fiber connected"), [&illuminator] { illuminator.clearWarning(); },
         [fiberIs] { return fiberIs(tr("Lit")); }},
    };
}

DemoStation tab(const DemoHands& hands, const char* page, const char* file, const char* filledLast)
{
    return {QLatin1String(page), [hands, page] { hands.clickTab(QLatin1String(page)); },
            [hands, page, filledLast] {
                return hands.isInFront(QLatin1String(page)) &&
                       (*filledLast == '\0' || hands.isFilled(QLatin1String(filledLast)));
            },
            QLatin1String(file), [hands] { return hands.find(QStringLiteral("SettingsDialog")); }};
}

Stations settings(const DemoHands& hands)
{
    const QString dialog = QStringLiteral("SettingsDialog");
    const QString console = QStringLiteral("consoleWindow");
    Stations stations{{QStringLiteral("settings"), clicking(hands, "pushButtonSettings"),
                       [hands, dialog] { return hands.isShown(dialog); }}};
    append(stations,
           {tab(hands, "tabSystemInfo", "settings-system-info", "lineEditVYRHardwareRev"),
            tab(hands, "tabSystemConfig", "settings-system-config", "labelHeater"),
            tab(hands, "tabOperatingInfo", "settings-operating-info", ""),
            tab(hands, "tabControlMode", "settings-control-mode", ""),
            tab(hands, "tabTTLConfiguration", "settings-ttl-configuration", ""),
            tab(hands, "tabUpdate", "settings-update", ""), tab(hands, "tabServiceDevelopment", "", "")});
    DemoStation terminal =
        tab(hands, "tabServiceDevelopment", "settings-service-development", "consoleWindow");
    terminal.act = [hands, console] { hands.type(console, QStringLiteral("f_mode?\n")); };
    stations.push_back(terminal);
    stations.push_back({QStringLiteral("settings closed"),
                        [hands, dialog] {
                            if (QWidget* widget = hands.find(dialog)) {
                                widget->close();
                            }
                        },
                        [hands, dialog] { return !hands.isShown(dialog); }});
    return stations;
}

Stations scenario(const DemoHands& hands)
{
    const auto openDialog = [hands](const char* name) {
        return DemoStation{QLatin1String(name), clicking(hands, "pushButtonSaveScenario"),
                           [hands] { return hands.isShown(QStringLiteral("ScenarioDialog")); }};
    };
    const auto typeName = [hands](const QString& name) {
        return DemoStation{name, [hands, name] { hands.type(QStringLiteral("lineEditScenarioName"), name); },
                           [hands] { return hands.isFilled(QStringLiteral("lineEditScenarioName")); }};
    };
    const auto answer = [](const char* text) {
        return DemoStation{QLatin1String(text), [text] { DemoHands::answerBox(tr(text)); },
                           [] { return DemoHands::box() == nullptr; }};
    };
    DemoStation picture = typeName(QStringLiteral("Live cells"));
    picture.file = QStringLiteral("scenario-save");
    picture.subject = [hands] { return hands.find(QStringLiteral("ScenarioDialog")); };
    return {openDialog("first scenario"),
            typeName(QStringLiteral("Fixed sample")),
            answer("Save"),
            openDialog("second scenario"),
            picture,
            answer("Cancel")};
}

Stations help(const DemoHands& hands)
{
    const auto window = [hands] { return hands.find(QStringLiteral("HelpWindow")); };
    return {
        {QStringLiteral("help"), [hands] { hands.askForHelp(); }, [window] { return window() != nullptr; }},
        {QStringLiteral("contents"), clicking(hands, "pushButtonContents"),
         [window] { return window() && window()->isVisible(); }, QStringLiteral("help"), window}};
}
} // namespace

Stations DemoScene::operatorsDay(QWidget& window, SimulatedIlluminator& illuminator)
{
    const DemoHands hands(window);
    Stations stations = firstLight(hands, illuminator);
    append(stations,
           {fault(hands, illuminator),
            faultCleared(hands),
            {QStringLiteral("collapsed"), clicking(hands, "pushButtonExpandCollapseWindow"), isAlwaysSo}});
    int number = 0;
    for (DemoStation& station : stations) {
        station.file = QStringLiteral("%1-%2").arg(++number, 2, 10, QLatin1Char('0')).arg(station.name);
    }
    return stations;
}

Stations DemoScene::manualPictures(QWidget& window, SimulatedIlluminator& illuminator)
{
    const DemoHands hands(window);
    Stations stations = firstLight(hands, illuminator);
    stations.back().file = QStringLiteral("main-window");
    append(stations, {withPicture(layoutChange(hands, "collapsed", "Expand"), "main-window-compact"),
                      layoutChange(hands, "expanded", "Collapse"),
                      withPicture(fault(hands, illuminator), "main-window-fault"), faultCleared(hands)});
    append(stations, interlock(hands, illuminator));
    append(stations, settings(hands));
    append(stations, scenario(hands));
    append(stations, help(hands));
    return stations;
}
