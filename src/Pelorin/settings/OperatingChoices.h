#pragma once

#include <QtGlobal>

/// The operator's choices for the device as a whole.
struct OperatingChoices
{
    bool sleepTimerEnabled = true;
    int sleepMinutes = 30;       ///< 0 to 99; 0 never sends the device to sleep
    quint8 shutterControl = 1;   ///< 1 this computer, 0 the external digital inputs
    quint8 intensityControl = 1; ///< 1 this computer, 0 the external analogue inputs
    bool speckleReducer = true;
    bool verboseLogging = false;
};
