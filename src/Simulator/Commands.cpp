#include "Simulator/Commands.h"

#include <array>

namespace Simulator {
namespace {
bool takesArgument(const QByteArray& key)
{
    return key.endsWith('=') || key.endsWith(':');
}

bool calls(const QByteArray& line, const char* key)
{
    return takesArgument(key) ? line.startsWith(key) : line == key;
}
} // namespace

const Command* findCommand(const QByteArray& line)
{
    static const std::array<const std::vector<Command>*, 5> all{
        &identityCommands(), &statusCommands(), &settingCommands(), &recordCommands(), &memoryCommands()};
    for (const auto* commands : all) {
        for (const Command& command : *commands) {
            if (calls(line, command.key)) {
                return &command;
            }
        }
    }
    return nullptr;
}

} // namespace Simulator
