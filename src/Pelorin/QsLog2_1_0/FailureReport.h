#pragma once

#include <QString>

namespace QsLogging {

/// Writes `text` to standard error as it stands, without a line end: the place for the log's own troubles.
void reportFailure(const QString& text);

} // namespace QsLogging
