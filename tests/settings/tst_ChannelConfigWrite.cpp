#include "settings/ChannelBench.h"
#include "support/BoxAnswerer.h"

#include <algorithm>

namespace {
using namespace std::chrono_literals;
const QString connectFirst = QStringLiteral("Please connect to device");
const QString loaderFirst = QStringLiteral("Device must be running loader for this command.");
} // namespace

/// "Set Configuration Data", from the cells to the unit.
class tst_ChannelConfigWrite : public ChannelDialogTest
{
    Q_OBJECT

private slots:
    void init() { buildDialog(); }
    void cleanup() { removeRoom(); }
    void wholeWrite();
    void column_data();
    void column();
    void colour_data();
    void colour();
    void bytesOfNoCellAreKept();
    void bytesOfNoCellAreReadFirst_data();
    void bytesOfNoCellAreReadFirst();
    void bytesOfNoCellCannotBeRead_data();
    void bytesOfNoCellCannotBeRead();
    void limit_data();
    void limit();
    void applicationLimit_data();
    void applicationLimit();
    void refused_data();
    void refused();
    void refusedDuringAnUpdate();
    void doubleClick();
    void queryOnItsWay();
    void changedWhileItIsWritten();

private:
    void editInApplication(const QByteArray& image);
};

void tst_ChannelConfigWrite::wholeWrite()
{
    m_unit.channels = QByteArray(channelConfigSize, '\x5a');
    connectUnit();
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(sawDone(boxes));
    const QList<QByteArray> lines = written();
    QCOMPARE(lines.size(), writeLines().size());
    for (int i = 0; i < lines.size(); ++i) {
        QVERIFY2(lines.at(i).startsWith(writeLines().at(i)), lines.at(i).constData());
    }
    QCOMPARE(lines.first(), QByteArray("prod_config:vyr_hw_ver=1.2.3,vyr_pn=PN-7,vyr_sn=SN-1,"
                                       "necsel_laser_sn=N55,novalum_sn=V88"));
    QCOMPARE(lines.last(), QByteArray("setchanconfigvalid"));
}

void tst_ChannelConfigWrite::column_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("isEnabled");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("primaryIndex");
    QTest::addColumn<QByteArray>("entry");
    QTest::newRow("first") << 0 << true << 6 << QStringLiteral("R") << -1
                           << QByteArray::fromHex("010652000000ff1300000000");
    QTest::newRow("custom") << 4 << true << 8 << QStringLiteral("aÿ,=") << -1
                            << QByteArray::fromHex("010861ff2c3d000000000000");
    QTest::newRow("secondary") << 7 << true << 0 << QString() << 7
                               << QByteArray::fromHex("0100000000004900bc010700");
    QTest::newRow("not in use") << 2 << false << 3 << QStringLiteral("1234") << 5
                                << QByteArray::fromHex("00033132333424ff00010500");
}

void tst_ChannelConfigWrite::column()
{
    QFETCH(int, column);
    QFETCH(bool, isEnabled);
    QFETCH(int, type);
    QFETCH(QString, text);
    QFETCH(int, primaryIndex);
    QFETCH(QByteArray, entry);
    connectUnit();
    QTRY_COMPARE(name(column)->text(), QString());
    enabled(column)->setChecked(true);
    laser(column)->setCurrentIndex(2);
    laser(column)->setCurrentIndex(type);
    name(column)->setText(text);
    if (type == 8) {
        color(column)->clear();
    }
    secondary(column)->setChecked(primaryIndex >= 0);
    primary(column)->setCurrentIndex(qMax(0, primaryIndex));
    enabled(column)->setChecked(isEnabled);
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(sawDone(boxes));
    QCOMPARE(m_unit.entry(column).toHex(), entry.toHex());
    QCOMPARE(m_unit.channels.size(), channelConfigSize);
    QCOMPARE(m_unit.channels.count('\0'), channelConfigSize - entry.size() + entry.count('\0'));
}

void tst_ChannelConfigWrite::colour_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char* text, const char* hex) {
        QTest::newRow(text) << QString::fromUtf8(text) << QByteArray(hex);
    };
    row("0a1b2c", "0a1b2c");
    row("FFfeFD", "fffefd");
    row("zz00ff", "0000ff");
    row("12zz56", "120056");
    row("1234zz", "123400");
    row("", "000000");
    row("1", "000000");
    row("12", "120000");
    row("123", "120000");
    row("12345", "123400");
    row("+1-1 1", "000000");
    row("0x0x0x", "000000");
    row(" 12345", "002345");
    row("é1١٢ff", "0000ff");
}

void tst_ChannelConfigWrite::colour()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    connectUnit();
    color(3)->setText(text);
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(sawDone(boxes));
    QCOMPARE(m_unit.entry(3).mid(6, 3).toHex(), bytes);
    QCOMPARE(color(3)->text(), text);
}

void tst_ChannelConfigWrite::bytesOfNoCellAreKept()
{
    QByteArray read(channelConfigSize, '\0');
    std::generate(read.begin(), read.end(), [n = 0]() mutable { return char(++n); });
    m_unit.channels = read;
    connectUnit();
    QTRY_COMPARE(laser(7)->currentIndex(), 8);
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(sawDone(boxes));
    QCOMPARE(m_unit.channels.left(4), read.left(4));
    QVERIFY(m_unit.channels != read);
}

/// Arrives in the loader with a changed table and a record that was never read: not because of its
/// application, or because it was not valid, and not on the way, as nobody wants to see it then.
void tst_ChannelConfigWrite::editInApplication(const QByteArray& image)
{
    m_unit.image = image;
    m_unit.channels = QByteArray(channelConfigSize, '\x5a');
    connectDevice();
    QVERIFY(m_illuminator->bench().waitForLine("hours?")); // the last that is asked for
    type("lineEditChannelName1", QStringLiteral("mine"));
    QCOMPARE(m_device->goLoader(), int(DeviceResult::Ok));
    QVERIFY(!m_device->knownChannelConfig());
}

void tst_ChannelConfigWrite::bytesOfNoCellAreReadFirst_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<bool>("wasValid");
    QTest::newRow("older application") << QByteArray("VYRApp V2.6.2") << true;
    QTest::newRow("not valid before") << QByteArray("VYRApp V2.7.0") << false;
}

void tst_ChannelConfigWrite::bytesOfNoCellAreReadFirst()
{
    QFETCH(QByteArray, image);
    QFETCH(bool, wasValid);
    m_unit.channelsValid = wasValid;
    editInApplication(image);
    m_unit.channelsValid = true;
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(sawDone(boxes));
    QCOMPARE(m_illuminator->bench().count("chan_config"), 1);
    QCOMPARE(m_unit.channels.left(4), QByteArray(4, '\x5a'));
    QCOMPARE(m_unit.entry(0).mid(2, 4), QByteArray("mine"));
}

void tst_ChannelConfigWrite::bytesOfNoCellCannotBeRead_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("silence") << QByteArray();
    QTest::newRow("garbled") << QByteArray("chan_config:5a5a");
}

void tst_ChannelConfigWrite::bytesOfNoCellCannotBeRead()
{
    QFETCH(QByteArray, answer);
    editInApplication("VYRApp V2.6.2");
    m_unit.odd.insert("chan_config", answer);
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(boxes.sawOneWarning(QStringLiteral("Error writing channel configuration")));
    // There is a valid record, so its other bytes are there to be kept.
    QCOMPARE(m_unit.channels.left(4), QByteArray(4, '\x5a'));
}

void tst_ChannelConfigWrite::limit_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<bool>("knowsChannels");
    QTest::newRow("1.4.6") << QByteArray("Loader V1.4.6") << false;
    QTest::newRow("1.4.7") << QByteArray("Loader V1.4.7") << true;
    QTest::newRow("1.3.255") << QByteArray("Loader V1.3.255") << false;
    QTest::newRow("2.0.0") << QByteArray("Loader V2.0.0") << true;
}

void tst_ChannelConfigWrite::limit()
{
    QFETCH(QByteArray, image);
    QFETCH(bool, knowsChannels);
    m_unit.image = image;
    connectUnit();
    laser(0)->setCurrentIndex(8);
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(sawDone(boxes));
    QCOMPARE(written().size(), knowsChannels ? writeLines().size() : 1);
    QVERIFY(written().constFirst().startsWith("prod_config:"));
    QCOMPARE(m_unit.channels.contains('\x08'), knowsChannels);
}

void tst_ChannelConfigWrite::applicationLimit_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<bool>("knowsChannels");
    QTest::newRow("2.6.2") << QByteArray("VYRApp V2.6.2") << false;
    QTest::newRow("2.6.3") << QByteArray("VYRApp V2.6.3") << true;
}

void tst_ChannelConfigWrite::applicationLimit()
{
    QFETCH(QByteArray, image);
    QFETCH(bool, knowsChannels);
    m_unit.image = image;
    connectUnit();
    QCOMPARE(m_device->isVersionAboveConfigLimit(), knowsChannels);
    QTRY_COMPARE(name(0)->text(), knowsChannels ? QString() : QStringLiteral("445"));
    // Neither may be written, as the application has no ear for it.
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(boxes.sawOneWarning(loaderFirst));
    QVERIFY(written().isEmpty());
}

void tst_ChannelConfigWrite::refused_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<QString>("told");
    QTest::newRow("not connected") << QByteArray() << connectFirst;
    QTest::newRow("application") << QByteArray("VYRApp V2.7.0") << loaderFirst;
    QTest::newRow("loader updater") << QByteArray("LoaderUpdater V1.5.0") << loaderFirst;
    QTest::newRow("something else") << QByteArray("Other V1.5.0") << loaderFirst;
}

void tst_ChannelConfigWrite::refused()
{
    QFETCH(QByteArray, image);
    QFETCH(QString, told);
    if (!image.isEmpty()) {
        m_unit.image = image;
        connectUnit();
    }
    const BoxAnswerer boxes;
    setButton();
    QVERIFY(boxes.sawOneWarning(told));
    QCOMPARE(boxes.boxes().first().parent, m_dialog.get());
    QVERIFY(written().isEmpty());
}

void tst_ChannelConfigWrite::refusedDuringAnUpdate()
{
    connectUnit();
    const BoxAnswerer boxes;
    const QSignalSpy told(m_update, &Update::actionRefused);
    {
        const Update::InProgress run(*m_update);
        setButton();
    }
    QCOMPARE(told.size(), 1);
    QVERIFY(boxes.boxes().isEmpty());
    QVERIFY(written().isEmpty());
}

void tst_ChannelConfigWrite::doubleClick()
{
    connectUnit();
    m_unit.thinkTime = 60ms;
    const BoxAnswerer boxes;
    auto* const button = part<QPushButton>("pushButtonSetProductConfigData");
    bool clickedAgain = false;
    runLater(m_dialog.get(), 30ms, [&] {
        QTest::mouseDClick(button, Qt::LeftButton);
        QTest::mouseRelease(button, Qt::LeftButton);
        clickedAgain = boxes.boxes().isEmpty();
    });
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(clickedAgain);
    QVERIFY(sawDone(boxes));
    QCOMPARE(written().size(), writeLines().size());
}

void tst_ChannelConfigWrite::queryOnItsWay()
{
    connectUnit();
    m_unit.thinkTime = 100ms;
    const BoxAnswerer boxes;
    bool wasUnderWay = false;
    runLater(m_dialog.get(), 50ms, [&] {
        wasUnderWay = m_illuminator->bench().count("prod_config") == 1;
        type("lineEditVYRSerialNumber", QStringLiteral("NEW"));
        setButton();
    });
    clickTab(QStringLiteral("System Info"));
    QTRY_VERIFY(sawDone(boxes));
    QVERIFY(wasUnderWay);
    QVERIFY(m_unit.product.contains("vyr_sn=NEW"));
    // What the query brought is older than what was written.
    QCOMPARE(text("lineEditVYRSerialNumber"), QStringLiteral("NEW"));
    QTRY_COMPARE(m_illuminator->bench().count("prod_config"), 2);
    QCOMPARE(text("lineEditVYRSerialNumber"), QStringLiteral("NEW"));
}

void tst_ChannelConfigWrite::changedWhileItIsWritten()
{
    const QByteArray read("\x01\x08", 2);
    m_unit.setEntry(0, read + QByteArray(10, '\0'));
    connectUnit();
    QTRY_VERIFY(name(0)->isEnabled());
    m_unit.thinkTime = 50ms;
    m_unit.heard = [this](const QByteArray& heard) {
        if (heard.startsWith(writeLines().first())) {
            type("lineEditVYRSerialNumber", QStringLiteral("LATER"));
            name(0)->setFocus();
            QTest::keyClicks(name(0), QStringLiteral("late"));
        }
    };
    {
        const BoxAnswerer boxes;
        setButton();
        QVERIFY(sawDone(boxes));
    }
    m_unit.heard = {};
    QVERIFY(m_unit.product.contains("vyr_sn=SN-1"));
    QCOMPARE(m_unit.entry(0), QByteArray(read + QByteArray(10, '\0')));
    // It counts as not written.
    m_dialog->onDeviceConnected(m_device->portName());
    m_dialog->UpdateProductConfigDisplay();
    m_illuminator->clearCommands();
    QVERIFY(m_illuminator->bench().waitForLine("prod_config"));
    QCOMPARE(m_device->waitWhileBusy(), int(DeviceResult::Ok));
    QCOMPARE(text("lineEditVYRSerialNumber"), QStringLiteral("LATER"));
    QCOMPARE(name(0)->text(), QStringLiteral("late"));
}

QTEST_MAIN(tst_ChannelConfigWrite)
#include "tst_ChannelConfigWrite.moc"
