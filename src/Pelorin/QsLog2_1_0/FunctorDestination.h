#pragma once

#include "QsLog2_1_0/Destination.h"

#include <QObject>

namespace QsLogging {

/// Hands lines to a plain function, to slots, or to both.
class FunctorDestination : public QObject, public Destination
{
    Q_OBJECT

public:
    /// Called with every line, on the thread that logs and under the logger's mutex.
    using LogFunction = void (*)(const QString& message, LogLevel level);

    /// `function` may be null; then only the signal tells of lines.
    explicit FunctorDestination(LogFunction function = nullptr);

    void write(const QString& message, LogLevel level) override;
    bool isValid() override { return true; }
    QString type() const override { return QStringLiteral("functor"); }

Q_SIGNALS:
    /// A line above Trace; `level` is the LogLevel's number. Emitted under the logger's mutex: connect it
    /// queued.
    void logMessageReady(const QString& message, int level);

private:
    LogFunction m_function;
};

} // namespace QsLogging
