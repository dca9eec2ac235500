#pragma once

#include "settings/ChannelConfigRecord.h"

#include <QCoreApplication>

#include <array>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QObject;
class QTableWidget;
class QWidget;
class SettingsDialog;
class WheelGuard;

/// The channel table: which laser sits behind each schematic channel, and the rules of its cells. A column is
/// a channel, with an index from 0.
class ChannelConfigTable
{
    Q_DECLARE_TR_FUNCTIONS(ChannelConfigTable)

public:
    /// Builds the cells below @p dialog, which keeps them, connects them to its slots and shows the usual
    /// lasers.
    explicit ChannelConfigTable(SettingsDialog& dialog);

    /// What the cells say. Two characters of a colour that are no hexadecimal number count as 0.
    ChannelConfigEntries entries() const;
    /// Names and colours stay as they come, whatever is usual for the type. Counts as unchanged afterwards.
    void show(const ChannelConfigEntries& entries);

    /// Changed by hand since it was last shown or written, while the device of setDevice() was there.
    bool isChanged() const { return m_changed; }
    /// Takes what was changed so far as done with.
    void setUnchanged();
    /// Another @p number is another device: what was changed by hand was not meant for it.
    void setDevice(int number);
    /// False while the entries are those of another device.
    bool isFor(int number) const { return m_deviceNumber == 0 || m_deviceNumber == number; }
    /// Another one after each change and each show(): tells whether a wait has seen the same table all along.
    int revision() const { return m_revision; }

    // The cells call these through the dialog's slots; @p cell tells the column.
    void enabledClicked(const QObject* cell);
    void typeChosen(const QObject* cell);
    void secondaryClicked(const QObject* cell);
    void primaryChosen(const QObject* cell);

private:
    struct Column
    {
        QCheckBox* enabled;
        QComboBox* type;
        QLineEdit* name;
        QLineEdit* color;
        QCheckBox* secondary;
        QComboBox* primary;
    };

    Column build(int column);
    void connectTo(SettingsDialog& dialog, const Column& cells, WheelGuard& wheelGuard);
    void place(QWidget* cell, int row, int column, const char* objectName);
    void fitCells();
    const Column* columnOf(const QObject* cell) const;
    static void show(const Column& column, const ChannelConfigEntry& entry);
    /// What is not in use cannot be edited, nor a primary channel where there is none.
    static void applyRules(const Column& column);
    void noteChange();

    QTableWidget* m_table;
    std::array<Column, channelCount> m_columns{};
    int m_deviceNumber = 0;
    int m_revision = 0;
    bool m_changed = false;
};
