#pragma once

#include "settings/SystemConfigFields.h"

#include <QStringList>

#include <algorithm>
#include <cstddef>
#include <random>

/// The Novalum table's headers as the form has them.
inline QStringList novalumHeaders()
{
    return QStringLiteral("1,2,3,4,5,6,7").split(QLatin1Char(','));
}

/// Where a cell's text stands.
inline std::size_t cellIndex(ConfigTable table, int row, int column = 0)
{
    const auto& fields = systemConfigFields();
    const auto isCell = [&](const SystemConfigField& field) {
        return field.cell.table == table && field.cell.row == row && field.cell.column == column;
    };
    return static_cast<std::size_t>(std::find_if(fields.begin(), fields.end(), isCell) - fields.begin());
}

/// The same text in every cell.
inline SystemConfigTexts allCells(const QString& text)
{
    SystemConfigTexts texts;
    texts.fill(text);
    return texts;
}

/// Values as they occur, of every length, and none alike; all of them survive device and file.
inline SystemConfigTexts likelyTexts()
{
    SystemConfigTexts texts;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const SystemConfigField& field = systemConfigFields().at(i);
        const int number = int(i);
        switch (field.type) {
        case SystemConfigField::RecordType::Real:
            texts[i] = number % 2 == 0 ? realText(-1.23457e-05 * (number + 1)) : realText(0.25 * number + 20);
            break;
        case SystemConfigField::RecordType::Unsigned8:
            texts[i] = QString::number(255 - number);
            break;
        case SystemConfigField::RecordType::Unsigned16:
            texts[i] = QString::number(65535 - number);
            break;
        case SystemConfigField::RecordType::Signed16:
            texts[i] = QString::number(-32768 + number);
            break;
        }
    }
    // A file gives the over-temperature back as a whole number.
    texts.back() = QStringLiteral("85");
    return texts;
}

/// Chance that is the same in every run: a failure can be repeated.
class Chance
{
public:
    explicit Chance(quint32 seed) : m_engine(seed) {}

    /// Both ends included.
    int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_engine); }
    bool once(int outOf) { return number(1, outOf) == 1; }

    /// A real of at most six significant digits, as somebody types one; never a negative zero.
    QString realText()
    {
        const int digits = number(0, 999'999);
        const bool negative = digits != 0 && once(3);
        return QStringLiteral("%1%2e%3")
            .arg(negative ? QStringLiteral("-") : QString())
            .arg(digits)
            .arg(number(-20, 20));
    }

private:
    std::mt19937 m_engine;
};
