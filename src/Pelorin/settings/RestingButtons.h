#pragma once

#include <QList>
#include <QPointer>

#include <initializer_list>

class QWidget;

/// Buttons that are disabled together while something runs that each of them would disturb. A disabled button
/// hands the focus to its neighbour, which may be the terminal or a table: the next key would go to the
/// device or begin to replace a value. So the focus waits on the dialog's tabs, which do nothing with most
/// keys, and comes back with the buttons unless the user has gone on to something else.
class RestingButtons
{
public:
    /// Finds the buttons called @p names and the tabs below @p dialog, which must outlive it.
    RestingButtons(QWidget& dialog, std::initializer_list<const char*> names);

    void setEnabled(bool enabled);

private:
    QWidget& m_dialog;
    QWidget* m_tabs;
    QList<QWidget*> m_buttons;
    QPointer<QWidget> m_focusBefore;
};
