#pragma once

#include <QByteArray>
#include <QPlainTextEdit>
#include <QTimer>

#include <memory>

namespace QtVersion {
class LocalDecoder;
} // namespace QtVersion

/// A raw terminal onto the device's line: it shows every chunk of bytes it is given and announces every key
/// typed into it. It keeps the newest 100 lines, and of a long line the newest 4096 characters.
///
/// Text comes in at the end alone, wherever a key has put the cursor meanwhile, and what stands there stays.
/// Nothing can be dropped here or pasted by the mouse, as it would be shown without having been sent.
///
/// The Tab key is one for the device. Shift+Tab leaves the terminal, and Ctrl+Tab is left to what is around
/// it.
class Console : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit Console(QWidget* parent = nullptr);
    ~Console() override;

    /// Shows @p bytes up to their first zero byte, as text in the local 8-bit encoding with nothing added,
    /// and scrolls to the end. The text is there on return and is painted within 20 ms, so that many small
    /// chunks cost one painting. Bytes that are no text appear as U+FFFD.
    ///
    /// A character that is split over two calls is shown once it is complete, and "\r\n" is one end of a line
    /// even then.
    void putData(const QByteArray& bytes);
    /// Whether typed keys are shown here as well (the default) or only announced.
    void setLocalEchoEnabled(bool enabled) { m_localEchoEnabled = enabled; }

signals:
    /// One key press in the local 8-bit encoding; empty for a key without text. Also what an input method has
    /// made of several key presses, as one.
    void getData(const QByteArray& bytes);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;

private:
    void append(QString text);
    void echo(QKeyEvent* event);
    void moveCursorToEnd();
    void scrollToEnd();
    void holdPainting();
    void paintNow();

    std::unique_ptr<QtVersion::LocalDecoder> m_decoder;
    QTimer m_paintingHeld;
    bool m_localEchoEnabled = true;
    bool m_handlesKey = false;
    bool m_endedInCarriageReturn = false;
};
