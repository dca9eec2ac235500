#include "RecordTools.h"
#include "Simulator/RecordContents.h"
#include "Simulator/RecordMemory.h"

#include <QSet>
#include <QTest>
#include <QtEndian>

#include <cmath>

using namespace Simulator;

namespace {
using Record = RecordMemory::Record;
using Layout = RecordMemory::Layout;

constexpr quint32 kEnd = 0x800200;

float realAt(const QByteArray& record, int offset)
{
    return qFromLittleEndian<float>(record.constData() + offset);
}

quint16 wordAt(const QByteArray& record, int offset)
{
    return qFromLittleEndian<quint16>(record.constData() + offset);
}

/// All of the memory from there on, in the largest pieces.
QByteArray readAll(const RecordMemory& memory, Layout layout, quint32 address, int size)
{
    QByteArray bytes;
    while (bytes.size() < size) {
        const auto piece = std::min<qsizetype>(RecordMemory::kMaxReadBytes, size - bytes.size());
        bytes +=
            *memory.read(layout, address + static_cast<quint32>(bytes.size()), static_cast<quint32>(piece));
    }
    return bytes;
}
} // namespace

Q_DECLARE_METATYPE(Layout)

class tst_RecordMemory : public QObject
{
    Q_OBJECT

private slots:
    void leavesTheFactoryValid();
    void factoryCalibrationIsPlausible();
    void factoryCalibrationsDiffer();
    void factoryLeavesNoFreeByteZero();
    void factoryChannels();
    void oddContentsAreOdd();

    void readsAreBounded_data();
    void readsAreBounded();
    void showsTheRecords();
    void writesAreBounded_data();
    void writesAreBounded();
    void writingTakesTheValidity_data();
    void writingTakesTheValidity();
    void whatIsWrittenIsRead_data();
    void whatIsWrittenIsRead();
    void shortRecords();
};

void tst_RecordMemory::leavesTheFactoryValid()
{
    const RecordMemory memory;
    QVERIFY(memory.isValid(Record::System));
    QVERIFY(memory.isValid(Record::Channels));
    QCOMPARE(memory.bytes(Record::System), RecordContents::factorySystem());
    QCOMPARE(memory.bytes(Record::Channels), RecordContents::factoryChannels());
    QCOMPARE(memory.record(Record::System).size(), 308);
    QCOMPARE(memory.record(Record::Channels).size(), 100);
}

void tst_RecordMemory::factoryCalibrationIsPlausible()
{
    const QByteArray record = RecordContents::factorySystem();
    const auto within = [&record](int offset, float low, float high) {
        return realAt(record, offset) >= low && realAt(record, offset) <= high;
    };
    QVERIFY(within(12, 10.0F, 100.0F)); // amperes
    QVERIFY(within(16, 20.0F, 60.0F));  // degrees Celsius
    QVERIFY(within(20, 0.5F, realAt(record, 12)));
    QVERIFY(within(24, 0.01F, 1.0F));
    QVERIFY(within(28, -50.0F, 50.0F));
    QVERIFY(within(32, 5.0F, 30.0F));
    QVERIFY(within(240, 40.0F, 90.0F));
    for (const int fan : {276, 288}) {
        QVERIFY(within(fan, 15.0F, realAt(record, fan + 4)));
        const auto slow = static_cast<quint8>(record.at(fan + 8));
        const auto full = static_cast<quint8>(record.at(fan + 9));
        QVERIFY(slow > 0 && slow < full && full <= 100);
    }
    QVERIFY(within(300, 5.0F, realAt(record, 304)));
    QVERIFY(static_cast<quint8>(record.at(208)) <= 100);
    QVERIFY(wordAt(record, 264) > 0x7fff); // tells an unsigned reader from a signed one
    QVERIFY(static_cast<qint16>(wordAt(record, 266)) < 0);
}

void tst_RecordMemory::factoryCalibrationsDiffer()
{
    const QByteArray record = RecordContents::factorySystem();
    for (int row = 0; row < 12; ++row) {
        QSet<quint16> values;
        for (int channel = 0; channel < 7; ++channel) {
            values.insert(wordAt(record, 36 + channel * 24 + row * 2));
        }
        QCOMPARE(values.size(), 7);
    }
}

void tst_RecordMemory::factoryLeavesNoFreeByteZero()
{
    const QByteArray record = RecordContents::factorySystem();
    const auto noneZero = [&record](int begin, int end) {
        return !record.mid(begin, end - begin).contains('\0');
    };
    QVERIFY(noneZero(0, 8));
    QVERIFY(noneZero(204, 208));
    QVERIFY(noneZero(209, 240));
    QVERIFY(noneZero(244, 264));
    QVERIFY(noneZero(268, 276));
    QVERIFY(noneZero(286, 288));
    QVERIFY(noneZero(298, 300));
}

void tst_RecordMemory::factoryChannels()
{
    QCOMPARE(RecordContents::factoryChannels().mid(4).toHex(' '),
             QByteArray("01 01 34 34 35 00 00 19 ff 00 00 00 "   // 445
                        "01 03 35 32 30 00 24 ff 00 00 00 00 "   // 520
                        "01 07 37 33 30 00 bc 00 00 00 00 00 "   // 730
                        "01 06 36 34 30 00 ff 13 00 00 00 00 "   // 640
                        "01 00 34 30 35 00 49 00 bc 00 00 00 "   // 405
                        "01 02 34 37 30 00 00 99 ff 00 00 00 "   // 470
                        "01 04 35 32 38 00 41 ff 00 00 00 00 "   // 528
                        "01 05 35 35 35 00 a3 ff 00 00 00 00")); // 555
    QVERIFY(!RecordContents::factoryChannels().left(4).contains('\0'));
}

void tst_RecordMemory::oddContentsAreOdd()
{
    const QByteArray system = RecordContents::oddSystem();
    QCOMPARE(system.size(), 308);
    QVERIFY(std::isnan(realAt(system, 12)));
    QVERIFY(std::isinf(realAt(system, 16)));
    QVERIFY(std::isnan(realAt(system, 240)));
    QCOMPARE(system.mid(36, 172), QByteArray(172, '\xff'));

    const QByteArray channels = RecordContents::oddChannels();
    QCOMPARE(channels.size(), 100);
    QCOMPARE(static_cast<quint8>(channels.at(4 + 1)), quint8(200));
    QVERIFY(static_cast<quint8>(channels.at(4 + 12 + 2)) > 127);
    QCOMPARE(channels.mid(4 + 24, 12), QByteArray(12, '\xff'));
}

void tst_RecordMemory::readsAreBounded_data()
{
    QTest::addColumn<quint32>("address");
    QTest::addColumn<quint32>("count");
    QTest::addColumn<bool>("fits");
    const auto row = [](const char* name, quint32 address, quint32 count, bool fits) {
        QTest::newRow(name) << address << count << fits;
    };
    row("first byte", 0x800000, 1, true);
    row("before it", 0x7fffff, 1, false);
    row("across the beginning", 0x7fffff, 2, false);
    row("last byte", kEnd - 1, 1, true);
    row("behind it", kEnd, 1, false);
    row("across the end", kEnd - 1, 2, false);
    row("most at once", kSystem, 128, true);
    row("more than at once", kSystem, 129, false);
    row("most up to the end", kEnd - 128, 128, true);
    row("nothing", kSystem, 0, false);
    row("nothing behind the end", kEnd, 0, false);
    row("address zero", 0, 128, false);
    row("last address", 0xffffffff, 1, false);
    row("round the end of addresses", 0xffffffff, 0xffffffff, false);
    row("all addresses", kSystem, 0xffffffff, false);
}

void tst_RecordMemory::readsAreBounded()
{
    QFETCH(quint32, address);
    QFETCH(quint32, count);
    QFETCH(bool, fits);
    const RecordMemory memory;
    for (const Layout layout : {Layout::Newer, Layout::Older}) {
        const auto bytes = memory.read(layout, address, count);
        QCOMPARE(bytes.has_value(), fits);
        QCOMPARE(bytes.value_or(QByteArray()).size(), fits ? static_cast<int>(count) : 0);
    }
}

void tst_RecordMemory::showsTheRecords()
{
    const RecordMemory memory;
    const QByteArray system = memory.bytes(Record::System);
    QCOMPARE(readAll(memory, Layout::Newer, 0x800000, 512),
             QByteArray(100, '\xff') + system + memory.bytes(Record::Channels) + QByteArray(4, '\xff'));
    QCOMPARE(readAll(memory, Layout::Older, 0x800000, 512),
             QByteArray(128, '\xff') + system + QByteArray(76, '\xff'));
}

void tst_RecordMemory::writesAreBounded_data()
{
    QTest::addColumn<Layout>("layout");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("fits");
    const auto row = [](const char* name, Layout layout, quint32 address, int size, bool fits) {
        QTest::newRow(name) << layout << address << size << fits;
    };
    row("whole system record", Layout::Newer, kSystem, 308, true);
    row("before the system record", Layout::Newer, kSystem - 1, 2, false);
    row("across both records", Layout::Newer, kChannels - 2, 4, true);
    row("last byte of the channel record", Layout::Newer, kEnd - 5, 1, true);
    row("behind the channel record", Layout::Newer, kEnd - 5, 2, false);
    row("nothing", Layout::Newer, kSystem, 0, false);
    row("address zero", Layout::Newer, 0, 64, false);
    row("round the end of addresses", Layout::Newer, 0xffffffff, 64, false);
    row("older: whole system record", Layout::Older, kSystem, 308, true);
    row("older: behind the system record", Layout::Older, kChannels - 1, 2, false);
    row("older: channel record", Layout::Older, kChannels, 64, false);
}

void tst_RecordMemory::writesAreBounded()
{
    QFETCH(Layout, layout);
    QFETCH(quint32, address);
    QFETCH(int, size);
    QFETCH(bool, fits);
    RecordMemory memory;
    QCOMPARE(memory.write(layout, address, QByteArray(size, '\x5a')), fits);
    if (fits) {
        return;
    }
    QVERIFY(memory.isValid(Record::System)); // what is refused touches nothing
    QVERIFY(memory.isValid(Record::Channels));
    QCOMPARE(memory.bytes(Record::System), RecordContents::factorySystem());
    QCOMPARE(memory.bytes(Record::Channels), RecordContents::factoryChannels());
}

void tst_RecordMemory::writingTakesTheValidity_data()
{
    QTest::addColumn<quint32>("address");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("system");
    QTest::addColumn<bool>("channels");
    QTest::newRow("first byte of the system record") << kSystem << 1 << false << true;
    QTest::newRow("last byte of the system record") << kChannels - 1 << 1 << false << true;
    QTest::newRow("first byte of the channel record") << kChannels << 1 << true << false;
    QTest::newRow("one byte of each") << kChannels - 1 << 2 << false << false;
}

void tst_RecordMemory::writingTakesTheValidity()
{
    QFETCH(quint32, address);
    QFETCH(int, size);
    RecordMemory memory;
    QVERIFY(memory.write(Layout::Newer, address, QByteArray(size, 'x')));
    QTEST(memory.isValid(Record::System), "system");
    QTEST(memory.isValid(Record::Channels), "channels");
    memory.setValid(Record::System, true);
    QVERIFY(memory.isValid(Record::System));
    QTEST(memory.isValid(Record::Channels), "channels"); // each flag for itself
}

void tst_RecordMemory::whatIsWrittenIsRead_data()
{
    QTest::addColumn<Layout>("written");
    QTest::addColumn<Layout>("read");
    QTest::addColumn<quint32>("at");
    QTest::newRow("newer, newer") << Layout::Newer << Layout::Newer << kSystem;
    QTest::newRow("newer, older") << Layout::Newer << Layout::Older << kOlderSystem;
    QTest::newRow("older, newer") << Layout::Older << Layout::Newer << kSystem;
    QTest::newRow("older, older") << Layout::Older << Layout::Older << kOlderSystem;
}

void tst_RecordMemory::whatIsWrittenIsRead()
{
    QFETCH(Layout, written);
    QFETCH(Layout, read);
    QFETCH(quint32, at);
    RecordMemory memory;
    const QByteArray record = countingBytes(308);
    for (int offset = 0; offset < record.size(); offset += 64) {
        QVERIFY(memory.write(written, kSystem + static_cast<quint32>(offset), record.mid(offset, 64)));
    }
    QCOMPARE(readAll(memory, read, at, 308), record);
    QCOMPARE(memory.bytes(Record::Channels), RecordContents::factoryChannels());
}

void tst_RecordMemory::shortRecords()
{
    RecordMemory memory;
    memory.setShort(Record::Channels, true);
    QCOMPARE(memory.record(Record::Channels), memory.bytes(Record::Channels).left(99));
    QCOMPARE(memory.read(Layout::Newer, kSystem, 128)->size(), 128);
    QCOMPARE(memory.read(Layout::Newer, kChannels - 1, 2)->size(), 1);
    memory.setShort(Record::System, true);
    QCOMPARE(*memory.read(Layout::Newer, kSystem, 128), memory.bytes(Record::System).left(127));
    QCOMPARE(memory.read(Layout::Older, kOlderSystem, 128)->size(), 127);
    QCOMPARE(memory.read(Layout::Newer, 0x800000, 100)->size(), 100); // shows none of it
    memory.setShort(Record::System, false);
    QCOMPARE(memory.read(Layout::Newer, kSystem, 128)->size(), 128);
}

QTEST_GUILESS_MAIN(tst_RecordMemory)
#include "tst_RecordMemory.moc"
