#include "settings/FocusInView.h"

#include <QFocusEvent>
#include <QScrollArea>

namespace {
QScrollArea* pageOf(const QWidget& control)
{
    QWidget* above = control.parentWidget();
    while (above != nullptr && qobject_cast<QScrollArea*>(above) == nullptr) {
        above = above->parentWidget();
    }
    return qobject_cast<QScrollArea*>(above);
}

bool isByKeyboard(const QFocusEvent& event)
{
    const Qt::FocusReason reason = event.reason();
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
           reason == Qt::ShortcutFocusReason;
}
} // namespace

FocusInView::FocusInView(QWidget& window) : QObject(&window)
{
    const QList<QWidget*> controls = window.findChildren<QWidget*>();
    for (QWidget* control : controls) {
        if (control->focusPolicy() != Qt::NoFocus && pageOf(*control) != nullptr) {
            control->installEventFilter(this);
        }
    }
}

bool FocusInView::eventFilter(QObject* watched, QEvent* event)
{
    auto* const control = qobject_cast<QWidget*>(watched);
    if (event->type() == QEvent::FocusIn && control != nullptr &&
        isByKeyboard(*static_cast<QFocusEvent*>(event))) {
        if (QScrollArea* const page = pageOf(*control)) {
            page->ensureWidgetVisible(control);
        }
    }
    return QObject::eventFilter(watched, event);
}
