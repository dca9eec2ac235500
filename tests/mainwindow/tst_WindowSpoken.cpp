#include "mainwindow/WindowBench.h"

#include <QAccessible>
#include <QStatusBar>
#include <QTest>

namespace {
QString spoken(QWidget* widget, QAccessible::Text part)
{
    const QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(widget);
    return interface == nullptr ? QString() : interface->text(part);
}
} // namespace

/// What a screen reader says of the window's texts and pictures: first what they show now.
class tst_WindowSpoken : public ConnectedWindowTest
{
    Q_OBJECT

private slots:
    void cleanup() { removeWindow(); }
    void beforeTheFirstConnection();
    void channelsTellTheirNames();
    void liveTexts_data();
    void liveTexts();
    void statusBar();
    void pictures();

private:
    QString name(const char* object) const { return spoken(label(*m_window, object), QAccessible::Name); }
    QString description(const char* object) const
    {
        return spoken(label(*m_window, object), QAccessible::Description);
    }
};

void tst_WindowSpoken::beforeTheFirstConnection()
{
    m_bench = std::make_unique<WindowBench>();
    m_window = m_bench->start();
    QCOMPARE(description("labelLaserOnOff"), QStringLiteral("Laser off"));
    QCOMPARE(description("labelLaserStatus"), QStringLiteral("Disconnected"));
    QCOMPARE(description("labelNecselFiber"), QStringLiteral("Dark"));
    QCOMPARE(description("labelNovalumFiber"), QStringLiteral("Dark"));
    QCOMPARE(name("labelLaserStatusText"), QStringLiteral("Disconnected"));
}

void tst_WindowSpoken::channelsTellTheirNames()
{
    m_bench = std::make_unique<WindowBench>();
    m_window = m_bench->start();
    const Column channel(*m_window, 3);
    const QList<QWidget*> parts{channel.percentage, channel.arrows, channel.slider, channel.shutter};
    for (const QString& name : {QStringLiteral("470nm"), QStringLiteral("<b>DAPI</b> %1"), QString()}) {
        channel.name->setText(name);
        for (QWidget* part : parts) {
            QVERIFY(spoken(part, QAccessible::Name).startsWith(QLatin1String("Channel 3")));
            QVERIFY(!part->toolTip().isEmpty());
            QCOMPARE(
                spoken(part, QAccessible::Description),
                QString((name.isEmpty() ? name : QString(name + QLatin1String(". "))) + part->toolTip()));
        }
    }
}

void tst_WindowSpoken::liveTexts_data()
{
    QTest::addColumn<QString>("object");
    QTest::addColumn<QString>("now");
    QTest::addColumn<QString>("later");
    QTest::addColumn<QString>("meaning");
    const auto row = [](const char* object, const char* now, const char* later, const char* meaning) {
        QTest::newRow(object) << QString::fromLatin1(object) << QString::fromLatin1(now)
                              << QString::fromLatin1(later) << QString::fromLatin1(meaning);
    };
    row("labelLaserStatusText", "Idle", "Run", "Laser system mode");
    row("labelSystemId", "SN 1234  V2.7.0", "", "System identification");
    row("labelIntensityControl", "Intensity Control: USB", "Intensity Control: External Analog",
        "Intensity control");
    row("labelShutterControl", "Shutter Control: USB", "Shutter Control: External Digital",
        "Shutter control");
    row("labelSleepTimer", "Sleep Timer: 30 min", "Sleep Timer Disabled", "Sleep timer");
    row("labelScenario", "", "Scenario: <b>Live & cells</b>", "Scenario");
    row("labelScenarioModified", "(modified)", "(modified)", "Scenario modified");
}

void tst_WindowSpoken::liveTexts()
{
    QFETCH(QString, object);
    QFETCH(QString, now);
    QFETCH(QString, later);
    QFETCH(QString, meaning);
    QVERIFY(buildConnectedWindow());
    auto* const text = m_window->findChild<QLabel*>(object);
    QVERIFY(text != nullptr);
    QCOMPARE(spoken(text, QAccessible::Name), now);
    QCOMPARE(spoken(text, QAccessible::Description), meaning);
    text->setText(later);
    QCOMPARE(spoken(text, QAccessible::Name), later);
    QCOMPARE(spoken(text, QAccessible::Description), meaning);
}

void tst_WindowSpoken::statusBar()
{
    QVERIFY(buildConnectedWindow());
    auto* const bar = m_window->findChild<QStatusBar*>();
    m_illuminator->fault = "FAULT: <b>hot</b>";
    QTRY_COMPARE(spoken(bar, QAccessible::Name), QStringLiteral("FAULT: <b>hot</b>"));
    QCOMPARE(statusText(*m_window), QStringLiteral("FAULT: <b>hot</b>"));
    QCOMPARE(spoken(bar, QAccessible::Description), QStringLiteral("Status"));
}

void tst_WindowSpoken::pictures()
{
    QVERIFY(buildConnectedWindow());
    m_illuminator->mode = "run";
    QTRY_COMPARE(description("labelLaserOnOff"), QStringLiteral("Laser on"));
    QCOMPARE(name("labelLaserOnOff"), QStringLiteral("Laser on/off"));
    QCOMPARE(description("labelLaserStatus"), QStringLiteral("Run"));
    QCOMPARE(name("labelLaserStatus"), QStringLiteral("Laser status"));
    QCOMPARE(description("labelNecselFiber"), QStringLiteral("Lit"));
    QCOMPARE(name("labelLaserStatusText"), QStringLiteral("Run"));
}

QTEST_MAIN(tst_WindowSpoken)
#include "tst_WindowSpoken.moc"
