#include "Simulator/LineAssembler.h"

namespace Simulator {

QList<QByteArray> LineAssembler::feed(const QByteArray& bytes)
{
    QList<QByteArray> lines;
    for (const char byte : bytes) {
        const bool secondHalfOfEnd = byte == '\n' && m_lastWasReturn;
        m_lastWasReturn = byte == '\r';
        if (secondHalfOfEnd) {
            continue;
        }
        if (byte != '\n' && byte != '\r') {
            take(byte);
            continue;
        }
        if (!m_tooLong) {
            lines.append(m_line);
        }
        m_line.clear();
        m_tooLong = false;
    }
    return lines;
}

void LineAssembler::reset()
{
    *this = LineAssembler();
}

void LineAssembler::take(char byte)
{
    if (m_tooLong) {
        return;
    }
    if (m_line.size() >= kMaxLineBytes) {
        // The rest of an endless line must not pass for a line of its own.
        m_line.clear();
        m_tooLong = true;
        return;
    }
    m_line.append(byte);
}

} // namespace Simulator
