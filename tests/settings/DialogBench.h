#pragma once

#include "mainwindow/WindowBench.h"
#include "settings/SettingsDialog.h"
#include "support/SimulatedBench.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>

/// Long enough for more than two polls.
constexpr std::chrono::milliseconds severalPolls{700};

/// The settings dialog as it is used: every widget is reached by its name, on its tab, in view.
class DialogHand
{
public:
    explicit DialogHand(PelorinMainWindow& window) : m_window(window) {}

    SettingsDialog& dialog() const { return *m_window.settingsDialog(); }
    /// Clicks the main window's button and waits until the dialog is there.
    bool open() const;
    /// Closes it before.
    bool openAnew() const;
    /// A click on the tab's name; false when there is no such tab.
    bool clickTab(const QString& caption) const;
    QStringList captions() const;
    QString captionInFront() const;
    /// Brings the widget's tab to the front as the code does it, which clicks nothing.
    void bringIntoView(QWidget* widget) const;
    /// A left click on the widget, wherever it is.
    void click(const char* name) const;

    template<typename Widget>
    Widget* part(const char* name) const
    {
        auto* const found = dialog().findChild<Widget*>(QLatin1String(name));
        if (found == nullptr) {
            qFatal("The dialog has no %s", name);
        }
        return found;
    }
    QString text(const char* labelName) const;
    QString fieldText(const char* lineEditName) const;
    bool isChecked(const char* buttonName) const;

private:
    QPoint placeToClick(const QWidget* widget) const;

    PelorinMainWindow& m_window;
};

/// Every choice that the dialog tells while this lives, in order: "shutterControlChanged(1)".
class ChoiceSpy
{
public:
    explicit ChoiceSpy(SettingsDialog& dialog);
    const QStringList& choices() const { return m_choices; }

private:
    QObject m_context;
    QStringList m_choices;
};

/// Every line that reaches the device while this lives, with its time.
class LineRecorder
{
public:
    struct Line
    {
        QByteArray text;
        std::chrono::milliseconds at{0}; ///< since the recorder was made
    };
    explicit LineRecorder(Simulator::Wire& wire);

    int count(const QByteArray& text) const;
    int countBeginning(const QByteArray& beginning) const;
    QList<std::chrono::milliseconds> timesOf(const QByteArray& text) const;
    QList<QByteArray> texts() const;
    void clear() { m_lines.clear(); }

private:
    QObject m_context;
    QElapsedTimer m_clock;
    QList<Line> m_lines;
};

/// A window at service level with a device that answers everything at once, its settings dialog open.
class AnsweringDialogTest : public ConnectedWindowTest
{
protected:
    /// With nothing on its way and no command remembered; unplugged where @p connected is false.
    bool buildDialog(bool connected = true);
    /// Ends a beginning without a device.
    bool plugIn();
    void removeDialog();
    /// The commands since the last call, once everything on its way has arrived.
    QList<QByteArray> newCommands();

    std::unique_ptr<DialogHand> m_hand;
};

/// A window at service level at a whole simulated illuminator, its settings dialog open.
class SimulatedDialogTest : public QObject
{
protected:
    bool buildDialog();
    void removeDialog();
    Simulator::SimulatedIlluminator& illuminator() { return m_device->illuminator(); }
    Simulator::LaserHead& lasers() { return m_device->model().lasers(); }
    QString modeWord() const { return label(*m_window, "labelLaserStatusText")->text(); }

    std::unique_ptr<WindowBench> m_bench;
    std::unique_ptr<SimulatedBench> m_device;
    std::unique_ptr<LineRecorder> m_lines;
    std::unique_ptr<PelorinMainWindow> m_window;
    std::unique_ptr<DialogHand> m_hand;
};
