#pragma once

#include "Simulator/ModelTypes.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

// The words of an interpreter command as values. Each gives no value for a word that makes no sense.

namespace Simulator::Arguments {

std::optional<int> channel(const QString& word); ///< "405" ... "730" as 0 to 7
std::optional<bool> choice(const QString& word, const char* yes, const char* no); ///< true for `yes`
std::optional<double> number(const QString& word);                  ///< with a decimal point; "nan" too
std::optional<int> wholeNumber(const QString& word);                ///< 0 or more
std::optional<std::chrono::milliseconds> time(const QString& word); ///< 0 ms to 24 h
std::optional<int> count(const QString& word);           ///< 1 or more; WireFault::kForever for "forever"
std::optional<QByteArray> hexBytes(const QString& word); ///< pairs of hex digits
std::optional<Image> image(const QString& word);         ///< "loader", "updater" or "application"
QByteArray match(const QString& word); ///< "*" is the empty beginning, which fits every line
QString freeText(const QStringList& words);

} // namespace Simulator::Arguments
