#pragma once

#include "LogRecorder.h"
#include "QsLog2_1_0/QsLog.h"

#include <QObject>
#include <QSharedPointer>

/// Everything that is logged meanwhile, down to the lowest level, goes to a recorder.
class RecordedLogTest : public QObject
{
protected:
    void begin()
    {
        m_recorder = QSharedPointer<LogRecorder>::create();
        QsLogging::Logger::instance().addDestination(m_recorder);
        QsLogging::Logger::instance().setLevel(QsLogging::LogLevel::Trace);
    }
    void end() const
    {
        QsLogging::Logger::instance().removeDestination(m_recorder);
        QsLogging::Logger::instance().setLevel(QsLogging::LogLevel::Info);
    }

    QSharedPointer<LogRecorder> m_recorder;
};
