#include "Simulator/LineTrap.h"

#include <utility>

namespace Simulator {

std::optional<Trap> LineTrap::strike(const QByteArray& line)
{
    if (!m_trap || line.trimmed().isEmpty() || !line.startsWith(m_trap->match) || --m_trap->countdown > 0) {
        return std::nullopt;
    }
    return std::exchange(m_trap, std::nullopt);
}

} // namespace Simulator
