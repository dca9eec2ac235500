#pragma once

#include <QMessageBox>

/// Shows @p text in a modal box with one OK button, and waits until it is closed. A plain text is shown as it
/// stands, markup and all: texts of the device and of the user are never given as rich ones. @p parent, which
/// may be deleted meanwhile, takes the box along.
void tellUser(QWidget* parent, QMessageBox::Icon icon, const QString& text, const QString& title = QString(),
              Qt::TextFormat format = Qt::PlainText);

/// Lets a screen reader say of a box without a title what its picture tells the eye. For boxes that
/// tellUser() does not show.
void nameForScreenReader(QMessageBox& box);
