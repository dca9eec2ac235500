#pragma once

#include <QtGlobal>

class QTextDocument;

/// The pictures of a page. They are made with more pixels than most screens show; here they get the size in
/// which they are read, which is never more than their own and never more than the page is wide.
namespace PagePictures {
/// Gives every picture of @p document at most @p width, and the pixels that a screen of @p pixelRatio shows.
/// A picture that is none of the manual's, or cannot be read, becomes its alternative text. May be called
/// again with another width.
void fit(QTextDocument& document, int width, qreal pixelRatio);
} // namespace PagePictures
