#pragma once

#include "device/DeviceTypes.h"

#include <QtGlobal>

/// Under which the settings keep the serial port, which the dialog writes as soon as it is chosen.
constexpr char comPortKey[] = "Device Com Port";

/// The operator's choices for the device as a whole.
struct OperatingChoices
{
    bool sleepTimerEnabled = true;
    int sleepMinutes = 30;                                 ///< 0 to 99; 0 never sends the device to sleep
    quint8 shutterControl = quint8(ControlSource::Host);   ///< a ControlSource
    quint8 intensityControl = quint8(ControlSource::Host); ///< a ControlSource
    bool speckleReducer = true;
    bool verboseLogging = false;

    // Whatever is not this computer's leaves the control to the external inputs.
    bool isShutterControlHost() const { return shutterControl == quint8(ControlSource::Host); }
    bool isIntensityControlHost() const { return intensityControl == quint8(ControlSource::Host); }
};
