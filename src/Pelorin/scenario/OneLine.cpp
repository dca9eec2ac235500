#include "scenario/OneLine.h"

#include <algorithm>

QString onOneLine(const QString& text)
{
    QString line = text;
    const auto breaksTheLine = [](QChar character) {
        return character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
               character == QChar::ParagraphSeparator;
    };
    std::replace_if(line.begin(), line.end(), breaksTheLine, QLatin1Char(' '));
    return line;
}
