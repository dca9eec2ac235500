#pragma once

#include <QString>

#include <array>

/// The tables of the system configuration editor.
enum class ConfigTable { Necsel, Fan, Heater, Jiggler, Novalum, NovalumOverTemperature };

/// One cell of them; row and column count from 0.
struct ConfigCell
{
    ConfigTable table;
    int row;
    int column;
};

/// One value of the system configuration: its place in the device's record, in the editor and in the
/// calibration file. Everything that reads or writes one of the three goes through systemConfigFields().
struct SystemConfigField
{
    enum class RecordType { Real, Unsigned8, Unsigned16, Signed16 }; ///< little-endian
    enum class FileType { Real, Signed32, Unsigned16 };              ///< as which a cell is written

    ConfigCell cell;
    int offset; ///< in bytes from the record's beginning
    RecordType type;
    const char* member; ///< its name in the calibration file
    FileType written;
    bool readAsReal; ///< from the file; an integer otherwise
};

constexpr int novalumChannelCount = 7;
constexpr int novalumRowCount = 12;
constexpr int systemConfigFieldCount = 8 + 8 + 2 + 1 + novalumChannelCount * novalumRowCount + 1;

/// All fields in the order in which the editor reads its cells: Necsel, fan, heater, jiggler, the Novalum
/// table column by column, over-temperature. Index of Novalum channel c, row r:
/// firstNovalumField + c * novalumRowCount + r.
constexpr int firstNovalumField = 8 + 8 + 2 + 1;
const std::array<SystemConfigField, systemConfigFieldCount>& systemConfigFields();

/// The texts of the cells, in the order of systemConfigFields().
using SystemConfigTexts = std::array<QString, systemConfigFieldCount>;

/// A real as the cells show it: six significant digits, the shorter of fixed and exponent notation.
QString realText(double value);
/// The single-precision number that a text stands for, in the C locale; blanks around it do not count. 0 when
/// it is none, or beyond single precision, infinite or no number: none of these may reach the device or a
/// file.
float realOfText(const QString& text);
