#include "settings/ServicePage.h"

#include "device/Device.h"
#include "forms/FormWidgets.h"
#include "update/Update.h"

#include <QLabel>

ServicePage::ServicePage(QWidget& dialog, Device* device, Update* update)
    : QObject(&dialog), m_device(device), m_update(update),
      m_buttons(dialog, {"pushButtonSystemReset", "pushButtonSystemReset2", "pushButtonLoaderMode",
                         "pushButtonLoaderMode2", "pushButtonRestoreDefaults", "pushButtonUpdateFirmware"})
{
    for (const char* name : {"labelRunningImage", "labelRunningImage2"}) {
        m_lines.append(formWidget<QLabel>(dialog, name));
    }
    if (m_update) {
        connect(m_update, &Update::started, this, &ServicePage::showRunning);
        connect(m_update, &Update::finished, this, &ServicePage::showRunning);
    }
    showRunning();
}

bool ServicePage::mayCommand() const
{
    // An update closes the port now and then; whoever clicks is told of it all the same.
    if (m_update && m_update->refusesAction()) {
        return false;
    }
    return m_device && m_device->isOpen() && !m_switching;
}

void ServicePage::resetDevice()
{
    if (!m_recordWriting && mayCommand()) {
        m_device->resetDevice();
    }
}

void ServicePage::restoreDefaults()
{
    if (mayCommand()) {
        m_device->restoreDefaults();
    }
}

void ServicePage::switchImage()
{
    if (m_recordWriting || !mayCommand()) {
        return;
    }
    const QPointer<ServicePage> self(this);
    const DeviceMode before = m_device->deviceMode();
    setSwitching(true);
    const int code = before == DeviceMode::Loader ? m_device->goApp() : m_device->goLoader();
    if (!self) {
        return;
    }
    setSwitching(false);
    showRunning();
    if (code != DeviceResult::Ok && m_device && m_device->isOpen()) {
        showText(tr("The device did not restart (error %1).").arg(code));
    } else if (code == DeviceResult::Ok && m_device && m_device->deviceMode() == before) {
        showText(tr("The device did not change its image.") + QLatin1Char(' ') + runningText());
    }
}

void ServicePage::setSwitching(bool switching)
{
    m_switching = switching;
    if (switching) {
        showText(tr("Waiting for the device to restart..."));
    }
    m_buttons.setEnabled(!switching);
}

void ServicePage::showRunning()
{
    if (!m_switching) {
        showText(runningText());
    }
}

QString ServicePage::runningText() const
{
    if (m_update && m_update->isInProgress()) {
        return Update::inProgressText();
    }
    if (!m_device || !m_device->isOpen()) {
        return tr("Not connected");
    }
    // Joined, not filled in: an image of an unknown kind has a name that only the device knows.
    const ImageVersion& running = m_device->runningVersion();
    const QString version = QLatin1Char(' ') + running.version.toString();
    switch (m_device->deviceMode()) {
    case DeviceMode::Loader:
        return tr("Running: loader") + version;
    case DeviceMode::LoaderUpdater:
        return tr("Running: loader updater") + version;
    case DeviceMode::Application:
        return tr("Running: application") + version;
    case DeviceMode::UpdatingLaserController:
        return tr("Running: application") + version + tr(", which updates the laser controller");
    case DeviceMode::Other:
        return tr("Running: ") + running.kind + version;
    case DeviceMode::NotIdentified:
        break;
    }
    return tr("Connected, but not identified yet");
}

void ServicePage::showText(const QString& text)
{
    for (QLabel* line : qAsConst(m_lines)) {
        line->setText(text);
    }
}
