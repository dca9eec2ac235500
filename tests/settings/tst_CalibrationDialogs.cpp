#include "settings/ConfigSamples.h"
#include "settings/FileChooser.h"
#include "settings/SystemConfigBench.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <sys/stat.h>

namespace {
constexpr int rounds = 60;
const QString saveCaption = QStringLiteral("Choose a directory and JSON file name to write to");
const QString loadCaption = QStringLiteral("Choose a JSON file to open");
} // namespace

/// "Load Config" and "Save Config", with the file dialogs that they show.
class tst_CalibrationDialogs : public SystemConfigTest
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(buildEditor()); }
    void cleanupTestCase() { removeDialog(); }
    void init();
    void fileDialogsLookAsExpected();
    void secondAnswerCounts();
    void canceledSaveWritesNothing_data();
    void canceledSaveWritesNothing();
    void savesWithoutAsking_data();
    void savesWithoutAsking();
    void savingFailsSilently();
    void fileRestoresTheTables();
    void fractionalOverTemperatureIsLost();
    void savesWhatIsBeingTyped();
    void wavelengthsNameColumns();
    void oddFilesChangeNothing_data();
    void oddFilesChangeNothing();
    void randomFilesChangeNothing();
    void loadReachesTheDeviceBySetOnly();
    void loadedValuesSurviveTheSwitch();

private:
    QString path(const char* name) const { return m_folder->filePath(QString::fromLatin1(name)); }
    QString write(const QByteArray& content) const;
    void loadFile(const QString& pathName) const;
    static QByteArray contentOf(const QString& pathName);

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_CalibrationDialogs::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_hand->clickTab(QStringLiteral("System Config")));
    enter(likelyTexts());
}

QString tst_CalibrationDialogs::write(const QByteArray& content) const
{
    QFile file(path("calibration.json"));
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() ? file.fileName()
                                                                                    : QString();
}

void tst_CalibrationDialogs::loadFile(const QString& pathName) const
{
    const BoxAnswerer boxes;
    const FileChooser chooser({pathName});
    load();
    QCOMPARE(chooser.captions(), QStringList{loadCaption});
    QVERIFY(boxes.boxes().isEmpty());
}

QByteArray tst_CalibrationDialogs::contentOf(const QString& pathName)
{
    QFile file(pathName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_CalibrationDialogs::fileDialogsLookAsExpected()
{
    const FileChooser chooser({path("first.json")});
    save();
    load();
    QCOMPARE(chooser.captions(), (QStringList{saveCaption, saveCaption, loadCaption}));
    for (const FileChooser::Chooser& shown : chooser.choosers()) {
        QCOMPARE(shown.filters,
                 (QStringList{QStringLiteral("JSON files (*.json)"), QStringLiteral("All files (*.*)")}));
        QCOMPARE(shown.folder, QDir::homePath());
        QCOMPARE(shown.parent, &m_hand->dialog());
        QCOMPARE(shown.mode,
                 shown.caption == loadCaption ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    }
    // The second one was canceled.
    QVERIFY(!QFile::exists(path("first.json")));
}

void tst_CalibrationDialogs::secondAnswerCounts()
{
    const BoxAnswerer boxes;
    const FileChooser chooser({path("first.json"), path("second.json")});
    save();
    QCOMPARE(chooser.choosers().size(), 2);
    QVERIFY(!QFile::exists(path("first.json")));
    QVERIFY(QJsonDocument::fromJson(contentOf(path("second.json"))).isObject());
    QVERIFY(boxes.boxes().isEmpty());
}

void tst_CalibrationDialogs::canceledSaveWritesNothing_data()
{
    QTest::addColumn<bool>("prompt");
    QTest::newRow("button") << false;
    QTest::newRow("slot") << true;
}

void tst_CalibrationDialogs::canceledSaveWritesNothing()
{
    QFETCH(bool, prompt);
    const FileChooser chooser;
    if (prompt) {
        m_hand->dialog().saveSystemConfigData(path("given.json"), true);
    } else {
        save();
    }
    // The button asks no second time when the first answer is none.
    QCOMPARE(chooser.choosers().size(), 1);
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

void tst_CalibrationDialogs::savesWithoutAsking_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("in the folder") << QStringLiteral("a.json");
    QTest::newRow("folders that are not there") << QStringLiteral("x/y z/%1/a.json");
    QTest::newRow("no ending") << QStringLiteral("plain");
}

void tst_CalibrationDialogs::savesWithoutAsking()
{
    QFETCH(QString, name);
    const FileChooser chooser;
    const QString pathName = m_folder->filePath(name);
    m_hand->dialog().saveSystemConfigData(pathName, false);
    QVERIFY(chooser.choosers().isEmpty());
    const QJsonObject root = QJsonDocument::fromJson(contentOf(pathName)).object();
    QCOMPARE(root.size(), 5);
    const QJsonArray channels = root.value(QStringLiteral("Novalum Parameters"))
                                    .toObject()
                                    .value(QStringLiteral("Channel Parameters"))
                                    .toArray();
    QCOMPARE(channels.size(), novalumChannelCount);
    for (int i = 0; i < novalumChannelCount; ++i) {
        QCOMPARE(channels.at(i).toObject().keys(), QStringList(QString::number(i + 1)));
    }
}

void tst_CalibrationDialogs::savingFailsSilently()
{
    const BoxAnswerer boxes;
    SettingsDialog& dialog = m_hand->dialog();
    dialog.saveSystemConfigData(QString(), false);
    dialog.saveSystemConfigData(m_folder->path(), false);
    const QString file = write("kept");
    dialog.saveSystemConfigData(file + QStringLiteral("/below/a.json"), false);
    QCOMPARE(contentOf(file), QByteArray("kept"));
    QVERIFY(boxes.boxes().isEmpty());
}

void tst_CalibrationDialogs::fileRestoresTheTables()
{
    const QString pathName = path("all.json");
    m_hand->dialog().saveSystemConfigData(pathName, false);
    enter(allCells(QStringLiteral("17")));
    loadFile(pathName);
    QVERIFY(texts() == likelyTexts());
}

void tst_CalibrationDialogs::fractionalOverTemperatureIsLost()
{
    const ConfigCell overTemperature{ConfigTable::NovalumOverTemperature, 0, 0};
    item(overTemperature)->setText(QStringLiteral("64.5"));
    const QString pathName = path("fraction.json");
    m_hand->dialog().saveSystemConfigData(pathName, false);
    loadFile(pathName);
    QCOMPARE(item(overTemperature)->text(), QStringLiteral("0"));
}

void tst_CalibrationDialogs::savesWhatIsBeingTyped()
{
    const ConfigCell amps{ConfigTable::Necsel, 0, 0};
    beginTyping(amps, QStringLiteral("12.5"));
    const QString pathName = path("typed.json");
    m_hand->dialog().saveSystemConfigData(pathName, false);
    QVERIFY(contentOf(pathName).contains("\"Max Laser Amps\": 12.5"));
    QCOMPARE(item(amps)->text(), QStringLiteral("12.5"));
}

void tst_CalibrationDialogs::wavelengthsNameColumns()
{
    // The second and third name have changed places, and belong to neither column.
    QJsonArray channels;
    int value = 100;
    for (const char* name : {"445", "730", "520", "640", "405", "470", "528", "9", "9"}) {
        channels.append(
            QJsonObject{{QString::fromLatin1(name), QJsonObject{{QStringLiteral("DAC Coeff A"), value++}}}});
    }
    const QJsonObject novalum{{QStringLiteral("Channel Parameters"), channels}};
    loadFile(write(QJsonDocument(QJsonObject{{QStringLiteral("Novalum Parameters"), novalum}}).toJson()));
    const SystemConfigTexts before = likelyTexts();
    for (int column = 0; column < novalumChannelCount; ++column) {
        const bool skipped = column == 1 || column == 2;
        const std::size_t first = cellIndex(ConfigTable::Novalum, 0, column);
        QCOMPARE(texts().at(first), skipped ? before.at(first) : QString::number(100 + column));
        QCOMPARE(texts().at(first + 1), skipped ? before.at(first + 1) : QStringLiteral("0"));
    }
    // What the file lacks altogether is 0.
    QCOMPARE(texts().front(), QStringLiteral("0"));
}

void tst_CalibrationDialogs::oddFilesChangeNothing_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("array") << QByteArray("[{\"Jiggler Speed\": 1}]");
    QTest::newRow("number") << QByteArray("1");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut off") << QByteArray("{\"Jiggler Speed\": 1");
    QTest::newRow("more than once") << QByteArray("{}{}");
    QTest::newRow("no text") << QByteArray("\xff\xfe\0{}", 5);
}

void tst_CalibrationDialogs::oddFilesChangeNothing()
{
    QFETCH(QByteArray, content);
    loadFile(write(content));
    QVERIFY(texts() == likelyTexts());
    // Cancelling does neither, nor a name that can be no calibration. A pipe would keep the program waiting.
    loadFile(QString());
    const QString pipe = path("pipe.json");
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    loadFile(pipe);
    QVERIFY(texts() == likelyTexts());
}

void tst_CalibrationDialogs::randomFilesChangeNothing()
{
    m_hand->dialog().saveSystemConfigData(path("whole.json"), false);
    const QByteArray whole = contentOf(path("whole.json"));
    Chance chance(3);
    int refused = 0;
    for (int round = 0; round < rounds; ++round) {
        QByteArray content = whole.left(chance.number(0, int(whole.size())));
        content += QByteArray(chance.number(0, 3), char(chance.number(0, 255)));
        if (!QJsonDocument::fromJson(content).isObject()) {
            ++refused;
            loadFile(write(content));
            QVERIFY(texts() == likelyTexts());
        }
    }
    QVERIFY(refused > rounds / 2);
}

void tst_CalibrationDialogs::loadReachesTheDeviceBySetOnly()
{
    const QString pathName = path("all.json");
    m_hand->dialog().saveSystemConfigData(pathName, false);
    get();
    m_lines->clear();
    const QByteArray before = records().bytes(Record::System);
    loadFile(pathName);
    QVERIFY(texts() == likelyTexts());
    QCOMPARE(records().bytes(Record::System), before);
    QCOMPARE(countBeginning("wf:") + countBeginning("rf:"), 0);
}

void tst_CalibrationDialogs::loadedValuesSurviveTheSwitch()
{
    // Even where the device showed the same before, and shows something else in its other image.
    setDeviceRecord(SystemConfigRecord::fromTexts(likelyTexts(), deviceRecord()));
    const QString pathName = path("all.json");
    m_hand->dialog().saveSystemConfigData(pathName, false);
    get();
    loadFile(pathName);
    setDeviceRecord(SystemConfigRecord::fromTexts(allCells(QStringLiteral("5")), deviceRecord()));
    QVERIFY(switchTo(DeviceMode::Loader));
    QVERIFY(texts() == likelyTexts());
    const BoxAnswerer boxes;
    set();
    QVERIFY(deviceTexts() == likelyTexts());
    QVERIFY(switchTo(DeviceMode::Application));
    QTRY_VERIFY(texts() == deviceTexts());
}

QTEST_MAIN(tst_CalibrationDialogs)
#include "tst_CalibrationDialogs.moc"
