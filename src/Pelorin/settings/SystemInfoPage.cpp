#include "settings/SystemInfoPage.h"

#include "device/DeviceTypes.h"
#include "settings/FormWidgets.h"

#include <QLabel>
#include <QLineEdit>
#include <QStringList>

namespace {
void show(QLineEdit* field, const QString& text)
{
    if (field->hasFocus() && field->isModified()) {
        return;
    }
    field->setText(text);
    field->setCursorPosition(0);
}
} // namespace

QString hardwareRevisionText(const QString& version)
{
    const QStringList numbers = version.split(QLatin1Char('.'));
    QStringList shown;
    for (int i = 0; i < 3; ++i) {
        const uint number = numbers.value(i).trimmed().toUInt();
        shown.append(QString::number(number).rightJustified(2, QLatin1Char('0')));
    }
    return shown.join(QLatin1Char('.'));
}

SystemInfoPage::SystemInfoPage(const QWidget& dialog)
    : m_serialNumber(formWidget<QLineEdit>(dialog, "lineEditVYRSerialNumber")),
      m_partNumber(formWidget<QLineEdit>(dialog, "lineEditVYRPartNumber")),
      m_novalumSerialNumber(formWidget<QLineEdit>(dialog, "lineEditNovalumSerialNumber")),
      m_controllerSerialNumber(formWidget<QLineEdit>(dialog, "lineEditNecselControllerSerialNumber")),
      m_necselSerialNumber(formWidget<QLineEdit>(dialog, "lineEditNecselLaserSerialNumber")),
      m_controllerVersion(formWidget<QLineEdit>(dialog, "lineEditNecselControllerVersion")),
      m_hardwareRevision(formWidget<QLineEdit>(dialog, "lineEditVYRHardwareRev")),
      m_firmware(formWidget<QLabel>(dialog, "labelControlBoardFirmwareVersion")),
      m_applicationSoftware(formWidget<QLabel>(dialog, "labelApplicationSoftwareVersion")),
      m_channelConfiguration(formWidget<QWidget>(dialog, "groupBoxChannelConfiguration")),
      m_setButton(formWidget<QWidget>(dialog, "pushButtonSetProductConfigData"))
{
}

void SystemInfoPage::showProduct(const ProductConfig& product)
{
    show(m_serialNumber, product.serialNumber);
    show(m_partNumber, product.partNumber);
    show(m_novalumSerialNumber, product.novalumSerialNumber);
    show(m_necselSerialNumber, product.necselSerialNumber);
    show(m_hardwareRevision, hardwareRevisionText(product.hardwareVersion));
}

void SystemInfoPage::showController(const NecselControllerInfo& controller)
{
    show(m_controllerSerialNumber, controller.serialNumber);
    show(m_controllerVersion, controller.version);
}

void SystemInfoPage::showFirmware(const QString& firmware)
{
    m_firmware->setText(firmware);
}

void SystemInfoPage::showApplicationSoftware(const QString& version)
{
    m_applicationSoftware->setText(version);
}

void SystemInfoPage::setServiceLevel(bool service)
{
    for (QLineEdit* field : {m_serialNumber, m_partNumber, m_novalumSerialNumber, m_controllerSerialNumber,
                             m_necselSerialNumber}) {
        field->setReadOnly(!service);
    }
    m_channelConfiguration->setVisible(service);
    m_setButton->setVisible(service);
}
