#include "Simulator/Commands.h"
#include "Simulator/IlluminatorModel.h"
#include "Simulator/SRecordLine.h"

#include <QList>
#include <QStringBuilder>

// Memory by its addresses: every image shows the records; the loader writes them and the application's place,
// the loader updater the loader's.

namespace Simulator {
namespace {
/// "rf: ADDRESS COUNT", both decimal.
Reply readMemory(IlluminatorModel& model, const QByteArray& argument)
{
    const QList<QByteArray> words = argument.simplified().split(' ');
    bool isAddress = false;
    bool isCount = false;
    const quint32 address = words.value(0).toUInt(&isAddress);
    const quint32 count = words.value(1).toUInt(&isCount);
    if (words.size() != 2 || !isAddress || !isCount) {
        return Answers::kRefused;
    }
    const auto bytes = model.records().read(model.recordLayout(), address, count);
    return bytes ? Reply(asLine("rf:" + bytes->toHex())) : Answers::kRefused;
}

constexpr const char* kWrote = "Wrote\n";

bool liesInRecords(const SRecordLine& line)
{
    return line.carriesData() && line.address >= RecordMemory::kBegin &&
           line.end() <= quint64(RecordMemory::kBegin) + RecordMemory::kSize;
}

Reply writeRecords(IlluminatorModel& model, const SRecordLine& line)
{
    return model.records().write(model.recordLayout(), line.address, line.data) ? kWrote : Answers::kRefused;
}

Reply writeFlash(IlluminatorModel& model, const std::optional<SRecordLine>& line)
{
    Reply reply;
    if (model.programFlash(line)) {
        reply.text = kWrote;
        reply.thinkTime = model.flashWriteTime();
    } else {
        reply.text = Answers::kRefused;
    }
    return reply;
}

/// "wf:" and an S-record line.
Reply writeMemory(IlluminatorModel& model, const QByteArray& argument)
{
    const auto line = parseSRecordLine(argument);
    const bool isForRecords = line && liesInRecords(*line) && model.runningImage() == Image::Loader;
    return isForRecords ? writeRecords(model, *line) : writeFlash(model, line);
}
} // namespace

const std::vector<Command>& memoryCommands()
{
    using Kind = Command::Kind;
    using Where = Command::Where;
    static const std::vector<Command> commands{
        {"rf:", Kind::Query, Where::EveryImage, readMemory},
        {"wf:", Kind::Change, Where::Loaders, writeMemory},
    };
    return commands;
}

} // namespace Simulator
