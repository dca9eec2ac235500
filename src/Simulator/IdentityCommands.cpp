#include "Simulator/Commands.h"
#include "Simulator/IlluminatorModel.h"

#include <QStringBuilder>

// Who the device is and what it runs: answered by every image, because this is how a host finds its way.

namespace Simulator {
namespace {
Reply runningVersion(IlluminatorModel& model, const QByteArray&)
{
    // What runs was started from its place, but need not lie there unharmed any more.
    const Image image = model.runningImage().value_or(Image::Loader);
    return asLine(imageName(image) + " V" + toText(model.firmware().version(image)));
}

Reply applicationVersion(IlluminatorModel& model, const QByteArray&)
{
    return asLine(FirmwareStore::describe(model.firmware().applicationPlace()));
}

Reply loaderVersion(IlluminatorModel& model, const QByteArray&)
{
    return asLine(FirmwareStore::describe(model.firmware().loaderPlace()));
}

Reply isApplicationValid(IlluminatorModel& model, const QByteArray&)
{
    return Answers::yesNo(model.firmware().applicationPlace().crcValid);
}

Reply isLoaderValid(IlluminatorModel& model, const QByteArray&)
{
    return Answers::yesNo(model.firmware().loaderPlace().crcValid);
}

Reply resetCause(IlluminatorModel& model, const QByteArray&)
{
    return asLine(model.resetCause());
}

Reply controllerText(const IlluminatorModel& model, const char* key, const QByteArray& text)
{
    if (model.controller().isUpdating()) {
        return asLine(model.controller().progressText());
    }
    return asLine(key + QByteArray("=") + text);
}

Reply controllerVersion(IlluminatorModel& model, const QByteArray&)
{
    return controllerText(model, "necsel_controller_ver", model.controller().version());
}

Reply controllerSerialNumber(IlluminatorModel& model, const QByteArray&)
{
    return controllerText(model, "necsel_controller_sn", model.controller().serialNumber());
}

/// Into another image: the answer comes from that image once it runs.
Reply switchTo(Image image)
{
    Reply reply;
    reply.restart = Restart{image, "Image switch", Answers::kDone, false};
    return reply;
}

Reply goLoader(IlluminatorModel& model, const QByteArray&)
{
    return model.firmware().loaderPlace().crcValid ? switchTo(Image::Loader) : Answers::kRefused;
}

Reply goApplication(IlluminatorModel& model, const QByteArray&)
{
    const FirmwareStore::Content& place = model.firmware().applicationPlace();
    return place.crcValid ? switchTo(place.image) : Answers::kRefused;
}

Reply reset(IlluminatorModel& model, const QByteArray&)
{
    Reply reply = Answers::kDone;
    reply.restart = Restart{model.firmware().imageToStart(), "Software reset", {}, false};
    return reply;
}
} // namespace

const std::vector<Command>& identityCommands()
{
    using Kind = Command::Kind;
    using Where = Command::Where;
    static const std::vector<Command> commands{
        {"v", Kind::Query, Where::EveryImage, runningVersion},
        {"v?a", Kind::Query, Where::EveryImage, applicationVersion},
        {"v?l", Kind::Query, Where::EveryImage, loaderVersion},
        {"isappvalid", Kind::Query, Where::EveryImage, isApplicationValid},
        {"isloadervalid", Kind::Query, Where::EveryImage, isLoaderValid},
        {"reset_cause", Kind::Query, Where::EveryImage, resetCause},
        {"necsel_controller_ver", Kind::Query, Where::EveryImage, controllerVersion},
        {"necsel_controller_sn", Kind::Query, Where::EveryImage, controllerSerialNumber},
        {"goloader", Kind::Change, Where::EveryImage, goLoader},
        {"goapp", Kind::Change, Where::EveryImage, goApplication},
        {"reset", Kind::Change, Where::EveryImage, reset},
    };
    return commands;
}

} // namespace Simulator
