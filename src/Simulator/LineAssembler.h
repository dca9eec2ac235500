#pragma once

#include <QByteArray>
#include <QList>

namespace Simulator {

/// Cuts a stream of bytes into lines. A line ends at "\n"; a "\r" ends it too, for terminals whose return
/// key sends nothing else, and "\r\n" is one end. Lines come out without their end, empty ones included.
class LineAssembler
{
public:
    static constexpr int kMaxLineBytes = 4096;

    /// The lines that these bytes complete, in order. A line longer than kMaxLineBytes is dropped whole.
    QList<QByteArray> feed(const QByteArray& bytes);
    void reset();

private:
    void take(char byte);

    QByteArray m_line;
    bool m_tooLong = false;
    bool m_lastWasReturn = false;
};

} // namespace Simulator
