#pragma once

#include <QApplication>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>

/// The visible window of this kind; null when there is none.
template<typename Kind>
Kind* shownWindow(bool modal = true)
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        auto* const found = qobject_cast<Kind*>(widget);
        if (found != nullptr && found->isVisible() && found->isModal() == modal) {
            return found;
        }
    }
    return nullptr;
}

/// A click on the only button of the progress dialog, if there is one.
inline void cancelProgress()
{
    if (auto* const progress = shownWindow<QProgressDialog>()) {
        QTest::mouseClick(progress->findChild<QPushButton*>(), Qt::LeftButton);
    }
}
