#include "settings/ControlModePage.h"

#include "forms/FormWidgets.h"
#include "settings/OperatingChoices.h"

#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QSpinBox>

ControlModePage::ControlModePage(const QWidget& dialog)
    : m_intensityHost(formWidget<QRadioButton>(dialog, "radioButtonIntensityControlUSB")),
      m_intensityExternal(formWidget<QRadioButton>(dialog, "radioButtonIntensityControlExternal")),
      m_shutterHost(formWidget<QRadioButton>(dialog, "radioButtonShutterControlUSB")),
      m_shutterExternal(formWidget<QRadioButton>(dialog, "radioButtonShutterControlExternal")),
      m_despecklerOn(formWidget<QRadioButton>(dialog, "radioButtonDespecklerOn")),
      m_despecklerOff(formWidget<QRadioButton>(dialog, "radioButtonDespecklerOff")),
      m_sleepEnabled(formWidget<QCheckBox>(dialog, "checkBoxSleepTimer")),
      m_sleepMinutes(formWidget<QSpinBox>(dialog, "spinBoxSleepTimer")),
      m_verboseLogging(formWidget<QCheckBox>(dialog, "checkBoxEnhancedDiags")),
      m_summary(formWidget<QLabel>(dialog, "labelControlModeSummary"))
{
    refresh();
}

void ControlModePage::show(const OperatingChoices& choices)
{
    (choices.isIntensityControlHost() ? m_intensityHost : m_intensityExternal)->setChecked(true);
    (choices.isShutterControlHost() ? m_shutterHost : m_shutterExternal)->setChecked(true);
    (choices.speckleReducer ? m_despecklerOn : m_despecklerOff)->setChecked(true);
    m_sleepEnabled->setChecked(choices.sleepTimerEnabled);
    m_sleepMinutes->setValue(choices.sleepMinutes);
    m_verboseLogging->setChecked(choices.verboseLogging);
    refresh();
}

void ControlModePage::showDefaults()
{
    m_shutterHost->setChecked(true);
    m_intensityHost->setChecked(true);
    m_despecklerOn->setChecked(true);
    refresh();
}

bool ControlModePage::isShutterControlExternal() const
{
    return m_shutterExternal->isChecked();
}

void ControlModePage::refresh()
{
    m_sleepMinutes->setEnabled(m_sleepEnabled->isChecked());
    const QString shutters = isShutterControlExternal()
                                 ? tr("Shutters follow the external inputs; the shutter buttons are off.")
                                 : tr("Shutters are opened and closed by this program.");
    const QString intensities = m_intensityExternal->isChecked()
                                    ? tr("Intensities follow the external inputs; the sliders are off.")
                                    : tr("Intensities are set by this program.");
    m_summary->setText(shutters + QLatin1Char(' ') + intensities);
}
