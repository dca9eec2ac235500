#pragma once

#include "QsLog2_1_0/LogLevel.h"

#include <QSharedPointer>
#include <QString>

namespace QsLogging {

/// Somewhere log lines go. The logger and whoever made a destination share its ownership.
class Destination
{
public:
    virtual ~Destination() = default;

    /// Takes one finished line, without line end. Called under the logger's mutex: it must not add or
    /// remove destinations, and what it logs itself is dropped. Failures stay inside.
    virtual void write(const QString& message, LogLevel level) = 0;
    /// True while lines can arrive where they should.
    virtual bool isValid() = 0;
    /// The kind of destination, for Logger::hasDestinationOfType.
    virtual QString type() const = 0;

protected:
    Destination() = default;

private:
    Q_DISABLE_COPY_MOVE(Destination)
};

using DestinationPtr = QSharedPointer<Destination>;

} // namespace QsLogging
