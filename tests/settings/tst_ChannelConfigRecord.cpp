#include "settings/ChannelConfigRecord.h"

#include <QByteArray>
#include <QTest>

#include <algorithm>
#include <cstddef>

namespace {
constexpr int headerSize = 4;
constexpr int entrySize = 12;

QByteArray bytesOf(const ChannelConfigBytes& record)
{
    return {reinterpret_cast<const char*>(record.data()), static_cast<int>(record.size())};
}

/// A record with these twelve bytes for one channel and zeros around them.
ChannelConfigBytes recordWith(int channel, const QByteArray& entry)
{
    ChannelConfigBytes record{};
    std::copy(entry.begin(), entry.end(), record.begin() + (headerSize + channel * entrySize));
    return record;
}

ChannelConfigEntries emptyEntries()
{
    ChannelConfigEntries entries;
    for (ChannelConfigEntry& entry : entries)
        entry.enabled = false;
    return entries;
}

ChannelConfigEntry sample()
{
    return {true, 8, QStringLiteral("ab\u00fc"), 0x12, 0x34, 0x56, true, 7};
}

bool same(const ChannelConfigEntry& left, const ChannelConfigEntry& right)
{
    return left.enabled == right.enabled && left.type == right.type && left.name == right.name &&
           left.red == right.red && left.green == right.green && left.blue == right.blue &&
           left.secondary == right.secondary && left.primary == right.primary;
}

const char sampleHex[] = "01086162fc0012345601 0700";
} // namespace

class tst_ChannelConfigRecord : public QObject
{
    Q_OBJECT

private slots:
    void everyChannel_data();
    void everyChannel();
    void everyField_data();
    void everyField();
    void bytesOfNoEntryAreKept();
    void oddBytes_data();
    void oddBytes();
    void oddEntries_data();
    void oddEntries();
};

void tst_ChannelConfigRecord::everyChannel_data()
{
    QTest::addColumn<int>("channel");
    for (int channel = 0; channel < channelCount; ++channel)
        QTest::addRow("channel %d", channel) << channel;
}

void tst_ChannelConfigRecord::everyChannel()
{
    QFETCH(int, channel);
    const ChannelConfigBytes record = recordWith(channel, QByteArray::fromHex(sampleHex));
    ChannelConfigEntries entries = emptyEntries();
    entries[static_cast<std::size_t>(channel)] = sample();
    const ChannelConfigEntries decoded = ChannelConfigRecord::decode(record);
    for (std::size_t i = 0; i < entries.size(); ++i)
        QVERIFY2(same(decoded[i], entries[i]), qPrintable(QString::number(i)));
    QCOMPARE(bytesOf(ChannelConfigRecord::encode(entries, {})).toHex(), bytesOf(record).toHex());
}

void tst_ChannelConfigRecord::everyField_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("shown"); // the entry as one text
    const struct
    {
        const char* name;
        int offset;
        const char* shown;
    } rows[] = {{"enabled", 0, "1 0 '' 0 0 0 0 0"},  {"type", 1, "0 1 '' 0 0 0 0 0"},
                {"red", 6, "0 0 '' 1 0 0 0 0"},      {"green", 7, "0 0 '' 0 1 0 0 0"},
                {"blue", 8, "0 0 '' 0 0 1 0 0"},     {"secondary", 9, "0 0 '' 0 0 0 1 0"},
                {"primary", 10, "0 0 '' 0 0 0 0 1"}, {"reserve", 11, "0 0 '' 0 0 0 0 0"}};
    for (const auto& row : rows)
        QTest::newRow(row.name) << row.offset << QString::fromLatin1(row.shown);
}

/// A 1 in one byte shows in one field.
void tst_ChannelConfigRecord::everyField()
{
    QFETCH(int, offset);
    QFETCH(QString, shown);
    QByteArray bytes(entrySize, '\0');
    bytes[offset] = 1;
    const ChannelConfigEntry entry = ChannelConfigRecord::decode(recordWith(2, bytes))[2];
    QCOMPARE(QStringLiteral("%1 %2 '%3' %4 %5 %6 %7 %8")
                 .arg(int(entry.enabled))
                 .arg(entry.type)
                 .arg(entry.name)
                 .arg(entry.red)
                 .arg(entry.green)
                 .arg(entry.blue)
                 .arg(int(entry.secondary))
                 .arg(entry.primary),
             shown);
}

void tst_ChannelConfigRecord::bytesOfNoEntryAreKept()
{
    ChannelConfigBytes base{};
    base.fill(0xee);
    const QByteArray record = bytesOf(ChannelConfigRecord::encode(emptyEntries(), base));
    QByteArray expected(headerSize, '\xee');
    for (int channel = 0; channel < channelCount; ++channel)
        expected += QByteArray(entrySize - 1, '\0') + '\xee';
    QCOMPARE(record.toHex(), expected.toHex());
}

void tst_ChannelConfigRecord::oddBytes_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("primary");
    QTest::newRow("type beyond the last") << QByteArray("010900000000000000000000") << 8 << QString() << 0;
    QTest::newRow("last type") << QByteArray("010800000000000000000000") << 8 << QString() << 0;
    QTest::newRow("primary beyond the last") << QByteArray("010000000000000000000800") << 0 << QString() << 0;
    QTest::newRow("flags of any bits") << QByteArray("800000000000000000ff0700") << 0 << QString() << 7;
    QTest::newRow("name of four") << QByteArray("010061626364000000010000") << 0 << QStringLiteral("abcd")
                                  << 0;
    QTest::newRow("name with a hole")
        << QByteArray("010061006364000000010000") << 0 << QStringLiteral("a") << 0;
    QTest::newRow("erased memory") << QByteArray("ffffffffffffffffffffffff") << 8
                                   << QStringLiteral("\u00ff\u00ff\u00ff\u00ff") << 0;
}

void tst_ChannelConfigRecord::oddBytes()
{
    QFETCH(QByteArray, hex);
    QFETCH(int, type);
    QFETCH(QString, name);
    QFETCH(int, primary);
    const ChannelConfigEntry entry = ChannelConfigRecord::decode(recordWith(7, QByteArray::fromHex(hex)))[7];
    QVERIFY(entry.enabled);
    QCOMPARE(entry.type, type);
    QCOMPARE(entry.name, name);
    QCOMPARE(entry.primary, primary);
    QCOMPARE(entry.secondary, hex.mid(18, 2) != "00");
}

void tst_ChannelConfigRecord::oddEntries_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("primary");
    QTest::addColumn<QByteArray>("hex"); // type, name and primary index
    QTest::newRow("beyond") << 9 << QString() << 8 << QByteArray("080000000000");
    QTest::newRow("far beyond") << 264 << QString() << 263 << QByteArray("080000000000");
    QTest::newRow("negative") << -1 << QString() << -1 << QByteArray("080000000000");
    QTest::newRow("last") << 8 << QString() << 7 << QByteArray("080000000007");
    QTest::newRow("long name") << 0 << QStringLiteral("abcdef") << 0 << QByteArray("006162636400");
    QTest::newRow("not Latin-1") << 0 << QStringLiteral("a\u4e2d") << 0 << QByteArray("00613f000000");
    QTest::newRow("hole") << 0 << QString(QStringLiteral("a") + QChar(0) + QStringLiteral("b")) << 0
                          << QByteArray("006100620000");
}

void tst_ChannelConfigRecord::oddEntries()
{
    QFETCH(int, type);
    QFETCH(QString, name);
    QFETCH(int, primary);
    QFETCH(QByteArray, hex);
    ChannelConfigEntries entries = emptyEntries();
    entries[4].type = type;
    entries[4].name = name;
    entries[4].primary = primary;
    ChannelConfigBytes base{};
    base.fill(0x77);
    const QByteArray entry =
        bytesOf(ChannelConfigRecord::encode(entries, base)).mid(headerSize + 4 * entrySize, entrySize);
    QCOMPARE(entry.mid(1, 5).toHex() + entry.mid(10, 1).toHex(), hex);
}

QTEST_GUILESS_MAIN(tst_ChannelConfigRecord)
#include "tst_ChannelConfigRecord.moc"
