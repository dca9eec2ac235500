#include "compat/QtVersion.h"
#include "mainwindow/ChannelTable.h"
#include "mainwindow/SettingsStore.h"
#include "mainwindow/UserSettings.h"
#include "mainwindow/WindowBench.h"
#include "support/FileSizeLimit.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QTest>

#include <cmath>
#include <limits>
#include <memory>

/// The kept settings as data: keys, types, defaults, and what becomes of values that make no sense.
class tst_UserSettings : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_bench = std::make_unique<WindowBench>(); }
    void cleanup() { m_bench.reset(); }
    void emptyStoreGivesDefaults();
    void emptyStoreGivesChannelDefaults_data();
    void emptyStoreGivesChannelDefaults();
    void keysAndTypes_data();
    void keysAndTypes();
    void layoutKeysAndTypes();
    void everythingComesBack();
    void unknownKeysStay();
    void foreignTextsStay();
    void values_data();
    void values();
    void colourStaysLowerCase();
    void unreadableFileIsKept();
    void unreadableCopiesAreNeverReplaced();
    void readableFileIsNotCopied();
    void savingIntoAFolderFails();
    void fullDiskKeepsTheOldFile();

private:
    UserSettings read() const { return readUserSettings(*openSettingsStore()); }

    std::unique_ptr<WindowBench> m_bench;
};

void tst_UserSettings::emptyStoreGivesDefaults()
{
    const auto store = openSettingsStore();
    QCOMPARE(store->fileName(), m_bench->settingsFileName());
    const UserSettings settings = readUserSettings(*store);
    QCOMPARE(settings.comPort, QStringLiteral("COM4"));
    QCOMPARE(settings.choices.sleepTimerEnabled, true);
    QCOMPARE(settings.choices.sleepMinutes, 30);
    QCOMPARE(int(settings.choices.shutterControl), 1);
    QCOMPARE(int(settings.choices.intensityControl), 1);
    QCOMPARE(settings.choices.speckleReducer, true);
    QCOMPARE(settings.choices.verboseLogging, false);
    const WindowLayout layout = readWindowLayout(*store);
    QCOMPARE(layout.collapsed, false);
    QVERIFY(layout.geometry.isEmpty());
    QVERIFY(layout.state.isEmpty());
    QVERIFY(store->allKeys().isEmpty());
}

void tst_UserSettings::emptyStoreGivesChannelDefaults_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("colour");
    QTest::newRow("1") << 0 << QStringLiteral("405nm") << QStringLiteral("4900bc");
    QTest::newRow("2") << 1 << QStringLiteral("445nm") << QStringLiteral("0019ff");
    QTest::newRow("3") << 2 << QStringLiteral("470nm") << QStringLiteral("0099ff");
    QTest::newRow("4") << 3 << QStringLiteral("520nm") << QStringLiteral("24ff00");
    QTest::newRow("5") << 4 << QStringLiteral("528nm") << QStringLiteral("41ff00");
    QTest::newRow("6") << 5 << QStringLiteral("555nm") << QStringLiteral("a3ff00");
    QTest::newRow("7") << 6 << QStringLiteral("640nm") << QStringLiteral("ff2500");
    QTest::newRow("8") << 7 << QStringLiteral("730nm") << QStringLiteral("bc0000");
}

void tst_UserSettings::emptyStoreGivesChannelDefaults()
{
    QFETCH(int, index);
    const ChannelSettings channel = read().channels.at(static_cast<std::size_t>(index));
    QTEST(channel.name, "name");
    QTEST(ChannelTable::colourToText(channel.colour), "colour");
    QCOMPARE(channel.intensity, 0.0F);
    QCOMPARE(channel.visible, true);
    QCOMPARE(channel.ttlInverted, false);
}

void tst_UserSettings::keysAndTypes_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char* key, const QVariant& value) {
        QTest::newRow(key) << QString::fromLatin1(key) << value;
    };
    row("Channel3/Channel Name", QStringLiteral("Sky"));
    row("Channel3/Channel Intensity", 12.5);
    row("Channel3/Channel Visible", false);
    row("Channel3/Channel Shutter TTL Invert", true);
    row("Channel3/Channel Color", QStringLiteral("0a0b0c"));
    row("Channel1/Channel Name", QStringLiteral("405nm"));
    row("Channel8/Channel Color", QStringLiteral("bc0000"));
    row("Device Com Port", QStringLiteral("ttyACM7"));
    row("Sleep Timer", 45);
    row("Sleep Timer Enabled", false);
    row("Shutter Control", 0U);
    row("Intensity Control", 0U);
    row("Speckle Reducer Enable", false);
    row("Verbose Data Logging", true);
}

void tst_UserSettings::keysAndTypes()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    UserSettings settings = read();
    settings.channels.at(2) = {QStringLiteral("Sky"), 12.5F, false, true, QColor(0x0a, 0x0b, 0x0c)};
    settings.comPort = QStringLiteral("ttyACM7");
    settings.choices = {false, 45, 0, 0, false, true};
    const auto store = openSettingsStore();
    writeUserSettings(*store, settings);
    QCOMPARE(store->value(key).userType(), value.userType());
    QCOMPARE(store->value(key), value);
    QCOMPARE(store->allKeys().size(), 8 * 5 + 7);
    QVERIFY(flushSettings(*store));
    QCOMPARE(m_bench->stored(key).toString(), value.toString());
}

void tst_UserSettings::layoutKeysAndTypes()
{
    const auto store = openSettingsStore();
    writeWindowLayout(*store, {true, QByteArray("g\0e", 3), QByteArray("state")});
    QCOMPARE(store->allKeys(), QStringList({QStringLiteral("Window Minimized"), QStringLiteral("geometry"),
                                            QStringLiteral("windowState")}));
    QCOMPARE(store->value(QStringLiteral("Window Minimized")), QVariant(true));
    QCOMPARE(store->value(QStringLiteral("geometry")), QVariant(QByteArray("g\0e", 3)));
    QCOMPARE(store->value(QStringLiteral("windowState")), QVariant(QByteArray("state")));
    QVERIFY(flushSettings(*store));
    const WindowLayout layout = readWindowLayout(*openSettingsStore());
    QCOMPARE(layout.collapsed, true);
    QCOMPARE(layout.geometry, QByteArray("g\0e", 3));
    QCOMPARE(layout.state, QByteArray("state"));
}

void tst_UserSettings::everythingComesBack()
{
    UserSettings settings = read();
    settings.channels.at(0).name =
        QString(500, QLatin1Char('%')) + QStringLiteral("/\\\"'\n\r\t;=[]@Invalid()");
    settings.channels.at(7) = {QString(), 100.0F, false, true, QColor(1, 2, 3)};
    settings.comPort = QStringLiteral("/dev/my port");
    settings.choices = {false, 0, 0, 1, false, true};
    {
        const auto store = openSettingsStore();
        writeUserSettings(*store, settings);
        QVERIFY(flushSettings(*store));
    }
    const UserSettings again = read();
    for (std::size_t i = 0; i < settings.channels.size(); ++i) {
        QCOMPARE(again.channels.at(i).name, settings.channels.at(i).name);
        QCOMPARE(again.channels.at(i).intensity, settings.channels.at(i).intensity);
        QCOMPARE(again.channels.at(i).visible, settings.channels.at(i).visible);
        QCOMPARE(again.channels.at(i).ttlInverted, settings.channels.at(i).ttlInverted);
        QCOMPARE(again.channels.at(i).colour.name(), settings.channels.at(i).colour.name());
    }
    QCOMPARE(again.comPort, settings.comPort);
    QCOMPARE(again.choices.sleepTimerEnabled, false);
    QCOMPARE(again.choices.sleepMinutes, 0);
    QCOMPARE(int(again.choices.shutterControl), 0);
    QCOMPARE(int(again.choices.intensityControl), 1);
    QCOMPARE(again.choices.speckleReducer, false);
    QCOMPARE(again.choices.verboseLogging, true);
}

void tst_UserSettings::unknownKeysStay()
{
    QVERIFY(
        m_bench->writeSettingsFile("[General]\nBrowse Path=/tmp/x\n[Other]\nkey=7\n[Channel1]\nExtra=1\n"));
    const auto store = openSettingsStore();
    writeUserSettings(*store, readUserSettings(*store));
    QVERIFY(flushSettings(*store));
    QCOMPARE(m_bench->stored(QStringLiteral("Browse Path")).toString(), QStringLiteral("/tmp/x"));
    QCOMPARE(m_bench->stored(QStringLiteral("Other/key")).toInt(), 7);
    QCOMPARE(m_bench->stored(QStringLiteral("Channel1/Extra")).toInt(), 1);
}

void tst_UserSettings::foreignTextsStay()
{
    // Nobody writes this key here, and still it goes through the store's hands as often as anything is saved.
    const QString key = QStringLiteral("Scenarios/1/Scenario Name");
    const QString text = QChar(0xFEFF) +
                         QString::fromUtf8("Gr\xC3\xB6\xC3\x9F"
                                           "e") +
                         QChar(0xD83D);
    QVERIFY(m_bench->writeSettingsFile(
        R"([Scenarios]
1\Scenario%20Name=\xfeffGr\xf6\xdf\x65\xd83d
size=1
)"));
    for (int run = 0; run < 3; ++run) {
        const auto store = openSettingsStore();
        QCOMPARE(QtVersion::storedText(store->value(key)), text);
        store->setValue(QStringLiteral("Other/key"), run);
        QVERIFY(flushSettings(*store));
        QFile file(m_bench->settingsFileName());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(
            QString::fromLatin1(file.readAll()).count(QRegularExpression(QStringLiteral("[^\\x01-\\x7f]"))),
            0);
    }
}

void tst_UserSettings::values_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QVariant>("read");
    const auto row = [](const char* name, const char* key, const QVariant& stored, const QVariant& read) {
        QTest::newRow(name) << QString::fromLatin1(key) << stored << read;
    };
    const char* const intensity = "Channel2/Channel Intensity";
    row("intensity in range", intensity, 33.25, 33.25F);
    row("intensity too high", intensity, 100.5, 100.0F);
    row("intensity negative", intensity, -0.1, 0.0F);
    row("intensity infinite", intensity, std::numeric_limits<double>::infinity(), 100.0F);
    row("intensity minus infinite", intensity, -std::numeric_limits<double>::infinity(), 0.0F);
    row("intensity no number", intensity, std::nan(""), 0.0F);
    row("intensity a word", intensity, QStringLiteral("bright"), 0.0F);
    row("sleep in range", "Sleep Timer", 99, 99);
    row("sleep too long", "Sleep Timer", 100, 99);
    row("sleep negative", "Sleep Timer", -5, 0);
    row("sleep a word", "Sleep Timer", QStringLiteral("long"), 30);
    row("shutter control 1", "Shutter Control", 1, 1);
    row("shutter control 2", "Shutter Control", 2, 0);
    row("shutter control 257", "Shutter Control", 257, 0);
    row("shutter control negative", "Shutter Control", -1, 0);
    row("shutter control a word", "Shutter Control", QStringLiteral("USB"), 0);
    row("intensity control 1", "Intensity Control", 1, 1);
    row("intensity control 255", "Intensity Control", 255, 0);
    row("visible false", "Channel2/Channel Visible", QStringLiteral("false"), false);
    row("visible 0", "Channel2/Channel Visible", 0, false);
    row("visible a word", "Channel2/Channel Visible", QStringLiteral("perhaps"), true);
    row("collapsed a word", "Window Minimized", QStringLiteral("perhaps"), false);
    row("collapsed 1", "Window Minimized", 1, true);
}

void tst_UserSettings::values()
{
    QFETCH(QString, key);
    QFETCH(QVariant, stored);
    m_bench->store(key, stored);
    const auto store = openSettingsStore();
    const UserSettings settings = readUserSettings(*store);
    const QHash<QString, QVariant> readBack{
        {QStringLiteral("Channel2/Channel Intensity"), settings.channels.at(1).intensity},
        {QStringLiteral("Channel2/Channel Visible"), settings.channels.at(1).visible},
        {QStringLiteral("Sleep Timer"), settings.choices.sleepMinutes},
        {QStringLiteral("Shutter Control"), int(settings.choices.shutterControl)},
        {QStringLiteral("Intensity Control"), int(settings.choices.intensityControl)},
        {QStringLiteral("Window Minimized"), readWindowLayout(*store).collapsed}};
    QTEST(readBack.value(key), "read");
}

void tst_UserSettings::colourStaysLowerCase()
{
    m_bench->store(QStringLiteral("Channel7/Channel Color"), QStringLiteral("FF2500"));
    const auto store = openSettingsStore();
    writeUserSettings(*store, readUserSettings(*store));
    QCOMPARE(store->value(QStringLiteral("Channel7/Channel Color")).toString(), QStringLiteral("ff2500"));
}

void tst_UserSettings::unreadableFileIsKept()
{
    const QByteArray garbage("[Channel1]\nChannel Name=Blue\nthis line has no meaning\n[Broken\nx=1\n");
    QVERIFY(m_bench->writeSettingsFile(garbage));
    {
        const auto store = openSettingsStore();
        QCOMPARE(m_bench->log().count(QStringLiteral("Settings file cannot be read; copied to"),
                                      QsLogging::LogLevel::Warn),
                 1);
        QFile copy(m_bench->settingsFileName() + QStringLiteral(".unreadable"));
        QVERIFY(copy.open(QIODevice::ReadOnly));
        QCOMPARE(copy.readAll(), garbage);
        QCOMPARE(m_bench->settingsFileContent(), garbage);
        writeUserSettings(*store, readUserSettings(*store));
        QVERIFY(flushSettings(*store));
    }
    QCOMPARE(m_bench->log().count(QStringLiteral("could not be saved")), 0);
    QCOMPARE(m_bench->stored(QStringLiteral("Device Com Port")).toString(), QStringLiteral("COM4"));
}

void tst_UserSettings::unreadableCopiesAreNeverReplaced()
{
    const QDir folder = QFileInfo(m_bench->settingsFileName()).dir();
    const QList<QByteArray> contents{"first garbage\n", "second garbage\n", "first garbage\n"};
    for (int i = 0; i < contents.size(); ++i) {
        // The store knows a file by its size and time; only a new time makes it look again.
        QVERIFY(m_bench->writeSettingsFile(contents.at(i)));
        QFile file(m_bench->settingsFileName());
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(60LL * (i + 1)),
                                 QFileDevice::FileModificationTime));
        file.close();
        openSettingsStore();
    }
    QCOMPARE(folder.entryList({QStringLiteral("*.unreadable*")}, QDir::Files, QDir::Name),
             QStringList({QStringLiteral("VYR.conf.unreadable"), QStringLiteral("VYR.conf.unreadable.1")}));
    QFile first(m_bench->settingsFileName() + QStringLiteral(".unreadable"));
    QVERIFY(first.open(QIODevice::ReadOnly));
    QCOMPARE(first.readAll(), contents.at(0));
}

void tst_UserSettings::readableFileIsNotCopied()
{
    m_bench->store(QStringLiteral("Sleep Timer"), 5);
    openSettingsStore();
    QVERIFY(!QFile::exists(m_bench->settingsFileName() + QStringLiteral(".unreadable")));
    QCOMPARE(m_bench->log().lines(), QStringList());
}

void tst_UserSettings::savingIntoAFolderFails()
{
    QVERIFY(QDir().mkpath(m_bench->settingsFileName()));
    const auto store = openSettingsStore();
    const UserSettings settings = readUserSettings(*store);
    QCOMPARE(settings.comPort, QStringLiteral("COM4"));
    writeUserSettings(*store, settings);
    QVERIFY(!flushSettings(*store));
    QCOMPARE(m_bench->log().count(QStringLiteral("Settings could not be saved"), QsLogging::LogLevel::Error),
             1);
}

void tst_UserSettings::fullDiskKeepsTheOldFile()
{
    const QByteArray old("[General]\nBrowse Path=/somewhere\n");
    QVERIFY(m_bench->writeSettingsFile(old));
    const auto store = openSettingsStore();
    writeUserSettings(*store, readUserSettings(*store));
    {
        const FileSizeLimit limit(400);
        QVERIFY(!flushSettings(*store));
    }
    QCOMPARE(m_bench->log().count(QStringLiteral("Settings could not be saved"), QsLogging::LogLevel::Error),
             1);
    QCOMPARE(m_bench->settingsFileContent(), old);
}

QTEST_GUILESS_MAIN(tst_UserSettings)
#include "tst_UserSettings.moc"
