#include "mainwindow/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>
#include <QToolTip>

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent)
{
    // The text comes from the device or the operator; it must never be taken for markup.
    setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::minimumSizeHint() const
{
    constexpr int shownCharacters = 6;
    const QSize whole = QLabel::minimumSizeHint();
    return {qMin(whole.width(), fontMetrics().averageCharWidth() * shownCharacters), whole.height()};
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
}

bool ElidedLabel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && shownText() != text()) {
        const QString own = Qt::mightBeRichText(toolTip()) ? toolTip() : toolTip().toHtmlEscaped();
        const QString tip = QStringLiteral("<p>%1</p><p>%2</p>").arg(text().toHtmlEscaped(), own);
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), tip, this);
        return true;
    }
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    drawFrame(&painter);
    const Qt::Alignment where = QStyle::visualAlignment(layoutDirection(), alignment());
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(where), palette(), isEnabled(),
                          shownText(), foregroundRole());
}
