#pragma once

#include <QObject>
#include <QString>

class QSettings;
class QWidget;

/// The firmware update of the connected device. While a run is in progress everybody else stays off the line.
/// The settings store is borrowed and outlives the object; the window is its parent.
class Update : public QObject
{
    Q_OBJECT

public:
    /// Marks the update as in progress for as long as it lives, whichever way the run ends.
    class Run
    {
    public:
        explicit Run(Update& update) : m_update(update) { m_update.m_inProgress = true; }
        ~Run() { m_update.m_inProgress = false; }
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;

    private:
        Update& m_update;
    };

    Update(QWidget* topLevelWindow, QSettings* store);

    bool isInProgress() const { return m_inProgress; }
    /// For whoever is about to use the line: true, and actionRefused() is emitted, while a run has it.
    bool refusesAction();

signals:
    /// Somebody wanted to use the line that a run has for itself; nothing was sent.
    void actionRefused();
    /// Asks for a copy of the device's calibration in the file @p pathName.
    void saveSettingsInfo(const QString& pathName);

private:
    QSettings* m_store;
    bool m_inProgress = false;
};
