#pragma once

#include <QIcon>
#include <QPalette>
#include <QPixmap>
#include <QString>

class QApplication;

/// Registers the pictures and style sheets under ":/Resources/". A static library's resources stay unknown
/// until this is called; the other functions here call it themselves. Calling it again does nothing.
void initResources();

/// The picture @p fileName (":/Resources/....png") for a label: where any screen is denser than one pixel per
/// unit, its "@2x" sibling, with as many pixels as the densest shows. A pixmap made from a file name alone,
/// also by a form, is always the coarse one.
QPixmap loadPicture(const QString& fileName);

/// The text of the application's style sheet, for QApplication::setStyleSheet().
QString loadStyleSheet();

/// The dark colours for whatever the style sheet leaves to the style: links, placeholders, disabled text.
QPalette darkPalette();

/// The program's own picture in all sizes from 16 to 128 pixels.
QIcon applicationIcon();

/// The first half of the program's look: style, colours and icon. Call it once, before the first window is
/// made. Sharp pictures on dense screens also need QtVersion::followScreenDensity(), called before the
/// application object exists.
void applyColours();

/// The other half. It may be called before the first window is made, too, but where there is a sheet already,
/// whatever gets a parent is styled anew with all below it, and the start takes a tenth longer.
void applyStyleSheet(QApplication& application);
