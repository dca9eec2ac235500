#include "boxes/TellUser.h"

#include <QCoreApplication>
#include <QPointer>

namespace {
QString meaningOf(QMessageBox::Icon icon)
{
    const auto tr = [](const char* text) { return QCoreApplication::translate("TellUser", text); };
    switch (icon) {
    case QMessageBox::Critical:
        return tr("Error");
    case QMessageBox::Warning:
        return tr("Warning");
    case QMessageBox::Question:
        return tr("Question");
    case QMessageBox::Information:
    case QMessageBox::NoIcon:
        break;
    }
    return tr("Information");
}
} // namespace

void tellUser(QWidget* parent, QMessageBox::Icon icon, const QString& text, const QString& title,
              Qt::TextFormat format)
{
    // On the heap and watched: whoever opens it may go while it is open, and would take the box along.
    const QPointer<QMessageBox> box(new QMessageBox(icon, title, text, QMessageBox::Ok, parent));
    box->setTextFormat(format);
    nameForScreenReader(*box);
    box->exec();
    delete box;
}

void nameForScreenReader(QMessageBox& box)
{
    // Not the text: it is read as the content of the box, and would be heard twice.
    if (box.windowTitle().isEmpty()) {
        box.setAccessibleName(meaningOf(box.icon()));
    }
}
