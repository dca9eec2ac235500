#include "settings/Console.h"
#include "settings/LoaderBench.h"
#include "support/BoxAnswerer.h"

#include <QElapsedTimer>
#include <QWindow>

namespace {
using namespace std::chrono_literals;
} // namespace

/// What the user does while the device restarts into its other image: clicks elsewhere or once more, presses
/// a key, or closes dialog or window.
class tst_LoaderHaste : public LoaderDialogTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildDialog()); }
    void cleanup() { removeDialog(); }
    void otherClicksWhileItWaits_data();
    void otherClicksWhileItWaits();
    void setWhileItWaits_data();
    void setWhileItWaits();
    void doubleClick();
    void dialogClosedWhileItWaits();
    void windowClosedWhileItWaits_data() { restarts(); }
    void windowClosedWhileItWaits();
    void focusComesBack_data();
    void focusComesBack();
    void keysDoNotStrayIntoTheTerminal();

private:
    QWidget* inView(const char* name) const;
    void pressSpace(const char* name, const std::function<void(const QWidget& pressed)>& meanwhile);
    QWindow* window() const { return m_hand->dialog().windowHandle(); }
    /// In the dialog.
    QPoint centerOf(const QWidget& widget) const
    {
        return widget.mapTo(&m_hand->dialog(), widget.rect().center());
    }
};

QWidget* tst_LoaderHaste::inView(const char* name) const
{
    auto* const widget = m_hand->part<QWidget>(name);
    m_hand->bringIntoView(widget);
    return widget;
}

/// Begins a restart of 300 ms by the keyboard.
void tst_LoaderHaste::pressSpace(const char* name,
                                 const std::function<void(const QWidget& pressed)>& meanwhile)
{
    setRestart(300ms, false);
    QWidget* const pressed = inView(name);
    pressed->setFocus();
    whileItWaits([meanwhile, pressed] { meanwhile(*pressed); });
    QTest::keyClick(pressed, Qt::Key_Space);
}

void tst_LoaderHaste::otherClicksWhileItWaits_data()
{
    QTest::addColumn<QByteArray>("button");
    for (const char* name : {"pushButtonLoaderMode", "pushButtonLoaderMode2", "pushButtonSystemReset",
                             "pushButtonSystemReset2", "pushButtonRestoreDefaults"}) {
        QTest::newRow(name) << QByteArray(name);
    }
}

void tst_LoaderHaste::otherClicksWhileItWaits()
{
    QFETCH(QByteArray, button);
    setRestart(500ms, false);
    const ChoiceSpy spy(m_hand->dialog());
    m_lines->clear();
    bool clicked = false;
    whileItWaits([&] {
        QVERIFY(serviceButtonsAre(false));
        // As from the mouse: a disabled widget decides for itself what becomes of it.
        QTest::mouseClick(window(), Qt::LeftButton, {}, centerOf(*inView(button.constData())));
        clicked = true;
    });
    m_hand->click("pushButtonLoaderMode");
    QVERIFY(clicked);
    QTRY_VERIFY(isLoaderShown());
    QCOMPARE(m_lines->count("goloader"), 1);
    for (const char* command : {"goapp", "reset", "defaults"}) {
        QCOMPARE(m_lines->count(command), 0);
    }
    QCOMPARE(spy.choices(), QStringList());
}

void tst_LoaderHaste::setWhileItWaits_data()
{
    QTest::addColumn<QByteArray>("button");
    for (const char* name : {"pushButtonSetSystemConfigData", "pushButtonSetProductConfigData"}) {
        QTest::newRow(name) << QByteArray(name);
    }
}

/// Nothing is written to a loader that was told to start the application.
void tst_LoaderHaste::setWhileItWaits()
{
    QFETCH(QByteArray, button);
    setRestart(2500ms, false);
    m_hand->click("pushButtonLoaderMode");
    QTRY_VERIFY_WITH_TIMEOUT(isLoaderShown(), reconnectionMs);
    const BoxAnswerer boxes;
    whileItWaits([&] { m_hand->part<QAbstractButton>(button.constData())->click(); });
    m_lines->clear();
    m_hand->click("pushButtonLoaderMode");
    QVERIFY(boxes.sawOneWarning(QStringLiteral("Device must be running loader for this command.")));
    QTRY_VERIFY_WITH_TIMEOUT(isApplicationShown(), reconnectionMs);
    QCOMPARE(m_lines->count("goapp"), 1);
    QCOMPARE(m_lines->countBeginning("wf:"), 0);
}

void tst_LoaderHaste::doubleClick()
{
    constexpr auto betweenClicks = 120ms;
    setRestart(500ms, false);
    const QPoint place = centerOf(*inView("pushButtonLoaderMode2"));
    runLater(m_window.get(), betweenClicks, [&] { QTest::mouseDClick(window(), Qt::LeftButton, {}, place); });
    m_lines->clear();
    QTest::mouseClick(window(), Qt::LeftButton, {}, place);
    QTRY_VERIFY(isLoaderShown());
    QCOMPARE(m_lines->count("goloader"), 1);
    QCOMPARE(m_lines->count("goapp"), 0);
}

void tst_LoaderHaste::dialogClosedWhileItWaits()
{
    setRestart(400ms, false);
    whileItWaits([this] { m_hand->dialog().close(); });
    m_hand->click("pushButtonLoaderMode");
    QVERIFY(!m_hand->dialog().isVisible());
    QTRY_VERIFY(isLoaderShown());
    QVERIFY(m_hand->open());
    QVERIFY(isLoaderShown());
    m_hand->click("pushButtonLoaderMode");
    QTRY_VERIFY(isApplicationShown());
}

void tst_LoaderHaste::windowClosedWhileItWaits()
{
    QFETCH(bool, reenumerates);
    QFETCH(QString, name);
    constexpr int soonMs = 2000;
    setRestart(20s, reenumerates, name);
    whileItWaits([this] { QVERIFY(m_window->close()); });
    QElapsedTimer time;
    time.start();
    m_hand->click("pushButtonLoaderMode");
    QVERIFY2(time.elapsed() < soonMs, QByteArray::number(time.elapsed()));
    QVERIFY(!m_window->isVisible());
    QVERIFY(!m_window->device()->isOpen());
    m_hand.reset();
    m_window.reset();
}

void tst_LoaderHaste::focusComesBack_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QByteArray>("meanwhile");
    QTest::addColumn<QByteArray>("atTheEnd");
    QTest::newRow("update tab") << QByteArray("pushButtonLoaderMode") << QByteArray()
                                << QByteArray("pushButtonLoaderMode");
    QTest::newRow("service tab") << QByteArray("pushButtonLoaderMode2") << QByteArray()
                                 << QByteArray("pushButtonLoaderMode2");
    // Whoever went on to the terminal must not find the next key on a button.
    QTest::newRow("gone on to the terminal")
        << QByteArray("pushButtonLoaderMode2") << QByteArray("consoleWindow") << QByteArray("consoleWindow");
}

void tst_LoaderHaste::focusComesBack()
{
    QFETCH(QByteArray, button);
    QFETCH(QByteArray, meanwhile);
    QFETCH(QByteArray, atTheEnd);
    bool lost = false;
    pressSpace(button.constData(), [&](const QWidget& pressed) {
        lost = !pressed.hasFocus();
        if (!meanwhile.isEmpty()) {
            m_hand->click(meanwhile.constData());
        }
    });
    QVERIFY(lost);
    QVERIFY(isLoaderShown());
    QCOMPARE(m_hand->dialog().focusWidget()->objectName().toLatin1(), atTheEnd);
}

void tst_LoaderHaste::keysDoNotStrayIntoTheTerminal()
{
    bool inTheTerminal = true;
    pressSpace("pushButtonLoaderMode2",
               [&](const QWidget&) { inTheTerminal = m_hand->dialog().console()->hasFocus(); });
    // A key pressed once more would go to the device, in the middle of its restart.
    QVERIFY(!inTheTerminal);
}

QTEST_MAIN(tst_LoaderHaste)
#include "tst_LoaderHaste.moc"
