#include "settings/SystemConfigPage.h"

#include "device/DeviceTypes.h"
#include "forms/FormWidgets.h"

#include <QAbstractItemDelegate>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>

#include <algorithm>

namespace {
/// The width of the table's row labels, with what frames them.
int labelWidth(const QTableWidget& table, const QFontMetrics& metrics)
{
    constexpr int frameWidth = 14;
    int width = 0;
    for (int row = 0; row < table.rowCount(); ++row) {
        const QString label = table.model()->headerData(row, Qt::Vertical).toString();
        width = std::max(width, metrics.horizontalAdvance(label) + frameWidth);
    }
    return width;
}

/// The form's widths are pixels; with larger type a value would not fit its cell. What the columns need more
/// is taken from the row labels where these have it to spare, so that the page need not be scrolled.
void fitToFont(QTableWidget& table, const QString& widestValue)
{
    constexpr int horizontalPadding = 8;
    constexpr int verticalPadding = 6;
    table.ensurePolished();
    const QFontMetrics metrics = table.fontMetrics();
    QHeaderView* const columns = table.horizontalHeader();
    QHeaderView* const rows = table.verticalHeader();
    const int wider =
        metrics.horizontalAdvance(widestValue) + horizontalPadding - columns->defaultSectionSize();
    if (wider > 0) {
        columns->setDefaultSectionSize(columns->defaultSectionSize() + wider);
        rows->setFixedWidth(
            std::max(labelWidth(table, metrics), rows->sizeHint().width() - wider * table.columnCount()));
    }
    rows->setDefaultSectionSize(std::max(rows->defaultSectionSize(), metrics.height() + verticalPadding));
}

/// The open editor of the table's current cell; null where nothing is being typed.
QWidget* editorOf(const QTableWidget& table)
{
    return table.indexWidget(table.currentIndex());
}
} // namespace

SystemConfigPage::Transfer::Transfer(SystemConfigPage& page) : m_page(&page)
{
    if (m_page->m_transfers++ == 0) {
        m_page->m_buttons.setEnabled(false);
    }
}

SystemConfigPage::Transfer::~Transfer()
{
    if (m_page && --m_page->m_transfers == 0) {
        m_page->m_buttons.setEnabled(true);
    }
}

SystemConfigPage::SystemConfigPage(QWidget& dialog)
    : m_tables{formWidget<QTableWidget>(dialog, "tableWidgetNecselParams"),
               formWidget<QTableWidget>(dialog, "tableWidgetFanParams"),
               formWidget<QTableWidget>(dialog, "tableWidgetHeaterParams"),
               formWidget<QTableWidget>(dialog, "tableWidgetJigglerSpeed"),
               formWidget<QTableWidget>(dialog, "tableWidgetNovalumParams"),
               formWidget<QTableWidget>(dialog, "tableWidgetNovalumParams2")},
      m_buttons(dialog, {"pushButtonGetSystemConfigData", "pushButtonSetSystemConfigData",
                         "pushButtonLoadSystemConfigData", "pushButtonSaveSystemConfigData"}),
      m_necselTemperature(formWidget<QLabel>(dialog, "labelNecselTemp")),
      m_necselCurrent(formWidget<QLabel>(dialog, "labelNecselCurrent")),
      m_novalumTemperature1(formWidget<QLabel>(dialog, "labelNovalumTempS1")),
      m_novalumTemperature2(formWidget<QLabel>(dialog, "labelNovalumTempS2")),
      m_laserFan(formWidget<QLabel>(dialog, "labelLaserFan")),
      m_heater(formWidget<QLabel>(dialog, "labelHeater"))
{
    for (QTableWidget* table : m_tables) {
        const bool wholeNumbers = table == &this->table(ConfigTable::Novalum);
        fitToFont(*table, wholeNumbers ? QStringLiteral("-32768") : QStringLiteral("-1.23457e-05"));
        connect(table, &QTableWidget::itemChanged, this, [this] { ++m_changeCount; });
    }
}

QTableWidget& SystemConfigPage::table(ConfigTable which) const
{
    return *m_tables.at(static_cast<std::size_t>(which));
}

QTableWidgetItem* SystemConfigPage::item(const ConfigCell& cell) const
{
    return table(cell.table).item(cell.row, cell.column);
}

SystemConfigTexts SystemConfigPage::texts() const
{
    SystemConfigTexts texts;
    std::transform(systemConfigFields().begin(), systemConfigFields().end(), texts.begin(),
                   [this](const SystemConfigField& field) { return item(field.cell)->text(); });
    return texts;
}

QStringList SystemConfigPage::novalumHeaders() const
{
    QStringList headers;
    for (int column = 0; column < novalumChannelCount; ++column) {
        headers.append(table(ConfigTable::Novalum).horizontalHeaderItem(column)->text());
    }
    return headers;
}

void SystemConfigPage::fill(const SystemConfigTexts& texts)
{
    dropTyping();
    for (std::size_t i = 0; i < texts.size(); ++i) {
        item(systemConfigFields().at(i).cell)->setText(texts.at(i));
    }
}

void SystemConfigPage::show(const SystemConfigTexts& texts)
{
    fill(texts);
    // Loaded is loaded, even where a cell already showed the same by chance.
    ++m_changeCount;
}

void SystemConfigPage::showFromDevice(const SystemConfigTexts& texts)
{
    fill(texts);
    markKept(m_changeCount);
}

void SystemConfigPage::pasteNovalum(const NovalumBlock& block)
{
    dropTyping();
    QTableWidget& novalum = table(ConfigTable::Novalum);
    for (int row = 0; row < novalumRowCount; ++row) {
        for (int column = 0; column < novalumChannelCount; ++column) {
            const int value = block.at(static_cast<std::size_t>(row)).at(static_cast<std::size_t>(column));
            novalum.setItem(row, column, new QTableWidgetItem(QString::number(value)));
        }
    }
}

void SystemConfigPage::finishTyping()
{
    for (const QTableWidget* table : m_tables) {
        if (QWidget* const editor = editorOf(*table)) {
            QAbstractItemDelegate* const delegate = table->itemDelegate();
            emit delegate->commitData(editor);
            emit delegate->closeEditor(editor);
        }
    }
}

void SystemConfigPage::dropTyping()
{
    for (const QTableWidget* table : m_tables) {
        if (QWidget* const editor = editorOf(*table)) {
            emit table->itemDelegate()->closeEditor(editor, QAbstractItemDelegate::RevertModelCache);
        }
    }
}

bool SystemConfigPage::isChanged() const
{
    const bool typing = std::any_of(m_tables.begin(), m_tables.end(),
                                    [](const QTableWidget* table) { return editorOf(*table) != nullptr; });
    return typing || m_changeCount != m_keptCount;
}

void SystemConfigPage::belongTo(int deviceNumber)
{
    if (m_deviceNumber == deviceNumber) {
        return;
    }
    dropTyping();
    if (!isFor(deviceNumber)) {
        SystemConfigTexts nothing;
        nothing.fill(QStringLiteral("0"));
        fill(nothing);
    }
    m_deviceNumber = deviceNumber;
    markKept(m_changeCount);
}

void SystemConfigPage::showReadings(const Temperatures& readings)
{
    m_necselTemperature->setText(tr("Necsel Temp: %1 C").arg(readings.necsel));
    m_necselCurrent->setText(tr("Necsel Current: %1 A").arg(readings.laserCurrent));
    m_novalumTemperature1->setText(tr("Novalum Temp S1: %1 C").arg(readings.novalum1));
    m_novalumTemperature2->setText(tr("Novalum Temp S2: %1 C").arg(readings.novalum2));
    m_laserFan->setText(tr("Laser Fan Speed: %1").arg(readings.laserFan));
    m_heater->setText(tr("Heater: %1").arg(readings.heater));
}
