#pragma once

class QLabel;
class QWidget;
struct Temperatures;

/// The live readings beside the system configuration.
class SystemConfigPage
{
public:
    /// Finds its widgets below @p dialog, which keeps them.
    explicit SystemConfigPage(const QWidget& dialog);

    /// The texts are the device's and are shown as they stand.
    void showReadings(const Temperatures& readings);

private:
    QLabel* m_necselTemperature;
    QLabel* m_necselCurrent;
    QLabel* m_novalumTemperature1;
    QLabel* m_novalumTemperature2;
    QLabel* m_laserFan;
    QLabel* m_heater;
};
