#include "settings/ConfigSamples.h"
#include "settings/SystemConfigRecord.h"

#include <QByteArray>
#include <QTest>

#include <vector>

namespace {
/// The record's layout once more, from the description of the device: f a real, b a byte, u and s two bytes.
struct Place
{
    ConfigTable table;
    int row;
    int column;
    int offset;
    char type;
};

std::vector<Place> leadingPlaces()
{
    using Table = ConfigTable;
    return {{Table::Necsel, 0, 0, 12, 'f'},  {Table::Necsel, 1, 0, 20, 'f'},  {Table::Necsel, 2, 0, 16, 'f'},
            {Table::Necsel, 3, 0, 264, 'u'}, {Table::Necsel, 4, 0, 266, 's'}, {Table::Necsel, 5, 0, 24, 'f'},
            {Table::Necsel, 6, 0, 28, 'f'},  {Table::Necsel, 7, 0, 32, 'f'},  {Table::Fan, 0, 0, 276, 'f'},
            {Table::Fan, 1, 0, 280, 'f'},    {Table::Fan, 2, 0, 284, 'b'},    {Table::Fan, 3, 0, 285, 'b'},
            {Table::Fan, 0, 1, 288, 'f'},    {Table::Fan, 1, 1, 292, 'f'},    {Table::Fan, 2, 1, 296, 'b'},
            {Table::Fan, 3, 1, 297, 'b'},    {Table::Heater, 0, 0, 300, 'f'}, {Table::Heater, 1, 0, 304, 'f'},
            {Table::Jiggler, 0, 0, 208, 'b'}};
}

std::vector<Place> allPlaces()
{
    const char novalumTypes[] = "ussuussussuu";
    std::vector<Place> places = leadingPlaces();
    for (int channel = 0; channel < 7; ++channel) {
        for (int row = 0; row < 12; ++row)
            places.push_back(
                {ConfigTable::Novalum, row, channel, 36 + 24 * channel + 2 * row, novalumTypes[row]});
    }
    places.push_back({ConfigTable::NovalumOverTemperature, 0, 0, 240, 'f'});
    return places;
}

struct Sample
{
    QString text;
    QByteArray bytes;
};

/// A value that another type or byte order would show differently.
Sample sampleOf(char type)
{
    switch (type) {
    case 'f':
        return {QStringLiteral("-12.5"), QByteArray::fromHex("000048c1")};
    case 'b':
        return {QStringLiteral("200"), QByteArray::fromHex("c8")};
    case 'u':
        return {QStringLiteral("65244"), QByteArray::fromHex("dcfe")};
    default:
        return {QStringLiteral("-292"), QByteArray::fromHex("dcfe")};
    }
}

/// One cell of each type.
std::size_t cellOf(char type)
{
    switch (type) {
    case 'f':
        return cellIndex(ConfigTable::Heater, 1);
    case 'b':
        return cellIndex(ConfigTable::Jiggler, 0);
    case 'u':
        return cellIndex(ConfigTable::Necsel, 3);
    default:
        return cellIndex(ConfigTable::Necsel, 4);
    }
}

QByteArray bytesOf(const SystemConfigBytes& record)
{
    return {reinterpret_cast<const char*>(record.data()), static_cast<int>(record.size())};
}

SystemConfigBytes recordOf(const QByteArray& bytes)
{
    SystemConfigBytes record{};
    std::copy(bytes.begin(), bytes.end(), record.begin());
    return record;
}
} // namespace

class tst_SystemConfigRecord : public QObject
{
    Q_OBJECT

private slots:
    void everyField_data();
    void everyField();
    void bytesOfNoCellAreKept();
    void textBecomesBytes_data();
    void textBecomesBytes();
    void bytesBecomeText_data();
    void bytesBecomeText();
};

void tst_SystemConfigRecord::everyField_data()
{
    QTest::addColumn<int>("index");
    const std::vector<Place> places = allPlaces();
    QCOMPARE(static_cast<int>(places.size()), systemConfigFieldCount);
    for (int index = 0; index < systemConfigFieldCount; ++index) {
        const Place& place = places[static_cast<std::size_t>(index)];
        QTest::addRow("table %d row %d column %d", static_cast<int>(place.table), place.row, place.column)
            << index;
    }
}

/// A value in its place shows in its cell and in no other, and goes back there and nowhere else.
void tst_SystemConfigRecord::everyField()
{
    QFETCH(int, index);
    const auto position = static_cast<std::size_t>(index);
    const Place place = allPlaces()[position];
    QCOMPARE(cellIndex(place.table, place.row, place.column), position); // the order of the cells
    QCOMPARE(systemConfigFields()[position].type == SystemConfigField::RecordType::Real, place.type == 'f');

    const Sample sample = sampleOf(place.type);
    QByteArray bytes(systemConfigSize, '\0');
    bytes.replace(place.offset, sample.bytes.size(), sample.bytes);
    SystemConfigTexts expected = allCells(QStringLiteral("0"));
    expected[position] = sample.text;
    QCOMPARE(SystemConfigRecord::toTexts(recordOf(bytes)), expected);

    const SystemConfigBytes record = SystemConfigRecord::fromTexts(expected, {});
    bytes.replace(8, 4, QByteArray::fromHex("08000000"));
    QCOMPARE(bytesOf(record).toHex(), bytes.toHex());
}

void tst_SystemConfigRecord::bytesOfNoCellAreKept()
{
    QByteArray base(systemConfigSize, '\0');
    for (int i = 0; i < base.size(); ++i)
        base[i] = static_cast<char>(i % 255 + 1); // never 0
    QByteArray expected = base;
    for (const Place& place : allPlaces()) {
        const auto size = sampleOf(place.type).bytes.size();
        expected.replace(place.offset, size, QByteArray(size, '\0'));
    }
    expected.replace(8, 4, QByteArray::fromHex("08000000"));
    // What follows the Necsel calibration belongs to nobody; it is what a misplaced cell would hit.
    QCOMPARE(expected.mid(268, 8), base.mid(268, 8));
    const auto texts = allCells(QStringLiteral("0"));
    QCOMPARE(bytesOf(SystemConfigRecord::fromTexts(texts, recordOf(base))).toHex(), expected.toHex());
}

void tst_SystemConfigRecord::textBecomesBytes_data()
{
    QTest::addColumn<char>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("hex");

    const struct
    {
        char type;
        const char* text;
        const char* hex;
    } rows[] = {{'f', "abc", "00000000"},
                {'f', "", "00000000"},
                {'f', "0.3", "9a99993e"},
                {'f', "  1.5\r", "0000c03f"},
                {'f', "1,5", "00000000"},
                {'f', "1.5 2", "00000000"},
                {'f', "-0", "00000080"},
                {'f', "3.40282e+38", "eeff7f7f"},
                {'f', "1e39", "00000000"},
                {'f', "-1e39", "00000000"},
                {'f', "1e999", "00000000"},
                {'f', "-1e999", "00000000"},
                {'f', "1e-999", "00000000"},
                {'f', "1e-60", "00000000"},
                {'f', "inf", "00000000"},
                {'f', "-inf", "00000000"},
                {'f', "nan", "00000000"},
                {'f', "0x10", "00000000"},
                {'b', "255", "ff"},
                {'b', "256", "00"},
                {'b', "257", "01"},
                {'b', "65535", "ff"},
                {'b', "65536", "00"},
                {'b', "65537", "00"},
                {'b', "-1", "00"},
                {'b', "1.5", "00"},
                {'b', " 7 ", "07"},
                {'u', "65535", "ffff"},
                {'u', "65536", "0000"},
                {'u', "-1", "0000"},
                {'u', "0x10", "0000"},
                {'u', "010", "0a00"},
                {'u', "99999999999999999999", "0000"},
                {'s', "32767", "ff7f"},
                {'s', "-32768", "0080"},
                {'s', "32768", "0000"},
                {'s', "-32769", "0000"},
                {'s', "1e2", "0000"}};
    for (const auto& row : rows)
        QTest::addRow("%c \"%s\"", row.type, row.text)
            << row.type << QString::fromLatin1(row.text) << QByteArray(row.hex);
}

void tst_SystemConfigRecord::textBecomesBytes()
{
    QFETCH(char, type);
    QFETCH(QString, text);
    QFETCH(QByteArray, hex);
    SystemConfigTexts texts = allCells(QStringLiteral("0"));
    texts[cellOf(type)] = text;
    SystemConfigBytes base{};
    base.fill(0x55);
    const QByteArray record = bytesOf(SystemConfigRecord::fromTexts(texts, base));
    const int offset = systemConfigFields()[cellOf(type)].offset;
    QCOMPARE(record.mid(offset, hex.size() / 2).toHex(), hex);
}

void tst_SystemConfigRecord::bytesBecomeText_data()
{
    QTest::addColumn<char>("type");
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QString>("text");

    const struct
    {
        char type;
        const char* hex;
        const char* text;
    } rows[] = {
        {'f', "9a99993e", "0.3"},         {'f', "00002041", "10"},      {'f', "00247449", "1e+06"},
        {'f', "f0237449", "999999"},      {'f', "79e9f642", "123.456"}, {'f', "acc52737", "1e-05"},
        {'f', "00000080", "0"},           {'f', "000080ff", "-inf"},    {'f', "0000807f", "inf"},
        {'f', "ffffffff", "nan"},         {'f', "0100807f", "nan"},     {'f', "01000000", "1.4013e-45"},
        {'f', "ffff7f7f", "3.40282e+38"}, {'b', "ff", "255"},           {'u', "ffff", "65535"},
        {'u', "0080", "32768"},           {'s', "ffff", "-1"},          {'s', "0080", "-32768"}};
    for (const auto& row : rows)
        QTest::addRow("%c %s", row.type, row.hex)
            << row.type << QByteArray(row.hex) << QString::fromLatin1(row.text);
}

void tst_SystemConfigRecord::bytesBecomeText()
{
    QFETCH(char, type);
    QFETCH(QByteArray, hex);
    QFETCH(QString, text);
    const QByteArray value = QByteArray::fromHex(hex);
    QByteArray bytes(systemConfigSize, '\0');
    bytes.replace(systemConfigFields()[cellOf(type)].offset, value.size(), value);
    QCOMPARE(SystemConfigRecord::toTexts(recordOf(bytes))[cellOf(type)], text);
}

QTEST_GUILESS_MAIN(tst_SystemConfigRecord)
#include "tst_SystemConfigRecord.moc"
