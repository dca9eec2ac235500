#include "help/ManualBrowser.h"

#include "help/Manual.h"
#include "help/PageStyle.h"

#include <QGuiApplication>
#include <QTextBlock>

ManualBrowser::ManualBrowser(QWidget* parent) : QTextBrowser(parent)
{
    setOpenExternalLinks(false);
    // The application's colours, as the style sheet gives the browser's own the surface of a field.
    connect(this, &QTextBrowser::sourceChanged, this,
            [this] { PageStyle::apply(*document(), QGuiApplication::palette()); });
}

void ManualBrowser::showPage(const QString& page)
{
    setSource(Manual::address(page));
}

QString ManualBrowser::page() const
{
    return Manual::pageAt(source());
}

QString ManualBrowser::heading() const
{
    return document()->firstBlock().text();
}

QVariant ManualBrowser::loadResource(int type, const QUrl& name)
{
    // Pages alone: a picture or a style sheet, of whatever address, is none of them.
    if (type != QTextDocument::MarkdownResource) {
        return {};
    }
    return Manual::text(Manual::pageAt(name));
}

void ManualBrowser::setSource(const QUrl& name)
{
    if (!Manual::pageAt(name).isEmpty()) {
        QTextBrowser::setSource(name);
    }
}

void ManualBrowser::home()
{
    showPage(Manual::indexPage());
}
