#include "update/ArchiveMemberName.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace {

// What usual disks take, so that a name that they refuse is found out before the first file is in its place.
constexpr int maximumPartBytes = 255;
constexpr int maximumPathBytes = 1000; // the folder's own path comes before it

// Names that some systems take for devices in every folder, with and without a suffix.
constexpr std::array<const char*, 6> deviceNames = {"con", "prn", "aux", "nul", "conin$", "conout$"};
constexpr std::array<const char*, 2> numberedDeviceNames = {"com", "lpt"};

bool isDeviceName(const QString& part)
{
    const QString stem = part.section(QLatin1Char('.'), 0, 0).trimmed().toLower();
    const auto isStem = [&stem](const char* name) { return stem == QLatin1String(name); };
    const auto isNumbered = [&stem](const char* name) {
        return stem.size() == 4 && stem.startsWith(QLatin1String(name)) && stem.at(3).digitValue() >= 0;
    };
    return std::any_of(deviceNames.begin(), deviceNames.end(), isStem) ||
           std::any_of(numberedDeviceNames.begin(), numberedDeviceNames.end(), isNumbered);
}

bool isAllowedCharacter(QChar character)
{
    // A colon names a drive or a hidden stream of a file. The replacement character stands for bytes that
    // were no text, so that two names could become one.
    return character.unicode() >= 0x20 && character.unicode() != 0x7f && character != QLatin1Char(':') &&
           character != QChar(QChar::ReplacementCharacter);
}

bool isSafePart(const QString& part)
{
    // Trailing dots and blanks are dropped by some systems, so that ".. " is ".." there.
    const bool isDropped = part.endsWith(QLatin1Char('.')) || part.endsWith(QLatin1Char(' '));
    return !isDropped && part.toUtf8().size() <= maximumPartBytes && !isDeviceName(part) &&
           std::all_of(part.begin(), part.end(), isAllowedCharacter);
}

} // namespace

std::optional<QString> safeMemberPath(const QString& name)
{
    QString path = name;
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (path.isEmpty() || path.startsWith(QLatin1Char('/'))) {
        return std::nullopt;
    }
    QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    parts.removeAll(QStringLiteral(".")); // what packers write for the folder that they started in
    if (path.toUtf8().size() > maximumPathBytes || !std::all_of(parts.cbegin(), parts.cend(), isSafePart)) {
        return std::nullopt;
    }
    return parts.join(QLatin1Char('/'));
}
