#include "QsLog2_1_0/TimeStamp.h"

#include <QDateTime>

#include <algorithm>
#include <array>
#include <ctime>
#include <limits>

namespace QsLogging {
namespace {

constexpr QString::size_type secondsLength = 19; // "yyyy-MM-ddThh:mm:ss"

/// The part of a stamp that changes once a second, which is also as often as a change to or from summer
/// time can happen. Formatting it is six times as dear as writing the line it belongs to.
struct SecondsText
{
    qint64 second = std::numeric_limits<qint64>::min();
    std::array<QChar, secondsLength> characters;
};

SecondsText formatSeconds(qint64 second)
{
    SecondsText result;
    const QString text =
        QDateTime::fromSecsSinceEpoch(second).toString(QStringLiteral("yyyy-MM-ddThh:mm:ss"));
    result.second = second;
    result.characters.fill(QLatin1Char('?'));
    // A clock set beyond the year 9999 yields a longer text; the line keeps its form nevertheless.
    std::copy_n(text.begin(), std::min(text.size(), secondsLength), result.characters.begin());
    return result;
}

QChar digit(int value)
{
    return QLatin1Char(static_cast<char>('0' + value % 10));
}

} // namespace

void writeTimeStamp(qint64 msecsSinceEpoch, QChar* target)
{
    thread_local SecondsText cached;

    const qint64 remainder = msecsSinceEpoch % 1000;
    const int milliseconds = static_cast<int>(remainder < 0 ? remainder + 1000 : remainder);
    const qint64 second = (msecsSinceEpoch - milliseconds) / 1000;
    if (second != cached.second) {
        cached = formatSeconds(second);
    }

    target = std::copy(cached.characters.begin(), cached.characters.end(), target);
    *target++ = QLatin1Char('.');
    *target++ = digit(milliseconds / 100);
    *target++ = digit(milliseconds / 10);
    *target = digit(milliseconds);
}

void writeCurrentTimeStamp(QChar* target)
{
    std::timespec now{};
    std::timespec_get(&now, TIME_UTC);
    writeTimeStamp(qint64{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000, target);
}

} // namespace QsLogging
