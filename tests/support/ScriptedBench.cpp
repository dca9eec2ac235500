#include "support/ScriptedBench.h"

#include <QTest>

#include <algorithm>

ScriptedBench::ScriptedBench()
{
    m_clock.start();
    QObject::connect(&m_wire, &Simulator::Wire::lineReceived, &m_wire, [this](const QByteArray& line) {
        m_received.append({line, std::chrono::milliseconds(m_clock.elapsed())});
    });
    m_wire.setHandler([this](const QByteArray& line) { return answer(line); });
    m_wire.plug();
}

void ScriptedBench::setAnswer(const QByteArray& line, const QByteArray& text,
                              std::chrono::milliseconds thinkTime)
{
    m_answers[line] = {Simulator::Answer{text, thinkTime}};
}

void ScriptedBench::setAnswers(const QByteArray& line, const QList<QByteArray>& texts)
{
    QList<Simulator::Answer> answers;
    for (const QByteArray& text : texts) {
        answers.append({text, {}});
    }
    m_answers[line] = answers;
}

void ScriptedBench::setAnswers(const QHash<QByteArray, QByteArray>& textsByLine)
{
    for (auto it = textsByLine.cbegin(); it != textsByLine.cend(); ++it) {
        setAnswer(it.key(), it.value());
    }
}

QList<QByteArray> ScriptedBench::lines() const
{
    QList<QByteArray> lines;
    for (const Received& entry : m_received) {
        lines.append(entry.line);
    }
    return lines;
}

int ScriptedBench::count(const QByteArray& line) const
{
    const auto found = std::count_if(m_received.cbegin(), m_received.cend(),
                                     [&line](const Received& entry) { return entry.line == line; });
    return static_cast<int>(found);
}

bool ScriptedBench::waitForLine(const QByteArray& line, int times, std::chrono::milliseconds timeout) const
{
    return QTest::qWaitFor([this, line, times] { return count(line) >= times; },
                           static_cast<int>(timeout.count()));
}

Simulator::Answer ScriptedBench::answer(const QByteArray& line)
{
    if (m_responder) {
        if (const auto special = m_responder(line)) {
            return *special;
        }
    }
    const auto found = m_answers.find(line);
    if (found == m_answers.end()) {
        return line.isEmpty() ? Simulator::Answer{} : m_default;
    }
    if (found->isEmpty()) {
        return {};
    }
    return found->size() > 1 ? found->takeFirst() : found->first();
}
