#pragma once

#include <QMessageBox>

/// Shows @p text as it stands in a box without a title, with one OK button, and waits until it is closed.
/// @p parent, which may be deleted meanwhile, takes the box along.
void tellUser(QWidget* parent, QMessageBox::Icon icon, const QString& text);
