#pragma once

#include <QObject>

/// Keeps the wheel from changing a field that merely lies under the mouse: without the focus, the field's
/// wheel goes on to what scrolls the page.
class WheelGuard : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};
