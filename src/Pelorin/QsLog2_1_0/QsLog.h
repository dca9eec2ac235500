#pragma once

// What callers include: the statements, and everything needed to set the log up.

#include "QsLog2_1_0/DestinationFactory.h"
#include "QsLog2_1_0/LogLevel.h"
#include "QsLog2_1_0/LogStatement.h"
#include "QsLog2_1_0/Logger.h"

namespace QsLogging {

/// Turns a statement into void, so that both arms of QS_LOG's condition have one type. `&` binds weaker
/// than `<<` and therefore sees the statement with all its items.
struct StatementEnd
{
    void operator&(const LogStatement& /*statement*/) const {}
};

} // namespace QsLogging

/// One line at a level: `QS_LOG(QsLogging::LogLevel::Info) << "Product match on port" << portName;`.
/// An expression rather than a block, so that it may stand in an if without braces. What stands to the right
/// of `<<` is evaluated only if the logger's level lets the statement through.
// Parentheses would close the statement before its items. NOLINTBEGIN(bugprone-macro-parentheses)
#define QS_LOG(level)                                                                                        \
    !QsLogging::isLogged(level) ? void(0) : QsLogging::StatementEnd() & QsLogging::LogStatement(level)
// NOLINTEND(bugprone-macro-parentheses)

#define QS_TRACE() QS_LOG(QsLogging::LogLevel::Trace)
#define QS_DEBUG() QS_LOG(QsLogging::LogLevel::Debug)
#define QS_INFO() QS_LOG(QsLogging::LogLevel::Info)
#define QS_WARN() QS_LOG(QsLogging::LogLevel::Warn)
#define QS_ERROR() QS_LOG(QsLogging::LogLevel::Error)
#define QS_FATAL() QS_LOG(QsLogging::LogLevel::Fatal)
