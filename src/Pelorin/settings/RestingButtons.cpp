#include "settings/RestingButtons.h"

#include "forms/FormWidgets.h"

#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>

RestingButtons::RestingButtons(QWidget& dialog, std::initializer_list<const char*> names)
    : m_dialog(dialog), m_tabs(formWidget<QTabWidget>(dialog, "tabWidget")->tabBar())
{
    for (const char* name : names) {
        m_buttons.append(formWidget<QPushButton>(dialog, name));
    }
}

void RestingButtons::setEnabled(bool enabled)
{
    if (!enabled) {
        QWidget* const focused = m_dialog.focusWidget();
        m_focusBefore = m_buttons.contains(focused) ? focused : nullptr;
        if (m_focusBefore) {
            m_tabs->setFocus();
        }
    }
    for (QWidget* button : qAsConst(m_buttons)) {
        button->setEnabled(enabled);
    }
    if (enabled && m_focusBefore && m_focusBefore->isVisible() && m_dialog.focusWidget() == m_tabs) {
        m_focusBefore->setFocus();
    }
}
