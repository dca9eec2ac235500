#pragma once

#include <QByteArray>
#include <QString>

/// Writes firmware images for tests, by their own arithmetic: what reads them is what is tested.
namespace FirmwareImages {

enum class Role { Loader, LoaderUpdater, Application };

/// The name under which a release has the image.
QString fileName(Role role);
/// Where the image's header is in the device: the last 64 bytes of the memory that the image runs in.
quint32 headerBase(Role role);
/// Where that memory begins.
quint32 memoryStart(Role role);

/// What an image is made of. The default is a small one that every check takes.
struct Image
{
    Role role = Role::Application;
    quint16 major = 1;
    quint8 minor = 0;
    quint8 patch = 0;
    int dataSize =
        512; ///< bytes of program, any; where they do not end below the header, they go on behind it
    int addressWidth = 4; ///< bytes: 4 writes lines of type 3, 3 of type 2 (up to 16 MB), 2 of type 1 (64 KB)
    int bytesPerLine = 16; ///< 1..45
    quint32 product = 1;   ///< the only product that is taken
    bool hasHeader = true;
    bool isNamed = true; ///< without its name, its size and its CRC nobody can tell what is missing of it
    QByteArray lineEnd = "\r\n";
    quint32 seed = 1; ///< another one gives another program of the same size
};

/// The image's text: a first line of type 0, the program and the header in the order of their addresses, and
/// the terminator.
QByteArray text(const Image& image);

/// An image whose text is just as long as wanted, or up to one line longer.
Image ofTextSize(Image image, int textSize);

/// The records behind the first line: what a check counts, and what programming sends.
int lineCount(const QByteArray& text);

/// One line without its end. Any type's digit, any width, 0..8 bytes, as nobody checks here what a device
/// takes.
QByteArray line(char type, int addressWidth, quint32 address, const QByteArray& data);
/// The same without an address; @p content is everything between the count and the checksum.
QByteArray line(char type, const QByteArray& content);

/// The header's bytes: name, product, version, and size and CRC of the program below it where they belong,
/// the rest something that nobody reads.
QByteArray header(const Image& image, int size = 32);

/// Writes the image into @p folder under its name; its path, or an empty text when that fails.
QString write(const QString& folder, const Image& image);

} // namespace FirmwareImages
