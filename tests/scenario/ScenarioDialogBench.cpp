#include "scenario/ScenarioDialogBench.h"

void ScenarioDialogTest::begin()
{
    buildStore();
    m_store = openStore();
    m_scenario = std::make_unique<Scenario>(nullptr, m_store.get());
    m_boxes = std::make_unique<BoxAnswerer>();
}

void ScenarioDialogTest::end()
{
    m_finished.reset();
    m_dialog.reset();
    m_boxes.reset();
    m_scenario.reset();
    m_store.reset();
    removeStore();
}

bool ScenarioDialogTest::build(int mode, const QStringList& names)
{
    for (const QString& name : names) {
        m_scenario->addName(name);
    }
    m_dialog = std::make_unique<ScenarioDialog>(nullptr, mode, m_scenario.get());
    m_finished = std::make_unique<QSignalSpy>(m_dialog.get(), &QDialog::finished);
    m_dialog->show();
    m_dialog->activateWindow();
    return QTest::qWaitForWindowActive(m_dialog.get());
}

QStringList ScenarioDialogTest::shownNames() const
{
    QStringList names;
    for (int row = 0; row < list()->count(); ++row) {
        names.append(list()->item(row)->text());
    }
    return names;
}

void ScenarioDialogTest::doubleClickRow(int row)
{
    const QPoint place = list()->visualItemRect(list()->item(row)).center();
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseDClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
}
