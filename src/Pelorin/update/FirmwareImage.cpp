#include "update/FirmwareImage.h"

#include "QsLog2_1_0/QsLog.h"
#include "update/SRecord.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>

namespace {

constexpr quint32 productIdentifier = 1;

/// The image header, joined from the data of the records that are addressed to it, in the order of the text.
class ImageHeader
{
public:
    explicit ImageHeader(quint32 base) : m_base(base) {}

    /// False when there is no room for the record's data.
    bool take(const SRecord& record)
    {
        // The byte behind the header counts as the header's, too. Below the base the difference wraps around
        // and is far too large.
        if (record.address - m_base > size) {
            return true;
        }
        if (m_used + record.dataLength >= size) {
            return false;
        }
        std::copy_n(record.data.begin(), record.dataLength, m_bytes.begin() + m_used);
        m_used += record.dataLength;
        return true;
    }

    bool isEmpty() const { return m_used == 0; }
    quint32 product() const { return qFromLittleEndian<quint32>(&m_bytes[8]); }
    FirmwareVersion version() const
    {
        const auto word = qFromLittleEndian<quint32>(&m_bytes[12]);
        return {static_cast<quint16>(word >> 16U), static_cast<quint8>(word >> 8U),
                static_cast<quint8>(word)};
    }

private:
    static constexpr int size = 64;

    quint32 m_base;
    int m_used = 0; ///< always below the size: a header may not be full
    std::array<quint8, size> m_bytes{};
};

FirmwareCheck rejected(FirmwareFault fault)
{
    return {fault, 0, std::nullopt};
}

const char* messageOf(FirmwareFault fault)
{
    switch (fault) {
    case FirmwareFault::FirstLine:
        return "Error with first line of s-record file";
    case FirmwareFault::UnknownName:
        return "Firmware file name not recognized";
    case FirmwareFault::HeaderTooLarge:
        return "Header is too large";
    case FirmwareFault::WrongProduct:
        return "Invalid product ID in file header";
    case FirmwareFault::None:
        break;
    }
    return "";
}

/// The whole text, or nothing when a part of it cannot be read: a check of half an image would pass.
QByteArray textOf(QFile& file)
{
    if (!file.isReadable()) {
        QS_ERROR() << "Firmware file is not open:" << file.fileName();
        return {};
    }
    file.unsetError();
    file.seek(0);
    QByteArray text = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        QS_ERROR() << "Error reading firmware file:" << file.fileName() << file.errorString();
        return {};
    }
    return text;
}

} // namespace

const FirmwareImageKind* firmwareImageKind(const QString& filePath)
{
    const auto* const found = std::find_if(
        firmwareImageKinds.begin(), firmwareImageKinds.end(), [&filePath](const FirmwareImageKind& kind) {
            return filePath.contains(QLatin1String(kind.nameMark), Qt::CaseInsensitive);
        });
    return found == firmwareImageKinds.end() ? nullptr : found;
}

FirmwareCheck checkFirmwareText(const QByteArray& text, const QString& filePath)
{
    SRecordText records(text);
    SRecord record;
    if (records.next(record) != SRecordStatus::Parsed) {
        return rejected(FirmwareFault::FirstLine);
    }
    const FirmwareImageKind* const kind = firmwareImageKind(filePath);
    if (kind == nullptr) {
        return rejected(FirmwareFault::UnknownName);
    }
    FirmwareCheck check;
    ImageHeader header(kind->headerBase);
    while (records.next(record) == SRecordStatus::Parsed) {
        ++check.lineCount;
        if (!header.take(record)) {
            return rejected(FirmwareFault::HeaderTooLarge);
        }
    }
    if (header.isEmpty()) {
        return check;
    }
    if (header.product() != productIdentifier) {
        return rejected(FirmwareFault::WrongProduct);
    }
    check.version = header.version();
    return check;
}

int checkFirmwareFile(QFile& file, FirmwareVersion& version)
{
    QS_INFO() << "Checking firmware file line count";
    const QString path = QFileInfo(file).absoluteFilePath();
    const FirmwareCheck check = checkFirmwareText(textOf(file), path);
    if (check.fault != FirmwareFault::None) {
        QS_ERROR() << messageOf(check.fault);
        return 0;
    }
    if (check.version) {
        version = *check.version;
        QS_INFO() << file.fileName() << qUtf8Printable("Firmware version " + version.toString());
    }
    QS_TRACE() << "Line count = " << check.lineCount;
    return check.lineCount;
}
