#pragma once

#include <QObject>
#include <QString>

#include <random>

class PelorinMainWindow;
class QDialog;
class QMessageBox;
class QWidget;
class SettingsDialog;

namespace Soak {

/// Chance that is the same in every run with the same seed.
class Chance
{
public:
    explicit Chance(quint32 seed) : m_engine(seed) {}
    /// From 0 to below `end`.
    int below(int end) { return static_cast<int>(m_engine() % static_cast<quint32>(end)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    bool percent(int share) { return below(100) < share; }

private:
    std::mt19937 m_engine;
};

/// The hands at mouse and keyboard: they click what is reached by its name, drag, type, and answer every box
/// that opens, whoever opened it.
class Person : public QObject
{
    Q_OBJECT

public:
    Person(PelorinMainWindow& window, Chance& chance);

    PelorinMainWindow& window() { return m_window; }
    SettingsDialog& dialog();

    // --- The main window; channels count from 1.
    void click(const char* name);                     ///< on any window; does nothing on what is disabled
    void clickLeftHalf(const char* name, int number); ///< of a channel's widget
    void drag(int channel, int moves);
    void typeInto(const char* name, int channel, const QString& text);

    // --- The settings dialog.
    void openDialog();
    void closeDialog();
    void clickTab(int index);
    void clickTabOf(const char* page); ///< by the name of the page behind it
    int tabCount();

    /// What the next file dialogs and the next scenario dialog are answered with; each is left by Cancel
    /// where the text is empty.
    void setFile(const QString& pathName) { m_file = pathName; }
    void setScenarioName(const QString& name) { m_scenarioName = name; }
    /// What the last message box said; empty since forgetBoxes().
    const QString& lastBox() const { return m_lastBox; }
    void forgetBoxes() { m_lastBox.clear(); }

    /// Runs the event loop; the program goes on meanwhile.
    static void wait(int milliseconds);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* find(const QString& name) const;
    void answer(QDialog& dialog);
    void answerBox(QMessageBox& box);

    PelorinMainWindow& m_window;
    Chance& m_chance;
    QString m_file;
    QString m_scenarioName;
    QString m_lastBox;
};

} // namespace Soak
