#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

/// Writes release archives for tests by the packer that releases are made with, and damages them with care.
namespace ReleaseArchive {

struct Member
{
    QString name; ///< relative, "/" between its parts; ends in one for a folder
    QByteArray content;
};

/// One way of packing, as switches of the packer.
struct Packing
{
    const char* name = nullptr;
    QStringList switches;
};

/// The packer, or an empty text where it is not installed.
QString packer();

/// The ways that a release may be packed in: every method that is read, solid and not, plain and packed
/// header.
QList<Packing> packings();

/// Packs @p members, in any order, with the packer's @p switches; an empty array when that fails.
QByteArray pack(const QList<Member>& members, const QStringList& switches = {});
/// Packs what is in @p folder as it is there, links included.
QByteArray packFolder(const QString& folder, const QStringList& switches = {});
/// The same into a file; false when it fails.
bool write(const QString& path, const QList<Member>& members, const QStringList& switches = {});

/// The three images under their names, each of about @p size bytes of S-record-like text.
QList<Member> threeImages(int size);

/// The archive with another text for each occurrence of @p from in its header, which must be a plain one
/// (switch "-mhc=off") and keeps its length; the checksums are made right again. Both texts have one length.
QByteArray renamed(const QByteArray& archive, const QString& from, const QString& to);
/// The same for bytes of the header.
QByteArray headerReplaced(const QByteArray& archive, const QByteArray& from, const QByteArray& to);
} // namespace ReleaseArchive
