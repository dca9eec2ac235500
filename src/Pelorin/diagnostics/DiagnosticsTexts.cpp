#include "diagnostics/DiagnosticsTexts.h"

#include "device/Device.h"

#include <QSysInfo>

#include <algorithm>
#include <archive.h>

namespace {
/// A device's text can end no line and steer no terminal.
QString printed(QString text)
{
    std::replace_if(
        text.begin(), text.end(),
        [](QChar character) { return !character.isPrint() && !character.isSurrogate(); }, QLatin1Char('?'));
    return text;
}

void addLine(QString& text, const char* caption, const QString& value)
{
    text += QLatin1String(caption) % QLatin1String(": ") %
            (value.isEmpty() ? QStringLiteral("not known") : printed(value)) % QLatin1Char('\n');
}

QString compiledAndRunning(const char* compiled, const QString& running)
{
    return QLatin1String(compiled) % QLatin1String(" at compile time, ") % running %
           QLatin1String(" at run time");
}

QString yesOrNo(bool yes)
{
    return yes ? QStringLiteral("yes") : QStringLiteral("no");
}

QString modeText(DeviceMode mode)
{
    switch (mode) {
    case DeviceMode::Loader:
        return QStringLiteral("loader");
    case DeviceMode::LoaderUpdater:
        return QStringLiteral("loader updater");
    case DeviceMode::Application:
        return QStringLiteral("application");
    case DeviceMode::UpdatingLaserController:
        return QStringLiteral("application, which updates the laser controller");
    case DeviceMode::Other:
        return QStringLiteral("another image");
    case DeviceMode::NotIdentified:
        break;
    }
    return QStringLiteral("not identified");
}

QString imageText(const ImageVersion& image)
{
    return image.kind.isEmpty() ? QString()
                                : QString(image.kind % QLatin1Char(' ') % image.version.toString());
}

QString imageText(const ImageVersion& image, bool isValid)
{
    return image.kind.isEmpty() ? QString()
                                : QString(imageText(image) % (isValid ? QLatin1String(", valid")
                                                                      : QLatin1String(", not valid")));
}

void addDevice(QString& text, const Device& device)
{
    const QString port = device.portName();
    addLine(text, "Device",
            device.isOpen() ? QString(QLatin1String("connected on ") % port)
                            : QStringLiteral("not connected; what follows was told by the last one"));
    addLine(text, "Device runs", modeText(device.deviceMode()));
    addLine(text, "Running image", imageText(device.runningVersion()));
    addLine(text, "Stored application", imageText(device.applicationVersion(), device.applicationValid()));
    addLine(text, "Stored loader", imageText(device.loaderVersion(), device.loaderValid()));
}

void addIdentity(QString& text, const KnownIdentity& identity)
{
    const ProductConfig product = identity.product.value_or(ProductConfig{});
    addLine(text, "VYR serial number", product.serialNumber);
    addLine(text, "VYR part number", product.partNumber);
    addLine(text, "Control board hardware", product.hardwareVersion);
    addLine(text, "Laser module serial number", product.novalumSerialNumber);
    addLine(text, "555 laser serial number", product.necselSerialNumber);
    addLine(text, "555 controller serial number", identity.controller.serialNumber);
    addLine(text, "555 controller firmware", identity.controller.version);
}

QString hexadecimal(std::optional<quint16> identifier)
{
    return identifier ? QStringLiteral("%1").arg(*identifier, 4, 16, QLatin1Char('0')) : QString();
}

QString listOf(const QStringList& lines)
{
    QString text;
    for (const QString& line : lines) {
        text += QLatin1String("  ") % line % QLatin1Char('\n');
    }
    return text;
}
} // namespace

QString DiagnosticsTexts::versions(const QString& programVersion, const Device* device,
                                   const KnownIdentity& identity)
{
    QString text;
    addLine(text, "Program", programVersion);
    addLine(text, "Qt", compiledAndRunning(QT_VERSION_STR, QLatin1String(qVersion())));
    addLine(text, "Archive library",
            compiledAndRunning(ARCHIVE_VERSION_STRING, QString::fromLatin1(archive_version_string())));
    addLine(text, "Operating system", QSysInfo::prettyProductName());
    addLine(text, "Kernel", QSysInfo::kernelType() % QLatin1Char(' ') % QSysInfo::kernelVersion());
    addLine(text, "Processor", QSysInfo::currentCpuArchitecture());
    text += QLatin1Char('\n');
    if (device != nullptr) {
        addDevice(text, *device);
        addIdentity(text, identity);
    }
    return text;
}

QString DiagnosticsTexts::serialPorts(const QList<SerialPortEntry>& ports, const QString& openPort)
{
    if (ports.isEmpty()) {
        return QStringLiteral("There is no serial port.\n");
    }
    QString text;
    for (const SerialPortEntry& port : ports) {
        const bool isIlluminator = SerialPorts::isIlluminator(port);
        addLine(text, "Port", port.name);
        addLine(text, "  Description", port.description);
        addLine(text, "  Manufacturer", port.manufacturer);
        addLine(text, "  Vendor identifier", hexadecimal(port.vendorId));
        addLine(text, "  Product identifier", hexadecimal(port.productId));
        // Of other devices, such as a telephone, it would be nobody's business.
        if (isIlluminator) {
            addLine(text, "  USB serial number", port.serialNumber);
        }
        addLine(text, "  Matches the illuminator", yesOrNo(isIlluminator));
        addLine(text, "  In use by this program", yesOrNo(!openPort.isEmpty() && port.name == openPort));
    }
    return text;
}

QString DiagnosticsTexts::readme(const QString& programVersion, const QDateTime& now,
                                 const QStringList& members, const QStringList& remarks)
{
    QString text =
        QStringLiteral("Diagnostics of the VYR control program\n\nSaved on ") %
        now.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")) % QStringLiteral(" by version ") %
        printed(programVersion) %
        QStringLiteral(
            ".\n\n"
            "Send this archive to whoever helps you with the illuminator or its program. All of it is plain\n"
            "text: please look through it before, and leave out what you do not want to give away.\n\n"
            "It holds:\n\n") %
        listOf(members);
    if (!remarks.isEmpty()) {
        text += QStringLiteral("\nMissing or not whole:\n\n") % listOf(remarks);
    }
    return text %
           QStringLiteral(
               "\nThe log files tell when the program ran, what it did and what the device answered; the\n"
               "settings hold your choices and the names of your channels and scenarios. Both may name\n"
               "folders of this computer, and with them its user. Nothing else was taken from it.\n");
}
