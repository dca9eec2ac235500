#pragma once

#include <QString>

/// The demo's own folder for settings and documents, so that trying the program never touches what the
/// user keeps for the real illuminator.
namespace DemoHome {
/// `$XDG_DATA_HOME/vyr-demo`, or `~/.local/share/vyr-demo`.
QString defaultFolder();

/// Makes `folder` with its sub-folders and points this process's settings store and documents folder
/// there. To be called before the application object is created. False when the folder cannot be made.
bool enter(const QString& folder);
} // namespace DemoHome
