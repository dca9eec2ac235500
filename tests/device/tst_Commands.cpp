#include "device/Commands.h"

#include <QTest>

#include <cmath>
#include <limits>

class tst_Commands : public QObject
{
    Q_OBJECT

private slots:
    void builtLines_data();
    void builtLines();
    void refusedArguments_data();
    void refusedArguments();
    void intensityAlwaysHasTwoDecimals();
};

void tst_Commands::builtLines_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("expected");

    const QString name = QStringLiteral("405");
    const auto row = [](const char* title, const QByteArray& line, const char* expected) {
        QTest::newRow(title) << line << QByteArray(expected);
    };
    row("intensity", Commands::setIntensity(name, 12.5F), "set:405=12.50\n");
    row("intensity, whole", Commands::setIntensity(QStringLiteral("730"), 100.0F), "set:730=100.00\n");
    row("intensity, rounded", Commands::setIntensity(name, 33.336F), "set:405=33.34\n");
    row("intensity, none", Commands::setIntensity(name, 0.0F), "set:405=0.00\n");
    row("name with a placeholder", Commands::setIntensity(QStringLiteral("%2"), 1.0F), "set:%2=1.00\n");
    row("shutter open", Commands::setShutter(name, true), "shutter:405=1\n");
    row("shutter closed", Commands::setShutter(name, false), "shutter:405=0\n");
    row("inverted", Commands::setTtlInvert(name, true), "ttl_invert:405=1\n");
    row("not inverted", Commands::setTtlInvert(name, false), "ttl_invert:405=0\n");
    row("intensity from the host", Commands::setIntensityMode(1), "int_mode=pc\n");
    row("intensity from outside", Commands::setIntensityMode(0), "int_mode=ext\n");
    row("shutters from the host", Commands::setShutterMode(1), "sh_mode=pc\n");
    row("shutters from outside", Commands::setShutterMode(0), "sh_mode=ext\n");
    row("speckle on", Commands::setSpeckle(true), "speckle=on\n");
    row("speckle off", Commands::setSpeckle(false), "speckle=off\n");
    row("idle", Commands::setFunctionalMode(FunctionalModeIdle), "idle!\n");
    row("run", Commands::setFunctionalMode(FunctionalModeRun), "run!\n");
    row("sleep", Commands::setSleepTime(30), "sleep=30\n");
    row("sleep, none", Commands::setSleepTime(0), "sleep=0\n");
    row("sleep, largest", Commands::setSleepTime(65535), "sleep=65535\n");
    row("clear", Commands::clearFaults(), "clear\n");
    row("reset", Commands::resetDevice(), "reset\n");
    row("defaults", Commands::restoreDefaults(), "defaults\n");
}

void tst_Commands::builtLines()
{
    QFETCH(const QByteArray, line);
    QFETCH(const QByteArray, expected);
    QCOMPARE(line, expected);
}

void tst_Commands::refusedArguments_data()
{
    QTest::addColumn<QByteArray>("line");

    const QString name = QStringLiteral("405");
    QTest::newRow("warm-up") << Commands::setFunctionalMode(FunctionalModeWarmup);
    QTest::newRow("mode 3") << Commands::setFunctionalMode(3);
    QTest::newRow("mode -1") << Commands::setFunctionalMode(-1);
    QTest::newRow("intensity source 2") << Commands::setIntensityMode(2);
    QTest::newRow("intensity source -1") << Commands::setIntensityMode(-1);
    QTest::newRow("shutter source 2") << Commands::setShutterMode(2);
    QTest::newRow("shutter source -1") << Commands::setShutterMode(-1);
    QTest::newRow("no number") << Commands::setIntensity(name, std::numeric_limits<float>::quiet_NaN());
    QTest::newRow("infinite") << Commands::setIntensity(name, std::numeric_limits<float>::infinity());
    QTest::newRow("minus infinite") << Commands::setIntensity(name, -std::numeric_limits<float>::infinity());
}

void tst_Commands::refusedArguments()
{
    QFETCH(const QByteArray, line);
    QCOMPARE(line, QByteArray());
}

void tst_Commands::intensityAlwaysHasTwoDecimals()
{
    for (int hundredths = 0; hundredths <= 10000; ++hundredths) {
        const QByteArray line =
            Commands::setIntensity(QStringLiteral("528"), static_cast<float>(hundredths) / 100.0F);
        const QByteArray expected = "set:528=" + QByteArray::number(hundredths / 100) + '.' +
                                    QByteArray::number(hundredths % 100).rightJustified(2, '0') + '\n';
        QCOMPARE(line, expected);
    }
}

QTEST_GUILESS_MAIN(tst_Commands)
#include "tst_Commands.moc"
