#include "../support/WarningWatch.h"
#include "settings/Console.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>
#include <QTextBlock>
#include <QTextCodec>

#include <memory>

namespace {
constexpr int longestLine = 4096;

/// Counts how often a widget is painted.
class PaintCounter : public QObject
{
public:
    using QObject::QObject;
    int count() const { return m_count; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    int m_count = 0;
};

QList<QByteArray> inChunks(const QByteArray& bytes, int size)
{
    QList<QByteArray> chunks;
    for (int i = 0; i < bytes.size(); i += size) {
        chunks.append(bytes.mid(i, size));
    }
    return chunks;
}

QByteArray replies(int size)
{
    QByteArray text;
    for (int i = 0; text.size() < size; ++i) {
        text += "f_mode=run " + QByteArray::number(i) + "\r\n";
    }
    return text;
}

QByteArray randomBytes(int size)
{
    QRandomGenerator random(1);
    QByteArray bytes;
    for (int i = 0; i < size; ++i) {
        bytes += static_cast<char>(random.bounded(1, 256));
    }
    return bytes;
}

QStringList linesOf(const QPlainTextEdit& field)
{
    QStringList lines;
    for (QTextBlock line = field.document()->begin(); line.isValid(); line = line.next()) {
        lines.append(line.text());
    }
    return lines;
}
} // namespace

/// The terminal: what it shows of the device's bytes, and what it makes of keys and of the mouse.
class tst_Console : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void looks();
    void showsBytesAsTheyCome();
    void stopsAtAZeroByte();
    void bytesAsText_data();
    void bytesAsText();
    void anyByteDoesNoHarm();
    void keepsTheNewestHundredLines();
    void sameLinesAsAFieldWithoutLimits_data();
    void sameLinesAsAFieldWithoutLimits();
    void keepsTheNewestOfALongLine();
    void megabyte_data();
    void megabyte();
    void paintsOnceForManyChunks();
    void scrollsToTheEnd();
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

private:
    QByteArray sent() const
    {
        QByteArray all;
        for (const QList<QVariant>& key : *m_keys) {
            all += key.first().toByteArray();
        }
        return all;
    }

    void press(int key, Qt::KeyboardModifiers modifiers, const QString& text) const
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QCoreApplication::sendEvent(m_console.get(), &event);
    }

    bool isScrolledToTheEnd() const
    {
        return m_console->verticalScrollBar()->value() == m_console->verticalScrollBar()->maximum();
    }

    std::unique_ptr<WarningWatch> m_warnings;
    std::unique_ptr<Console> m_console;
    std::unique_ptr<QSignalSpy> m_keys;
};

void tst_Console::initTestCase()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); // whatever the test is started under
}

void tst_Console::init()
{
    m_warnings = std::make_unique<WarningWatch>();
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
    QCOMPARE(WarningWatch::messages(), QStringList());
    m_warnings.reset();
}

void tst_Console::looks()
{
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(m_console->palette().color(group, QPalette::Base), QColor(Qt::black));
        QCOMPARE(m_console->palette().color(group, QPalette::Text), QColor(Qt::green));
    }
    QCOMPARE(m_console->document()->maximumBlockCount(), 100);
    QVERIFY(!m_console->isUndoRedoEnabled());
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

void tst_Console::bytesAsText_data()
{
    QTest::addColumn<QList<QByteArray>>("chunks");
    QTest::addColumn<QStringList>("lines");
    const auto row = [](const char* name, const QList<QByteArray>& chunks, const QStringList& lines) {
        QTest::newRow(name) << chunks << lines;
    };
    row("line ends", {"a\nb\rc\r\nd"}, {"a", "b", "c", "d"});
    row("line end in two halves", {"a\r", "\nb"}, {"a", "b"});
    row("line end in two halves, nothing between", {"a\r", "", "\n", "\nb"}, {"a", "", "b"});
    row("two line feeds", {"a\n", "\nb"}, {"a", "", "b"});
    row("paragraph separator", {"a\u2029b"}, {"a", "b"});
    row("line separator", {"a\u2028b"}, {"a\u2028b"});
    row("whole characters", {"\u00e4\u20ac\U0001f600"}, {"\u00e4\u20ac\U0001f600"});
    row("halves of two bytes", {"a\xc3", "\xa4", "b"}, {"a\u00e4b"});
    row("four bytes apart", {"\xf0", "\x9f", "\x98", "\x80"}, {"\U0001f600"});
    row("an unfinished character", {"a\xc3", "b"}, {"a\ufffdb"});
    row("unfinished at a zero", {QByteArray("a\xc3\0z", 4), "\xa4"}, {"a\ufffd\ufffd"});
    row("no text", {"\xff\xfe"}, {"\ufffd\ufffd"});
    row("byte order mark", {"\xef\xbb\xbf"}, {QString(QChar(0xfeff))});
    row("escapes and bells", {"\x1b[31mred\x1b[0m\a\t\x7f"}, {"\x1b[31mred\x1b[0m\a\t\x7f"});
    const QString unseen =
        QLatin1Char('a') % QChar(0x202e) % QLatin1Char('b') % QChar(0x200b) % QChar(0x05d0);
    row("right to left and unseen", {unseen.toUtf8()}, {unseen});
    row("markup and formats", {"<b>%1 %s &amp;</b>"}, {"<b>%1 %s &amp;</b>"});
}

void tst_Console::bytesAsText()
{
    QFETCH(QList<QByteArray>, chunks);
    QFETCH(QStringList, lines);
    for (const QByteArray& chunk : qAsConst(chunks)) {
        m_console->putData(chunk);
    }
    QCOMPARE(linesOf(*m_console), lines);
}

void tst_Console::anyByteDoesNoHarm()
{
    QString printable;
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte) {
        m_console->putData(QByteArray(1, static_cast<char>(byte)));
        all.prepend(static_cast<char>(byte));
        if (byte >= ' ' && byte <= '~') {
            printable += QLatin1Char(static_cast<char>(byte));
        }
    }
    QVERIFY(m_console->toPlainText().contains(printable));
    m_console->putData(all);
    m_console->putData("\nok");
    QCOMPARE(linesOf(*m_console).constLast(), QStringLiteral("ok"));
    QVERIFY(!m_console->grab().isNull());
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

void tst_Console::sameLinesAsAFieldWithoutLimits_data()
{
    QTest::addColumn<int>("pieces");
    for (const int pieces : {90, 300, 1000, 5000}) {
        QTest::addRow("%d pieces", pieces) << pieces;
    }
}

void tst_Console::sameLinesAsAFieldWithoutLimits()
{
    QFETCH(int, pieces);
    const QList<QByteArray> alphabet{"a",      "bcd",    "\n",     "\n\n\n", "\r",    "\r\n",
                                     "\u00e4", "\u2029", "\u2028", "\ufdd0", "\ufdd1"};
    QRandomGenerator random(static_cast<quint32>(pieces));
    QByteArray all;
    for (int i = 0; i < pieces; ++i) {
        all += alphabet.at(random.bounded(alphabet.size()));
    }
    QPlainTextEdit field;
    field.insertPlainText(QString::fromUtf8(all));
    const QStringList expected = linesOf(field);

    for (int i = 0, size = 0; i < all.size(); i += size) {
        size = random.bounded(1, 1 + qMin(all.size() - i, 400));
        m_console->putData(all.mid(i, size));
    }
    QCOMPARE(linesOf(*m_console), expected.mid(qMax(0, expected.size() - 100)));
}

void tst_Console::keepsTheNewestOfALongLine()
{
    m_console->putData(QByteArray(longestLine, 'a'));
    m_console->putData("bc\nd");
    QCOMPARE(linesOf(*m_console).constFirst(),
             QString(longestLine - 2, QLatin1Char('a')) + QLatin1String("bc"));

    m_console->putData("\nx" + QByteArray("\U0001f600").repeated(longestLine));
    const QString faces = linesOf(*m_console).constLast();
    QCOMPARE(faces.size(), longestLine);
    m_console->putData("y");
    const QString cut = linesOf(*m_console).constLast();
    QCOMPARE(cut.size(), longestLine - 1); // one face less, not half of one
    QVERIFY(cut.at(0).isHighSurrogate());

    m_console->putData("\n" + QByteArray(longestLine, 'e'));
    press(Qt::Key_F, Qt::NoModifier, QStringLiteral("f"));
    const QString typed = linesOf(*m_console).constLast();
    QCOMPARE(typed.size(), longestLine);
    QVERIFY(typed.endsWith(QLatin1String("ef")));
}

void tst_Console::megabyte_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("chunk");
    const int size = 1'000'000;
    QTest::newRow("replies, one chunk") << replies(size) << size * 2;
    QTest::newRow("replies, chunks of 64") << replies(size) << 64;
    QTest::newRow("no line feed") << QByteArray(size, 'x') << size;
    QTest::newRow("no line feed, chunks of 64, less of it") << QByteArray(size / 10, 'x') << 64;
    QTest::newRow("line feeds") << QByteArray(size, '\n') << size;
    QTest::newRow("carriage returns") << QByteArray(size, '\r') << size;
    QTest::newRow("paragraph separators") << QByteArray("\u2029").repeated(size) << size * 3;
    QTest::newRow("line separators") << QByteArray("\u2028").repeated(size / 3) << size;
    QTest::newRow("long lines") << QByteArray(QByteArray(size / 20, 'x') + '\n').repeated(20) << size * 2;
    QTest::newRow("right to left") << QByteArray("\u05d0").repeated(size / 2) << size;
    QTest::newRow("random bytes") << randomBytes(size) << size;
    QTest::newRow("random bytes, chunks of 64, less of it") << randomBytes(size / 10) << 64;
}

void tst_Console::megabyte()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, chunk);
    constexpr qint64 heldAtMostMs = 1000; // a fiftieth of it on a quiet machine
    qint64 longestMs = 0;
    QElapsedTimer timer;
    const QList<QByteArray> parts = inChunks(bytes, chunk);
    for (const QByteArray& part : parts) {
        timer.start();
        m_console->putData(part);
        QCoreApplication::processEvents();
        longestMs = qMax(longestMs, timer.elapsed());
    }
    timer.start();
    m_console->grab();
    QVERIFY2(qMax(longestMs, timer.elapsed()) < heldAtMostMs, qPrintable(QString::number(longestMs)));
    QTRY_VERIFY(isScrolledToTheEnd());
    QVERIFY(m_console->blockCount() <= 100);
    const QStringList lines = linesOf(*m_console);
    for (const QString& line : lines) {
        QVERIFY(line.size() <= longestLine);
    }
    m_console->putData("the newest");
    QVERIFY(m_console->toPlainText().endsWith(QLatin1String("the newest")));
}

void tst_Console::paintsOnceForManyChunks()
{
    PaintCounter paints;
    m_console->viewport()->installEventFilter(&paints);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 2000; ++i) {
        m_console->putData("f_mode=run\n");
        QCoreApplication::processEvents();
    }
    constexpr qint64 leastMsBetween = 10;
    QVERIFY(paints.count() <= timer.elapsed() / leastMsBetween + 2);
    QVERIFY(paints.count() > 0); // while chunks keep coming
    const int before = paints.count();
    m_console->putData("the last\n");
    QTRY_VERIFY(paints.count() > before);
    QVERIFY(m_console->viewport()->updatesEnabled());
}

void tst_Console::scrollsToTheEnd()
{
    for (int i = 0; i < 60; ++i) {
        m_console->putData("line\n");
    }
    QVERIFY(m_console->verticalScrollBar()->maximum() > 0);
    m_console->verticalScrollBar()->setValue(0);
    m_console->putData("newest\n");
    QVERIFY(isScrolledToTheEnd());
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

void tst_Console::textGoesToTheEnd_data()
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

void tst_Console::textGoesToTheEnd()
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

void tst_Console::noKeyChangesOldText_data()
{
    QTest::addColumn<int>("modifiers");
    QTest::newRow("alone") << int(Qt::NoModifier);
    QTest::newRow("Shift") << int(Qt::ShiftModifier);
    QTest::newRow("Ctrl") << int(Qt::ControlModifier);
    QTest::newRow("Ctrl+Shift") << int(Qt::ControlModifier | Qt::ShiftModifier);
    QTest::newRow("Alt") << int(Qt::AltModifier);
    QTest::newRow("Meta") << int(Qt::MetaModifier);
}

void tst_Console::noKeyChangesOldText()
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
        const int sentBefore = m_keys->size();
        m_console->selectAll();
        press(key, Qt::KeyboardModifiers(modifiers), QStringLiteral("k"));
        m_console->moveCursor(QTextCursor::Start);
        press(key, Qt::KeyboardModifiers(modifiers), QString());
        QVERIFY2(m_console->toPlainText().startsWith(old), qPrintable(QKeySequence(key).toString()));
        const bool isLeft = key == Qt::Key_Tab && (modifiers & Qt::ControlModifier) != 0;
        QCOMPARE(m_keys->size() - sentBefore, isLeft ? 0 : 2);
    }
}

void tst_Console::selectionOutlivesReceivedText()
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

void tst_Console::pastesByKeyAlone()
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

void tst_Console::inputMethodSendsWhatIsCommitted()
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

void tst_Console::tabIsForTheDevice()
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

void tst_Console::mouseMovesNoCursor()
{
    m_console->putData("0123456789\nabcdefghij\nend");
    m_console->clearFocus();
    QTest::mouseClick(m_console->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 5));
    QVERIFY(m_console->hasFocus());
    QTest::keyClicks(m_console.get(), QStringLiteral("X"));
    QCOMPARE(m_console->toPlainText(), QStringLiteral("0123456789\nabcdefghij\nendX"));
}

void tst_Console::dragsSelectAndPasteNothing_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("left") << int(Qt::LeftButton);
    QTest::newRow("middle") << int(Qt::MiddleButton);
    QTest::newRow("right") << int(Qt::RightButton);
}

void tst_Console::dragsSelectAndPasteNothing()
{
    QFETCH(int, button);
    const auto pressed = static_cast<Qt::MouseButton>(button);
    m_console->putData("0123456789\nabcdefghij\nend");
    if (QApplication::clipboard()->supportsSelection()) {
        QApplication::clipboard()->setText(QStringLiteral("pasted"), QClipboard::Selection);
    }
    const auto send = [&](QEvent::Type type, const QPoint& place, Qt::MouseButton changed,
                          Qt::MouseButtons held) {
        QMouseEvent event(type, place, changed, held, Qt::NoModifier);
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

void tst_Console::dropIsRefused()
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
