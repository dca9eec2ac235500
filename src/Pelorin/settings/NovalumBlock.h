#pragma once

#include "settings/SystemConfigFields.h"

#include <QString>

#include <array>
#include <optional>

/// Rows of the Novalum table, each with a value per channel.
using NovalumBlock = std::array<std::array<int, novalumChannelCount>, novalumRowCount>;

/// What a spreadsheet copies of 12 rows by 7 columns: fields with tabs between them, rows ended by line
/// feeds. No value for anything else. Traces what it reads.
std::optional<NovalumBlock> parseNovalumBlock(const QString& text);
