#include "mainwindow/CommandLine.h"

#include <QStringList>

CommandLine CommandLine::parse(const QString& arguments)
{
    CommandLine result;
    QString fileName;
    const QStringList pieces = arguments.split(QLatin1Char(' '));
    for (const QString& piece : pieces) {
        if (piece.isEmpty()) {
            break;
        }
        if (piece == QLatin1String("-diag")) {
            result.diagnostic = true;
            result.titleSuffix += QLatin1String(" (diag)");
        } else if (piece == QLatin1String("-forceupdate")) {
            result.forceUpdate = true;
            result.titleSuffix += QLatin1String(" (forceupdate)");
        } else if (piece == QLatin1String("-maxchannels")) {
            result.limitChannels = true;
            result.titleSuffix += QLatin1String(" (max channels = 4)");
        } else {
            // A path with blanks arrives in pieces; only whether it is complete matters.
            fileName += (fileName.isEmpty() ? QString() : QStringLiteral(" ")) + piece;
            if (fileName.endsWith(QLatin1String(".prf"), Qt::CaseInsensitive)) {
                break;
            }
        }
    }
    return result;
}
