#pragma once

#include "settings/NovalumBlock.h"
#include "settings/RestingButtons.h"
#include "settings/SystemConfigFields.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <array>

class QLabel;
class QTableWidget;
class QTableWidgetItem;
class QWidget;
struct Temperatures;

/// The editor of the system configuration: its tables, its buttons and the live readings beside them. It
/// knows whether its cells still are what the device told.
class SystemConfigPage : public QObject
{
    Q_OBJECT

public:
    /// Disables the page's buttons for as long as it lives, so that nothing is begun twice. Ends quietly
    /// when the page has gone before it.
    class Transfer
    {
    public:
        explicit Transfer(SystemConfigPage& page);
        ~Transfer();
        Transfer(const Transfer&) = delete;
        Transfer& operator=(const Transfer&) = delete;

    private:
        QPointer<SystemConfigPage> m_page;
    };

    /// Finds its widgets below @p dialog, which must outlive it.
    explicit SystemConfigPage(QWidget& dialog);

    SystemConfigTexts texts() const;
    /// The header texts of the Novalum table's columns.
    QStringList novalumHeaders() const;
    /// Shows what a file holds; what was being typed is dropped.
    void show(const SystemConfigTexts& texts);
    /// Shows what the device holds, from where on the cells count as unchanged.
    void showFromDevice(const SystemConfigTexts& texts);
    /// Row r and column c of the block become row r and column c of the Novalum table.
    void pasteNovalum(const NovalumBlock& block);
    /// Takes over what is being typed in a cell, as leaving the cell does.
    void finishTyping();

    /// Rises with every change of a cell, whoever makes it.
    int changeCount() const { return m_changeCount; }
    /// The device holds what the cells held at this changeCount().
    void markKept(int changeCount) { m_keptCount = changeCount; }
    /// Something was typed, pasted or loaded that the device does not have; a cell being typed in counts.
    bool isChanged() const;
    /// What was changed for one device is no reason to hide what another one holds: its cells become 0.
    void belongTo(int deviceNumber);
    /// False while the cells are those of another device.
    bool isFor(int deviceNumber) const { return m_deviceNumber == 0 || m_deviceNumber == deviceNumber; }

    bool isTransferring() const { return m_transfers > 0; }
    /// The texts are the device's and are shown as they stand.
    void showReadings(const Temperatures& readings);

private:
    QTableWidget& table(ConfigTable which) const;
    QTableWidgetItem* item(const ConfigCell& cell) const;
    void fill(const SystemConfigTexts& texts);
    void dropTyping();

    std::array<QTableWidget*, 6> m_tables; ///< by ConfigTable
    RestingButtons m_buttons;
    QLabel* m_necselTemperature;
    QLabel* m_necselCurrent;
    QLabel* m_novalumTemperature1;
    QLabel* m_novalumTemperature2;
    QLabel* m_laserFan;
    QLabel* m_heater;
    int m_changeCount = 0;
    int m_keptCount = 0;
    int m_deviceNumber = 0;
    int m_transfers = 0;
};
