#include "Simulator/Commands.h"
#include "Simulator/IlluminatorModel.h"

#include <QStringBuilder>

// The configuration that the device keeps for its owner. Every image shows it, the loader alone changes it.

namespace Simulator {
namespace {
using Record = RecordMemory::Record;
using Layout = RecordMemory::Layout;

Reply isSystemValid(IlluminatorModel& model, const QByteArray&)
{
    return Answers::yesNo(model.records().isValid(Record::System));
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
    return Answers::yesNo(model.records().isValid(Record::Channels));
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
        {"prod_config", Kind::Query, Where::EveryImage, productData},
        {"prod_config:", Kind::Change, Where::Loader, setProductData},
    };
    return commands;
}

} // namespace Simulator
