#include "settings/SettingsFormBench.h"
#include "support/WatchedTest.h"

#include <algorithm>
#include <memory>

namespace {
/// Name, type and text of what shows a given text.
const char* const givenTexts[][3] = {
    {"labelComStatus", "QLabel", "No connection to device"},
    {"labelControlBoardFirmwareVersion", "QLabel", ""},
    {"labelApplicationSoftwareVersion", "QLabel", ""},
    {"labelChannelConfigurationNote", "QLabel", "Ordered by Schematic Channel"},
    {"pushButtonSetProductConfigData", "QPushButton", "Set Configuration Data"},
    {"labelNecselTemp", "QLabel", "Necsel Temp"},
    {"labelNecselCurrent", "QLabel", "Necsel Current (A)"},
    {"labelNovalumTempS1", "QLabel", "Novalum Temp S1"},
    {"labelNovalumTempS2", "QLabel", "Novalum Temp S2"},
    {"labelLaserFan", "QLabel", "Laser Fan Speed"},
    {"labelHeater", "QLabel", "Heater Status"},
    {"labelNovalumOverTemp", "QLabel", "Novalum Over Temp (C)"},
    {"labelJigglerSpeed", "QLabel", "Jiggler Speed (%)"},
    {"pushButtonGetSystemConfigData", "QPushButton", "Get Config"},
    {"pushButtonSetSystemConfigData", "QPushButton", "Set Config"},
    {"pushButtonLoadSystemConfigData", "QPushButton", "Load Config"},
    {"pushButtonSaveSystemConfigData", "QPushButton", "Save Config"},
    {"labelMaxPowerCaption", "QLabel", "Max Power Output Specs:"},
    {"labelOperatingHoursCaption", "QLabel", "Operating Hours:"},
    {"checkBoxSleepTimer", "QCheckBox", "Sleep Timer:"},
    {"radioButtonIntensityControlUSB", "QRadioButton", "Host USB"},
    {"radioButtonIntensityControlExternal", "QRadioButton", "External Analog"},
    {"radioButtonShutterControlUSB", "QRadioButton", "Host USB"},
    {"radioButtonShutterControlExternal", "QRadioButton", "External Digital"},
    {"radioButtonDespecklerOn", "QRadioButton", "On"},
    {"radioButtonDespecklerOff", "QRadioButton", "Off"},
    {"pushButtonRestoreDefaults", "QPushButton", "Restore Defaults"},
    {"labelControlModeSummary", "QLabel", ""},
    {"labelTTLHeading", "QLabel", "TTL High Shutter Postion"},
    {"pushButtonRestoreDefaults2", "QPushButton", "Restore Defaults"},
    {"labelTTLSummary", "QLabel", ""},
    {"pushButtonUpdateFirmware", "QPushButton", "Update Control Board Firmware"},
    {"pushButtonUpdateApplication", "QPushButton", "Update Application Software"},
    {"pushButtonSystemReset", "QPushButton", "System Reset"},
    {"pushButtonLoaderMode", "QPushButton", "Loader Mode"},
    {"labelRunningImage", "QLabel", ""},
    {"pushButtonSaveDiagnostics", "QPushButton", "Save Diagnostics"},
    {"checkBoxEnhancedDiags", "QCheckBox",
     "Verbose Data Logging (Warning: Use only for diagnosing issues.  Will generate a very large log "
     "file)"},
    {"pushButtonSystemReset2", "QPushButton", "System Reset"},
    {"pushButtonLoaderMode2", "QPushButton", "Loader Mode"},
    {"labelRunningImage2", "QLabel", ""},
    {"labelTerminalWindow", "QLabel", "Terminal Window"},
    {"pushButtonClose", "QPushButton", "&Close"},
};

QStringList numbers(int count)
{
    QStringList all;
    for (int i = 1; i <= count; ++i) {
        all.append(QString::number(i));
    }
    return all;
}
} // namespace

/// What stands in the form of the settings dialog, and how it is named.
class tst_SettingsForm : public WatchedTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void tabs();
    void texts_data();
    void texts();
    void captionsOfFields_data();
    void captionsOfFields();
    void tables_data();
    void tables();
    void channelTable();
    void wavelengthTexts_data();
    void wavelengthTexts();
    void foreignTextsArePlain();
    void identityIsReadOnly();
    void everyControlIsDescribed();

private:
    Ui::SettingsDialog& ui() { return m_bench->ui(); }

    std::unique_ptr<SettingsFormBench> m_bench;
};

void tst_SettingsForm::init()
{
    beginWatch();
    m_bench = std::make_unique<SettingsFormBench>();
}

void tst_SettingsForm::cleanup()
{
    m_bench.reset();
    endWatch();
}

void tst_SettingsForm::tabs()
{
    QStringList shown;
    for (int i = 0; i < ui().tabWidget->count(); ++i) {
        const QWidget* page = ui().tabWidget->widget(i);
        shown.append(page->objectName() + QLatin1Char('|') + ui().tabWidget->tabText(i) + QLatin1Char('|') +
                     page->property("helpPage").toString());
    }
    const QStringList expected{QStringLiteral("tabSystemInfo|System Info|system-info"),
                               QStringLiteral("tabSystemConfig|System Config|system-config"),
                               QStringLiteral("tabOperatingInfo|Operating Info|operating-info"),
                               QStringLiteral("tabControlMode|Control Mode|control-mode"),
                               QStringLiteral("tabTTLConfiguration|TTL Configuration|ttl-configuration"),
                               QStringLiteral("tabUpdate|Update|update"),
                               QStringLiteral("tabServiceDevelopment|Service && Development|terminal")};
    QCOMPARE(shown, expected);
    QCOMPARE(ui().tabWidget->currentIndex(), 0);
    QCOMPARE(m_bench->dialog().windowTitle(), QStringLiteral("System Info & Settings"));
}

void tst_SettingsForm::texts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QString>("text");
    for (const auto& row : givenTexts) {
        QTest::newRow(row[0]) << QString::fromLatin1(row[0]) << QByteArray(row[1])
                              << QString::fromLatin1(row[2]);
    }
}

void tst_SettingsForm::texts()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, type);
    QFETCH(QString, text);
    const auto* widget = m_bench->find<QWidget>(name);
    QVERIFY(widget != nullptr);
    QCOMPARE(QByteArray(widget->metaObject()->className()), type);
    QCOMPARE(widget->property("text").toString(), text);
}

void tst_SettingsForm::captionsOfFields_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("name");
    const char* const rows[][2] = {
        {"VYR Serial Number:", "lineEditVYRSerialNumber"},
        {"Product Part Number:", "lineEditVYRPartNumber"},
        {"Laser Module Serial Number:", "lineEditNovalumSerialNumber"},
        {"555 Controller Serial Number:", "lineEditNecselControllerSerialNumber"},
        {"555 Laser Serial Number:", "lineEditNecselLaserSerialNumber"},
        {"555 Controller Firmware Version:", "lineEditNecselControllerVersion"},
        {"Control Board Hardware Revision:", "lineEditVYRHardwareRev"},
        {"Control Board Firmware Version:", "labelControlBoardFirmwareVersion"},
        {"Application Software Version:", "labelApplicationSoftwareVersion"},
        {"Terminal Window", "consoleWindow"},
        {"&Port:", "comboBoxComPort"},
        {"Novalum Over Temp (C)", "tableWidgetNovalumParams2"},
        {"Jiggler Speed (%)", "tableWidgetJigglerSpeed"},
    };
    for (const auto& row : rows) {
        QTest::newRow(row[1]) << QString::fromLatin1(row[0]) << QString::fromLatin1(row[1]);
    }
}

void tst_SettingsForm::captionsOfFields()
{
    QFETCH(QString, caption);
    QFETCH(QString, name);
    const auto* field = m_bench->find<QWidget>(name);
    QVERIFY(field != nullptr);
    const QList<QLabel*> labels = m_bench->dialog().findChildren<QLabel*>();
    const auto belongs = [&](const QLabel* label) {
        return label->text() == caption && label->buddy() == field;
    };
    QCOMPARE(std::count_if(labels.begin(), labels.end(), belongs), 1);
}

void tst_SettingsForm::tables_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("group");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QStringList>("columns");
    const auto list = [](const char* text) { return QString::fromLatin1(text).split(QLatin1Char('|')); };
    const auto add = [](const char* name, const char* group, const QStringList& rows,
                        const QStringList& columns) {
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(group) << rows << columns;
    };
    const QStringList none{QString()};
    add("tableWidgetNecselParams", "Necsel Laser Configuration",
        list("Max Laser Amps|Simmer Current|XTL Temp Setpoint|Ana Cal Max|Ana Cal Offset|Output Gain (0.0 - "
             "1.0)|Output Offset (-50.0 +50)|Min Laser Temp (C)"),
        none);
    add("tableWidgetFanParams", "Laser Fan Control",
        list("Low Fan Temp (C)|Full Fan Temp (C)|Low Fan Speed (%)|Full Fan Speed (%)"),
        list("Necsel|Novalum"));
    add("tableWidgetHeaterParams", "Heater Control", list("Min Temp (C)|Max Temp (C)"), none);
    add("tableWidgetJigglerSpeed", "", none, none);
    add("tableWidgetNovalumParams", "Novalum Configuration",
        list("DAC Coeff A|DAC Coeff B|DAC Coeff C|DAC Shift|Preflux Coeff A|Preflux Coeff B|Preflux Coeff "
             "C|Preflux Shift|Inrush OC Time IDX|Normal OC Time IDX|Ana Cal Max|Ana Cal Offset"),
        numbers(7));
    add("tableWidgetNovalumParams2", "", none, none);
}

void tst_SettingsForm::tables()
{
    QFETCH(QString, name);
    QFETCH(QString, group);
    QFETCH(QStringList, rows);
    QFETCH(QStringList, columns);
    const auto* table = m_bench->find<QTableWidget>(name);
    QVERIFY(table != nullptr);
    QCOMPARE(table->rowCount(), rows.size());
    QCOMPARE(table->columnCount(), columns.size());
    // Where nothing heads a row or column, the framework's own numbers must not stand there instead.
    QCOMPARE(table->verticalHeader()->isHidden(), rows == QStringList{QString()});
    QCOMPARE(table->horizontalHeader()->isHidden(), columns == QStringList{QString()});
    for (int row = 0; row < rows.size(); ++row) {
        QCOMPARE(rows.at(row).isEmpty() ? QString() : table->verticalHeaderItem(row)->text(), rows.at(row));
        for (int column = 0; column < columns.size(); ++column) {
            QVERIFY(table->item(row, column) != nullptr);
            QCOMPARE(table->item(row, column)->text(), QStringLiteral("0"));
        }
    }
    for (int column = 0; column < columns.size(); ++column) {
        const QString& head = columns.at(column);
        QCOMPARE(head.isEmpty() ? QString() : table->horizontalHeaderItem(column)->text(), head);
    }
    const auto* box = qobject_cast<const QGroupBox*>(table->parentWidget());
    QCOMPARE(box == nullptr ? QString() : box->title(), group);
}

void tst_SettingsForm::channelTable()
{
    const QTableWidget* table = ui().tableWidgetChannelConfig;
    QStringList rows;
    for (int row = 0; row < table->rowCount(); ++row) {
        rows.append(table->verticalHeaderItem(row)->text());
        QVERIFY2(table->rowHeight(row) >= 28, "A widget of 24 pixels and the grid's lines need more");
    }
    const QStringList expected{QStringLiteral("Enabled"),   QStringLiteral("Type"),
                               QStringLiteral("Name"),      QStringLiteral("Hex Color (RRGGBB)"),
                               QStringLiteral("Secondary"), QStringLiteral("Primary Channel")};
    QCOMPARE(rows, expected);
    QStringList columns;
    for (int column = 0; column < table->columnCount(); ++column) {
        columns.append(table->horizontalHeaderItem(column)->text());
    }
    QCOMPARE(columns, numbers(8));
    QCOMPARE(ui().groupBoxChannelConfiguration->title(), QStringLiteral("Channel Configuration"));
    QVERIFY(ui().groupBoxChannelConfiguration->isAncestorOf(table));
    QVERIFY(!ui().groupBoxChannelConfiguration->isAncestorOf(ui().pushButtonSetProductConfigData));
}

void tst_SettingsForm::wavelengthTexts_data()
{
    QTest::addColumn<QString>("power");
    QTest::newRow("405") << QStringLiteral("300 mW");
    QTest::newRow("445") << QStringLiteral("1 W");
    QTest::newRow("470") << QStringLiteral("1 W");
    QTest::newRow("520") << QStringLiteral("500 mW");
    QTest::newRow("528") << QStringLiteral("500 mW");
    QTest::newRow("555") << QStringLiteral("1 W");
    QTest::newRow("640") << QStringLiteral("500 mW");
    QTest::newRow("730") << QStringLiteral("500 mW");
}

void tst_SettingsForm::wavelengthTexts()
{
    QFETCH(QString, power);
    const QString wavelength = QString::fromLatin1(QTest::currentDataTag());
    const auto text = [&](const char* stem) {
        const auto* label = m_bench->find<QLabel>(QLatin1String(stem) + wavelength);
        return label == nullptr ? QStringLiteral("missing") : label->text();
    };
    QCOMPARE(text("labelOperatingWavelength"), wavelength);
    QCOMPARE(text("labelMaxPower"), power);
    QCOMPARE(text("labelOperatingHours"), QStringLiteral("0 hrs"));
    QCOMPARE(text("labelTTLWavelength"), wavelength);
}

void tst_SettingsForm::foreignTextsArePlain()
{
    QList<const QLabel*> labels{ui().labelComStatus,
                                ui().labelControlBoardFirmwareVersion,
                                ui().labelApplicationSoftwareVersion,
                                ui().labelNecselTemp,
                                ui().labelNecselCurrent,
                                ui().labelNovalumTempS1,
                                ui().labelNovalumTempS2,
                                ui().labelLaserFan,
                                ui().labelHeater,
                                ui().labelControlModeSummary,
                                ui().labelTTLSummary,
                                ui().labelRunningImage,
                                ui().labelRunningImage2,
                                ui().labelPollingNote};
    const QStringList all = SettingsFormBench::wavelengths();
    for (const QString& wavelength : all) {
        labels.append(m_bench->find<QLabel>(QStringLiteral("labelMaxPower") + wavelength));
        labels.append(m_bench->find<QLabel>(QStringLiteral("labelOperatingHours") + wavelength));
    }
    for (const QLabel* label : qAsConst(labels)) {
        QVERIFY(label != nullptr);
        QVERIFY2(label->textFormat() == Qt::PlainText, qPrintable(label->objectName()));
    }
}

void tst_SettingsForm::identityIsReadOnly()
{
    const QList<QLineEdit*> fields = ui().tabSystemInfo->findChildren<QLineEdit*>();
    QCOMPARE(fields.size(), 7);
    for (const QLineEdit* field : fields) {
        QVERIFY2(field->isReadOnly() && field->text().isEmpty(), qPrintable(field->objectName()));
    }
}

void tst_SettingsForm::everyControlIsDescribed()
{
    const QList<QWidget*> controls = m_bench->controls();
    QVERIFY(controls.size() > 50);
    QStringList names;
    for (const QWidget* control : controls) {
        QVERIFY2(!control->accessibleName().isEmpty(), qPrintable(control->objectName()));
        QVERIFY2(!control->toolTip().isEmpty(), qPrintable(control->objectName()));
        if (control->inherits("QRadioButton")) {
            names.append(control->accessibleName());
        }
    }
    // Who hears the names alone must be able to tell the eight "Open" and the two "Host USB" apart.
    QCOMPARE(names.size(), 22);
    QCOMPARE(names.removeDuplicates(), 0);
}

QTEST_MAIN(tst_SettingsForm)
#include "tst_SettingsForm.moc"
