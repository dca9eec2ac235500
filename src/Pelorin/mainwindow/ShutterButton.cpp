#include "mainwindow/ShutterButton.h"

#include <QStyleOptionButton>
#include <QStylePainter>

namespace {
constexpr int margin = 4;
constexpr int gapBelowIcon = 2;
constexpr int smallestPixelSize = 8;
constexpr int smallestHeight = 36; // two lines of a type that is still legible
} // namespace

ShutterButton::ShutterButton(QWidget* parent) : QPushButton(parent)
{
    setCheckable(true);
}

void ShutterButton::nextCheckState()
{
    // Left empty: the button shows what the device reported, not what was asked of it.
}

QString ShutterButton::wrappedText() const
{
    return text().simplified().replace(QLatin1Char(' '), QLatin1Char('\n'));
}

QSize ShutterButton::symbolSize() const
{
    return icon().isNull() ? QSize(0, 0) : iconSize() + QSize(0, gapBelowIcon);
}

QSize ShutterButton::sizeHint() const
{
    const QSize words = fontMetrics().size(0, wrappedText());
    const QSize symbol = symbolSize();
    return {qMax(words.width(), symbol.width()) + 2 * margin, words.height() + symbol.height() + 2 * margin};
}

QSize ShutterButton::minimumSizeHint() const
{
    return {symbolSize().width() + 2 * margin, qMin(smallestHeight, sizeHint().height())};
}

QFont ShutterButton::fittingFont(const QSize& room) const
{
    QFont fitted = font();
    const QString words = wrappedText();
    const auto tooLarge = [&fitted, &words, &room, this] {
        const QSize needed = QFontMetrics(fitted, this).size(0, words);
        return needed.width() > room.width() || needed.height() > room.height();
    };
    for (int size = QFontInfo(fitted).pixelSize() - 1; size >= smallestPixelSize && tooLarge(); --size) {
        fitted.setPixelSize(size);
    }
    return fitted;
}

void ShutterButton::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    option.icon = QIcon();
    painter.drawControl(QStyle::CE_PushButton, option);

    const QRect inside = rect().adjusted(margin, margin, -margin, -margin);
    painter.setFont(fittingFont(inside.size()));
    const int wordsHeight = painter.fontMetrics().size(0, wrappedText()).height();
    const bool hasSymbol =
        symbolSize().height() > 0 && symbolSize().height() + wordsHeight <= inside.height();
    const int symbolHeight = hasSymbol ? symbolSize().height() : 0;
    const int top = inside.top() + (inside.height() - wordsHeight - symbolHeight) / 2;

    if (hasSymbol) {
        icon().paint(&painter, QRect(inside.left(), top, inside.width(), iconSize().height()),
                     Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled,
                     isChecked() ? QIcon::On : QIcon::Off);
    }
    option.text = wrappedText();
    option.rect = QRect(inside.left(), top + symbolHeight, inside.width(), wordsHeight);
    painter.drawControl(QStyle::CE_PushButtonLabel, option);
}
