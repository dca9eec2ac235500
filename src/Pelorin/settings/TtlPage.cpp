#include "settings/TtlPage.h"

#include "forms/FormWidgets.h"
#include "mainwindow/ChannelTable.h"

#include <QLabel>
#include <QRadioButton>

TtlPage::TtlPage(const QWidget& dialog) : m_summary(formWidget<QLabel>(dialog, "labelTTLSummary"))
{
    for (int index = 0; index < channelCount; ++index) {
        const QString wavelength = ChannelTable::wavelength(index);
        Choice& choice = m_choices.at(static_cast<std::size_t>(index));
        choice.open = formWidget<QRadioButton>(
            dialog, QString(QLatin1String("radioButtonTTLShutterOpen") + wavelength));
        choice.closed = formWidget<QRadioButton>(
            dialog, QString(QLatin1String("radioButtonTTLShutterClosed") + wavelength));
    }
    showShutterControl(false);
}

void TtlPage::showInverted(int channelIndex, bool inverted)
{
    const Choice& choice = m_choices.at(static_cast<std::size_t>(channelIndex));
    (inverted ? choice.closed : choice.open)->setChecked(true);
}

void TtlPage::showDefaults()
{
    for (int index = 0; index < channelCount; ++index) {
        showInverted(index, false);
    }
}

void TtlPage::showShutterControl(bool external)
{
    m_summary->setText(external
                           ? tr("Shutters follow the external inputs; the shutter buttons are off.")
                           : tr("Shutters are opened and closed by this program; the external inputs have no "
                                "effect now."));
}
