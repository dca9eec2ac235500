#include "settings/DiagnosticsSaver.h"

#include "QsLog2_1_0/QsLog.h"
#include "boxes/ChooseFile.h"
#include "boxes/TellUser.h"
#include "device/Device.h"
#include "diagnostics/Diagnostics.h"
#include "forms/FormWidgets.h"
#include "mainwindow/SettingsStore.h"
#include "settings/SystemInfoPage.h"
#include "update/Update.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QPushButton>
#include <QSettings>
#include <QStandardPaths>

#include <utility>

namespace {
// The one kind of archive that every desktop opens by a double click, whoever it is sent to.
const QLatin1String ending(".zip");

QString proposedPath()
{
    QString folder =
        QStandardPaths::locate(QStandardPaths::DocumentsLocation, QString(), QStandardPaths::LocateDirectory);
    if (folder.isEmpty()) {
        folder = QDir::homePath();
    }
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
    return QDir(folder).filePath(QLatin1String("VYR-Diagnostics-") % time % ending);
}
} // namespace

DiagnosticsSaver::DiagnosticsSaver(QWidget& dialog, const SystemInfoPage& page, Device* device,
                                   Update* update, QSettings* store, QString programVersion)
    : QObject(&dialog), m_dialog(dialog), m_page(page), m_device(device), m_update(update), m_store(store),
      m_programVersion(std::move(programVersion))
{
    connect(formWidget<QPushButton>(dialog, "pushButtonSaveDiagnostics"), &QPushButton::clicked, this,
            &DiagnosticsSaver::save);
}

QString DiagnosticsSaver::askForPath()
{
    const QPointer<DiagnosticsSaver> self(this);
    QString path = proposedPath();
    for (;;) {
        path = chooseFile(&m_dialog, QFileDialog::AcceptSave, tr("Choose a file for the diagnostics"), path,
                          tr("ZIP archives (*.zip)"));
        if (!self || path.isEmpty()) {
            return {};
        }
        if (path.endsWith(ending, Qt::CaseInsensitive)) {
            return path;
        }
        path += ending;
        // The user was not asked about a file of the completed name; choosing it once more does that.
        if (!QFileInfo::exists(path)) {
            return path;
        }
    }
}

void DiagnosticsSaver::save()
{
    if (m_update && m_update->refusesAction()) {
        return;
    }
    const QPointer<DiagnosticsSaver> self(this);
    const QString path = askForPath();
    // A wait that goes on below may have ended with the program meanwhile.
    if (!self || path.isEmpty() || (m_device && m_device->isShutDown())) {
        return;
    }
    QS_INFO() << "Saving diagnostics";
    DiagnosticsSources sources;
    sources.programVersion = m_programVersion;
    sources.device = m_device;
    sources.identity = {m_page.knownProduct(), m_page.knownController()};
    sources.logFile = logFileIn(dataFolder());
    emit settingsWanted();
    if (!flushSettings(*m_store)) {
        sources.remark =
            QStringLiteral("Settings.ini: as saved before, because the last changes could not be saved");
    }
    sources.settingsFile = m_store->fileName();
    QString error;
    const QString shownPath = QDir::toNativeSeparators(path);
    if (saveDiagnostics(path, sources, error)) {
        tellUser(&m_dialog, QMessageBox::Information,
                 tr("Diagnostics saved in") % QLatin1Char('\n') % shownPath);
        return;
    }
    QS_ERROR() << "Diagnostics not saved:" << error;
    tellUser(&m_dialog, QMessageBox::Warning,
             tr("Diagnostics could not be saved in") % QLatin1Char('\n') % shownPath % QLatin1Char('\n') %
                 error);
}
