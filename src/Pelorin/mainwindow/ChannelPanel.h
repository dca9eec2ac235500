#pragma once

#include "device/DeviceTypes.h"

#include <QColor>
#include <QDeadlineTimer>
#include <QString>

#include <array>
#include <chrono>
#include <optional>

class QFrame;
class QLabel;
class QLineEdit;
class QObject;
class QPushButton;
class QSlider;
class QWidget;

/// The eight columns of the main window. It shows what it is told and sends nothing; channels are numbered
/// from 1. The widgets stay the window's.
class ChannelPanel
{
public:
    /// Finds the columns' widgets below @p window by their object names; all of them must exist.
    explicit ChannelPanel(const QWidget& window);

    /// Shows a level in percent: held to 0 to 100, rounded, in the edit and on the slider. A level that is
    /// no number leaves the edit empty and the slider where it is.
    void showIntensity(int number, float percent);
    void showShutter(int number, bool open);
    void showColour(int number, const QColor& colour);
    void showVisible(int number, bool visible);
    void showName(int number, const QString& name);
    void showPercentage(int number, int percent); ///< the edit alone
    void moveSlider(int number, int percent);     ///< the slider alone

    QString percentageText(int number) const;
    QString nameText(int number) const;
    /// True while a slider is moved by the program, whose change nobody asked for.
    bool isMovingSlider() const { return m_movingSlider; }
    int sliderValue(int number) const;

    /// Shows the level that the device reported, and remembers it; without a level, shows the remembered one
    /// again, where there is one.
    void showReportedIntensity(int number, float percent);
    void showReportedIntensity(int number);
    void forgetReportedIntensities();

    /// For the device to report that a shutter has moved: a poll's round, and the time-out of one command
    /// before it.
    static constexpr std::chrono::milliseconds reportTime{2000};
    /// Notes that the device was asked to open or to close a shutter, until it reports the new state or has
    /// had time to.
    void noteShutterRequest(int number, bool open);
    void forgetRequests();
    /// True from the wish to close a shutter until the device reports it closed, or was asked to open it.
    bool isClosingPending(int number) const { return widgets(number).closing; }
    /// True from the wish to open a shutter until its report, or until the time for it is over.
    bool isOpeningPending(int number) const { return !widgets(number).opening.hasExpired(); }
    /// The other shutters that are open, or were asked to open and are not reported yet: clicks can be faster
    /// than the device's reports.
    int openShutterCountBeside(int number) const;

    /// Puts the slider's value back in place of a text that is no percentage; @p edit may be any object.
    void takeBackRefusedPercentage(const QObject* edit);

    /// The channel whose arrow image, or whose shutter button, @p object is; 0 for any other object.
    int channelOfArrows(const QObject* object) const;
    int channelOfShutterButton(const QObject* object) const;

    /// The small layout hides the lower part of every column but the last.
    void setCollapsed(bool collapsed);
    /// Pixels that the columns' contents need beyond the small layout's minimum height.
    int heightBeyondCollapsedMinimum() const;

    /// Lets @p filter see the events of all arrow images, shutter buttons and percentage edits.
    void installEventFilter(QObject* filter) const;
    /// Lets the percentage edits accept whole numbers from 0 to 100 only; @p owner owns the validator.
    void restrictPercentages(QObject* owner) const;

private:
    struct ChannelWidgets
    {
        QFrame* column = nullptr;
        QFrame* lowerPart = nullptr;
        QLineEdit* name = nullptr;
        QLineEdit* percentage = nullptr;
        QLabel* arrows = nullptr;
        QSlider* slider = nullptr;
        QPushButton* shutter = nullptr;
        std::optional<float> reportedPercent;
        QDeadlineTimer opening; ///< runs while an opening was asked for and may still be on its way
        bool closing = false;   ///< a closing was asked for and is not reported yet
    };

    ChannelWidgets& widgets(int number) { return m_widgets.at(static_cast<std::size_t>(number - 1)); }
    const ChannelWidgets& widgets(int number) const
    {
        return m_widgets.at(static_cast<std::size_t>(number - 1));
    }

    std::array<ChannelWidgets, channelCount> m_widgets;
    bool m_movingSlider = false;
};
