#pragma once

#include "QsLog2_1_0/Destination.h"

namespace QsLogging {

/// The debugger's output where the platform has one, and standard error in the local 8-bit encoding.
class DebugOutputDestination : public Destination
{
public:
    DebugOutputDestination() = default;

    void write(const QString& message, LogLevel level) override;
    bool isValid() override { return true; }
    QString type() const override { return QStringLiteral("console"); }
};

} // namespace QsLogging
