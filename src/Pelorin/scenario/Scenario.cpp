#include "scenario/Scenario.h"

#include "compat/QtVersion.h"
#include "mainwindow/SettingsStore.h"
#include "mainwindow/channel.h"

#include <QHash>
#include <QSettings>
#include <QVariant>

#include <algorithm>
#include <vector>

namespace {
constexpr char arrayName[] = "Scenarios";
constexpr char nameKey[] = "Scenario Name";

using StoredKeys = QHash<QString, QVariant>;

/// What the user's own store has below the groups; a default of the whole computer is not his to put back.
StoredKeys keysBelow(QSettings& store, const QStringList& groups)
{
    const bool fallbacks = store.fallbacksEnabled();
    store.setFallbacksEnabled(false);
    StoredKeys keys;
    for (const QString& group : groups) {
        store.beginGroup(group);
        const QStringList names = store.allKeys();
        store.endGroup();
        for (const QString& name : names) {
            const QString key = group + QLatin1Char('/') + name;
            keys.insert(key, store.value(key));
        }
    }
    store.setFallbacksEnabled(fallbacks);
    return keys;
}

void putBack(QSettings& store, const QStringList& groups, const StoredKeys& keys)
{
    const QStringList present = keysBelow(store, groups).keys();
    for (const QString& key : present) {
        if (!keys.contains(key)) {
            store.remove(key);
        }
    }
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        store.setValue(key.key(), key.value());
    }
}

/// The numbers (from 1) of the elements that are really there, in order. The length beside them is not asked:
/// a damaged one would hide scenarios and have the next one written over them, or have the reader walk
/// through millions of elements that nobody wrote.
std::vector<int> elementNumbers(QSettings& store)
{
    std::vector<int> numbers;
    store.beginGroup(QLatin1String(arrayName));
    const QStringList groups = store.childGroups();
    store.endGroup();
    for (const QString& group : groups) {
        const int number = group.toInt();
        if (number >= 1) {
            numbers.push_back(number);
        }
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}
} // namespace

Scenario::Scenario(QObject* parent, QSettings* store) : QObject(parent), m_store(store) {}

Scenario::~Scenario()
{
    qDeleteAll(m_channels);
}

void Scenario::append(channel* laser)
{
    if (laser != nullptr) {
        m_channels.append(laser);
    }
}

channel* Scenario::channelByNumber(quint8 number) const
{
    return number == 0 ? nullptr : m_channels.value(number - 1, nullptr);
}

QStringList Scenario::names() const
{
    QStringList list;
    if (m_store == nullptr) {
        return list;
    }
    for (const int number : elementNumbers(*m_store)) {
        const QString key =
            QStringLiteral("%1/%2/%3").arg(QLatin1String(arrayName)).arg(number).arg(QLatin1String(nameKey));
        list.append(QtVersion::storedText(m_store->value(key)));
    }
    return list;
}

void Scenario::addName(const QString& name)
{
    if (m_store == nullptr || names().contains(name)) {
        return;
    }
    // Behind the last element, not at a length that may be damaged.
    const std::vector<int> numbers = elementNumbers(*m_store);
    m_store->beginWriteArray(QLatin1String(arrayName));
    m_store->setArrayIndex(numbers.empty() ? 0 : numbers.back());
    m_store->setValue(QLatin1String(nameKey), QtVersion::storable(name));
    m_store->endArray();
}

std::optional<ScenarioValues> Scenario::values(const QString& name) const
{
    return m_store == nullptr ? std::nullopt : readScenarioValues(*m_store, name);
}

bool Scenario::save(const QString& name, const ScenarioValues& values)
{
    if (m_store == nullptr) {
        return false;
    }
    const QStringList touched{QLatin1String(arrayName), scenarioGroup(name)};
    const StoredKeys before = keysBelow(*m_store, touched);
    writeScenarioValues(*m_store, name, values);
    addName(name);
    // Values that cannot be read again, such as an intensity above its range, are not called saved.
    if (this->values(name) == values && flushSettings(*m_store)) {
        return true;
    }
    // What stayed in memory would reach the disk with the next write, although it was told to be lost.
    putBack(*m_store, touched, before);
    return false;
}

bool Scenario::setChannelName(channel* laser, const QString& name)
{
    if (laser == nullptr) {
        return false;
    }
    laser->setName(name);
    return true;
}

bool Scenario::setChannelIntensity(channel* laser, float percent)
{
    if (laser == nullptr) {
        return false;
    }
    laser->setIntensity(percent);
    return true;
}

bool Scenario::setChannelShutter(channel* laser, bool open)
{
    if (laser == nullptr) {
        return false;
    }
    laser->setShutterOpen(open);
    return true;
}

bool Scenario::setChannelShutterTTLInvertEnable(channel* laser, bool inverted)
{
    if (laser == nullptr) {
        return false;
    }
    laser->setTtlInverted(inverted);
    return true;
}
