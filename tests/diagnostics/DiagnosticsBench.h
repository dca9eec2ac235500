#pragma once

#include "device/Device.h"
#include "diagnostics/ZipContents.h"
#include "settings/FileChooser.h"
#include "support/BoxAnswerer.h"
#include "update/UpdateBench.h"

#include <QDir>
#include <QFile>
#include <QMessageBox>

#include <memory>

/// A home of its own with a log folder, and a window whose settings dialog shows the tab of the button.
class DiagnosticsTest : public AnsweringDialogTest
{
protected:
    bool buildRoom(bool connected = true)
    {
        m_home = std::make_unique<HomeFolder>();
        return QDir().mkpath(logFolder()) && buildDialog(connected) &&
               m_hand->clickTab(QStringLiteral("Update"));
    }
    void removeRoom()
    {
        removeDialog();
        m_home.reset();
    }

    QString logFolder() const { return m_home->dataFolder(); }
    QString logFile(const QString& ending = {}) const
    {
        return logFolder() + QStringLiteral("/VYR_Log.txt") + ending;
    }
    QString target(const QString& name = QStringLiteral("a.zip")) const
    {
        return m_home->path(QStringLiteral("release/") + name);
    }
    QStringList targets() const
    {
        return QDir(m_home->path(QStringLiteral("release")))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    static bool write(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }
    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void clickSave() const { m_hand->click("pushButtonSaveDiagnostics"); }
    /// Clicks, chooses these one after the other, answers every box and remembers all that.
    void save(const QStringList& names)
    {
        const FileChooser chooser(names);
        const BoxAnswerer answerer(QMessageBox::Yes);
        clickSave();
        m_choosers = chooser.choosers();
        m_boxes = answerer.boxes();
    }
    ZipContents saved()
    {
        save({target()});
        return ZipContents(target());
    }

    std::unique_ptr<HomeFolder> m_home;
    QList<FileChooser::Chooser> m_choosers;
    QList<BoxAnswerer::Box> m_boxes;
};
