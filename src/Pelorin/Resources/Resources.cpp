#include "Resources/Resources.h"

#include <QApplication>
#include <QFile>
#include <QStyleFactory>

namespace {
constexpr qreal denseRatio = 2.0; ///< pixels per unit of the pictures that have "@2x" in their names
} // namespace

void initResources()
{
    Q_INIT_RESOURCE(Resources);
}

QPixmap loadPicture(const QString& fileName)
{
    initResources();
    const qreal ratio = qApp->devicePixelRatio();
    QString denseName = fileName;
    denseName.insert(fileName.lastIndexOf(QLatin1Char('.')), QStringLiteral("@2x"));
    if (ratio <= 1.0 || !QFile::exists(denseName)) {
        return QPixmap(fileName);
    }
    QPixmap picture(denseName);
    if (ratio < denseRatio) {
        // A label would leave out every so many pixels instead.
        picture = picture.scaled(picture.size() * ratio / denseRatio, Qt::IgnoreAspectRatio,
                                 Qt::SmoothTransformation);
        picture.setDevicePixelRatio(ratio);
    }
    return picture;
}

QString loadStyleSheet()
{
    initResources();
    QFile file(QStringLiteral(":/Resources/vyr.qss"));
    // Compiled into the program: it is there, or the build is broken, and an unstyled window still works.
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QPalette darkPalette()
{
    const QColor window(0x16, 0x18, 0x1b);
    const QColor text(0xe6, 0xe8, 0xeb);
    const QColor dimmed(0x8b, 0x93, 0x9e);
    QPalette palette(text, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, QColor(0x0f, 0x11, 0x13));
    palette.setColor(QPalette::AlternateBase, QColor(0x1a, 0x1d, 0x20));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, QColor(0x2b, 0x2f, 0x35));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, dimmed);
    palette.setColor(QPalette::ToolTipBase, QColor(0x2b, 0x2f, 0x35));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Link, QColor(0x6c, 0xb4, 0xff));
    palette.setColor(QPalette::LinkVisited, QColor(0xc9, 0xa0, 0xff));
    palette.setColor(QPalette::Highlight, QColor(0x1f, 0x5f, 0xa8));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, dimmed);
    }
    return palette;
}

QIcon applicationIcon()
{
    initResources();
    QIcon icon;
    // Every size is decoded at the start: the next one, 256, alone would cost it a fifteenth.
    for (const int size : {16, 24, 32, 48, 64, 128}) {
        icon.addFile(QStringLiteral(":/Resources/buttons/vyr_%1.png").arg(size), QSize(size, size));
    }
    return icon;
}

void applyColours()
{
    // One style everywhere: the sheet is tuned to it, and a desktop's own style would show through.
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(darkPalette());
    QApplication::setWindowIcon(applicationIcon());
}

void applyStyleSheet(QApplication& application)
{
    application.setStyleSheet(loadStyleSheet());
}
