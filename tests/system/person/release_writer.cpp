// Writes a release archive as it is sent out, for the tests that choose one in the file dialog.
// Usage: release_writer FILE MAJOR.MINOR.PATCH BYTES: version and size of the loader and the application.

#include "support/FirmwareImages.h"
#include "support/ReleaseArchive.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTextStream>
#include <QVersionNumber>

namespace {
using FirmwareImages::Role;

ReleaseArchive::Member member(Role role, const QVersionNumber& version, int size)
{
    FirmwareImages::Image image;
    image.role = role;
    image.major = static_cast<quint16>(version.majorVersion());
    image.minor = static_cast<quint8>(version.minorVersion());
    image.patch = static_cast<quint8>(version.microVersion());
    image.dataSize = size;
    return {FirmwareImages::fileName(role), FirmwareImages::text(image)};
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const auto version = QVersionNumber::fromString(arguments.value(2));
    const int size = arguments.value(3).toInt();
    if (arguments.size() != 4 || version.segmentCount() != 3 || size <= 0) {
        QTextStream(stderr) << "usage: release_writer FILE MAJOR.MINOR.PATCH BYTES\n";
        return 2;
    }
    const bool written =
        ReleaseArchive::write(arguments.at(1), {member(Role::Loader, version, size),
                                                member(Role::LoaderUpdater, QVersionNumber(1, 0, 0), size),
                                                member(Role::Application, version, size)});
    if (!written) {
        QTextStream(stderr) << "The packer failed; is 7zip installed?\n";
    }
    return written ? 0 : 1;
}
