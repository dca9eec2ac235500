#pragma once

#include <QString>
#include <QTemporaryDir>

#include <functional>

class PelorinMainWindow;

namespace Bench {

/// A home folder of its own, so that a benchmark finds the settings and the log of nobody. To be made before
/// the program starts.
class Home
{
public:
    Home();

private:
    QTemporaryDir m_folder;
};

/// From now on this is the one serial port of the computer, and an illuminator is behind it. An empty name
/// leaves the computer without any.
void listPort(const QString& portName);

/// Runs the program as it is, lets `body` loose once its event loop runs and closes the window behind it.
/// Returns 0, or 1 when `body` returned false.
int runInProgram(int argc, char** argv, const std::function<bool(PelorinMainWindow&)>& body);

/// Waits until the window has found the device and has sent it everything that it sends at first.
bool waitUntilSettled(PelorinMainWindow& window);

} // namespace Bench
