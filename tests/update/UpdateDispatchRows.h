#pragma once

#include "update/UpdateBench.h"

#include <functional>
#include <vector>

/// Every way through an update from the moment when all images are checked, one row each.
class DispatchTest : public UpdateTest
{
protected:
    /// Something that goes wrong, or otherwise than usual; it is laid out before the run begins.
    using Plan = std::function<void(DispatchTest&)>;
    static constexpr const char* inApplication = "VYRApp V2.7.0";
    struct Row
    {
        const char* name;
        std::vector<Plan> plans;
        QStringList expected;               ///< what the user sees and the device gets
        QByteArray running = inApplication; ///< what the device runs at first, as it tells it
    };
    static std::vector<Row> rows();

    QByteArray m_imageDuringBackup; ///< what the device runs since the backup was made; empty: as before

private:
    static std::vector<Row> entering();
    static std::vector<Row> switching();
    static std::vector<Row> versions();
    static std::vector<Row> changedDuringBackup();
    static std::vector<Row> programmingUpdater();
    static std::vector<Row> programmingLoader();
    static std::vector<Row> programmingApplication();
    static std::vector<Row> restart();

    static Plan answers(const char* line, int number, const char* text)
    {
        return [=](DispatchTest& t) { t.m_device->answer(line, number, text); };
    }
    static Plan starts(const char* line, int number, const QByteArray& image)
    {
        return [=](DispatchTest& t) { t.m_device->start(line, number, image); };
    }
    static Plan closes(const char* line, int number)
    {
        return [=](DispatchTest& t) { t.m_device->when(line, number, [&t] { t.closePortAfterAnswer(); }); };
    }
    static Plan cancels(int line)
    {
        return [=](DispatchTest& t) { t.m_device->when("wf:", line, &cancelProgress); };
    }
    /// The device runs this since the backup was made.
    static Plan becomes(const QByteArray& image)
    {
        return [=](DispatchTest& t) { t.m_imageDuringBackup = image; };
    }
    static Plan hasLoader(const QByteArray& image)
    {
        return [=](DispatchTest& t) { t.m_device->loader = image; };
    }
    /// Of the version that the release has.
    static Plan hasSameLoader() { return hasLoader("Loader V3.0.0"); }
    static Plan hasApplication(const QByteArray& image)
    {
        return [=](DispatchTest& t) { t.m_device->application = image; };
    }
    /// When the user is asked for the release.
    static Plan whileChoosing(const Plan& what);

    static int lines(const FirmwareImages::Image& image)
    {
        return FirmwareImages::lineCount(FirmwareImages::text(image));
    }
    // Of the usual release.
    static int updaterLines() { return lines(UpdateRelease().updater); }
    static int loaderLines() { return lines(UpdateRelease().loader); }
    static int applicationLines() { return lines(UpdateRelease().application); }
    /// The device leaves the bus before it answers, and comes back with this image.
    void replug(const QByteArray& image);
};
