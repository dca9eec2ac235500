#include "Resources/Resources.h"
#include "help/HelpBench.h"
#include "help/Manual.h"

#include <QDesktopServices>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTimer>

#include <array>
#include <memory>

namespace {
constexpr std::array<const char*, 4> handledSchemes = {"http", "https", "file", "mailto"};
} // namespace

/// The window in which the manual is read.
class tst_HelpWindow : public QObject
{
    Q_OBJECT

public slots:
    /// Stands in for the desktop's web browser.
    void openOutside(const QUrl& address) { m_openedOutside.append(address); }

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void escapeCloses();
    void focusIsOnThePage();
    void returnPressesNoButton();
    void backForwardContents();
    void keysOfTheButtons();
    void linksAreFollowed();
    void linkByKeyboard();
    void foreignLinksAreNotFollowed_data();
    void foreignLinksAreNotFollowed();
    void titleTellsThePage();
    void closesWithItsWindow();
    void doesNotHoldUpTheEnd();
    void sizeIsRemembered();
    void fitsTheScreen();
    void standsBesideItsWindow();

private:
    HelpWindow& open(const QString& page)
    {
        Help::show(&m_bench->window, page);
        return *m_bench->help();
    }
    static QPushButton* button(const HelpWindow& help, const char* name)
    {
        return help.findChild<QPushButton*>(QLatin1String(name));
    }
    std::unique_ptr<HelpBench<QWidget>> m_bench;
    QList<QUrl> m_openedOutside;
};

void tst_HelpWindow::initTestCase()
{
    applyColours();
    applyStyleSheet(*qApp);
    for (const char* scheme : handledSchemes) {
        QDesktopServices::setUrlHandler(QLatin1String(scheme), this, "openOutside");
    }
}

void tst_HelpWindow::cleanupTestCase()
{
    for (const char* scheme : handledSchemes) {
        QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
    }
}

void tst_HelpWindow::init()
{
    m_openedOutside.clear();
    m_bench.reset(); // the watch over the framework's warnings is one at a time
    m_bench = std::make_unique<HelpBench<QWidget>>();
    QVERIFY(m_bench->show());
}

void tst_HelpWindow::escapeCloses()
{
    HelpWindow& help = open(QStringLiteral("update"));
    QVERIFY(HelpBench<QWidget>::waitUntilActive(help));
    QCOMPARE(QApplication::focusWidget(), HelpBench<QWidget>::browser(help));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QVERIFY(!help.isVisible());
    QVERIFY(m_bench->window.isVisible());
}

void tst_HelpWindow::focusIsOnThePage()
{
    HelpWindow& help = open(QStringLiteral("update"));
    QVERIFY(HelpBench<QWidget>::waitUntilActive(help));
    button(help, "pushButtonContents")->setFocus();
    open(QStringLiteral("terminal"));
    QCOMPARE(QApplication::focusWidget(), HelpBench<QWidget>::browser(help));
}

void tst_HelpWindow::returnPressesNoButton()
{
    HelpWindow& help = open(QStringLiteral("update"));
    open(QStringLiteral("terminal"));
    QVERIFY(HelpBench<QWidget>::waitUntilActive(help));
    QVERIFY(button(help, "pushButtonBack")->isEnabled());
    QTest::keyClick(HelpBench<QWidget>::browser(help), Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(m_bench->shownPage(), QStringLiteral("terminal"));
}

void tst_HelpWindow::backForwardContents()
{
    HelpWindow& help = open(QStringLiteral("update"));
    QPushButton* back = button(help, "pushButtonBack");
    QPushButton* forward = button(help, "pushButtonForward");
    QVERIFY(!back->isEnabled() && !forward->isEnabled());
    button(help, "pushButtonContents")->click();
    QCOMPARE(m_bench->shownPage(), QStringLiteral("index"));
    QVERIFY(back->isEnabled() && !forward->isEnabled());
    back->click();
    QCOMPARE(m_bench->shownPage(), QStringLiteral("update"));
    QVERIFY(!back->isEnabled() && forward->isEnabled());
    forward->click();
    QCOMPARE(m_bench->shownPage(), QStringLiteral("index"));
}

void tst_HelpWindow::keysOfTheButtons()
{
    HelpWindow& help = open(QStringLiteral("update"));
    QVERIFY(HelpBench<QWidget>::waitUntilActive(help));
    ManualBrowser* browser = HelpBench<QWidget>::browser(help);
    QTest::keyClick(browser, Qt::Key_Home, Qt::AltModifier);
    QTRY_COMPARE(m_bench->shownPage(), QStringLiteral("index"));
    QTest::keyClick(browser, Qt::Key_Left, Qt::AltModifier);
    QTRY_COMPARE(m_bench->shownPage(), QStringLiteral("update"));
    QTest::keyClick(browser, Qt::Key_Right, Qt::AltModifier);
    QTRY_COMPARE(m_bench->shownPage(), QStringLiteral("index"));
}

void tst_HelpWindow::linksAreFollowed()
{
    HelpWindow& help = open(QStringLiteral("index"));
    ManualBrowser* browser = HelpBench<QWidget>::browser(help);
    // Where the link's text is drawn, as the mouse would find it.
    const QTextCursor found = browser->document()->find(QStringLiteral("Scenarios"));
    QVERIFY(!found.isNull());
    QCOMPARE(found.charFormat().anchorHref(), QStringLiteral("scenarios.md"));
    const QPoint place = browser->cursorRect(found).center() - QPoint(6, 0);
    QTest::mouseClick(browser->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QCOMPARE(m_bench->shownPage(), QStringLiteral("scenarios"));
    QCOMPARE(browser->verticalScrollBar()->value(), 0);
}

void tst_HelpWindow::linkByKeyboard()
{
    HelpWindow& help = open(QStringLiteral("index"));
    QVERIFY(HelpBench<QWidget>::waitUntilActive(help));
    ManualBrowser* browser = HelpBench<QWidget>::browser(help);
    QTest::keyClick(browser, Qt::Key_Tab);
    QTest::keyClick(browser, Qt::Key_Return);
    QTRY_COMPARE(m_bench->shownPage(), QStringLiteral("troubleshooting"));
    QVERIFY(help.isVisible());
}

void tst_HelpWindow::foreignLinksAreNotFollowed_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("web") << QStringLiteral("http://localhost/");
    QTest::newRow("secure web") << QStringLiteral("https://localhost/update.md");
    QTest::newRow("mail") << QStringLiteral("mailto:nobody@localhost");
    QTest::newRow("file") << QStringLiteral("file:") + QLatin1String(VYR_MANUAL_FOLDER "/update.md");
    QTest::newRow("absolute path") << QStringLiteral("/update.md");
    QTest::newRow("path of a file") << QStringLiteral(VYR_MANUAL_FOLDER "/update.md");
    QTest::newRow("resource") << QStringLiteral("qrc:/Resources/vyr.qss");
    QTest::newRow("out of the manual") << QStringLiteral("../README.md");
    QTest::newRow("out of the manual, in code") << QStringLiteral("%2e%2e%2fREADME.md");
    QTest::newRow("folder inside") << QStringLiteral("pictures/update.md");
    QTest::newRow("picture") << QStringLiteral("pictures/help.png");
    QTest::newRow("without the ending") << QStringLiteral("update");
    QTest::newRow("another host") << QStringLiteral("manual://localhost/vyr/update.md");
    QTest::newRow("with a query") << QStringLiteral("update.md?x=1");
    QTest::newRow("nothing") << QString();
}

void tst_HelpWindow::foreignLinksAreNotFollowed()
{
    QFETCH(QString, link);
    HelpWindow& help = open(QStringLiteral("control-mode"));
    QVERIFY(HelpBench<QWidget>::waitUntilActive(help));
    ManualBrowser* browser = HelpBench<QWidget>::browser(help);
    // A page with such a link, which the manual itself has none of.
    QTextCursor cursor(browser->document());
    QTextCharFormat format;
    format.setAnchor(true);
    format.setAnchorHref(link);
    cursor.insertText(QStringLiteral("away"), format);
    const QString text = browser->toPlainText();
    QSignalSpy clicked(browser, &QTextBrowser::anchorClicked);
    const QPoint place = browser->cursorRect(cursor).center() - QPoint(8, 0);
    QTest::mouseClick(browser->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QCoreApplication::processEvents();
    QCOMPARE(clicked.size(), link.isEmpty() ? 0 : 1);
    QCOMPARE(m_bench->shownPage(), QStringLiteral("control-mode"));
    QCOMPARE(browser->toPlainText(), text);
    QVERIFY(m_openedOutside.isEmpty());
    QVERIFY(!button(help, "pushButtonBack")->isEnabled());
    QCOMPARE(WarningWatch::messages(), QStringList());
}

void tst_HelpWindow::titleTellsThePage()
{
    HelpWindow& help = open(QStringLiteral("ttl-configuration"));
    QCOMPARE(help.windowTitle(), QStringLiteral("TTL Configuration - VYR Help"));
    button(help, "pushButtonContents")->click();
    QCOMPARE(help.windowTitle(), QStringLiteral("VYR manual - VYR Help"));
}

void tst_HelpWindow::closesWithItsWindow()
{
    HelpWindow& help = open(QStringLiteral("update"));
    m_bench->window.close();
    QVERIFY(!help.isVisible());
    QVERIFY(m_bench->show());
    QVERIFY(!help.isVisible());
}

void tst_HelpWindow::doesNotHoldUpTheEnd()
{
    open(QStringLiteral("update"));
    QTimer::singleShot(0, &m_bench->window, &QWidget::close);
    constexpr int stillRunning = 1;
    constexpr int patienceMs = 5000;
    QTimer patience;
    connect(&patience, &QTimer::timeout, this, [] { QCoreApplication::exit(stillRunning); });
    patience.start(patienceMs);
    QCOMPARE(QCoreApplication::exec(), 0);
}

void tst_HelpWindow::sizeIsRemembered()
{
    const QSize chosen(520, 400);
    HelpWindow& help = open(QStringLiteral("update"));
    QVERIFY(QTest::qWaitForWindowExposed(&help));
    help.resize(chosen);
    help.close();
    // Of the same window, and of one that is made anew.
    QCOMPARE(open(QStringLiteral("update")).size(), chosen);
    init();
    QCOMPARE(open(QStringLiteral("update")).size(), chosen);
}

void tst_HelpWindow::fitsTheScreen()
{
    HelpWindow& help = open(QStringLiteral("update"));
    help.resize(5000, 5000);
    help.close();
    open(QStringLiteral("update"));
    const QRect room = help.screen()->availableGeometry();
    QVERIFY(help.width() < room.width() && help.height() < room.height());
}

void tst_HelpWindow::standsBesideItsWindow()
{
    const QRect room = m_bench->window.screen()->availableGeometry();
    m_bench->window.setGeometry(QRect(room.topLeft(), QSize(200, 200)));
    HelpWindow& sized = open(QStringLiteral("update"));
    sized.resize(room.width() / 2, 300);
    init();
    m_bench->window.setGeometry(QRect(room.topLeft(), QSize(200, 200)));
    const HelpWindow& help = open(QStringLiteral("update"));
    QVERIFY(!help.frameGeometry().intersects(m_bench->window.frameGeometry()));
    QVERIFY(room.contains(help.frameGeometry()));
}

QTEST_MAIN(tst_HelpWindow)
#include "tst_HelpWindow.moc"
