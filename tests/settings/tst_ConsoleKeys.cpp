#include "settings/ConsoleBench.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QTabWidget>

/// What the terminal makes of keys and of the mouse.
class tst_ConsoleKeys : public ConsoleTest
{
    Q_OBJECT

private slots:
    void init() { buildConsole(); }
    void cleanup() { removeConsole(); }
    void typedCommandIsSentKeyByKey();
    void swallowedKeys_data();
    void swallowedKeys();
    void echoCanBeSwitchedOff();
    void modifierAloneSendsNothing();
    void textGoesToTheEnd_data();
    void textGoesToTheEnd();
    void noKeyChangesOldText_data();
    void noKeyChangesOldText();
    void selectionOutlivesReceivedText();
    void pastesByKeyAlone();
    void inputMethodSendsWhatIsCommitted();
    void tabIsForTheDevice();
    void mouseMovesNoCursor();
    void dragsSelectAndPasteNothing_data();
    void dragsSelectAndPasteNothing();
    void dropIsRefused();
    void doubleClickSelectsNothing();
    void contextMenuStaysAway();
};

void tst_ConsoleKeys::typedCommandIsSentKeyByKey()
{
    QTest::keyClicks(m_console.get(), QStringLiteral("fault?"));
    QTest::keyClick(m_console.get(), Qt::Key_Return);
    QCOMPARE(m_keys->size(), 7);
    QCOMPARE(m_keys->at(0).first().toByteArray(), QByteArray("f"));
    QCOMPARE(m_keys->at(6).first().toByteArray(), QByteArray("\r"));
    QCOMPARE(sent(), QByteArray("fault?\r"));
    QCOMPARE(m_console->toPlainText(), QStringLiteral("fault?\n"));
}

void tst_ConsoleKeys::swallowedKeys_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Backspace") << int(Qt::Key_Backspace);
    QTest::newRow("Left") << int(Qt::Key_Left);
    QTest::newRow("Up") << int(Qt::Key_Up);
    QTest::newRow("Right") << int(Qt::Key_Right);
    QTest::newRow("Down") << int(Qt::Key_Down);
}

void tst_ConsoleKeys::swallowedKeys()
{
    QFETCH(int, key);
    m_console->putData("ab\ncd");
    const int position = m_console->textCursor().position();
    QTest::keyClick(m_console.get(), static_cast<Qt::Key>(key));
    QVERIFY(m_keys->isEmpty());
    QCOMPARE(m_console->toPlainText(), QStringLiteral("ab\ncd"));
    QCOMPARE(m_console->textCursor().position(), position);
}

void tst_ConsoleKeys::echoCanBeSwitchedOff()
{
    m_console->setLocalEchoEnabled(false);
    QTest::keyClicks(m_console.get(), QStringLiteral("v"));
    QCOMPARE(m_console->toPlainText(), QString());
    QCOMPARE(sent(), QByteArray("v"));
    m_console->setLocalEchoEnabled(true);
    QTest::keyClicks(m_console.get(), QStringLiteral("w"));
    QCOMPARE(m_console->toPlainText(), QStringLiteral("w"));
}

void tst_ConsoleKeys::modifierAloneSendsNothing()
{
    QTest::keyClick(m_console.get(), Qt::Key_Shift);
    QCOMPARE(m_keys->size(), 1);
    QCOMPARE(sent(), QByteArray());
    QCOMPARE(m_console->toPlainText(), QString());
}

void tst_ConsoleKeys::textGoesToTheEnd_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifier");
    QTest::newRow("none") << int(Qt::Key_Shift) << int(Qt::NoModifier);
    QTest::newRow("Home") << int(Qt::Key_Home) << int(Qt::NoModifier);
    QTest::newRow("Home of all") << int(Qt::Key_Home) << int(Qt::ControlModifier);
    QTest::newRow("Page Up") << int(Qt::Key_PageUp) << int(Qt::NoModifier);
    QTest::newRow("select a line") << int(Qt::Key_Home) << int(Qt::ShiftModifier);
    QTest::newRow("select all") << int(Qt::Key_A) << int(Qt::ControlModifier);
}

void tst_ConsoleKeys::textGoesToTheEnd()
{
    QFETCH(int, key);
    QFETCH(int, modifier);
    const QString old = QStringLiteral("one\ntwo");
    m_console->putData(old.toLatin1());
    const auto moveAway = [&] { press(key, Qt::KeyboardModifiers(modifier), QString()); };
    moveAway();
    m_console->putData("1");
    QVERIFY(m_console->textCursor().hasSelection() || m_console->textCursor().atEnd());
    moveAway();
    QTest::keyClicks(m_console.get(), QStringLiteral("a"));
    moveAway();
    m_console->putData("2");
    QTest::keyClicks(m_console.get(), QStringLiteral("b"));
    QCOMPARE(m_console->toPlainText(), old + QStringLiteral("1a2b"));
    QVERIFY(m_console->textCursor().atEnd());
}

void tst_ConsoleKeys::noKeyChangesOldText_data()
{
    QTest::addColumn<int>("modifiers");
    QTest::newRow("alone") << int(Qt::NoModifier);
    QTest::newRow("Shift") << int(Qt::ShiftModifier);
    QTest::newRow("Ctrl") << int(Qt::ControlModifier);
    QTest::newRow("Ctrl+Shift") << int(Qt::ControlModifier | Qt::ShiftModifier);
    QTest::newRow("Alt") << int(Qt::AltModifier);
    QTest::newRow("Meta") << int(Qt::MetaModifier);
}

void tst_ConsoleKeys::noKeyChangesOldText()
{
    QFETCH(int, modifiers);
    QApplication::clipboard()->setText(QStringLiteral("pasted"));
    QList<int> keys{Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter,  Qt::Key_Insert, Qt::Key_Delete,
                    Qt::Key_Home,   Qt::Key_End,    Qt::Key_PageUp, Qt::Key_Undo,   Qt::Key_Redo,
                    Qt::Key_Cut,    Qt::Key_Paste,  Qt::Key_Clear,  Qt::Key_Tab,    Qt::Key_F14,
                    Qt::Key_F16,    Qt::Key_F18,    Qt::Key_F20};
    for (int key = Qt::Key_Space; key <= Qt::Key_AsciiTilde; ++key) {
        keys.append(key);
    }
    m_console->putData("old text\nand more of it");
    for (const int key : qAsConst(keys)) {
        const QString old = m_console->toPlainText();
        const auto sentBefore = m_keys->size();
        m_console->selectAll();
        press(key, Qt::KeyboardModifiers(modifiers), QStringLiteral("k"));
        m_console->moveCursor(QTextCursor::Start);
        press(key, Qt::KeyboardModifiers(modifiers), QString());
        QVERIFY2(m_console->toPlainText().startsWith(old), qPrintable(QKeySequence(key).toString()));
        const bool isLeft = key == Qt::Key_Tab && (modifiers & Qt::ControlModifier) != 0;
        QCOMPARE(m_keys->size() - sentBefore, isLeft ? 0 : 2);
    }
}

void tst_ConsoleKeys::selectionOutlivesReceivedText()
{
    m_console->putData("one\n");
    press(Qt::Key_A, Qt::ControlModifier, QStringLiteral("\x01"));
    m_console->putData("two");
    press(Qt::Key_Control, Qt::ControlModifier, QString());
    press(Qt::Key_C, Qt::ControlModifier, QStringLiteral("\x03"));
    QVERIFY(QApplication::clipboard()->text().startsWith(QLatin1String("one\n")));
    QCOMPARE(sent(), QByteArray("\x01\x03"));
    QCOMPARE(m_console->toPlainText(), QStringLiteral("one\ntwo"));
}

void tst_ConsoleKeys::pastesByKeyAlone()
{
    m_console->putData("old");
    m_console->moveCursor(QTextCursor::Start);
    QApplication::clipboard()->setText(QStringLiteral("new"));
    m_console->paste();
    QCOMPARE(m_console->toPlainText(), QStringLiteral("old"));
    press(Qt::Key_V, Qt::ControlModifier, QStringLiteral("\x16"));
    QCOMPARE(m_console->toPlainText(), QStringLiteral("oldnew"));
    QCOMPARE(sent(), QByteArray("\x16"));
}

void tst_ConsoleKeys::inputMethodSendsWhatIsCommitted()
{
    m_console->putData("old");
    m_console->moveCursor(QTextCursor::Start);
    const auto compose = [this](const QString& committed) {
        QInputMethodEvent event(QStringLiteral("composing"), {});
        event.setCommitString(committed, -1, 2); // asks for old characters to be replaced
        QCoreApplication::sendEvent(m_console.get(), &event);
    };
    compose(QString());
    QVERIFY(m_keys->isEmpty());
    compose(QStringLiteral("\u00e4?"));
    QCOMPARE(m_keys->size(), 1);
    QCOMPARE(sent(), QByteArray("\u00e4?"));
    m_console->setLocalEchoEnabled(false);
    compose(QStringLiteral("z"));
    QCOMPARE(sent(), QByteArray("\u00e4?z"));
    QCOMPARE(m_console->toPlainText(), QStringLiteral("old\u00e4?"));
}

void tst_ConsoleKeys::tabIsForTheDevice()
{
    QTabWidget tabs;
    auto* page = new QWidget;
    auto* before = new QLineEdit(page);
    auto* console = new Console(page);
    tabs.addTab(page, QStringLiteral("one"));
    tabs.addTab(new QWidget, QStringLiteral("two"));
    QSignalSpy keys(console, &Console::getData);
    tabs.show();
    QVERIFY(QTest::qWaitForWindowActive(&tabs));
    console->setFocus();

    QTest::keyClick(console, Qt::Key_Tab);
    QVERIFY(console->hasFocus());
    QCOMPARE(keys.takeFirst().constFirst().toByteArray(), QByteArray("\t"));
    QCOMPARE(console->toPlainText(), QStringLiteral("\t"));
    QTest::simulateEvent(console, true, Qt::Key_Backtab, Qt::ShiftModifier, QStringLiteral("\t"), false);
    QVERIFY(before->hasFocus());
    console->setFocus();
    QTest::simulateEvent(console, true, Qt::Key_Tab, Qt::ControlModifier, QStringLiteral("\t"), false);
    QCOMPARE(tabs.currentIndex(), 1);
    QVERIFY(keys.isEmpty());
    QCOMPARE(console->toPlainText(), QStringLiteral("\t"));
}

void tst_ConsoleKeys::mouseMovesNoCursor()
{
    m_console->putData("0123456789\nabcdefghij\nend");
    m_console->clearFocus();
    QTest::mouseClick(m_console->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 5));
    QVERIFY(m_console->hasFocus());
    QTest::keyClicks(m_console.get(), QStringLiteral("X"));
    QCOMPARE(m_console->toPlainText(), QStringLiteral("0123456789\nabcdefghij\nendX"));
}

void tst_ConsoleKeys::dragsSelectAndPasteNothing_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("left") << int(Qt::LeftButton);
    QTest::newRow("middle") << int(Qt::MiddleButton);
    QTest::newRow("right") << int(Qt::RightButton);
}

void tst_ConsoleKeys::dragsSelectAndPasteNothing()
{
    QFETCH(int, button);
    const auto pressed = static_cast<Qt::MouseButton>(button);
    m_console->putData("0123456789\nabcdefghij\nend");
    if (QApplication::clipboard()->supportsSelection()) {
        QApplication::clipboard()->setText(QStringLiteral("pasted"), QClipboard::Selection);
    }
    const auto send = [&](QEvent::Type type, const QPoint& place, Qt::MouseButton changed,
                          Qt::MouseButtons held) {
        QMouseEvent event(type, place, m_console->viewport()->mapToGlobal(place), changed, held,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(m_console->viewport(), &event);
    };
    send(QEvent::MouseButtonPress, QPoint(10, 8), pressed, pressed);
    send(QEvent::MouseMove, QPoint(60, 8), Qt::NoButton, pressed);
    send(QEvent::MouseMove, QPoint(60, 30), Qt::NoButton, pressed);
    send(QEvent::MouseButtonRelease, QPoint(60, 30), pressed, Qt::NoButton);
    QVERIFY(!m_console->textCursor().hasSelection());
    QVERIFY(m_console->textCursor().atEnd());
    QCOMPARE(m_console->toPlainText(), QStringLiteral("0123456789\nabcdefghij\nend"));
    QVERIFY(m_keys->isEmpty());
}

void tst_ConsoleKeys::dropIsRefused()
{
    m_console->putData("old");
    QMimeData dragged;
    dragged.setText(QStringLiteral("dropped"));
    QDragEnterEvent enter(QPoint(10, 8), Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_console->viewport(), &enter);
    QVERIFY(!enter.isAccepted());
    QDropEvent drop(QPoint(10, 8), Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_console->viewport(), &drop);
    QCOMPARE(m_console->toPlainText(), QStringLiteral("old"));
}

void tst_ConsoleKeys::doubleClickSelectsNothing()
{
    m_console->putData("word word");
    QTest::mouseDClick(m_console->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(10, 8));
    QVERIFY(!m_console->textCursor().hasSelection());
    QVERIFY(m_console->textCursor().atEnd());
}

void tst_ConsoleKeys::contextMenuStaysAway()
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(10, 10),
                            m_console->viewport()->mapToGlobal(QPoint(10, 10)));
    QCoreApplication::sendEvent(m_console->viewport(), &event);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
    QVERIFY(m_console->findChildren<QMenu*>().isEmpty());
}

QTEST_MAIN(tst_ConsoleKeys)
#include "tst_ConsoleKeys.moc"
