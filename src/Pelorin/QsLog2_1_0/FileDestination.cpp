#include "QsLog2_1_0/FileDestination.h"

#include "QsLog2_1_0/FailureReport.h"
#include "compat/QtVersion.h"

#include <algorithm>
#include <utility>

namespace QsLogging {

FileDestination::FileDestination(const QString& path, RotationStrategyPtr strategy)
    : m_strategy(std::move(strategy))
{
    m_file.setFileName(path);
    if (!open()) {
        reportFailure(QLatin1String("QsLog: could not open log file ") + path);
    }
    attach();
}

bool FileDestination::open()
{
    return m_file.open(QIODevice::WriteOnly | QIODevice::Text | m_strategy->openModeFlag());
}

void FileDestination::attach()
{
    m_strategy->attachFile(m_file);
    m_stream.setDevice(&m_file);
    QtVersion::useUtf8(m_stream);
}

void FileDestination::rotate()
{
    m_stream.setDevice(nullptr);
    m_file.close();
    m_strategy->rotate();
    if (open()) {
        m_reopenFailureTold = false;
    } else if (!m_reopenFailureTold) {
        // Where the next lines find the log as large as before they come here again: once is enough.
        reportFailure(QLatin1String("QsLog: could not reopen log file ") + m_file.fileName());
        m_reopenFailureTold = true;
    }
    attach();
}

void FileDestination::write(const QString& message, LogLevel /*level*/)
{
    m_strategy->countMessage(message);
    if (m_strategy->shouldRotate()) {
        rotate();
    }
    if (!m_file.isOpen()) {
        return; // Qt would complain about every single line
    }
    // One piece of text costs the stream less than two.
    m_lineWithEnd.resize(message.size() + 1);
    *std::copy(message.begin(), message.end(), m_lineWithEnd.data()) = QLatin1Char('\n');
    m_stream << m_lineWithEnd;
    m_stream.flush();
}

bool FileDestination::isValid()
{
    return m_file.isOpen();
}

} // namespace QsLogging
