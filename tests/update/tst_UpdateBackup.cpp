// The copy of the calibration that an update makes before it changes the device.

#include "settings/CalibrationFile.h"
#include "settings/FileChooser.h"
#include "settings/SystemConfigBench.h"
#include "update/Update.h"
#include "update/UpdateBench.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

namespace {
const QString complete = QStringLiteral("information: Update complete!");
const QString backup = QStringLiteral("backup");

constexpr std::array<const char*, 6> tables{"tableWidgetNecselParams",  "tableWidgetFanParams",
                                            "tableWidgetHeaterParams",  "tableWidgetJigglerSpeed",
                                            "tableWidgetNovalumParams", "tableWidgetNovalumParams2"};
} // namespace

class tst_UpdateBackup : public UpdateTest
{
    Q_OBJECT

private slots:
    void cleanup() { removeUpdate(); }
    void name_data();
    void name();
    void nameWithoutADevice();
    void nameWithoutDocuments();
    void content_data();
    void content();
    void whatIsBeingTyped();
    void everyRunHasItsOwn();
    void failsSilently_data();
    void failsSilently();
    void noBackupBefore();

private:
    QTableWidgetItem* item(const SystemConfigField& field) const
    {
        return m_hand->part<QTableWidget>(tables.at(std::size_t(field.cell.table)))
            ->item(field.cell.row, field.cell.column);
    }
    void enter(const SystemConfigTexts& texts) const;
    QStringList columnHeaders() const;
    /// The only backup; empty when there is none, or more than one.
    QByteArray backupContent() const;
};

void tst_UpdateBackup::enter(const SystemConfigTexts& texts) const
{
    for (std::size_t i = 0; i < texts.size(); ++i) {
        item(systemConfigFields().at(i))->setText(texts.at(i));
    }
}

QStringList tst_UpdateBackup::columnHeaders() const
{
    const auto* const table = m_hand->part<QTableWidget>("tableWidgetNovalumParams");
    QStringList headers;
    for (int column = 0; column < novalumChannelCount; ++column) {
        headers.append(table->horizontalHeaderItem(column)->text());
    }
    return headers;
}

QByteArray tst_UpdateBackup::backupContent() const
{
    const QStringList names = backups();
    QFile file(m_home->dataFolder() + QLatin1Char('/') + names.value(0));
    return names.size() == 1 && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_UpdateBackup::name_data()
{
    QTest::addColumn<QByteArray>("application"); // as the device tells it while its loader runs
    QTest::addColumn<QString>("version");
    QTest::newRow("one digit each") << QByteArray("VYRApp V1.2.3") << QStringLiteral("01_02_03");
    QTest::newRow("at the limit") << QByteArray("VYRApp V9.10.99") << QStringLiteral("09_10_99");
    QTest::newRow("three digits") << QByteArray("VYRApp V100.255.0") << QStringLiteral("100_255_00");
    QTest::newRow("no version") << QByteArray("Unknown V1.2.3") << QStringLiteral("00_00_00");
    QTest::newRow("loader updater") << QByteArray("LoaderUpdater V4.5.6") << QStringLiteral("04_05_06");
}

void tst_UpdateBackup::name()
{
    QFETCH(QByteArray, application);
    QFETCH(QString, version);
    QVERIFY(buildUpdate([&application](UpdatableDevice& device) { device.application = application; }));
    const QSignalSpy asked(m_window->update(), &Update::saveSettingsInfo);
    m_device->answer("wf:", 1, "refused");
    const QDateTime before = QDateTime::currentDateTime().addMSecs(-1000);
    update();
    QCOMPARE(asked.size(), 1);
    const QFileInfo file(asked.first().first().toString());
    QCOMPARE(file.path(), m_home->dataFolder());
    QCOMPARE(backups(), QStringList{file.fileName()});
    const QRegularExpression pattern(
        QStringLiteral("^CalibrationConfig (\\d{4}-\\d{2}-\\d{2} \\d{6}) V(\\d+_\\d+_\\d+)\\.json$"));
    const QRegularExpressionMatch match = pattern.match(file.fileName());
    QVERIFY2(match.hasMatch(), qPrintable(file.fileName()));
    QCOMPARE(match.captured(2), version);
    const auto time = QDateTime::fromString(match.captured(1), QStringLiteral("yyyy-MM-dd hhmmss"));
    QVERIFY2(time >= before && time <= QDateTime::currentDateTime(), qPrintable(match.captured(1)));
}

void tst_UpdateBackup::nameWithoutADevice()
{
    QVERIFY(buildUpdate());
    const QSignalSpy asked(m_window->update(), &Update::saveSettingsInfo);
    m_window->update()->saveCalibrationBackup();
    QCOMPARE(asked.size(), 1);
    QVERIFY(asked.first().first().toString().endsWith(QStringLiteral(" V00_00_00.json")));
}

/// The name begins at the root then, where nobody may write as a rule.
void tst_UpdateBackup::nameWithoutDocuments()
{
    m_home = std::make_unique<HomeFolder>(false);
    QVERIFY(buildUpdate());
    // Whoever runs the tests may be somebody who may.
    QVERIFY(disconnect(m_window->update(), &Update::saveSettingsInfo, &m_hand->dialog(), nullptr));
    const QSignalSpy asked(m_window->update(), &Update::saveSettingsInfo);
    QCOMPARE(update().constLast(), complete);
    QCOMPARE(asked.size(), 1);
    QVERIFY(asked.first().first().toString().startsWith(QStringLiteral("/Tarnwick/VYR/CalibrationConfig ")));
}

void tst_UpdateBackup::content_data()
{
    QTest::addColumn<bool>("hasFolder");
    QTest::addColumn<QByteArray>("running");
    QTest::newRow("from the application, no folder") << false << QByteArray("VYRApp V2.7.0");
    QTest::newRow("from the application, folder") << true << QByteArray("VYRApp V2.7.0");
    QTest::newRow("from the loader, no folder") << false << QByteArray("Loader V1.5.0");
}

void tst_UpdateBackup::content()
{
    QFETCH(bool, hasFolder);
    QFETCH(QByteArray, running);
    QVERIFY(buildUpdate([&running](UpdatableDevice& device) { device.running = running; }));
    if (hasFolder) {
        QVERIFY(QDir().mkpath(m_home->dataFolder()));
    }
    enter(likelyTexts());
    const QByteArray expected = CalibrationFile::toJson(likelyTexts(), columnHeaders());
    QByteArray atFirstLine;
    m_device->when("wf:", 1, [this, &atFirstLine] { atFirstLine = backupContent(); });
    QCOMPARE(update().constLast(), complete);
    QCOMPARE(atFirstLine, expected);
    QCOMPARE(backupContent(), expected);
    // The new application's values come from the device, unless the user has entered some.
    QCOMPARE(item(systemConfigFields().front())->text(), likelyTexts().front());
}

/// A cell that is open holds what the user means, too.
void tst_UpdateBackup::whatIsBeingTyped()
{
    QVERIFY(buildUpdate());
    enter(likelyTexts());
    QVERIFY(m_hand->clickTab(QStringLiteral("System Config")));
    auto* const table = m_hand->part<QTableWidget>(tables.front());
    table->setFocus();
    table->setCurrentCell(0, 0);
    table->editItem(table->item(0, 0));
    auto* const editor = qobject_cast<QLineEdit*>(table->indexWidget(table->currentIndex()));
    QVERIFY(editor != nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("4.75"));
    const FileChooser chooser({archivePath()});
    const BoxAnswerer answerer;
    QVERIFY(packRelease());
    // No click, which would end the typing before.
    QMetaObject::invokeMethod(&m_hand->dialog(), "on_pushButtonUpdateFirmware_clicked");
    SystemConfigTexts texts = likelyTexts();
    texts.front() = QStringLiteral("4.75");
    QCOMPARE(backupContent(), CalibrationFile::toJson(texts, columnHeaders()));
}

void tst_UpdateBackup::everyRunHasItsOwn()
{
    QVERIFY(buildUpdate());
    QCOMPARE(update().count(backup), 1);
    // The name counts seconds.
    const QDateTime first = QDateTime::currentDateTime();
    QTRY_VERIFY(first.secsTo(QDateTime::currentDateTime()) >= 1);
    QCOMPARE(update().count(backup), 1);
    QCOMPARE(backups().size(), 2);
}

void tst_UpdateBackup::failsSilently_data()
{
    QTest::addColumn<QString>("inTheWay");
    QTest::newRow("file in the folder's place") << QStringLiteral("Documents/Tarnwick");
    QTest::newRow("file in the last folder's place") << QStringLiteral("Documents/Tarnwick/VYR");
}

void tst_UpdateBackup::failsSilently()
{
    QFETCH(QString, inTheWay);
    QVERIFY(buildUpdate());
    const QString path = m_home->path(inTheWay);
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QStringList entries = update();
    QCOMPARE(entries.count(backup), 1);
    QCOMPARE(entries.last(), complete);
    QCOMPARE(QFileInfo(path).size(), 0);
}

/// A run that never gets into the loader changes nothing that would have to be kept.
void tst_UpdateBackup::noBackupBefore()
{
    QVERIFY(buildUpdate());
    m_device->answer("isloadervalid", 1, "No");
    QCOMPARE(update().count(backup), 0);
    QVERIFY(backups().isEmpty());
}

QTEST_MAIN(tst_UpdateBackup)
#include "tst_UpdateBackup.moc"
