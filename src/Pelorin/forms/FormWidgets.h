#pragma once

#include <QString>
#include <QWidget>

/// The widget of this name below @p window, which must have it.
template<typename Widget>
Widget* formWidget(const QWidget& window, const QString& objectName)
{
    auto* widget = window.findChild<Widget*>(objectName);
    Q_ASSERT(widget != nullptr);
    return widget;
}

template<typename Widget>
Widget* formWidget(const QWidget& window, const char* objectName)
{
    return formWidget<Widget>(window, QString::fromLatin1(objectName));
}
