#pragma once

#include <QByteArray>

#include <optional>

namespace Simulator {

/// One S-record line as a programmer sends it.
struct SRecordLine
{
    int type = 0;        ///< 0 to 9 without 4 and 6
    quint32 address = 0; ///< of S0 usually 0, of S5 the number of records
    QByteArray data;     ///< empty for the types that end or count: S5, S7, S8, S9

    bool carriesData() const { return type >= 1 && type <= 3; }
    bool endsImage() const { return type >= 7 && type <= 9; }
    /// Address of the first byte behind the data; wider than an address, since that may not be one any more.
    quint64 end() const { return quint64(address) + static_cast<quint64>(data.size()); }
};

/// Takes the line without its end, digits of either case. No value for a type nobody uses, a count that is
/// not that of the line or smaller than the type needs, data where the type has none, a character that is no
/// hex digit, and a wrong checksum.
std::optional<SRecordLine> parseSRecordLine(const QByteArray& line);

} // namespace Simulator
