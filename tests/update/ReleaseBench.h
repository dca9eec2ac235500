#pragma once

#include "settings/DialogBench.h"
#include "support/FirmwareImages.h"
#include "support/HomeFolder.h"
#include "support/SimulatedBench.h"

#include <QByteArray>
#include <QStringList>

#include <memory>

/// A window at service level at a simulated illuminator with older firmware, the dialog's page of the update
/// in front, and a release in a folder of its own that a click updates the device with.
class ReleaseBench
{
public:
    static constexpr int newMajor = 3; ///< of the release's loader and application; the device's are lower

    /// False when the release cannot be packed, or the device is not found. @p loaderSize and
    /// @p applicationSize are bytes of program.
    bool build(int loaderSize = 2000, int applicationSize = 4000);

    /// Clicks the button, chooses the release, and confirms every box; the texts of the boxes in order.
    QStringList update();
    /// Cancels in the middle of the next run, before the answer to this line of an image, counted over all
    /// images from 1.
    void cancelAtLine(int line) { m_cancelAt = line; }

    /// Makes the connection check run until the device is identified; false when it takes too long.
    bool waitForDevice();
    /// Why the program is not as it must be between two runs, with the device there; empty when all is well.
    QString leftOver();
    /// The device runs the release's application beside the release's loader.
    bool isUpdated() const;

    /// What the log has at its gravest, to tell why a run ended.
    QStringList errors() const { return m_bench->log().lines(QsLogging::LogLevel::Error); }
    Simulator::SimulatedIlluminator& illuminator() { return m_device->illuminator(); }
    PortRegistration& ports() { return m_device->ports(); }
    PelorinMainWindow& window() { return *m_window; }
    LineRecorder& lines() { return *m_lines; }
    QString archivePath() const { return m_archivePath; }

private:
    bool pack(int loaderSize, int applicationSize);
    void countLine(const QByteArray& line);
    QString wrongPolling();

    HomeFolder m_home; ///< where the backups of the calibration go
    QString m_archivePath;
    std::unique_ptr<WindowBench> m_bench;
    std::unique_ptr<SimulatedBench> m_device;
    std::unique_ptr<LineRecorder> m_lines;
    std::unique_ptr<PelorinMainWindow> m_window;
    std::unique_ptr<DialogHand> m_hand;
    int m_imageLines = 0; ///< of this run
    int m_cancelAt = 0;   ///< 0: never
};
