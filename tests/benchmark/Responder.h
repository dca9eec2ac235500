#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace Simulator {
class Pty;
}

namespace Bench {

/// Pseudo-terminals with one thread behind them that answers each command at once, and as cheaply as can be:
/// so that what is measured is the asking. The one thread serves all of them, as where it runs, and how fast
/// it wakes there, must be the same for all who are compared. Knows enough answers to be identified as an
/// illuminator.
class Responder
{
public:
    explicit Responder(int terminals);
    ~Responder();

    Responder(const Responder&) = delete;
    Responder& operator=(const Responder&) = delete;
    Responder(Responder&&) = delete;
    Responder& operator=(Responder&&) = delete;

    /// Counts from 0; empty when the system did not give that many terminals.
    QString portName(int index) const;

private:
    void run();

    std::vector<std::unique_ptr<Simulator::Pty>> m_terminals;
    std::atomic<bool> m_end{false};
    std::thread m_thread;
};

/// The other side of such a terminal by the plainest means: write, poll, read.
class PlainLine
{
public:
    explicit PlainLine(const QString& portName);
    ~PlainLine();

    PlainLine(const PlainLine&) = delete;
    PlainLine& operator=(const PlainLine&) = delete;
    PlainLine(PlainLine&&) = delete;
    PlainLine& operator=(PlainLine&&) = delete;

    /// The answer, with its line feed; empty when something went wrong.
    QByteArray ask(const QByteArray& command) const;

private:
    int m_file;
};

} // namespace Bench
