#pragma once

#include "device/DeviceFixture.h"
#include "device/Records.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <numeric>

namespace DeviceTest {

/// One of the six transfers of records, on buffers of its own.
struct RecordTransfer
{
    const char* name;
    int lines; ///< that it takes on the wire
    int (*run)(Device&);
    int closedCode; ///< when the connection breaks before the first line is answered
};

inline SystemConfigBytes countingBytes()
{
    SystemConfigBytes bytes{};
    std::iota(bytes.begin(), bytes.end(), quint8(3));
    return bytes;
}

inline int readSystem(Device& device)
{
    SystemConfigBytes bytes{};
    return device.readSystemConfig(bytes.data());
}

inline int readChannels(Device& device)
{
    ChannelConfigBytes bytes{};
    return device.readChannelConfig(bytes.data());
}

inline const std::array<RecordTransfer, 6>& transfers()
{
    static const std::array<RecordTransfer, 6> all{{
        {"read system", 4, readSystem, DeviceResult::NotOpen},
        {"write system", 6, [](Device& device) { return device.writeSystemConfig(countingBytes().data()); },
         DeviceResult::NotOpen},
        // Whatever keeps the device from telling that the record is valid.
        {"read channels", 2, readChannels, DeviceResult::RecordNotValid},
        {"write channels", 3,
         [](Device& device) { return device.writeChannelConfig(countingBytes().data()); },
         DeviceResult::NotOpen},
        {"read product", 1,
         [](Device& device) {
             ProductConfig record;
             return device.readProductConfig(record);
         },
         DeviceResult::NotOpen},
        {"write product", 1, [](Device& device) { return device.writeProductConfig({}); },
         DeviceResult::NotOpen},
    }};
    return all;
}

/// A row for every line of every transfer: "transfer", its place in transfers(), and "step", from 0.
inline void addTransferSteps()
{
    QTest::addColumn<int>("transfer");
    QTest::addColumn<int>("step");
    for (int transfer = 0; transfer < int(transfers().size()); ++transfer) {
        const RecordTransfer& tried = transfers().at(std::size_t(transfer));
        for (int step = 0; step < tried.lines; ++step)
            QTest::addRow("%s, line %d", tried.name, step + 1) << transfer << step;
    }
}

/// A device with records, connected and not polled; what it is told to write is only confirmed.
class RecordsTest : public ConnectedTest
{
protected:
    void begin()
    {
        ConnectedTest::begin();
        m_bench->setAnswers({{"issysconfigvalid", "Yes\n"},
                             {"ischanconfigvalid", "yes\n"},
                             {"chan_config", "chan_config:" + QByteArray(200, '3') + '\n'},
                             {"prod_config", "prod_config:vyr_sn=S1\n"}});
        m_oddStep = -1;
        m_bench->setResponder([this, step = 0](const QByteArray& line) mutable {
            return isTransferLine(line) ? answer(line, step++) : std::nullopt;
        });
    }
    static bool isTransferLine(const QByteArray& line)
    {
        return line.startsWith("rf:") || line.startsWith("wf:") || line.contains("config");
    }
    QList<QByteArray> transferLines() const
    {
        QList<QByteArray> lines = m_bench->lines();
        lines.erase(std::remove_if(lines.begin(), lines.end(),
                                   [](const QByteArray& line) { return !isTransferLine(line); }),
                    lines.end());
        return lines;
    }
    /// Digits that an "rf:" of 128 or of 52 bytes is answered with.
    static QByteArray digits128() { return QByteArray(256, '1'); }
    static QByteArray digits52() { return QByteArray(104, '2'); }

    int m_oddStep = -1; ///< the transfer line, counted from 0, that m_oddAnswer is for; it may leave it to
                        ///< the usual answer
    std::function<std::optional<Simulator::Answer>()> m_oddAnswer;

private:
    std::optional<Simulator::Answer> answer(const QByteArray& line, int step)
    {
        auto odd = step == m_oddStep ? m_oddAnswer() : std::nullopt;
        if (odd)
            return odd;
        if (line.startsWith("wf:"))
            return Simulator::Answer{"Wrote\n", {}};
        if (line.startsWith("rf:"))
            return Simulator::Answer{"rf:" + (line.endsWith(" 128") ? digits128() : digits52()) + '\n', {}};
        return std::nullopt;
    }
};

} // namespace DeviceTest
