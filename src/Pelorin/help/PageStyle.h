#pragma once

class QPalette;
class QTextDocument;

/// How a page of the manual is set. Markdown comes with the framework's plain formats, and a document's style
/// sheet counts for HTML alone, so the formats are given here.
namespace PageStyle {
/// May be called again for the same text.
void apply(QTextDocument& document, const QPalette& palette);
} // namespace PageStyle
