#include "QsLog2_1_0/DestinationFactory.h"
#include "QsLog2_1_0/Logger.h"
#include "diagnostics/DiagnosticsBench.h"
#include "mainwindow/SettingsStore.h"

#include <QSettings>
#include <QSysInfo>
#include <QTest>

#include <sys/stat.h>

namespace {
const QString always = QStringLiteral("Versions.txt Serial_Ports.txt Settings.ini ");

/// Changes a setting in the moment in which the program says that it begins.
class LateSetting final : public QsLogging::Destination
{
public:
    void write(const QString& message, QsLogging::LogLevel /*level*/) override
    {
        if (message.endsWith(QLatin1String("Saving diagnostics"))) {
            m_store->setValue(QStringLiteral("Late"), QStringLiteral("not on the disk yet"));
        }
    }
    bool isValid() override { return true; }
    QString type() const override { return QStringLiteral("late"); }

private:
    std::unique_ptr<QSettings> m_store = openSettingsStore();
};

class TemporaryDestination
{
public:
    explicit TemporaryDestination(QsLogging::DestinationPtr destination)
        : m_destination(std::move(destination))
    {
        QsLogging::Logger::instance().addDestination(m_destination);
    }
    ~TemporaryDestination() { QsLogging::Logger::instance().removeDestination(m_destination); }
    TemporaryDestination(const TemporaryDestination&) = delete;
    TemporaryDestination& operator=(const TemporaryDestination&) = delete;

private:
    QsLogging::DestinationPtr m_destination;
};
} // namespace

/// What is in the archive, and what is not.
class tst_DiagnosticsContents : public DiagnosticsTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { removeRoom(); }
    void everyMember();
    void logUpToTheClick();
    void settingsThatWereNotOnTheDisk();
    void choicesOfTheFirstRun();
    void settingsThatCannotBeSaved();
    void oddLogs_data();
    void oddLogs();
    void endOfAHugeLog();
    void nothingElse();
    void versions();
    void versionsInTheLoader();
    void versionsWithoutADevice();
    void versionsOfTheLastDevice();
    void foreignTextsStayOnTheirLines();
    void ports();
    void noPorts();

private:
    bool readIdentity();
    QStringList deviceLines();
};

void tst_DiagnosticsContents::init()
{
    QVERIFY(buildRoom());
    m_bench->store(QStringLiteral("Known"), 1);
}

/// The unit's serial numbers are asked for when the page that shows them comes to the front.
bool tst_DiagnosticsContents::readIdentity()
{
    return m_hand->clickTab(QStringLiteral("System Info")) &&
           QTest::qWaitFor([this] { return !m_hand->fieldText("lineEditVYRSerialNumber").isEmpty(); }) &&
           m_hand->clickTab(QStringLiteral("Update"));
}

void tst_DiagnosticsContents::everyMember()
{
    QString names = always + QStringLiteral("VYR_Log.txt");
    QVERIFY(write(logFile(), "0"));
    for (int i = 1; i <= 10; ++i) {
        QVERIFY(write(logFile(QStringLiteral(".%1").arg(i)), QByteArray::number(i).repeated(i)));
        names += QStringLiteral(" VYR_Log.txt.%1").arg(i);
    }
    const ZipContents archive = saved();
    QVERIFY(archive.isWhole());
    QCOMPARE(archive.names().join(QLatin1Char(' ')), names + QStringLiteral(" README.txt"));
    QCOMPARE(archive.content("VYR_Log.txt"), QByteArray("0"));
    for (int i = 1; i <= 10; ++i) {
        const QByteArray name = "VYR_Log.txt." + QByteArray::number(i);
        QCOMPARE(archive.content(name.constData()), QByteArray::number(i).repeated(i));
        QCOMPARE(archive.member(name.constData()).modified,
                 QFileInfo(logFolder() + QLatin1Char('/') + QString::fromLatin1(name))
                     .lastModified()
                     .toSecsSinceEpoch());
    }
    QCOMPARE(archive.content("Settings.ini"), m_bench->settingsFileContent());
    const QString readme = QString::fromUtf8(archive.content("README.txt"));
    const QStringList members = archive.names();
    for (const QString& name : members) {
        QCOMPARE(readme.count(QLatin1String("\n  ") + name + QLatin1String(": ")), 1);
    }
    QVERIFY(!readme.contains(QStringLiteral("Missing")));
    QVERIFY(readme.contains(QStringLiteral(" by version 02.07.00.")));
}

void tst_DiagnosticsContents::logUpToTheClick()
{
    const TemporaryDestination log(QsLogging::makeFileDestination(logFile(), true, 2'000'000, 25));
    const ZipContents archive = saved();
    QVERIFY(archive.content("VYR_Log.txt").endsWith(" Saving diagnostics\n"));
    QVERIFY(contentOf(logFile()).startsWith(archive.content("VYR_Log.txt")));
}

void tst_DiagnosticsContents::settingsThatWereNotOnTheDisk()
{
    const TemporaryDestination late(QSharedPointer<LateSetting>::create());
    const ZipContents archive = saved();
    QVERIFY(archive.content("Settings.ini").contains("Late=not on the disk yet\n"));
    QCOMPARE(archive.content("Settings.ini"), m_bench->settingsFileContent());
}

/// Most of them are put into the store only when the program ends.
void tst_DiagnosticsContents::choicesOfTheFirstRun()
{
    QVERIFY(QFile::remove(m_bench->settingsFileName()));
    Column(*m_window, 1).slider->setValue(33);
    emit m_hand->dialog().sleepTimerChanged(44);
    const ZipContents archive = saved();
    const QByteArray settings = archive.content("Settings.ini");
    QVERIFY2(settings.contains("\nChannel%20Intensity=33\n"), settings.constData());
    QVERIFY2(settings.contains("Sleep%20Timer=44\n"), settings.constData());
    QCOMPARE(settings, m_bench->settingsFileContent());
}

void tst_DiagnosticsContents::settingsThatCannotBeSaved()
{
    QVERIFY(QFile::remove(m_bench->settingsFileName()));
    QVERIFY(QDir().mkpath(m_bench->settingsFileName()));
    const ZipContents archive = saved();
    QVERIFY(archive.isWhole());
    QVERIFY(!archive.names().contains(QStringLiteral("Settings.ini")));
    const QByteArray readme = archive.content("README.txt");
    QVERIFY(readme.contains("\n  Settings.ini: not a file\n"));
    QVERIFY(
        readme.contains("\n  Settings.ini: as saved before, because the last changes could not be saved\n"));
}

void tst_DiagnosticsContents::oddLogs_data()
{
    QTest::addColumn<QString>("ending");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("remark");
    const QString notAFile = QStringLiteral("not a file");
    QTest::newRow("no log") << QString() << QString() << QStringLiteral("not there");
    QTest::newRow("folder") << QString() << QStringLiteral("folder") << notAFile;
    QTest::newRow("pipe") << QString() << QStringLiteral("pipe") << notAFile;
    QTest::newRow("link") << QString() << QStringLiteral("link") << notAFile;
    QTest::newRow("folder for a backup") << QStringLiteral(".1") << QStringLiteral("folder") << notAFile;
    QTest::newRow("pipe for a backup") << QStringLiteral(".4") << QStringLiteral("pipe") << notAFile;
    QTest::newRow("link for a backup") << QStringLiteral(".10") << QStringLiteral("link") << notAFile;
}

void tst_DiagnosticsContents::oddLogs()
{
    QFETCH(QString, ending);
    QFETCH(QString, kind);
    QFETCH(QString, remark);
    QVERIFY(write(m_home->path(QStringLiteral("secret")), "secret"));
    QVERIFY(write(logFile(QStringLiteral(".2")), "kept"));
    QVERIFY(ending.isEmpty() || write(logFile(), "kept"));
    const QString path = logFile(ending);
    if (kind == QLatin1String("folder")) {
        QVERIFY(QDir().mkpath(path));
    } else if (kind == QLatin1String("pipe")) {
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    } else if (kind == QLatin1String("link")) {
        QVERIFY(QFile::link(m_home->path(QStringLiteral("secret")), path));
    }
    const ZipContents archive = saved();
    QVERIFY(archive.isWhole());
    const QString name = QStringLiteral("VYR_Log.txt") + ending;
    QVERIFY(!archive.names().contains(name));
    QCOMPARE(archive.content("VYR_Log.txt.2"), QByteArray("kept"));
    const QString text = QString::fromUtf8(archive.content("README.txt"));
    QVERIFY(text.contains(QStringLiteral("\nMissing or not whole:\n\n")));
    QVERIFY(text.contains(QStringLiteral("\n  ") + name + QStringLiteral(": ") + remark + QLatin1Char('\n')));
}

void tst_DiagnosticsContents::endOfAHugeLog()
{
    QByteArray huge;
    huge.reserve(12'100'000); // else it moves with every line
    for (int i = 0; huge.size() < 12'000'000; ++i) {
        huge += "INFO  line " + QByteArray::number(i) + '\n';
    }
    QVERIFY(write(logFile(), huge));
    const ZipContents archive = saved();
    const QByteArray copied = archive.content("VYR_Log.txt");
    QVERIFY(copied.size() <= 2'500'000 && copied.size() > 2'499'000);
    QVERIFY(copied.startsWith("INFO  line "));
    QVERIFY(huge.endsWith(copied));
    const QString remark = QStringLiteral("\n  VYR_Log.txt: only the end of its %1 bytes\n").arg(huge.size());
    QVERIFY(QString::fromUtf8(archive.content("README.txt")).contains(remark));
}

void tst_DiagnosticsContents::nothingElse()
{
    QVERIFY(write(logFile(), "log"));
    for (const char* name :
         {"VYR_Log.txt.11", "VYR_Log.txt.0", "VYR_Log.txt.old", "CalibrationConfig.json", "a.txt"}) {
        QVERIFY(write(logFolder() + QLatin1Char('/') + QLatin1String(name), "private"));
    }
    qputenv("DIAGNOSTICS_CANARY", "private");
    const ZipContents archive = saved();
    qunsetenv("DIAGNOSTICS_CANARY");
    QCOMPARE(archive.names().join(QLatin1Char(' ')), always + QStringLiteral("VYR_Log.txt README.txt"));
    const QByteArray raw = contentOf(target());
    for (const char* name : {"Versions.txt", "Serial_Ports.txt", "README.txt"}) {
        const QString text = QString::fromUtf8(archive.content(name));
        QVERIFY(!text.contains(QDir::homePath()));
        QVERIFY(!text.contains(QStringLiteral("private")));
        QVERIFY(!text.contains(QSysInfo::machineHostName()));
        QVERIFY(!text.contains(QString::fromLatin1(QSysInfo::machineUniqueId())));
        QCOMPARE(archive.member(name).owner + archive.member(name).group, 0);
    }
    QVERIFY(!raw.contains(QFile::encodeName(QDir::homePath())));
}

/// The lines that tell of the device.
QStringList tst_DiagnosticsContents::deviceLines()
{
    const QString text = QString::fromUtf8(saved().content("Versions.txt"));
    return text.section(QStringLiteral("\n\n"), 1).split(QLatin1Char('\n'));
}

void tst_DiagnosticsContents::versions()
{
    QVERIFY(readIdentity());
    const QString text = QString::fromUtf8(saved().content("Versions.txt"));
    const QString expected =
        QStringLiteral("Program: 02.07.00\nQt: %1 at compile time, %2 at run time\n")
            .arg(QLatin1String(QT_VERSION_STR), QLatin1String(qVersion())) +
        QStringLiteral("Archive library: %1 at compile time, %2 at run time\n")
            .arg(QLatin1String(ARCHIVE_VERSION_STRING), QString::fromLatin1(archive_version_string())) +
        QStringLiteral("Operating system: %1\nKernel: %2 %3\nProcessor: %4\n\n")
            .arg(QSysInfo::prettyProductName(), QSysInfo::kernelType(), QSysInfo::kernelVersion(),
                 QSysInfo::currentCpuArchitecture()) +
        QStringLiteral("Device: connected on %1\n").arg(m_illuminator->bench().portName()) +
        QStringLiteral("Device runs: application\n"
                       "Running image: VYRApp 2.7.0\n"
                       "Stored application: VYRApp 2.7.0, valid\n"
                       "Stored loader: Loader 1.5.0, valid\n"
                       "VYR serial number: 1234\n"
                       "VYR part number: PN-7\n"
                       "Control board hardware: 1.2.3\n"
                       "Laser module serial number: V88\n"
                       "555 laser serial number: N55\n"
                       "555 controller serial number: 77\n"
                       "555 controller firmware: 3.4.1\n");
    QCOMPARE(text, expected);
}

void tst_DiagnosticsContents::versionsInTheLoader()
{
    removeRoom();
    QVERIFY(buildRoom(false));
    m_illuminator->image = "Loader V1.5.0";
    m_illuminator->bench().setResponder([this](const QByteArray& line) -> std::optional<Simulator::Answer> {
        if (line == "isappvalid") {
            return Simulator::Answer{"No\n", {}};
        }
        return line.isEmpty() ? std::nullopt : std::optional(m_illuminator->answerTo(line));
    });
    QVERIFY(plugIn());
    const QStringList lines = deviceLines();
    QCOMPARE(lines.value(1), QStringLiteral("Device runs: loader"));
    QCOMPARE(lines.value(2), QStringLiteral("Running image: Loader 1.5.0"));
    QCOMPARE(lines.value(3), QStringLiteral("Stored application: VYRApp 2.7.0, not valid"));
    QCOMPARE(lines.value(4), QStringLiteral("Stored loader: Loader 1.5.0, valid"));
}

void tst_DiagnosticsContents::versionsWithoutADevice()
{
    removeRoom();
    QVERIFY(buildRoom(false));
    const QStringList lines = deviceLines();
    QCOMPARE(lines.value(0), QStringLiteral("Device: not connected; what follows was told by the last one"));
    QCOMPARE(lines.value(1), QStringLiteral("Device runs: not identified"));
    QCOMPARE(lines.size(), 13);
    const QStringList facts = lines.mid(2, 10);
    for (const QString& line : facts) {
        QVERIFY2(line.endsWith(QStringLiteral(": not known")), qPrintable(line));
    }
}

void tst_DiagnosticsContents::versionsOfTheLastDevice()
{
    QVERIFY(readIdentity());
    m_illuminator->bench().wire().unplug();
    m_window->device()->checkConnectionStatus();
    QVERIFY(!m_window->device()->isOpen());
    const QStringList lines = deviceLines();
    QCOMPARE(lines.value(0), QStringLiteral("Device: not connected; what follows was told by the last one"));
    QCOMPARE(lines.value(2), QStringLiteral("Running image: VYRApp 2.7.0"));
    QCOMPARE(lines.value(5), QStringLiteral("VYR serial number: 1234"));
}

void tst_DiagnosticsContents::foreignTextsStayOnTheirLines()
{
    removeRoom();
    QVERIFY(buildRoom(false));
    m_illuminator->product =
        "vyr_hw_ver=%1%2,vyr_pn=<b>P</b>,vyr_sn=a\x1b[31m\rProgram: 9,necsel_laser_sn=,novalum_sn=\xe9";
    QVERIFY(plugIn());
    QVERIFY(readIdentity());
    const QStringList lines = deviceLines();
    QCOMPARE(lines.size(), 13);
    QCOMPARE(lines.value(5), QStringLiteral("VYR serial number: a?[31m?Program: 9"));
    QCOMPARE(lines.value(6), QStringLiteral("VYR part number: <b>P</b>"));
    QCOMPARE(lines.value(7), QStringLiteral("Control board hardware: %1%2"));
    QCOMPARE(lines.value(9), QStringLiteral("555 laser serial number: not known"));
}

void tst_DiagnosticsContents::ports()
{
    PortRegistration& listed = m_illuminator->bench().ports();
    listed.setSerialNumber(QStringLiteral("U-1"));
    listed.addPortInFront({QStringLiteral("ttyS0"), {}, {}});
    listed.addPortBehind({QStringLiteral("ttyACM7"), 0x03EB, 0x2404, QStringLiteral("U-2"),
                          QStringLiteral("VYR\nPort: x"), QStringLiteral("Tarnwick")});
    listed.addPortBehind({QStringLiteral("ttyACM8"), 0x00AB, 0x0001, QStringLiteral("telephone"), {}, {}});
    const auto block = [](const QString& name, const char* description, const char* manufacturer,
                          const char* vendor, const char* product, const QString& serial, const char* matches,
                          const char* used) {
        const auto line = [](const char* caption, const QString& value) {
            return QString(QLatin1String("  ") + QLatin1String(caption) + QLatin1String(": ") + value +
                           QLatin1Char('\n'));
        };
        return QString(QLatin1String("Port: ") + name + QLatin1Char('\n') +
                       line("Description", QLatin1String(description)) +
                       line("Manufacturer", QLatin1String(manufacturer)) +
                       line("Vendor identifier", QLatin1String(vendor)) +
                       line("Product identifier", QLatin1String(product)) +
                       (serial.isEmpty() ? QString() : line("USB serial number", serial)) +
                       line("Matches the illuminator", QLatin1String(matches)) +
                       line("In use by this program", QLatin1String(used)));
    };
    const char* const none = "not known";
    const QString expected = block(QStringLiteral("ttyS0"), none, none, none, none, {}, "no", "no") +
                             block(m_illuminator->bench().portName(), none, none, "2f26", "3a98",
                                   QStringLiteral("U-1"), "yes", "yes") +
                             block(QStringLiteral("ttyACM7"), "VYR?Port: x", "Tarnwick", "03eb", "2404",
                                   QStringLiteral("U-2"), "yes", "no") +
                             block(QStringLiteral("ttyACM8"), none, none, "00ab", "0001", {}, "no", "no");
    const QString text = QString::fromUtf8(saved().content("Serial_Ports.txt"));
    listed.removeAddedPorts();
    QCOMPARE(text, expected);
}

void tst_DiagnosticsContents::noPorts()
{
    m_illuminator->bench().wire().unplug();
    QCOMPARE(saved().content("Serial_Ports.txt"), QByteArray("There is no serial port.\n"));
}

QTEST_MAIN(tst_DiagnosticsContents)
#include "tst_DiagnosticsContents.moc"
