#pragma once

#include <QColor>
#include <QString>

#include <optional>

class QSettings;
class channel;

/// What is kept of one channel. Shutters are not kept: a program that starts opens none.
struct ChannelSettings
{
    QString name;
    float intensity = 0.0F; ///< percent, 0 to 100
    bool visible = true;
    bool ttlInverted = false;
    QColor colour;
};

/// The values of the channel as they are now.
ChannelSettings settingsOf(const channel& laser);

// Channels count from 0. Each has a group of its own, "Channel1" to "Channel8", below @p parentGroup, which
// is empty for the top of the store.
/// Every value within its range whatever the store holds; defaults where it holds nothing.
ChannelSettings readChannelSettings(const QSettings& store, const QString& parentGroup, int index);
/// Nothing where any of the values is missing, or is not one that could have been written.
std::optional<ChannelSettings> readWholeChannelSettings(const QSettings& store, const QString& parentGroup,
                                                        int index);
void writeChannelSettings(QSettings& store, const QString& parentGroup, int index,
                          const ChannelSettings& channel);

/// A key of the channel's group, for what others keep beside the above.
QString channelKey(const QString& parentGroup, int index, const char* key);

namespace StoredValue {
/// What was written as true or false; nothing for anything else, and where nothing is stored.
std::optional<bool> asBool(const QSettings& store, const QString& key);
/// The same with a default: a text that is neither true nor false would count as true by itself.
bool toBool(const QSettings& store, const QString& key, bool fallback);
} // namespace StoredValue
