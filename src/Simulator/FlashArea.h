#pragma once

#include "Simulator/ModelTypes.h"
#include "Simulator/SRecordLine.h"

#include <QBitArray>
#include <QByteArray>

#include <optional>
#include <vector>

namespace Simulator {

/// One of the two areas of the program memory, as it takes an image line by line. Its last 64 bytes are the
/// image's header, all numbers little-endian:
///   0..7    "LOADER", "UPDATER" or "VYRAPP", filled up with zeros
///   8..11   the product, 1
///   12..15  the version: major from bit 16, minor from bit 8, patch from bit 0
///   16..19  the program's size in bytes, from the area's beginning
///   20..23  CRC-32 of the program and of the header's bytes 0..19
/// What no line wrote counts as 0xff. A header with another name than those three has no size and no CRC.
///
/// Nothing announces an image. Programming begins with the first line after a start or an image's end, and
/// again with a line that goes where the first one went, or that would change what was written since. At
/// that moment the whole area is erased.
class FlashArea
{
public:
    static constexpr quint32 kHeaderSize = 64;

    /// What lies in the area.
    struct Found
    {
        Image image = Image::Application;
        Version version;
    };

    /// `images` are those that may lie here; one without a name is taken for the first of them.
    FlashArea(quint32 begin, quint32 size, std::vector<Image> images);

    /// False, and nothing changes, for a line without data or with a byte outside the area.
    bool write(const SRecordLine& line);
    /// From the first line that was written until finish() or breakOff().
    bool isBeingProgrammed() const { return m_inProgress; }
    /// A line of this image did not get through.
    void missLine() { m_missedLine = true; }
    /// The image has ended. Gives what it is when all of it is there: its CRC holds or, where it has none,
    /// no line was missed.
    std::optional<Found> finish();
    void breakOff() { m_inProgress = false; }

private:
    bool beginsAnew(const SRecordLine& line) const;
    void erase(quint32 firstAddress);
    std::optional<Found> find() const;
    bool isWhole(const QByteArray& header) const;

    quint32 m_begin;
    quint32 m_size;
    std::vector<Image> m_images;
    QByteArray m_bytes;
    QBitArray m_written;
    quint32 m_firstAddress = 0;
    bool m_inProgress = false;
    bool m_missedLine = false;
};

} // namespace Simulator
