#pragma once

#include "settings/DialogBench.h"
#include "support/FirmwareImages.h"
#include "support/HomeFolder.h"
#include "support/ReleaseArchive.h"
#include "support/ShownWindow.h"
#include "update/UpdatableDevice.h"
#include "update/UpdateTrace.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

/// The three images of a release as a test wants them; at first small ones of version 3.0.0 that pass every
/// check.
struct UpdateRelease
{
    UpdateRelease();

    FirmwareImages::Image loader;
    FirmwareImages::Image updater;
    FirmwareImages::Image application;
    /// Instead of an image's text, by the file's name.
    QMap<QString, QByteArray> contents;
    QStringList missing;
    /// Files that lie as folders in the archive.
    QStringList folders;
    QStringList packing; ///< switches of the packer

    QMap<QString, QByteArray> texts() const; ///< by "loader", "updater", "application"
    QList<ReleaseArchive::Member> members() const;
};

/// A window at service level with an updatable device, the dialog's page of the update in front, and a
/// release to update with.
class UpdateTest : public AnsweringDialogTest
{
protected:
    /// False when the device, which @p prepare may change before, is not found in time.
    bool buildUpdate(const std::function<void(UpdatableDevice&)>& prepare = {});
    void removeUpdate();
    bool packRelease();
    QString releasePath(const QString& name) const;
    /// Names of the calibrations that were saved, and of whatever else is beside them.
    QStringList backups() const;
    QString archivePath() const { return releasePath(QStringLiteral("VYR.7z")); }

    /// Packs the release, clicks the button, chooses the release and confirms every box; what was shown and
    /// sent meanwhile.
    QStringList update();
    /// The same with this answer to the file dialog; empty cancels it.
    QStringList updateWith(const QString& pathName);
    /// While a run has the line: the device runs this from now on, and the link knows it.
    void reconnectAs(const QByteArray& image);
    /// The link's port is closed as soon as the answer has come that the device gives next.
    void closePortAfterAnswer();
    void clickUpdate() const { m_hand->click("pushButtonUpdateFirmware"); }

    std::unique_ptr<HomeFolder> m_home;
    std::unique_ptr<UpdatableDevice> m_device;
    std::unique_ptr<UpdateTrace> m_trace;
    UpdateRelease m_release;
};
