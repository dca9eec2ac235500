#pragma once

#include <functional>

class Device;
class QFile;
class QString;
class QWidget;

/// Sends an image to the device, which writes it into its FLASH.
namespace FlashProgramming {

/// Told the number of the line that is sent next, counted from 1. False gives up.
using Progress = std::function<bool(int line)>;

/// Sends the lines of an open image behind its first one, each with its own answer; an UpdateResult code. The
/// image is read from its start, whatever was read of it before. Waits in the event loop for every line.
int sendLines(Device& device, QFile& image, const Progress& goesOn);

/// The same behind a progress dialog of @p window that can be cancelled; @p title is what it says and
/// @p lineCount its end. A window that goes meanwhile counts as cancelled.
int sendWithDialog(Device& device, QFile& image, int lineCount, const QString& title, QWidget* window);

} // namespace FlashProgramming
