#pragma once

#include "settings/LoneDialogTest.h"
#include "support/BoxAnswerer.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

#include <functional>

/// A unit that keeps its identity and its records as the real one does, and does what a test makes it do.
struct KeepingUnit
{
    QByteArray image = "Loader V1.5.0";
    QByteArray product = "vyr_hw_ver=1.2.3,vyr_pn=PN-7,vyr_sn=SN-1,necsel_laser_sn=N55,novalum_sn=V88";
    QByteArray channels = QByteArray(channelConfigSize, '\0');
    bool channelsValid = true;
    QHash<QByteArray, QByteArray> odd; ///< answers to lines that begin like this; an empty one is silence
    std::function<void(const QByteArray&)> heard; ///< is called with each line before its answer
    std::chrono::milliseconds thinkTime{0};

    std::optional<Simulator::Answer> answer(const QByteArray& line)
    {
        if (line.isEmpty()) {
            return std::nullopt;
        }
        if (heard) {
            heard(line);
        }
        for (auto it = odd.constBegin(); it != odd.constEnd(); ++it) {
            if (line.startsWith(it.key())) {
                return Simulator::Answer{it->isEmpty() ? *it : QByteArray(*it + '\n'), thinkTime};
            }
        }
        return Simulator::Answer{reply(line) + '\n', thinkTime};
    }

    /// One column's twelve bytes of the record.
    QByteArray entry(int column) const { return channels.mid(4 + 12 * column, 12); }
    void setEntry(int column, const QByteArray& bytes) { channels.replace(4 + 12 * column, 12, bytes); }

private:
    QByteArray reply(const QByteArray& line)
    {
        const QHash<QByteArray, QByteArray> fixed{{"v", image},
                                                  {"v?a", "VYRApp V2.7.0"},
                                                  {"v?l", "Loader V1.5.0"},
                                                  {"isloadervalid", "Yes"},
                                                  {"isappvalid", "Yes"},
                                                  {"issysconfigvalid", "Yes"},
                                                  {"ischanconfigvalid", channelsValid ? "Yes" : "No"},
                                                  {"necsel_controller_ver", "necsel_controller_ver=3.4.1"},
                                                  {"necsel_controller_sn", "necsel_controller_sn=77"},
                                                  {"prod_config", "prod_config:" + product},
                                                  {"chan_config", "chan_config:" + channels.toHex()},
                                                  {"f_mode?", "f_mode=idle"}};
        if (line == "goloader" || line == "goapp") {
            image = line == "goapp" ? "VYRApp V2.7.0" : "Loader V1.5.0";
        } else if (line.startsWith("prod_config:")) {
            product = line.mid(12);
        } else if (line.startsWith("rf:")) {
            return "rf:" + QByteArray(2 * line.split(' ').value(2).toInt(), '0');
        } else if (line.startsWith("wf:S2")) {
            const QByteArray bytes = QByteArray::fromHex(line.mid(5)).leftJustified(5, '\0');
            constexpr int start = 0x0198; // the low two bytes of the address
            const int offset = quint8(bytes.at(2)) * 256 + quint8(bytes.at(3)) - start;
            if (offset < 0 || offset + bytes.size() - 5 > channels.size()) {
                return "ERROR";
            }
            channels.replace(offset, bytes.size() - 5, bytes.mid(4, bytes.size() - 5));
            return "Wrote";
        }
        return fixed.value(line, "ok");
    }
};

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
        if (boxes.boxes().size() != 1) {
            return false;
        }
        const BoxAnswerer::Box& box = boxes.boxes().first();
        return box.title.isEmpty() && box.text == QStringLiteral("Device configuration updated") &&
               box.icon == QMessageBox::Information && box.buttons == QMessageBox::Ok &&
               box.textFormat == Qt::PlainText && box.parent == m_dialog.get();
    }

    KeepingUnit m_unit;
};
