#include "settings/NovalumBlock.h"

#include "QsLog2_1_0/QsLog.h"

#include <QStringList>

#include <cstddef>

namespace {
using NovalumValues = std::array<int, novalumChannelCount>;

/// All fields are looked at even when one is wrong, so that the trace shows every one that is.
bool parseRow(int row, const QString& text, NovalumValues& values)
{
    // Counted before it is cut up: a clipboard of any size costs no more than its own length.
    if (text.count(QLatin1Char('\t')) != novalumChannelCount - 1)
        return false;
    bool allParse = true;
    const QStringList fields = text.split(QLatin1Char('\t'));
    for (int index = 0; index < novalumChannelCount; ++index) {
        QS_TRACE() << "Data" << row << index << fields.at(index);
        bool parses = false;
        // The carriage return of a foreign line end goes with the blanks.
        values[static_cast<std::size_t>(index)] = fields.at(index).trimmed().toInt(&parses);
        // Some of Qt's releases read a number up to a zero character.
        allParse = allParse && parses && !fields.at(index).contains(QChar(QChar::Null));
    }
    return allParse;
}
} // namespace

std::optional<NovalumBlock> parseNovalumBlock(const QString& text)
{
    QS_TRACE() << "Pasting data into Novalum param table:" << text;
    if (text.count(QLatin1Char('\n')) != novalumRowCount)
        return std::nullopt;
    const QStringList rows = text.split(QLatin1Char('\n'));
    NovalumBlock block{};
    bool allParse = true;
    for (int row = 0; row < novalumRowCount; ++row) {
        QS_TRACE() << "Row" << row << rows.at(row);
        const bool parses = parseRow(row, rows.at(row), block[static_cast<std::size_t>(row)]);
        allParse = allParse && parses;
    }
    return allParse ? std::optional(block) : std::nullopt;
}
