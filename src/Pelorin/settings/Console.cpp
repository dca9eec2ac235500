#include "settings/Console.h"

#include "compat/QtVersion.h"

#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTextBlock>

#include <chrono>

namespace {
constexpr int maximumLines = 100;
// Every chunk lays the line that it continues out anew, so that a line without an end would make each chunk
// dearer than the one before.
constexpr int maximumLineLength = 4096;
// One painting costs ten times what it costs to take a small chunk in.
constexpr std::chrono::milliseconds paintEvery{16};

/// Everything that begins a new block in a document becomes a line feed, so that lines can be counted.
void unifyLineEnds(QString& text)
{
    constexpr QChar beginOfFrame(0xfdd0);
    constexpr QChar endOfFrame(0xfdd1);
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    for (QChar& character : text) {
        if (character == QLatin1Char('\r') || character == QChar(QChar::ParagraphSeparator) ||
            character == beginOfFrame || character == endOfFrame) {
            character = QLatin1Char('\n');
        }
    }
}

/// What of @p text can remain once it is shown, with the line feed that ends the line before: a document
/// makes all blocks first and drops the excess afterwards, which takes seconds for a million of them.
QString newestLines(const QString& text)
{
    auto begin = text.size();
    for (int line = 0; line < maximumLines; ++line) {
        begin = begin == 0 ? -1 : text.lastIndexOf(QLatin1Char('\n'), begin - 1);
        if (begin < 0) {
            return text;
        }
    }
    return text.mid(begin);
}

void shortenLine(const QTextBlock& line)
{
    int excess = line.length() - 1 - maximumLineLength;
    if (excess <= 0) {
        return;
    }
    if (line.text().at(excess).isLowSurrogate()) {
        ++excess; // half a character is none
    }
    QTextCursor cursor(line);
    cursor.setPosition(line.position() + excess, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}

/// True for keys that look at old text, copy it or belong to another key; all others may change something.
bool leavesTextAlone(const QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return event->text().isEmpty();
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
        return true;
    default:
        return event->matches(QKeySequence::SelectAll) || event->matches(QKeySequence::Copy);
    }
}
} // namespace

Console::Console(QWidget* parent)
    : QPlainTextEdit(parent), m_decoder(std::make_unique<QtVersion::LocalDecoder>())
{
    document()->setMaximumBlockCount(maximumLines); // which also keeps no history for undoing
    setTabChangesFocus(true);
    QPalette colours = palette();
    colours.setColor(QPalette::Base, Qt::black);
    colours.setColor(QPalette::Text, Qt::green);
    setPalette(colours);
    // The application's style sheet paints all fields alike and would win over the palette.
    setStyleSheet(QStringLiteral("Console { background-color: #000000; color: #00ff00; }"));
    m_paintingHeld.setSingleShot(true);
    connect(&m_paintingHeld, &QTimer::timeout, this, &Console::paintNow);
}

Console::~Console() = default;

void Console::putData(const QByteArray& bytes)
{
    const auto zero = bytes.indexOf('\0');
    // The zero itself tells the decoder that an unfinished character before it stays unfinished.
    QString text = m_decoder->decode(zero < 0 ? bytes : bytes.left(zero + 1));
    if (zero >= 0) {
        text.chop(1);
    }
    const bool continuesLineEnd = m_endedInCarriageReturn && text.startsWith(QLatin1Char('\n'));
    if (!text.isEmpty()) {
        m_endedInCarriageReturn = text.endsWith(QLatin1Char('\r'));
    }
    append(continuesLineEnd ? text.mid(1) : text);
}

/// Neither reads nor needs the editor's cursor, as that may hold a selection for the clipboard.
void Console::append(QString text)
{
    holdPainting();
    unifyLineEnds(text);
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    const int continuedLine = end.block().position();
    end.beginEditBlock();
    end.insertText(newestLines(text));
    for (QTextBlock line = document()->findBlock(continuedLine); line.isValid(); line = line.next()) {
        shortenLine(line);
    }
    end.endEditBlock();
    if (!textCursor().hasSelection()) {
        moveCursorToEnd();
    }
    scrollToEnd();
}

void Console::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Left:
    case Qt::Key_Up:
    case Qt::Key_Right:
    case Qt::Key_Down:
        // What was sent cannot be taken back, so nothing here may look as if it could.
        return;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        if (event->modifiers().testFlag(Qt::ControlModifier)) {
            // Without the mouse there would be no way on to the next tab of the dialog.
            event->ignore();
            return;
        }
        break;
    default:
        break;
    }
    if (m_localEchoEnabled) {
        echo(event);
    }
    // Escape, which the editor leaves to the dialog, was for the device and must not close the dialog too.
    event->accept();
    emit getData(event->text().toLocal8Bit());
}

void Console::echo(QKeyEvent* event)
{
    if (!leavesTextAlone(event)) {
        moveCursorToEnd();
        m_endedInCarriageReturn = false;
    }
    const QScopedValueRollback<bool> handling(m_handlesKey, true);
    QPlainTextEdit::keyPressEvent(event);
    shortenLine(document()->lastBlock());
}

void Console::inputMethodEvent(QInputMethodEvent* event)
{
    // What is still being composed was not sent, and what surrounds it was and cannot be replaced.
    event->accept();
    const QString text = event->commitString();
    if (text.isEmpty()) {
        return;
    }
    if (m_localEchoEnabled) {
        m_endedInCarriageReturn = false;
        append(text);
    }
    emit getData(text.toLocal8Bit());
}

bool Console::focusNextPrevChild(bool next)
{
    return !next && QPlainTextEdit::focusNextPrevChild(next);
}

void Console::mousePressEvent(QMouseEvent* event)
{
    // Focus alone: a moved cursor would put the device's next words into the middle of older ones.
    Q_UNUSED(event)
    setFocus();
}

void Console::mouseMoveEvent(QMouseEvent* event)
{
    Q_UNUSED(event)
}

void Console::mouseReleaseEvent(QMouseEvent* event)
{
    // The editor pastes the selection of another window here, at the place of the mouse.
    Q_UNUSED(event)
}

void Console::mouseDoubleClickEvent(QMouseEvent* event)
{
    Q_UNUSED(event)
}

void Console::contextMenuEvent(QContextMenuEvent* event)
{
    Q_UNUSED(event)
}

bool Console::canInsertFromMimeData(const QMimeData* source) const
{
    Q_UNUSED(source)
    return m_handlesKey;
}

void Console::insertFromMimeData(const QMimeData* source)
{
    if (canInsertFromMimeData(source)) {
        append(source->text());
    }
}

void Console::moveCursorToEnd()
{
    QTextCursor cursor = textCursor();
    if (cursor.hasSelection() || !cursor.atEnd()) {
        cursor.movePosition(QTextCursor::End);
        setTextCursor(cursor);
    }
}

void Console::scrollToEnd()
{
    QScrollBar* bar = verticalScrollBar();
    bar->setValue(bar->maximum());
}

void Console::holdPainting()
{
    if (!m_paintingHeld.isActive()) {
        // Not the console as a whole: a window of its own that is dirty while held is never painted again.
        viewport()->setUpdatesEnabled(false);
        verticalScrollBar()->setUpdatesEnabled(false);
        m_paintingHeld.start(paintEvery);
    }
}

void Console::paintNow()
{
    // A scroll bar that has just appeared has taken width from the text and made more rows of it.
    scrollToEnd();
    for (QWidget* part : {viewport(), static_cast<QWidget*>(verticalScrollBar())}) {
        part->setUpdatesEnabled(true);
        // At once: the next chunk may come before an update that is merely asked for.
        part->repaint();
    }
}
