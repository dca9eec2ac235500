#pragma once

#include <QObject>

class QWidget;

/// Scrolls a page to the control that the keyboard has gone to. The framework does so within a page alone,
/// and not where the keyboard enters one: its last control, which Shift+Tab comes to first, would have the
/// focus out of sight. The mouse scrolls nothing: what moves between press and release is not clicked.
class FocusInView : public QObject
{
    Q_OBJECT

public:
    /// Watches the controls that are in the scroll areas of @p window now.
    explicit FocusInView(QWidget& window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};
