#include "support/FirmwareImages.h"

#include "support/ArchiveChecksums.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>

namespace FirmwareImages {
namespace {

/// The header's room, and the byte behind it that counts as the header's, too.
constexpr quint32 headerRoom = 64 + 1;
constexpr int headerFieldsEnd = 24;

/// Bytes without a pattern, the same every time.
class Program
{
public:
    explicit Program(quint32 seed) : m_state(seed) {}

    QByteArray next(int size)
    {
        QByteArray bytes(size, '\0');
        for (char& byte : bytes) {
            m_state = m_state * 1664525U + 1013904223U;
            byte = static_cast<char>(m_state >> 24U);
        }
        return bytes;
    }

private:
    quint32 m_state;
};

class Writer
{
public:
    explicit Writer(const Image& image) : m_image(image) { put(line('0', 2, 0, "VYR")); }

    void putData(quint32 address, const QByteArray& data)
    {
        const char type = static_cast<char>('0' + m_image.addressWidth - 1);
        for (int done = 0; done < data.size(); done += m_image.bytesPerLine) {
            put(line(type, m_image.addressWidth, address + static_cast<quint32>(done),
                     data.mid(done, m_image.bytesPerLine)));
        }
    }

    QByteArray end()
    {
        const char type = static_cast<char>('9' + 2 - m_image.addressWidth);
        put(line(type, m_image.addressWidth, memoryStart(m_image.role), {}));
        return m_text;
    }

private:
    void put(const QByteArray& record)
    {
        // One by one: their sum would make room for itself alone, and the text move with every line.
        m_text += record;
        m_text += m_image.lineEnd;
    }

    const Image& m_image;
    QByteArray m_text;
};

template<typename Number>
void putLittleEndian(QByteArray& bytes, int offset, Number number)
{
    qToLittleEndian(number, bytes.data() + offset);
}

int sizeBelowHeader(const Image& image)
{
    return std::min(image.dataSize, static_cast<int>(headerBase(image.role) - memoryStart(image.role)));
}

/// By this the device knows what lies where an application or a loader updater may.
QByteArray nameInHeader(Role role)
{
    switch (role) {
    case Role::Loader:
        return QByteArray("LOADER\0\0", 8);
    case Role::LoaderUpdater:
        return QByteArray("UPDATER\0", 8);
    case Role::Application:
        break;
    }
    return QByteArray("VYRAPP\0\0", 8);
}

} // namespace

QString fileName(Role role)
{
    switch (role) {
    case Role::Loader:
        return QStringLiteral("LoaderOut.srec");
    case Role::LoaderUpdater:
        return QStringLiteral("LoaderUpdaterOut.srec");
    case Role::Application:
        break;
    }
    return QStringLiteral("VYR-AppOut.srec");
}

quint32 headerBase(Role role)
{
    return role == Role::Loader ? 0x11fc0 : 0x39fc0;
}

quint32 memoryStart(Role role)
{
    return role == Role::Loader ? 0 : 0x12000;
}

QByteArray line(char type, const QByteArray& content)
{
    const QByteArray counted = QByteArray(1, static_cast<char>(content.size() + 1)) + content;
    quint8 sum = 0;
    for (const char byte : counted) {
        sum = static_cast<quint8>(sum + static_cast<quint8>(byte));
    }
    QByteArray text("S");
    text += type;
    text += QByteArray(counted + QByteArray(1, static_cast<char>(~sum))).toHex().toUpper();
    return text;
}

QByteArray line(char type, int addressWidth, quint32 address, const QByteArray& data)
{
    QByteArray place(8, '\0');
    qToBigEndian(quint64(address), place.data());
    return line(type, place.right(addressWidth) + data);
}

QByteArray header(const Image& image, int size)
{
    QByteArray bytes(std::max(size, headerFieldsEnd), '\x5a');
    putLittleEndian(bytes, 8, image.product);
    putLittleEndian(bytes, 12, quint32(image.major) << 16U | quint32(image.minor) << 8U | image.patch);
    if (image.isNamed) {
        const QByteArray program = Program(image.seed).next(sizeBelowHeader(image));
        bytes.replace(0, 8, nameInHeader(image.role));
        putLittleEndian(bytes, 16, static_cast<quint32>(program.size()));
        const QByteArray covered = program + bytes.left(20);
        putLittleEndian(bytes, 20, ArchiveChecksums::crc32(covered.constData(), covered.size()));
    }
    return bytes.left(size);
}

QByteArray text(const Image& image)
{
    const quint32 start = memoryStart(image.role);
    const quint32 base = headerBase(image.role);
    Program program(image.seed);
    Writer writer(image);
    const int below = sizeBelowHeader(image);
    writer.putData(start, program.next(below));
    if (image.hasHeader) {
        writer.putData(base, header(image));
    }
    writer.putData(base + headerRoom, program.next(image.dataSize - below));
    return writer.end();
}

Image ofTextSize(Image image, int textSize)
{
    image.dataSize = 0;
    const int frame = int(text(image).size());
    const int lineSize =
        2 + 2 * (1 + image.addressWidth + image.bytesPerLine + 1) + int(image.lineEnd.size());
    const int lines = std::max(0, (textSize - frame + lineSize - 1) / lineSize);
    image.dataSize = lines * image.bytesPerLine;
    return image;
}

int lineCount(const QByteArray& text)
{
    return int(text.count('\n')) - 1;
}

QString write(const QString& folder, const Image& image)
{
    QFile file(folder + QLatin1Char('/') + fileName(image.role));
    const QByteArray content = text(image);
    const bool isWritten = file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    return isWritten ? file.fileName() : QString();
}

} // namespace FirmwareImages
