#include "settings/CalibrationFile.h"
#include "settings/ConfigSamples.h"

#include <QFile>
#include <QTest>

namespace {
QByteArray sampleFile(const QString& name)
{
    QFile file(QStringLiteral(VYR_TEST_DATA "/calibration/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no such sample)");
}

QString channelText(int row, int channel)
{
    const bool isNegative = row == 1 || row == 2 || row == 5 || row == 6;
    return QString::number((isNegative ? -1 : 1) * (1000 * (channel + 1) + row));
}

/// Fills a column with another channel's values.
void setColumn(SystemConfigTexts& texts, int column, int channel)
{
    for (int row = 0; row < novalumRowCount; ++row)
        texts[cellIndex(ConfigTable::Novalum, row, column)] = channelText(row, channel);
}

void setColumn(SystemConfigTexts& texts, int column, const QString& text)
{
    for (int row = 0; row < novalumRowCount; ++row)
        texts[cellIndex(ConfigTable::Novalum, row, column)] = text;
}

/// What the whole samples hold.
SystemConfigTexts sampleTexts()
{
    const char* const leading[] = {"10.5", "0.3",  "25.25", "3900", "-12", "0.75",   "-3.5",
                                   "18",   "28.5", "40",    "20",   "100", "30.125", "45",
                                   "25",   "90",   "29",    "31.5", "55"};
    SystemConfigTexts texts;
    for (std::size_t i = 0; i < std::size(leading); ++i)
        texts[i] = QString::fromLatin1(leading[i]);
    for (int column = 0; column < novalumChannelCount; ++column)
        setColumn(texts, column, column);
    texts.back() = QStringLiteral("60");
    return texts;
}

const QString untouched = QStringLiteral("untouched");
} // namespace

class tst_CalibrationSamples : public QObject
{
    Q_OBJECT

private slots:
    void wholeFiles_data();
    void wholeFiles();
    void columnsLeftAlone_data();
    void columnsLeftAlone();
    void missingMembersBecomeZero();
    void wrongTypesBecomeZero();
    void emptyObject();
    void refusedFilesChangeNothing_data();
    void refusedFilesChangeNothing();
    void deepNesting_data();
    void deepNesting();
    void hugeFiles_data();
    void hugeFiles();
    void hugeNumbers();
};

void tst_CalibrationSamples::wholeFiles_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"by-number.json", "by-wavelength.json", "nine-channels.json",
                             "byte-order-mark.json", "carriage-returns.json"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_CalibrationSamples::wholeFiles()
{
    QFETCH(QString, name);
    SystemConfigTexts texts = allCells(untouched);
    QVERIFY(CalibrationFile::fromJson(sampleFile(name), novalumHeaders(), texts));
    QCOMPARE(texts, sampleTexts());
}

void tst_CalibrationSamples::columnsLeftAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("columns"); // those that are left alone
    QTest::newRow("wavelengths in another order")
        << QStringLiteral("wavelengths-in-another-order.json") << QStringLiteral("0156");
    QTest::newRow("numbers in another order")
        << QStringLiteral("numbers-in-another-order.json") << QStringLiteral("0156");
    QTest::newRow("both keys") << QStringLiteral("both-keys.json") << QStringLiteral("1345");
    QTest::newRow("three channels") << QStringLiteral("three-channels.json") << QStringLiteral("3456");
}

void tst_CalibrationSamples::columnsLeftAlone()
{
    QFETCH(QString, name);
    QFETCH(QString, columns);
    SystemConfigTexts expected = sampleTexts();
    for (const QChar column : qAsConst(columns))
        setColumn(expected, column.digitValue(), untouched);
    SystemConfigTexts texts = allCells(untouched);
    QVERIFY(CalibrationFile::fromJson(sampleFile(name), novalumHeaders(), texts));
    QCOMPARE(texts, expected);
}

void tst_CalibrationSamples::missingMembersBecomeZero()
{
    SystemConfigTexts expected = sampleTexts();
    const QString zero = QStringLiteral("0");
    for (int row = 0; row < 4; ++row) {
        expected[cellIndex(ConfigTable::Fan, row, 0)] = zero;
        expected[cellIndex(ConfigTable::Fan, row, 1)] = zero;
    }
    expected[cellIndex(ConfigTable::Necsel, 5)] = zero;
    expected[cellIndex(ConfigTable::Heater, 0)] = zero;
    expected[cellIndex(ConfigTable::Jiggler, 0)] = zero;
    expected[cellIndex(ConfigTable::Novalum, 7, 1)] = zero;
    expected[cellIndex(ConfigTable::NovalumOverTemperature, 0)] = zero;
    SystemConfigTexts texts = allCells(untouched);
    QVERIFY(CalibrationFile::fromJson(sampleFile(QStringLiteral("members-missing.json")), novalumHeaders(),
                                      texts));
    QCOMPARE(texts, expected);
}

void tst_CalibrationSamples::wrongTypesBecomeZero()
{
    SystemConfigTexts expected = allCells(QStringLiteral("0"));
    for (const int column : {0, 2, 3, 4, 5, 6})
        setColumn(expected, column, untouched);
    expected[cellIndex(ConfigTable::Novalum, 2, 1)] = QStringLiteral("7");
    expected[cellIndex(ConfigTable::Novalum, 5, 1)] = QStringLiteral("-7");
    SystemConfigTexts texts = allCells(untouched);
    QVERIFY(
        CalibrationFile::fromJson(sampleFile(QStringLiteral("wrong-types.json")), novalumHeaders(), texts));
    QCOMPARE(texts, expected);
}

void tst_CalibrationSamples::emptyObject()
{
    SystemConfigTexts expected = allCells(QStringLiteral("0"));
    for (int column = 0; column < novalumChannelCount; ++column)
        setColumn(expected, column, untouched);
    SystemConfigTexts texts = allCells(untouched);
    QVERIFY(
        CalibrationFile::fromJson(sampleFile(QStringLiteral("empty-object.json")), novalumHeaders(), texts));
    QCOMPARE(texts, expected);

    // Channels that stand in no array are no channels.
    expected.back() = QStringLiteral("60");
    texts = allCells(untouched);
    QVERIFY(CalibrationFile::fromJson(sampleFile(QStringLiteral("channels-no-array.json")), novalumHeaders(),
                                      texts));
    QCOMPARE(texts, expected);
}

void tst_CalibrationSamples::refusedFilesChangeNothing_data()
{
    QTest::addColumn<QByteArray>("json");
    for (const char* name : {"top-level-array.json", "truncated.json", "not-utf-8.json", "utf-16.json",
                             "empty.json", "trailing-text.json"}) {
        const QByteArray json = sampleFile(QString::fromLatin1(name));
        QVERIFY2(json != "(no such sample)", name);
        QTest::newRow(name) << json;
    }
    for (const char* json : {"null", "1", "\"{}\"", "{", "}", "{\"a\"}", "{\"a\":1e999}", "{\"a\":nan}",
                             "\xff\xfe", "{\"Jiggler Speed\": 5} {}"})
        QTest::newRow(json) << QByteArray(json);
    QTest::newRow("NUL") << QByteArray("{\0}", 3);
}

void tst_CalibrationSamples::refusedFilesChangeNothing()
{
    QFETCH(QByteArray, json);
    SystemConfigTexts texts = allCells(untouched);
    QVERIFY(!CalibrationFile::fromJson(json, novalumHeaders(), texts));
    QCOMPARE(texts, allCells(untouched));
}

void tst_CalibrationSamples::deepNesting_data()
{
    QTest::addColumn<QByteArray>("opening");
    QTest::newRow("arrays") << QByteArray("[");
    QTest::newRow("objects") << QByteArray(R"({"a":)");
    QTest::newRow("channels") << QByteArray(R"({"Novalum Parameters":{"Channel Parameters":[)");
}

void tst_CalibrationSamples::deepNesting()
{
    QFETCH(QByteArray, opening);
    SystemConfigTexts texts = allCells(untouched);
    QVERIFY(!CalibrationFile::fromJson(R"({"a":)" + opening.repeated(1'000'000), novalumHeaders(), texts));
    QCOMPARE(texts, allCells(untouched));
}

void tst_CalibrationSamples::hugeFiles_data()
{
    QTest::addColumn<QByteArray>("filling"); // over and over, with a number in place of each "#"
    QTest::newRow("blanks") << QByteArray("                    ");
    QTest::newRow("members") << QByteArray(R"("Other #":{"a":[1,2,3]},)");
    QTest::newRow("the same member") << QByteArray(R"("Jiggler Speed":55,)");
}

/// 50 MB in front of the members: what the file is made of does not matter to what it holds.
void tst_CalibrationSamples::hugeFiles()
{
    QFETCH(QByteArray, filling);
    constexpr int size = 50'000'000;
    QByteArray front;
    front.reserve(size + 100);
    for (int number = 0; front.size() < size; ++number)
        front += QByteArray(filling).replace('#', QByteArray::number(number));
    QByteArray json = sampleFile(QStringLiteral("by-number.json")).trimmed();
    json.insert(1, front);
    SystemConfigTexts texts = allCells(untouched);
    QVERIFY(CalibrationFile::fromJson(json, novalumHeaders(), texts));
    QCOMPARE(texts, sampleTexts());
}

void tst_CalibrationSamples::hugeNumbers()
{
    const QByteArray digits(1'000'000, '9');
    const QByteArrayList numbers{digits, "0." + digits, "-" + digits, "1e" + digits, "1e-" + digits};
    for (const QByteArray& number : numbers) {
        SystemConfigTexts texts = allCells(untouched);
        const QByteArray json =
            R"({"Jiggler Speed":)" + number + R"(,"Heater Control Parameters":{"Min Temp":)" + number + "}}";
        const bool taken = CalibrationFile::fromJson(json, novalumHeaders(), texts);
        const QString expected = taken ? texts[cellIndex(ConfigTable::Heater, 0)] : untouched;
        QCOMPARE(texts[cellIndex(ConfigTable::Jiggler, 0)], expected);
    }
}

QTEST_GUILESS_MAIN(tst_CalibrationSamples)
#include "tst_CalibrationSamples.moc"
