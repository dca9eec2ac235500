#pragma once

#include <QChar>

namespace QsLogging {

/// Characters of a stamp in the form "yyyy-MM-ddThh:mm:ss.zzz".
constexpr int timeStampLength = 23;

/// Writes `msecsSinceEpoch` (UTC, milliseconds) as local time in that form to the `timeStampLength`
/// characters at `target`. Any thread may call it.
void writeTimeStamp(qint64 msecsSinceEpoch, QChar* target);

/// The same for now.
void writeCurrentTimeStamp(QChar* target);

} // namespace QsLogging
