#include "Simulator/RecordContents.h"

#include "Simulator/RecordMemory.h"

#include <QtEndian>

#include <array>
#include <limits>

namespace Simulator::RecordContents {
namespace {
constexpr int kNovalumBegin = 36;
constexpr int kNovalumChannels = 7;
constexpr int kNovalumRows = 12;

struct Real
{
    int offset;
    float value;
};

struct Byte
{
    int offset;
    quint8 value;
};

/// A 16-bit value, signed or not.
struct Word
{
    int offset;
    int value;
};

// Amperes, degrees Celsius and factors.
constexpr std::array<Real, 13> kFactoryReals{{
    {12, 42.5F},  // Necsel: most laser current
    {16, 38.25F}, // crystal temperature
    {20, 6.75F},  // simmer current
    {24, 0.875F}, // output gain
    {28, -3.5F},  // output offset
    {32, 15.0F},  // least laser temperature
    {240, 65.0F}, // Novalum: over-temperature
    {276, 28.5F}, // Necsel fan: slow, full
    {280, 45.0F},
    {288, 30.0F}, // Novalum fan: slow, full
    {292, 52.5F},
    {300, 18.5F}, // heater: on, off
    {304, 24.0F},
}};

constexpr std::array<Byte, 5> kFactoryBytes{{
    {208, 70}, // jiggler speed, and those of the fans, in percent
    {284, 35},
    {285, 100},
    {296, 40},
    {297, 95},
}};

constexpr std::array<Word, 2> kFactoryWords{{
    {264, 61'250}, // Necsel: analogue full scale, beyond the reach of a signed number; and zero
    {266, -118},
}};

/// A row of the Novalum calibrations: the first channel's value, and how much each further one differs.
struct NovalumRow
{
    int first;
    int step;
};

constexpr std::array<NovalumRow, kNovalumRows> kNovalumRowValues{{
    {41'200, 310}, // curve of the current: coefficients and shift
    {-1'870, 45},
    {620, -35},
    {12, 1},
    {36'500, 275}, // curve of the preflux: coefficients and shift
    {-940, 30},
    {415, -20},
    {9, 1},
    {14, 2}, // over-current: at switching on, afterwards
    {-6, 1},
    {60'100, -450}, // analogue input: full scale, zero
    {85, 7},
}};

// The record's form when units left the factory; a host tells its own when it writes.
constexpr quint32 kFactoryForm = 7;
constexpr int kFormOffset = 8;

/// What the calibration leaves free: each byte another, none of them zero.
char freeByte(int offset)
{
    return static_cast<char>(1 + (offset * 73 + 20) % 255);
}

char* at(QByteArray& record, int offset)
{
    return record.data() + offset;
}

void putReal(QByteArray& record, const Real& real)
{
    qToLittleEndian(real.value, at(record, real.offset));
}

void putWord(QByteArray& record, const Word& word)
{
    qToLittleEndian(static_cast<quint16>(word.value), at(record, word.offset));
}

struct Channel
{
    quint8 type; ///< 405, 445, 470, 520, 528, 555, 640 and 730 nm from 0
    const char* name;
    std::array<quint8, 3> color; ///< red, green, blue
};

constexpr std::array<Channel, 8> kFactoryChannels{{
    {1, "445", {0x00, 0x19, 0xff}},
    {3, "520", {0x24, 0xff, 0x00}},
    {7, "730", {0xbc, 0x00, 0x00}},
    {6, "640", {0xff, 0x13, 0x00}},
    {0, "405", {0x49, 0x00, 0xbc}},
    {2, "470", {0x00, 0x99, 0xff}},
    {4, "528", {0x41, 0xff, 0x00}},
    {5, "555", {0xa3, 0xff, 0x00}},
}};

QByteArray toBytes(const Channel& channel)
{
    constexpr int kNameSize = 4;
    QByteArray bytes;
    bytes.append(char(1)); // enabled
    bytes.append(static_cast<char>(channel.type));
    bytes.append(QByteArray(channel.name).leftJustified(kNameSize, '\0', true));
    for (const quint8 part : channel.color) {
        bytes.append(static_cast<char>(part));
    }
    bytes.append(3, '\0'); // not secondary, so of no primary channel; one in reserve
    return bytes;
}
} // namespace

QByteArray factorySystem()
{
    QByteArray record;
    for (int offset = 0; offset < RecordMemory::kSystemSize; ++offset) {
        record.append(freeByte(offset));
    }
    qToLittleEndian(kFactoryForm, at(record, kFormOffset));
    for (const Real& real : kFactoryReals) {
        putReal(record, real);
    }
    for (const Byte& byte : kFactoryBytes) {
        record[byte.offset] = static_cast<char>(byte.value);
    }
    for (const Word& word : kFactoryWords) {
        putWord(record, word);
    }
    int offset = kNovalumBegin;
    for (int channel = 0; channel < kNovalumChannels; ++channel) {
        for (const NovalumRow& row : kNovalumRowValues) {
            putWord(record, {offset, row.first + channel * row.step});
            offset += static_cast<int>(sizeof(quint16));
        }
    }
    return record;
}

QByteArray factoryChannels()
{
    QByteArray record = QByteArray::fromHex("5601a803");
    for (const Channel& channel : kFactoryChannels) {
        record += toBytes(channel);
    }
    return record;
}

QByteArray oddSystem()
{
    using Limits = std::numeric_limits<float>;
    // What is not named here stays all ones, which as a real is no number either.
    constexpr std::array<Real, 8> kReals{{
        {12, Limits::quiet_NaN()},
        {16, Limits::infinity()},
        {20, -Limits::infinity()},
        {24, Limits::max()},
        {28, Limits::denorm_min()},
        {32, -0.0F},
        {276, Limits::lowest()},
        {300, Limits::infinity()},
    }};
    QByteArray record(RecordMemory::kSystemSize, '\xff');
    for (const Real& real : kReals) {
        putReal(record, real);
    }
    return record;
}

QByteArray oddChannels()
{
    constexpr int kChannelCount = 8;
    // Enabled, type, four of the name, color, secondary, primary, reserve. The names have no end; the first
    // has control characters and a percent sign, the second letters beyond ASCII.
    const std::array<QByteArray, 3> odd{QByteArray::fromHex("c8c8250a7f01ffffff07c8ff"),
                                        QByteArray::fromHex("02c8e9ffdf80800080ffffff"),
                                        QByteArray(12, '\xff')};
    QByteArray record(4, '\xff');
    for (std::size_t channel = 0; channel < kChannelCount; ++channel) {
        record += odd.at(channel % odd.size());
    }
    return record;
}

} // namespace Simulator::RecordContents
