#include "support/ReleaseArchive.h"

#include "support/ArchiveChecksums.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>

#include <array>

namespace {

constexpr int packerTimeMs = 120000;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool put(const QString& folder, const ReleaseArchive::Member& member)
{
    const QString path = folder + QLatin1Char('/') + member.name;
    if (member.name.endsWith(QLatin1Char('/'))) {
        return QDir().mkpath(path);
    }
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).absolutePath()) && file.open(QIODevice::WriteOnly) &&
           file.write(member.content) == member.content.size();
}

QByteArray utf16(const QString& text)
{
    QByteArray bytes(text.size() * 2, '\0');
    qToLittleEndian<quint16>(text.utf16(), text.size(), bytes.data());
    return bytes;
}

/// Bytes like those of a program: many repeat, and many do not.
char programByte(quint32& state)
{
    state = state * 1664525U + 1013904223U;
    constexpr std::array<quint8, 8> frequent = {0x00, 0x00, 0x00, 0x20, 0x47, 0x48, 0x70, 0xf8};
    const quint32 value = state >> 16U;
    return static_cast<char>((value & 0x100U) != 0 ? frequent[value & 7U] : value & 0xffU);
}

QByteArray imageText(int size, quint32 address)
{
    constexpr int bytesPerLine = 16;
    QByteArray text("S00600004844521B\r\n");
    text.reserve(size + 100); // by a line and its end too much at most
    for (quint32 state = address; text.size() < size; address += bytesPerLine) {
        QByteArray record(1, char(bytesPerLine + 5));
        std::array<char, 4> place{};
        qToBigEndian(address, place.data());
        record.append(place.data(), int(place.size()));
        for (int i = 0; i < bytesPerLine; ++i) {
            record.append(programByte(state));
        }
        quint8 sum = 0;
        for (const char byte : qAsConst(record)) {
            sum = static_cast<quint8>(sum + static_cast<quint8>(byte));
        }
        record.append(static_cast<char>(~sum));
        text.append("S3").append(record.toHex().toUpper()).append("\r\n");
    }
    return text;
}

} // namespace

QString ReleaseArchive::packer()
{
    const QString current = QStandardPaths::findExecutable(QStringLiteral("7zz"));
    return current.isEmpty() ? QStandardPaths::findExecutable(QStringLiteral("7z")) : current;
}

QList<ReleaseArchive::Packing> ReleaseArchive::packings()
{
    const auto s = [](const char* text) {
        return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    };
    return {
        {"as it comes", {}},
        {"LZMA", s("-m0=LZMA")},
        {"LZMA, not solid", s("-m0=LZMA -ms=off")},
        {"LZMA, plain header", s("-m0=LZMA -mhc=off")},
        {"LZMA2", s("-m0=LZMA2")},
        {"LZMA2, not solid", s("-m0=LZMA2 -ms=off")},
        {"BCJ and LZMA", s("-m0=BCJ -m1=LZMA")},
        {"BCJ and LZMA2, not solid", s("-m0=BCJ -m1=LZMA2 -ms=off")},
        {"BCJ2 and LZMA", s("-m0=BCJ2 -m1=LZMA -m2=LZMA -m3=LZMA -mb0:1 -mb0s1:2 -mb0s2:3")},
        {"PPMd", s("-m0=PPMd")},
        {"PPMd, not solid", s("-m0=PPMd -ms=off")},
        {"BZip2", s("-m0=BZip2")},
        {"Deflate", s("-m0=Deflate")},
        {"Delta and LZMA2", s("-m0=Delta -m1=LZMA2")},
        {"copied", s("-m0=Copy")},
        {"copied, not solid, plain header", s("-m0=Copy -ms=off -mhc=off")},
    };
}

QByteArray ReleaseArchive::packFolder(const QString& folder, const QStringList& switches)
{
    const QTemporaryDir elsewhere;
    const QString path = elsewhere.filePath(QStringLiteral("packed.7z"));
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(packer(), QStringList{QStringLiteral("a"), QStringLiteral("-bd"), QStringLiteral("-y"),
                                        QStringLiteral("-r")} +
                                switches + QStringList{path, QStringLiteral(".")});
    const bool ended = process.waitForFinished(packerTimeMs) && process.exitCode() == 0;
    if (!ended) {
        qCritical("The packer failed: %s", process.readAll().constData());
    }
    return ended ? contentOf(path) : QByteArray();
}

QByteArray ReleaseArchive::pack(const QList<Member>& members, const QStringList& switches)
{
    const QTemporaryDir folder;
    for (const Member& member : members) {
        if (!put(folder.path(), member)) {
            return {};
        }
    }
    return packFolder(folder.path(), switches);
}

bool ReleaseArchive::write(const QString& path, const QList<Member>& members, const QStringList& switches)
{
    const QByteArray archive = pack(members, switches);
    QFile file(path);
    return !archive.isEmpty() && file.open(QIODevice::WriteOnly) && file.write(archive) == archive.size();
}

QList<ReleaseArchive::Member> ReleaseArchive::threeImages(int size)
{
    return {{QStringLiteral("LoaderOut.srec"), imageText(size, 0x08000000)},
            {QStringLiteral("LoaderUpdaterOut.srec"), imageText(size, 0x08040000)},
            {QStringLiteral("VYR-AppOut.srec"), imageText(size, 0x08080000)}};
}

QByteArray ReleaseArchive::renamed(const QByteArray& archive, const QString& from, const QString& to)
{
    return headerReplaced(archive, utf16(from), utf16(to));
}

QByteArray ReleaseArchive::headerReplaced(const QByteArray& archive, const QByteArray& from,
                                          const QByteArray& to)
{
    QByteArray result = archive;
    const auto offset = qFromLittleEndian<quint64>(archive.constData() + 12);
    const int start = ArchiveChecksums::startHeaderSize + int(offset);
    auto found = result.indexOf(from, start);
    if (found < 0 || from.size() != to.size()) {
        return {};
    }
    for (; found >= 0; found = result.indexOf(from, found + to.size())) {
        result.replace(found, to.size(), to);
    }
    return ArchiveChecksums::repair(result) ? result : QByteArray();
}
