#include "help/Help.h"

#include "help/HelpWindow.h"

#include <QShortcut>
#include <QVariant>
#include <QWidget>

#include <utility>

namespace {
constexpr char pageProperty[] = "helpPage";

QString shortcutName()
{
    return QStringLiteral("helpShortcut");
}
} // namespace

void Help::install(QWidget* window, std::function<QString()> page)
{
    // Two shortcuts with one key would be ambiguous, and neither would do anything.
    delete window->findChild<QShortcut*>(shortcutName(), Qt::FindDirectChildrenOnly);
    auto* shortcut = new QShortcut(QKeySequence(QKeySequence::HelpContents), window);
    shortcut->setObjectName(shortcutName());
    shortcut->setAutoRepeat(false);
    QObject::connect(shortcut, &QShortcut::activated, window,
                     [window, page = std::move(page)] { show(window, page()); });
}

void Help::show(QWidget* window, const QString& page)
{
    HelpWindow::of(*window->window()).showPage(page);
}

QString Help::pageAt(const QWidget* start, const QString& fallback)
{
    for (const QWidget* widget = start; widget != nullptr; widget = widget->parentWidget()) {
        const QVariant page = widget->property(pageProperty);
        if (page.userType() == QMetaType::QString && !page.toString().isEmpty()) {
            return page.toString();
        }
    }
    return fallback;
}
