#include "update/ReleaseBench.h"

#include "device/Device.h"
#include "settings/FileChooser.h"
#include "support/BoxAnswerer.h"
#include "support/ReleaseArchive.h"
#include "support/ShownWindow.h"
#include "update/Update.h"

#include <QApplication>
#include <QTest>

#include <chrono>

namespace {
using namespace std::chrono_literals;
using FirmwareImages::Role;

/// Longer than the link takes to find and to identify a device that has just been plugged in.
constexpr std::chrono::milliseconds identificationLimit{8000};
/// Before the first poll the dialog reads its pages, which takes seconds where many tests share the machine.
constexpr std::chrono::milliseconds pollLimit{15000};
constexpr std::chrono::milliseconds noPollFor{600};
} // namespace

bool ReleaseBench::pack(int loaderSize, int applicationSize)
{
    const auto member = [](Role role, quint16 major, int size) {
        FirmwareImages::Image image;
        image.role = role;
        image.major = major;
        image.dataSize = size;
        return ReleaseArchive::Member{FirmwareImages::fileName(role), FirmwareImages::text(image)};
    };
    m_archivePath = m_home.path(QStringLiteral("release/VYR.7z"));
    return ReleaseArchive::write(m_archivePath, {member(Role::Loader, newMajor, loaderSize),
                                                 member(Role::LoaderUpdater, 1, loaderSize),
                                                 member(Role::Application, newMajor, applicationSize)});
}

bool ReleaseBench::build(int loaderSize, int applicationSize)
{
    m_bench = std::make_unique<WindowBench>();
    m_device = std::make_unique<SimulatedBench>();
    m_lines = std::make_unique<LineRecorder>(m_device->wire());
    QObject::connect(&m_device->wire(), &Simulator::Wire::lineReceived, &m_device->illuminator(),
                     [this](const QByteArray& line) { countLine(line); });
    m_window = m_bench->start(QStringLiteral("-diag"));
    m_hand = std::make_unique<DialogHand>(*m_window);
    return pack(loaderSize, applicationSize) && waitForDevice() && m_hand->open() &&
           m_hand->clickTab(QStringLiteral("Update"));
}

void ReleaseBench::countLine(const QByteArray& line)
{
    if (line.startsWith("wf:") && ++m_imageLines == m_cancelAt) {
        QTimer::singleShot(0, m_window.get(), cancelProgress);
    }
}

QStringList ReleaseBench::update()
{
    const FileChooser chooser({m_archivePath});
    const BoxAnswerer answerer;
    m_imageLines = 0;
    m_hand->click("pushButtonUpdateFirmware");
    m_cancelAt = 0;
    QStringList texts;
    for (const BoxAnswerer::Box& box : answerer.boxes()) {
        texts.append(box.text);
    }
    return texts;
}

bool ReleaseBench::waitForDevice()
{
    Device& device = *m_window->device();
    const QDeadlineTimer limit(identificationLimit);
    while (!limit.hasExpired()) {
        const DeviceMode mode = device.deviceMode();
        if (device.isOpen() && mode != DeviceMode::NotIdentified &&
            mode != DeviceMode::UpdatingLaserController) {
            return true;
        }
        device.checkConnectionStatus(); // its own timer would take up to a second
        QTest::qWait(20);
    }
    return false;
}

bool ReleaseBench::isUpdated() const
{
    const Simulator::IlluminatorModel& model = m_device->illuminator().model();
    const auto& loader = model.firmware().loaderPlace();
    const auto& application = model.firmware().applicationPlace();
    return model.runningImage() == Simulator::Image::Application && loader.crcValid &&
           loader.version.major == newMajor && application.crcValid &&
           application.image == Simulator::Image::Application && application.version.major == newMajor;
}

QString ReleaseBench::leftOver()
{
    if (m_window->update()->isInProgress()) {
        return QStringLiteral("the update is still marked as in progress");
    }
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (const QWidget* widget : widgets) {
        if (widget->isVisible() && widget != m_window.get() && widget != &m_hand->dialog()) {
            return QStringLiteral("a window is left over: ") +
                   QLatin1String(widget->metaObject()->className()) + QLatin1Char(' ') +
                   widget->windowTitle();
        }
    }
    if (QApplication::activeModalWidget() != nullptr || !m_window->isVisible() || !m_window->isEnabled()) {
        return QStringLiteral("the window cannot be used");
    }
    return waitForDevice() ? wrongPolling() : QStringLiteral("the device is not found any more");
}

QString ReleaseBench::wrongPolling()
{
    const auto isPolled = [this] { return m_lines->count("shutter?") > 0; };
    m_lines->clear();
    if (m_window->device()->deviceMode() == DeviceMode::Application) {
        return QTest::qWaitFor(isPolled, int(pollLimit.count()))
                   ? QString()
                   : QStringLiteral("the application is not polled");
    }
    // An absence can only be waited for.
    QTest::qWait(int(noPollFor.count()));
    return isPolled() && m_window->device()->deviceMode() != DeviceMode::Application
               ? QStringLiteral("an image that knows no states is polled")
               : QString();
}
