#pragma once

#include "Simulator/Climate.h"
#include "Simulator/FirmwareStore.h"
#include "Simulator/LaserController.h"
#include "Simulator/LaserHead.h"
#include "Simulator/ModelTypes.h"
#include "Simulator/ProductData.h"
#include "Simulator/RecordMemory.h"
#include "Simulator/SRecordLine.h"

#include <QByteArray>
#include <QList>

#include <chrono>
#include <optional>

namespace Simulator {

/// The illuminator without its cable: a line in, a reply out. It has no clock of its own, time passes by
/// advance() alone. Made switched on, with the application warming up.
class IlluminatorModel
{
public:
    IlluminatorModel();

    /// What the device does about one line, which comes without its line feed. Every line gets a reply;
    /// that of an empty line, and of a line that the running image has no ear for, is silence.
    /// A restart that the reply asks for is carried out by the caller: shutDown(), and boot() once the time
    /// it takes is over.
    Reply handle(const QByteArray& line);
    void advance(std::chrono::milliseconds time);

    /// What the device has to say unasked since the last call, each with its line feed.
    QList<QByteArray> takeMessages();
    /// A restart that the device begins by itself, once.
    std::optional<Restart> takeRestart();

    void shutDown(); ///< nothing runs and nothing is answered until boot()
    void boot(Image image, const QByteArray& cause);
    /// The restart that switching off and on again comes to.
    Restart powerCycle() const;
    std::optional<Image> runningImage() const { return m_running; }
    QByteArray resetCause() const { return m_resetCause; }

    LaserHead& lasers() { return m_lasers; }
    const LaserHead& lasers() const { return m_lasers; }
    FirmwareStore& firmware() { return m_firmware; }
    const FirmwareStore& firmware() const { return m_firmware; }
    LaserController& controller() { return m_controller; }
    const LaserController& controller() const { return m_controller; }
    ProductData& product() { return m_product; }
    RecordMemory& records() { return m_records; }
    const RecordMemory& records() const { return m_records; }
    /// How the running image sees the records; the newer way came with loader 1.4.7 and application 2.6.3.
    RecordMemory::Layout recordLayout() const;
    Readings readings() const { return m_climate.readings(); }

    /// One line for the FLASH from the host; none when it could not be read. False when it is refused.
    bool programFlash(const std::optional<SRecordLine>& line);
    /// How long the device is busy with one line of FLASH before it answers.
    void setFlashWriteTime(std::chrono::milliseconds time) { m_flashWriteTime = time; }
    std::chrono::milliseconds flashWriteTime() const { return m_flashWriteTime; }
    /// How long a newly programmed application reprograms the laser controller when it starts first; zero,
    /// as it is at first: not at all.
    void setControllerUpdateAfterProgramming(std::chrono::milliseconds duration)
    {
        m_controllerUpdate = duration;
    }

    /// Whether the device starts anew, as a new port, when its laser controller has been reprogrammed. It is
    /// the only sign by which a host that stopped asking learns of the end. On at first.
    void setRestartsAfterControllerUpdate(bool restarts) { m_restartsAfterControllerUpdate = restarts; }

private:
    double lightPercent() const;

    FirmwareStore m_firmware;
    LaserHead m_lasers;
    LaserController m_controller;
    ProductData m_product;
    RecordMemory m_records;
    Climate m_climate;
    std::optional<Image> m_running;
    QByteArray m_resetCause;
    QList<QByteArray> m_messages;
    std::optional<Restart> m_restart;
    bool m_restartsAfterControllerUpdate = true;
    std::chrono::milliseconds m_flashWriteTime{4};
    std::chrono::milliseconds m_controllerUpdate{0};
};

} // namespace Simulator
