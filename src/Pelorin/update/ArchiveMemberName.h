#pragma once

#include <QString>

#include <optional>

/// Where a member of an archive may be put, as a path relative to the archive's folder with "/" between its
/// parts, empty for that folder itself; nothing when the name is none, or would lead out of that folder or to
/// a device on any of the systems that the program runs on, whichever of them it runs on now. Pure, and total
/// over every text.
std::optional<QString> safeMemberPath(const QString& name);
