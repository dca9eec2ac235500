#include "settings/SystemInfoPage.h"

#include "forms/FormWidgets.h"

#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <QValidator>

#include <algorithm>

/// Keeps out what the device could not tell from the end of a text or of the whole line, and what is on no
/// type plate. What the device itself has sent is let through, as the rest of such a text must stay editable.
class IdentityValidator : public QValidator
{
public:
    using QValidator::QValidator;

    void setKnown(const QString& text) { m_known = text; }

    State validate(QString& text, int& position) const override
    {
        // A cell copied from a spreadsheet ends with its line.
        while (text.endsWith(QLatin1Char('\n')) || text.endsWith(QLatin1Char('\r'))) {
            text.chop(1);
        }
        position = static_cast<int>(std::min<QString::size_type>(position, text.size()));
        const auto isAllowed = [this](QChar character) {
            const bool isSeparator = character == QLatin1Char(',') || character == QLatin1Char('=');
            const bool isPrinted = character >= QLatin1Char(' ') && character <= QLatin1Char('~');
            return (isPrinted && !isSeparator) || m_known.contains(character);
        };
        return std::all_of(text.cbegin(), text.cend(), isAllowed) ? Acceptable : Invalid;
    }

private:
    QString m_known;
};

namespace {
void showText(QLineEdit* edit, const QString& text)
{
    edit->setText(text);
    edit->setCursorPosition(0);
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
    : m_productFields{{field(dialog, "lineEditVYRSerialNumber", &ProductConfig::serialNumber),
                       field(dialog, "lineEditVYRPartNumber", &ProductConfig::partNumber),
                       field(dialog, "lineEditNovalumSerialNumber", &ProductConfig::novalumSerialNumber),
                       field(dialog, "lineEditNecselLaserSerialNumber", &ProductConfig::necselSerialNumber)}},
      m_controllerSerialNumber(field(dialog, "lineEditNecselControllerSerialNumber", nullptr)),
      m_controllerVersion(formWidget<QLineEdit>(dialog, "lineEditNecselControllerVersion")),
      m_hardwareRevision(formWidget<QLineEdit>(dialog, "lineEditVYRHardwareRev")),
      m_firmware(formWidget<QLabel>(dialog, "labelControlBoardFirmwareVersion")),
      m_applicationSoftware(formWidget<QLabel>(dialog, "labelApplicationSoftwareVersion")),
      m_channelConfiguration(formWidget<QWidget>(dialog, "groupBoxChannelConfiguration")),
      m_setButton(formWidget<QWidget>(dialog, "pushButtonSetProductConfigData"))
{
}

SystemInfoPage::Field SystemInfoPage::field(const QWidget& dialog, const char* name,
                                            QString ProductConfig::*text)
{
    auto* const edit = formWidget<QLineEdit>(dialog, name);
    auto* const validator = new IdentityValidator(edit);
    edit->setValidator(validator);
    return {edit, text, validator};
}

void SystemInfoPage::setText(const Field& field, const QString& text)
{
    field.validator->setKnown(text);
    showText(field.edit, text);
}

void SystemInfoPage::setDevice(int number)
{
    if (m_deviceNumber == number) {
        return;
    }
    m_deviceNumber = number;
    m_product.reset();
    m_controller = {};
    m_controllerSerialNumber.edit->setModified(false);
    for (const Field& field : m_productFields) {
        field.edit->setModified(false);
    }
}

void SystemInfoPage::showProduct(const ProductConfig& product)
{
    m_product = product;
    for (const Field& field : m_productFields) {
        if (!field.edit->isModified()) {
            setText(field, product.*field.text);
        }
    }
    showText(m_hardwareRevision, hardwareRevisionText(product.hardwareVersion));
}

void SystemInfoPage::showController(const NecselControllerInfo& controller)
{
    // The loader is not asked for it.
    if (!controller.serialNumber.isEmpty() || !controller.version.isEmpty()) {
        m_controller = controller;
    }
    if (!m_controllerSerialNumber.edit->isModified()) {
        setText(m_controllerSerialNumber, m_controller.serialNumber);
    }
    showText(m_controllerVersion, m_controller.version);
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
    for (const Field& field : m_productFields) {
        field.edit->setReadOnly(!service);
    }
    m_controllerSerialNumber.edit->setReadOnly(!service);
    m_channelConfiguration->setVisible(service);
    m_setButton->setVisible(service);
}

std::optional<ProductConfig> SystemInfoPage::product() const
{
    std::optional<ProductConfig> product = m_product;
    if (product) {
        for (const Field& field : m_productFields) {
            *product.*field.text = field.edit->text();
        }
    }
    return product;
}

void SystemInfoPage::setWritten(const ProductConfig& product)
{
    m_product = product;
    ++m_writtenCount;
    for (const Field& field : m_productFields) {
        // What was typed while it was being written waits for the next time.
        if (field.edit->text() == product.*field.text) {
            field.edit->setModified(false);
        }
    }
    setText(m_controllerSerialNumber, m_controller.serialNumber);
}
