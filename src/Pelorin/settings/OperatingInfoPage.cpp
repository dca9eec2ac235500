#include "settings/OperatingInfoPage.h"

#include "forms/FormWidgets.h"
#include "mainwindow/ChannelTable.h"

#include <QCoreApplication>
#include <QLabel>

#include <cmath>

namespace {
QString tr(const char* text)
{
    return QCoreApplication::translate("OperatingInfoPage", text);
}

QString hoursText(float hours)
{
    if (!std::isfinite(hours)) {
        return tr("? hrs");
    }
    return tr("%1 hrs").arg(QString::number(std::trunc(static_cast<double>(hours)), 'f', 0));
}
} // namespace

OperatingInfoPage::OperatingInfoPage(const QWidget& dialog)
{
    for (int index = 0; index < channelCount; ++index) {
        m_hours.at(static_cast<std::size_t>(index)) = formWidget<QLabel>(
            dialog, QString(QLatin1String("labelOperatingHours") + ChannelTable::wavelength(index)));
    }
}

void OperatingInfoPage::showHours(const OperatingHours& hours)
{
    m_upToDate = true;
    for (std::size_t index = 0; index < m_hours.size(); ++index) {
        m_hours.at(index)->setText(hoursText(hours.at(index)));
    }
}
