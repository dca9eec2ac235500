#pragma once

#include "device/DeviceTypes.h"

#include <array>

class QLabel;
class QWidget;

/// How long each laser has been in use.
class OperatingInfoPage
{
public:
    /// Finds its labels below @p dialog, which keeps them.
    explicit OperatingInfoPage(const QWidget& dialog);

    /// Shows completed hours; a count that is no number shows as "? hrs".
    void showHours(const OperatingHours& hours);
    /// What is shown is another device's from now on.
    void setOutdated() { m_upToDate = false; }
    bool isUpToDate() const { return m_upToDate; }

private:
    std::array<QLabel*, channelCount> m_hours{};
    bool m_upToDate = false;
};
