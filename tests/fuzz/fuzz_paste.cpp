// Any text as a pasted block. What is taken stays the same when it is written as a block and read again.

#include "FuzzInput.h"
#include "settings/NovalumBlock.h"

#include <QString>

namespace {
QString textOf(const NovalumBlock& block)
{
    QString text;
    for (const auto& row : block) {
        for (std::size_t column = 0; column < row.size(); ++column)
            text += QString::number(row[column]) + QLatin1Char(column + 1 < row.size() ? '\t' : '\n');
    }
    return text;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto block = parseNovalumBlock(QString::fromUtf8(fuzzInput(data, size)));
    if (block)
        require(parseNovalumBlock(textOf(*block)) == block);
    return 0;
}
