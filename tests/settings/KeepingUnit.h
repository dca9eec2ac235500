#pragma once

#include "Simulator/Wire.h"
#include "device/DeviceTypes.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <chrono>
#include <functional>
#include <optional>

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
