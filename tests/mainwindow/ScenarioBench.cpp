#include "mainwindow/ScenarioBench.h"

#include "device/Device.h"
#include "scenario/Scenario.h"

#include <QTest>

bool ScenarioWindowTest::buildScenarioWindow()
{
    m_boxes = std::make_unique<BoxAnswerer>();
    m_dialogs = std::make_unique<ScenarioDialogAnswerer>();
    const bool built = buildConnectedWindow();
    m_illuminator->clearCommands();
    return built;
}

void ScenarioWindowTest::removeScenarioWindow()
{
    m_dialogs.reset();
    m_boxes.reset();
    removeWindow();
}

void ScenarioWindowTest::save(const QString& name)
{
    m_dialogs->answerWith(name);
    QTest::mouseClick(m_window->findChild<QPushButton*>(QStringLiteral("pushButtonSaveScenario")),
                      Qt::LeftButton);
}

void ScenarioWindowTest::load(const QString& name)
{
    m_dialogs->answerWith(name);
    QTest::mouseClick(m_window->findChild<QPushButton*>(QStringLiteral("pushButtonLoadScenario")),
                      Qt::LeftButton);
}

bool ScenarioWindowTest::loadWhole(const QString& name)
{
    load(name);
    const bool loaded = QTest::qWaitFor(
        [this] { return statusText(*m_window).startsWith(QLatin1String("Scenario loaded: ")); });
    return loaded && m_illuminator->settle(*m_window);
}

bool ScenarioWindowTest::keepScenario(const QString& name, const std::array<bool, 8>& open)
{
    ScenarioValues values;
    for (int number = 1; number <= channelCount; ++number) {
        const auto index = static_cast<std::size_t>(number - 1);
        values.at(index) = {settingsOf(laser(number)), open.at(index)};
    }
    return m_window->scenario()->save(name, values);
}

bool ScenarioWindowTest::reportShutters(const std::array<bool, 8>& open)
{
    m_illuminator->shutters = open;
    return m_illuminator->settle(*m_window);
}

channel& ScenarioWindowTest::laser(int number) const
{
    return *m_window->scenario()->channelByNumber(static_cast<quint8>(number));
}
