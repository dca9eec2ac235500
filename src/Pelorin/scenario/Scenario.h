#pragma once

#include "scenario/ScenarioValues.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

class QSettings;
class channel;

/// The program's channels in channel order, and the names of the scenarios that the user has kept. It owns
/// its channels and deletes them when it goes; the settings store is only borrowed and may be null.
class Scenario : public QObject
{
    Q_OBJECT

public:
    Scenario(QObject* parent, QSettings* store);
    ~Scenario() override;

    Scenario(const Scenario&) = delete;
    Scenario& operator=(const Scenario&) = delete;

    /// Takes over @p laser as the next channel of the list; null is ignored.
    void append(channel* laser);
    const QList<channel*>& channels() const { return m_channels; }
    /// The channel by its number, counting from 1; null for 0 and for a number above the list's length.
    channel* channelByNumber(quint8 number) const;

    /// The stored scenario names in the order in which they were added; empty without a store.
    QStringList names() const;
    /// Adds @p name behind the others. A name that is already there (compared exactly) changes nothing.
    void addName(const QString& name);
    /// What was saved under @p name; nothing where that is missing, damaged or incomplete.
    std::optional<ScenarioValues> values(const QString& name) const;
    /// Adds the name, keeps the values under it and brings both to the disk. False, with the store as it was
    /// before, when that did not work or when a value is out of its range.
    bool save(const QString& name, const ScenarioValues& values);

public slots:
    // Each stores one value in the given channel: false, and nothing stored, when there is no channel.
    bool setChannelName(channel* laser, const QString& name);
    bool setChannelIntensity(channel* laser, float percent);
    bool setChannelShutter(channel* laser, bool open);
    bool setChannelShutterTTLInvertEnable(channel* laser, bool inverted);

private:
    QList<channel*> m_channels;
    QSettings* m_store;
};
