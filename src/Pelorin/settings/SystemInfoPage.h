#pragma once

#include <QString>

class QLabel;
class QLineEdit;
class QWidget;
struct NecselControllerInfo;
struct ProductConfig;

/// "1.2.3" as "01.02.03": three decimal numbers of at least two digits each; a number that is missing or
/// cannot be read counts as 0.
QString hardwareRevisionText(const QString& version);

/// The identity of the unit and the versions of its parts; all texts are the device's.
class SystemInfoPage
{
public:
    /// Finds its widgets below @p dialog, which keeps them.
    explicit SystemInfoPage(const QWidget& dialog);

    /// Leaves a field alone that the user is editing right now.
    void showProduct(const ProductConfig& product);
    void showController(const NecselControllerInfo& controller);
    void showFirmware(const QString& firmware); ///< of the control board
    void showApplicationSoftware(const QString& version);
    /// With the service level a unit can be given its identity: serial and part numbers can be edited, and
    /// the channel table is shown.
    void setServiceLevel(bool service);

private:
    QLineEdit* m_serialNumber;
    QLineEdit* m_partNumber;
    QLineEdit* m_novalumSerialNumber;
    QLineEdit* m_controllerSerialNumber;
    QLineEdit* m_necselSerialNumber;
    QLineEdit* m_controllerVersion;
    QLineEdit* m_hardwareRevision;
    QLabel* m_firmware;
    QLabel* m_applicationSoftware;
    QWidget* m_channelConfiguration;
    QWidget* m_setButton;
};
