#pragma once

#include <QColor>
#include <QString>

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
void writeChannelSettings(QSettings& store, const QString& parentGroup, int index,
                          const ChannelSettings& channel);

namespace StoredValue {
/// A text that is neither true nor false would count as true by itself; here it counts as not stored.
bool toBool(const QSettings& store, const QString& key, bool fallback);
} // namespace StoredValue
