#include "settings/SystemConfigPage.h"

#include "device/DeviceTypes.h"
#include "settings/FormWidgets.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>

#include <algorithm>

namespace {
QString tr(const char* text)
{
    return QCoreApplication::translate("SystemConfigPage", text);
}
/// The form's widths are pixels; with larger type a calibration value would not fit its cell.
void fitToFont(QTableWidget& table)
{
    constexpr int horizontalPadding = 14;
    constexpr int verticalPadding = 6;
    const QFontMetrics metrics = table.fontMetrics();
    QHeaderView* const columns = table.horizontalHeader();
    columns->setDefaultSectionSize(
        std::max(columns->defaultSectionSize(),
                 metrics.horizontalAdvance(QStringLiteral("-32768")) + horizontalPadding));
    QHeaderView* const rows = table.verticalHeader();
    rows->setDefaultSectionSize(std::max(rows->defaultSectionSize(), metrics.height() + verticalPadding));
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
    for (const char* name :
         {"tableWidgetNecselParams", "tableWidgetFanParams", "tableWidgetHeaterParams",
          "tableWidgetJigglerSpeed", "tableWidgetNovalumParams", "tableWidgetNovalumParams2"}) {
        fitToFont(*formWidget<QTableWidget>(dialog, name));
    }
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
