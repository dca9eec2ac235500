#include "help/PagePictures.h"

#include "help/Manual.h"

#include <QCoreApplication>
#include <QImageReader>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <vector>

namespace {
constexpr qreal metresPerInch = 0.0254;
constexpr qreal usualDotsPerInch = 96;
/// Larger ones are no pictures of this program's windows.
constexpr int maximumSide = 8000;

struct Place
{
    int position;
    QTextImageFormat format;
};

std::vector<Place> placesOf(const QTextDocument& document)
{
    std::vector<Place> places;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QTextFragment fragment = part.fragment();
            const QTextCharFormat format = fragment.charFormat();
            // Like pictures side by side are one fragment.
            for (int offset = 0; format.isImageFormat() && offset < fragment.length(); ++offset) {
                places.push_back({fragment.position() + offset, format.toImageFormat()});
            }
        }
    }
    return places;
}

QImage read(const QString& path)
{
    if (path.isEmpty()) {
        return {};
    }
    QImageReader reader(path, "png");
    const QSize size = reader.size();
    if (!size.isValid() || std::max(size.width(), size.height()) > maximumSide) {
        return {};
    }
    return reader.read();
}

/// The picture's resolution tells how many of its pixels are one of the page's.
qreal ownWidth(const QImage& image)
{
    const qreal dotsPerInch = image.dotsPerMeterX() * metresPerInch;
    return image.width() * usualDotsPerInch / std::max(dotsPerInch, usualDotsPerInch);
}

QString alternativeText(const QTextImageFormat& format)
{
    const QString text = format.stringProperty(QTextFormat::ImageAltText);
    return text.isEmpty() ? QCoreApplication::translate("PagePictures", "no description") : text;
}

QTextCursor selected(QTextDocument& document, int position)
{
    QTextCursor cursor(&document);
    cursor.setPosition(position);
    cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
    return cursor;
}

void putText(QTextDocument& document, const Place& place)
{
    selected(document, place.position)
        .insertText(QCoreApplication::translate("PagePictures", "[Picture missing: %1]")
                        .arg(alternativeText(place.format)),
                    QTextCharFormat());
}

void putPicture(QTextDocument& document, const Place& place, const QUrl& address, const QImage& image,
                const QSizeF& size, qreal pixelRatio)
{
    QImage scaled =
        image.scaled((size * pixelRatio).toSize(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(pixelRatio);
    document.addResource(QTextDocument::ImageResource, address, scaled);
    QTextImageFormat format = place.format;
    format.setName(address.toString());
    format.setWidth(size.width());
    format.setHeight(size.height());
    format.setToolTip(alternativeText(format).toHtmlEscaped());
    selected(document, place.position).setCharFormat(format);
}
} // namespace

void PagePictures::fit(QTextDocument& document, int width, qreal pixelRatio)
{
    const QUrl page = Manual::address(Manual::indexPage());
    std::vector<Place> places = placesOf(document);
    // From the end, as a text is longer than the picture that it stands for.
    std::reverse(places.begin(), places.end());
    for (const Place& place : places) {
        const QUrl address = page.resolved(QUrl(place.format.name()));
        const QImage image = read(Manual::pictureAt(address));
        if (image.isNull()) {
            putText(document, place);
            continue;
        }
        const qreal shown = std::max<qreal>(1, std::min<qreal>(width, ownWidth(image)));
        const QSizeF size(shown, std::max<qreal>(1, shown * image.height() / image.width()));
        putPicture(document, place, address, image, size, pixelRatio);
    }
}
