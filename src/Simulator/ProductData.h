#pragma once

#include <QByteArray>

#include <array>

namespace Simulator {

/// What is written on the device's type plates, as it keeps it: a short list of keys and texts.
class ProductData
{
public:
    static constexpr int kFieldCount = 5;

    /// "vyr_hw_ver=1.2.0,vyr_pn=..." in the device's order.
    QByteArray text() const;
    /// Takes items of the same form, in any order and number. False, and nothing changes, when there is an
    /// unknown key or an item without "=".
    bool assign(const QByteArray& items);

private:
    struct Field
    {
        const char* key;
        QByteArray value;
    };
    std::array<Field, kFieldCount> m_fields{{{"vyr_hw_ver", "1.2.0"},
                                             {"vyr_pn", "VYR-8-0001"},
                                             {"vyr_sn", "VYR-00042"},
                                             {"necsel_laser_sn", "NLM-10731"},
                                             {"novalum_sn", "NOV-55018"}}};
};

} // namespace Simulator
