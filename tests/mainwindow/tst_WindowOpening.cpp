#include "device/Device.h"
#include "device/SerialLine.h"
#include "mainwindow/OpenFailureNotice.h"
#include "mainwindow/WindowBench.h"
#include "support/OrdinaryUser.h"
#include "update/Update.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QSizeGrip>
#include <QStatusBar>
#include <QTest>

#include <memory>

/// What the status bar tells of a device that is there and cannot be opened.
class tst_WindowOpening : public WindowTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void busyPort();
    void deniedPort();
    void brokenPorts_data();
    void brokenPorts();
    void causeChanges();
    void freedPortConnects();
    void unpluggedMeanwhile();
    void scanTellsByItself();
    void portErrorsAreToldOtherwise();
    void otherTextStaysForAWhile();
    void nothingComesBackOnceItIsOver();
    void updateKeepsTheBar();
    void failureDuringAnUpdateIsToldAfterIt();
    void hostileNameStaysPlain();
    void textsFitTheSmallestWindow_data();
    void textsFitTheSmallestWindow();

private:
    void check(int times = 1);
    QString port() const { return m_illuminator->bench().portName(); }
    QStatusBar* bar() const { return m_window->findChild<QStatusBar*>(QStringLiteral("statusBar")); }
    int shown(const QString& text) const { return static_cast<int>(m_shown.count(text)); }
    int failuresInLog() { return m_bench->log().count(QStringLiteral("Error opening device")); }

    SerialLine m_holder; ///< another program
    QStringList m_shown; ///< texts of the status bar since the window's start
};

namespace {
// So that the texts are looked at twice.
QString busyText(const QString& port)
{
    return QStringLiteral("Port %1 is in use: close the program that uses it. Trying again...").arg(port);
}

QString goneText(const QString& port)
{
    return QStringLiteral("No device behind port %1: unplug it, then plug it in again.").arg(port);
}
} // namespace

void tst_WindowOpening::init()
{
    buildWindow();
    m_shown.clear();
    connect(bar(), &QStatusBar::messageChanged, this, [this](const QString& text) { m_shown.append(text); });
}

void tst_WindowOpening::cleanup()
{
    m_window.reset();
    m_holder.close();
    m_illuminator.reset();
    m_bench.reset();
}

void tst_WindowOpening::check(int times)
{
    for (int i = 0; i < times; ++i) {
        m_window->device()->checkConnectionStatus();
    }
}

void tst_WindowOpening::busyPort()
{
    QVERIFY(m_holder.open(port()));
    check();
    QCOMPARE(statusText(*m_window), busyText(port()));
    // The log goes on telling each attempt; the bar is left alone.
    m_shown.clear();
    check(2);
    QCOMPARE(m_shown, QStringList());
    QCOMPARE(statusText(*m_window), busyText(port()));
    QCOMPARE(failuresInLog(), 3);
}

void tst_WindowOpening::deniedPort()
{
    const OrdinaryUser user(port(), 0);
    if (!user.isEffective()) {
        QTest::qSkip("The system does not let go of the rights", __FILE__, __LINE__);
        return;
    }
    check(3);
#ifdef Q_OS_LINUX
    QCOMPARE(
        statusText(*m_window),
        QStringLiteral("No permission for port %1: join the group dialout, then log in again.").arg(port()));
#endif
    QCOMPARE(statusText(*m_window), OpenFailureNotice::text(port(), OpenFailure::Denied));
    QCOMPARE(shown(statusText(*m_window)), 1);
    QCOMPARE(failuresInLog(), 3);
}

void tst_WindowOpening::brokenPorts_data()
{
    QTest::addColumn<QString>("portName");
    QTest::addColumn<QString>("text");

    const QString missing = QStringLiteral("/nowhere/ttyVYR9");
    QTest::newRow("missing") << missing << goneText(missing);
    const QString folder = QDir::tempPath();
    QTest::newRow("no serial port")
        << folder
        << QStringLiteral("Port %1 cannot be opened: unplug the device, then plug it in again.").arg(folder);
}

void tst_WindowOpening::brokenPorts()
{
    QFETCH(const QString, portName);
    QFETCH(const QString, text);
    m_illuminator->bench().ports().addPortInFront({portName, 0x2F26, 0x3A98});
    check(3);
    QCOMPARE(statusText(*m_window), text);
    QCOMPARE(shown(text), 1);
    QCOMPARE(failuresInLog(), 3);
}

void tst_WindowOpening::causeChanges()
{
    QVERIFY(m_holder.open(port()));
    const QString name = port();
    m_illuminator->bench().ports().addPortInFront({name, 0x2F26, 0x3A98}); // stays listed for a while
    check(2);
    m_illuminator->bench().wire().unplug();
    m_shown.clear();
    check(2);
    QCOMPARE(m_shown, QStringList{goneText(name)});
}

void tst_WindowOpening::freedPortConnects()
{
    QVERIFY(m_holder.open(port()));
    check(2);
    m_holder.close();
    m_shown.clear();
    QVERIFY(m_illuminator->connectTo(*m_window));
    QVERIFY(!m_shown.isEmpty());
    QCOMPARE(m_shown.first(), QString(QStringLiteral("Device connected on ") + port()));
    QCOMPARE(shown(busyText(port())), 0);
}

void tst_WindowOpening::unpluggedMeanwhile()
{
    QVERIFY(m_holder.open(port()));
    const QString name = port();
    check(2);
    m_illuminator->bench().wire().unplug();
    m_shown.clear();
    check(3);
    QCOMPARE(m_shown, QStringList{QStringLiteral("Device disconnected on ") + name});
}

void tst_WindowOpening::scanTellsByItself()
{
    QVERIFY(m_holder.open(port()));
    QTRY_COMPARE(statusText(*m_window), busyText(port()));
    QTRY_VERIFY(failuresInLog() >= 3);
    QCOMPARE(shown(busyText(port())), 1);
    m_holder.close();
    QTRY_VERIFY(shown(QStringLiteral("Device connected on ") + port()) == 1);
}

void tst_WindowOpening::portErrorsAreToldOtherwise()
{
    QVERIFY(m_holder.open(port()));
    check();
    m_window->onDeviceError(QStringLiteral("no words for it"));
    QCOMPARE(statusText(*m_window), busyText(port()));
    m_holder.close();
    QVERIFY(m_illuminator->connectTo(*m_window));
    m_window->onDeviceError(QStringLiteral("of an open port"));
    QCOMPARE(statusText(*m_window), QStringLiteral("Port error of an open port"));
}

void tst_WindowOpening::otherTextStaysForAWhile()
{
    QVERIFY(m_holder.open(port()));
    check();
    const QString other = QStringLiteral("Scenario saved: green");
    QElapsedTimer clock;
    clock.start();
    bar()->showMessage(other);
    check(2);
    QCOMPARE(statusText(*m_window), other);
    QTRY_COMPARE_WITH_TIMEOUT(statusText(*m_window), busyText(port()), 10000);
    QVERIFY2(clock.elapsed() >= 4500, qPrintable(QString::number(clock.elapsed())));
    // Another cause does not wait.
    bar()->showMessage(other);
    m_illuminator->bench().ports().addPortInFront({QStringLiteral("/nowhere/tty"), 0x2F26, 0x3A98});
    check();
    QCOMPARE(statusText(*m_window), goneText(QStringLiteral("/nowhere/tty")));
}

void tst_WindowOpening::nothingComesBackOnceItIsOver()
{
    QVERIFY(m_holder.open(port()));
    check();
    bar()->showMessage(QStringLiteral("Scenario saved: green"));
    m_holder.close();
    QVERIFY(m_illuminator->connectTo(*m_window));
    m_shown.clear();
    QTest::qWait(static_cast<int>(std::chrono::milliseconds(OpenFailureNotice::othersStay).count()) + 500);
    QCOMPARE(m_shown, QStringList());
}

void tst_WindowOpening::updateKeepsTheBar()
{
    const QString updating = QStringLiteral("Firmware update in progress.");
    QVERIFY(m_holder.open(port()));
    const QString name = port();
    check();
    {
        const Update::InProgress run(*m_window->update());
        QCOMPARE(statusText(*m_window), updating);
        m_shown.clear();
        // Nothing may bring it back: neither time, nor another cause, nor the end of it all.
        QTest::qWait(static_cast<int>(std::chrono::milliseconds(OpenFailureNotice::othersStay).count()) +
                     500);
        m_illuminator->bench().ports().addPortInFront({QStringLiteral("/nowhere/tty"), 0x2F26, 0x3A98});
        check();
        m_illuminator->bench().ports().removeAddedPorts();
        m_illuminator->bench().wire().unplug();
        check();
        QCOMPARE(m_shown, QStringList());
    }
    QCOMPARE(shown(busyText(name)), 0);
}

void tst_WindowOpening::failureDuringAnUpdateIsToldAfterIt()
{
    {
        const Update::InProgress run(*m_window->update());
        QVERIFY(m_holder.open(port()));
        check(2);
        QCOMPARE(shown(busyText(port())), 0);
    }
    QCOMPARE(statusText(*m_window), busyText(port()));
}

void tst_WindowOpening::hostileNameStaysPlain()
{
    const QString name = QStringLiteral("/tmp/%1 &amp; <b>tty</b>");
    m_illuminator->bench().ports().addPortInFront({name, 0x2F26, 0x3A98});
    check();
    QCOMPARE(statusText(*m_window), goneText(name));
    QVERIFY(statusText(*m_window).contains(name));
}

void tst_WindowOpening::textsFitTheSmallestWindow_data()
{
    QTest::addColumn<QString>("portName");
    QTest::addColumn<bool>("collapsed");

    for (const char* name : {"ttyACM0", "ttyUSB12", "COM255", "cu.usbmodem14201"}) {
        QTest::addRow("%s", name) << QString::fromLatin1(name) << false;
        QTest::addRow("%s, collapsed", name) << QString::fromLatin1(name) << true;
    }
}

void tst_WindowOpening::textsFitTheSmallestWindow()
{
    QFETCH(const QString, portName);
    QFETCH(const bool, collapsed);
    if (collapsed) {
        QTest::mouseClick(m_window->findChild<QPushButton*>(QStringLiteral("pushButtonExpandCollapseWindow")),
                          Qt::LeftButton);
    }
    m_window->resize(m_window->minimumSizeHint());
    QTRY_COMPARE(m_window->width(), m_window->minimumSizeHint().width());
    const auto* grip = bar()->findChild<QSizeGrip*>();
    QVERIFY(grip != nullptr);
    for (const OpenFailure cause :
         {OpenFailure::Denied, OpenFailure::Busy, OpenFailure::Gone, OpenFailure::Other}) {
        const QString text = OpenFailureNotice::text(portName, cause);
        const int room = bar()->width() - grip->width() - 2 * bar()->fontMetrics().averageCharWidth();
        const int needed = bar()->fontMetrics().horizontalAdvance(text);
        QVERIFY2(needed > 0 && needed <= room,
                 qPrintable(QStringLiteral("%1: %2 of %3").arg(text).arg(needed).arg(room)));
    }
}

QTEST_MAIN(tst_WindowOpening)
#include "tst_WindowOpening.moc"
