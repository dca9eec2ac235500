#include "boxes/ChooseFile.h"

#include <QPointer>

QString chooseFile(QWidget* parent, QFileDialog::AcceptMode mode, const QString& caption,
                   const QString& startPath, const QString& filters)
{
    const QPointer<QFileDialog> chooser(new QFileDialog(parent, caption, startPath, filters));
    chooser->setAcceptMode(mode);
    chooser->setFileMode(mode == QFileDialog::AcceptOpen ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    const bool accepted = chooser->exec() == QDialog::Accepted;
    QString pathName = accepted && chooser ? chooser->selectedFiles().value(0) : QString();
    delete chooser;
    return pathName;
}
