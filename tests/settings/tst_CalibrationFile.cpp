#include "settings/CalibrationFile.h"
#include "settings/ConfigSamples.h"
#include "support/FileSizeLimit.h"
#include "support/WarningWatch.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <sys/stat.h>

namespace {
using Table = ConfigTable;

/// The form of the file once more, by hand: r a real, i an integer of 32 bits, u one of 16 without a sign; o
/// the over-temperature, which is a real when written and an integer when read.
struct Member
{
    const char* section; // none: at the top
    const char* name;
    Table table;
    int row;
    int column;
    char type;
};

const Member members[] = {
    {"Necsel Parameters", "Max Laser Amps", Table::Necsel, 0, 0, 'r'},
    {"Necsel Parameters", "Simmer Current Amps", Table::Necsel, 1, 0, 'r'},
    {"Necsel Parameters", "XLT Temp Setpoint", Table::Necsel, 2, 0, 'r'},
    {"Necsel Parameters", "Analog Cal Max", Table::Necsel, 3, 0, 'i'},
    {"Necsel Parameters", "Analog Cal Offset", Table::Necsel, 4, 0, 'i'},
    {"Necsel Parameters", "Output Gain", Table::Necsel, 5, 0, 'r'},
    {"Necsel Parameters", "Output Offset", Table::Necsel, 6, 0, 'r'},
    {"Necsel Parameters", "Laser Min Temp", Table::Necsel, 7, 0, 'r'},
    {"Fan Control Parameters", "Necsel Low Fan Temp", Table::Fan, 0, 0, 'r'},
    {"Fan Control Parameters", "Necsel Full Fan Temp", Table::Fan, 1, 0, 'r'},
    {"Fan Control Parameters", "Necsel Low Fan Speed", Table::Fan, 2, 0, 'u'},
    {"Fan Control Parameters", "Necsel Full Fan Speed", Table::Fan, 3, 0, 'u'},
    {"Fan Control Parameters", "Novalum Low Fan Temp", Table::Fan, 0, 1, 'r'},
    {"Fan Control Parameters", "Novalum Full Fan Temp", Table::Fan, 1, 1, 'r'},
    {"Fan Control Parameters", "Novalum Low Fan Speed", Table::Fan, 2, 1, 'u'},
    {"Fan Control Parameters", "Novalum Full Fan Speed", Table::Fan, 3, 1, 'u'},
    {"Heater Control Parameters", "Min Temp", Table::Heater, 0, 0, 'r'},
    {"Heater Control Parameters", "Max Temp", Table::Heater, 1, 0, 'r'},
    {nullptr, "Jiggler Speed", Table::Jiggler, 0, 0, 'u'},
    {"Novalum Parameters", "Over Temp", Table::NovalumOverTemperature, 0, 0, 'o'},
};

const struct
{
    const char* name;
    char type;
} channelMembers[] = {{"DAC Coeff A", 'u'},          {"DAC Coeff B", 'i'},
                      {"DAC Coeff C", 'i'},          {"DAC Shift", 'u'},
                      {"Preflux Coeff A", 'u'},      {"Preflux Coeff B", 'i'},
                      {"Preflux Coeff C", 'i'},      {"Preflux Shift", 'u'},
                      {"Inrush OC Time Index", 'i'}, {"Normal OC Time Index", 'i'},
                      {"Analog Cal Max", 'u'},       {"Analog Cal Offset", 'u'}};

QJsonObject rootOf(const SystemConfigTexts& texts)
{
    return QJsonDocument::fromJson(CalibrationFile::toJson(texts, novalumHeaders())).object();
}

QJsonArray channelsOf(const QJsonObject& root)
{
    return root[QLatin1String("Novalum Parameters")][QLatin1String("Channel Parameters")].toArray();
}

/// What a member holds when its cell has the text and all others "0".
QJsonValue written(const Member& member, const QString& text)
{
    SystemConfigTexts texts = allCells(QStringLiteral("0"));
    texts[cellIndex(member.table, member.row, member.column)] = text;
    const QJsonObject root = rootOf(texts);
    const QJsonObject home =
        member.section == nullptr ? root : root[QLatin1String(member.section)].toObject();
    return home[QLatin1String(member.name)];
}

/// A document with this member alone.
QByteArray documentWith(const Member& member, const QByteArray& value)
{
    const QByteArray object = QByteArray("{\"") + member.name + "\": " + value + '}';
    return member.section == nullptr ? object : QByteArray("{\"") + member.section + "\": " + object + '}';
}

void addMembers()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const Member& member : members)
        QTest::newRow(member.name) << index++;
}

QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}
} // namespace

class tst_CalibrationFile : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void holdsNothingElse();
    void everyMemberIsWritten_data() { addMembers(); }
    void everyMemberIsWritten();
    void everyMemberIsRead_data() { addMembers(); }
    void everyMemberIsRead();
    void everyChannelMember_data();
    void everyChannelMember();
    void headersNameTheChannels();
    void isWritten();
    void replacesAFile();
    void makesTheFolder();
    void cannotBeWritten_data();
    void cannotBeWritten();
    void fullDisk();
    void followsALink();
    void leavesPipesAlone();

private:
    QString path(const char* name) const { return m_folder->filePath(QLatin1String(name)); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_CalibrationFile::holdsNothingElse()
{
    const QByteArray json = CalibrationFile::toJson(allCells(QStringLiteral("7")), novalumHeaders());
    QVERIFY(json.startsWith("{\n    \"Fan Control Parameters\": {\n        \"Necsel Full Fan Speed\": 7,\n"));
    const QJsonObject root = QJsonDocument::fromJson(json).object();
    QCOMPARE(root.keys().join(QLatin1Char('|')),
             QStringLiteral("Fan Control Parameters|Heater Control Parameters|Jiggler Speed|"
                            "Necsel Parameters|Novalum Parameters"));
    QCOMPARE(root[QLatin1String("Necsel Parameters")].toObject().size(), 8);
    QCOMPARE(root[QLatin1String("Fan Control Parameters")].toObject().size(), 8);
    QCOMPARE(root[QLatin1String("Heater Control Parameters")].toObject().size(), 2);
    QCOMPARE(root[QLatin1String("Novalum Parameters")].toObject().size(), 2);
    const QJsonArray channels = channelsOf(root);
    QCOMPARE(channels.size(), 7);
    for (int column = 0; column < channels.size(); ++column) {
        const QJsonObject element = channels[column].toObject();
        QCOMPARE(element.keys(), QStringList(QString::number(column + 1)));
        QCOMPARE(element.begin().value().toObject().size(), 12);
    }
    const QByteArrayList lines = json.split('\n');
    for (const QByteArray& line : lines)
        QVERIFY2(!line.contains(": ") || line.endsWith(": 7") || line.endsWith(": 7,") ||
                     line.endsWith('{') || line.endsWith('['),
                 line.constData());
}

void tst_CalibrationFile::everyMemberIsWritten()
{
    QFETCH(int, index);
    const Member& member = members[index];
    const auto expect = [&](const char* text, double number) {
        QVERIFY2(written(member, QLatin1String(text)) == QJsonValue(number), text);
    };
    const bool isReal = member.type == 'r' || member.type == 'o';
    const bool isSigned = member.type == 'i';
    expect("0.3", isReal ? 0.30000001192092896 : 0.0);
    expect("-25.5", isReal ? -25.5 : 0.0);
    expect("1e3", isReal ? 1000.0 : 0.0);
    expect("-3", member.type == 'u' ? 0.0 : -3.0);
    expect(" 12\r", 12.0);
    expect("65535", 65535.0);
    expect("65536", member.type == 'u' ? 0.0 : 65536.0);
    expect("2147483647", isReal ? 2147483648.0 : isSigned ? 2147483647.0 : 0.0);
    expect("2147483648", isReal ? 2147483648.0 : 0.0);
    for (const char* text : {"abc", "", "inf", "-inf", "nan", "1e39", "1e999", "0x1f", "1,5"})
        expect(text, 0.0);
}

void tst_CalibrationFile::everyMemberIsRead()
{
    QFETCH(int, index);
    const Member& member = members[index];
    const std::size_t cell = cellIndex(member.table, member.row, member.column);
    const auto expect = [&](const char* value, const char* text) {
        SystemConfigTexts texts = allCells(QStringLiteral("old"));
        QVERIFY(CalibrationFile::fromJson(documentWith(member, value), novalumHeaders(), texts));
        QCOMPARE(texts[cell], QString::fromLatin1(text));
        // Whatever the document lacks becomes 0, except for the channels.
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const bool isChannel = systemConfigFields()[i].cell.table == Table::Novalum;
            const QString other = isChannel ? QStringLiteral("old") : QStringLiteral("0");
            QVERIFY(i == cell || texts[i] == other);
        }
    };
    const bool asReal = member.type == 'r';
    expect("42", "42");
    expect("42.0", "42");
    expect("4.2e1", "42");
    expect("-7", "-7");
    expect("0.30000001192092896", asReal ? "0.3" : "0");
    expect("40.5", asReal ? "40.5" : "0");
    expect("1234567", asReal ? "1.23457e+06" : "1234567");
    expect("2147483647", asReal ? "2.14748e+09" : "2147483647");
    expect("2147483648", asReal ? "2.14748e+09" : "0");
    expect("-2147483648", asReal ? "-2.14748e+09" : "-2147483648");
    expect("1e300", asReal ? "1e+300" : "0");
    expect("9223372036854775808", asReal ? "9.22337e+18" : "0");
    for (const char* value : {"\"42\"", "true", "null", "[42]", "{\"x\": 42}"})
        expect(value, "0");
}

void tst_CalibrationFile::everyChannelMember_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("row");
    for (int column = 0; column < 7; ++column) {
        for (int row = 0; row < 12; ++row)
            QTest::addRow("%s of channel %d", channelMembers[row].name, column) << column << row;
    }
}

void tst_CalibrationFile::everyChannelMember()
{
    QFETCH(int, column);
    QFETCH(int, row);
    const std::size_t cell = cellIndex(Table::Novalum, row, column);
    const bool isSigned = channelMembers[row].type == 'i';
    const struct
    {
        const char* text;
        int number;
    } samples[] = {{"65535", 65535},          {"65536", isSigned ? 65536 : 0},
                   {"-5", isSigned ? -5 : 0}, {"2147483647", isSigned ? 2147483647 : 0},
                   {"2147483648", 0},         {"1.5", 0}};
    for (const auto& sample : samples) {
        SystemConfigTexts texts = allCells(QStringLiteral("0"));
        texts[cell] = QString::fromLatin1(sample.text);
        const QByteArray json = CalibrationFile::toJson(texts, novalumHeaders());
        const QJsonArray channels = channelsOf(QJsonDocument::fromJson(json).object());
        const QJsonValue channel = channels[column].toObject()[QString::number(column + 1)];
        QCOMPARE(channel[QLatin1String(channelMembers[row].name)], QJsonValue(sample.number));

        SystemConfigTexts expected = allCells(QStringLiteral("0"));
        expected[cell] = QString::number(sample.number);
        SystemConfigTexts loaded = allCells(QStringLiteral("old"));
        QVERIFY(CalibrationFile::fromJson(json, novalumHeaders(), loaded));
        QCOMPARE(loaded, expected);
    }
}

void tst_CalibrationFile::headersNameTheChannels()
{
    QStringList headers = novalumHeaders();
    headers[2] = QStringLiteral("red \"%1\"\n");
    SystemConfigTexts texts = allCells(QStringLiteral("3"));
    const QByteArray json = CalibrationFile::toJson(texts, headers);
    const QJsonArray channels = channelsOf(QJsonDocument::fromJson(json).object());
    QCOMPARE(channels[2].toObject().keys(), QStringList(headers[2]));

    texts = allCells(QStringLiteral("old"));
    QVERIFY(CalibrationFile::fromJson(json, novalumHeaders(), texts));
    QCOMPARE(texts[cellIndex(Table::Novalum, 0, 2)], QStringLiteral("old"));
    QVERIFY(CalibrationFile::fromJson(json, headers, texts));
    QCOMPARE(texts, allCells(QStringLiteral("3")));

    // A table with too few headers has no channel by an empty name.
    texts = allCells(QStringLiteral("old"));
    QVERIFY(CalibrationFile::fromJson(json, {}, texts));
    QCOMPARE(texts[cellIndex(Table::Novalum, 0, 0)], QStringLiteral("old"));
}

void tst_CalibrationFile::isWritten()
{
    QVERIFY(CalibrationFile::write(path("new.json"), "{}\n"));
    QCOMPARE(contentOf(path("new.json")), QByteArray("{}\n"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void tst_CalibrationFile::replacesAFile()
{
    QVERIFY(CalibrationFile::write(path("a.json"), QByteArray(5000, 'x')));
    QVERIFY(CalibrationFile::write(path("a.json"), "short"));
    QCOMPARE(contentOf(path("a.json")), QByteArray("short"));
}

void tst_CalibrationFile::makesTheFolder()
{
    const QString name = path("one/two words/%1/file.json");
    QVERIFY(CalibrationFile::write(name, "{}"));
    QCOMPARE(contentOf(name), QByteArray("{}"));
}

void tst_CalibrationFile::cannotBeWritten_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no name") << QString();
    QTest::newRow("a folder") << QStringLiteral(".");
    QTest::newRow("a folder by its name") << QStringLiteral("folder");
    QTest::newRow("below a file") << QStringLiteral("file/below.json");
    QTest::newRow("far below a file") << QStringLiteral("file/far/below.json");
    QTest::newRow("name too long") << QString(300, QLatin1Char('n'));
}

void tst_CalibrationFile::cannotBeWritten()
{
    QFETCH(QString, name);
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(CalibrationFile::write(path("file"), "as it was"));
    const WarningWatch warnings;
    QVERIFY(!CalibrationFile::write(name.isEmpty() ? name : m_folder->filePath(name), "{}"));
    QCOMPARE(WarningWatch::messages(), QStringList());
    QCOMPARE(contentOf(path("file")), QByteArray("as it was"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(),
             2);
}

void tst_CalibrationFile::fullDisk()
{
    const QByteArray before = CalibrationFile::toJson(allCells(QStringLiteral("1")), novalumHeaders());
    QVERIFY(CalibrationFile::write(path("a.json"), before));
    {
        const FileSizeLimit limit(1000);
        QVERIFY(!CalibrationFile::write(path("a.json"), before + "more"));
        QVERIFY(!CalibrationFile::write(path("b.json"), before));
    }
    QCOMPARE(contentOf(path("a.json")), before);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList("a.json"));
}

void tst_CalibrationFile::followsALink()
{
    QVERIFY(CalibrationFile::write(path("real.json"), "old"));
    QVERIFY(QFile::link(QStringLiteral("real.json"), path("link.json")));
    QVERIFY(CalibrationFile::write(path("link.json"), "new"));
    QVERIFY(QFileInfo(path("link.json")).isSymLink());
    QCOMPARE(contentOf(path("real.json")), QByteArray("new"));
}

/// A link stands for what it leads to; a pipe must not become a file.
void tst_CalibrationFile::leavesPipesAlone()
{
    const QByteArray pipe = QFile::encodeName(path("pipe"));
    QCOMPARE(::mkfifo(pipe.constData(), S_IRUSR | S_IWUSR), 0);
    QVERIFY(QFile::link(QStringLiteral("pipe"), path("link.json")));
    QVERIFY(!CalibrationFile::write(path("pipe"), "{}"));
    QVERIFY(!CalibrationFile::write(path("link.json"), "{}"));
    struct stat entry
    {
    };
    QCOMPARE(::stat(pipe.constData(), &entry), 0);
    QVERIFY(S_ISFIFO(entry.st_mode));
}

QTEST_GUILESS_MAIN(tst_CalibrationFile)
#include "tst_CalibrationFile.moc"
