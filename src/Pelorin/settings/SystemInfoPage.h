#pragma once

#include "device/DeviceTypes.h"

#include <QString>

#include <array>
#include <optional>

class IdentityValidator;
class QLabel;
class QLineEdit;
class QWidget;

/// "1.2.3" as "01.02.03": three decimal numbers of at least two digits each; a number that is missing or
/// cannot be read counts as 0.
QString hardwareRevisionText(const QString& version);

/// The identity of the unit and the versions of its parts; all texts are the device's. A field that the user
/// changed keeps his text, whatever is shown meanwhile, until it is written or another device comes.
class SystemInfoPage
{
public:
    /// Finds its widgets below @p dialog, which keeps them.
    explicit SystemInfoPage(const QWidget& dialog);

    /// Another @p number is another device: what was typed was not meant for it, and what it keeps is not
    /// known yet.
    void setDevice(int number);
    void showProduct(const ProductConfig& product);
    void showController(const NecselControllerInfo& controller);
    void showFirmware(const QString& firmware); ///< of the control board
    void showApplicationSoftware(const QString& version);
    /// With the service level a unit can be given its identity: serial and part numbers can be edited, and
    /// the channel table is shown.
    void setServiceLevel(bool service);

    /// The identity as the fields say it, with the hardware version as the device keeps it; none before
    /// showProduct() for this device.
    std::optional<ProductConfig> product() const;
    /// What the device told last, whatever was typed since.
    const std::optional<ProductConfig>& knownProduct() const { return m_product; }
    const NecselControllerInfo& knownController() const { return m_controller; }
    /// The device keeps @p product now. The controller's number is its own and comes back.
    void setWritten(const ProductConfig& product);
    /// Another one after each setWritten(): what was read before is no longer true.
    int writtenCount() const { return m_writtenCount; }

private:
    struct Field ///< one that the service level can edit
    {
        QLineEdit* edit;
        QString ProductConfig::*text; ///< null where the product has no place for it
        IdentityValidator* validator; ///< child of the edit
    };
    static Field field(const QWidget& dialog, const char* name, QString ProductConfig::*text);
    static void setText(const Field& field, const QString& text);

    std::array<Field, 4> m_productFields;
    Field m_controllerSerialNumber;
    QLineEdit* m_controllerVersion;
    QLineEdit* m_hardwareRevision;
    QLabel* m_firmware;
    QLabel* m_applicationSoftware;
    QWidget* m_channelConfiguration;
    QWidget* m_setButton;
    int m_deviceNumber = 0;
    int m_writtenCount = 0;
    std::optional<ProductConfig> m_product; ///< as the device keeps it
    NecselControllerInfo m_controller;      ///< as the device told it last
};
