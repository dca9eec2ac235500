#include "settings/WheelGuard.h"

#include <QEvent>
#include <QWidget>

bool WheelGuard::eventFilter(QObject* watched, QEvent* event)
{
    const auto* widget = qobject_cast<QWidget*>(watched);
    if (event->type() == QEvent::Wheel && widget != nullptr && !widget->hasFocus()) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}
