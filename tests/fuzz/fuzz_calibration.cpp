// Any bytes as a calibration file. What is refused changes nothing; what is taken can be written and loaded
// again with the same result.

#include "FuzzInput.h"
#include "settings/CalibrationFile.h"
#include "settings/SystemConfigRecord.h"

#include <QStringList>

namespace {
const QStringList& headers()
{
    static const QStringList texts = QStringLiteral("1,2,3,4,5,6,7").split(QLatin1Char(','));
    return texts;
}

SystemConfigTexts reloaded(const SystemConfigTexts& texts)
{
    SystemConfigTexts result;
    require(CalibrationFile::fromJson(CalibrationFile::toJson(texts, headers()), headers(), result));
    return result;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SystemConfigTexts before;
    before.fill(QStringLiteral("old"));
    SystemConfigTexts texts = before;
    if (!CalibrationFile::fromJson(fuzzInput(data, size), headers(), texts)) {
        require(texts == before);
        return 0;
    }
    // The first saving makes numbers of what the file's types and the cells' differ in; after it nothing
    // changes.
    const SystemConfigTexts saved = reloaded(texts);
    require(reloaded(saved) == saved);
    const SystemConfigBytes record = SystemConfigRecord::fromTexts(texts, {});
    require(SystemConfigRecord::fromTexts(SystemConfigRecord::toTexts(record), record) == record);
    return 0;
}
