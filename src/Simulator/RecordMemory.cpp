#include "Simulator/RecordMemory.h"

#include "Simulator/RecordContents.h"

#include <vector>

namespace Simulator {
namespace {
using Record = RecordMemory::Record;
using Layout = RecordMemory::Layout;

constexpr char kErased = '\xff';

/// Where one layout has a record.
struct Region
{
    Record record;
    quint32 readAddress;
    quint32 writeAddress;
    quint32 size; ///< bytes
};

constexpr Region kNewerSystem{Record::System, 0x800064, 0x800064, RecordMemory::kSystemSize};
constexpr Region kNewerChannels{Record::Channels, 0x800198, 0x800198, RecordMemory::kChannelsSize};
constexpr Region kOlderSystem{Record::System, 0x800080, 0x800064, RecordMemory::kSystemSize};

const std::vector<Region>& regions(Layout layout)
{
    static const std::vector<Region> newer{kNewerSystem, kNewerChannels};
    static const std::vector<Region> older{kOlderSystem};
    return layout == Layout::Newer ? newer : older;
}

/// One byte's place in a record.
struct Place
{
    Record record;
    int offset;
};

std::optional<Place> placeOf(Layout layout, quint32 address, quint32 Region::*begin)
{
    for (const Region& region : regions(layout)) {
        if (address >= region.*begin && address - region.*begin < region.size) {
            return Place{region.record, static_cast<int>(address - region.*begin)};
        }
    }
    return std::nullopt;
}
} // namespace

RecordMemory::RecordMemory()
{
    slot(Record::System).bytes = RecordContents::factorySystem();
    slot(Record::Channels).bytes = RecordContents::factoryChannels();
}

std::optional<QByteArray> RecordMemory::read(Layout layout, quint32 address, quint32 count) const
{
    const bool fits = address >= kBegin && quint64(address) + count <= quint64(kBegin) + kSize;
    if (!fits || count == 0 || count > kMaxReadBytes) {
        return std::nullopt;
    }
    QByteArray result;
    bool isShort = false;
    for (quint32 at = address; at < address + count; ++at) {
        const auto place = placeOf(layout, at, &Region::readAddress);
        result.append(place ? slot(place->record).bytes.at(place->offset) : kErased);
        isShort = isShort || (place && slot(place->record).isShort);
    }
    result.chop(isShort ? 1 : 0);
    return result;
}

bool RecordMemory::write(Layout layout, quint32 address, const QByteArray& bytes)
{
    std::vector<Place> places;
    for (int i = 0; i < bytes.size(); ++i) {
        const quint64 at = quint64(address) + static_cast<quint64>(i);
        const auto place = at < quint64(kBegin) + kSize
                               ? placeOf(layout, static_cast<quint32>(at), &Region::writeAddress)
                               : std::nullopt;
        if (!place) {
            return false;
        }
        places.push_back(*place);
    }
    for (int i = 0; i < bytes.size(); ++i) {
        Slot& touched = slot(places.at(static_cast<std::size_t>(i)).record);
        touched.bytes[places.at(static_cast<std::size_t>(i)).offset] = bytes.at(i);
        touched.valid = false;
    }
    return !places.empty();
}

QByteArray RecordMemory::record(Record record) const
{
    const Slot& whole = slot(record);
    return whole.isShort ? whole.bytes.chopped(1) : whole.bytes;
}

void RecordMemory::setBytes(Record record, const QByteArray& bytes)
{
    Q_ASSERT(bytes.size() == slot(record).bytes.size());
    slot(record).bytes = bytes;
}

} // namespace Simulator
