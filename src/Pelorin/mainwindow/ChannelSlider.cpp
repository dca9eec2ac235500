#include "mainwindow/ChannelSlider.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QWheelEvent>

namespace {
constexpr int markEvery = 25;
constexpr int handleHalfWidth = 20;
constexpr int gapToHandle = 4;
constexpr int majorMarkLength = 9;
constexpr int minorMarkLength = 5;
} // namespace

ChannelSlider::ChannelSlider(QWidget* parent) : QSlider(parent)
{
    // A slider that the wheel can focus would take the very wheel turn that was meant to scroll past it.
    setFocusPolicy(Qt::StrongFocus);
}

int ChannelSlider::handleCentre(int value) const
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    option.sliderPosition = value;
    option.sliderValue = value;
    return style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this).center().y();
}

void ChannelSlider::paintEvent(QPaintEvent* event)
{
    QSlider::paintEvent(event);

    const int centre = rect().center().x();
    const int offset = handleHalfWidth + gapToHandle;
    if (orientation() != Qt::Vertical || centre < offset + majorMarkLength) {
        return;
    }
    QPainter painter(this);
    QColor ink = palette().color(foregroundRole());
    ink.setAlphaF(0.45F);
    painter.setPen(ink);
    for (int value = minimum(); value <= maximum(); value += markEvery) {
        const int length = (value % (2 * markEvery) == 0) ? majorMarkLength : minorMarkLength;
        const int y = handleCentre(value);
        painter.drawLine(centre - offset - length, y, centre - offset, y);
        painter.drawLine(centre + offset, y, centre + offset + length, y);
    }
}

void ChannelSlider::wheelEvent(QWheelEvent* event)
{
    if (!hasFocus()) {
        event->ignore();
        return;
    }
    QSlider::wheelEvent(event);
}
