#pragma once

#include "device/Device.h"
#include "settings/ConfigSamples.h"
#include "settings/DialogBench.h"
#include "settings/SystemConfigRecord.h"
#include "support/BoxAnswerer.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>

#include <algorithm>

/// The editor of the system configuration in its dialog, at a whole simulated illuminator.
class SystemConfigTest : public SimulatedDialogTest
{
protected:
    using Record = Simulator::RecordMemory::Record;

    /// With the device's record read and the editor in front.
    bool buildEditor()
    {
        return buildDialog() && m_hand->clickTab(QStringLiteral("System Config")) &&
               QTest::qWaitFor([this] { return texts() == deviceTexts(); });
    }
    QTableWidget* table(ConfigTable which) const
    {
        static constexpr std::array<const char*, 6> names{
            "tableWidgetNecselParams", "tableWidgetFanParams",     "tableWidgetHeaterParams",
            "tableWidgetJigglerSpeed", "tableWidgetNovalumParams", "tableWidgetNovalumParams2"};
        return m_hand->part<QTableWidget>(names.at(std::size_t(which)));
    }
    QTableWidgetItem* item(const ConfigCell& cell) const
    {
        return table(cell.table)->item(cell.row, cell.column);
    }
    SystemConfigTexts texts() const
    {
        SystemConfigTexts texts;
        std::transform(systemConfigFields().begin(), systemConfigFields().end(), texts.begin(),
                       [this](const SystemConfigField& field) { return item(field.cell)->text(); });
        return texts;
    }
    void enter(const SystemConfigTexts& texts) const
    {
        for (std::size_t i = 0; i < texts.size(); ++i) {
            item(systemConfigFields().at(i).cell)->setText(texts.at(i));
        }
    }
    /// Begins to type in the cell and leaves it open.
    void beginTyping(const ConfigCell& cell, const QString& text) const
    {
        QTableWidget* const table = this->table(cell.table);
        m_hand->bringIntoView(table);
        table->setFocus();
        table->setCurrentCell(cell.row, cell.column);
        table->editItem(item(cell));
        auto* const editor = qobject_cast<QLineEdit*>(table->indexWidget(table->currentIndex()));
        QVERIFY(editor != nullptr);
        editor->selectAll();
        QTest::keyClicks(editor, text);
    }
    Simulator::RecordMemory& records() const { return m_device->model().records(); }
    SystemConfigBytes deviceRecord() const
    {
        SystemConfigBytes record{};
        const QByteArray bytes = records().bytes(Record::System);
        std::copy(bytes.begin(), bytes.end(), record.begin());
        return record;
    }
    SystemConfigTexts deviceTexts() const { return SystemConfigRecord::toTexts(deviceRecord()); }
    void setDeviceRecord(const SystemConfigBytes& record) const
    {
        records().setBytes(Record::System,
                           QByteArray(reinterpret_cast<const char*>(record.data()), systemConfigSize));
    }
    void setDeviceTexts(const SystemConfigTexts& texts) const
    {
        setDeviceRecord(SystemConfigRecord::fromTexts(texts, deviceRecord()));
    }
    /// With everything read that connecting reads.
    bool switchTo(DeviceMode mode)
    {
        const bool loader = mode == DeviceMode::Loader;
        const QSignalSpy connected(m_window->device(), &Device::deviceConnected);
        const int read = m_lines->count("ischanconfigvalid");
        const auto code = loader ? m_window->device()->goLoader() : m_window->device()->goApp();
        return code == DeviceResult::Ok && m_window->device()->deviceMode() == mode &&
               QTest::qWaitFor([&] { return m_lines->count("ischanconfigvalid") > read; });
    }
    bool plugIn()
    {
        const QSignalSpy connected(m_window->device(), &Device::deviceConnected);
        return illuminator().plug() && QTest::qWaitFor([&] { return !connected.isEmpty(); }, 10000);
    }
    bool unplug()
    {
        illuminator().unplug();
        return QTest::qWaitFor([this] { return !m_window->device()->isOpen(); });
    }
    int countBeginning(const QByteArray& beginning) const { return m_lines->countBeginning(beginning); }
    bool buttonsAre(bool enabled) const
    {
        const QStringList kinds{QStringLiteral("Get"), QStringLiteral("Set"), QStringLiteral("Load"),
                                QStringLiteral("Save")};
        return std::all_of(kinds.begin(), kinds.end(), [&](const QString& kind) {
            const QByteArray name = "pushButton" + kind.toLatin1() + "SystemConfigData";
            return m_hand->part<QPushButton>(name.constData())->isEnabled() == enabled;
        });
    }
    /// The one box that tells of a write without faults.
    bool sawDone(const BoxAnswerer& boxes) const
    {
        return boxes.sawOneInformation(QStringLiteral("System configuration updated")) &&
               boxes.boxes().first().parent == &m_hand->dialog();
    }
    void get() const { m_hand->click("pushButtonGetSystemConfigData"); }
    void set() const { m_hand->click("pushButtonSetSystemConfigData"); }
    void load() const { m_hand->click("pushButtonLoadSystemConfigData"); }
    void save() const { m_hand->click("pushButtonSaveSystemConfigData"); }
};
