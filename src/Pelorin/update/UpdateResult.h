#pragma once

/// What programming the device comes to, as a signed 32-bit number; the user is shown it, so the values are
/// part of the program's face.
namespace UpdateResult {
enum Code : int {
    Ok = 0,
    UpdaterNotOpened = -40000, ///< the image of the loader updater cannot be opened
    LineNotSent = -40007,      ///< no exchange with the device for a line
    LineNotWritten = -40008,   ///< the device did not say that it wrote a line
    NotSwitched = -40011,      ///< the device is not in the image, or not in the state, that comes next
    Canceled = -40012,         ///< by the user
};
} // namespace UpdateResult
