// How long the system record takes to read, against the time that its bytes need at 19200 baud and the device
// to think: the rest is what the link and the system add. Prints figures, judges nothing.

#include "LineFigures.h"
#include "device/Device.h"

int main(int argc, char** argv)
{
    constexpr int readings = 20;
    return Bench::measureExchange(argc, argv, QStringLiteral("system record"), readings, [](Device& device) {
        SystemConfigBytes record{};
        return device.readSystemConfig(record.data()) == DeviceResult::Ok;
    });
}
