#include "settings/ChannelBench.h"

/// The unit's record, as it shows in the cells of the channel table.
class tst_ChannelConfigRead : public ChannelDialogTest
{
    Q_OBJECT

private slots:
    void init() { buildDialog(); }
    void cleanup() { removeRoom(); }
    void loadedType_data();
    void loadedType();
    void loadedFlags_data();
    void loadedFlags();
};

void tst_ChannelConfigRead::loadedType_data()
{
    QTest::addColumn<int>("byte");
    QTest::addColumn<int>("shown");
    for (int type = 0; type <= 8; ++type) {
        QTest::addRow("%d", type) << type << type;
    }
    QTest::newRow("one too many") << 9 << 8;
    QTest::newRow("far too many") << 255 << 8;
}

void tst_ChannelConfigRead::loadedType()
{
    QFETCH(int, byte);
    QFETCH(int, shown);
    m_unit.setEntry(4, QByteArray("\x01", 1) + char(byte) + "b\xfc" + QByteArray(2, '\0') + "\x01\xab\xf0" +
                           QByteArray(3, '\0'));
    connectUnit();
    QTRY_COMPARE(laser(4)->currentIndex(), shown);
    // A type that was loaded does not fill in what is usual for it.
    QCOMPARE(name(4)->text(), QStringLiteral("bü"));
    QCOMPARE(color(4)->text(), QStringLiteral("01abf0"));
    // An empty entry is shown as such.
    QCOMPARE(texts(3), QStringList({QStringLiteral("0"), QStringLiteral("405"), QString(),
                                    QStringLiteral("000000"), QStringLiteral("0"), QStringLiteral("1")}));
}

void tst_ChannelConfigRead::loadedFlags_data()
{
    QTest::addColumn<int>("enabledByte");
    QTest::addColumn<int>("secondaryByte");
    QTest::addColumn<int>("primaryByte");
    QTest::addColumn<QString>("shownPrimary");
    QTest::newRow("off") << 0 << 0 << 0 << QStringLiteral("1");
    QTest::newRow("on") << 1 << 0 << 3 << QStringLiteral("4");
    QTest::newRow("secondary") << 1 << 1 << 7 << QStringLiteral("8");
    QTest::newRow("secondary, off") << 0 << 1 << 2 << QStringLiteral("3");
    QTest::newRow("primary beyond") << 1 << 1 << 8 << QStringLiteral("1");
    QTest::newRow("all ones") << 255 << 255 << 255 << QStringLiteral("1");
}

void tst_ChannelConfigRead::loadedFlags()
{
    QFETCH(int, enabledByte);
    QFETCH(int, secondaryByte);
    QFETCH(int, primaryByte);
    QFETCH(QString, shownPrimary);
    QByteArray entry(12, '\0');
    entry[0] = char(enabledByte);
    entry[9] = char(secondaryByte);
    entry[10] = char(primaryByte);
    m_unit.setEntry(7, entry);
    connectUnit();
    QTRY_COMPARE(name(7)->text(), QString());
    QCOMPARE(enabled(7)->isChecked(), enabledByte != 0);
    QCOMPARE(secondary(7)->isChecked(), secondaryByte != 0);
    QCOMPARE(primary(7)->currentText(), shownPrimary);
    QCOMPARE(laser(7)->isEnabled(), enabledByte != 0);
    QCOMPARE(secondary(7)->isEnabled(), enabledByte != 0);
    QCOMPARE(primary(7)->isEnabled(), enabledByte != 0 && secondaryByte != 0);
}

QTEST_MAIN(tst_ChannelConfigRead)
#include "tst_ChannelConfigRead.moc"
