#pragma once

#include <QByteArray>

#include <optional>

namespace Simulator {

/// Something that the device does about one line instead of answering it as it should.
struct Trap
{
    enum class Action {
        NoReply,  ///< says nothing
        Refuse,   ///< refuses
        Garbage,  ///< answers with bytes that mean nothing
        CutPower, ///< loses its power, until told to be switched on again
        Unplug,   ///< has its cable pulled, and stays switched on
    };
    QByteArray match;  ///< the beginning of the lines that count; empty for every line
    int countdown = 1; ///< it goes off at this one of them, 1 for the next
    Action action = Action::NoReply;
    bool carriesOut = false; ///< does first what the line asks for; a line to be refused never is
};

/// Waits for the line at which a trap goes off, once.
class LineTrap
{
public:
    void set(const Trap& trap) { m_trap = trap; } ///< in place of one that is set
    void clear() { m_trap.reset(); }
    bool isSet() const { return m_trap.has_value(); }

    /// The trap that goes off at this line. A blank one is none.
    std::optional<Trap> strike(const QByteArray& line);

private:
    std::optional<Trap> m_trap;
};

} // namespace Simulator
