#pragma once

#include <QString>

/// What the help says in place of a page of the manual that cannot be shown, in Markdown.
namespace MissingPage {
/// Tells whether the whole manual is missing or only the page @p name, and where it was looked for.
QString text(const QString& name);
} // namespace MissingPage
