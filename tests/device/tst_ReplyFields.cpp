#include "device/Replies.h"

#include <QTest>

/// Replies that name what they tell.
class tst_ReplyFields : public QObject
{
    Q_OBJECT

private slots:
    void temperatures();
    void temperaturesWithoutMarker();
    void keyedText();
    void productConfig_data();
    void productConfig();
    void productConfigKeepsWhatIsNotTold();
};

void tst_ReplyFields::temperatures()
{
    Temperatures readings;
    readings.heater = QStringLiteral("before");
    const QString reply = QStringLiteral(
        "temps:Necsel=25.1,Novalum1=26,Novalum2=27 C,LaserFan=40,Other=9,noValue,LaserCurrent=1.2=3\n");
    QCOMPARE(Replies::temperatures(reply, readings), 0);
    QCOMPARE(readings.necsel, QStringLiteral("25.1"));
    QCOMPARE(readings.novalum1, QStringLiteral("26"));
    QCOMPARE(readings.novalum2, QStringLiteral("27 C"));
    QCOMPARE(readings.laserFan, QStringLiteral("40"));
    QCOMPARE(readings.heater, QStringLiteral("before"));
    QCOMPARE(readings.laserCurrent, QStringLiteral("1.2=3"));
    QCOMPARE(Replies::temperatures(QStringLiteral("TEMPS: Heater=off\n"), readings), 0);
    QCOMPARE(readings.heater, QStringLiteral("off"));
}

void tst_ReplyFields::temperaturesWithoutMarker()
{
    Temperatures readings;
    QCOMPARE(Replies::temperatures(QStringLiteral("Necsel=25.1\n"), readings), -40009);
    QVERIFY(readings.necsel.isEmpty());
}

void tst_ReplyFields::keyedText()
{
    const QString key = QStringLiteral("necsel_controller_sn");
    QString text = QStringLiteral("before");
    QVERIFY(!Replies::keyedText(QStringLiteral("N-77\n"), key, text));
    QCOMPARE(text, QStringLiteral("before"));
    QVERIFY(Replies::keyedText(QStringLiteral("necsel_controller_sn=N-77\n"), key, text));
    QCOMPARE(text, QStringLiteral("N-77"));
    QVERIFY(Replies::keyedText(QStringLiteral("Necsel_Controller_SN==N=78\n\n"), key, text));
    QCOMPARE(text, QStringLiteral("N78"));
}

void tst_ReplyFields::productConfig_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("all");

    QTest::newRow("in writing order")
        << "prod_config:vyr_hw_ver=1.2.3,vyr_pn=P1,vyr_sn=S1,necsel_laser_sn=N1,novalum_sn=V1\n"
        << 0 << "1.2.3|P1|S1|N1|V1";
    QTest::newRow("in another order")
        << "prod_config:novalum_sn=V1,vyr_sn=S1,vyr_pn=P1,necsel_laser_sn=N1,vyr_hw_ver=1.2.3\n"
        << 0 << "1.2.3|P1|S1|N1|V1";
    QTest::newRow("unknown keys and no values") << "prod_config:color=red,vyr_sn=,,x,vyr_pn=P=1\n"
                                                << 0 << "|P=1|||";
    QTest::newRow("colon in a value") << "prod_config:vyr_sn=A:B\n" << 0 << "||A:B||";
    QTest::newRow("no marker") << "vyr_sn=S1\n" << -40009 << "||||";
    QTest::newRow("other marker") << "chan_config:vyr_sn=S1\n" << -40009 << "||||";
    QTest::newRow("nothing behind the marker") << "prod_config\n" << -40009 << "||||";
}

void tst_ReplyFields::productConfig()
{
    QFETCH(const QString, reply);
    ProductConfig record;
    QTEST(Replies::productConfig(reply, record), "code");
    const QStringList all{record.hardwareVersion, record.partNumber, record.serialNumber,
                          record.necselSerialNumber, record.novalumSerialNumber};
    QTEST(all.join(QLatin1Char('|')), "all");
}

void tst_ReplyFields::productConfigKeepsWhatIsNotTold()
{
    ProductConfig record;
    record.partNumber = QStringLiteral("before");
    QCOMPARE(Replies::productConfig(QStringLiteral("prod_config:vyr_sn=S1\n"), record), 0);
    QCOMPARE(record.partNumber, QStringLiteral("before"));
    QCOMPARE(record.serialNumber, QStringLiteral("S1"));
}

QTEST_GUILESS_MAIN(tst_ReplyFields)
#include "tst_ReplyFields.moc"
