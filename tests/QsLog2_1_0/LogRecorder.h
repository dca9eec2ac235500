#pragma once

#include "QsLog2_1_0/Destination.h"

#include <QList>
#include <QStringList>

#include <utility>

/// A destination that keeps what it is given, in order.
class LogRecorder : public QsLogging::Destination
{
public:
    explicit LogRecorder(QString type = QStringLiteral("recorder")) : m_type(std::move(type)) {}

    void write(const QString& message, QsLogging::LogLevel level) override
    {
        lines.append(message);
        levels.append(level);
    }
    bool isValid() override { return true; }
    QString type() const override { return m_type; }

    QStringList lines;
    QList<QsLogging::LogLevel> levels;

private:
    QString m_type;
};
