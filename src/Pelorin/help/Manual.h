#pragma once

#include <QString>
#include <QUrl>

/// The pages of the manual as they are installed beside the program. A page is known by its file's name
/// without the ending, for example "main-window"; its text is Markdown.
///
/// Pages have addresses of their own kind, "manual:/vyr/main-window.md", so that nothing that a page says can
/// be taken for a file or for a place in the network. Only the names that are allowed here reach the disk.
namespace Manual {
/// Where pages are looked for: share/vyr/manual beside the folder that holds the program's.
QString folder();
/// Another place from now on; an empty text means the usual one.
void setFolder(const QString& path);

/// The contents page, which links to all others.
QString indexPage();
/// The file of @p page, which need not exist.
QString pathOf(const QString& page);
/// The address of @p page, whether or not there is one; the contents page's where no page can have this name.
QUrl address(const QString& page);
/// The page at @p address, whether or not there is one, or nothing when that is no page's address.
QString pageAt(const QUrl& address);
/// Empty where @p page is missing, cannot be read, is no UTF-8, or is larger than any page is.
QString text(const QString& page);
/// The file of the picture at @p address, or nothing when that is no picture of the manual.
QString pictureAt(const QUrl& address);
} // namespace Manual
