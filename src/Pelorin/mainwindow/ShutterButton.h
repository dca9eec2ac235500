#pragma once

#include <QPushButton>

/// The shutter button of one channel. Checked means that the device reports the shutter open.
///
/// Neither a click nor a key changes the checked state: only setChecked() does, and only the code that shows
/// the device's reports calls it. The icon (its on and off pictures stand for open and closed) is drawn above
/// the text, and the text takes one line per word. Where room is short, the icon is left out and the type
/// gets smaller, so that the words stay whole in a narrow column while text() is one plain line.
class ShutterButton : public QPushButton
{
    Q_OBJECT

public:
    explicit ShutterButton(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void nextCheckState() override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString wrappedText() const;
    QSize symbolSize() const; ///< with the gap below it; empty without an icon
    QFont fittingFont(const QSize& room) const;
};
