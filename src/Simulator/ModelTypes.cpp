#include "Simulator/ModelTypes.h"

#include <QList>
#include <QStringBuilder>

namespace Simulator {

std::optional<int> channelByName(const QByteArray& name)
{
    for (int channel = 0; channel < kChannelCount; ++channel) {
        if (name == kChannelNames.at(channel)) {
            return channel;
        }
    }
    return std::nullopt;
}

QByteArray imageName(Image image)
{
    switch (image) {
    case Image::Loader:
        return "Loader";
    case Image::LoaderUpdater:
        return "LoaderUpdater";
    case Image::Application:
        return "VYRApp";
    }
    return "Unknown";
}

QByteArray toText(const Version& version)
{
    return QByteArray::number(version.major) + '.' + QByteArray::number(version.minor) + '.' +
           QByteArray::number(version.patch);
}

std::optional<Version> versionFromText(const QByteArray& text)
{
    const QList<QByteArray> parts = text.split('.');
    if (parts.size() != 3) {
        return std::nullopt;
    }
    std::array<int, 3> numbers{};
    for (int i = 0; i < 3; ++i) {
        bool ok = false;
        numbers.at(i) = parts.at(i).toInt(&ok);
        if (!ok || numbers.at(i) < 0 || numbers.at(i) > 255) {
            return std::nullopt;
        }
    }
    return Version{numbers[0], numbers[1], numbers[2]};
}

QByteArray asLine(const QByteArray& text)
{
    return text + '\n';
}

} // namespace Simulator
