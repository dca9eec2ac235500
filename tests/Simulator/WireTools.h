#pragma once

#include "Simulator/Wire.h"

#include <QByteArray>

#include <chrono>

/// Long enough to say that nothing more comes; every use says why silence is expected.
constexpr std::chrono::milliseconds kSilence{60};

/// The device of the wire's tests repeats the line between brackets, so that an answer tells its command.
inline Simulator::Answer echo(const QByteArray& line)
{
    return {'[' + line + "]\n", std::chrono::milliseconds::zero()};
}

inline Simulator::WireFault fault(Simulator::WireFault::Kind kind, int count = 1,
                                  const QByteArray& match = {})
{
    Simulator::WireFault result;
    result.kind = kind;
    result.count = count;
    result.match = match;
    return result;
}
