#pragma once

#include <QLatin1String>
#include <QString>

#include <cstring>

namespace QsLogging {

/// True if nothing in `text` needs more than one byte in UTF-8. Looks at four characters at a time: every
/// line is asked on its way, and single steps would show in what a line costs.
inline bool isAscii(const QString& text)
{
    constexpr auto foreignBits = Q_UINT64_C(0xff80ff80ff80ff80);
    constexpr int step = 4;
    const QChar* units = text.constData();
    quint64 found = 0;
    int position = 0;
    for (; position + step <= text.size(); position += step) {
        quint64 four = 0;
        std::memcpy(&four, units + position, sizeof four);
        found |= four;
    }
    for (; position < text.size(); ++position) {
        found |= units[position].unicode();
    }
    return (found & foreignBits) == 0;
}

/// Copies `text` to the `text.size()` characters at `target` and returns true if all of it was ASCII; what
/// was copied is worthless otherwise.
inline bool copyAscii(QLatin1String text, QChar* target)
{
    uchar found = 0;
    for (const char character : text) {
        *target++ = QLatin1Char(character);
        found |= static_cast<uchar>(character);
    }
    return found < 0x80;
}

} // namespace QsLogging
