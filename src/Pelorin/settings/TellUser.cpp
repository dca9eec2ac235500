#include "settings/TellUser.h"

#include <QPointer>

void tellUser(QWidget* parent, QMessageBox::Icon icon, const QString& text)
{
    const QPointer<QMessageBox> box(new QMessageBox(icon, QString(), text, QMessageBox::Ok, parent));
    box->setTextFormat(Qt::PlainText);
    box->exec();
    delete box;
}
