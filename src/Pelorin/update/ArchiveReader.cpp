#include "update/ArchiveReader.h"

#include <QRegularExpression>
#include <QtEndian>

#include <archive.h>
#include <archive_entry.h>
#include <array>
#include <cerrno>
#include <clocale>
#include <cstdio>

#ifndef Q_OS_WIN
#include <locale.h> // NOLINT(modernize-deprecated-headers): newlocale stands only there
#ifdef Q_OS_MACOS
#include <xlocale.h>
#endif
#endif

namespace {

constexpr int readSize = 256 * 1024; // bytes that the library gets at once
constexpr int startSize = 32;        // signature, version, and where the header is, with checksums
constexpr quint64 maximumHeaderSize =
    1024ULL * 1024; // of what lists the members; a release needs some hundred
constexpr std::array<char, 6> signature = {'7', 'z', '\xbc', '\xaf', '\x27', '\x1c'};

quint32 checksum(const char* bytes, int count)
{
    quint32 sum = ~0U;
    for (int i = 0; i < count; ++i) {
        sum ^= static_cast<quint8>(bytes[i]);
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? 0xedb88320U : 0U);
        }
    }
    return ~sum;
}

/// The library takes a start of zeros, as an aborted copy leaves it, for an archive without members.
bool isWholeStart(const QByteArray& start, qint64 fileSize)
{
    if (start.size() < startSize) {
        return false;
    }
    const char* bytes = start.constData();
    const auto offset = qFromLittleEndian<quint64>(bytes + 12);
    const auto size = qFromLittleEndian<quint64>(bytes + 20);
    const auto room = static_cast<quint64>(fileSize - startSize);
    return qFromLittleEndian<quint32>(bytes + 8) == checksum(bytes + 12, 20) && offset <= room &&
           size <= room - offset && size <= maximumHeaderSize;
}

/// While it lives, this thread's texts are UTF-8 whatever the user's locale is: the library turns names into
/// the locale's bytes, and gives none at all for those that the locale does not know.
class Utf8Names
{
public:
#ifdef Q_OS_WIN
    Utf8Names() {} // names are not bytes of a locale there
#else
    Utf8Names()
        : m_locale(::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)),
          m_before(m_locale == nullptr ? nullptr : ::uselocale(m_locale))
    {
    }
    ~Utf8Names()
    {
        if (m_locale != nullptr) {
            ::uselocale(m_before);
            ::freelocale(m_locale);
        }
    }
    Utf8Names(const Utf8Names&) = delete;
    Utf8Names& operator=(const Utf8Names&) = delete;

private:
    locale_t m_locale;
    locale_t m_before;
#endif
};

struct Method
{
    const char* number; ///< hexadecimal, as the library tells it
    const char* name;
};

// The ways of packing that packers offer today and the library cannot undo.
constexpr std::array<Method, 5> unreadMethods = {{
    {"a", "ARM64 filter"},
    {"b", "RISC-V filter"},
    {"40109", "Deflate64"},
    {"6f10701", "AES-256 encryption"},
    {"4f71101", "Zstandard"},
}};

/// What the archive is packed with, as far as the library's complaint says that this is the trouble; else an
/// empty text.
QString unreadMethod(const QString& complaint)
{
    static const QRegularExpression number(QStringLiteral("(?:codec ID:|\\(ID: 0x|filter) *([0-9a-f]+)"),
                                           QRegularExpression::CaseInsensitiveOption);
    const QString found = number.match(complaint).captured(1).toLower();
    if (!found.isEmpty()) {
        for (const Method& method : unreadMethods) {
            if (found == QLatin1String(method.number)) {
                return QLatin1String(method.name);
            }
        }
        return QStringLiteral("number 0x") + found;
    }
    if (complaint.contains(QLatin1String("encrypted"))) {
        return QStringLiteral("encryption");
    }
    if (complaint.contains(QLatin1String("many filters"))) {
        return QStringLiteral("a chain of several filters");
    }
    return complaint.contains(QLatin1String("Unsupported")) ? complaint : QString();
}

} // namespace

ArchiveReader::ArchiveReader() : m_handle(archive_read_new()) {}

ArchiveReader::~ArchiveReader() = default;

void ArchiveReader::Close::operator()(archive* handle) const
{
    archive_read_free(handle);
}

bool ArchiveReader::open(const QString& path)
{
    m_source.file.setFileName(path);
    if (!m_source.file.open(QIODevice::ReadOnly)) {
        return fail(ArchiveStatus::CannotRead, m_source.file.errorString());
    }
    const QByteArray start = m_source.file.peek(startSize);
    // The library would look further inside for an archive that begins later.
    if (!start.startsWith(QByteArray::fromRawData(signature.data(), signature.size()))) {
        return fail(ArchiveStatus::NotAnArchive, QStringLiteral("not a 7z archive"));
    }
    if (!isWholeStart(start, m_source.file.size())) {
        return fail(ArchiveStatus::Damaged, QStringLiteral("damaged at its start, or cut short"));
    }
    if (!m_handle) {
        return fail(ArchiveStatus::OutOfMemory, QStringLiteral("no memory for the decoder"));
    }
    m_source.buffer.resize(readSize);
    prepareHandle();
    const bool isOpen = archive_read_support_format_7zip(m_handle.get()) == ARCHIVE_OK &&
                        archive_read_open1(m_handle.get()) == ARCHIVE_OK;
    return isOpen || failByLibrary() == Result::Ok;
}

void ArchiveReader::prepareHandle()
{
    archive* handle = m_handle.get();
    archive_read_set_callback_data(handle, &m_source);
    archive_read_set_read_callback(handle, [](archive*, void* data, const void** bytes) -> la_ssize_t {
        auto* source = static_cast<Source*>(data);
        const qint64 count = source->file.read(source->buffer.data(), source->buffer.size());
        source->failed = source->failed || count < 0;
        *bytes = source->buffer.constData();
        return count < 0 ? ARCHIVE_FATAL : static_cast<la_ssize_t>(count);
    });
    archive_read_set_seek_callback(
        handle, [](archive*, void* data, la_int64_t offset, int whence) -> la_int64_t {
            QFile& file = static_cast<Source*>(data)->file;
            const qint64 start = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.pos() : file.size();
            // The offset is the archive's word; behind the end there is nothing to read anyway.
            const bool isInside = offset >= -start && offset <= file.size() - start;
            return isInside && file.seek(start + offset) ? start + offset : ARCHIVE_FATAL;
        });
}

ArchiveReader::Result ArchiveReader::nextMember(Member& member)
{
    if (m_status != ArchiveStatus::Success) {
        return Result::Failed;
    }
    const Utf8Names utf8Names;
    const int answer = archive_read_next_header(m_handle.get(), &m_entry);
    if (answer == ARCHIVE_EOF) {
        return Result::End;
    }
    if (answer == ARCHIVE_WARN) {
        // It would go on without the name, or with half of it.
        fail(ArchiveStatus::BadName, QString::fromUtf8(archive_error_string(m_handle.get())));
        return Result::Failed;
    }
    if (answer != ARCHIVE_OK) {
        return failByLibrary();
    }
    const auto type = archive_entry_filetype(m_entry);
    const bool isLink =
        archive_entry_hardlink_utf8(m_entry) != nullptr || archive_entry_symlink_utf8(m_entry) != nullptr;
    member.name = QString::fromUtf8(archive_entry_pathname_utf8(m_entry));
    member.declaredSize = archive_entry_size_is_set(m_entry) ? archive_entry_size(m_entry) : -1;
    member.isFolder = type == AE_IFDIR && !isLink;
    member.isFile = type == AE_IFREG && !isLink;
    return Result::Ok;
}

ArchiveReader::Result ArchiveReader::nextBlock(Block& block)
{
    if (m_status != ArchiveStatus::Success) {
        return Result::Failed;
    }
    const void* data = nullptr;
    std::size_t size = 0;
    la_int64_t offset = 0;
    const int answer = archive_read_data_block(m_handle.get(), &data, &size, &offset);
    if (answer == ARCHIVE_EOF) {
        return Result::End;
    }
    if (answer == ARCHIVE_WARN) {
        // The only thing that it goes on after: every byte came, and their sum is wrong.
        fail(ArchiveStatus::WrongChecksum, QString::fromUtf8(archive_error_string(m_handle.get())));
        return Result::Failed;
    }
    if (answer != ARCHIVE_OK) {
        return failByLibrary();
    }
    block = {static_cast<const char*>(data), static_cast<qint64>(size), offset};
    return Result::Ok;
}

bool ArchiveReader::fail(ArchiveStatus::Code status, const QString& text)
{
    m_status = status;
    m_failureText = text;
    return false;
}

ArchiveReader::Result ArchiveReader::failByLibrary()
{
    const QString complaint = QString::fromUtf8(archive_error_string(m_handle.get())); // empty for none
    const QString method = unreadMethod(complaint);
    if (m_source.failed) {
        fail(ArchiveStatus::CannotRead, m_source.file.errorString());
    } else if (archive_errno(m_handle.get()) == ENOMEM) {
        fail(ArchiveStatus::OutOfMemory, complaint);
    } else if (!method.isEmpty()) {
        fail(ArchiveStatus::UnsupportedMethod,
             QStringLiteral("packed by a method that is not read: ") + method);
    } else {
        // Some chains of methods look like damage to the library, which does not tell them apart.
        fail(ArchiveStatus::Damaged,
             complaint + QStringLiteral(" (or BCJ over PPMd or the ARM Thumb filter, which are not read)"));
    }
    return Result::Failed;
}
