#include "help/MissingPage.h"

#include "help/Manual.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {
QString tr(const char* text)
{
    return QCoreApplication::translate("MissingPage", text);
}

/// A folder's name may hold anything, and is to be read as it stands.
QString asPlainText(const QString& text)
{
    QString plain;
    for (const QChar character : text) {
        if (character.category() == QChar::Other_Control) {
            plain += QChar(QChar::ReplacementCharacter);
            continue;
        }
        if (character.isPunct() || character.isSymbol()) {
            plain += QLatin1Char('\\');
        }
        plain += character;
    }
    return plain;
}

QString page(const QString& heading, const QString& what, const QString& path, const QString& advice)
{
    const QString gap = QStringLiteral("\n\n");
    return QLatin1String("# ") + heading + gap + what + gap + asPlainText(QDir::toNativeSeparators(path)) +
           gap + advice + QLatin1Char('\n');
}
} // namespace

QString MissingPage::text(const QString& name)
{
    const QString repair = tr("Please install the program anew. Everything else works without the manual.");
    const QString folder = Manual::folder();
    if (!QFileInfo(folder).isDir()) {
        return page(tr("The manual is missing"),
                    tr("This program looks for its manual in this folder, "
                       "which is not there:"),
                    folder, repair);
    }
    const QString file = Manual::pathOf(name);
    if (!QFileInfo::exists(file)) {
        return page(tr("This page is missing"),
                    tr("This program looks for the page in this file, which is "
                       "not there:"),
                    file, repair);
    }
    return page(tr("This page cannot be read"),
                tr("The file of the page is there, but it is damaged, or you are not allowed to read it:"),
                file, repair);
}
