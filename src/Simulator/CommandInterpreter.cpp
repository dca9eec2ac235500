#include "Simulator/CommandInterpreter.h"

#include "Simulator/SimulatedIlluminator.h"

#include <QTime>

#include <array>

namespace Simulator {
namespace {
using Entry = CommandInterpreter::Entry;

const char* const kHelpNotes =
    "Channels are named by wavelength (405 ... 730), times are in milliseconds. MATCH is the beginning\n"
    "of the line whose answer is meant, * for every line; COUNT is a number or \"forever\", 1 when left out.";

const std::array<const std::vector<Entry>*, 3>& allCommands()
{
    static const std::array<const std::vector<Entry>*, 3> all{&sceneCommands(), &deviceCommands(),
                                                              &cableCommands()};
    return all;
}

const Entry* findEntry(const QString& name)
{
    for (const auto* entries : allCommands()) {
        for (const Entry& entry : *entries) {
            if (name == QLatin1String(entry.name)) {
                return &entry;
            }
        }
    }
    return nullptr;
}

QString usageOf(const Entry& entry)
{
    return QStringLiteral("%1 %2").arg(QLatin1String(entry.name), QLatin1String(entry.usage)).trimmed();
}
} // namespace

CommandInterpreter::CommandInterpreter(SimulatedIlluminator& illuminator, QObject* parent)
    : QObject(parent), m_illuminator(illuminator)
{
}

Outcome CommandInterpreter::run(const QString& line)
{
    QStringList words = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.isEmpty() || words.first().startsWith(QLatin1Char('#'))) {
        return {};
    }
    const QString name = words.takeFirst();
    const Entry* entry = findEntry(name);
    if (!entry) {
        return Outcome::error(QStringLiteral("unknown command \"%1\"; \"help\" lists them").arg(name));
    }
    if (words.size() < entry->minWords || (entry->maxWords >= 0 && words.size() > entry->maxWords)) {
        return Outcome::error(QStringLiteral("usage: ") + usageOf(*entry));
    }
    return entry->carryOut(*this, words);
}

QString CommandInterpreter::help()
{
    QStringList lines;
    for (const auto* entries : allCommands()) {
        for (const Entry& entry : *entries) {
            lines.append(QStringLiteral("  %1 %2").arg(usageOf(entry), -38).arg(QLatin1String(entry.what)));
        }
    }
    lines.append(QLatin1String(kHelpNotes));
    return lines.join(QLatin1Char('\n'));
}

void CommandInterpreter::setTrafficLog(bool on)
{
    disconnect(m_received);
    disconnect(m_sent);
    if (!on) {
        return;
    }
    m_received = connect(&m_illuminator.wire(), &Wire::lineReceived, this,
                         [this](const QByteArray& line) { logTraffic("->", line); });
    m_sent = connect(&m_illuminator.wire(), &Wire::bytesSent, this,
                     [this](const QByteArray& bytes) { logTraffic("<-", bytes); });
}

void CommandInterpreter::logTraffic(const char* arrow, const QByteArray& bytes)
{
    const QString time = QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz"));
    emit trafficLogged(QStringLiteral("%1 %2 %3").arg(time, QLatin1String(arrow), readable(bytes)));
}

QString readable(const QByteArray& bytes)
{
    QString text;
    for (const char byte : bytes) {
        if (byte == '\n') {
            text += QLatin1String("\\n");
        } else if (byte < ' ' || byte > '~') {
            text += QStringLiteral("\\x%1").arg(static_cast<uchar>(byte), 2, 16, QLatin1Char('0'));
        } else {
            text += QLatin1Char(byte);
        }
    }
    return text;
}

} // namespace Simulator
