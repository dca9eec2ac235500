#pragma once

#include "Simulator/ModelTypes.h"

#include <QByteArray>

#include <vector>

namespace Simulator {

class IlluminatorModel;

/// One command of the line protocol.
struct Command
{
    enum class Kind {
        Query, ///< asks only, and leaves the sleep timer alone
        Change,
    };
    enum class Where {
        EveryImage,
        Application, ///< the other images keep quiet
        Loader,      ///< the other images refuse
        Loaders,     ///< the loader and its updater; the application refuses
    };

    /// The whole line; a key that ends in "=" or ":" is the line's beginning and the rest its argument.
    const char* key;
    Kind kind;
    Where where;
    Reply (*carryOut)(IlluminatorModel& model, const QByteArray& argument);
};

/// The command that the line calls, or null.
const Command* findCommand(const QByteArray& line);

// The commands by concern, each in a file of its own.
const std::vector<Command>& identityCommands();
const std::vector<Command>& statusCommands();
const std::vector<Command>& settingCommands();
const std::vector<Command>& recordCommands();
const std::vector<Command>& memoryCommands();

} // namespace Simulator
