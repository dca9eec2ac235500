#include "Simulator/Commands.h"
#include "Simulator/IlluminatorModel.h"
#include "Simulator/SRecordLine.h"

#include <QList>
#include <QStringBuilder>

#include <array>

// The configuration that the device keeps for its owner. Every image shows it, the loader alone changes it.

namespace Simulator {
namespace {
using Record = RecordMemory::Record;
using Layout = RecordMemory::Layout;

QByteArray yesNo(bool yes)
{
    return yes ? "Yes\n" : "No\n";
}

Reply isSystemValid(IlluminatorModel& model, const QByteArray&)
{
    return yesNo(model.records().isValid(Record::System));
}

Reply setSystemValid(IlluminatorModel& model, const QByteArray&)
{
    model.records().setValid(Record::System, true);
    return Answers::kDone;
}

/// Firmware that knows no channel record understands none of the commands about it.
bool knowsChannels(const IlluminatorModel& model)
{
    return model.recordLayout() == Layout::Newer;
}

Reply areChannelsValid(IlluminatorModel& model, const QByteArray&)
{
    if (!knowsChannels(model)) {
        return Answers::kUnknown;
    }
    return yesNo(model.records().isValid(Record::Channels));
}

Reply setChannelsValid(IlluminatorModel& model, const QByteArray&)
{
    if (!knowsChannels(model)) {
        return Answers::kUnknown;
    }
    model.records().setValid(Record::Channels, true);
    return Answers::kDone;
}

Reply channels(IlluminatorModel& model, const QByteArray&)
{
    if (!knowsChannels(model)) {
        return Answers::kUnknown;
    }
    return asLine("chan_config:" + model.records().record(Record::Channels).toHex());
}

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

bool writeRecords(IlluminatorModel& model, const SRecordLine& line)
{
    return model.records().write(model.recordLayout(), line.address, line.data);
}

/// A kind of memory and what takes data that begins in it.
struct Target
{
    quint64 begin;
    quint64 end; ///< of the address behind the last byte
    bool (*write)(IlluminatorModel& model, const SRecordLine& line);
};

constexpr std::array<Target, 1> kTargets{
    {{RecordMemory::kBegin, quint64(RecordMemory::kBegin) + RecordMemory::kSize, writeRecords}}};

/// "wf:" and an S-record line. Lines without data are refused: the records have no use for them.
Reply writeMemory(IlluminatorModel& model, const QByteArray& argument)
{
    const auto line = parseSRecordLine(argument);
    if (!line || !line->carriesData()) {
        return Answers::kRefused;
    }
    for (const Target& target : kTargets) {
        if (line->address >= target.begin && line->end() <= target.end) {
            return target.write(model, *line) ? "Wrote\n" : Answers::kRefused;
        }
    }
    return Answers::kRefused;
}

Reply productData(IlluminatorModel& model, const QByteArray&)
{
    return asLine("prod_config:" + model.product().text());
}

Reply setProductData(IlluminatorModel& model, const QByteArray& argument)
{
    return model.product().assign(argument) ? Answers::kDone : Answers::kRefused;
}
} // namespace

const std::vector<Command>& recordCommands()
{
    using Kind = Command::Kind;
    using Where = Command::Where;
    static const std::vector<Command> commands{
        {"issysconfigvalid", Kind::Query, Where::EveryImage, isSystemValid},
        {"ischanconfigvalid", Kind::Query, Where::EveryImage, areChannelsValid},
        {"setsysconfigvalid", Kind::Change, Where::Loader, setSystemValid},
        {"setchanconfigvalid", Kind::Change, Where::Loader, setChannelsValid},
        {"chan_config", Kind::Query, Where::EveryImage, channels},
        {"rf:", Kind::Query, Where::EveryImage, readMemory},
        {"wf:", Kind::Change, Where::Loader, writeMemory},
        {"prod_config", Kind::Query, Where::EveryImage, productData},
        {"prod_config:", Kind::Change, Where::Loader, setProductData},
    };
    return commands;
}

} // namespace Simulator
