#include "Simulator/FirmwareStore.h"

#include <QStringBuilder>

namespace Simulator {
namespace {
constexpr quint32 kLoaderBegin = 0;
constexpr quint32 kApplicationBegin = 0x12000;
constexpr quint32 kApplicationEnd = 0x3a000;
} // namespace

FirmwareStore::FirmwareStore()
    : m_loader{{}, {kLoaderBegin, kApplicationBegin - kLoaderBegin, {Image::Loader}}},
      m_application{{},
                    {kApplicationBegin,
                     kApplicationEnd - kApplicationBegin,
                     {Image::Application, Image::LoaderUpdater}}}
{
    store(Image::Loader);
    store(Image::Application);
}

void FirmwareStore::store(Image image)
{
    Place& place = placeOf(image);
    place.flash.breakOff();
    place.content = {image, version(image), true};
}

void FirmwareStore::setVersion(Image image, const Version& version)
{
    m_versions.at(static_cast<int>(image)) = version;
    if (placeOf(image).content.image == image) {
        placeOf(image).content.version = version;
    }
}

FirmwareStore::Place* FirmwareStore::placeProgrammedBy(Image running)
{
    switch (running) {
    case Image::Loader:
        return &m_application;
    case Image::LoaderUpdater:
        return &m_loader;
    case Image::Application:
        break;
    }
    return nullptr;
}

FirmwareStore::Programmed FirmwareStore::program(Image running, const SRecordLine& line)
{
    Place* const place = placeProgrammedBy(running);
    if (!place) {
        return Programmed::Nothing;
    }
    if (line.carriesData()) {
        if (!place->flash.write(line)) {
            return Programmed::Nothing;
        }
        place->content.crcValid = false;
        return Programmed::Line;
    }
    if (!place->flash.isBeingProgrammed()) {
        return Programmed::Nothing;
    }
    return line.endsImage() ? finish(*place) : Programmed::Line;
}

FirmwareStore::Programmed FirmwareStore::finish(Place& place)
{
    const auto found = place.flash.finish();
    if (!found) {
        return Programmed::Line;
    }
    m_versions.at(static_cast<int>(found->image)) = found->version;
    place.content = {found->image, found->version, true};
    return Programmed::Image;
}

void FirmwareStore::missLine(Image running)
{
    if (Place* const place = placeProgrammedBy(running)) {
        place->flash.missLine();
    }
}

void FirmwareStore::breakOffProgramming()
{
    m_loader.flash.breakOff();
    m_application.flash.breakOff();
}

Image FirmwareStore::imageToStart() const
{
    // Even a loader with a wrong checksum is better than a device that says nothing.
    return applicationPlace().crcValid ? applicationPlace().image : Image::Loader;
}

QByteArray FirmwareStore::describe(const Content& content)
{
    if (!content.crcValid) {
        return "Unknown V" + toText({});
    }
    return imageName(content.image) + " V" + toText(content.version);
}

} // namespace Simulator
