#include "mainwindow/channel.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioStoreTest.h"

#include <QElapsedTimer>
#include <QSettings>
#include <QTest>

#include <memory>

/// The channel container and the list of scenario names.
class tst_Scenario : public ScenarioStoreTest
{
    Q_OBJECT

private slots:
    void init() { buildStore(); }
    void cleanup() { removeStore(); }
    void lookup_data();
    void lookup();
    void slotsStoreInTheGivenChannel();
    void slotsWithoutChannelChangeNothing();
    void ownsItsChannels();
    void noStoreNoNames();
    void namesKeepTheirOrder();
    void addingTwiceLeavesOne();
    void namesAreComparedExactly();
    void namesMayHoldAnything();
    void namesSurviveInTheFile();
    void otherKeysStay();
    void damagedSizeIsHarmless_data();
    void damagedSizeIsHarmless();
    void manyNames();

private:
    int m_destroyed = 0;
};

void tst_Scenario::lookup_data()
{
    QTest::addColumn<int>("channelsInList");
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("foundIndex");
    QTest::newRow("0 is no channel") << 8 << 0 << -1;
    QTest::newRow("first") << 8 << 1 << 0;
    QTest::newRow("middle") << 8 << 5 << 4;
    QTest::newRow("last") << 8 << 8 << 7;
    QTest::newRow("9 is no channel") << 8 << 9 << -1;
    QTest::newRow("largest number") << 8 << 255 << -1;
    QTest::newRow("empty list") << 0 << 1 << -1;
}

void tst_Scenario::lookup()
{
    QFETCH(int, channelsInList);
    QFETCH(int, number);
    QFETCH(int, foundIndex);
    Scenario scenario(nullptr, nullptr);
    for (int i = 0; i < channelsInList; ++i) {
        auto* laser = new channel;
        laser->setIndex(static_cast<quint8>(i));
        scenario.append(laser);
    }
    const channel* found = scenario.channelByNumber(static_cast<quint8>(number));
    if (foundIndex < 0) {
        QVERIFY(found == nullptr);
    } else {
        QVERIFY(found != nullptr);
        QCOMPARE(int(found->index()), foundIndex);
    }
}

void tst_Scenario::slotsStoreInTheGivenChannel()
{
    Scenario scenario(nullptr, nullptr);
    auto* first = new channel;
    auto* second = new channel;
    scenario.append(first);
    scenario.append(second);
    QVERIFY(scenario.setChannelName(second, QStringLiteral("Blue")));
    QVERIFY(scenario.setChannelIntensity(second, 12.5F));
    QVERIFY(scenario.setChannelShutter(second, true));
    QVERIFY(scenario.setChannelShutterTTLInvertEnable(second, true));
    QCOMPARE(second->name(), QStringLiteral("Blue"));
    QCOMPARE(second->intensity(), 12.5F);
    QVERIFY(second->isShutterOpen());
    QVERIFY(second->isTtlInverted());
    QCOMPARE(first->name(), QString());
    QCOMPARE(first->intensity(), 0.0F);
    QVERIFY(!first->isShutterOpen());
    QVERIFY(!first->isTtlInverted());
}

void tst_Scenario::slotsWithoutChannelChangeNothing()
{
    Scenario scenario(nullptr, nullptr);
    auto* laser = new channel;
    laser->setName(QStringLiteral("kept"));
    scenario.append(laser);
    QVERIFY(!scenario.setChannelName(nullptr, QStringLiteral("x")));
    QVERIFY(!scenario.setChannelIntensity(nullptr, 1.0F));
    QVERIFY(!scenario.setChannelShutter(nullptr, true));
    QVERIFY(!scenario.setChannelShutterTTLInvertEnable(nullptr, true));
    QCOMPARE(laser->name(), QStringLiteral("kept"));
    QCOMPARE(laser->intensity(), 0.0F);
    QVERIFY(!laser->isShutterOpen());
    QVERIFY(!laser->isTtlInverted());
}

void tst_Scenario::ownsItsChannels()
{
    m_destroyed = 0;
    {
        Scenario scenario(nullptr, nullptr);
        for (int i = 0; i < 2; ++i) {
            auto* laser = new channel;
            scenario.append(laser);
            connect(laser, &QObject::destroyed, this, [this] { ++m_destroyed; });
        }
        scenario.append(nullptr);
        QCOMPARE(scenario.channels().size(), 2);
        QCOMPARE(m_destroyed, 0);
    }
    QCOMPARE(m_destroyed, 2);
}

void tst_Scenario::noStoreNoNames()
{
    Scenario scenario(nullptr, nullptr);
    scenario.addName(QStringLiteral("nowhere"));
    QCOMPARE(scenario.names(), QStringList());
}

void tst_Scenario::namesKeepTheirOrder()
{
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    QCOMPARE(scenario.names(), QStringList());
    QStringList expected;
    for (int i = 12; i > 0; --i) {
        const QString name = QStringLiteral("Setup %1").arg(i);
        expected.append(name);
        scenario.addName(name);
    }
    QCOMPARE(scenario.names(), expected);
}

void tst_Scenario::addingTwiceLeavesOne()
{
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    scenario.addName(QStringLiteral("A"));
    scenario.addName(QStringLiteral("B"));
    scenario.addName(QStringLiteral("A"));
    QCOMPARE(scenario.names(), QStringList({QStringLiteral("A"), QStringLiteral("B")}));
    QCOMPARE(store->beginReadArray(QStringLiteral("Scenarios")), 2);
    store->setArrayIndex(1);
    QCOMPARE(store->value(QStringLiteral("Scenario Name")).toString(), QStringLiteral("B"));
    store->endArray();
}

void tst_Scenario::namesAreComparedExactly()
{
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    const QStringList names{QStringLiteral("night"), QStringLiteral("Night"), QStringLiteral("night ")};
    for (const QString& name : names) {
        scenario.addName(name);
    }
    QCOMPARE(scenario.names(), names);
}

void tst_Scenario::namesMayHoldAnything()
{
    const QStringList names{QString(), QStringLiteral("a/b\\c"), QStringLiteral("100 %1 \"quoted\"\n=;#"),
                            QString::fromUtf8("Grün µ 光"), QString(500, QLatin1Char('%'))};
    {
        const auto store = openStore();
        Scenario scenario(nullptr, store.get());
        for (const QString& name : names) {
            scenario.addName(name);
        }
    }
    const auto store = openStore();
    QCOMPARE(Scenario(nullptr, store.get()).names(), names);
}

void tst_Scenario::namesSurviveInTheFile()
{
    {
        const auto store = openStore();
        Scenario(nullptr, store.get()).addName(QStringLiteral("One"));
    }
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    scenario.addName(QStringLiteral("Two"));
    QCOMPARE(scenario.names(), QStringList({QStringLiteral("One"), QStringLiteral("Two")}));
    QCOMPARE(store->value(QStringLiteral("Scenarios/size")).toInt(), 2);
}

void tst_Scenario::otherKeysStay()
{
    const auto store = openStore();
    store->setValue(QStringLiteral("Channel1/Channel Name"), QStringLiteral("405nm"));
    Scenario(nullptr, store.get()).addName(QStringLiteral("One"));
    QCOMPARE(store->value(QStringLiteral("Channel1/Channel Name")).toString(), QStringLiteral("405nm"));
    QCOMPARE(store->group(), QString());
}

void tst_Scenario::damagedSizeIsHarmless_data()
{
    QTest::addColumn<QVariant>("size");
    QTest::newRow("far too large") << QVariant(2'000'000'000);
    QTest::newRow("the largest number") << QVariant(2'147'483'647);
    QTest::newRow("larger than any number") << QVariant(QStringLiteral("99999999999"));
    QTest::newRow("negative") << QVariant(-3);
    QTest::newRow("no number") << QVariant(QStringLiteral("many"));
    QTest::newRow("too small") << QVariant(1);
    QTest::newRow("nothing") << QVariant(0);
}

void tst_Scenario::damagedSizeIsHarmless()
{
    QFETCH(QVariant, size);
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    QStringList names{QStringLiteral("One"), QStringLiteral("Two")};
    scenario.addName(names.at(0));
    scenario.addName(names.at(1));
    store->setValue(QStringLiteral("Scenarios/size"), size);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(scenario.names(), names);
    QVERIFY(clock.elapsed() < 1000);
    names.append(QStringLiteral("Three"));
    scenario.addName(names.at(2));
    QCOMPARE(scenario.names(), names);
    QCOMPARE(store->value(QStringLiteral("Scenarios/size")).toInt(), names.size());
}

void tst_Scenario::manyNames()
{
    constexpr int count = 500;
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    QStringList expected;
    for (int i = 0; i < count; ++i) {
        expected.append(QStringLiteral("Setup %1").arg(i));
        scenario.addName(expected.last());
    }
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(scenario.names(), expected);
    // A hundred times what it takes; walking through the whole store for each name would show.
    QVERIFY(clock.elapsed() < 200);
}

QTEST_GUILESS_MAIN(tst_Scenario)
#include "tst_Scenario.moc"
