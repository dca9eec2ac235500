#pragma once

#include "scenario/ScenarioValues.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <array>

class ChannelPanel;
class Device;
class QLabel;
class QWidget;
class Scenario;
class Update;
class channel;

/// How a wish to move a shutter ended.
struct ShutterAnswer
{
    QString refusal; ///< why the device was not even asked, for the operator; empty when it was
    int code = 0;    ///< of the command, 0 when it was sent
};

/// What saving and loading scenarios needs of the window that shows the channels.
class ScenarioHost
{
public:
    virtual Scenario* scenario() const = 0; ///< the container in use; null before the settings are read
    /// Puts the values into the channel and its widgets, and sends what the control modes allow. Returns why
    /// something was left as it is, for the operator; empty when nothing was.
    virtual QString applyChannel(channel& laser, const ChannelSettings& settings) = 0;
    /// Asks the device under the same rules as a click; can wait for the device.
    virtual ShutterAnswer changeShutter(channel& laser, bool open) = 0;
    virtual void showStatus(const QString& text) = 0;
    virtual void warn(const QString& text) = 0; ///< in a box that waits for its OK

protected:
    ~ScenarioHost() = default;
};

/// Saves the panel as a scenario and loads it again. Loading closes the shutters that are closed in the
/// scenario, sets everything else, waits until the device has reported them closed, and opens the others one
/// by one; what was refused is told once, at the end. It also tells which scenario was used last, and whether
/// anything has changed since.
class ScenarioControl : public QObject
{
    Q_OBJECT

public:
    /// Finds its labels below @p window, which owns it and is the parent of its dialogs. The panel and the
    /// device, which is asked for its states, outlive every operation here.
    ScenarioControl(QWidget& window, ScenarioHost& host, const ChannelPanel& panel, Device& device,
                    Update& update);

    void save();
    void load();

public slots:
    /// A value of some channel changed, by whomever.
    void onChannelChanged();
    void onDeviceDisconnected();
    /// The operator moved this shutter by hand; a scenario that is being loaded leaves it alone from here on.
    void onShutterMoved(const channel& laser);

private:
    struct Refusal
    {
        QString reason;
        QStringList channelNames;
    };

    void begin(const QString& name, const ScenarioValues& values);
    void closeShutters();
    void applySettings();
    void openShutters();
    void askForReports();
    void finish();
    bool mayLoad();
    void note(const channel& laser, const ShutterAnswer& answer);
    bool isClosingPending() const;
    bool isRunStale(int run) const { return run != m_run; }
    void adopt(const QString& name, const ScenarioValues& values);
    void showModified();

    QWidget& m_window;
    ScenarioHost& m_host;
    const ChannelPanel& m_panel;
    Device& m_device;
    Update& m_update;
    QLabel* m_nameLabel;
    QLabel* m_modifiedLabel;
    QString m_name; ///< empty before anything was saved or loaded
    ScenarioValues m_values;
    QList<Refusal> m_refusals;
    std::array<bool, channelCount> m_askedToClose{}; ///< shutters that may be open, until they are reported
    std::array<bool, channelCount> m_movedByHand{};  ///< since the loading began
    bool m_loading = false;                          ///< until the last opening was asked for
    bool m_closing = false;                          ///< their reports are waited for
    QTimer m_reportTimer; ///< runs while the device has time to report what it was asked for
    QTimer m_askTimer;    ///< meanwhile has it asked, as the regular poll may rest
    int m_run = 0;        ///< tells a step that waited whether its run was given up meanwhile
};
