#include "scenario/Scenario.h"

#include "mainwindow/channel.h"

#include <QSettings>

#include <algorithm>
#include <vector>

namespace {
constexpr char arrayName[] = "Scenarios";
constexpr char nameKey[] = "Scenario Name";

/// The array's length as the store tells it; a length that makes no sense counts as none.
int arraySize(QSettings& store)
{
    return std::max(0, store.value(QLatin1String(arrayName) + QLatin1String("/size")).toInt());
}

/// The numbers (from 1) of the elements that are really there, in order. The length alone is not trusted: a
/// damaged one would have the reader walk through millions of elements that nobody wrote.
std::vector<int> elementNumbers(QSettings& store)
{
    const int size = arraySize(store);
    std::vector<int> numbers;
    store.beginGroup(QLatin1String(arrayName));
    const QStringList groups = store.childGroups();
    store.endGroup();
    for (const QString& group : groups) {
        const int number = group.toInt();
        if (number >= 1 && number <= size) {
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
        list.append(m_store
                        ->value(QStringLiteral("%1/%2/%3")
                                    .arg(QLatin1String(arrayName))
                                    .arg(number)
                                    .arg(QLatin1String(nameKey)))
                        .toString());
    }
    return list;
}

void Scenario::addName(const QString& name)
{
    if (m_store == nullptr || names().contains(name)) {
        return;
    }
    const int oldSize = arraySize(*m_store);
    m_store->beginWriteArray(QLatin1String(arrayName));
    m_store->setArrayIndex(oldSize);
    m_store->setValue(QLatin1String(nameKey), name);
    m_store->endArray();
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
