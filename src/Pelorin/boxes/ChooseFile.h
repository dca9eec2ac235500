#pragma once

#include <QFileDialog>

/// The file that the user chooses, to be read or to be written; empty when none is chosen. The dialog begins
/// at @p startPath, a folder or a file, and offers the files of @p filters. @p parent, which may be deleted
/// meanwhile, takes the dialog along.
QString chooseFile(QWidget* parent, QFileDialog::AcceptMode mode, const QString& caption,
                   const QString& startPath, const QString& filters);
