#pragma once

#include <QString>
#include <QWidget>

/// The widget of this name below @p dialog, which must have it.
template<typename Widget>
Widget* formWidget(const QWidget& dialog, const QString& objectName)
{
    auto* widget = dialog.findChild<Widget*>(objectName);
    Q_ASSERT(widget != nullptr);
    return widget;
}

template<typename Widget>
Widget* formWidget(const QWidget& dialog, const char* objectName)
{
    return formWidget<Widget>(dialog, QString::fromLatin1(objectName));
}
