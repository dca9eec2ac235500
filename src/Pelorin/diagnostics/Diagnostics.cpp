#include "diagnostics/Diagnostics.h"

#include "device/Device.h"
#include "diagnostics/FileCopy.h"
#include "diagnostics/ZipWriter.h"

#include <QDateTime>
#include <QFileInfo>
#include <QStringList>

namespace {
/// Somewhat more than a log that is put aside in time; one that cannot be put aside grows on and on.
constexpr qint64 maximumLogBytes = 2'500'000;
constexpr qint64 maximumSettingsBytes = 4'000'000;
constexpr int maximumBackups = 10;

/// The archive, and the two lists of its README. After a failure the rest does nothing.
class Packing
{
public:
    explicit Packing(const QString& path) : m_now(QDateTime::currentDateTime()), m_zip(path) {}

    bool open()
    {
        m_isGood = m_zip.open();
        return m_isGood;
    }
    void addText(const char* name, const QString& text, const char* explanation);
    void addFile(const char* name, const QString& path, qint64 maximumBytes, const char* explanation);
    void addRemark(const QString& remark) { m_remarks.append(remark); }
    bool finish(const QString& programVersion);
    QString errorText() const { return m_zip.errorText(); }

private:
    void add(const char* name, const QByteArray& content, const QDateTime& modified, const char* explanation);

    QDateTime m_now;
    ZipWriter m_zip;
    QStringList m_members;
    QStringList m_remarks;
    bool m_isGood = false;
};

void Packing::add(const char* name, const QByteArray& content, const QDateTime& modified,
                  const char* explanation)
{
    m_isGood = m_isGood && m_zip.add(name, content, modified);
    m_members.append(QLatin1String(name) % QLatin1String(": ") % QLatin1String(explanation));
}

void Packing::addText(const char* name, const QString& text, const char* explanation)
{
    add(name, text.toUtf8(), m_now, explanation);
}

void Packing::addFile(const char* name, const QString& path, qint64 maximumBytes, const char* explanation)
{
    const FileCopy copy = copyOfFile(path, maximumBytes);
    if (copy.isRead) {
        add(name, copy.content, copy.modified, explanation);
    }
    if (!copy.remark.isEmpty()) {
        addRemark(QLatin1String(name) % QLatin1String(": ") % copy.remark);
    }
}

bool Packing::finish(const QString& programVersion)
{
    addText("README.txt",
            DiagnosticsTexts::readme(programVersion, m_now,
                                     m_members + QStringList{QStringLiteral("README.txt: this text")},
                                     m_remarks),
            "");
    return m_isGood && m_zip.finish();
}

void addLogs(Packing& packing, const QString& logFile)
{
    packing.addFile("VYR_Log.txt", logFile, maximumLogBytes, "the log of the program");
    for (int number = 1; number <= maximumBackups; ++number) {
        const QString ending = QLatin1Char('.') + QString::number(number);
        const QFileInfo backup(logFile + ending);
        // That there are fewer of them is no news.
        if (backup.exists() || backup.isSymLink()) {
            const QByteArray name = "VYR_Log.txt" + ending.toLatin1();
            packing.addFile(name.constData(), backup.filePath(), maximumLogBytes, "an older part of the log");
        }
    }
}
} // namespace

bool saveDiagnostics(const QString& path, const DiagnosticsSources& sources, QString& error)
{
    Packing packing(path);
    bool isSaved = packing.open();
    if (isSaved) {
        const Device* const device = sources.device;
        packing.addText("Versions.txt",
                        DiagnosticsTexts::versions(sources.programVersion, device, sources.identity),
                        "versions of the program, of this computer's system and of the device");
        packing.addText("Serial_Ports.txt",
                        DiagnosticsTexts::serialPorts(
                            SerialPorts::available(),
                            device != nullptr && device->isOpen() ? device->portName() : QString()),
                        "the serial ports of this computer");
        packing.addFile("Settings.ini", sources.settingsFile, maximumSettingsBytes,
                        "the settings of the program");
        if (!sources.remark.isEmpty()) {
            packing.addRemark(sources.remark);
        }
        addLogs(packing, sources.logFile);
        isSaved = packing.finish(sources.programVersion);
    }
    if (!isSaved) {
        error = packing.errorText();
    }
    return isSaved;
}
