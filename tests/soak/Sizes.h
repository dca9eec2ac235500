#pragma once

#include <QStringList>
#include <QVector>

#include <array>

class PelorinMainWindow;

namespace Soak {

/// One column of the table: what is measured, and how much of it may come in over a run.
struct Measure
{
    const char* name;
    /// What may be more at the end than at the beginning, and what more in each hour of device time between.
    double allowed;
    double allowedPerHour;
    double most; ///< what none of the values may exceed; 0: not bounded so
};

constexpr std::size_t measureCount = 8;
using Sizes = std::array<double, measureCount>;

/// In the order of Sizes.
const std::array<Measure, measureCount>& measures();

/// The process as it is now: to be asked for in the outermost event loop, with every dialog closed.
Sizes sizesNow(const PelorinMainWindow& window);

/// What has grown too much over the samples, which lie `hoursBetween` apart; empty when all is flat.
QStringList growths(const QVector<Sizes>& samples, double hoursBetween);

} // namespace Soak
