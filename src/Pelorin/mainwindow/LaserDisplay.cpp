#include "mainwindow/LaserDisplay.h"

#include "Resources/Resources.h"
#include "forms/FormWidgets.h"

#include <QLabel>
#include <QPixmap>
#include <QStringList>

namespace {
constexpr char onOffOn[] = "Laser On.png";
constexpr char onOffOff[] = "LaserOff.png";
constexpr char onOffDisconnected[] = "LaserDisconnected.png";
constexpr char statusOn[] = "Circle_LaserOn.png";
constexpr char statusReady[] = "Circle_LaserReady.png";
constexpr char statusWarmup[] = "Circle_LaserWarmup.png";
constexpr char statusFault[] = "Circle_LaserFault.png";
constexpr char statusInterlock[] = "Circle_LaserInterlock.png";
constexpr char statusOff[] = "Circle_LaserOff.png";
constexpr char fiberOn[] = "ledBlue80x80.png";
constexpr char fiberOff[] = "ledBlue80x80OFF.png";

void setPicture(QLabel* label, const char* name)
{
    label->setPixmap(loadPicture(QLatin1String(":/Resources/laser_output_area/") + QLatin1String(name)));
}

QString statusWord(const LaserState& state)
{
    if (state.fault) {
        return LaserDisplay::tr("Fault");
    }
    switch (state.mode) {
    case FunctionalModeWarmup:
        return LaserDisplay::tr("Warm-up");
    case FunctionalModeRun:
        return LaserDisplay::tr("Run");
    case FunctionalModeIdle:
        break;
    }
    return LaserDisplay::tr("Idle");
}

/// The image's name where it is another one than the application, which tells its state itself.
QString imageWord(DeviceMode running)
{
    switch (running) {
    case DeviceMode::Loader:
        return LaserDisplay::tr("Loader");
    case DeviceMode::LoaderUpdater:
        return LaserDisplay::tr("Loader updater");
    case DeviceMode::NotIdentified:
    case DeviceMode::Application:
    case DeviceMode::UpdatingLaserController:
    case DeviceMode::Other:
        break;
    }
    return {};
}

const char* statusPicture(const LaserState& state)
{
    if (state.mode == FunctionalModeRun) {
        return state.fault ? statusFault : statusOn;
    }
    if (state.mode == FunctionalModeWarmup) {
        return state.fault ? statusFault : statusWarmup;
    }
    if (state.fault) {
        return state.interlockImage ? statusInterlock : statusFault;
    }
    return statusReady;
}
} // namespace

LaserDisplay::LaserDisplay(const QWidget& window)
    : m_onOff(formWidget<QLabel>(window, "labelLaserOnOff")),
      m_status(formWidget<QLabel>(window, "labelLaserStatus")),
      m_statusText(formWidget<QLabel>(window, "labelLaserStatusText")),
      m_necselFiber(formWidget<QLabel>(window, "labelNecselFiber")),
      m_novalumFiber(formWidget<QLabel>(window, "labelNovalumFiber")),
      m_intensityControl(formWidget<QLabel>(window, "labelIntensityControl")),
      m_shutterControl(formWidget<QLabel>(window, "labelShutterControl")),
      m_sleepTimer(formWidget<QLabel>(window, "labelSleepTimer")),
      m_systemId(formWidget<QLabel>(window, "labelSystemId")), m_systemIdToolTip(m_systemId->toolTip())
{
    m_systemId->setTextFormat(Qt::PlainText);
    // The form has the pictures; the words that a screen reader says for them come with the states.
    showDisconnected();
}

void LaserDisplay::showState(const LaserState& state)
{
    const bool isOn = state.mode == FunctionalModeRun && !state.fault;
    showOnOff(isOn ? onOffOn : onOffOff, isOn ? tr("Laser on") : tr("Laser off"));
    showStatus(statusPicture(state), statusWord(state));
    const bool ready = !state.fault && (state.mode == FunctionalModeIdle || state.mode == FunctionalModeRun);
    showFiber(m_novalumFiber, state.noNovalumWarning && ready);
    showFiber(m_necselFiber, state.no555Warning && ready);
}

void LaserDisplay::showConnected(DeviceMode running)
{
    const QString word = imageWord(running);
    if (word.isEmpty()) {
        m_statusText->clear();
    } else {
        // Nothing will be reported of a laser that this image does not drive.
        showStatus(statusOff, word);
        showFiber(m_necselFiber, false);
        showFiber(m_novalumFiber, false);
    }
    showLaserOff();
}

void LaserDisplay::showDisconnected()
{
    showOnOff(onOffDisconnected, tr("Disconnected"));
    showStatus(statusOff, tr("Disconnected"));
    showFiber(m_necselFiber, false);
    showFiber(m_novalumFiber, false);
}

void LaserDisplay::showLaserOff()
{
    showOnOff(onOffOff, tr("Laser off"));
}

void LaserDisplay::showOnOff(const char* picture, const QString& meaning) const
{
    setPicture(m_onOff, picture);
    m_onOff->setAccessibleDescription(meaning);
}

void LaserDisplay::showStatus(const char* picture, const QString& word) const
{
    setPicture(m_status, picture);
    m_status->setAccessibleDescription(word);
    m_statusText->setText(word);
}

void LaserDisplay::showFiber(QLabel* label, bool lit) const
{
    setPicture(label, lit ? fiberOn : fiberOff);
    label->setAccessibleDescription(lit ? tr("Lit") : tr("Dark"));
}

void LaserDisplay::showIntensityControl(bool host)
{
    m_intensityControl->setText(host ? tr("Intensity Control: USB")
                                     : tr("Intensity Control: External Analog"));
}

void LaserDisplay::showShutterControl(bool host)
{
    m_shutterControl->setText(host ? tr("Shutter Control: USB") : tr("Shutter Control: External Digital"));
}

void LaserDisplay::showSleepTimer(int minutes)
{
    m_sleepTimer->setText(minutes == 0 ? tr("Sleep Timer Disabled") : tr("Sleep Timer: %1 min").arg(minutes));
}

void LaserDisplay::showFirmware(const QString& firmware)
{
    m_systemId->setText(firmware);
}

void LaserDisplay::showIdentity(const ProductConfig& product, const QString& firmware)
{
    showFirmware(firmware);
    if (!product.serialNumber.isEmpty()) {
        m_systemId->setText(
            QString(tr("SN %1").arg(product.serialNumber) + QLatin1String("  ") + m_systemId->text())
                .trimmed());
    }
    // A tool tip takes what looks like markup for markup, and these texts are the device's.
    const auto line = [](const QString& caption, const QString& value) {
        return QString(caption + QLatin1String(": ") + value.toHtmlEscaped());
    };
    const QStringList lines{line(tr("VYR Serial Number"), product.serialNumber),
                            line(tr("Necsel Serial Number"), product.necselSerialNumber),
                            line(tr("Novalum Serial Number"), product.novalumSerialNumber),
                            line(tr("VYR Hardware Version"), product.hardwareVersion),
                            line(tr("VYR Part Number"), product.partNumber)};
    m_systemId->setToolTip(QLatin1String("<p style='white-space:pre'>") + lines.join(QLatin1String("<br>")) +
                           QLatin1String("</p>"));
}

void LaserDisplay::clearIdentity()
{
    m_systemId->clear();
    m_systemId->setToolTip(m_systemIdToolTip);
}

bool LaserDisplay::isOnOffImage(const QObject* object) const
{
    return object == m_onOff;
}

bool LaserDisplay::isStatusImage(const QObject* object) const
{
    return object == m_status;
}

void LaserDisplay::installEventFilter(QObject* filter) const
{
    m_onOff->installEventFilter(filter);
    m_status->installEventFilter(filter);
}
