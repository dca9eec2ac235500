#include "help/Manual.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace {
constexpr char scheme[] = "manual";
/// Not the root, so that a link that begins there leads to no page.
constexpr char root[] = "/vyr/";
constexpr char ending[] = ".md";
constexpr qint64 maximumPageBytes = 1'000'000;

QString& chosenFolder()
{
    static QString path;
    return path;
}

bool isPageName(const QString& name)
{
    static const QRegularExpression allowed(QStringLiteral("\\A[a-z0-9]+(-[a-z0-9]+)*\\z"));
    return allowed.match(name).hasMatch();
}

/// Relative to the folder; empty unless @p address is one of the manual's, and nothing but a scheme and a
/// path.
QString pathIn(const QUrl& address)
{
    QUrl plain;
    plain.setScheme(QLatin1String(scheme));
    plain.setPath(address.path());
    const QLatin1String start(root);
    return plain == address && address.path().startsWith(start) ? address.path().mid(start.size())
                                                                : QString();
}
} // namespace

QString Manual::folder()
{
    if (!chosenFolder().isEmpty()) {
        return chosenFolder();
    }
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1String("/../share/vyr/manual"));
}

void Manual::setFolder(const QString& path)
{
    chosenFolder() = path;
}

QString Manual::indexPage()
{
    return QStringLiteral("index");
}

QString Manual::pathOf(const QString& page)
{
    return folder() + QLatin1Char('/') + page + QLatin1String(ending);
}

QUrl Manual::address(const QString& page)
{
    QUrl url;
    url.setScheme(QLatin1String(scheme));
    url.setPath(QLatin1String(root) + (isPageName(page) ? page : indexPage()) + QLatin1String(ending));
    return url;
}

QString Manual::pageAt(const QUrl& address)
{
    const QString path = pathIn(address);
    if (!path.endsWith(QLatin1String(ending))) {
        return {};
    }
    const QString name = path.chopped(static_cast<int>(sizeof(ending)) - 1);
    return isPageName(name) ? name : QString();
}

QString Manual::text(const QString& page)
{
    if (!isPageName(page)) {
        return {};
    }
    QFile file(pathOf(page));
    if (!file.open(QIODevice::ReadOnly) || file.size() > maximumPageBytes) {
        return {};
    }
    const QByteArray bytes = file.readAll();
    const QString text = QString::fromUtf8(bytes);
    // What is no UTF-8 would be shown with holes in it.
    return text.toUtf8() == bytes ? text : QString();
}

QString Manual::pictureAt(const QUrl& address)
{
    static const QRegularExpression allowed(QStringLiteral("\\Apictures/[a-z0-9]+(-[a-z0-9]+)*\\.png\\z"));
    const QString path = pathIn(address);
    return allowed.match(path).hasMatch() ? QString(folder() + QLatin1Char('/') + path) : QString();
}
