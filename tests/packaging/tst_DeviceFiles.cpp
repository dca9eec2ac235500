#include "UdevRules.h"
#include "device/SerialPorts.h"

#include <QFile>
#include <QtTest>

/// What is installed for the device: the rule for its port, and the identifiers wherever they stand.
class DeviceFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyRuleIsUnderstood();
    void ruleSetsWhatItShould_data();
    void ruleSetsWhatItShould();
    void metadataNameTheDevices();
    void startScriptFindsTheDevices();

private:
    static QString contentOf(const char* file);

    QList<UdevRules::Rule> m_rules;
};

namespace {
struct Pair
{
    const char* vendor;
    const char* product;
};
/// In the kernel's spelling.
constexpr Pair illuminators[] = {{"2f26", "3a98"}, {"03eb", "2404"}};

bool programKnows(const Pair& pair)
{
    const auto number = [](const char* text) { return QByteArray(text).toUShort(nullptr, 16); };
    SerialPortEntry port;
    port.vendorId = number(pair.vendor);
    port.productId = number(pair.product);
    return SerialPorts::isIlluminator(port);
}
} // namespace

QString DeviceFilesTest::contentOf(const char* file)
{
    QFile opened(QStringLiteral(VYR_SOURCE_DIR "/") + QLatin1String(file));
    return opened.open(QIODevice::ReadOnly) ? QString::fromUtf8(opened.readAll()) : QString();
}

void DeviceFilesTest::initTestCase()
{
    m_rules = UdevRules::parse(contentOf("packaging/70-vyr.rules"));
    for (const Pair& pair : illuminators) {
        QVERIFY2(programKnows(pair), pair.vendor);
    }
}

void DeviceFilesTest::everyRuleIsUnderstood()
{
    QVERIFY(!m_rules.isEmpty());
    for (const UdevRules::Rule& rule : std::as_const(m_rules)) {
        QVERIFY(!rule.isEmpty());
    }
}

void DeviceFilesTest::ruleSetsWhatItShould_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("subsystem");
    QTest::addColumn<QString>("vendor");
    QTest::addColumn<QString>("product");
    QTest::addColumn<QString>("expected");
    const QString port = QStringLiteral("ENV{ID_MM_DEVICE_IGNORE}=1 GROUP=dialout MODE=0660 TAG=uaccess");
    const QString device = QStringLiteral("ENV{ID_MM_DEVICE_IGNORE}=1");
    for (const Pair& pair : illuminators) {
        QTest::addRow("port %s", pair.vendor) << "add"
                                              << "tty" << pair.vendor << pair.product << port;
        QTest::addRow("port again %s", pair.vendor) << "change"
                                                    << "tty" << pair.vendor << pair.product << port;
        QTest::addRow("device %s", pair.vendor) << "add"
                                                << "usb" << pair.vendor << pair.product << device;
        QTest::addRow("gone %s", pair.vendor) << "remove"
                                              << "tty" << pair.vendor << pair.product << "";
        QTest::addRow("no port %s", pair.vendor) << "add"
                                                 << "input" << pair.vendor << pair.product << "";
        QTest::addRow("other product %s", pair.vendor) << "add"
                                                       << "tty" << pair.vendor << "0001"
                                                       << "";
        QTest::addRow("other vendor %s", pair.vendor) << "add"
                                                      << "tty"
                                                      << "0403" << pair.product << "";
    }
    QTest::newRow("mixed pair") << "add"
                                << "tty" << illuminators[0].vendor << illuminators[1].product << "";
}

void DeviceFilesTest::ruleSetsWhatItShould()
{
    QFETCH(QString, action);
    QFETCH(QString, subsystem);
    QFETCH(QString, vendor);
    QFETCH(QString, product);
    QFETCH(QString, expected);

    // The port tells of the USB device above it, the device of itself.
    const QString attribute =
        subsystem == QLatin1String("usb") ? QStringLiteral("ATTR{%1}") : QStringLiteral("ATTRS{%1}");
    QMap<QString, QString> device{{QStringLiteral("ACTION"), action},
                                  {QStringLiteral("SUBSYSTEM"), subsystem},
                                  {attribute.arg(QStringLiteral("idVendor")), vendor},
                                  {attribute.arg(QStringLiteral("idProduct")), product}};
    if (subsystem == QLatin1String("usb")) {
        device.insert(QStringLiteral("ENV{DEVTYPE}"), QStringLiteral("usb_device"));
    }
    const QMap<QString, QString> set = UdevRules::apply(m_rules, device);
    QStringList found;
    for (auto it = set.cbegin(); it != set.cend(); ++it) {
        found.append(it.key() + QLatin1Char('=') + it.value());
    }
    QCOMPARE(found.join(QLatin1Char(' ')), expected);
}

void DeviceFilesTest::metadataNameTheDevices()
{
    const QString metadata = contentOf("packaging/desktop/com.tarnwick.vyr.metainfo.xml.in");
    for (const Pair& pair : illuminators) {
        const QString expected =
            QStringLiteral("<modalias>usb:v%1p%2d*</modalias>")
                .arg(QString::fromLatin1(pair.vendor).toUpper(), QString::fromLatin1(pair.product).toUpper());
        QVERIFY2(metadata.contains(expected), qPrintable(expected));
    }
    QCOMPARE(metadata.count(QStringLiteral("<modalias>")), 2);
}

void DeviceFilesTest::startScriptFindsTheDevices()
{
    QStringList pairs;
    for (const Pair& pair : illuminators) {
        pairs.append(QStringLiteral("%1:%2").arg(QLatin1String(pair.vendor), QLatin1String(pair.product)));
    }
    QVERIFY(
        contentOf("scripts/run").contains(pairs.join(QStringLiteral(" | ")) + QStringLiteral(") return 0")));
}

QTEST_GUILESS_MAIN(DeviceFilesTest)
#include "tst_DeviceFiles.moc"
