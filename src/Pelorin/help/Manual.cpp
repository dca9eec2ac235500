#include "help/Manual.h"

#include <QDir>
#include <QFile>

static void initManual()
{
    // A static library's resources stay unknown until somebody asks for them.
    Q_INIT_RESOURCE(manual);
}

namespace {
constexpr char folder[] = "/manual/";
constexpr char ending[] = ".md";

QString pathOf(const QString& page)
{
    return QLatin1String(folder) + page + QLatin1String(ending);
}
} // namespace

QStringList Manual::pages()
{
    initManual();
    QStringList names = QDir(QLatin1Char(':') + QLatin1String(folder)).entryList(QDir::Files, QDir::Name);
    for (QString& name : names) {
        name.chop(static_cast<int>(sizeof(ending)) - 1);
    }
    return names;
}

QString Manual::indexPage()
{
    return QStringLiteral("index");
}

QUrl Manual::address(const QString& page)
{
    QUrl url;
    url.setScheme(QStringLiteral("qrc"));
    url.setPath(pathOf(pages().contains(page) ? page : indexPage()));
    return url;
}

QString Manual::pageAt(const QUrl& address)
{
    const QStringList names = pages();
    for (const QString& name : names) {
        if (address == Manual::address(name)) {
            return name;
        }
    }
    return {};
}

QString Manual::text(const QString& page)
{
    if (!pages().contains(page)) {
        return {};
    }
    QFile file(QLatin1Char(':') + pathOf(page));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
