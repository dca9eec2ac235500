#include "help/HelpBench.h"

#include <QDialog>
#include <QGroupBox>
#include <QMainWindow>
#include <QPointer>

#include <memory>

/// The F1 key: which window's help it opens, and on which page.
class tst_Help : public QObject
{
    Q_OBJECT

private slots:
    void keyOpensThePage_data();
    void keyOpensThePage();
    void keyIsNotTakenForText();
    void pageIsAskedForEachTime();
    void helpIsUsedAgain();
    void closedHelpIsUsedAgain();
    void eachWindowHasItsOwn();
    void secondInstallReplacesTheFirst();
    void keyInHelpLeavesTheWindowAlone();
    void unknownPageShowsTheContents_data();
    void unknownPageShowsTheContents();
    void showFromAChild();
    void worksBesideAModalDialog();
    void windowGoesWhileHelpIsOpen();
    void pageAtFindsTheNearest_data();
    void pageAtFindsTheNearest();
};

void tst_Help::keyOpensThePage_data()
{
    QTest::addColumn<QString>("focus");
    QTest::newRow("window") << QString();
    QTest::newRow("line") << QStringLiteral("line");
    QTest::newRow("text") << QStringLiteral("text");
}

void tst_Help::keyOpensThePage()
{
    QFETCH(QString, focus);
    HelpBench<QWidget> bench;
    QVERIFY(bench.show());
    QWidget* widget = &bench.window;
    if (focus == QLatin1String("line")) {
        widget = &bench.line;
    } else if (focus == QLatin1String("text")) {
        widget = &bench.text;
    }
    widget->setFocus();
    QVERIFY(bench.help() == nullptr);
    QTest::keyClick(widget, Qt::Key_F1);
    QTRY_COMPARE(bench.shownPage(), QStringLiteral("scenarios"));
    QVERIFY(HelpBench<QWidget>::waitUntilActive(*bench.help()));
    QVERIFY(!bench.help()->isModal());
    QCOMPARE(WarningWatch::messages(), QStringList());
}

void tst_Help::keyIsNotTakenForText()
{
    HelpBench<QWidget> bench;
    QVERIFY(bench.show());
    bench.text.setFocus();
    QTest::keyClick(&bench.text, Qt::Key_F1);
    QTRY_VERIFY(bench.help() != nullptr);
    QVERIFY(bench.text.toPlainText().isEmpty());
}

void tst_Help::pageIsAskedForEachTime()
{
    HelpBench<QWidget> bench;
    QVERIFY(bench.show());
    QCOMPARE(bench.asked, 0);
    QTest::keyClick(&bench.line, Qt::Key_F1);
    QTRY_COMPARE(bench.shownPage(), QStringLiteral("scenarios"));
    QCOMPARE(bench.asked, 1);
    bench.page = QStringLiteral("terminal");
    bench.window.activateWindow();
    QVERIFY(HelpBench<QWidget>::waitUntilActive(bench.window));
    QTest::keyClick(&bench.line, Qt::Key_F1);
    QTRY_COMPARE(bench.shownPage(), QStringLiteral("terminal"));
    QCOMPARE(bench.asked, 2);
    QVERIFY(HelpBench<QWidget>::waitUntilActive(*bench.help()));
}

void tst_Help::helpIsUsedAgain()
{
    HelpBench<QWidget> bench;
    QVERIFY(bench.show());
    Help::show(&bench.window, QStringLiteral("update"));
    const HelpWindow* const first = bench.help();
    Help::show(&bench.window, QStringLiteral("terminal"));
    QCOMPARE(bench.help(), first);
    QCOMPARE(bench.window.findChildren<HelpWindow*>().size(), 1);
    QCOMPARE(bench.shownPage(), QStringLiteral("terminal"));
}

void tst_Help::closedHelpIsUsedAgain()
{
    HelpBench<QWidget> bench;
    QVERIFY(bench.show());
    Help::show(&bench.window, QStringLiteral("update"));
    const HelpWindow* const first = bench.help();
    bench.help()->close();
    QVERIFY(!first->isVisible());
    Help::show(&bench.window, QStringLiteral("terminal"));
    QCOMPARE(bench.help(), first);
    QCOMPARE(bench.shownPage(), QStringLiteral("terminal"));
}

void tst_Help::eachWindowHasItsOwn()
{
    HelpBench<QWidget> bench;
    QVERIFY(bench.show());
    QDialog dialog(&bench.window);
    Help::install(&dialog, [] { return QStringLiteral("control-mode"); });
    dialog.show();
    dialog.activateWindow();
    QVERIFY(HelpBench<QWidget>::waitUntilActive(dialog));
    QTest::keyClick(&dialog, Qt::Key_F1);
    QTRY_VERIFY(HelpBench<QWidget>::findHelp(dialog) != nullptr);
    QVERIFY(bench.help() == nullptr);
    QCOMPARE(bench.asked, 0);
    const HelpWindow* const help = HelpBench<QWidget>::findHelp(dialog);
    QCOMPARE(HelpBench<QWidget>::browser(*help)->page(), QStringLiteral("control-mode"));
}

void tst_Help::secondInstallReplacesTheFirst()
{
    HelpBench<QWidget> bench;
    Help::install(&bench.window, [] { return QStringLiteral("update"); });
    QVERIFY(bench.show());
    QTest::keyClick(&bench.line, Qt::Key_F1);
    QTRY_COMPARE(bench.shownPage(), QStringLiteral("update"));
    QCOMPARE(bench.asked, 0);
}

void tst_Help::keyInHelpLeavesTheWindowAlone()
{
    HelpBench<QWidget> bench;
    QVERIFY(bench.show());
    Help::show(&bench.window, QStringLiteral("update"));
    QVERIFY(HelpBench<QWidget>::waitUntilActive(*bench.help()));
    QTest::keyClick(HelpBench<QWidget>::browser(*bench.help()), Qt::Key_F1);
    QCoreApplication::processEvents();
    QCOMPARE(bench.asked, 0);
    QCOMPARE(bench.shownPage(), QStringLiteral("update"));
}

void tst_Help::unknownPageShowsTheContents_data()
{
    QTest::addColumn<QString>("page");
    QTest::newRow("none") << QString();
    QTest::newRow("with the ending") << QStringLiteral("update.md");
    QTest::newRow("a path") << QStringLiteral("../Resources/vyr");
    QTest::newRow("an address") << QStringLiteral("manual:/vyr/update.md");
    QTest::newRow("a place in the file system") << QStringLiteral("/etc/hostname");
    QTest::newRow("capital letters") << QStringLiteral("Update");
}

void tst_Help::unknownPageShowsTheContents()
{
    QFETCH(QString, page);
    HelpBench<QWidget> bench;
    QVERIFY(bench.show());
    Help::show(&bench.window, page);
    QCOMPARE(bench.shownPage(), QStringLiteral("index"));
    QCOMPARE(WarningWatch::messages(), QStringList());
}

void tst_Help::showFromAChild()
{
    HelpBench<QWidget> bench;
    QVERIFY(bench.show());
    Help::show(&bench.line, QStringLiteral("update"));
    QCOMPARE(bench.shownPage(), QStringLiteral("update"));
}

void tst_Help::worksBesideAModalDialog()
{
    QMainWindow main;
    Help::install(&main, [] { return QStringLiteral("main-window"); });
    main.show();
    HelpBench<QDialog> bench;
    bench.window.setParent(&main, bench.window.windowFlags());
    bench.window.setModal(true);
    QVERIFY(bench.show());
    QCOMPARE(QApplication::activeModalWidget(), &bench.window);
    QTest::keyClick(&bench.line, Qt::Key_F1);
    QTRY_COMPARE(bench.shownPage(), QStringLiteral("scenarios"));
    QVERIFY(HelpBench<QDialog>::findHelp(main) == nullptr);
    QVERIFY(HelpBench<QWidget>::waitUntilActive(*bench.help()));

    // The window system itself would not pass a click on to a window that is blocked.
    auto* contents = bench.help()->findChild<QPushButton*>(QStringLiteral("pushButtonContents"));
    QTest::mouseClick(bench.help()->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      contents->mapTo(bench.help(), contents->rect().center()));
    QTRY_COMPARE(bench.shownPage(), QStringLiteral("index"));

    QTest::keyClick(bench.help()->windowHandle(), Qt::Key_Escape);
    QTRY_VERIFY(!bench.help()->isVisible());
    QVERIFY(bench.window.isVisible());
    bench.window.close();
    bench.window.setParent(nullptr);
}

void tst_Help::windowGoesWhileHelpIsOpen()
{
    auto bench = std::make_unique<HelpBench<QDialog>>();
    QVERIFY(bench->show());
    Help::show(&bench->window, QStringLiteral("update"));
    const QPointer<HelpWindow> help(bench->help());
    QVERIFY(help && help->isVisible());
    bench.reset();
    QVERIFY(help.isNull());
}

void tst_Help::pageAtFindsTheNearest_data()
{
    QTest::addColumn<QVariant>("own");
    QTest::addColumn<QVariant>("parents");
    QTest::addColumn<QString>("expected");
    const QString fallback = QStringLiteral("main-window");
    QTest::newRow("none") << QVariant() << QVariant() << fallback;
    QTest::newRow("own") << QVariant(QStringLiteral("a")) << QVariant(QStringLiteral("b"))
                         << QStringLiteral("a");
    QTest::newRow("parent's") << QVariant() << QVariant(QStringLiteral("b")) << QStringLiteral("b");
    QTest::newRow("own is empty") << QVariant(QString()) << QVariant(QStringLiteral("b"))
                                  << QStringLiteral("b");
    QTest::newRow("own is no text") << QVariant(7) << QVariant(QStringLiteral("b")) << QStringLiteral("b");
}

void tst_Help::pageAtFindsTheNearest()
{
    QFETCH(QVariant, own);
    QFETCH(QVariant, parents);
    QFETCH(QString, expected);
    QWidget window;
    auto* group = new QGroupBox(&window);
    auto* between = new QWidget(group);
    auto* field = new QLineEdit(between);
    field->setProperty("helpPage", own);
    group->setProperty("helpPage", parents);
    QCOMPARE(Help::pageAt(field, QStringLiteral("main-window")), expected);
    QCOMPARE(Help::pageAt(&window, QStringLiteral("main-window")), QStringLiteral("main-window"));
    QCOMPARE(Help::pageAt(nullptr, QStringLiteral("main-window")), QStringLiteral("main-window"));
}

QTEST_MAIN(tst_Help)
#include "tst_Help.moc"
