#pragma once

#include <QColor>

#include <algorithm>
#include <cmath>

/// How bright a colour appears, from 0 to 1.
inline double luminance(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

/// From 1 for two alike to 21 for black on white; a text is to have 4.5.
inline double contrast(const QColor& one, const QColor& other)
{
    const auto ends = std::minmax({luminance(one), luminance(other)});
    return (ends.second + 0.05) / (ends.first + 0.05);
}
