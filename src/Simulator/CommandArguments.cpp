#include "Simulator/CommandArguments.h"

#include "Simulator/Wire.h"

namespace Simulator::Arguments {
namespace {
constexpr int kMaxTimeMs = 24 * 60 * 60 * 1000;
} // namespace

std::optional<int> channel(const QString& word)
{
    return channelByName(word.toUtf8());
}

std::optional<bool> choice(const QString& word, const char* yes, const char* no)
{
    if (word == QLatin1String(yes)) {
        return true;
    }
    if (word == QLatin1String(no)) {
        return false;
    }
    return std::nullopt;
}

std::optional<double> number(const QString& word)
{
    bool ok = false;
    const double value = word.toDouble(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

std::optional<int> wholeNumber(const QString& word)
{
    bool ok = false;
    const int value = word.toInt(&ok);
    return ok && value >= 0 ? std::optional(value) : std::nullopt;
}

std::optional<std::chrono::milliseconds> time(const QString& word)
{
    const auto value = wholeNumber(word);
    return value && *value <= kMaxTimeMs ? std::optional(std::chrono::milliseconds(*value)) : std::nullopt;
}

std::optional<int> count(const QString& word)
{
    if (word == QLatin1String("forever")) {
        return WireFault::kForever;
    }
    const auto value = wholeNumber(word);
    return value && *value > 0 ? value : std::nullopt;
}

std::optional<QByteArray> hexBytes(const QString& word)
{
    const QByteArray digits = word.toLatin1().toLower();
    const QByteArray bytes = QByteArray::fromHex(digits);
    // fromHex skips what is no digit; only what comes out the same again was meant.
    return !bytes.isEmpty() && bytes.toHex() == digits ? std::optional(bytes) : std::nullopt;
}

std::optional<Image> image(const QString& word)
{
    if (word == QLatin1String("loader")) {
        return Image::Loader;
    }
    if (word == QLatin1String("updater")) {
        return Image::LoaderUpdater;
    }
    if (word == QLatin1String("application")) {
        return Image::Application;
    }
    return std::nullopt;
}

QByteArray match(const QString& word)
{
    return word == QLatin1String("*") ? QByteArray() : word.toUtf8();
}

QString freeText(const QStringList& words)
{
    return words.join(QLatin1Char(' '));
}

} // namespace Simulator::Arguments
