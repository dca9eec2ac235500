#include "settings/SystemConfigPage.h"

#include "device/DeviceTypes.h"
#include "settings/FormWidgets.h"

#include <QCoreApplication>
#include <QLabel>

namespace {
QString tr(const char* text)
{
    return QCoreApplication::translate("SystemConfigPage", text);
}
} // namespace

SystemConfigPage::SystemConfigPage(const QWidget& dialog)
    : m_necselTemperature(formWidget<QLabel>(dialog, "labelNecselTemp")),
      m_necselCurrent(formWidget<QLabel>(dialog, "labelNecselCurrent")),
      m_novalumTemperature1(formWidget<QLabel>(dialog, "labelNovalumTempS1")),
      m_novalumTemperature2(formWidget<QLabel>(dialog, "labelNovalumTempS2")),
      m_laserFan(formWidget<QLabel>(dialog, "labelLaserFan")),
      m_heater(formWidget<QLabel>(dialog, "labelHeater"))
{
}

void SystemConfigPage::showReadings(const Temperatures& readings)
{
    m_necselTemperature->setText(tr("Necsel Temp: %1 C").arg(readings.necsel));
    m_necselCurrent->setText(tr("Necsel Current: %1 A").arg(readings.laserCurrent));
    m_novalumTemperature1->setText(tr("Novalum Temp S1: %1 C").arg(readings.novalum1));
    m_novalumTemperature2->setText(tr("Novalum Temp S2: %1 C").arg(readings.novalum2));
    m_laserFan->setText(tr("Laser Fan Speed: %1").arg(readings.laserFan));
    m_heater->setText(tr("Heater: %1").arg(readings.heater));
}
