#pragma once

#include "Simulator/IlluminatorModel.h"
#include "settings/LoneDialogTest.h"
#include "support/BoxAnswerer.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>

/// A unit at the end of the cable whose loader runs. Units of different letters differ in the first cell, in
/// the first channel's name and in what no cell shows.
struct RecordUnit
{
    using Record = Simulator::RecordMemory::Record;

    RecordUnit(char letter, float amps)
        : firstCell(QString::number(double(amps))), firstName(4, QLatin1Char(letter))
    {
        model.boot(Simulator::Image::Loader, "test");
        system = model.records().bytes(Record::System);
        for (const int hidden : {0, 7, 209, 263, 268, 275, 286, 299}) {
            system[hidden] = letter;
        }
        std::memcpy(system.data() + 12, &amps, sizeof amps);
        model.records().setBytes(Record::System, system);
        channels = model.records().bytes(Record::Channels);
        channels.replace(0, 4, QByteArray(4, letter));
        channels.replace(4 + 2, 4, QByteArray(4, letter));
        model.records().setBytes(Record::Channels, channels);
    }
    bool isAsItWas() const
    {
        const Simulator::RecordMemory& now = model.records();
        return now.bytes(Record::System) == system && now.bytes(Record::Channels) == channels;
    }

    Simulator::IlluminatorModel model;
    QString firstCell;
    QString firstName;
    QByteArray system; ///< both records as they were made
    QByteArray channels;
};

/// The settings dialog at service level, its editor in front, with two units of which one at a time is
/// plugged in.
class TwoUnitsTest : public LoneDialogTest
{
protected:
    void buildUnits()
    {
        buildRoom();
        m_first = std::make_unique<RecordUnit>('A', 11.0F);
        m_second = std::make_unique<RecordUnit>('B', 22.0F);
        m_plugged = m_first.get();
        m_odd = {};
        m_illuminator->bench().setResponder([this](const QByteArray& line) {
            const auto odd = m_odd ? m_odd(line) : std::nullopt;
            return odd ? odd : Simulator::Answer{m_plugged->model.handle(line).text, {}};
        });
        make(true);
        connect(m_device.get(), &Device::deviceConnected, m_dialog.get(), &SettingsDialog::onDeviceConnected);
        connect(m_device.get(), &Device::deviceDisconnected, m_dialog.get(),
                &SettingsDialog::onDeviceDisconnected);
        clickTab(QStringLiteral("System Config"));
    }
    void removeUnits()
    {
        removeRoom();
        m_first.reset();
        m_second.reset();
    }
    bool isShown(const RecordUnit& unit) const
    {
        return firstCell()->text() == unit.firstCell && firstName() == unit.firstName;
    }
    /// The link knows the other unit when this returns; the dialog has heard of it and read nothing yet.
    bool plugInSecond()
    {
        m_illuminator->bench().wire().unplug();
        if (!QTest::qWaitFor([this] { return !m_device->isOpen(); })) {
            return false;
        }
        m_plugged = m_second.get();
        m_illuminator->clearCommands();
        if (!m_illuminator->bench().wire().plug()) {
            return false;
        }
        m_device->checkConnectionStatus();
        return m_device->deviceMode() == DeviceMode::Loader;
    }
    QTableWidgetItem* firstCell() const { return part<QTableWidget>("tableWidgetNecselParams")->item(0, 0); }
    QString firstName() const { return part<QLineEdit>("lineEditChannelName1")->text(); }
    void click(const char* button) const
    {
        auto* const widget = part<QPushButton>(button);
        for (int i = 0; i < tabWidget()->count(); ++i) {
            if (tabWidget()->widget(i)->isAncestorOf(widget)) {
                tabWidget()->setCurrentIndex(i);
            }
        }
        QTest::mouseClick(widget, Qt::LeftButton);
    }
    /// What has to do with records, since the unit that is there was plugged in.
    QList<QByteArray> recordLines() const
    {
        QList<QByteArray> lines = m_illuminator->bench().lines();
        const auto isOther = [](const QByteArray& line) {
            return !line.startsWith("rf:") && !line.startsWith("wf:") && !line.contains("config");
        };
        lines.erase(std::remove_if(lines.begin(), lines.end(), isOther), lines.end());
        return lines;
    }
    static QStringList textsOf(const BoxAnswerer& boxes)
    {
        QStringList texts;
        for (const BoxAnswerer::Box& box : boxes.boxes()) {
            texts.append(box.text);
        }
        return texts;
    }

    std::unique_ptr<RecordUnit> m_first;
    std::unique_ptr<RecordUnit> m_second;
    RecordUnit* m_plugged = nullptr;
    std::function<std::optional<Simulator::Answer>(const QByteArray&)>
        m_odd; ///< instead of the unit's answer
};
