#include "settings/Console.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <memory>

/// The terminal: what it shows of the device's bytes, and what it makes of keys and of the mouse.
class tst_Console : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void looks();
    void showsBytesAsTheyCome();
    void stopsAtAZeroByte();
    void keepsTheNewestHundredLines();
    void scrollsToTheEnd();
    void typedCommandIsSentKeyByKey();
    void swallowedKeys_data();
    void swallowedKeys();
    void echoCanBeSwitchedOff();
    void modifierAloneSendsNothing();
    void mouseMovesNoCursor();
    void doubleClickSelectsNothing();
    void contextMenuStaysAway();

private:
    QByteArray sent() const
    {
        QByteArray all;
        for (const QList<QVariant>& key : *m_keys) {
            all += key.first().toByteArray();
        }
        return all;
    }

    std::unique_ptr<Console> m_console;
    std::unique_ptr<QSignalSpy> m_keys;
};

void tst_Console::init()
{
    m_console = std::make_unique<Console>();
    m_console->resize(400, 200);
    m_keys = std::make_unique<QSignalSpy>(m_console.get(), &Console::getData);
    m_console->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_console.get()));
}

void tst_Console::cleanup()
{
    m_keys.reset();
    m_console.reset();
}

void tst_Console::looks()
{
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(m_console->palette().color(group, QPalette::Base), QColor(Qt::black));
        QCOMPARE(m_console->palette().color(group, QPalette::Text), QColor(Qt::green));
    }
    QCOMPARE(m_console->document()->maximumBlockCount(), 100);
}

void tst_Console::showsBytesAsTheyCome()
{
    m_console->putData("f_mode=");
    m_console->putData("idle\n<b>ok</b>");
    QCOMPARE(m_console->toPlainText(), QStringLiteral("f_mode=idle\n<b>ok</b>"));
    QVERIFY(m_keys->isEmpty());
}

void tst_Console::stopsAtAZeroByte()
{
    m_console->putData(QByteArray("ab\0cd", 5));
    m_console->putData(QByteArray("\0ef", 3));
    m_console->putData(QByteArray());
    QCOMPARE(m_console->toPlainText(), QStringLiteral("ab"));
}

void tst_Console::keepsTheNewestHundredLines()
{
    for (int i = 1; i <= 250; ++i) {
        m_console->putData(QByteArray::number(i) + '\n');
    }
    const QStringList lines = m_console->toPlainText().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 100);
    QCOMPARE(lines.first(), QStringLiteral("152"));
    QCOMPARE(lines.at(98), QStringLiteral("250"));
}

void tst_Console::scrollsToTheEnd()
{
    for (int i = 0; i < 60; ++i) {
        m_console->putData("line\n");
    }
    QVERIFY(m_console->verticalScrollBar()->maximum() > 0);
    m_console->verticalScrollBar()->setValue(0);
    m_console->putData("newest\n");
    QCOMPARE(m_console->verticalScrollBar()->value(), m_console->verticalScrollBar()->maximum());
}

void tst_Console::typedCommandIsSentKeyByKey()
{
    QTest::keyClicks(m_console.get(), QStringLiteral("fault?"));
    QTest::keyClick(m_console.get(), Qt::Key_Return);
    QCOMPARE(m_keys->size(), 7);
    QCOMPARE(m_keys->at(0).first().toByteArray(), QByteArray("f"));
    QCOMPARE(m_keys->at(6).first().toByteArray(), QByteArray("\r"));
    QCOMPARE(sent(), QByteArray("fault?\r"));
    QCOMPARE(m_console->toPlainText(), QStringLiteral("fault?\n"));
}

void tst_Console::swallowedKeys_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Backspace") << int(Qt::Key_Backspace);
    QTest::newRow("Left") << int(Qt::Key_Left);
    QTest::newRow("Up") << int(Qt::Key_Up);
    QTest::newRow("Right") << int(Qt::Key_Right);
    QTest::newRow("Down") << int(Qt::Key_Down);
}

void tst_Console::swallowedKeys()
{
    QFETCH(int, key);
    m_console->putData("ab\ncd");
    const int position = m_console->textCursor().position();
    QTest::keyClick(m_console.get(), static_cast<Qt::Key>(key));
    QVERIFY(m_keys->isEmpty());
    QCOMPARE(m_console->toPlainText(), QStringLiteral("ab\ncd"));
    QCOMPARE(m_console->textCursor().position(), position);
}

void tst_Console::echoCanBeSwitchedOff()
{
    m_console->setLocalEchoEnabled(false);
    QTest::keyClicks(m_console.get(), QStringLiteral("v"));
    QCOMPARE(m_console->toPlainText(), QString());
    QCOMPARE(sent(), QByteArray("v"));
    m_console->setLocalEchoEnabled(true);
    QTest::keyClicks(m_console.get(), QStringLiteral("w"));
    QCOMPARE(m_console->toPlainText(), QStringLiteral("w"));
}

void tst_Console::modifierAloneSendsNothing()
{
    QTest::keyClick(m_console.get(), Qt::Key_Shift);
    QCOMPARE(m_keys->size(), 1);
    QCOMPARE(sent(), QByteArray());
    QCOMPARE(m_console->toPlainText(), QString());
}

void tst_Console::mouseMovesNoCursor()
{
    m_console->putData("0123456789\nabcdefghij\nend");
    m_console->clearFocus();
    QTest::mouseClick(m_console->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 5));
    QVERIFY(m_console->hasFocus());
    QTest::keyClicks(m_console.get(), QStringLiteral("X"));
    QCOMPARE(m_console->toPlainText(), QStringLiteral("0123456789\nabcdefghij\nendX"));
}

void tst_Console::doubleClickSelectsNothing()
{
    m_console->putData("word word");
    QTest::mouseDClick(m_console->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(10, 8));
    QVERIFY(!m_console->textCursor().hasSelection());
    QVERIFY(m_console->textCursor().atEnd());
}

void tst_Console::contextMenuStaysAway()
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(10, 10));
    QCoreApplication::sendEvent(m_console->viewport(), &event);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
    QVERIFY(m_console->findChildren<QMenu*>().isEmpty());
}

QTEST_MAIN(tst_Console)
#include "tst_Console.moc"
