#include "Simulator/Commands.h"
#include "Simulator/IlluminatorModel.h"

#include <QStringBuilder>

// The configuration that the device keeps for its owner. Its binary records and the flash memory are empty
// and cannot be written: a host is told that no record is valid, and everything beyond that is refused.

namespace Simulator {
namespace {
Reply noValidRecord(IlluminatorModel&, const QByteArray&)
{
    return "No\n";
}

Reply noMemory(IlluminatorModel&, const QByteArray&)
{
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
        {"issysconfigvalid", Kind::Query, Where::EveryImage, noValidRecord},
        {"ischanconfigvalid", Kind::Query, Where::EveryImage, noValidRecord},
        {"setsysconfigvalid", Kind::Change, Where::EveryImage, noMemory},
        {"setchanconfigvalid", Kind::Change, Where::EveryImage, noMemory},
        {"chan_config", Kind::Query, Where::EveryImage, noMemory},
        {"rf:", Kind::Query, Where::EveryImage, noMemory},
        {"wf:", Kind::Change, Where::EveryImage, noMemory},
        {"prod_config", Kind::Query, Where::EveryImage, productData},
        {"prod_config:", Kind::Change, Where::EveryImage, setProductData},
    };
    return commands;
}

} // namespace Simulator
