// How long one poll of the device takes, against the time that its bytes need at 19200 baud and the device
// to think: the rest is what the link and the system add. Prints figures, judges nothing.

#include "LineFigures.h"
#include "device/Device.h"

int main(int argc, char** argv)
{
    constexpr int ticks = 60;
    return Bench::measureExchange(argc, argv, QStringLiteral("poll tick"), ticks, [](Device& device) {
        device.pollDevice();
        return true;
    });
}
