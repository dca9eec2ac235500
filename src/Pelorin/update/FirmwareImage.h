#pragma once

#include "device/FirmwareVersion.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <optional>

class QFile;

enum class FirmwareRole { Loader, LoaderUpdater, Application };

/// One of the three images that a release has.
struct FirmwareImageKind
{
    const char* fileName; ///< as it is in the release
    const char* nameMark; ///< what a path must contain, in any case, to be taken for this image
    FirmwareRole role;
    quint32 headerBase; ///< address of the image's header in the device
};

/// In the order in which a path is tried.
constexpr std::array<FirmwareImageKind, 3> firmwareImageKinds = {{
    {"LoaderOut.srec", "LoaderOut", FirmwareRole::Loader, 0x11FC0},
    {"LoaderUpdaterOut.srec", "LoaderUpdaterOut", FirmwareRole::LoaderUpdater, 0x39FC0},
    {"VYR-AppOut.srec", "VYR-AppOut", FirmwareRole::Application, 0x39FC0},
}};

/// What the path of an image tells about it, folders included: every file in a folder whose name contains
/// "LoaderOut" is a loader. Null when it tells nothing.
const FirmwareImageKind* firmwareImageKind(const QString& filePath);

/// Why an image is rejected.
enum class FirmwareFault { None, FirstLine, UnknownName, HeaderTooLarge, WrongProduct };

/// The outcome of a check.
struct FirmwareCheck
{
    FirmwareFault fault = FirmwareFault::None;
    /// Records behind the first one, up to the first line that is none; 0 when the image is rejected.
    int lineCount = 0;
    /// From the image's header; nothing when the image has none, or is rejected.
    std::optional<FirmwareVersion> version;
};

/// Checks the text of an image whose path tells what it is. Pure and total: any bytes give an outcome.
/// A damaged line ends the count without a fault; sending the image will tell.
FirmwareCheck checkFirmwareText(const QByteArray& text, const QString& filePath);

/// Checks the image in an open file, read from its start and in one piece, and logs the outcome. Returns the
/// number of records behind the first one, 0 when the image is rejected or the file cannot be read. The
/// version is left untouched unless the image has a header and is not rejected.
int checkFirmwareFile(QFile& file, FirmwareVersion& version);
