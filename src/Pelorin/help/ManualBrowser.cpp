#include "help/ManualBrowser.h"

#include "help/Manual.h"
#include "help/MissingPage.h"
#include "help/PagePictures.h"
#include "help/PageStyle.h"

#include <QGuiApplication>
#include <QImage>
#include <QStyle>
#include <QTextBlock>

#include <chrono>

namespace {
/// The pictures are fitted when the window's edge rests for a moment, and not for each step of its way.
constexpr std::chrono::milliseconds resizeRest{60};
} // namespace

ManualBrowser::ManualBrowser(QWidget* parent) : QTextBrowser(parent)
{
    m_fitSoon.setSingleShot(true);
    m_fitSoon.setInterval(resizeRest);
    connect(&m_fitSoon, &QTimer::timeout, this, &ManualBrowser::fitPictures);
    // A link is followed here alone, or not at all.
    setOpenLinks(false);
    connect(this, &QTextBrowser::anchorClicked, this, &ManualBrowser::follow);
    connect(this, &QTextBrowser::sourceChanged, this, &ManualBrowser::setPage);
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
    if (type == QTextDocument::ImageResource) {
        // The page's pictures are given to it once it is there. With nothing in their place until then, the
        // framework would take their names for files.
        QImage nothing(1, 1, QImage::Format_ARGB32);
        nothing.fill(Qt::transparent);
        return nothing;
    }
    if (type != QTextDocument::MarkdownResource) {
        return {};
    }
    const QString page = Manual::pageAt(name);
    const QString text = Manual::text(page);
    return text.isEmpty() ? MissingPage::text(page) : text;
}

void ManualBrowser::follow(const QUrl& link)
{
    if (!Manual::pageAt(link).isEmpty()) {
        setSource(link);
    }
}

void ManualBrowser::home()
{
    showPage(Manual::indexPage());
}

void ManualBrowser::setPage()
{
    // The application's colours, as the style sheet gives the browser's own the surface of a field.
    PageStyle::apply(*document(), QGuiApplication::palette());
    m_fittedWidth = 0;
    fitPictures();
}

void ManualBrowser::fitPictures()
{
    // As if there were a scroll bar: it comes and goes with the pictures' height, which follows their width.
    const int scrollBar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
    const int width = contentsRect().width() - scrollBar - 2 * qRound(document()->documentMargin());
    if (width == m_fittedWidth) {
        return;
    }
    m_fittedWidth = width;
    PagePictures::fit(*document(), width, devicePixelRatioF());
}

void ManualBrowser::resizeEvent(QResizeEvent* event)
{
    QTextBrowser::resizeEvent(event);
    m_fitSoon.start();
}

void ManualBrowser::showEvent(QShowEvent* event)
{
    QTextBrowser::showEvent(event);
    // A page that is set before the window is shown was fitted to no size in particular.
    fitPictures();
}
