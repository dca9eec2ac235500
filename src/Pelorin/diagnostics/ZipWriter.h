#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QSaveFile>
#include <QString>

#include <memory>

struct archive;

/// Writes one ZIP archive. It grows in a temporary file beside its place and takes that place whole in
/// finish(); until then, and whenever anything fails, what was there before stays as it is.
class ZipWriter
{
public:
    explicit ZipWriter(const QString& path);
    ~ZipWriter();
    ZipWriter(const ZipWriter&) = delete;
    ZipWriter& operator=(const ZipWriter&) = delete;

    /// The three return false on failure, after which the archive is lost and errorText() says why.
    bool open();
    /// @p name is ASCII. A time that is not valid is left out.
    bool add(const char* name, const QByteArray& content, const QDateTime& modified);
    bool finish();

    QString errorText() const; ///< in the user's language where it comes from the system

private:
    struct Close
    {
        void operator()(archive* handle) const;
    };

    bool write(const char* bytes, qint64 size);

    QSaveFile m_file;
    bool m_isLost = false;                    ///< nothing more is written
    std::unique_ptr<archive, Close> m_handle; // declared after the file, which it may write to at its end
};
