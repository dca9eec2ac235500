#pragma once

#include <QtGlobal>

/// What came of unpacking a release archive. The number is shown to the user behind " #" and told to the
/// service by telephone, so a value never changes its meaning and never goes to another one.
namespace ArchiveStatus {
enum Code : quint16 {
    Success = 0,
    CannotRead = 1,        ///< the archive file cannot be opened or read
    NotAnArchive = 2,      ///< it does not begin as a 7z archive does
    Damaged = 3,           ///< its structure or its packed data make no sense, or end early
    UnsupportedMethod = 4, ///< packed or encrypted in a way that cannot be undone here; the log names it
    WrongChecksum = 5,     ///< a member was unpacked, but is not what was packed
    BadName = 6,           ///< a member's name leaves the folder, or is none on some system
    NotAFile = 7,          ///< a member is a link or a device
    TooManyMembers = 8,    ///< more than ArchiveExtractor::maximumMembers
    TooLarge = 9,          ///< more than ArchiveExtractor::maximumBytes, packed or unpacked
    NameTaken = 10,   ///< a member cannot take its place: a folder, a link or the archive itself is there
    CannotWrite = 11, ///< a file or folder cannot be written; the disk may be full
    OutOfMemory = 12, ///< the decoder wants more memory than there is
    Stopped = 13,     ///< whoever asked for it does not want it any more
};
} // namespace ArchiveStatus
