#include "Simulator/FirmwareStore.h"

#include <QStringBuilder>

namespace Simulator {

FirmwareStore::FirmwareStore()
{
    store(Image::Loader);
    store(Image::Application);
}

void FirmwareStore::store(Image image)
{
    placeOf(image) = {image, version(image), true};
}

void FirmwareStore::setVersion(Image image, const Version& version)
{
    m_versions.at(static_cast<int>(image)) = version;
    if (placeOf(image).image == image) {
        placeOf(image).version = version;
    }
}

Image FirmwareStore::imageToStart() const
{
    // Even a loader with a wrong checksum is better than a device that says nothing.
    return m_application.crcValid ? m_application.image : Image::Loader;
}

QByteArray FirmwareStore::describe(const Content& content)
{
    if (!content.crcValid) {
        return "Unknown V" + toText({});
    }
    return imageName(content.image) + " V" + toText(content.version);
}

} // namespace Simulator
