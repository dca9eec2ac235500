#pragma once

#include "mainwindow/PelorinMainWindow.h"
#include "support/LogCapture.h"
#include "support/ScriptedBench.h"
#include "support/WarningWatch.h"

#include <QLabel>
#include <QLineEdit>
#include <QObject>
#include <QPushButton>
#include <QSlider>
#include <QTemporaryDir>
#include <QVariant>

#include <array>
#include <chrono>
#include <functional>
#include <memory>

/// A settings store of its own, no serial ports, the log captured and warnings watched: the room in which a
/// test builds its window.
class WindowBench
{
public:
    WindowBench();
    ~WindowBench();

    WindowBench(const WindowBench&) = delete;
    WindowBench& operator=(const WindowBench&) = delete;

    QString settingsFileName() const;
    /// Makes the folder and puts these bytes where the settings are read from.
    bool writeSettingsFile(const QByteArray& content) const;
    QByteArray settingsFileContent() const;
    /// One value of the store as it is on the disk now.
    QVariant stored(const QString& key) const;
    void store(const QString& key, const QVariant& value) const;

    /// A window started the way the program does it, and shown.
    std::unique_ptr<PelorinMainWindow> start(const QString& arguments = {}) const;
    LogCapture& log() { return m_log; }

private:
    QTemporaryDir m_home;
    LogCapture m_log;
    WarningWatch m_warnings;
};

/// A device that answers everything at once, and whose states a test sets.
class FakeIlluminator
{
public:
    FakeIlluminator();

    ScriptedBench& bench() { return m_bench; }
    QByteArray mode = "idle";
    QByteArray fault = "ok";
    QByteArray warning = "ok";
    QByteArray intensitySource = "PC";
    QByteArray image = "VYRApp V2.7.0";
    QByteArray product = "vyr_hw_ver=1.2.3,vyr_pn=PN-7,vyr_sn=1234,necsel_laser_sn=N55,novalum_sn=V88";
    std::array<bool, 8> shutters{};
    std::array<QByteArray, 8> levels{"0", "0", "0", "0", "0", "0", "0", "0"};
    std::chrono::milliseconds thinkTime{0}; ///< before every answer
    bool obeysShutters = true;              ///< a shutter command changes the state that is told next

    /// Lets the window find the device and waits until it is identified and everything was sent to it.
    bool connectTo(PelorinMainWindow& window);
    /// Waits until everything on its way has arrived, the next poll included.
    bool settle(PelorinMainWindow& window);
    /// Lets the window ask for every state once, warnings included, without waiting for its timer.
    static void pollEverything(PelorinMainWindow& window);
    /// Leaves the line free with one command waiting in the queue, so that the next one has to wait for both.
    bool leaveOneQueued(PelorinMainWindow& window);
    /// The lines that change something, in order; queries are left out.
    QList<QByteArray> commands() const;
    void clearCommands() { m_bench.clearReceived(); }
    bool waitForCommand(const QByteArray& line) const;
    /// For a responder that puts itself in front of this one.
    Simulator::Answer answerTo(const QByteArray& line) { return {reply(line) + '\n', thinkTime}; }

private:
    std::optional<Simulator::Answer> answer(const QByteArray& line);
    QByteArray reply(const QByteArray& line);
    QByteArray shutterList() const;
    QByteArray levelList() const;

    ScriptedBench m_bench;
};

/// A window, and a device beside it.
class WindowTest : public QObject
{
protected:
    /// The device is plugged in, and the window has not looked for it yet.
    void buildWindow();
    void removeWindow();
    QString picture(const char* labelName) const; ///< the file name, as pictureOn() tells it

    std::unique_ptr<WindowBench> m_bench;
    std::unique_ptr<FakeIlluminator> m_illuminator;
    std::unique_ptr<PelorinMainWindow> m_window;
};

/// What a test of the connected window begins with: a window whose device is identified and reports no
/// warning.
class ConnectedWindowTest : public WindowTest
{
protected:
    /// False when the device is not found, or not settled, in time.
    bool buildConnectedWindow();
    /// Forgets commands, log and message so far, once everything on its way has arrived.
    void quiet();
    /// Lets the device report a mode; false when the window does not show its word in time.
    bool waitForMode(const QByteArray& mode, const QString& word);
};

/// The widgets of one channel, by number from 1.
struct Column
{
    Column(const QWidget& window, int number);

    QWidget* frame;
    QWidget* lowerPart;
    QLineEdit* name;
    QLineEdit* percentage;
    QLabel* arrows;
    QSlider* slider;
    QPushButton* shutter;
};

/// Calls @p what once after @p delay, from the event loop, unless @p context goes first.
void runLater(QObject* context, std::chrono::milliseconds delay, const std::function<void()>& what);
/// A click in the middle of the widget's left or right half.
void clickHalf(QWidget* widget, bool left);
QString statusText(const QWidget& window);
QLabel* label(const QWidget& window, const char* objectName);
/// The file name of the laser picture that the label shows; empty when it shows none of them.
QString pictureOn(const QLabel* label);
