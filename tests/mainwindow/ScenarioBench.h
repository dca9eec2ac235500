#pragma once

#include "mainwindow/WindowBench.h"
#include "support/BoxAnswerer.h"

#include <QAbstractButton>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QTimer>

#include <memory>
#include <optional>

/// Answers the scenario dialog as an operator would who knows the name; other boxes are left alone.
class ScenarioDialogAnswerer
{
public:
    ScenarioDialogAnswerer()
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
        m_timer.start(lookEveryMs);
    }

    /// The next dialog gets this name and is accepted.
    void answerWith(const QString& name) { m_name = name; }
    int dialogs() const { return m_dialogs; }

private:
    static constexpr int lookEveryMs = 5;

    void look()
    {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || dialog->objectName() != QLatin1String("ScenarioDialog") || !m_name) {
            return;
        }
        ++m_dialogs;
        dialog->findChild<QLineEdit*>(QStringLiteral("lineEditScenarioName"))->setText(*m_name);
        m_name.reset();
        auto* buttons = dialog->findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
        const QList<QAbstractButton*> all = buttons->buttons();
        for (QAbstractButton* button : all) {
            if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole) {
                button->click();
            }
        }
    }

    QTimer m_timer;
    std::optional<QString> m_name;
    int m_dialogs = 0;
};

/// A connected window with ways to save, change and load scenarios.
class ScenarioWindowTest : public ConnectedWindowTest
{
protected:
    bool buildScenarioWindow();
    void removeScenarioWindow();

    void save(const QString& name);
    /// Presses Ctrl+O and chooses the name; loading goes on when this returns.
    void load(const QString& name);
    /// Loads, and waits until the loading is over.
    bool loadWhole(const QString& name);
    /// A scenario of this name with these shutters open, everything else as the panel has it.
    bool keepScenario(const QString& name, const std::array<bool, 8>& open);
    /// Lets the device report these shutters, as if they had been opened at its own inputs.
    bool reportShutters(const std::array<bool, 8>& open);
    bool isModifiedShown() const
    {
        return label(*m_window, "labelScenarioModified")->isVisibleTo(m_window.get());
    }
    QString scenarioText() const { return label(*m_window, "labelScenario")->text(); }
    channel& laser(int number) const;

    std::unique_ptr<BoxAnswerer> m_boxes;
    std::unique_ptr<ScenarioDialogAnswerer> m_dialogs;
};
