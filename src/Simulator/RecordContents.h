#pragma once

#include <QByteArray>

/// What may lie in the device's configuration records. Each has the size of its record in RecordMemory.
namespace Simulator::RecordContents {

/// A calibrated unit. No two calibrations of its Novalum channels are alike, and no byte that the calibration
/// leaves free is zero: a host that clears what it does not know is found out.
QByteArray factorySystem();
/// The eight channels in the places in which a unit leaves the factory, behind a header that is not zero.
QByteArray factoryChannels();

/// Of the right size, and with nothing in it that a host should count on: reals that are no numbers, widest
/// integers.
QByteArray oddSystem();
/// Types and primary channels that do not exist, switches neither 0 nor 1, names that are no ASCII text.
QByteArray oddChannels();

} // namespace Simulator::RecordContents
