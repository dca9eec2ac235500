#pragma once

#include <QByteArray>
#include <QPlainTextEdit>

/// A raw terminal onto the device's line: it shows every chunk of bytes it is given and announces every key
/// typed into it. It keeps the newest 100 lines.
class Console : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit Console(QWidget* parent = nullptr);

    /// Shows @p bytes up to its first zero byte, as 8-bit text without anything added, and scrolls to the
    /// end.
    void putData(const QByteArray& bytes);
    /// Whether typed keys are shown here as well (the default) or only announced.
    void setLocalEchoEnabled(bool enabled) { m_localEchoEnabled = enabled; }

signals:
    /// One key press in the local 8-bit encoding; empty for a key without text.
    void getData(const QByteArray& bytes);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    bool m_localEchoEnabled = true;
};
