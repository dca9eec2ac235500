#include "scenario/ScenarioValues.h"

#include "mainwindow/ChannelTable.h"

#include <QSettings>
#include <QUrl>

namespace {
constexpr char shutterKey[] = "Channel Shutter";
} // namespace

bool operator==(const ScenarioChannel& a, const ScenarioChannel& b)
{
    return a.settings.name == b.settings.name && a.settings.intensity == b.settings.intensity &&
           a.settings.visible == b.settings.visible && a.settings.ttlInverted == b.settings.ttlInverted &&
           ChannelTable::colourToText(a.settings.colour) == ChannelTable::colourToText(b.settings.colour) &&
           a.shutterOpen == b.shutterOpen;
}

QString scenarioGroup(const QString& name)
{
    // Capital letters are encoded, too: not every platform's store tells them from small ones.
    QString key = QString::fromLatin1(
        QUrl::toPercentEncoding(name, QByteArray(), QByteArrayLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZ")));
    if (name.isEmpty() || QUrl::fromPercentEncoding(key.toLatin1()) != name) {
        // Half of a surrogate pair is lost in UTF-8; such names are told apart by their units. The sign in
        // front is one that the encoding above never leaves bare.
        key = QLatin1Char('+');
        for (const QChar unit : name) {
            key += QString::number(unit.unicode(), 16).rightJustified(4, QLatin1Char('0'));
        }
    }
    return QLatin1String("Scenario Values/") + key;
}

std::optional<ScenarioValues> readScenarioValues(const QSettings& store, const QString& name)
{
    const QString group = scenarioGroup(name);
    ScenarioValues values;
    for (int index = 0; index < channelCount; ++index) {
        const auto settings = readWholeChannelSettings(store, group, index);
        const auto shutter = StoredValue::asBool(store, channelKey(group, index, shutterKey));
        if (!settings || !shutter) {
            return std::nullopt;
        }
        values.at(static_cast<std::size_t>(index)) = {*settings, *shutter};
    }
    return values;
}

void writeScenarioValues(QSettings& store, const QString& name, const ScenarioValues& values)
{
    const QString group = scenarioGroup(name);
    for (int index = 0; index < channelCount; ++index) {
        const ScenarioChannel& channel = values.at(static_cast<std::size_t>(index));
        writeChannelSettings(store, group, index, channel.settings);
        store.setValue(channelKey(group, index, shutterKey), channel.shutterOpen);
    }
}
