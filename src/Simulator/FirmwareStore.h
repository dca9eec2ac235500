#pragma once

#include "Simulator/FlashArea.h"
#include "Simulator/ModelTypes.h"

#include <QByteArray>

#include <array>

namespace Simulator {

/// The two places for firmware and what lies in them: the loader in one, the application or the loader
/// updater in the other. What lies there was delivered so, or was programmed.
class FirmwareStore
{
public:
    /// What lies in one place. While an image is being programmed, what was there before it, with a wrong
    /// checksum.
    struct Content
    {
        Image image = Image::Application;
        Version version;
        bool crcValid = true;
    };

    /// What came of a line to be programmed.
    enum class Programmed {
        Nothing, ///< the line is refused
        Line,
        Image, ///< it was the last line of an image that is whole
    };

    FirmwareStore();

    const Content& loaderPlace() const { return m_loader.content; }
    const Content& applicationPlace() const { return m_application.content; }
    /// Puts an image, with its remembered version and a valid checksum, into its place.
    void store(Image image);
    /// Remembers the version of an image, in its place too if it lies there.
    void setVersion(Image image, const Version& version);
    Version version(Image image) const { return m_versions.at(static_cast<int>(image)); }
    void setLoaderCrcValid(bool valid) { m_loader.content.crcValid = valid; }
    void setApplicationCrcValid(bool valid) { m_application.content.crcValid = valid; }

    /// Takes one line of an image from the running image, which programs the other one's place; the
    /// application programs none. An image that got there whole has a valid checksum, and the version that
    /// its header tells is remembered.
    Programmed program(Image running, const SRecordLine& line);
    /// A line that was no S-record, or went elsewhere.
    void missLine(Image running);
    /// The running image is gone, and with it what it knew about the image it was about to program.
    void breakOffProgramming();

    /// What the device starts by itself: what lies in the application's place if that is sound.
    Image imageToStart() const;
    /// "VYRApp V2.7.0"; "Unknown V0.0.0" for a place with a wrong checksum.
    static QByteArray describe(const Content& content);

private:
    struct Place
    {
        Content content;
        FlashArea flash;
    };
    Place& placeOf(Image image) { return image == Image::Loader ? m_loader : m_application; }
    Place* placeProgrammedBy(Image running);
    Programmed finish(Place& place);

    std::array<Version, 3> m_versions{Version{1, 5, 0}, Version{1, 2, 0}, Version{2, 7, 0}};
    Place m_loader;
    Place m_application;
};

} // namespace Simulator
