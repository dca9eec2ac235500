#pragma once

#include <QTableWidgetItem>

class QWidget;

/// A table's cell that is filled by a widget, as a screen reader meets it: the table tells of its cells and
/// not of the widgets in them. Its text is the widget's name and what that shows now; on the screen it shows
/// nothing.
class SpokenCell : public QTableWidgetItem
{
public:
    /// @p widget, a check box, a drop-down or a line edit, lies in this cell for as long as there is one.
    explicit SpokenCell(const QWidget& widget) : m_widget(widget) {}

    QVariant data(int role) const override;

private:
    const QWidget& m_widget;
};
