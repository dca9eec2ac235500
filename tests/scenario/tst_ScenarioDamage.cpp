#include "mainwindow/SettingsStore.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioStoreTest.h"
#include "support/FileSizeLimit.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QSettings>
#include <QTest>

#include <cmath>
#include <limits>
#include <memory>

namespace {
QString keyOf(const QString& name, int number, const char* key)
{
    return scenarioGroup(name) + QStringLiteral("/Channel%1/").arg(number) + QLatin1String(key);
}

QHash<QString, QVariant> contentOf(QSettings& store)
{
    QHash<QString, QVariant> content;
    const QStringList keys = store.allKeys();
    for (const QString& key : keys) {
        content.insert(key, store.value(key));
    }
    return content;
}
} // namespace

/// Scenarios in a store that is damaged or cannot be written.
class tst_ScenarioDamage : public ScenarioStoreTest
{
    Q_OBJECT

private slots:
    void init() { buildStore(); }
    void cleanup() { removeStore(); }
    void missingKey_data();
    void missingKey();
    void missingChannel();
    void unusableValue_data();
    void unusableValue();
    void damagedFile();
    void valuesOutOfRangeAreRefused_data();
    void valuesOutOfRangeAreRefused();
    void fullDisk_data();
    void fullDisk();
    void unwritableFileThatBecomesWritable();
};

void tst_ScenarioDamage::missingKey_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QByteArray>("key");
    for (const int number : {1, 4, 8}) {
        for (const char* key : {"Channel Name", "Channel Intensity", "Channel Visible",
                                "Channel Shutter TTL Invert", "Channel Color", "Channel Shutter"}) {
            QTest::addRow("%d %s", number, key) << number << QByteArray(key);
        }
    }
}

void tst_ScenarioDamage::missingKey()
{
    QFETCH(int, number);
    QFETCH(QByteArray, key);
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    QVERIFY(scenario.save(QStringLiteral("a"), sample()));
    QVERIFY(scenario.save(QStringLiteral("b"), sample()));
    QVERIFY(store->contains(keyOf(QStringLiteral("a"), number, key.constData())));
    store->remove(keyOf(QStringLiteral("a"), number, key.constData()));
    QVERIFY(!scenario.values(QStringLiteral("a")));
    QVERIFY(scenario.values(QStringLiteral("b")));
}

void tst_ScenarioDamage::missingChannel()
{
    for (int number = 1; number <= channelCount; ++number) {
        const auto store = openStore();
        Scenario scenario(nullptr, store.get());
        QVERIFY(scenario.save(QStringLiteral("a"), sample()));
        store->remove(scenarioGroup(QStringLiteral("a")) + QStringLiteral("/Channel%1").arg(number));
        QVERIFY(!scenario.values(QStringLiteral("a")));
        QCOMPARE(scenario.names(), QStringList{QStringLiteral("a")});
    }
}

void tst_ScenarioDamage::unusableValue_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("usable");
    const auto row = [](const char* name, const char* key, const QVariant& value, bool usable) {
        QTest::newRow(name) << QByteArray(key) << value << usable;
    };
    const QStringList list{QStringLiteral("a"), QStringLiteral("b")};
    row("name list", "Channel Name", list, false);
    row("name nothing", "Channel Name", QVariant(), false);
    row("name empty", "Channel Name", QString(), true);
    row("intensity word", "Channel Intensity", QStringLiteral("bright"), false);
    row("intensity empty", "Channel Intensity", QString(), false);
    row("intensity list", "Channel Intensity", list, false);
    row("intensity nan", "Channel Intensity", std::nan(""), false);
    row("intensity infinite", "Channel Intensity", std::numeric_limits<double>::infinity(), false);
    row("intensity too high", "Channel Intensity", 100.01, false);
    row("intensity negative", "Channel Intensity", -0.01, false);
    row("intensity with unit", "Channel Intensity", QStringLiteral("50%"), false);
    row("intensity decimal comma", "Channel Intensity", QStringLiteral("50,5"), false);
    row("intensity text", "Channel Intensity", QStringLiteral("50.5"), true);
    row("visible word", "Channel Visible", QStringLiteral("yes"), false);
    row("visible 2", "Channel Visible", 2, false);
    row("visible empty", "Channel Visible", QString(), false);
    row("visible 1", "Channel Visible", 1, true);
    row("invert word", "Channel Shutter TTL Invert", QStringLiteral("maybe"), false);
    row("invert text", "Channel Shutter TTL Invert", QStringLiteral("false"), true);
    row("shutter word", "Channel Shutter", QStringLiteral("open"), false);
    row("shutter list", "Channel Shutter", list, false);
    row("shutter 0", "Channel Shutter", 0, true);
    row("colour short", "Channel Color", QStringLiteral("ff00"), false);
    row("colour long", "Channel Color", QStringLiteral("ff000000"), false);
    row("colour number sign", "Channel Color", QStringLiteral("#ff000"), false);
    row("colour sign", "Channel Color", QStringLiteral("+f+f+f"), false);
    row("colour no digits", "Channel Color", QStringLiteral("gg0000"), false);
    row("colour name", "Channel Color", QStringLiteral("yellow"), false);
    row("colour with line feed", "Channel Color", QStringLiteral("ff0000\n"), false);
    row("colour capital", "Channel Color", QStringLiteral("FF00AA"), true);
}

void tst_ScenarioDamage::unusableValue()
{
    QFETCH(QByteArray, key);
    QFETCH(QVariant, value);
    QFETCH(bool, usable);
    {
        const auto store = openStore();
        Scenario scenario(nullptr, store.get());
        QVERIFY(scenario.save(QStringLiteral("a"), sample()));
        store->setValue(keyOf(QStringLiteral("a"), 5, key.constData()), value);
        QCOMPARE(scenario.values(QStringLiteral("a")).has_value(), usable);
    }
    const auto store = openStore();
    QCOMPARE(Scenario(nullptr, store.get()).values(QStringLiteral("a")).has_value(), usable);
}

void tst_ScenarioDamage::damagedFile()
{
    {
        const auto store = openStore();
        QVERIFY(Scenario(nullptr, store.get()).save(QStringLiteral("a"), sample()));
    }
    // The second half of what was written is gone.
    const QByteArray content = fileContent();
    QFile file(m_fileName);
    QVERIFY(file.resize(content.size() / 2));
    const auto store = openStore();
    QVERIFY(!Scenario(nullptr, store.get()).values(QStringLiteral("a")));
}

void tst_ScenarioDamage::valuesOutOfRangeAreRefused_data()
{
    QTest::addColumn<float>("intensity");
    QTest::newRow("too high") << std::nextafter(100.0F, 101.0F);
    QTest::newRow("negative") << -1.0F;
    QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN();
    QTest::newRow("infinite") << std::numeric_limits<float>::infinity();
}

void tst_ScenarioDamage::valuesOutOfRangeAreRefused()
{
    QFETCH(float, intensity);
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    QVERIFY(scenario.save(QStringLiteral("a"), sample()));
    const auto before = contentOf(*store);
    ScenarioValues values = sample();
    values.at(7).settings.intensity = intensity;
    QVERIFY(!scenario.save(QStringLiteral("a"), values));
    QVERIFY(!scenario.save(QStringLiteral("b"), values));
    QCOMPARE(contentOf(*store), before);
}

void tst_ScenarioDamage::fullDisk_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("new name") << QStringLiteral("b");
    QTest::newRow("old name") << QStringLiteral("a");
    QTest::newRow("a name without values") << QStringLiteral("bare");
    QTest::newRow("slashes") << QStringLiteral("x/y/z");
    QTest::newRow("empty") << QString();
}

void tst_ScenarioDamage::fullDisk()
{
    QFETCH(QString, name);
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    const ScenarioValues old = sample();
    scenario.addName(QStringLiteral("bare"));
    store->setValue(QStringLiteral("Channel1/Channel Name"), QStringLiteral("405nm"));
    QVERIFY(scenario.save(QStringLiteral("a"), old));
    store->setValue(scenarioGroup(name) + QStringLiteral("/Extra"), 7);
    QVERIFY(flushSettings(*store));
    const auto before = contentOf(*store);
    const QStringList keysBefore = store->allKeys();
    const QByteArray fileBefore = fileContent();
    ScenarioValues values = sample();
    values.at(0).settings.name = QString(4000, QLatin1Char('n'));
    {
        const FileSizeLimit limit(static_cast<rlim_t>(fileBefore.size() + 10));
        QVERIFY(!scenario.save(name, values));
    }
    QCOMPARE(contentOf(*store), before);
    QCOMPARE(fileContent(), fileBefore);
    QCOMPARE(scenario.values(QStringLiteral("a")), std::make_optional(old));
    // Nothing of it waits in memory for the next write either.
    QVERIFY(flushSettings(*store));
    QSettings fresh(m_fileName, QSettings::IniFormat);
    QCOMPARE(fresh.allKeys(), keysBefore);
    QVERIFY(scenario.save(name, values));
    QCOMPARE(scenario.values(name), std::make_optional(values));
}

void tst_ScenarioDamage::unwritableFileThatBecomesWritable()
{
    QVERIFY(QDir().mkpath(m_fileName));
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    const ScenarioValues values = sample();
    QVERIFY(!scenario.save(QStringLiteral("a"), values));
    QVERIFY(store->allKeys().isEmpty());
    QVERIFY(QDir().rmdir(m_fileName));
    QVERIFY(scenario.save(QStringLiteral("a"), values));
    QVERIFY(fileContent().contains("Channel8"));
    QCOMPARE(scenario.values(QStringLiteral("a")), std::make_optional(values));
}

QTEST_GUILESS_MAIN(tst_ScenarioDamage)
#include "tst_ScenarioDamage.moc"
