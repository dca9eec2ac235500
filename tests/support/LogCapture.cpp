#include "support/LogCapture.h"

#include "QsLog2_1_0/Logger.h"

using QsLogging::Logger;
using QsLogging::LogLevel;

class LogCapture::Keeper final : public QsLogging::Destination
{
public:
    struct Line
    {
        QString text;
        LogLevel level;
    };

    void write(const QString& message, LogLevel level) override { lines.append({message, level}); }
    bool isValid() override { return true; }
    QString type() const override { return QStringLiteral("capture"); }

    QList<Line> lines;
};

LogCapture::LogCapture(LogLevel level)
    : m_keeper(QSharedPointer<Keeper>::create()), m_levelBefore(Logger::instance().level())
{
    Logger::instance().addDestination(m_keeper);
    Logger::instance().setLevel(level);
}

LogCapture::~LogCapture()
{
    Logger::instance().removeDestination(m_keeper);
    Logger::instance().setLevel(m_levelBefore);
}

QStringList LogCapture::lines() const
{
    QStringList texts;
    for (const Keeper::Line& line : qAsConst(m_keeper->lines)) {
        texts.append(line.text);
    }
    return texts;
}

QStringList LogCapture::lines(LogLevel level) const
{
    QStringList texts;
    for (const Keeper::Line& line : qAsConst(m_keeper->lines)) {
        if (line.level == level) {
            texts.append(line.text);
        }
    }
    return texts;
}

int LogCapture::count(const QString& text) const
{
    return int(lines().filter(text).size());
}

int LogCapture::count(const QString& text, LogLevel level) const
{
    return int(lines(level).filter(text).size());
}

void LogCapture::clear()
{
    m_keeper->lines.clear();
}
