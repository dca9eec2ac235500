#include "settings/CalibrationFile.h"
#include "settings/ChannelConfigRecord.h"
#include "settings/ConfigSamples.h"
#include "settings/NovalumBlock.h"
#include "settings/SystemConfigRecord.h"

#include <QByteArray>
#include <QRegularExpression>
#include <QTest>
#include <QtEndian>

#include <cstring>

namespace {
constexpr quint32 seed = 20'240'611;
constexpr int rounds = 10'000;
const QString untouched = QStringLiteral("untouched");

using RecordType = SystemConfigField::RecordType;
using FileType = SystemConfigField::FileType;

template<typename Bytes>
Bytes randomBytes(Chance& chance)
{
    Bytes bytes{};
    for (quint8& byte : bytes)
        byte = static_cast<quint8>(chance.number(0, 255));
    return bytes;
}

template<typename Bytes>
QByteArray hexOf(const Bytes& bytes)
{
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())).toHex();
}

/// Any bytes, but the reals are such that six digits tell them, and the record says that it has this layout.
SystemConfigBytes sixDigitRecord(Chance& chance)
{
    auto record = randomBytes<SystemConfigBytes>(chance);
    qToLittleEndian<quint32>(8, record.data() + 8);
    for (const SystemConfigField& field : systemConfigFields()) {
        if (field.type != SystemConfigField::RecordType::Real)
            continue;
        const float value = chance.realText().toFloat();
        quint32 bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        qToLittleEndian(bits, record.data() + field.offset);
    }
    return record;
}

/// As the cells show a value that the file can hold.
QString randomCell(const SystemConfigField& field, Chance& chance)
{
    if (field.written == FileType::Unsigned16)
        return QString::number(chance.number(0, 65535));
    if (field.written == FileType::Signed32)
        return QString::number(chance.number(-2147483647 - 1, 2147483647));
    if (!field.readAsReal)
        return QString::number(chance.number(-999'999, 999'999)); // the over-temperature keeps no fraction
    return realText(static_cast<double>(chance.realText().toFloat()));
}

SystemConfigTexts randomCells(Chance& chance)
{
    SystemConfigTexts texts;
    for (std::size_t i = 0; i < texts.size(); ++i)
        texts[i] = randomCell(systemConfigFields()[i], chance);
    return texts;
}

QString randomText(Chance& chance, int longest)
{
    static const char* const pieces[] = {"1",     "9",  "-",   ".",     "e",   "inf", "nan",
                                         " ",     "\t", "\n",  "1e999", "0x1", "+1",  "65535",
                                         "65536", "-1", "1.5", ",",     "%1"};
    QString text;
    for (int length = chance.number(0, longest); length > 0; --length) {
        if (chance.once(4))
            text += QChar(chance.number(0, 0xffff)); // lone surrogates and all
        else
            text += QLatin1String(pieces[chance.number(0, int(std::size(pieces)) - 1)]);
    }
    return text;
}

/// A document that is nearly a calibration file: some bytes are others, some stretches go or come twice.
QByteArray damaged(QByteArray json, Chance& chance)
{
    for (int times = chance.number(0, 4); times > 0; --times) {
        const int place = chance.number(0, int(json.size()) - 1);
        const int length = chance.number(1, chance.once(4) ? 2000 : 8);
        switch (chance.number(0, 3)) {
        case 0:
            json[place] = static_cast<char>(chance.number(0, 255));
            break;
        case 1:
            json.remove(place, length);
            break;
        case 2:
            json.insert(place, json.mid(chance.number(0, int(json.size()) - 1), length));
            break;
        default:
            json[place] = "{}[]\",:0"[chance.number(0, 7)];
            break;
        }
        if (json.isEmpty())
            break;
    }
    return json;
}

bool isShown(const SystemConfigField& field, const QString& text)
{
    bool parses = false;
    if (field.readAsReal)
        text.toDouble(&parses);
    else
        text.toInt(&parses);
    return parses;
}

QString randomBlock(Chance& chance)
{
    QString text;
    for (int field = 1; field <= novalumRowCount * novalumChannelCount; ++field)
        text += QString::number(chance.number(-70'000, 70'000)) +
                QLatin1Char(field % novalumChannelCount == 0 ? '\n' : '\t');
    return text;
}

/// What a block is, told in another way than the parser's.
bool isBlock(const QString& text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(?:NUM(?:\\tNUM){6}\\n){12}[^\\n]*\\z")
            .replace(QStringLiteral("NUM"), QStringLiteral("[^\\S\\t\\n]*[+-]?[0-9]+[^\\S\\t\\n]*")),
        QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression number(QStringLiteral("[+-]?[0-9]+"));
    bool allFit = true;
    for (auto found = number.globalMatch(text.section(QLatin1Char('\n'), 0, novalumRowCount - 1));
         found.hasNext();) {
        bool fits = false;
        const qlonglong value = found.next().captured().toLongLong(&fits);
        allFit = allFit && fits && value >= -2147483648LL && value <= 2147483647LL;
    }
    return allFit && form.match(text).hasMatch();
}
} // namespace

/// What holds of any record, any file and any text. The seeds are fixed, so that a failure can be repeated.
class tst_RecordProperties : public QObject
{
    Q_OBJECT

private slots:
    void recordsSurviveTheCells();
    void shownRecordsStayShown();
    void filesSurvive();
    void recordsSurviveTheFile();
    void channelRecordsSurvive();
    void anyChannelRecordSettles();
    void damagedFiles();
    void noiseAsFiles();
    void anyCells();
    void anyPaste();
};

/// Read, shown and written back, a record is byte for byte the same, where six digits tell its reals.
void tst_RecordProperties::recordsSurviveTheCells()
{
    Chance chance(seed);
    for (int i = 0; i < rounds; ++i) {
        const SystemConfigBytes record = sixDigitRecord(chance);
        const auto texts = SystemConfigRecord::toTexts(record);
        QCOMPARE(hexOf(SystemConfigRecord::fromTexts(texts, record)), hexOf(record));
    }
}

/// Any bytes at all: what a record shows stays once it was written, and what is written are numbers.
void tst_RecordProperties::shownRecordsStayShown()
{
    Chance chance(seed);
    for (int i = 0; i < rounds; ++i) {
        const auto record = randomBytes<SystemConfigBytes>(chance);
        const auto once = SystemConfigRecord::fromTexts(SystemConfigRecord::toTexts(record), record);
        const auto texts = SystemConfigRecord::toTexts(once);
        for (const QString& text : texts)
            QVERIFY2(!text.contains(QLatin1String("nan")) && !text.contains(QLatin1String("inf")),
                     qPrintable(text));
        QCOMPARE(hexOf(SystemConfigRecord::fromTexts(texts, once)), hexOf(once));
    }
}

void tst_RecordProperties::filesSurvive()
{
    Chance chance(seed);
    for (int i = 0; i < rounds / 10; ++i) {
        const SystemConfigTexts texts = randomCells(chance);
        SystemConfigTexts loaded = allCells(untouched);
        QVERIFY(CalibrationFile::fromJson(CalibrationFile::toJson(texts, novalumHeaders()), novalumHeaders(),
                                          loaded));
        QCOMPARE(loaded, texts);
    }
}

/// A unit's calibration kept in a file and written to it again is the same, but for the over-temperature.
void tst_RecordProperties::recordsSurviveTheFile()
{
    Chance chance(seed);
    const int overTemperature = systemConfigFields().back().offset;
    for (int i = 0; i < rounds / 10; ++i) {
        SystemConfigBytes record = sixDigitRecord(chance);
        std::memset(record.data() + overTemperature, 0, sizeof(float));
        SystemConfigTexts texts;
        QVERIFY(CalibrationFile::fromJson(
            CalibrationFile::toJson(SystemConfigRecord::toTexts(record), novalumHeaders()), novalumHeaders(),
            texts));
        QCOMPARE(hexOf(SystemConfigRecord::fromTexts(texts, record)), hexOf(record));
    }
}

void tst_RecordProperties::channelRecordsSurvive()
{
    Chance chance(seed);
    for (int i = 0; i < rounds; ++i) {
        auto record = randomBytes<ChannelConfigBytes>(chance);
        for (int entry = 4; entry < channelConfigSize; entry += 12) {
            quint8* const bytes = record.data() + entry;
            bytes[0] &= 1;
            bytes[1] %= 9;
            // No bytes behind the end of a name.
            for (quint8* name = bytes + 3; name < bytes + 6; ++name)
                *name = name[-1] == 0 ? 0 : *name;
            bytes[9] &= 1;
            bytes[10] %= 8;
        }
        const auto entries = ChannelConfigRecord::decode(record);
        QCOMPARE(hexOf(ChannelConfigRecord::encode(entries, record)), hexOf(record));
    }
}

void tst_RecordProperties::anyChannelRecordSettles()
{
    Chance chance(seed);
    for (int i = 0; i < rounds; ++i) {
        const auto record = randomBytes<ChannelConfigBytes>(chance);
        const auto entries = ChannelConfigRecord::decode(record);
        for (const ChannelConfigEntry& entry : entries) {
            QVERIFY(entry.type >= 0 && entry.type <= 8);
            QVERIFY(entry.primary >= 0 && entry.primary <= 7);
            QVERIFY(entry.name.size() <= 4 && !entry.name.contains(QChar(0)));
        }
        const auto once = ChannelConfigRecord::encode(entries, record);
        const auto twice = ChannelConfigRecord::encode(ChannelConfigRecord::decode(once), once);
        QCOMPARE(hexOf(twice), hexOf(once));
    }
}

void tst_RecordProperties::damagedFiles()
{
    Chance chance(seed);
    const QByteArray whole = CalibrationFile::toJson(randomCells(chance), novalumHeaders());
    int taken = 0;
    int refused = 0;
    for (int i = 0; i < rounds; ++i) {
        const QByteArray json = damaged(whole, chance);
        SystemConfigTexts texts = allCells(untouched);
        if (!CalibrationFile::fromJson(json, novalumHeaders(), texts)) {
            ++refused;
            QCOMPARE(texts, allCells(untouched));
            continue;
        }
        ++taken;
        for (std::size_t cell = 0; cell < texts.size(); ++cell) {
            const SystemConfigField& field = systemConfigFields()[cell];
            const bool isLeft = field.cell.table == ConfigTable::Novalum && texts[cell] == untouched;
            QVERIFY2(isLeft || isShown(field, texts[cell]), qPrintable(texts[cell]));
        }
    }
    // Damage that never, or always, makes a file useless would try little.
    QVERIFY2(taken > rounds / 10 && refused > rounds / 10, qPrintable(QString::number(taken)));
}

void tst_RecordProperties::noiseAsFiles()
{
    Chance chance(seed);
    for (int i = 0; i < rounds; ++i) {
        QByteArray json(chance.number(0, 300), Qt::Uninitialized);
        for (char& byte : json)
            byte = static_cast<char>(chance.once(2) ? chance.number(0, 255)
                                                    : "{}[]\",:1e."[chance.number(0, 9)]);
        SystemConfigTexts texts = allCells(untouched);
        const bool isTaken = CalibrationFile::fromJson(json, novalumHeaders(), texts);
        QCOMPARE(texts[0], isTaken ? QStringLiteral("0") : untouched);
    }
}

/// Whatever stands in the cells, record and file take it, and the file is one that can be loaded.
void tst_RecordProperties::anyCells()
{
    Chance chance(seed);
    for (int i = 0; i < rounds / 10; ++i) {
        SystemConfigTexts texts;
        for (QString& text : texts)
            text = randomText(chance, 6);
        const auto record = SystemConfigRecord::fromTexts(texts, {});
        const auto shown = SystemConfigRecord::toTexts(record);
        QCOMPARE(hexOf(SystemConfigRecord::fromTexts(shown, {})).size(), 2 * systemConfigSize);
        SystemConfigTexts loaded = allCells(untouched);
        QVERIFY(CalibrationFile::fromJson(CalibrationFile::toJson(texts, novalumHeaders()), novalumHeaders(),
                                          loaded));
        for (std::size_t cell = 0; cell < loaded.size(); ++cell)
            QVERIFY2(isShown(systemConfigFields()[cell], loaded[cell]), qPrintable(loaded[cell]));
    }
}

/// Taken exactly when every field is a number and none is missing or too many.
void tst_RecordProperties::anyPaste()
{
    Chance chance(seed);
    int taken = 0;
    int refused = 0;
    for (int i = 0; i < rounds; ++i) {
        QString text = randomBlock(chance);
        if (!chance.once(8))
            text.insert(chance.number(0, int(text.size()) - 1), randomText(chance, 4));
        const auto block = parseNovalumBlock(text);
        QVERIFY2(block.has_value() == isBlock(text), text.toUtf8().toPercentEncoding().constData());
        block ? ++taken : ++refused;
        QVERIFY(!parseNovalumBlock(randomText(chance, 200)).has_value());
    }
    QVERIFY(taken > rounds / 4);
    QVERIFY(refused > rounds / 4);
}

QTEST_GUILESS_MAIN(tst_RecordProperties)
#include "tst_RecordProperties.moc"
