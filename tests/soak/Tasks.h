#pragma once

#include "Desk.h"
#include "Person.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

class Device;
class PelorinMainWindow;

namespace Soak {

constexpr int restartSeconds = 60; ///< within which the device is at work again, whatever became of it

/// Where the tasks of a day are done: who does them, at what, and with which files.
struct Room
{
    PelorinMainWindow& window;
    Desk& desk;
    Person& person;
    Chance& chance;
    QStringList releases; ///< firmware archives of different versions
    QString calibration;  ///< a file to write to and to read from
    QString failure;      ///< what went wrong first; the day ends with it

    Device& device() const;
    int randomChannel() { return chance.between(1, Simulator::kChannelCount); }
    void fail(const QString& text);
    /// Runs the event loop until it holds; false, which is also a failure of this name, after `seconds`.
    bool waitFor(const char* what, int seconds, const std::function<bool()>& holds);
    /// Lets the program go on for a while of chance.
    void pause(int shortestMs, int longestMs) { Person::wait(chance.between(shortestMs, longestMs)); }
    /// Does something in the settings dialog, which is opened for it, on the page of this name.
    void onPage(const char* page, const std::function<void()>& act);
    /// The window shows what the device is in, within the time that a few polls and commands take.
    void compare();
    /// The application runs and is connected.
    bool isAtWork() const;
    /// Waits for that, as long as a restart and finding the device may take.
    void waitForWork(const char* what);
};

/// Something that a person, or the world, does; it comes to its end before the next one begins.
struct Task
{
    const char* name;
    int weight; ///< how often it comes, among all
    void (*run)(Room& room);
};

QVector<Task> operatorTasks(); ///< at the main window
QVector<Task> serviceTasks();  ///< in the settings dialog, and with firmware
QVector<Task> troubles();      ///< faults, inputs, the cable and the line

} // namespace Soak
