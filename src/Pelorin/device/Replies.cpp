#include "device/Replies.h"

#include "device/ResultCodes.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <optional>

namespace {
constexpr uint maxVersionPart = 255;

/// `text` without `part`, wherever and in whatever case it stands.
QString without(QString text, const QString& part)
{
    return text.remove(part, Qt::CaseInsensitive);
}

QString withoutLineFeeds(QString text)
{
    return text.remove(QLatin1Char('\n'));
}

bool contains(const QString& text, const QString& part)
{
    return text.contains(part, Qt::CaseInsensitive);
}

bool same(const QString& left, const char* right)
{
    return left.compare(QLatin1String(right), Qt::CaseInsensitive) == 0;
}

/// The items of a list reply, at most one per channel.
QStringList channelItems(const QString& reply, const QString& prefix)
{
    return without(withoutLineFeeds(reply), prefix).split(QLatin1Char(',')).mid(0, channelCount);
}

QString valueOf(const QString& item)
{
    const auto equals = item.indexOf(QLatin1Char('='));
    return equals < 0 ? QString() : item.mid(equals + 1);
}

float numberOf(const QString& item)
{
    bool converted = false;
    const float number = valueOf(item).toFloat(&converted);
    return converted ? number : 0.0F;
}

int flagReport(const QString& reply, const QString& marker, StateReport& report)
{
    report.message = withoutLineFeeds(reply);
    if (same(report.message, "ok")) {
        report.active = false;
        return DeviceResult::Ok;
    }
    // The marker is spelled in capitals by the device; any other spelling is some other text.
    if (!report.message.contains(marker))
        return DeviceResult::MarkerMissing;
    report.active = true;
    return DeviceResult::Ok;
}

int numberList(const QString& reply, const QString& prefix, std::array<float, channelCount>& numbers)
{
    if (!contains(reply, prefix))
        return DeviceResult::MarkerMissing;
    const QStringList items = channelItems(reply, prefix);
    std::transform(items.begin(), items.end(), numbers.begin(), numberOf);
    return DeviceResult::Ok;
}

int wordList(const QString& reply, const QString& prefix, const QString& word,
             std::array<bool, channelCount>& flags)
{
    if (!contains(reply, prefix))
        return DeviceResult::NotUnderstood;
    const QStringList items = channelItems(reply, prefix);
    std::transform(items.begin(), items.end(), flags.begin(),
                   [&word](const QString& item) { return contains(item, word); });
    return DeviceResult::Ok;
}

QString* temperatureField(Temperatures& readings, const QString& name)
{
    if (same(name, "Necsel"))
        return &readings.necsel;
    if (same(name, "Novalum1"))
        return &readings.novalum1;
    if (same(name, "Novalum2"))
        return &readings.novalum2;
    if (same(name, "LaserFan"))
        return &readings.laserFan;
    if (same(name, "Heater"))
        return &readings.heater;
    if (same(name, "LaserCurrent"))
        return &readings.laserCurrent;
    return nullptr;
}

QString* productField(ProductConfig& record, const QString& key)
{
    if (same(key, "vyr_hw_ver"))
        return &record.hardwareVersion;
    if (same(key, "vyr_pn"))
        return &record.partNumber;
    if (same(key, "vyr_sn"))
        return &record.serialNumber;
    if (same(key, "necsel_laser_sn"))
        return &record.necselSerialNumber;
    if (same(key, "novalum_sn"))
        return &record.novalumSerialNumber;
    return nullptr;
}

/// Every "name=value" item goes to the field that `fieldOf` finds for its name; the others are left out.
template<typename Record>
void fillFields(const QString& list, Record& record, QString* (*fieldOf)(Record&, const QString&))
{
    const QStringList items = list.split(QLatin1Char(','));
    for (const QString& item : items) {
        const auto equals = item.indexOf(QLatin1Char('='));
        if (equals < 0)
            continue;
        if (QString* field = fieldOf(record, item.left(equals).trimmed()))
            *field = item.mid(equals + 1);
    }
}

/// "V" and three numbers of one byte each; 0.0.0 for anything else.
std::optional<FirmwareVersion> versionOf(const QString& text)
{
    const QStringList parts =
        without(withoutLineFeeds(text), QStringLiteral("V")).trimmed().split(QLatin1Char('.'));
    std::array<uint, 3> numbers{};
    if (parts.size() != static_cast<int>(numbers.size()))
        return std::nullopt;
    for (size_t i = 0; i < numbers.size(); ++i) {
        bool converted = false;
        numbers[i] = parts[static_cast<int>(i)].toUInt(&converted);
        if (!converted || numbers[i] > maxVersionPart)
            return std::nullopt;
    }
    return FirmwareVersion{static_cast<quint16>(numbers[0]), static_cast<quint8>(numbers[1]),
                           static_cast<quint8>(numbers[2])};
}

bool isKnownKind(const QString& kind)
{
    constexpr std::array<const char*, 4> kinds{"Loader", "LoaderUpdater", "VYRApp", "Unknown"};
    return std::any_of(kinds.begin(), kinds.end(),
                       [&kind](const char* known) { return kind == QLatin1String(known); });
}
} // namespace

int Replies::functionalMode(const QString& reply, FunctionalMode_t& mode)
{
    QString word = without(reply, QStringLiteral("f_mode="));
    word = withoutLineFeeds(word.remove(QLatin1Char('=')));
    if (same(word, "idle"))
        mode = FunctionalModeIdle;
    else if (same(word, "run"))
        mode = FunctionalModeRun;
    else if (same(word, "warmup"))
        mode = FunctionalModeWarmup;
    else
        return DeviceResult::NotUnderstood;
    return DeviceResult::Ok;
}

int Replies::sleepTime(const QString& reply, quint8& minutes)
{
    const QString key = QStringLiteral("sleep=");
    // A reply without the key is converted as it stands.
    const QString number = contains(reply, key) ? withoutLineFeeds(without(reply, key)) : reply;
    bool converted = false;
    const uint value = number.toUInt(&converted);
    if (!converted || value > uint(maximumSleepMinutes))
        return DeviceResult::NotUnderstood;
    minutes = static_cast<quint8>(value);
    return DeviceResult::Ok;
}

int Replies::intensitySource(const QString& reply, ControlSource& source)
{
    const QString word = withoutLineFeeds(without(reply, QStringLiteral("int_mode=")));
    if (same(word, "EXT"))
        source = ControlSource::External;
    else if (same(word, "PC"))
        source = ControlSource::Host;
    else
        return DeviceResult::NotUnderstood;
    return DeviceResult::Ok;
}

int Replies::fault(const QString& reply, StateReport& report)
{
    return flagReport(reply, QStringLiteral("FAULT:"), report);
}

int Replies::warning(const QString& reply, StateReport& report)
{
    return flagReport(reply, QStringLiteral("WARN:"), report);
}

int Replies::hours(const QString& reply, OperatingHours& hours)
{
    return numberList(reply, QStringLiteral("hours:"), hours);
}

int Replies::shutterStates(const QString& reply, ShutterStates& states)
{
    return wordList(reply, QStringLiteral("shutter:"), QStringLiteral("open"), states);
}

int Replies::ttlInvertStates(const QString& reply, TtlInvertStates& states)
{
    return wordList(reply, QStringLiteral("ttl_invert:"), QStringLiteral("on"), states);
}

int Replies::intensityLevels(const QString& reply, IntensityLevels& levels)
{
    return numberList(reply, QStringLiteral("set:"), levels);
}

int Replies::temperatures(const QString& reply, Temperatures& readings)
{
    const QString key = QStringLiteral("temps");
    if (!contains(reply, key))
        return DeviceResult::MarkerMissing;
    QString list = withoutLineFeeds(without(reply, key));
    fillFields(list.remove(QLatin1Char(':')), readings, temperatureField);
    return DeviceResult::Ok;
}

int Replies::imageVersion(const QString& reply, ImageVersion& image)
{
    const QStringList parts = reply.split(QLatin1Char(' '));
    if (parts.size() != 2)
        return DeviceResult::NotUnderstood;
    const std::optional<FirmwareVersion> version = versionOf(parts[1]);
    // Two words without a version may be a late answer to something else; taken for an image they would stay,
    // as an image that is told is not asked for again.
    if (!version && !isKnownKind(parts[0]))
        return DeviceResult::NotUnderstood;
    image.kind = parts[0];
    image.version =
        image.kind == QLatin1String("Unknown") ? FirmwareVersion{} : version.value_or(FirmwareVersion{});
    return DeviceResult::Ok;
}

bool Replies::isYes(const QString& reply)
{
    return same(withoutLineFeeds(reply), "Yes");
}

bool Replies::tellsFirmwareUpdate(const QString& reply)
{
    return contains(reply, QStringLiteral("Firmware Update"));
}

bool Replies::keyedText(const QString& reply, const QString& key, QString& text)
{
    if (!contains(reply, key))
        return false;
    text = withoutLineFeeds(without(reply, key).remove(QLatin1Char('=')));
    return true;
}

int Replies::productConfig(const QString& reply, ProductConfig& record)
{
    const auto colon = reply.indexOf(QLatin1Char(':'));
    if (!contains(reply, QStringLiteral("prod_config")) || colon < 0)
        return DeviceResult::MarkerMissing;
    fillFields(withoutLineFeeds(reply.mid(colon + 1)), record, productField);
    return DeviceResult::Ok;
}
