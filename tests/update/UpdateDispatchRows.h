#pragma once

#include "update/UpdateBench.h"

#include <functional>
#include <vector>

/// Every way through an update from the moment when all images are checked, one row each.
class DispatchTest : public UpdateTest
{
protected:
    struct Row
    {
        const char* name;
        QByteArray running; ///< what the device runs at first, as it tells it
        std::function<void(DispatchTest&)> plan;
        QStringList expected; ///< what the user sees and the device gets
    };
    static std::vector<Row> rows();

    QByteArray m_imageDuringBackup; ///< what the device runs since the backup was made; empty: as before

private:
    static std::vector<Row> entering();
    static std::vector<Row> versions();
    static std::vector<Row> changedDuringBackup();
    static std::vector<Row> programmingUpdater();
    static std::vector<Row> programmingLoader();
    static std::vector<Row> programmingApplication();
    static std::vector<Row> restart();

    // What may go wrong, or otherwise than usual.
    void answer(const char* line, int number, const char* text) const
    {
        m_device->answer(line, number, text);
    }
    void start(const char* line, int number, const QByteArray& image) const
    {
        m_device->start(line, number, image);
    }
    void close(const char* line, int number)
    {
        m_device->when(line, number, [this] { closePortAfterAnswer(); });
    }
    void cancel(int line) const { m_device->when("wf:", line, &clickCancel); }
    void duringBackup(const QByteArray& image) { m_imageDuringBackup = image; }
    void sameLoader() const { m_device->loader = "Loader V3.0.0"; }
    static int lines(const FirmwareImages::Image& image)
    {
        return FirmwareImages::lineCount(FirmwareImages::text(image));
    }
    int updaterLines() const { return lines(m_release.updater); }
    int loaderLines() const { return lines(m_release.loader); }
    /// The device leaves the bus before it answers, and comes back with this image.
    void replug(const QByteArray& image);
};
