#pragma once

#include "Simulator/CommandArguments.h"
#include "Simulator/CommandInterpreter.h"

#include <QStringList>

// The commands that take a single word of the same kind: they hand its value to `use`, or tell that it makes
// no sense and do nothing.

namespace Simulator {

/// The word is "on" or "off".
template<typename Use>
Outcome withSwitch(const QStringList& words, const Use& use)
{
    const auto on = Arguments::choice(words.first(), "on", "off");
    if (!on) {
        return Outcome::badArgument(words.first());
    }
    use(*on);
    return {};
}

/// The word is a time.
template<typename Use>
Outcome withTime(const QStringList& words, const Use& use)
{
    const auto time = Arguments::time(words.first());
    if (!time) {
        return Outcome::badArgument(words.first());
    }
    use(*time);
    return {};
}

} // namespace Simulator
