#include "boxes/TellUser.h"

#include <QPointer>

void tellUser(QWidget* parent, QMessageBox::Icon icon, const QString& text, const QString& title,
              Qt::TextFormat format)
{
    // On the heap and watched: whoever opens it may go while it is open, and would take the box along.
    const QPointer<QMessageBox> box(new QMessageBox(icon, title, text, QMessageBox::Ok, parent));
    box->setTextFormat(format);
    box->exec();
    delete box;
}
