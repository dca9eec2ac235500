#include "scenario/Scenario.h"
#include "scenario/ScenarioStoreTest.h"

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QSet>
#include <QSettings>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

Q_DECLARE_METATYPE(ScenarioChannel)

/// What is kept under the name of a scenario: complete and as it was, or not at all.
class tst_ScenarioValues : public ScenarioStoreTest
{
    Q_OBJECT

private slots:
    void init() { buildStore(); }
    void cleanup() { removeStore(); }
    void equality_data();
    void equality();
    void keysAndTypes();
    void nothingIsFound();
    void hostileNamesKeepTheirOwnValues();
    void textsOfEitherBuildAreRead_data();
    void textsOfEitherBuildAreRead();
    void groupsDifferWithoutCase();
    void randomValuesComeBack();
    void limitsComeBack();
    void overwriting();
};

void tst_ScenarioValues::equality_data()
{
    QTest::addColumn<ScenarioChannel>("other");
    QTest::addColumn<bool>("equal");
    const ScenarioChannel one{{QStringLiteral("a"), 50.0F, true, false, QColor(1, 2, 3)}, true};
    const auto row = [&one](const char* name, bool equal, const auto& change) {
        ScenarioChannel other = one;
        change(other);
        QTest::newRow(name) << other << equal;
    };
    row("same", true, [](ScenarioChannel&) {});
    row("name", false, [](ScenarioChannel& c) { c.settings.name = QStringLiteral("A"); });
    row("intensity", false, [](ScenarioChannel& c) { c.settings.intensity = std::nextafter(50.0F, 51.0F); });
    row("visible", false, [](ScenarioChannel& c) { c.settings.visible = false; });
    row("inverted", false, [](ScenarioChannel& c) { c.settings.ttlInverted = true; });
    row("colour", false, [](ScenarioChannel& c) { c.settings.colour = QColor(1, 2, 4); });
    row("opacity", true, [](ScenarioChannel& c) { c.settings.colour = QColor(1, 2, 3, 4); });
    row("shutter", false, [](ScenarioChannel& c) { c.shutterOpen = false; });
}

void tst_ScenarioValues::equality()
{
    QFETCH(ScenarioChannel, other);
    QFETCH(bool, equal);
    const ScenarioChannel one{{QStringLiteral("a"), 50.0F, true, false, QColor(1, 2, 3)}, true};
    QCOMPARE(one == other, equal);
    QCOMPARE(one != other, !equal);
}

void tst_ScenarioValues::keysAndTypes()
{
    const auto store = openStore();
    ScenarioValues values = sample();
    values.at(2) = {{QStringLiteral("Sky"), 12.5F, false, true, QColor(0xA, 0xB, 0xC)}, true};
    QVERIFY(Scenario(nullptr, store.get()).save(QStringLiteral("my/50%"), values));
    const QString group = QStringLiteral("Scenario Values/my%2F50%25/Channel3/");
    const auto stored = [&](const char* key) { return store->value(group + QLatin1String(key)); };
    QCOMPARE(stored("Channel Name"), QVariant(QStringLiteral("Sky")));
    QCOMPARE(stored("Channel Intensity"), QVariant(12.5));
    QCOMPARE(stored("Channel Visible"), QVariant(false));
    QCOMPARE(stored("Channel Shutter TTL Invert"), QVariant(true));
    QCOMPARE(stored("Channel Color"), QVariant(QStringLiteral("0a0b0c")));
    QCOMPARE(stored("Channel Shutter"), QVariant(true));
    // Beside these there are the name in the array and the array's size.
    QCOMPARE(store->allKeys().size(), 8 * 6 + 2);
    QCOMPARE(store->group(), QString());
}

void tst_ScenarioValues::nothingIsFound()
{
    Scenario homeless(nullptr, nullptr);
    QVERIFY(!homeless.values(QStringLiteral("a")));
    QVERIFY(!homeless.save(QStringLiteral("a"), sample()));
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    QVERIFY(!scenario.values(QStringLiteral("a")));
    scenario.addName(QStringLiteral("a"));
    QVERIFY(!scenario.values(QStringLiteral("a")));
    QVERIFY(scenario.save(QStringLiteral("ab"), sample()));
    QVERIFY(!scenario.values(QStringLiteral("a")));
    QVERIFY(!scenario.values(QString()));
}

void tst_ScenarioValues::hostileNamesKeepTheirOwnValues()
{
    auto names = hostileNames();
    names.append({"empty", QString()});
    QVector<ScenarioValues> expected;
    QStringList order;
    {
        const auto store = openStore();
        Scenario scenario(nullptr, store.get());
        for (const auto& name : qAsConst(names)) {
            expected.append(sample());
            order.append(name.second);
            QVERIFY2(scenario.save(name.second, expected.last()), name.first);
        }
    }
    // Beyond ASCII the builds against Qt 5 and Qt 6 would read different texts from the same bytes.
    const QByteArray content = fileContent();
    QVERIFY(!content.isEmpty());
    QVERIFY(std::all_of(content.begin(), content.end(),
                        [](char byte) { return static_cast<unsigned char>(byte) < 0x80; }));
    const auto store = openStore();
    const Scenario scenario(nullptr, store.get());
    QCOMPARE(scenario.names(), order);
    for (int i = 0; i < names.size(); ++i) {
        const auto values = scenario.values(names.at(i).second);
        QVERIFY2(values == expected.at(i), names.at(i).first);
    }
}

void tst_ScenarioValues::textsOfEitherBuildAreRead_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("Qt 5") << QByteArrayLiteral(R"(\xfeffGr\xf6\xdf\x65 \x5149\xd83d)");
    QTest::newRow("Qt 6") << QByteArrayLiteral(
        R"x("@Variant(\0\0\0\t\0\0\0\x1\0\0\0\n\0\0\0\x12\xfe\xff\0G\0r\0\xf6\0\xdf\0\x65\0 QI\xd8=)")x");
}

void tst_ScenarioValues::textsOfEitherBuildAreRead()
{
    QFETCH(QByteArray, written);
    const QString text = QChar(0xFEFF) +
                         QString::fromUtf8("Gr\xC3\xB6\xC3\x9F"
                                           "e \xE5\x85\x89") +
                         QChar(0xD83D);
    {
        QFile file(m_fileName);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Channel3]\nChannel%20Name=" + written +
                   "\n\n[Scenarios]\n1\\Scenario%20Name=" + written + "\nsize=1\n");
    }
    const auto store = openStore();
    QCOMPARE(Scenario(nullptr, store.get()).names(), QStringList(text));
    QCOMPARE(readChannelSettings(*store, {}, 2).name, text);
}

void tst_ScenarioValues::groupsDifferWithoutCase()
{
    QSet<QString> groups;
    auto names = hostileNames();
    names.append({"empty", QString()});
    for (const auto& name : qAsConst(names)) {
        const QString group = scenarioGroup(name.second).toLower();
        QVERIFY2(!groups.contains(group), name.first);
        groups.insert(group);
        // One level below the common group, whatever slashes the name has.
        QCOMPARE(group.count(QLatin1Char('/')), 1);
        QVERIFY2(!group.endsWith(QLatin1Char('/')), name.first);
    }
}

void tst_ScenarioValues::randomValuesComeBack()
{
    QHash<QString, ScenarioValues> expected;
    {
        const auto store = openStore();
        for (int i = 0; i < 100; ++i) {
            const ScenarioValues values = sample();
            // Names from the same source as the channels', and therefore of any code units.
            const QString name = values.at(0).settings.name + QString::number(i);
            writeScenarioValues(*store, name, values);
            QCOMPARE(readScenarioValues(*store, name), std::make_optional(values));
            expected.insert(name, values);
        }
    }
    const auto store = openStore();
    for (auto entry = expected.constBegin(); entry != expected.constEnd(); ++entry) {
        QCOMPARE(readScenarioValues(*store, entry.key()), std::make_optional(entry.value()));
    }
}

void tst_ScenarioValues::limitsComeBack()
{
    ScenarioValues values = sample();
    values.at(0).settings.intensity = 0.0F;
    values.at(1).settings.intensity = 100.0F;
    values.at(2).settings.intensity = std::numeric_limits<float>::min();
    values.at(3).settings.intensity = std::nextafter(100.0F, 0.0F);
    values.at(4).settings.name = QString();
    values.at(5).settings.name = QStringLiteral("@Invalid()");
    values.at(6).settings.name = QString(2000, QLatin1Char('"'));
    values.at(7).settings.colour = QColor(0, 0, 0);
    {
        const auto store = openStore();
        QVERIFY(Scenario(nullptr, store.get()).save(QStringLiteral("a"), values));
    }
    const auto store = openStore();
    QCOMPARE(Scenario(nullptr, store.get()).values(QStringLiteral("a")), std::make_optional(values));
}

void tst_ScenarioValues::overwriting()
{
    const auto store = openStore();
    Scenario scenario(nullptr, store.get());
    const ScenarioValues other = sample();
    const ScenarioValues second = sample();
    QVERIFY(scenario.save(QStringLiteral("a"), sample()));
    QVERIFY(scenario.save(QStringLiteral("b"), other));
    QVERIFY(scenario.save(QStringLiteral("a"), second));
    QCOMPARE(scenario.names(), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    QCOMPARE(scenario.values(QStringLiteral("a")), std::make_optional(second));
    QCOMPARE(scenario.values(QStringLiteral("b")), std::make_optional(other));
}

QTEST_GUILESS_MAIN(tst_ScenarioValues)
#include "tst_ScenarioValues.moc"
