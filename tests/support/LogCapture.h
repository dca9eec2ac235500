#pragma once

#include "QsLog2_1_0/Destination.h"
#include "QsLog2_1_0/LogLevel.h"

#include <QList>
#include <QString>
#include <QStringList>

/// Keeps what is logged while it lives, and puts the logger's level back at its end. Other destinations are
/// left alone.
class LogCapture
{
public:
    /// The logger's level is set to `level` for as long as the capture lives.
    explicit LogCapture(QsLogging::LogLevel level = QsLogging::LogLevel::Info);
    ~LogCapture();

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    LogCapture(LogCapture&&) = delete;
    LogCapture& operator=(LogCapture&&) = delete;

    /// All lines so far, as a destination gets them: level, time, message.
    QStringList lines() const;
    /// The lines of one level.
    QStringList lines(QsLogging::LogLevel level) const;
    /// The number of lines that contain the text, in this case.
    int count(const QString& text) const;
    int count(const QString& text, QsLogging::LogLevel level) const;
    bool contains(const QString& text) const { return count(text) > 0; }
    void clear();

private:
    class Keeper;

    QSharedPointer<Keeper> m_keeper;
    QsLogging::LogLevel m_levelBefore;
};
