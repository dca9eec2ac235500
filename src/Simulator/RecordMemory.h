#pragma once

#include <QByteArray>

#include <array>
#include <optional>

namespace Simulator {

/// The device's non-volatile memory for its binary configuration records, each with a validity flag. It is
/// seen through the eyes of the firmware that runs: older firmware shows the system record at another
/// address, from which a host has to read it, and has no channel record. Both take the system record where
/// newer firmware keeps it, so that a record written is the record read, whichever image did which.
/// Memory that belongs to no record reads as erased and cannot be written.
class RecordMemory
{
public:
    enum class Record { System, Channels };
    enum class Layout { Newer, Older };

    static constexpr quint32 kBegin = 0x800000;
    static constexpr int kSize = 0x200; ///< bytes
    static constexpr int kMaxReadBytes = 128;
    static constexpr int kSystemSize = 308;   ///< bytes
    static constexpr int kChannelsSize = 100; ///< bytes

    RecordMemory(); ///< the factory's contents, valid

    // ---- for the host
    /// No value for none or more than kMaxReadBytes bytes, or any outside the memory.
    std::optional<QByteArray> read(Layout layout, quint32 address, quint32 count) const;
    /// All bytes or, where one of them lies in no record, none (false). What is touched is not valid any
    /// more.
    bool write(Layout layout, quint32 address, const QByteArray& bytes);
    /// The whole record as it is answered.
    QByteArray record(Record record) const;
    void setValid(Record record, bool valid) { slot(record).valid = valid; }
    bool isValid(Record record) const { return slot(record).valid; }

    // ---- for whoever plays with the device
    /// The bytes as they lie in the memory; those given must be as many.
    QByteArray bytes(Record record) const { return slot(record).bytes; }
    void setBytes(Record record, const QByteArray& bytes);
    /// While short, answers that show bytes of the record lack their last byte.
    void setShort(Record record, bool isShort) { slot(record).isShort = isShort; }

private:
    struct Slot
    {
        QByteArray bytes;
        bool valid = true;
        bool isShort = false;
    };
    Slot& slot(Record record) { return m_slots.at(static_cast<std::size_t>(record)); }
    const Slot& slot(Record record) const { return m_slots.at(static_cast<std::size_t>(record)); }

    std::array<Slot, 2> m_slots;
};

} // namespace Simulator
