#pragma once

#include "scenario/Scenario.h"
#include "scenario/ScenarioDialog.h"
#include "scenario/ScenarioStoreTest.h"
#include "support/BoxAnswerer.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

#include <memory>

/// A scenario dialog that is open, with a store of its own and somebody who answers its boxes.
class ScenarioDialogTest : public ScenarioStoreTest
{
    Q_OBJECT

protected:
    void begin();
    void end();
    bool build(int mode, const QStringList& names = {});
    template<typename Widget>
    Widget* find(const char* name) const
    {
        return m_dialog->findChild<Widget*>(QLatin1String(name));
    }
    QListWidget* list() const { return find<QListWidget>("listWidgetSavedScenarios"); }
    QLineEdit* field() const { return find<QLineEdit>("lineEditScenarioName"); }
    QPushButton* button(QDialogButtonBox::StandardButton which) const
    {
        return find<QDialogButtonBox>("buttonBox")->button(which);
    }
    QStringList shownNames() const;
    void press(QDialogButtonBox::StandardButton which) { QTest::mouseClick(button(which), Qt::LeftButton); }
    void doubleClickRow(int row);
    bool isOpen() const { return m_dialog->isVisible() && m_finished->isEmpty(); }
    /// True when the dialog was left once, with this result.
    bool isLeft(QDialog::DialogCode code) const
    {
        return !m_dialog->isVisible() && m_finished->size() == 1 && m_finished->first().first() == int(code);
    }

    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<Scenario> m_scenario;
    std::unique_ptr<ScenarioDialog> m_dialog;
    std::unique_ptr<QSignalSpy> m_finished;
    std::unique_ptr<BoxAnswerer> m_boxes;
};
