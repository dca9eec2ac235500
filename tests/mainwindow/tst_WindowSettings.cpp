#include "QsLog2_1_0/QsLog.h"
#include "device/Device.h"
#include "mainwindow/WindowBench.h"
#include "scenario/Scenario.h"
#include "settings/SettingsDialog.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <functional>
#include <memory>

/// What a window keeps for the next one, and the choices that it carries out.
class tst_WindowSettings : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_bench = std::make_unique<WindowBench>(); }
    void cleanup() { m_bench.reset(); }
    void emptyStore();
    void everythingSurvivesARestart();
    void oddNamesSurviveARestart();
    void layoutSurvivesARestart();
    void nothingIsWrittenBeforeTheEnd();
    void unknownKeysSurvive();
    void unreadableFileStartsWithDefaultsAndIsKept();
    void settingsThatCannotBeWrittenAreTold();
    void storedNonsenseIsHarmless();
    void sleepTimer_data();
    void sleepTimer();
    void sleepTimerSendsWhatItShows();
    void sleepTimerWithoutPort();
    void speckle();
    void lastPortIsStored();
    void storedChoicesAreSentOnConnecting();
    void storedChannelsAreShown();
    void storedVerboseLoggingIsApplied();

private:
    void restart(const std::function<void(PelorinMainWindow&)>& use);

    std::unique_ptr<WindowBench> m_bench;
};

void tst_WindowSettings::restart(const std::function<void(PelorinMainWindow&)>& use)
{
    const auto window = m_bench->start();
    use(*window);
    QVERIFY(window->close());
    window->saveSettings();
}

void tst_WindowSettings::emptyStore()
{
    const auto window = m_bench->start();
    QCOMPARE(window->device()->portName(), QStringLiteral("COM4"));
    QCOMPARE(label(*window, "labelSleepTimer")->text(), QStringLiteral("Sleep Timer: 30 min"));
    QCOMPARE(label(*window, "labelShutterControl")->text(), QStringLiteral("Shutter Control: USB"));
    QCOMPARE(label(*window, "labelIntensityControl")->text(), QStringLiteral("Intensity Control: USB"));
    QCOMPARE(QsLogging::Logger::instance().level(), QsLogging::LogLevel::Info);
    QVERIFY(!Column(*window, 1).lowerPart->isHidden());
    QCOMPARE(Column(*window, 1).frame->minimumHeight(), 551);
    QCOMPARE(m_bench->settingsFileContent(), QByteArray());
}

void tst_WindowSettings::everythingSurvivesARestart()
{
    restart([](PelorinMainWindow& window) {
        Column(window, 2).slider->setValue(64);
        Column(window, 7).name->setText(QStringLiteral("Red"));
        QTest::keyClick(Column(window, 7).name, Qt::Key_Return);
        SettingsDialog* dialog = window.settingsDialog();
        emit dialog->shutterControlChanged(0);
        emit dialog->intensityControlChanged(0);
        emit dialog->sleepTimerChanged(12);
        emit dialog->sleepTimerEnableChanged(false);
        emit dialog->speckleControlChanged(0);
        emit dialog->invertTTLChanged(3, true);
        emit dialog->comPortChanged(QStringLiteral("ttyACM9"));
    });
    restart([](PelorinMainWindow& window) {
        QCOMPARE(Column(window, 2).percentage->text(), QStringLiteral("64"));
        QCOMPARE(Column(window, 2).slider->value(), 64);
        QCOMPARE(window.scenario()->channelByNumber(2)->intensity(), 64.0F);
        QCOMPARE(Column(window, 7).name->text(), QStringLiteral("Red"));
        QCOMPARE(label(window, "labelShutterControl")->text(),
                 QStringLiteral("Shutter Control: External Digital"));
        QCOMPARE(label(window, "labelIntensityControl")->text(),
                 QStringLiteral("Intensity Control: External Analog"));
        QCOMPARE(label(window, "labelSleepTimer")->text(), QStringLiteral("Sleep Timer Disabled"));
        QVERIFY(window.scenario()->channelByNumber(4)->isTtlInverted());
        QCOMPARE(window.device()->portName(), QStringLiteral("ttyACM9"));
        emit window.settingsDialog()->sleepTimerEnableChanged(true);
        QCOMPARE(label(window, "labelSleepTimer")->text(), QStringLiteral("Sleep Timer: 12 min"));
    });
    QCOMPARE(m_bench->stored(QStringLiteral("Speckle Reducer Enable")).toBool(), false);
    QCOMPARE(m_bench->stored(QStringLiteral("Sleep Timer Enabled")).toBool(), true);
    // A shutter is never stored, so it can never open by itself.
    QVERIFY(!m_bench->settingsFileContent().contains("Channel Shutter="));
}

void tst_WindowSettings::oddNamesSurviveARestart()
{
    const QStringList names{QString(500, QLatin1Char('%')),
                            QStringLiteral("a/b\\c"),
                            QStringLiteral("\"quoted\" 'x'"),
                            QStringLiteral("two\nlines\r\n"),
                            QStringLiteral("%1 %2 %n"),
                            QString(),
                            QString::fromUtf8("Grün 光 \xF0\x9F\x94\xA6"),
                            QStringLiteral("[General];#=@ByteArray(x)")};
    restart([&names](PelorinMainWindow& window) {
        for (int i = 0; i < 8; ++i) {
            emit window.channelNameChanged(window.scenario()->channels().at(i), names.at(i));
        }
    });
    restart([&names](PelorinMainWindow& window) {
        for (int i = 0; i < 8; ++i) {
            QCOMPARE(window.scenario()->channels().at(i)->name(), names.at(i));
        }
    });
}

void tst_WindowSettings::layoutSurvivesARestart()
{
    QRect geometry;
    restart([&geometry](PelorinMainWindow& window) {
        QTest::mouseClick(window.findChild<QPushButton*>(QStringLiteral("pushButtonExpandCollapseWindow")),
                          Qt::LeftButton);
        window.setGeometry(40, 50, 790, 430);
        geometry = window.geometry();
    });
    restart([&geometry](PelorinMainWindow& window) {
        QVERIFY(Column(window, 1).lowerPart->isHidden());
        QCOMPARE(Column(window, 8).frame->minimumHeight(), 100);
        QCOMPARE(window.findChild<QPushButton*>(QStringLiteral("pushButtonExpandCollapseWindow"))->text(),
                 QStringLiteral("Expand"));
        QCOMPARE(window.geometry(), geometry);
        QTest::mouseClick(window.findChild<QPushButton*>(QStringLiteral("pushButtonExpandCollapseWindow")),
                          Qt::LeftButton);
    });
    restart([](PelorinMainWindow& window) { QVERIFY(!Column(window, 1).lowerPart->isHidden()); });
}

void tst_WindowSettings::nothingIsWrittenBeforeTheEnd()
{
    const auto window = m_bench->start();
    Column(*window, 1).slider->setValue(50);
    emit window->settingsDialog()->sleepTimerChanged(3);
    QCoreApplication::processEvents();
    QCOMPARE(m_bench->settingsFileContent(), QByteArray());
}

void tst_WindowSettings::unknownKeysSurvive()
{
    m_bench->store(QStringLiteral("Browse Path"), QStringLiteral("/somewhere"));
    m_bench->store(QStringLiteral("Scenarios/size"), 1);
    m_bench->store(QStringLiteral("Scenarios/1/Scenario Name"), QStringLiteral("Night"));
    restart([](PelorinMainWindow& window) {
        QCOMPARE(window.scenario()->names(), QStringList(QStringLiteral("Night")));
    });
    QCOMPARE(m_bench->stored(QStringLiteral("Browse Path")).toString(), QStringLiteral("/somewhere"));
    QCOMPARE(m_bench->stored(QStringLiteral("Scenarios/1/Scenario Name")).toString(),
             QStringLiteral("Night"));
}

void tst_WindowSettings::unreadableFileStartsWithDefaultsAndIsKept()
{
    QByteArray garbage(3000, '\xff');
    garbage.insert(1000, "\n[Channel1\nno meaning\n");
    QVERIFY(m_bench->writeSettingsFile(garbage));
    restart([](PelorinMainWindow& window) {
        QCOMPARE(label(window, "labelSleepTimer")->text(), QStringLiteral("Sleep Timer: 30 min"));
    });
    QFile copy(m_bench->settingsFileName() + QStringLiteral(".unreadable"));
    QVERIFY(copy.open(QIODevice::ReadOnly));
    QCOMPARE(copy.readAll(), garbage);
    QCOMPARE(m_bench->stored(QStringLiteral("Sleep Timer")).toInt(), 30);
    QCOMPARE(m_bench->log().count(QStringLiteral("Settings could not be saved")), 0);
}

void tst_WindowSettings::settingsThatCannotBeWrittenAreTold()
{
    QVERIFY(QDir().mkpath(m_bench->settingsFileName()));
    restart([](PelorinMainWindow& window) { QVERIFY(window.isVisible()); });
    // Once for the layout, once for the rest.
    QCOMPARE(m_bench->log().count(QStringLiteral("Settings could not be saved"), QsLogging::LogLevel::Error),
             2);
}

void tst_WindowSettings::storedNonsenseIsHarmless()
{
    m_bench->store(QStringLiteral("Channel1/Channel Intensity"), QStringLiteral("nan"));
    m_bench->store(QStringLiteral("Channel2/Channel Intensity"), 1e30);
    m_bench->store(QStringLiteral("Channel3/Channel Color"), QStringLiteral("noc0lr"));
    m_bench->store(QStringLiteral("Sleep Timer"), 1000000);
    m_bench->store(QStringLiteral("Shutter Control"), 77);
    m_bench->store(QStringLiteral("geometry"), QByteArray("garbage"));
    m_bench->store(QStringLiteral("windowState"), QByteArray("\1\2\3"));
    const auto window = m_bench->start();
    QCOMPARE(window->scenario()->channelByNumber(1)->intensity(), 0.0F);
    QCOMPARE(Column(*window, 1).percentage->text(), QStringLiteral("0"));
    QCOMPARE(window->scenario()->channelByNumber(2)->intensity(), 100.0F);
    QCOMPARE(Column(*window, 2).slider->value(), 100);
    QCOMPARE(window->scenario()->channelByNumber(3)->colour(), QColor(0, 0xc0, 0));
    QCOMPARE(label(*window, "labelSleepTimer")->text(), QStringLiteral("Sleep Timer: 99 min"));
    QCOMPARE(label(*window, "labelShutterControl")->text(),
             QStringLiteral("Shutter Control: External Digital"));
}

void tst_WindowSettings::sleepTimer_data()
{
    QTest::addColumn<int>("minutes");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("45 enabled") << 45 << true << QStringLiteral("Sleep Timer: 45 min")
                                << QByteArray("sleep=45");
    QTest::newRow("45 disabled") << 45 << false << QStringLiteral("Sleep Timer Disabled")
                                 << QByteArray("sleep=0");
    QTest::newRow("0 enabled") << 0 << true << QStringLiteral("Sleep Timer Disabled")
                               << QByteArray("sleep=0");
    QTest::newRow("99 enabled") << 99 << true << QStringLiteral("Sleep Timer: 99 min")
                                << QByteArray("sleep=99");
}

void tst_WindowSettings::sleepTimer()
{
    QFETCH(int, minutes);
    QFETCH(bool, enabled);
    QFETCH(QByteArray, command);
    FakeIlluminator illuminator;
    const auto window = m_bench->start();
    QVERIFY(illuminator.connectTo(*window));
    emit window->settingsDialog()->sleepTimerEnableChanged(enabled);
    QVERIFY(illuminator.settle(*window));
    illuminator.clearCommands();
    emit window->settingsDialog()->sleepTimerChanged(minutes);
    QTEST(label(*window, "labelSleepTimer")->text(), "text");
    QVERIFY(illuminator.settle(*window));
    QCOMPARE(illuminator.commands(), QList<QByteArray>{command});
}

void tst_WindowSettings::sleepTimerSendsWhatItShows()
{
    FakeIlluminator illuminator;
    const auto window = m_bench->start();
    QVERIFY(illuminator.connectTo(*window));
    emit window->settingsDialog()->sleepTimerChanged(45);
    QVERIFY(illuminator.settle(*window));
    illuminator.clearCommands();
    emit window->settingsDialog()->sleepTimerEnableChanged(false);
    QVERIFY(illuminator.settle(*window));
    emit window->settingsDialog()->sleepTimerEnableChanged(true);
    QVERIFY(illuminator.settle(*window));
    QCOMPARE(illuminator.commands(), QList<QByteArray>({"sleep=0", "sleep=45"}));
}

void tst_WindowSettings::sleepTimerWithoutPort()
{
    const auto window = m_bench->start();
    m_bench->log().clear();
    emit window->settingsDialog()->sleepTimerChanged(5);
    QCOMPARE(m_bench->log().lines(), QStringList());
    // The check box does not look whether a device is there.
    emit window->settingsDialog()->sleepTimerEnableChanged(true);
    QCOMPARE(m_bench->log().count(QStringLiteral("Set Sleep Time Enable error -40010"),
                                  QsLogging::LogLevel::Error),
             1);
    QCOMPARE(label(*window, "labelSleepTimer")->text(), QStringLiteral("Sleep Timer: 5 min"));
}

void tst_WindowSettings::speckle()
{
    FakeIlluminator illuminator;
    const auto window = m_bench->start();
    QVERIFY(illuminator.connectTo(*window));
    illuminator.clearCommands();
    emit window->settingsDialog()->speckleControlChanged(0);
    QVERIFY(illuminator.settle(*window));
    emit window->settingsDialog()->speckleControlChanged(1);
    QVERIFY(illuminator.settle(*window));
    QCOMPARE(illuminator.commands(), QList<QByteArray>({"speckle=off", "speckle=on"}));
}

void tst_WindowSettings::lastPortIsStored()
{
    FakeIlluminator illuminator;
    QString port;
    restart([&](PelorinMainWindow& window) {
        QVERIFY(illuminator.connectTo(window));
        port = illuminator.bench().portName();
    });
    QCOMPARE(m_bench->stored(QStringLiteral("Device Com Port")).toString(), port);
}

void tst_WindowSettings::storedChoicesAreSentOnConnecting()
{
    m_bench->store(QStringLiteral("Sleep Timer Enabled"), false);
    m_bench->store(QStringLiteral("Sleep Timer"), 45);
    m_bench->store(QStringLiteral("Shutter Control"), 0);
    m_bench->store(QStringLiteral("Intensity Control"), 0);
    m_bench->store(QStringLiteral("Speckle Reducer Enable"), false);
    FakeIlluminator illuminator;
    const auto window = m_bench->start();
    QVERIFY(illuminator.connectTo(*window));
    const QList<QByteArray> commands = illuminator.commands();
    for (const char* command : {"sleep=0", "sh_mode=ext", "int_mode=ext", "speckle=off"}) {
        QVERIFY2(commands.contains(command), command);
    }
    // Where the device's inputs are in control, levels and shutters are theirs.
    for (const QByteArray& command : commands) {
        QVERIFY2(!command.startsWith("set:") && !command.startsWith("shutter:"), command.constData());
    }
    QCOMPARE(label(*window, "labelSleepTimer")->text(), QStringLiteral("Sleep Timer Disabled"));
}

void tst_WindowSettings::storedChannelsAreShown()
{
    m_bench->store(QStringLiteral("Channel7/Channel Visible"), false);
    m_bench->store(QStringLiteral("Channel8/Channel Color"), QStringLiteral("0a0b0c"));
    const auto window = m_bench->start();
    QVERIFY(Column(*window, 7).frame->isHidden());
    QVERIFY(!Column(*window, 8).frame->isHidden());
    QVERIFY(Column(*window, 8).slider->styleSheet().contains(QLatin1String("background:#0a0b0c;")));
}

void tst_WindowSettings::storedVerboseLoggingIsApplied()
{
    m_bench->store(QStringLiteral("Verbose Data Logging"), true);
    const auto window = m_bench->start();
    QCOMPARE(QsLogging::Logger::instance().level(), QsLogging::LogLevel::Trace);
    window->onEnhancedDiagsChanged(false);
    QCOMPARE(QsLogging::Logger::instance().level(), QsLogging::LogLevel::Info);
}

QTEST_MAIN(tst_WindowSettings)
#include "tst_WindowSettings.moc"
