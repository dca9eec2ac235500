#include "InputLines.h"

#include <array>
#include <cerrno>
#include <unistd.h>

namespace Simulator {

InputLines::InputLines(QObject* parent) : QObject(parent), m_notifier(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &InputLines::read);
}

void InputLines::read()
{
    std::array<char, 4096> chunk{};
    const ssize_t count = ::read(STDIN_FILENO, chunk.data(), chunk.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        return;
    }
    if (count > 0) {
        m_rest.append(chunk.data(), static_cast<int>(count));
    }
    const bool atEnd = count <= 0;
    if (atEnd && !m_rest.isEmpty()) {
        m_rest.append('\n');
    }
    for (auto end = m_rest.indexOf('\n'); end >= 0; end = m_rest.indexOf('\n')) {
        const QString line = QString::fromUtf8(m_rest.left(end));
        m_rest.remove(0, end + 1);
        emit lineRead(line);
    }
    if (atEnd) {
        m_notifier.setEnabled(false);
        emit ended();
    }
}

} // namespace Simulator
