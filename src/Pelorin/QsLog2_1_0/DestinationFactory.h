#pragma once

#include "QsLog2_1_0/Destination.h"
#include "QsLog2_1_0/FunctorDestination.h"

class QObject;

namespace QsLogging {

/// A log file at `path`, whose folder must exist. With rotation an existing file is continued, put aside
/// once it exceeds `maxSizeBytes`, and at most `maxOldLogCount` old ones are kept (more than 9 become 10).
/// Without rotation the file is begun anew and the two numbers mean nothing.
DestinationPtr makeFileDestination(const QString& path, bool rotationEnabled = false, qint64 maxSizeBytes = 0,
                                   int maxOldLogCount = 0);

/// The debugger's output and standard error.
DestinationPtr makeDebugOutputDestination();

/// Calls `function` with every line; see FunctorDestination.
DestinationPtr makeFunctorDestination(FunctorDestination::LogFunction function);

/// Delivers lines above Trace, queued, to a slot of `receiver` named with SLOT() that takes (QString, int).
/// The receiver stays the caller's and may go away at any time.
DestinationPtr makeFunctorDestination(QObject* receiver, const char* slotSignature);

} // namespace QsLogging
