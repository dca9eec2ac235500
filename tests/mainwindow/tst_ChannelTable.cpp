#include "mainwindow/ChannelTable.h"

#include <QTest>

/// The table of the channels, and colours as text.
class tst_ChannelTable : public QObject
{
    Q_OBJECT

private slots:
    void defaults_data();
    void defaults();
    void colours_data();
    void colours();
    void coloursAsText();
};

void tst_ChannelTable::defaults_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("wavelength");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("colour");
    const auto row = [](int index, const char* group, const char* wavelength, const char* name,
                        const char* colour) {
        QTest::newRow(wavelength) << index << QString::fromLatin1(group) << QString::fromLatin1(wavelength)
                                  << QString::fromLatin1(name) << QString::fromLatin1(colour);
    };
    row(0, "Channel1", "405", "405nm", "#4900bc");
    row(1, "Channel2", "445", "445nm", "#0019ff");
    row(2, "Channel3", "470", "470nm", "#0099ff");
    row(3, "Channel4", "520", "520nm", "#24ff00");
    row(4, "Channel5", "528", "528nm", "#41ff00");
    row(5, "Channel6", "555", "555nm", "#a3ff00");
    row(6, "Channel7", "640", "640nm", "#ff2500");
    row(7, "Channel8", "730", "730nm", "#bc0000");
}

void tst_ChannelTable::defaults()
{
    QFETCH(int, index);
    QTEST(ChannelTable::settingsGroup(index), "group");
    QTEST(ChannelTable::wavelength(index), "wavelength");
    QTEST(ChannelTable::defaultName(index), "name");
    QTEST(ChannelTable::defaultColour(index).name(), "colour");
    QCOMPARE(ChannelTable::descriptors.size(), std::size_t(8));
}

void tst_ChannelTable::colours_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("colour");
    QTest::newRow("plain") << QStringLiteral("ff2500") << QColor(0xff, 0x25, 0x00);
    QTest::newRow("capitals") << QStringLiteral("A3FF0b") << QColor(0xa3, 0xff, 0x0b);
    QTest::newRow("one bad pair") << QStringLiteral("zz00ff") << QColor(0, 0, 0xff);
    QTest::newRow("bad pair in the middle") << QStringLiteral("11g222") << QColor(0x11, 0, 0x22);
    QTest::newRow("with #") << QStringLiteral("#ff2500") << QColor(0, 0xf2, 0x50);
    QTest::newRow("half a pair") << QStringLiteral("red") << QColor(0, 0x0d, 0);
    QTest::newRow("empty") << QString() << QColor(0, 0, 0);
    QTest::newRow("too short") << QStringLiteral("ff25") << QColor(0xff, 0x25, 0);
    QTest::newRow("too long") << QStringLiteral("ff2500ff") << QColor(0xff, 0x25, 0);
    QTest::newRow("negative pair") << QStringLiteral("-1ff00") << QColor(0, 0xff, 0);
}

void tst_ChannelTable::colours()
{
    QFETCH(QString, text);
    QFETCH(QColor, colour);
    const QColor read = ChannelTable::colourFromText(text);
    QVERIFY(read.isValid());
    QCOMPARE(read.red(), colour.red());
    QCOMPARE(read.green(), colour.green());
    QCOMPARE(read.blue(), colour.blue());
    QCOMPARE(read.alpha(), 255);
}

void tst_ChannelTable::coloursAsText()
{
    QCOMPARE(ChannelTable::colourToText(QColor(0xFF, 0x25, 0x00)), QStringLiteral("ff2500"));
    QCOMPARE(ChannelTable::colourToText(QColor(1, 2, 3, 4)), QStringLiteral("010203"));
}

QTEST_APPLESS_MAIN(tst_ChannelTable)
#include "tst_ChannelTable.moc"
