#include "device/SerialPorts.h"

#include <QTest>

class tst_SerialPorts : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { SerialPorts::setLister({}); }
    void acceptedIdentifiers_data();
    void acceptedIdentifiers();
    void listerReplacesThePlatformsList();
    void listerMayReplaceItself();
    void listedIlluminatorNeedsNameAndIdentifiers();
};

using Identifier = std::optional<quint16>;
Q_DECLARE_METATYPE(Identifier)

void tst_SerialPorts::acceptedIdentifiers_data()
{
    QTest::addColumn<Identifier>("vendor");
    QTest::addColumn<Identifier>("product");
    QTest::addColumn<bool>("accepted");

    QTest::newRow("first pair") << Identifier(12070) << Identifier(15000) << true;
    QTest::newRow("second pair") << Identifier(1003) << Identifier(9220) << true;
    QTest::newRow("pairs mixed") << Identifier(12070) << Identifier(9220) << false;
    QTest::newRow("pairs mixed the other way") << Identifier(1003) << Identifier(15000) << false;
    QTest::newRow("swapped") << Identifier(15000) << Identifier(12070) << false;
    QTest::newRow("no vendor") << Identifier() << Identifier(15000) << false;
    QTest::newRow("no product") << Identifier(12070) << Identifier() << false;
    QTest::newRow("neither") << Identifier() << Identifier() << false;
    QTest::newRow("zero") << Identifier(0) << Identifier(0) << false;
}

void tst_SerialPorts::acceptedIdentifiers()
{
    QFETCH(const Identifier, vendor);
    QFETCH(const Identifier, product);
    QFETCH(const bool, accepted);
    QCOMPARE(SerialPorts::isIlluminator({QStringLiteral("port"), vendor, product}), accepted);
}

void tst_SerialPorts::listerReplacesThePlatformsList()
{
    const auto platformCount = SerialPorts::available().size();
    SerialPorts::setLister([] {
        return QList<SerialPortEntry>{{QStringLiteral("a"), 1, 2}, {QStringLiteral("b"), {}, {}}};
    });
    const auto ports = SerialPorts::available();
    QCOMPARE(ports.size(), 2);
    QCOMPARE(ports[0].name, QStringLiteral("a"));
    QCOMPARE(ports[1].name, QStringLiteral("b"));
    SerialPorts::setLister({});
    QCOMPARE(SerialPorts::available().size(), platformCount);
}

void tst_SerialPorts::listerMayReplaceItself()
{
    SerialPorts::setLister([marker = QStringLiteral("first")] {
        SerialPorts::setLister([] { return QList<SerialPortEntry>{}; });
        return QList<SerialPortEntry>{{marker, {}, {}}};
    });
    QCOMPARE(SerialPorts::available().value(0).name, QStringLiteral("first"));
    QVERIFY(SerialPorts::available().isEmpty());
}

void tst_SerialPorts::listedIlluminatorNeedsNameAndIdentifiers()
{
    const QList<SerialPortEntry> ports{{QStringLiteral("other"), 12070, 15000},
                                       {QStringLiteral("mine"), 12070, 15001}};
    QVERIFY(SerialPorts::isListedIlluminator(ports, QStringLiteral("other")));
    QVERIFY(!SerialPorts::isListedIlluminator(ports, QStringLiteral("mine")));
    QVERIFY(!SerialPorts::isListedIlluminator(ports, QStringLiteral("gone")));
    QVERIFY(!SerialPorts::isListedIlluminator({}, QStringLiteral("other")));
}

QTEST_GUILESS_MAIN(tst_SerialPorts)
#include "tst_SerialPorts.moc"
