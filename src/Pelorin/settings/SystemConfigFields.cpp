#include "settings/SystemConfigFields.h"

#include <cmath>
#include <cstddef>

namespace {
using Record = SystemConfigField::RecordType;
using File = SystemConfigField::FileType;

constexpr int firstNovalumOffset = 36; // bytes; the channels follow one another without a gap
constexpr int novalumValueSize = 2;    // bytes

/// What the seven channels have in common in one row of their table.
struct NovalumRow
{
    Record type;
    const char* member;
    File written;
};

// The file's integers are wider than the record's, and some have another sign: files written so are about.
constexpr std::array<NovalumRow, novalumRowCount> novalumRows{{
    {Record::Unsigned16, "DAC Coeff A", File::Unsigned16},
    {Record::Signed16, "DAC Coeff B", File::Signed32},
    {Record::Signed16, "DAC Coeff C", File::Signed32},
    {Record::Unsigned16, "DAC Shift", File::Unsigned16},
    {Record::Unsigned16, "Preflux Coeff A", File::Unsigned16},
    {Record::Signed16, "Preflux Coeff B", File::Signed32},
    {Record::Signed16, "Preflux Coeff C", File::Signed32},
    {Record::Unsigned16, "Preflux Shift", File::Unsigned16},
    {Record::Signed16, "Inrush OC Time Index", File::Signed32},
    {Record::Signed16, "Normal OC Time Index", File::Signed32},
    {Record::Unsigned16, "Analog Cal Max", File::Unsigned16},
    {Record::Unsigned16, "Analog Cal Offset", File::Unsigned16},
}};

// The simmer current lies behind the temperature set point in the record, and the set point's member has two
// letters crossed. Both are what devices and files hold.
constexpr std::array<SystemConfigField, firstNovalumField> leadingFields{{
    {{ConfigTable::Necsel, 0, 0}, 12, Record::Real, "Max Laser Amps", File::Real, true},
    {{ConfigTable::Necsel, 1, 0}, 20, Record::Real, "Simmer Current Amps", File::Real, true},
    {{ConfigTable::Necsel, 2, 0}, 16, Record::Real, "XLT Temp Setpoint", File::Real, true},
    {{ConfigTable::Necsel, 3, 0}, 264, Record::Unsigned16, "Analog Cal Max", File::Signed32, false},
    {{ConfigTable::Necsel, 4, 0}, 266, Record::Signed16, "Analog Cal Offset", File::Signed32, false},
    {{ConfigTable::Necsel, 5, 0}, 24, Record::Real, "Output Gain", File::Real, true},
    {{ConfigTable::Necsel, 6, 0}, 28, Record::Real, "Output Offset", File::Real, true},
    {{ConfigTable::Necsel, 7, 0}, 32, Record::Real, "Laser Min Temp", File::Real, true},
    {{ConfigTable::Fan, 0, 0}, 276, Record::Real, "Necsel Low Fan Temp", File::Real, true},
    {{ConfigTable::Fan, 1, 0}, 280, Record::Real, "Necsel Full Fan Temp", File::Real, true},
    {{ConfigTable::Fan, 2, 0}, 284, Record::Unsigned8, "Necsel Low Fan Speed", File::Unsigned16, false},
    {{ConfigTable::Fan, 3, 0}, 285, Record::Unsigned8, "Necsel Full Fan Speed", File::Unsigned16, false},
    {{ConfigTable::Fan, 0, 1}, 288, Record::Real, "Novalum Low Fan Temp", File::Real, true},
    {{ConfigTable::Fan, 1, 1}, 292, Record::Real, "Novalum Full Fan Temp", File::Real, true},
    {{ConfigTable::Fan, 2, 1}, 296, Record::Unsigned8, "Novalum Low Fan Speed", File::Unsigned16, false},
    {{ConfigTable::Fan, 3, 1}, 297, Record::Unsigned8, "Novalum Full Fan Speed", File::Unsigned16, false},
    {{ConfigTable::Heater, 0, 0}, 300, Record::Real, "Min Temp", File::Real, true},
    {{ConfigTable::Heater, 1, 0}, 304, Record::Real, "Max Temp", File::Real, true},
    {{ConfigTable::Jiggler, 0, 0}, 208, Record::Unsigned8, "Jiggler Speed", File::Unsigned16, false},
}};

// Read as an integer although it is written as a real: a fraction does not survive the file.
constexpr SystemConfigField overTemperatureField{
    {ConfigTable::NovalumOverTemperature, 0, 0}, 240, Record::Real, "Over Temp", File::Real, false};

SystemConfigField novalumField(int channel, int row)
{
    const NovalumRow& shared = novalumRows[static_cast<std::size_t>(row)];
    const int offset = firstNovalumOffset + (channel * novalumRowCount + row) * novalumValueSize;
    return {{ConfigTable::Novalum, row, channel}, offset, shared.type, shared.member, shared.written, false};
}

std::array<SystemConfigField, systemConfigFieldCount> makeFields()
{
    std::array<SystemConfigField, systemConfigFieldCount> fields{};
    std::size_t next = 0;
    for (const SystemConfigField& field : leadingFields)
        fields[next++] = field;
    for (int channel = 0; channel < novalumChannelCount; ++channel) {
        for (int row = 0; row < novalumRowCount; ++row)
            fields[next++] = novalumField(channel, row);
    }
    fields[next] = overTemperatureField;
    return fields;
}
} // namespace

const std::array<SystemConfigField, systemConfigFieldCount>& systemConfigFields()
{
    static const auto fields = makeFields();
    return fields;
}

QString realText(double value)
{
    constexpr int significantDigits = 6;
    return QString::number(value, 'g', significantDigits);
}

float realOfText(const QString& text)
{
    bool isNumber = false;
    const float value = text.toFloat(&isNumber);
    return isNumber && std::isfinite(value) ? value : 0.0F; // "inf" and "nan" count as numbers for the parser
}
