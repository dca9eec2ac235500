#include "update/Update.h"

#include "device/Device.h"
#include "mainwindow/SettingsStore.h"
#include "update/ArchiveExtractor.h"
#include "update/ArchiveStep.h"
#include "update/FirmwareImage.h"
#include "update/FlashProgramming.h"
#include "update/UpdateResult.h"
#include "update/UpdateRun.h"

#include <QApplication>
#include <QDateTime>
#include <QPointer>
#include <QWidget>

namespace {
QString twoDigits(int number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

/// The boxes of a run belong to the main window, which the last of them leaves active. Whoever began the run
/// in another window goes on there.
void returnTo(QWidget* starter, const QWidget* mainWindow)
{
    const QWidget* const active = QApplication::activeWindow();
    if (starter != nullptr && starter->isVisible() && (active == nullptr || active == mainWindow)) {
        starter->activateWindow();
    }
}
} // namespace

Update::InProgress::InProgress(Update& update)
{
    if (!update.m_inProgress) {
        update.m_inProgress = true;
        update.m_touched = false;
        m_update = &update;
        emit update.started();
    }
}

Update::InProgress::~InProgress()
{
    if (m_update) {
        m_update->m_inProgress = false;
        emit m_update->finished(m_update->m_touched);
    }
}

Update::Update(QWidget* topLevelWindow, QSettings* store)
    : QObject(topLevelWindow), m_store(store), m_extractor(std::make_shared<ArchiveExtractor>())
{
}

QString Update::inProgressText()
{
    return tr("Firmware update in progress.");
}

bool Update::refusesAction()
{
    if (m_inProgress) {
        emit actionRefused();
    }
    return m_inProgress;
}

void Update::firmwareUpdate(Device* device)
{
    if (m_inProgress) {
        return;
    }
    const InProgress inProgress(*this);
    const QPointer<QWidget> starter(QApplication::activeWindow());
    const QPointer<QWidget> mainWindow(window());
    m_device = device;
    QMetaObject::Connection watch;
    if (device != nullptr) {
        watch = connect(device, &Device::deviceConnected, this, [this] { m_touched = true; });
    }
    UpdateRun(*this).run();
    disconnect(watch);
    returnTo(starter, mainWindow);
}

bool Update::extractArchive(const QString& archivePath)
{
    const auto extractor = m_extractor; // the window may be deleted while it works
    return ArchiveStep::run(*extractor, archivePath, window());
}

int Update::checkFirmwareFile(QFile& file, FirmwareVersion& version)
{
    return ::checkFirmwareFile(file, version);
}

int Update::programFlash(QFile& file, int lineCount, const QString& title)
{
    if (!m_device) {
        return UpdateResult::LineNotSent;
    }
    return FlashProgramming::sendWithDialog(*m_device, file, lineCount, title, window());
}

void Update::saveCalibrationBackup()
{
    const FirmwareVersion version = m_device ? m_device->applicationVersion().version : FirmwareVersion{};
    emit saveSettingsInfo(
        dataFolder() % QStringLiteral("/CalibrationConfig ") %
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hhmmss")) %
        QStringLiteral(" V%1_%2_%3.json")
            .arg(twoDigits(version.major), twoDigits(version.minor), twoDigits(version.patch)));
}

QWidget* Update::window() const
{
    return qobject_cast<QWidget*>(parent());
}
