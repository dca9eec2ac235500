#include "device/FirmwareVersion.h"

#include <QTest>

class tst_FirmwareVersion : public QObject
{
    Q_OBJECT

private slots:
    void isComparedAsOneNumber();
    void isShownInDecimal();
};

void tst_FirmwareVersion::isComparedAsOneNumber()
{
    QCOMPARE((FirmwareVersion{1, 1, 14}.number()), 65806U);
    QCOMPARE((FirmwareVersion{1, 4, 6}.number()), 66566U);
    QCOMPARE((FirmwareVersion{2, 6, 2}.number()), 132610U);
    QVERIFY((FirmwareVersion{1, 1, 15} > FirmwareVersion{1, 1, 14}));
    QVERIFY(!(FirmwareVersion{1, 1, 14} > FirmwareVersion{1, 1, 14}));
    QVERIFY((FirmwareVersion{2, 0, 0} > FirmwareVersion{1, 255, 255}));
    QVERIFY((FirmwareVersion{1, 2, 3} == FirmwareVersion{1, 2, 3}));
    QVERIFY((FirmwareVersion{1, 2, 3} != FirmwareVersion{1, 2, 4}));
}

void tst_FirmwareVersion::isShownInDecimal()
{
    QCOMPARE((FirmwareVersion{2, 7, 10}.toString()), QStringLiteral("2.7.10"));
    QCOMPARE(FirmwareVersion{}.toString(), QStringLiteral("0.0.0"));
}

QTEST_GUILESS_MAIN(tst_FirmwareVersion)
#include "tst_FirmwareVersion.moc"
