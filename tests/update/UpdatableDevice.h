#pragma once

#include "mainwindow/WindowBench.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <chrono>
#include <functional>
#include <optional>

/// Puts itself in front of a fake illuminator and answers what an update asks and sends. It believes
/// everything: a release is written and started without a fault unless a test plans another answer.
class UpdatableDevice
{
public:
    explicit UpdatableDevice(FakeIlluminator& illuminator);

    QByteArray running = "VYRApp V2.7.0";     ///< "v"
    QByteArray application = "VYRApp V2.7.0"; ///< "v?a", and what "goapp" starts
    QByteArray loader = "Loader V1.5.0";      ///< "v?l", and what "goloader" starts
    QByteArray controller = "3.4.1";          ///< what comes behind the key of its version
    /// For the lines of an image that have no plan.
    QByteArray lineAnswer = "Wrote";
    std::chrono::milliseconds lineTime{0}; ///< what it takes to write one

    // --- Plans. A line is told by its beginning and counted from 1; questions of an identification do not
    // count, nor do they follow a plan. ------------------------------------------------------------------
    /// Says this instead; nothing at all where it is empty.
    void answer(const QByteArray& beginning, int number, const QByteArray& text);
    /// "goloader" or "goapp" starts this image.
    void start(const QByteArray& command, int number, const QByteArray& image);
    /// Does this when the line has come, before the answer goes out.
    void when(const QByteArray& beginning, int number, const std::function<void()>& what);
    void clearPlans() { m_plans.clear(); }

    /// Every line that is none of an identification, in order.
    const QList<QByteArray>& lines() const { return m_lines; }
    int count(const QByteArray& beginning) const;
    void clearLines() { m_lines.clear(); }
    /// Calls this for each of them, before anything is made of it.
    void setListener(std::function<void(const QByteArray&)> listener) { m_listener = std::move(listener); }

private:
    struct Plan
    {
        QByteArray beginning;
        int number = 0;
        std::optional<QByteArray> text;
        QByteArray image;
        std::function<void()> action;
    };
    std::optional<Simulator::Answer> respond(const QByteArray& line);
    std::optional<QByteArray> ownAnswer(const QByteArray& line);
    std::optional<QByteArray> identityAnswer(const QByteArray& line) const;
    QByteArray write(const QByteArray& line);
    bool noteIdentification(const QByteArray& line);
    std::optional<QByteArray> followPlans(const QByteArray& line);

    FakeIlluminator& m_illuminator;
    QList<Plan> m_plans;
    QList<QByteArray> m_lines;
    QHash<QByteArray, int> m_expected; ///< questions that still come because of "v?l"
    std::function<void(const QByteArray&)> m_listener;
};
