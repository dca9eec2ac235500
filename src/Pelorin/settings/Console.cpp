#include "settings/Console.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>

namespace {
constexpr int maximumLines = 100;
} // namespace

Console::Console(QWidget* parent) : QPlainTextEdit(parent)
{
    document()->setMaximumBlockCount(maximumLines);
    QPalette colours = palette();
    colours.setColor(QPalette::Base, Qt::black);
    colours.setColor(QPalette::Text, Qt::green);
    setPalette(colours);
    // The application's style sheet paints all fields alike and would win over the palette.
    setStyleSheet(QStringLiteral("Console { background-color: #000000; color: #00ff00; }"));
}

void Console::putData(const QByteArray& bytes)
{
    const int zero = bytes.indexOf('\0');
    insertPlainText(QString::fromLocal8Bit(zero < 0 ? bytes : bytes.left(zero)));
    QScrollBar* bar = verticalScrollBar();
    bar->setValue(bar->maximum());
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
    default:
        break;
    }
    if (m_localEchoEnabled) {
        QPlainTextEdit::keyPressEvent(event);
    }
    emit getData(event->text().toLocal8Bit());
}

void Console::mousePressEvent(QMouseEvent* event)
{
    // Focus alone: a moved cursor would put the device's next words into the middle of older ones.
    Q_UNUSED(event)
    setFocus();
}

void Console::mouseDoubleClickEvent(QMouseEvent* event)
{
    Q_UNUSED(event)
}

void Console::contextMenuEvent(QContextMenuEvent* event)
{
    Q_UNUSED(event)
}
