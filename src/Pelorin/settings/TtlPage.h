#pragma once

#include "device/DeviceTypes.h"

#include <QCoreApplication>

#include <array>

class QLabel;
class QRadioButton;
class QWidget;

/// What a high TTL input does to each shutter. Channels count from 0.
class TtlPage
{
    Q_DECLARE_TR_FUNCTIONS(TtlPage)

public:
    /// Finds its widgets below @p dialog, which keeps them.
    explicit TtlPage(const QWidget& dialog);

    void showInverted(int channelIndex, bool inverted); ///< inverted: a high input closes the shutter
    void showDefaults();                                ///< a high input opens every shutter
    void showShutterControl(bool external);             ///< in the line that tells who controls the shutters

private:
    struct Choice
    {
        QRadioButton* open = nullptr;
        QRadioButton* closed = nullptr;
    };

    std::array<Choice, channelCount> m_choices;
    QLabel* m_summary;
};
