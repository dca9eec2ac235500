#include "update/ArchiveStep.h"

#include "QsLog2_1_0/QsLog.h"
#include "boxes/TellUser.h"
#include "update/ArchiveExtractor.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QTime>
#include <QWidget>

#include <chrono>
#include <utility>

namespace {

constexpr int retriesAtFirst = 2;
constexpr qint64 bytesLookedAt = 16;
/// How long the window is kept waiting; what the screen shows at most once in this time changes smoothly.
constexpr std::chrono::milliseconds breathEvery{16};

bool busy = false;
int retriesLeft = retriesAtFirst;

/// Whichever way a run ends, the next one finds everything as at first.
class Busy
{
public:
    Busy() { busy = true; }
    ~Busy()
    {
        retriesLeft = retriesAtFirst;
        busy = false;
    }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;
};

class Run
{
public:
    Run(ArchiveExtractor& extractor, QString path, QWidget* window)
        : m_extractor(extractor), m_path(std::move(path)), m_window(window), m_needsWindow(window != nullptr)
    {
    }

    bool unpack();

private:
    bool tryOnce();
    bool tryToExtract();
    bool extractBreathing();
    bool failWith(const char* text);
    void tell(const QString& text, Qt::TextFormat format) const;
    bool isAbandoned() const { return m_needsWindow && !m_window; }

    ArchiveExtractor& m_extractor;
    QString m_path;
    QPointer<QWidget> m_window;
    bool m_needsWindow;
    QString m_error; ///< of the last attempt that had one
};

bool Run::unpack()
{
    do {
        if (tryOnce()) {
            return true;
        }
        QS_ERROR() << QTime::currentTime().toString(QStringLiteral("hh:mm:ss ")) << m_error << "\n";
        QS_ERROR() << "Error extracting archive.";
    } while (!isAbandoned() && retriesLeft-- != 0);
    tell(m_error + QLatin1String("<br>Cannot update VYR.<br>"), Qt::RichText);
    return false;
}

bool Run::tryOnce()
{
    const QFileInfo info(m_path);
    if (!info.exists()) {
        return failWith("Unable to locate archive file.");
    }
    QFile file(m_path);
    // Opening anything but a file could wait for ever.
    if (!info.isFile() || !file.open(QIODevice::ReadOnly)) {
        return failWith("Error opening archive file.");
    }
    const QByteArray start = file.read(bytesLookedAt);
    file.close();
    if (start.size() < bytesLookedAt) {
        return failWith("Invalid Archive file.");
    }
    // A page that a web server sent in the archive's place, and that was saved under its name.
    const QString text = QString::fromLatin1(start.constData()); // up to the first zero byte
    if (text.contains(QLatin1String("<html>"), Qt::CaseInsensitive)) {
        tell(QStringLiteral("Archive file not found."), Qt::PlainText);
        return false;
    }
    return tryToExtract();
}

bool Run::tryToExtract()
{
    m_extractor.setArchive(m_path);
    if (extractBreathing()) {
        return true;
    }
    m_error = QStringLiteral("Error extracting files from archive.") +
              QStringLiteral(" #%1").arg(m_extractor.status());
    if (m_extractor.status() != ArchiveStatus::Stopped) {
        QFile::remove(m_path); // a damaged archive is not kept
    }
    return false;
}

/// Some hundred milliseconds of work for a release, during which the window stays alive.
bool Run::extractBreathing()
{
    QElapsedTimer sinceBreath;
    sinceBreath.start();
    return m_extractor.extract([this, &sinceBreath] {
        if (!sinceBreath.hasExpired(breathEvery.count())) {
            return true;
        }
        QCoreApplication::processEvents();
        sinceBreath.restart();
        return !isAbandoned();
    });
}

bool Run::failWith(const char* text)
{
    m_error = QLatin1String(text);
    return false;
}

void Run::tell(const QString& text, Qt::TextFormat format) const
{
    if (isAbandoned()) {
        return;
    }
    tellUser(m_window, QMessageBox::Critical, text, QStringLiteral("Firmware Update"), format);
}

} // namespace

bool ArchiveStep::run(ArchiveExtractor& extractor, const QString& archivePath, QWidget* window)
{
    if (busy) {
        return true;
    }
    const Busy restoresAtEnd;
    return Run(extractor, archivePath, window).unpack();
}

bool ArchiveStep::isBusy()
{
    return busy;
}
