#pragma once

#include "Simulator/Wire.h"
#include "support/PortRegistration.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QHash>
#include <QList>

#include <chrono>
#include <functional>
#include <optional>

/// A device that says what a test tells it to: a wire, listed as the illuminator's port, with an answer per
/// line. Unpaced, so answers come at once. Every line that arrives is recorded.
class ScriptedBench
{
public:
    /// One line as it came in, without its line feed.
    struct Received
    {
        QByteArray line;
        std::chrono::milliseconds at{0}; ///< since the bench was made
    };
    /// Looks at a line before the table does; no value leaves the line to the table.
    using Responder = std::function<std::optional<Simulator::Answer>(const QByteArray& line)>;

    /// Plugged at once; ask wire().isPlugged() where the system may run out of terminals.
    ScriptedBench();

    Simulator::Wire& wire() { return m_wire; }
    PortRegistration& ports() { return m_ports; }
    QString portName() const { return m_wire.portName(); }

    /// The answer to exactly this line, given every time it comes; text with its line feed, empty = silence.
    void setAnswer(const QByteArray& line, const QByteArray& text, std::chrono::milliseconds thinkTime = {});
    /// Answers to this line given one after the other; the last one stays.
    void setAnswers(const QByteArray& line, const QList<QByteArray>& texts);
    /// Several at once, as setAnswer.
    void setAnswers(const QHash<QByteArray, QByteArray>& textsByLine);
    /// For lines without an answer of their own; silence at first. Empty lines are never answered by it.
    void setDefaultAnswer(const QByteArray& text) { m_default = {text, {}}; }
    void setResponder(Responder responder) { m_responder = std::move(responder); }

    const QList<Received>& received() const { return m_received; }
    QList<QByteArray> lines() const; ///< received() without the times
    int count(const QByteArray& line) const;
    void clearReceived() { m_received.clear(); }
    /// Runs the event loop until the line has come `times` times in all; false when that takes too long.
    bool waitForLine(const QByteArray& line, int times = 1,
                     std::chrono::milliseconds timeout = std::chrono::seconds(5)) const;

private:
    Simulator::Answer answer(const QByteArray& line);

    Simulator::Wire m_wire;
    PortRegistration m_ports{m_wire};
    QHash<QByteArray, QList<Simulator::Answer>> m_answers;
    Simulator::Answer m_default;
    Responder m_responder;
    QElapsedTimer m_clock;
    QList<Received> m_received;
};
