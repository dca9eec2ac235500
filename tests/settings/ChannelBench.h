#pragma once

#include "settings/KeepingUnit.h"
#include "settings/LoneDialogTest.h"
#include "support/BoxAnswerer.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

/// The settings dialog at service level with a unit that keeps records.
class ChannelDialogTest : public LoneDialogTest
{
protected:
    void buildDialog()
    {
        buildRoom();
        m_unit = {};
        m_illuminator->bench().setResponder([this](const QByteArray& line) { return m_unit.answer(line); });
        make(true);
        connect(m_device.get(), &Device::deviceConnected, m_dialog.get(), &SettingsDialog::onDeviceConnected);
        connect(m_device.get(), &Device::deviceDisconnected, m_dialog.get(),
                &SettingsDialog::onDeviceDisconnected);
    }
    /// Connected, and everything on the page read.
    void connectUnit()
    {
        connectDevice();
        m_dialog->UpdateProductConfigDisplay();
        const int chances = m_device->isVersionAboveConfigLimit() ? 1 : 0;
        QTRY_COMPARE(m_illuminator->bench().count("ischanconfigvalid"), chances);
        QTRY_VERIFY(!text("lineEditVYRHardwareRev").isEmpty());
        QCOMPARE(m_device->waitWhileBusy(), int(DeviceResult::Ok));
        m_illuminator->clearCommands();
    }
    QString text(const char* field) const { return part<QLineEdit>(field)->text(); }
    void setButton() const
    {
        QTest::mouseClick(part<QPushButton>("pushButtonSetProductConfigData"), Qt::LeftButton);
    }
    /// Types it in place of what is there.
    void type(const char* field, const QString& newText) const
    {
        auto* const edit = part<QLineEdit>(field);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, newText);
    }
    QTableWidget* table() const { return part<QTableWidget>("tableWidgetChannelConfig"); }
    template<typename Widget>
    Widget* cell(int row, int column) const
    {
        return table()->cellWidget(row, column)->findChild<Widget*>();
    }
    QCheckBox* enabled(int column) const { return cell<QCheckBox>(0, column); }
    QComboBox* laser(int column) const { return cell<QComboBox>(1, column); }
    QLineEdit* name(int column) const { return cell<QLineEdit>(2, column); }
    QLineEdit* color(int column) const { return cell<QLineEdit>(3, column); }
    QCheckBox* secondary(int column) const { return cell<QCheckBox>(4, column); }
    QComboBox* primary(int column) const { return cell<QComboBox>(5, column); }
    /// All that the column shows, from the top.
    QStringList texts(int column) const
    {
        return {QString::number(enabled(column)->isChecked()),
                laser(column)->currentText(),
                name(column)->text(),
                color(column)->text(),
                QString::number(secondary(column)->isChecked()),
                primary(column)->currentText()};
    }
    /// The lines that write, in order.
    QList<QByteArray> written() const
    {
        QList<QByteArray> lines;
        const QList<QByteArray> all = m_illuminator->bench().lines();
        for (const QByteArray& line : all) {
            if (line.startsWith("prod_config:") || line.startsWith("wf:") || line.startsWith("set")) {
                lines.append(line);
            }
        }
        return lines;
    }
    /// The beginnings of the lines of a whole write, in order.
    static const QList<QByteArray>& writeLines()
    {
        static const QList<QByteArray> lines{"prod_config:", "wf:S244800198", "wf:S2288001d8",
                                             "setchanconfigvalid"};
        return lines;
    }
    /// The one box that tells of a write without faults.
    bool sawDone(const BoxAnswerer& boxes) const
    {
        return boxes.sawOneInformation(QStringLiteral("Device configuration updated")) &&
               boxes.boxes().first().parent == m_dialog.get();
    }

    KeepingUnit m_unit;
};
