#pragma once

#include <QByteArray>
#include <QFile>

namespace QsLogging {

/// The file under a log's text stream. The stream hands over whole lines, so that Qt's own buffer would only
/// copy them once more; what arrives goes to the system at once.
///
/// To the stream a write never fails, as a stream that saw one failure would collect text for ever and write
/// none. Where the disk is full, lines are lost; a line that was cut is completed as soon as there is room,
/// before anything else, so that every line in the file stands by itself.
class LogFile : public QFile
{
public:
    using QFile::QFile;

    /// QFile::open without Qt's buffer. Begins with nothing left over from an earlier file.
    bool open(OpenMode mode) override;

protected:
    qint64 writeData(const char* data, qint64 length) override;

private:
    bool completeCutLine();

    QByteArray m_cutOff; ///< the rest of a line whose beginning is in the file
};

} // namespace QsLogging
