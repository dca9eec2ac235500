#include "device/Records.h"
#include "device/ResultCodes.h"

#include <QRandomGenerator>
#include <QTest>

#include <array>
#include <numeric>

class tst_Records : public QObject
{
    Q_OBJECT

private slots:
    void writesInLines_data();
    void writesInLines();
    void writesEveryByteOnce();
    void asksInDecimal();
    void readsPairs_data();
    void readsPairs();
    void anyReplyIsRead();
    void productConfigInOneLine();
    void productTextsAreData();
};

void tst_Records::writesInLines_data()
{
    QTest::addColumn<quint32>("address");
    QTest::addColumn<int>("size");
    QTest::addColumn<QList<QByteArray>>("beginnings");
    QTest::newRow("system record") << Records::systemConfigAddress << systemConfigSize
                                   << QList<QByteArray>{"wf:S244800064", "wf:S2448000a4", "wf:S2448000e4",
                                                        "wf:S244800124", "wf:S238800164"};
    QTest::newRow("channel record") << Records::channelConfigAddress << channelConfigSize
                                    << QList<QByteArray>{"wf:S244800198", "wf:S2288001d8"};
    QTest::newRow("one byte") << quint32(0x10) << 1 << QList<QByteArray>{"wf:S205000010"};
    QTest::newRow("nothing") << quint32(0x10) << 0 << QList<QByteArray>{};
}

void tst_Records::writesInLines()
{
    QFETCH(quint32, address);
    QFETCH(int, size);
    QFETCH(QList<QByteArray>, beginnings);
    std::array<quint8, systemConfigSize> bytes{};
    std::iota(bytes.begin(), bytes.end(), quint8(250));
    const QList<QByteArray> commands = Records::writeCommands(address, bytes.data(), size);
    QCOMPARE(commands.size(), beginnings.size());
    for (int i = 0; i < commands.size(); ++i) {
        const QByteArray& command = commands.at(i);
        QVERIFY2(command.startsWith(beginnings.at(i)), command.constData());
        QVERIFY(command.endsWith('\n'));
        const QByteArray digits = command.mid(5).chopped(1);
        QCOMPARE(digits, digits.toLower());
        // All bytes of a line, its checksum included, add up to 0xff.
        const QByteArray line = QByteArray::fromHex(digits);
        QCOMPARE(int(quint8(line.at(0))), line.size() - 1);
        QCOMPARE(std::accumulate(line.begin(), line.end(), 0,
                                 [](int sum, char byte) { return sum + quint8(byte); }) &
                     0xff,
                 0xff);
    }
}

void tst_Records::writesEveryByteOnce()
{
    std::array<quint8, systemConfigSize> bytes{};
    std::iota(bytes.begin(), bytes.end(), quint8(1));
    QByteArray written;
    const QList<QByteArray> commands = Records::writeCommands(0x800064, bytes.data(), systemConfigSize);
    for (const QByteArray& command : commands) {
        const QByteArray line = QByteArray::fromHex(command.mid(5).chopped(1));
        written += line.mid(4).chopped(1);
    }
    QCOMPARE(written, QByteArray(reinterpret_cast<const char*>(bytes.data()), systemConfigSize));
    // 0x05 + 0x00 + 0x00 + 0x10 + 0x01 = 0x16
    const quint8 one = 1;
    QCOMPARE(Records::writeCommands(0x10, &one, 1), QList<QByteArray>{"wf:S20500001001e9\n"});
}

void tst_Records::asksInDecimal()
{
    QCOMPARE(Records::readCommand(0x800064, 128), QByteArray("rf: 8388708 128\n"));
    QCOMPARE(Records::readCommand(Records::olderSystemConfigAddress + 256, 52),
             QByteArray("rf: 8388992 52\n"));
}

void tst_Records::readsPairs_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<int>("code");
    const int wrong = DeviceResult::WrongLength;
    QTest::newRow("lower case") << QStringLiteral("rf:00ff7a\n") << 0;
    QTest::newRow("upper case") << QStringLiteral("rf:00FF7A\n") << 0;
    QTest::newRow("blanks around") << QStringLiteral("rf:  00ff7a \r\n") << 0;
    QTest::newRow("another word before the colon") << QStringLiteral("chan_config:00ff7a") << 0;
    QTest::newRow("one digit less") << QStringLiteral("rf:00ff7\n") << wrong;
    QTest::newRow("one pair less") << QStringLiteral("rf:00ff\n") << wrong;
    QTest::newRow("one pair more") << QStringLiteral("rf:00ff7a00\n") << wrong;
    QTest::newRow("no digit") << QStringLiteral("rf:00fg7a\n") << wrong;
    QTest::newRow("blank inside") << QStringLiteral("rf:00 f7a\n") << wrong;
    QTest::newRow("a second colon") << QStringLiteral("rf::00ff7a\n") << wrong;
    QTest::newRow("digits of another script") << QString::fromUtf8("rf:00ff7٠\n") << wrong;
    QTest::newRow("no colon") << QStringLiteral("00ff7a\n") << wrong;
    QTest::newRow("empty") << QString() << wrong;
}

void tst_Records::readsPairs()
{
    QFETCH(QString, reply);
    std::array<quint8, 3> bytes{1, 2, 3};
    QTEST(Records::bytesOf(reply, bytes.data(), int(bytes.size())), "code");
    const bool read = Records::bytesOf(reply, bytes.data(), int(bytes.size())) == DeviceResult::Ok;
    const std::array<quint8, 3> expected{0x00, 0xff, 0x7a};
    QVERIFY(bytes == (read ? expected : std::array<quint8, 3>{1, 2, 3}));
}

void tst_Records::anyReplyIsRead()
{
    QRandomGenerator random(20261121);
    const QString letters = QStringLiteral("0123456789abcdefABCDEF: rfx\n");
    for (int i = 0; i < 10000; ++i) {
        QString reply = QStringLiteral("rf:");
        const int length = random.bounded(10);
        for (int k = 0; k < length; ++k)
            reply.append(letters.at(random.bounded(int(letters.size()))));
        std::array<quint8, 4> bytes{9, 9, 9, 9};
        const int code = Records::bytesOf(reply, bytes.data(), 3);
        QVERIFY(code == DeviceResult::Ok || code == DeviceResult::WrongLength);
        QCOMPARE(int(bytes.at(3)), 9);
    }
}

void tst_Records::productConfigInOneLine()
{
    const ProductConfig record{QStringLiteral("1.2.3"), QStringLiteral("P-1"), QStringLiteral("S-2"),
                               QStringLiteral("N-3"), QStringLiteral("V-4")};
    QCOMPARE(Records::writeProductConfig(record),
             QByteArray("prod_config:vyr_hw_ver=1.2.3,vyr_pn=P-1,vyr_sn=S-2,necsel_laser_sn=N-3,"
                        "novalum_sn=V-4\n"));
    QCOMPARE(Records::writeProductConfig({}),
             QByteArray("prod_config:vyr_hw_ver=,vyr_pn=,vyr_sn=,necsel_laser_sn=,novalum_sn=\n"));
}

void tst_Records::productTextsAreData()
{
    ProductConfig record;
    record.partNumber = QStringLiteral("%1%2");
    record.serialNumber = QString::fromUtf8("Ä%1");
    QCOMPARE(Records::writeProductConfig(record),
             QByteArray("prod_config:vyr_hw_ver=,vyr_pn=%1%2,vyr_sn=Ä%1,necsel_laser_sn=,novalum_sn=\n"));
}

QTEST_APPLESS_MAIN(tst_Records)
#include "tst_Records.moc"
