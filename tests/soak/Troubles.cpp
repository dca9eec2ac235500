// What goes wrong with the device and on the line, and what its other inputs do.

#include "Tasks.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"

namespace Soak {
namespace {
using Kind = Simulator::WireFault::Kind;

void fault(Room& room)
{
    const bool held = room.chance.percent(30);
    room.desk.illuminator().setFault(QStringLiteral("Over temperature <%1>").arg(room.chance.below(5)), held);
    room.pause(500, 5000);
    room.compare();
    if (held) {
        room.desk.illuminator().clearFault();
    }
    room.person.click("labelLaserStatus");
    room.compare();
}

void warning(Room& room)
{
    const QString text = room.chance.percent(50) ? QStringLiteral("555 fiber disconnected")
                                                 : QStringLiteral("Novalum fiber disconnected");
    room.desk.illuminator().setWarning(text);
    room.pause(1500, 5000);
    room.person.clickLeftHalf("pushButtonChannelShutter", room.randomChannel());
    Person::wait(500);
    room.desk.illuminator().clearWarning();
    Person::wait(2500); // for the window to hear of it
}

void chooseControl(Room& room, const char* intensity, const char* shutters)
{
    room.onPage("tabControlMode", [&] {
        room.person.click(intensity);
        room.person.click(shutters);
        Person::wait(500);
    });
}

void externalInputs(Room& room)
{
    chooseControl(room, "radioButtonIntensityControlExternal", "radioButtonShutterControlExternal");
    for (int i = 0; i < 8; ++i) {
        const int channel = room.chance.below(Simulator::kChannelCount);
        // Without a half, which may be rounded either way on its way through the line.
        room.desk.illuminator().setExternalIntensity(channel, room.chance.between(0, 100) + 0.25);
        room.desk.illuminator().setTtlInput(channel, room.chance.percent(50));
        room.pause(200, 1000);
    }
    room.compare();
    chooseControl(room, "radioButtonIntensityControlUSB", "radioButtonShutterControlUSB");
    room.compare();
}

Simulator::WireFault randomFault(Room& room)
{
    static const QList<QByteArray> questions{"shutter?", "fault?", "f_mode?", "int_mode?", "warn?", ""};
    static const QList<QByteArray> noises{"\xff\xfe\x80\n", "f_mode=run\n", "ok\n", QByteArray(300, 'x')};
    Simulator::WireFault wireFault;
    wireFault.match = questions.at(room.chance.below(static_cast<int>(questions.size())));
    wireFault.bytes = noises.at(room.chance.below(static_cast<int>(noises.size())));
    wireFault.splitAt = room.chance.below(12);
    wireFault.delay = std::chrono::milliseconds(room.chance.between(5, 400));
    wireFault.count = room.chance.between(1, 3);
    return wireFault;
}

void disturbLine(Room& room, Kind kind)
{
    Simulator::WireFault wireFault = randomFault(room);
    wireFault.kind = kind;
    room.desk.wire().addFault(wireFault);
    room.pause(500, 3000);
    room.desk.wire().clearFaults();
    Person::wait(2000); // for a tick that finds everything as it is
}

void noise(Room& room)
{
    disturbLine(room, room.chance.percent(60) ? Kind::Noise : Kind::ZeroByte);
}

void splitOrLate(Room& room)
{
    disturbLine(room, room.chance.percent(50) ? Kind::SplitReply : Kind::LateReply);
}

void lostReply(Room& room)
{
    disturbLine(room, Kind::NoReply);
}

void babble(Room& room)
{
    room.desk.wire().sendUnsolicited(QByteArray(room.chance.between(1, 5000), '~'));
    room.desk.wire().sendUnsolicited("\n");
}

void awaitConnection(Room& room)
{
    room.waitForWork("the device after it was away");
    Person::wait(3000); // for everything that is sent to it at first
}

void unplug(Room& room)
{
    room.desk.illuminator().unplug();
    room.pause(100, 8000);
    if (room.chance.percent(30)) {
        room.person.drag(room.randomChannel(), 10);
    }
    room.desk.illuminator().plug(QStringLiteral("ttyVYR%1").arg(room.chance.below(4)));
    awaitConnection(room);
}

void cyclePower(Room& room)
{
    room.desk.illuminator().powerCycle();
    Person::wait(4000);
    awaitConnection(room);
}

void longSilence(Room& room)
{
    Simulator::WireFault wireFault;
    wireFault.count = -1;
    room.desk.wire().addFault(wireFault);
    Person::wait(8000);
    room.desk.wire().clearFaults();
    awaitConnection(room);
}
} // namespace

QVector<Task> troubles()
{
    return {{"a fault", 30, fault},
            {"a warning", 25, warning},
            {"external inputs", 12, externalInputs},
            {"noise", 40, noise},
            {"split and late replies", 30, splitOrLate},
            {"a lost reply", 10, lostReply},
            {"babble", 10, babble},
            {"unplug and replug", 12, unplug},
            {"off and on", 5, cyclePower},
            {"a long silence", 2, longSilence}};
}

} // namespace Soak
