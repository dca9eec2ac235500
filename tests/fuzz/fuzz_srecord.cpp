// Any bytes as a firmware image: line by line, as bytes and as a stream, and as each of the three images.

#include "FuzzInput.h"
#include "update/FirmwareImage.h"
#include "update/SRecord.h"

#include <QIODevice>
#include <QTextStream>

#include <algorithm>

namespace {
// A sentinel that no record can have: a failure leaves it alone.
constexpr quint16 noLength = 0xffff;

SRecord untouched()
{
    SRecord record;
    record.lineLength = noLength;
    record.data.fill(0x5a);
    return record;
}

void requireUntouched(const SRecord& record)
{
    require(record.lineLength == noLength && record.type == 0 && record.dataLength == 0 &&
            record.address == 0);
    require(record.data == untouched().data);
}

void requireSound(const SRecord& record)
{
    require(record.type <= 9 && record.type != 4 && record.type != 6);
    require(record.dataLength <= SRecord::maximumDataLength);
    require(record.lineLength <= 200 && record.lineLength >= 4 + 2 * record.dataLength);
}

void requireEqual(const SRecord& a, const SRecord& b)
{
    require(a.type == b.type && a.address == b.address && a.dataLength == b.dataLength &&
            a.lineLength == b.lineLength);
    require(std::equal(a.data.begin(), a.data.begin() + a.dataLength, b.data.begin()));
}

/// Reads to the end both ways, and returns the number of records before the first line that is none.
int readBothWays(const QByteArray& text)
{
    SRecordText bytes(text);
    // A byte is a character here, whatever the text begins with.
    QString characters = QString::fromLatin1(text.constData(), text.size());
    QTextStream stream(&characters, QIODevice::ReadOnly);
    int leading = 0;
    bool allAreRecords = true;
    for (int lines = 0;; ++lines) {
        require(lines <= text.size()); // every line takes something off the text
        SRecord record = untouched();
        SRecord other = untouched();
        const int status = bytes.next(record);
        require(parseRecord(stream, other) == status);
        require(status == SRecordStatus::Parsed ||
                (status <= SRecordStatus::NothingRead && status >= SRecordStatus::UnknownType));
        if (status == SRecordStatus::Parsed) {
            requireSound(record);
            requireEqual(record, other);
        } else {
            requireUntouched(record);
            requireUntouched(other);
        }
        allAreRecords = allAreRecords && status == SRecordStatus::Parsed;
        leading += allAreRecords ? 1 : 0;
        if (status == SRecordStatus::EndOfText) {
            return leading;
        }
    }
}

void requireAgreement(const FirmwareCheck& check, int leading)
{
    require(check.fault != FirmwareFault::UnknownName);
    require((check.fault == FirmwareFault::FirstLine) == (leading == 0));
    require(check.lineCount == (check.fault == FirmwareFault::None ? leading - 1 : 0));
    require(!check.version || check.lineCount > 0);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray text = fuzzInput(data, size);
    const int leading = readBothWays(text);
    for (const FirmwareImageKind& kind : firmwareImageKinds) {
        requireAgreement(checkFirmwareText(text, QString::fromLatin1(kind.fileName)), leading);
    }
    const FirmwareCheck nameless = checkFirmwareText(text, QString());
    require(nameless.fault == (leading == 0 ? FirmwareFault::FirstLine : FirmwareFault::UnknownName));
    return 0;
}
