#pragma once

#include "Simulator/IlluminatorModel.h"
#include "support/FirmwareImages.h"

#include <QByteArray>
#include <QList>
#include <QStringBuilder>

/// The commands by which a host programs an image: all its lines but the first.
inline QList<QByteArray> programCommands(const FirmwareImages::Image& image)
{
    QList<QByteArray> commands;
    const auto lines = FirmwareImages::text(image).split('\n').mid(1);
    for (const QByteArray& line : lines) {
        if (!line.isEmpty()) {
            commands.append("wf:" + line);
        }
    }
    return commands;
}

/// A small image that says who and which it is: "1.2.3" becomes the version.
inline FirmwareImages::Image smallImage(FirmwareImages::Role role, const QByteArray& version = "3.1.4")
{
    const auto numbers = *Simulator::versionFromText(version);
    FirmwareImages::Image image;
    image.role = role;
    image.major = static_cast<quint16>(numbers.major);
    image.minor = static_cast<quint8>(numbers.minor);
    image.patch = static_cast<quint8>(numbers.patch);
    image.dataSize = 100;
    image.seed = static_cast<quint32>(numbers.patch + 1);
    return image;
}

/// Sends the commands until one of them is not written; how many were.
inline int program(Simulator::IlluminatorModel& model, const QList<QByteArray>& commands)
{
    int written = 0;
    for (const QByteArray& command : commands) {
        if (model.handle(command).text != "Wrote\n") {
            break;
        }
        ++written;
    }
    return written;
}

/// Carries out a line that restarts the device; false when it does not.
inline bool restart(Simulator::IlluminatorModel& model, const QByteArray& line)
{
    const auto reply = model.handle(line);
    if (reply.restart) {
        model.shutDown();
        model.boot(reply.restart->image, reply.restart->cause);
    }
    return reply.restart.has_value();
}

inline void switchOffAndOn(Simulator::IlluminatorModel& model)
{
    const auto restart = model.powerCycle();
    model.shutDown();
    model.boot(restart.image, restart.cause);
}
