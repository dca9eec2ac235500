#include "diagnostics/ZipWriter.h"

#include <archive.h>
#include <archive_entry.h>

namespace {
constexpr unsigned ownerWritesAllRead = 0644;

struct FreeEntry
{
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
} // namespace

ZipWriter::ZipWriter(const QString& path) : m_file(path), m_handle(archive_write_new()) {}

ZipWriter::~ZipWriter()
{
    m_isLost = true; // the library writes the archive's end on its way out
}

void ZipWriter::Close::operator()(archive* handle) const
{
    archive_write_free(handle);
}

bool ZipWriter::open()
{
    archive* const handle = m_handle.get();
    // The library writes whole blocks; what the file kept back would be found missing too late to be told.
    if (handle == nullptr || !m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        return false;
    }
    // The library does not clean up after an archive that it could not write, and so is never told of one.
    const auto write = [](archive*, void* writer, const void* bytes, std::size_t size) -> la_ssize_t {
        auto* const self = static_cast<ZipWriter*>(writer);
        self->m_isLost = !self->write(static_cast<const char*>(bytes), static_cast<qint64>(size));
        return static_cast<la_ssize_t>(size);
    };
    // The quick levels take a third of the time that the best one takes, for a quarter more bytes.
    return archive_write_set_format_zip(handle) == ARCHIVE_OK &&
           archive_write_set_format_option(handle, "zip", "compression-level", "3") == ARCHIVE_OK &&
           archive_write_set_bytes_in_last_block(handle, 1) == ARCHIVE_OK &&
           archive_write_open(handle, this, nullptr, write, nullptr) == ARCHIVE_OK;
}

bool ZipWriter::add(const char* name, const QByteArray& content, const QDateTime& modified)
{
    const std::unique_ptr<archive_entry, FreeEntry> entry(archive_entry_new());
    if (!entry) {
        return false;
    }
    archive_entry_set_pathname(entry.get(), name);
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), ownerWritesAllRead);
    archive_entry_set_size(entry.get(), content.size());
    if (modified.isValid()) {
        archive_entry_set_mtime(entry.get(), static_cast<time_t>(modified.toSecsSinceEpoch()), 0);
    }
    return archive_write_header(m_handle.get(), entry.get()) == ARCHIVE_OK &&
           archive_write_data(m_handle.get(), content.constData(),
                              static_cast<std::size_t>(content.size())) == content.size() &&
           archive_write_finish_entry(m_handle.get()) == ARCHIVE_OK && !m_isLost;
}

bool ZipWriter::write(const char* bytes, qint64 size)
{
    // What did not fit is offered once more, and only then does the system tell why.
    while (!m_isLost && size > 0) {
        const qint64 written = m_file.write(bytes, size);
        if (written <= 0) {
            return false;
        }
        bytes += written;
        size -= written;
    }
    return !m_isLost;
}

bool ZipWriter::finish()
{
    return archive_write_close(m_handle.get()) == ARCHIVE_OK && !m_isLost && m_file.commit();
}

QString ZipWriter::errorText() const
{
    if (m_file.error() != QFileDevice::NoError) {
        return m_file.errorString();
    }
    const char* const complaint = m_handle ? archive_error_string(m_handle.get()) : nullptr;
    return complaint == nullptr ? QStringLiteral("Out of memory") : QString::fromUtf8(complaint);
}
