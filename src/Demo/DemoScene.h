#pragma once

#include "Demo/DemoTour.h"

namespace Simulator {
class SimulatedIlluminator;
}

/// The stations of the demo's tours. Window and illuminator must outlive the tour.
namespace DemoScene {
/// From connecting to clearing a fault, with a numbered picture of every station.
std::vector<DemoStation> operatorsDay(QWidget& window, Simulator::SimulatedIlluminator& illuminator);
/// Once through the window and its dialogs for the pictures of the manual; the program is to be started at
/// the service level.
std::vector<DemoStation> manualPictures(QWidget& window, Simulator::SimulatedIlluminator& illuminator);
} // namespace DemoScene
