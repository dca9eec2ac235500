#pragma once

/// What the device link's operations return, as a signed 32-bit number. Callers test for non-zero; some
/// show the number to the user, so the values are part of the program's face.
namespace DeviceResult {
enum Code : int {
    Ok = 0,
    RecordNotValid = -40002,  ///< the device reports the record as not valid
    WrongLength = -40003,     ///< a reply of the wrong length
    WriteFailed = -40006,     ///< fewer bytes were written than the command has
    NoReply = -40007,         ///< no reply within the response or busy time-out
    MarkerMissing = -40009,   ///< the reply lacks the marker that the command expects
    NotOpen = -40010,         ///< no port, or the port is not open
    NoReplyToSwitch = -40011, ///< no reply to "goloader" or "goapp" in time
    Busy = -40013,            ///< a transaction is in flight; nothing was written
    BadArgument = -40014,     ///< the command does not accept the argument; nothing was sent
    NotUnderstood = -40015,   ///< the reply's value could not be understood
};
} // namespace DeviceResult
