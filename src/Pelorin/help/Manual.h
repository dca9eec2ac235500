#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

/// The pages of the manual as they are compiled into the program. A page is known by its file's name without
/// the ending, for example "main-window"; its text is Markdown.
namespace Manual {
/// All there are, in alphabetical order.
QStringList pages();
/// The contents page, which links to all others.
QString indexPage();
/// Where the browser finds @p page; the contents page's address where there is no such page.
QUrl address(const QString& page);
/// The page at @p address, or nothing when that is no page of the manual.
QString pageAt(const QUrl& address);
/// Empty where there is no such page.
QString text(const QString& page);
} // namespace Manual
