#include "settings/ServicePage.h"

#include "device/Device.h"
#include "settings/FormWidgets.h"
#include "update/Update.h"

#include <QLabel>
#include <QPushButton>

ServicePage::ServicePage(QWidget& dialog, Device* device, Update* update)
    : QObject(&dialog), m_dialog(dialog), m_device(device), m_update(update)
{
    for (const char* name : {"pushButtonSystemReset", "pushButtonSystemReset2", "pushButtonLoaderMode",
                             "pushButtonLoaderMode2", "pushButtonRestoreDefaults"}) {
        m_buttons.append(formWidget<QPushButton>(dialog, name));
    }
    for (const char* name : {"labelRunningImage", "labelRunningImage2"}) {
        m_lines.append(formWidget<QLabel>(dialog, name));
    }
    showRunning();
}

bool ServicePage::mayCommand() const
{
    return m_device && m_device->isOpen() && !m_switching && !(m_update && m_update->refusesAction());
}

void ServicePage::resetDevice()
{
    if (mayCommand()) {
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
    if (!mayCommand()) {
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
        m_focusBefore = m_dialog.focusWidget();
        showText(tr("Waiting for the device to restart..."));
    }
    for (QWidget* button : qAsConst(m_buttons)) {
        button->setEnabled(!switching);
    }
    // A disabled button loses the focus to whatever comes next; whoever works with the keys gets it back.
    if (!switching && m_focusBefore && m_buttons.contains(m_focusBefore)) {
        m_focusBefore->setFocus();
    }
}

void ServicePage::showRunning()
{
    if (!m_switching) {
        showText(runningText());
    }
}

QString ServicePage::runningText() const
{
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
