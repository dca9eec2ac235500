// What must not happen to a laser, or to somebody else's device, however an update ends.

#include "device/Device.h"
#include "settings/FileChooser.h"
#include "support/BoxAnswerer.h"
#include "update/ReleaseBench.h"
#include "update/Update.h"

#include <QTest>
#include <QTimer>

#include <algorithm>
#include <memory>

using namespace std::chrono_literals;
using Simulator::Trap;

class tst_UpdateSafety : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_bench.reset(); }

    void shuttersStayClosed_data();
    void shuttersStayClosed();
    void anotherUnitIsLeftAlone();
    void clickInsideATransfer();

private:
    bool openShutter();
    int count(const QByteArray& start);

    std::unique_ptr<ReleaseBench> m_bench;
};

void tst_UpdateSafety::init()
{
    m_bench = std::make_unique<ReleaseBench>();
    QVERIFY(m_bench->build());
}

int tst_UpdateSafety::count(const QByteArray& start)
{
    const QList<QByteArray> lines = m_bench->lines().texts();
    return int(std::count_if(lines.begin(), lines.end(),
                             [&start](const QByteArray& line) { return line.startsWith(start); }));
}

/// As the operator does it; true once the device tells that it is open.
bool tst_UpdateSafety::openShutter()
{
    // The link tells an unchanged "ok" once per process only.
    m_bench->window().onWarningStateChanged(false, QStringLiteral("ok"));
    auto* const button =
        m_bench->window().findChild<QPushButton*>(QStringLiteral("pushButtonChannelShutter1"));
    QTest::mouseClick(button, Qt::LeftButton);
    return QTest::qWaitFor([button] { return button->isChecked(); });
}

void tst_UpdateSafety::shuttersStayClosed_data()
{
    QTest::addColumn<int>("failingSwitch");
    QTest::newRow("complete") << 0;
    QTest::newRow("ends at goloader") << 1;
    QTest::newRow("ends at the loader updater") << 2;
    QTest::newRow("ends at the application") << 4;
}

/// What was open before is not opened again by the connection that follows, whenever that is made.
void tst_UpdateSafety::shuttersStayClosed()
{
    QFETCH(int, failingSwitch);
    QVERIFY(openShutter());
    if (failingSwitch > 0) {
        m_bench->illuminator().setTrap({"go", failingSwitch, Trap::Action::CutPower, true});
        QObject::connect(&m_bench->illuminator(), &Simulator::SimulatedIlluminator::trapSprung,
                         &m_bench->illuminator(), [this] {
                             QTimer::singleShot(100ms, &m_bench->illuminator(),
                                                [this] { m_bench->illuminator().restorePower(); });
                         });
    }
    m_bench->lines().clear();
    m_bench->update();
    QVERIFY(m_bench->waitForDevice());
    if (m_bench->window().device()->deviceMode() != DeviceMode::Application) {
        QCOMPARE(m_bench->update(), QStringList{QStringLiteral("Update complete!")});
    }
    QTRY_VERIFY(count("shutter:405=") > 0); // greeted
    QTRY_VERIFY(m_bench->lines().count("shutter?") > 3);
    QCOMPARE(count("shutter:405=1"), 0);
    QVERIFY(!m_bench->illuminator().state().open.at(0));
    QVERIFY(
        !m_bench->window().findChild<QPushButton*>(QStringLiteral("pushButtonChannelShutter1"))->isChecked());
}

void tst_UpdateSafety::anotherUnitIsLeftAlone()
{
    m_bench->ports().setSerialNumber(QStringLiteral("A1"));
    m_bench->window().device()->selectPort({});
    QVERIFY(m_bench->waitForDevice());
    Simulator::SimulatedIlluminator& illuminator = m_bench->illuminator();
    illuminator.setTrap({"goloader", 1, Trap::Action::Unplug, true});
    QObject::connect(&illuminator, &Simulator::SimulatedIlluminator::trapSprung, &illuminator,
                     [this, &illuminator] {
                         QTimer::singleShot(100ms, &illuminator, [this, &illuminator] {
                             m_bench->ports().setSerialNumber(QStringLiteral("B2"));
                             illuminator.plug();
                         });
                     });
    m_bench->lines().clear();
    QCOMPARE(m_bench->update(), (QStringList{QStringLiteral("Error transitioning to loader."),
                                             QStringLiteral("Error updating firmware.  Error -40011")}));
    QCOMPARE(count("wf:"), 0);
}

/// A transfer that the run interrupted would go on behind it, with a device that is another one by then.
void tst_UpdateSafety::clickInsideATransfer()
{
    const FileChooser chooser({m_bench->archivePath()});
    const BoxAnswerer answerer;
    const auto button = [this](const char* name) {
        return m_bench->window().settingsDialog()->findChild<QPushButton*>(QLatin1String(name));
    };
    bool clicked = false;
    QObject::connect(&m_bench->illuminator().wire(), &Simulator::Wire::lineReceived, &m_bench->window(),
                     [&](const QByteArray& line) {
                         if (line.startsWith("rf:") && !clicked) {
                             clicked = true;
                             QTimer::singleShot(0, button("pushButtonUpdateFirmware"), &QPushButton::click);
                         }
                     });
    m_bench->lines().clear();
    button("pushButtonGetSystemConfigData")->click();
    QTRY_VERIFY_WITH_TIMEOUT(!answerer.boxes().isEmpty(), 20000);
    QVERIFY(clicked);
    QVERIFY(m_bench->isUpdated());
    const QList<QByteArray> lines = m_bench->lines().texts();
    const auto begin = lines.indexOf("goloader");
    const auto isRead = [](const QByteArray& line) { return line.startsWith("rf:"); };
    QVERIFY(begin > 0 &&
            std::count_if(lines.begin(), lines.begin() + begin, isRead) >= 3); // the whole record came before
    const QList<QByteArray> during = lines.mid(begin, lines.lastIndexOf("goapp") - begin);
    QVERIFY(std::none_of(during.begin(), during.end(), isRead));
}

QTEST_MAIN(tst_UpdateSafety)
#include "tst_UpdateSafety.moc"
