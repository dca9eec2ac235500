#include "settings/CalibrationFile.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cstddef>
#include <optional>

namespace {
using File = SystemConfigField::FileType;

const QLatin1String necselSection("Necsel Parameters");
const QLatin1String fanSection("Fan Control Parameters");
const QLatin1String heaterSection("Heater Control Parameters");
const QLatin1String novalumSection("Novalum Parameters");
const QLatin1String channelArray("Channel Parameters");

/// Under these names some files keep the channels, by position; the device's wiring fixes the order.
constexpr std::array<const char*, novalumChannelCount> wavelengths{"445", "520", "730", "640",
                                                                   "405", "470", "528"};

/// The objects of a file in which the fields lie.
struct Sections
{
    QJsonObject top;
    QJsonObject necsel;
    QJsonObject fan;
    QJsonObject heater;
    QJsonObject novalum;
    std::array<std::optional<QJsonObject>, novalumChannelCount> channels; ///< none where a file has none
};

/// Null for a channel that is not there.
QJsonObject* objectOf(const ConfigCell& cell, Sections& sections)
{
    switch (cell.table) {
    case ConfigTable::Necsel:
        return &sections.necsel;
    case ConfigTable::Fan:
        return &sections.fan;
    case ConfigTable::Heater:
        return &sections.heater;
    case ConfigTable::Jiggler:
        return &sections.top;
    case ConfigTable::NovalumOverTemperature:
        return &sections.novalum;
    case ConfigTable::Novalum: {
        auto& channel = sections.channels[static_cast<std::size_t>(cell.column)];
        return channel ? &*channel : nullptr;
    }
    }
    return nullptr;
}

QJsonValue valueOf(const QString& text, File type)
{
    switch (type) {
    case File::Real:
        return static_cast<double>(realOfText(text));
    case File::Signed32:
        return text.toInt();
    case File::Unsigned16:
        return text.toUShort();
    }
    return {};
}

/// The library's own conversions give 0 for what is missing, no number, or no whole number.
QString textOf(const QJsonValue& value, bool asReal)
{
    return asReal ? realText(value.toDouble()) : QString::number(value.toInt());
}

QJsonObject joined(const Sections& sections, const QStringList& columnHeaders)
{
    QJsonArray channels;
    for (int column = 0; column < novalumChannelCount; ++column) {
        const auto& channel = sections.channels[static_cast<std::size_t>(column)];
        channels.append(QJsonObject{{columnHeaders.value(column), channel.value_or(QJsonObject())}});
    }
    QJsonObject novalum = sections.novalum;
    novalum.insert(channelArray, channels);

    QJsonObject root = sections.top;
    root.insert(necselSection, sections.necsel);
    root.insert(fanSection, sections.fan);
    root.insert(heaterSection, sections.heater);
    root.insert(novalumSection, novalum);
    return root;
}

/// The channel of one element of the file's array, if it is that of the column.
std::optional<QJsonObject> channelOf(const QJsonObject& element, int column, const QString& header)
{
    QJsonValue channel = element.value(header);
    if (channel.isUndefined() || channel.isNull())
        channel = element.value(QLatin1String(wavelengths[static_cast<std::size_t>(column)]));
    if (!channel.isObject())
        return std::nullopt;
    return channel.toObject();
}

Sections separated(const QJsonObject& root, const QStringList& columnHeaders)
{
    Sections sections;
    sections.top = root;
    sections.necsel = root.value(necselSection).toObject();
    sections.fan = root.value(fanSection).toObject();
    sections.heater = root.value(heaterSection).toObject();
    sections.novalum = root.value(novalumSection).toObject();
    const QJsonArray channels = sections.novalum.value(channelArray).toArray();
    // An element belongs to the column of its own position alone; what stands behind the last has none.
    for (int column = 0; column < novalumChannelCount && column < channels.size(); ++column) {
        sections.channels[static_cast<std::size_t>(column)] =
            channelOf(channels.at(column).toObject(), column, columnHeaders.value(column));
    }
    return sections;
}
} // namespace

QByteArray CalibrationFile::toJson(const SystemConfigTexts& texts, const QStringList& columnHeaders)
{
    Sections sections;
    sections.channels.fill(QJsonObject());
    std::size_t index = 0;
    for (const SystemConfigField& field : systemConfigFields()) {
        const QString& text = texts[index++];
        if (QJsonObject* object = objectOf(field.cell, sections))
            object->insert(QLatin1String(field.member), valueOf(text, field.written));
    }
    return QJsonDocument(joined(sections, columnHeaders)).toJson(QJsonDocument::Indented);
}

bool CalibrationFile::fromJson(const QByteArray& json, const QStringList& columnHeaders,
                               SystemConfigTexts& texts)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return false;
    Sections sections = separated(document.object(), columnHeaders);
    std::size_t index = 0;
    for (const SystemConfigField& field : systemConfigFields()) {
        QString& text = texts[index++];
        if (const QJsonObject* object = objectOf(field.cell, sections))
            text = textOf(object->value(QLatin1String(field.member)), field.readAsReal);
    }
    return true;
}

bool CalibrationFile::write(const QString& pathName, const QByteArray& json)
{
    const QFileInfo target(pathName);
    // The finished file takes the target's place: a pipe or a device node must not be replaced by it.
    if (pathName.isEmpty() || (target.exists() && !target.isFile()))
        return false;
    if (!QDir().mkpath(target.absolutePath()))
        return false;
    // No direct writing: a full disk would leave half a file in place of the old one. What waits in the
    // buffer is written here, as commit() would not tell that it could not be.
    QSaveFile file(pathName);
    return file.open(QIODevice::WriteOnly) && file.write(json) == json.size() && file.flush() &&
           file.commit();
}
