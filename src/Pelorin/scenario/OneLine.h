#pragma once

#include <QString>

/// A name for a place that has one line: line breaks and other control characters become blanks.
QString onOneLine(const QString& text);
