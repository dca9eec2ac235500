#include "settings/ChannelConfigTable.h"

#include "forms/FormWidgets.h"
#include "settings/SettingsDialog.h"
#include "settings/SpokenCell.h"
#include "settings/WheelGuard.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QTableWidget>

#include <algorithm>

namespace {
struct LaserType
{
    const char* name;
    quint8 red;
    quint8 green;
    quint8 blue;
};

/// By type index; the one behind the last is the custom type.
constexpr std::array<LaserType, 8> laserTypes{{{"405", 0x49, 0x00, 0xbc},
                                               {"445", 0x00, 0x19, 0xff},
                                               {"470", 0x00, 0x99, 0xff},
                                               {"520", 0x24, 0xff, 0x00},
                                               {"528", 0x41, 0xff, 0x00},
                                               {"555", 0xa3, 0xff, 0x00},
                                               {"640", 0xff, 0x13, 0x00},
                                               {"730", 0xbc, 0x00, 0x00}}};
/// The lasers of the Novalum module in the order of its calibration, then the one of the Necsel.
constexpr std::array<int, channelCount> usualTypes{1, 3, 7, 6, 0, 2, 4, 5};

constexpr int nameLength = 4;
constexpr int colorLength = 6;
constexpr int cellMargin = 2;  ///< pixels that the lines of the table keep
constexpr int fieldFrame = 12; ///< pixels beside the text of a field
constexpr char columnProperty[] = "column";

/// What each row means, for the tip of its cells.
constexpr std::array<const char*, 6> toolTips{
    {QT_TRANSLATE_NOOP("ChannelConfigTable", "Whether the channel is in use"),
     QT_TRANSLATE_NOOP("ChannelConfigTable",
                       "The wavelength, which fills in its usual name and color, or \"custom\""),
     QT_TRANSLATE_NOOP("ChannelConfigTable", "The name of the channel: up to four characters"),
     QT_TRANSLATE_NOOP("ChannelConfigTable",
                       "Red, green and blue as two hexadecimal digits each, for example ff1300"),
     QT_TRANSLATE_NOOP("ChannelConfigTable",
                       "Whether the channel is driven together with its primary channel"),
     QT_TRANSLATE_NOOP("ChannelConfigTable", "The channel that this one is driven together with")}};

enum Row { EnabledRow, TypeRow, NameRow, ColorRow, SecondaryRow, PrimaryRow };

ChannelConfigEntry usualEntry(int type)
{
    const LaserType& laser = laserTypes.at(static_cast<size_t>(type));
    ChannelConfigEntry entry;
    entry.type = type;
    entry.name = QLatin1String(laser.name);
    entry.red = laser.red;
    entry.green = laser.green;
    entry.blue = laser.blue;
    return entry;
}

ChannelConfigEntries usualEntries()
{
    ChannelConfigEntries entries;
    std::transform(usualTypes.begin(), usualTypes.end(), entries.begin(), usualEntry);
    return entries;
}

QString colorText(const ChannelConfigEntry& entry)
{
    return QString::fromLatin1(
        QByteArray(1, char(entry.red)).append(char(entry.green)).append(char(entry.blue)).toHex());
}

quint8 colorPart(const QString& text, int part)
{
    // The framework's conversion would take blanks, signs and a single digit, too.
    static const QRegularExpression pair(QStringLiteral("\\A[0-9a-fA-F]{2}\\z"));
    const QString digits = text.mid(2 * part, 2);
    return pair.match(digits).hasMatch() ? quint8(digits.toUInt(nullptr, 16)) : quint8(0);
}

int indexIn(const QComboBox* box, int index)
{
    return index >= 0 && index < box->count() ? index : 0;
}
} // namespace

ChannelConfigTable::ChannelConfigTable(SettingsDialog& dialog)
    : m_table(formWidget<QTableWidget>(dialog, "tableWidgetChannelConfig"))
{
    auto* wheelGuard = new WheelGuard(&dialog);
    QWidget* before = formWidget<QLineEdit>(dialog, "lineEditVYRHardwareRev");
    for (int i = 0; i < channelCount; ++i) {
        const Column column = build(i);
        connectTo(dialog, column, *wheelGuard);
        m_columns.at(static_cast<size_t>(i)) = column;
        // Down the columns, as a channel is what somebody fills in.
        for (QWidget* cell : std::initializer_list<QWidget*>{
                 column.enabled, column.type, column.name, column.color, column.secondary, column.primary}) {
            QWidget::setTabOrder(before, cell);
            before = cell;
        }
    }
    fitCells();
    show(usualEntries());
}

ChannelConfigTable::Column ChannelConfigTable::build(int column)
{
    const Column cells{new QCheckBox, new QComboBox, new QLineEdit,
                       new QLineEdit, new QCheckBox, new QComboBox};
    for (const LaserType& laser : laserTypes) {
        cells.type->addItem(QLatin1String(laser.name));
    }
    cells.type->addItem(QStringLiteral("custom"));
    for (int primary = 1; primary <= channelCount; ++primary) {
        cells.primary->addItem(QString::number(primary));
    }
    cells.name->setMaxLength(nameLength);
    // The record has one byte for each character.
    cells.name->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[\\x20-\\x7e\\xa0-\\xff]*")), cells.name));
    cells.color->setMaxLength(colorLength);
    for (QLineEdit* field : {cells.name, cells.color}) {
        field->setFrame(false);
        field->setAlignment(Qt::AlignCenter);
    }
    place(cells.enabled, EnabledRow, column, "checkBoxChannelEnabled");
    place(cells.type, TypeRow, column, "comboBoxChannelType");
    place(cells.name, NameRow, column, "lineEditChannelName");
    place(cells.color, ColorRow, column, "lineEditChannelColor");
    place(cells.secondary, SecondaryRow, column, "checkBoxChannelSecondary");
    place(cells.primary, PrimaryRow, column, "comboBoxPrimaryChannel");
    return cells;
}

void ChannelConfigTable::place(QWidget* cell, int row, int column, const char* objectName)
{
    const QString number = QString::number(column + 1);
    cell->setObjectName(QLatin1String(objectName) + number);
    cell->setProperty(columnProperty, column);
    cell->setAccessibleName(tr("Channel %1: %2").arg(number, m_table->verticalHeaderItem(row)->text()));
    cell->setToolTip(tr(toolTips.at(static_cast<size_t>(row))));
    auto* const frame = new QWidget;
    auto* const layout = new QHBoxLayout(frame);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(cell, 0, Qt::AlignCenter);
    m_table->setItem(row, column, new SpokenCell(*cell));
    m_table->setCellWidget(row, column, frame);
}

void ChannelConfigTable::connectTo(SettingsDialog& dialog, const Column& cells, WheelGuard& wheelGuard)
{
    // Not clicked(): whoever has the screen read to him checks a box without a click.
    QObject::connect(cells.enabled, SIGNAL(toggled(bool)), &dialog,
                     SLOT(on_channelEnabledCheckboxClicked(bool)));
    QObject::connect(cells.secondary, SIGNAL(toggled(bool)), &dialog,
                     SLOT(on_secondaryChannelCheckboxClicked(bool)));
    QObject::connect(cells.primary, SIGNAL(currentIndexChanged(int)), &dialog,
                     SLOT(on_primaryChannelIndexChanged(int)));
    // The same wavelength chosen once more brings its usual name and colour back.
    for (const char* signal : {SIGNAL(currentIndexChanged(int)), SIGNAL(activated(int))}) {
        QObject::connect(cells.type, signal, &dialog, SLOT(on_channelTypeIndexChanged(int)));
    }
    for (QComboBox* box : {cells.type, cells.primary}) {
        box->setFocusPolicy(Qt::StrongFocus);
        box->installEventFilter(&wheelGuard);
    }
    for (QLineEdit* field : {cells.name, cells.color}) {
        QObject::connect(field, &QLineEdit::textEdited, &dialog, [this] { noteChange(); });
    }
}

void ChannelConfigTable::fitCells()
{
    QHeaderView* const columns = m_table->horizontalHeader();
    QHeaderView* const rows = m_table->verticalHeader();
    QSize cell(columns->defaultSectionSize() - 2 * cellMargin, rows->defaultSectionSize() - 2 * cellMargin);
    // All columns are alike.
    const Column& first = m_columns.front();
    for (QWidget* widget : std::initializer_list<QWidget*>{first.type, first.name, first.enabled}) {
        widget->ensurePolished();
        cell.rheight() = std::max(cell.height(), widget->sizeHint().height());
    }
    // A line edit's own hint is for much more text than a channel has.
    const QFontMetrics metrics = first.name->fontMetrics();
    for (const QString& widest :
         {QString(nameLength, QLatin1Char('W')), QString(colorLength, QLatin1Char('d'))}) {
        cell.rwidth() = std::max(cell.width(), metrics.horizontalAdvance(widest) + fieldFrame);
    }
    cell.rwidth() = std::max(cell.width(), first.type->sizeHint().width());
    for (const Column& column : m_columns) {
        for (QWidget* widget :
             std::initializer_list<QWidget*>{column.type, column.name, column.color, column.primary}) {
            widget->setFixedWidth(cell.width());
        }
        // Its own height leaves the text no room beside the mark of the focus.
        for (QLineEdit* field : {column.name, column.color}) {
            field->setFixedHeight(cell.height());
        }
    }
    columns->setDefaultSectionSize(cell.width() + 2 * cellMargin);
    rows->setDefaultSectionSize(cell.height() + 2 * cellMargin);
}

ChannelConfigEntries ChannelConfigTable::entries() const
{
    ChannelConfigEntries entries;
    for (size_t i = 0; i < entries.size(); ++i) {
        const Column& column = m_columns.at(i);
        const QString color = column.color->text();
        ChannelConfigEntry& entry = entries.at(i);
        entry.enabled = column.enabled->isChecked();
        entry.type = column.type->currentIndex();
        entry.name = column.name->text();
        entry.red = colorPart(color, 0);
        entry.green = colorPart(color, 1);
        entry.blue = colorPart(color, 2);
        entry.secondary = column.secondary->isChecked();
        entry.primary = column.primary->currentIndex();
    }
    return entries;
}

void ChannelConfigTable::show(const ChannelConfigEntries& entries)
{
    for (size_t i = 0; i < entries.size(); ++i) {
        show(m_columns.at(i), entries.at(i));
        applyRules(m_columns.at(i));
    }
    m_changed = false;
    ++m_revision;
}

void ChannelConfigTable::show(const Column& column, const ChannelConfigEntry& entry)
{
    // A type that is shown is nobody's choice and leaves name and colour alone.
    const QSignalBlocker enabledBlocker(column.enabled);
    const QSignalBlocker typeBlocker(column.type);
    const QSignalBlocker secondaryBlocker(column.secondary);
    const QSignalBlocker primaryBlocker(column.primary);
    column.enabled->setChecked(entry.enabled);
    column.type->setCurrentIndex(indexIn(column.type, entry.type));
    column.name->setText(entry.name);
    column.color->setText(colorText(entry));
    column.secondary->setChecked(entry.secondary);
    column.primary->setCurrentIndex(indexIn(column.primary, entry.primary));
}

void ChannelConfigTable::setUnchanged()
{
    m_changed = false;
    ++m_revision;
}

void ChannelConfigTable::setDevice(int number)
{
    if (m_deviceNumber == number) {
        return;
    }
    if (!isFor(number)) {
        show(usualEntries());
    }
    m_deviceNumber = number;
    m_changed = false;
}

void ChannelConfigTable::enabledClicked(const QObject* cell)
{
    if (const Column* column = columnOf(cell)) {
        applyRules(*column);
        noteChange();
    }
}

void ChannelConfigTable::typeChosen(const QObject* cell)
{
    const Column* const column = columnOf(cell);
    if (column == nullptr) {
        return;
    }
    const int type = column->type->currentIndex();
    if (type >= 0 && type < static_cast<int>(laserTypes.size())) {
        const ChannelConfigEntry usual = usualEntry(type);
        column->name->setText(usual.name);
        column->color->setText(colorText(usual));
    }
    noteChange();
}

void ChannelConfigTable::secondaryClicked(const QObject* cell)
{
    enabledClicked(cell);
}

void ChannelConfigTable::primaryChosen(const QObject* cell)
{
    // The choice counts when it is written.
    if (columnOf(cell) != nullptr) {
        noteChange();
    }
}

const ChannelConfigTable::Column* ChannelConfigTable::columnOf(const QObject* cell) const
{
    const QVariant column = cell == nullptr ? QVariant() : cell->property(columnProperty);
    bool isNumber = false;
    const int index = column.toInt(&isNumber);
    return isNumber && index >= 0 && index < channelCount ? &m_columns.at(static_cast<size_t>(index))
                                                          : nullptr;
}

void ChannelConfigTable::applyRules(const Column& column)
{
    const bool enabled = column.enabled->isChecked();
    for (QWidget* cell :
         std::initializer_list<QWidget*>{column.type, column.name, column.color, column.secondary}) {
        cell->setEnabled(enabled);
    }
    column.primary->setEnabled(enabled && column.secondary->isChecked());
}

void ChannelConfigTable::noteChange()
{
    m_changed = true;
    ++m_revision;
}
