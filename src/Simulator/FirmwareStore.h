#pragma once

#include "Simulator/ModelTypes.h"

#include <QByteArray>

#include <array>

namespace Simulator {

/// The two places for firmware and what lies in them: the loader in one, the application or the loader
/// updater in the other.
class FirmwareStore
{
public:
    /// What lies in one place.
    struct Content
    {
        Image image = Image::Application;
        Version version;
        bool crcValid = true;
    };

    FirmwareStore();

    const Content& loaderPlace() const { return m_loader; }
    const Content& applicationPlace() const { return m_application; }
    /// Puts an image, with its remembered version and a valid checksum, into its place.
    void store(Image image);
    /// Remembers the version of an image, in its place too if it lies there.
    void setVersion(Image image, const Version& version);
    Version version(Image image) const { return m_versions.at(static_cast<int>(image)); }
    void setLoaderCrcValid(bool valid) { m_loader.crcValid = valid; }
    void setApplicationCrcValid(bool valid) { m_application.crcValid = valid; }

    /// What the device starts by itself: what lies in the application's place if that is sound.
    Image imageToStart() const;
    /// "VYRApp V2.7.0"; "Unknown V0.0.0" for a place with a wrong checksum.
    static QByteArray describe(const Content& content);

private:
    Content& placeOf(Image image) { return image == Image::Loader ? m_loader : m_application; }

    std::array<Version, 3> m_versions{Version{1, 5, 0}, Version{1, 2, 0}, Version{2, 7, 0}};
    Content m_loader;
    Content m_application;
};

} // namespace Simulator
