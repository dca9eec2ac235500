#include "device/DeviceFixture.h"
#include "mainwindow/channel.h"

#include <QTest>

#include <limits>

using namespace DeviceTest;
using namespace std::chrono_literals;
using Operation = std::function<int(Device&)>;
Q_DECLARE_METATYPE(Operation)

namespace {
QString joined(const std::array<float, channelCount>& numbers)
{
    QStringList texts;
    for (const float number : numbers)
        texts.append(QString::number(double(number)));
    return texts.join(QLatin1Char(' '));
}

QString joined(const std::array<bool, channelCount>& flags)
{
    QString text;
    for (const bool flag : flags)
        text += QLatin1Char(flag ? '1' : '0');
    return text;
}

/// Each query as it tells its code and its output in words, so that one table serves all.
using Query = std::function<QString(Device&)>;

QString told(int code, const QString& value)
{
    return QString::number(code) + QLatin1Char(' ') + value;
}
} // namespace
Q_DECLARE_METATYPE(Query)

namespace {
void row(const QByteArray& line, const QByteArray& reply, const char* expected, const char* untouched,
         const Query& query)
{
    QTest::newRow(QByteArray(line + " " + reply.left(20).simplified()).constData())
        << query << line << reply << QString::fromLatin1(expected) << QString::fromLatin1(untouched);
}

void addStateQueries()
{
    const Query mode = [](Device& device) {
        FunctionalMode_t value = FunctionalModeWarmup;
        const int code = device.getFunctionalMode(value);
        return told(code, QString::number(int(value)));
    };
    row("f_mode?", "f_mode=RUN\n", "0 2", "-40010 0", mode);
    row("f_mode?", "f_mode=standby\n", "-40015 0", "-40010 0", mode);
    const Query sleep = [](Device& device) {
        quint8 value = 7;
        const int code = device.getSleepTime(value);
        return told(code, QString::number(value));
    };
    row("sleep?", "sleep=99\n", "0 99", "-40010 7", sleep);
    row("sleep?", "sleep=100\n", "-40015 7", "-40010 7", sleep);
    const Query source = [](Device& device) {
        ControlSource value{};
        const int code = device.getIntensityMode(value);
        return told(code, QString::number(int(value)));
    };
    row("int_mode?", "int_mode=PC\n", "0 1", "-40010 0", source);
    row("int_mode?", "int_mode=x\n", "-40015 0", "-40010 0", source);
    const Query fault = [](Device& device) {
        StateReport value;
        const int code = device.getFaultState(value);
        return told(code, QString::number(value.active) + value.message);
    };
    row("fault?", "OK\n", "0 0OK", "-40010 0", fault);
    row("fault?", "FAULT: fan\n", "0 1FAULT: fan", "-40010 0", fault);
    row("fault?", "Fault: x\n", "-40009 0Fault: x", "-40010 0", fault);
    row("warn?", "WARN: 555\n", "0 1WARN: 555", "-40010 0", [](Device& device) {
        StateReport value;
        const int code = device.getWarningState(value);
        return told(code, QString::number(value.active) + value.message);
    });
}

void addListQueries()
{
    const Query hours = [](Device& device) {
        OperatingHours value{};
        const int code = device.getHours(value);
        return told(code, joined(value));
    };
    row("hours?", "hours:405=1.5,445=2\n", "0 1.5 2 0 0 0 0 0 0", "-40010 0 0 0 0 0 0 0 0", hours);
    row("hours?", "ok\n", "-40009 0 0 0 0 0 0 0 0", "-40010 0 0 0 0 0 0 0 0", hours);
    row("shutter?", "shutter:open,closed,open\n", "0 10100000", "-40010 00000000", [](Device& device) {
        ShutterStates value{};
        const int code = device.getShutterStates(value);
        return told(code, joined(value));
    });
    const Query inverted = [](Device& device) {
        TtlInvertStates value{};
        const int code = device.getTTLInvertStates(value);
        return told(code, joined(value));
    };
    row("ttl_invert?", "ttl_invert:off,on\n", "0 01000000", "-40010 00000000", inverted);
    row("ttl_invert?", "off,on\n", "-40015 00000000", "-40010 00000000", inverted);
    const Query levels = [](Device& device) {
        IntensityLevels value{};
        const int code = device.getIntensityLevels(value);
        return told(code, joined(value));
    };
    row("set?", "set:405=12.5\n", "0 12.5 0 0 0 0 0 0 0", "-40010 0 0 0 0 0 0 0 0", levels);
    row("set?", "405=12.5\n", "-40009 0 0 0 0 0 0 0 0", "-40010 0 0 0 0 0 0 0 0", levels);
}

void addIdentityQueries()
{
    row("temps", "temps:Necsel=25,LaserCurrent=1\n", "0 25 1", "-40010  ", [](Device& device) {
        Temperatures value;
        const int code = device.getTemperatures(value);
        return told(code, value.necsel + QLatin1Char(' ') + value.laserCurrent);
    });
    for (const char* text : {"v", "v?a", "v?l"}) {
        row(text, "Loader V1.2.3\n", "0 Loader1.2.3", "-40010 0.0.0", [text](Device& device) {
            ImageVersion value;
            const int code = device.getVersion(text, value);
            return told(code, value.kind + value.version.toString());
        });
    }
    row("v", "Loader\n", "-40015 x9.9.9", "-40010 x9.9.9", [](Device& device) {
        ImageVersion value{QStringLiteral("x"), {9, 9, 9}};
        const int code = device.getVersion("v", value);
        return told(code, value.kind + value.version.toString());
    });
}

void addValidityAndProductQueries()
{
    const Query applicationValid = [](Device& device) {
        return QString::number(device.isApplicationValid());
    };
    row("isappvalid", "yes\n", "1", "0", applicationValid);
    row("isappvalid", "no\n", "0", "0", applicationValid);
    const Query loaderValid = [](Device& device) { return QString::number(device.isLoaderValid()); };
    row("isloadervalid", "Yes\n", "1", "0", loaderValid);
    row("isloadervalid", "Yes, really\n", "0", "0", loaderValid);
    const Query product = [](Device& device) {
        ProductConfig value;
        const int code = device.readProductConfig(value);
        return told(code, value.serialNumber);
    };
    row("prod_config", "prod_config:vyr_sn=S1\n", "0 S1", "-40010 ", product);
    row("prod_config", "ok\n", "-40009 ", "-40010 ", product);
}
} // namespace

class tst_DeviceCommands : public ConnectedTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void queries_data();
    void queries();
    void queriesOnAClosedPort_data() { queries_data(); }
    void queriesOnAClosedPort();
    void failedQueryLeavesItsOutput();
    void settings_data();
    void settings();
    void refusedSettingsSendNothing_data();
    void refusedSettingsSendNothing();
    void settingsOnAClosedPort_data() { settings_data(); }
    void settingsOnAClosedPort();
    void laserControllerInformation();
    void laserControllerThatUpdatesItself();
    void productConfigWaitsForAnIdleLine();
    void configLimit_data();
    void configLimit();
};

void tst_DeviceCommands::queries_data()
{
    QTest::addColumn<Query>("query");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("untouched");

    addStateQueries();
    addListQueries();
    addIdentityQueries();
    addValidityAndProductQueries();
}

void tst_DeviceCommands::queries()
{
    QFETCH(const Query, query);
    QFETCH(const QByteArray, line);
    QFETCH(const QByteArray, reply);
    QFETCH(const QString, expected);
    m_bench->setAnswer(line, reply);
    QCOMPARE(query(*m_device), expected);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{line});
}

void tst_DeviceCommands::queriesOnAClosedPort()
{
    QFETCH(const Query, query);
    QFETCH(const QString, untouched);
    Device closed;
    QCOMPARE(query(closed), untouched);
}

void tst_DeviceCommands::failedQueryLeavesItsOutput()
{
    m_bench->setAnswer("temps", "temps:\n", 60ms);
    QStringList nested;
    later(10ms, [&] {
        StateReport report{true, QStringLiteral("before")};
        ShutterStates states{true};
        nested = QStringList{QString::number(m_device->getFaultState(report)), report.message,
                             QString::number(m_device->getShutterStates(states)), joined(states),
                             QString::number(m_device->isApplicationValid())};
    });
    Temperatures readings;
    QCOMPARE(m_device->getTemperatures(readings), 0);
    const QStringList expected{QStringLiteral("-40013"), QStringLiteral("before"), QStringLiteral("-40013"),
                               QStringLiteral("10000000"), QStringLiteral("0")};
    QCOMPARE(nested, expected);
}

void tst_DeviceCommands::settings_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("line");

    const auto row = [](const QByteArray& line, const Operation& operation) {
        QTest::newRow(line.constData()) << operation << line;
    };
    for (const char* name : {"405", "445", "470", "520", "528", "555", "640", "730"}) {
        const auto withChannel = [name](const std::function<int(const channel&)>& action) {
            channel laser;
            laser.setWavelength(QString::fromLatin1(name));
            laser.setName(QStringLiteral("the operator's name"));
            return action(laser);
        };
        row("set:" + QByteArray(name) + "=12.50", [withChannel](Device& device) {
            return withChannel([&](const channel& laser) { return device.setIntensity(laser, 12.5F); });
        });
        row("shutter:" + QByteArray(name) + "=1", [withChannel](Device& device) {
            return withChannel([&](const channel& laser) { return device.setShutter(laser, true); });
        });
        row("shutter:" + QByteArray(name) + "=0", [withChannel](Device& device) {
            return withChannel([&](const channel& laser) { return device.setShutter(laser, false); });
        });
        row("ttl_invert:" + QByteArray(name) + "=1", [withChannel](Device& device) {
            return withChannel([&](const channel& laser) { return device.setTTLInvert(laser, true); });
        });
    }
    row("int_mode=pc", [](Device& device) { return device.setIntensityMode(1); });
    row("int_mode=ext", [](Device& device) { return device.setIntensityMode(0); });
    row("sh_mode=pc", [](Device& device) { return device.setShutterMode(1); });
    row("sh_mode=ext", [](Device& device) { return device.setShutterMode(0); });
    row("speckle=on", [](Device& device) { return device.setSpeckle(true); });
    row("speckle=off", [](Device& device) { return device.setSpeckle(false); });
    row("idle!", [](Device& device) { return device.setFunctionalMode(FunctionalModeIdle); });
    row("run!", [](Device& device) { return device.setFunctionalMode(FunctionalModeRun); });
    row("sleep=30", [](Device& device) { return device.setSleepTime(30); });
    row("clear", [](Device& device) { return device.clearFaults(); });
    row("reset", [](Device& device) { return device.resetDevice(); });
    row("defaults", [](Device& device) { return device.restoreDefaults(); });
}

void tst_DeviceCommands::settings()
{
    QFETCH(const Operation, operation);
    QFETCH(const QByteArray, line);
    QCOMPARE(operation(*m_device), 0);
    QVERIFY(m_bench->waitForLine(line));
    QCOMPARE(m_device->waitWhileBusy(), 0);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{line});
}

void tst_DeviceCommands::refusedSettingsSendNothing_data()
{
    QTest::addColumn<Operation>("operation");

    QTest::newRow("warm-up") << Operation(
        [](Device& device) { return device.setFunctionalMode(FunctionalModeWarmup); });
    QTest::newRow("mode 3") << Operation([](Device& device) { return device.setFunctionalMode(3); });
    QTest::newRow("intensity source") << Operation([](Device& device) { return device.setIntensityMode(2); });
    QTest::newRow("shutter source") << Operation([](Device& device) { return device.setShutterMode(-1); });
    QTest::newRow("intensity") << Operation([](Device& device) {
        return device.setIntensity(channel(), std::numeric_limits<float>::quiet_NaN());
    });
}

void tst_DeviceCommands::refusedSettingsSendNothing()
{
    QFETCH(const Operation, operation);
    QCOMPARE(operation(*m_device), -40014);
    QCOMPARE(m_device->sendCommand("end"), 0);
    QCOMPARE(m_bench->lines(), QList<QByteArray>{"end"});
    Device closed;
    QCOMPARE(operation(closed), -40010);
}

void tst_DeviceCommands::settingsOnAClosedPort()
{
    QFETCH(const Operation, operation);
    Device closed;
    QCOMPARE(operation(closed), -40010);
}

void tst_DeviceCommands::laserControllerInformation()
{
    NecselControllerInfo info{QStringLiteral("before"), QStringLiteral("before")};
    QCOMPARE(m_device->getNecselControllerInfo(info), 0);
    QCOMPARE(info.version, QStringLiteral("3.1"));
    QCOMPARE(info.serialNumber, QStringLiteral("N-77"));
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"necsel_controller_ver", "necsel_controller_sn"}));
    // The second is asked although the first was not understood.
    m_bench->setAnswer("necsel_controller_ver", "3.2\n");
    m_bench->setAnswer("necsel_controller_sn", "necsel_controller_sn=N-78\n");
    QCOMPARE(m_device->getNecselControllerInfo(info), -40009);
    QCOMPARE(info.version, QStringLiteral("3.1"));
    QCOMPARE(info.serialNumber, QStringLiteral("N-78"));
    QCOMPARE(m_device->deviceMode(), DeviceMode::Application);
}

void tst_DeviceCommands::laserControllerThatUpdatesItself()
{
    m_device->setPolling(true);
    m_bench->setAnswer("necsel_controller_ver", "Firmware Update 10%\n");
    NecselControllerInfo info;
    QCOMPARE(m_device->getNecselControllerInfo(info), 0);
    QCOMPARE(m_device->deviceMode(), DeviceMode::UpdatingLaserController);
    QCOMPARE(info.version, QString());
    QCOMPARE(info.serialNumber, QStringLiteral("N-77"));
    QVERIFY(!m_device->isApplicationConnected());
    m_bench->clearReceived();
    listenFor(600ms);
    QCOMPARE(m_bench->received().size(), 0); // polled no more
}

void tst_DeviceCommands::productConfigWaitsForAnIdleLine()
{
    m_bench->setAnswer("clear", "ok\n", 100ms);
    m_bench->setAnswer("prod_config", "prod_config:vyr_sn=S1\n");
    QCOMPARE(m_device->clearFaults(), 0);
    ProductConfig record;
    QCOMPARE(m_device->readProductConfig(record), 0);
    QCOMPARE(record.serialNumber, QStringLiteral("S1"));
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"clear", "prod_config"}));
}

void tst_DeviceCommands::configLimit_data()
{
    QTest::addColumn<QByteArray>("running");
    QTest::addColumn<bool>("above");

    QTest::newRow("loader at the limit") << QByteArray("Loader V1.4.6\n") << false;
    QTest::newRow("loader above") << QByteArray("Loader V1.4.7\n") << true;
    QTest::newRow("application at the limit") << QByteArray("VYRApp V2.6.2\n") << false;
    QTest::newRow("application above") << QByteArray("VYRApp V2.6.3\n") << true;
    QTest::newRow("application above the loader's") << QByteArray("VYRApp V1.4.7\n") << false;
    QTest::newRow("updater above the loader's") << QByteArray("LoaderUpdater V1.4.7\n") << false;
    QTest::newRow("no version") << QByteArray("Loader x\n") << false;
}

void tst_DeviceCommands::configLimit()
{
    QFETCH(const QByteArray, running);
    m_bench->setAnswer("v", running);
    m_device->selectPort({});
    QVERIFY(connectWithoutPoll(*m_device));
    QTEST(m_device->isVersionAboveConfigLimit(), "above");
}

QTEST_GUILESS_MAIN(tst_DeviceCommands)
#include "tst_DeviceCommands.moc"
