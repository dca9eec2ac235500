#pragma once

#include "QsLog2_1_0/Destination.h"
#include "QsLog2_1_0/LogFile.h"
#include "QsLog2_1_0/RotationStrategy.h"

#include <QTextStream>

namespace QsLogging {

/// A log file in UTF-8, flushed after every line. Troubles with the file are told on standard error; lines
/// that cannot be written are lost without further ado.
class FileDestination : public Destination
{
public:
    /// Opens the file at once. `strategy` must not be null; its ownership is shared.
    FileDestination(const QString& path, RotationStrategyPtr strategy);

    void write(const QString& message, LogLevel level) override;
    bool isValid() override; ///< true while the file is open
    QString type() const override { return QStringLiteral("file"); }

private:
    bool open();
    void attach();
    void rotate();

    LogFile m_file;
    QTextStream m_stream; // declared after the file, which it must not outlive
    RotationStrategyPtr m_strategy;
    QString m_lineWithEnd; ///< a member only to keep its memory from line to line
    bool m_reopenFailureTold = false;
};

} // namespace QsLogging
