#include "Resources/Resources.h"
#include "help/HelpBench.h"
#include "help/Manual.h"
#include "help/PageStyle.h"
#include "support/Contrast.h"

#include <QAbstractTextDocumentLayout>
#include <QDir>
#include <QFile>
#include <QScrollBar>
#include <QSet>
#include <QTextBlock>
#include <QTextDocument>
#include <QXmlStreamReader>

#include <algorithm>

namespace {
QString fileText(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QDir sourceFolder()
{
    return QDir(QStringLiteral(VYR_MANUAL_FOLDER));
}

/// Of the repository, not of what has been copied beside the tests.
QStringList allPages()
{
    QStringList pages = sourceFolder().entryList({QStringLiteral("*.md")}, QDir::Files, QDir::Name);
    for (QString& page : pages) {
        page.chop(3);
    }
    return pages;
}

struct Parts
{
    QStringList links;
    QList<QTextImageFormat> pictures;
};

Parts partsOf(const QString& page)
{
    QTextDocument document;
    document.setMarkdown(Manual::text(page));
    Parts parts;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QTextCharFormat format = part.fragment().charFormat();
            if (format.isAnchor()) {
                parts.links.append(format.anchorHref());
            } else if (format.isImageFormat()) {
                parts.pictures.append(format.toImageFormat());
            }
        }
    }
    return parts;
}

/// The "helpPage" properties of a form, read from the form itself.
QStringList helpPagesOf(const QString& form)
{
    QStringList pages;
    QXmlStreamReader reader(fileText(form));
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement &&
            reader.name() == QLatin1String("property") &&
            reader.attributes().value(QLatin1String("name")) == QLatin1String("helpPage")) {
            reader.readNextStartElement();
            pages.append(reader.readElementText());
        }
    }
    return pages;
}
} // namespace

/// The pages of the manual: that they are there, hang together, and can be read.
class tst_Manual : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        applyColours();
        applyStyleSheet(*qApp);
    }
    void copyIsTheFolder();
    void everyPageIsReached();
    void linksLeadToPages_data() { rowForEachPage(); }
    void linksLeadToPages();
    void picturesAreThere_data() { rowForEachPage(); }
    void picturesAreThere();
    void everyPictureIsShown();
    void pageBeginsWithItsHeading_data() { rowForEachPage(); }
    void pageBeginsWithItsHeading();
    void onlyMarkdownThatIsShown_data() { rowForEachPage(); }
    void onlyMarkdownThatIsShown();
    void pageFitsItsWindow_data();
    void pageFitsItsWindow();
    void linksCanBeRead_data() { rowForEachPage(); }
    void linksCanBeRead();
    void styleIsTheSameOnReturning();
    void codeIsOneBlock();
    void formsNamePages();

private:
    static void rowForEachPage()
    {
        QTest::addColumn<QString>("page");
        const QStringList pages = allPages();
        for (const QString& page : pages) {
            QTest::newRow(qPrintable(page)) << page;
        }
    }
};

void tst_Manual::copyIsTheFolder()
{
    const QStringList pages = allPages();
    QVERIFY(pages.size() >= 15);
    for (const QString& page : pages) {
        const QString text = fileText(sourceFolder().filePath(page + QLatin1String(".md")));
        QVERIFY2(!text.isEmpty(), qPrintable(page));
        QCOMPARE(Manual::text(page), text);
    }
    const QStringList copies =
        QDir(Manual::folder()).entryList({QStringLiteral("*.md")}, QDir::Files, QDir::Name);
    QCOMPARE(copies.size(), pages.size());
}

void tst_Manual::everyPageIsReached()
{
    QStringList open{Manual::indexPage()};
    QSet<QString> reached{Manual::indexPage()};
    while (!open.isEmpty()) {
        const QString page = open.takeFirst();
        const QStringList links = partsOf(page).links;
        for (const QString& link : links) {
            const QString target = Manual::pageAt(Manual::address(page).resolved(QUrl(link)));
            if (!target.isEmpty() && !reached.contains(target)) {
                reached.insert(target);
                open.append(target);
            }
        }
    }
    QStringList missing = allPages();
    for (const QString& page : qAsConst(reached)) {
        missing.removeAll(page);
    }
    QCOMPARE(missing, QStringList());
}

void tst_Manual::linksLeadToPages()
{
    QFETCH(QString, page);
    const QStringList links = partsOf(page).links;
    for (const QString& link : links) {
        // Beside the page itself: so it leads somewhere in the repository as well as in the program.
        const QUrl target = Manual::address(page).resolved(QUrl(link));
        QVERIFY2(!Manual::pageAt(target).isEmpty(), qPrintable(link));
        QVERIFY2(QFile::exists(sourceFolder().filePath(link)), qPrintable(link));
    }
}

void tst_Manual::picturesAreThere()
{
    QFETCH(QString, page);
    const QList<QTextImageFormat> pictures = partsOf(page).pictures;
    for (const QTextImageFormat& picture : pictures) {
        const QString path = Manual::pictureAt(Manual::address(page).resolved(QUrl(picture.name())));
        QVERIFY2(!path.isEmpty(), qPrintable(picture.name()));
        QVERIFY2(!QImage(path).isNull(), qPrintable(path));
        QVERIFY2(!picture.stringProperty(QTextFormat::ImageAltText).isEmpty(), qPrintable(path));
        QVERIFY2(QFile::exists(sourceFolder().filePath(picture.name())), qPrintable(picture.name()));
    }
}

void tst_Manual::everyPictureIsShown()
{
    QStringList unused = sourceFolder().entryList({QStringLiteral("pictures")}, QDir::Dirs);
    QCOMPARE(unused.size(), 1);
    const QDir folder(sourceFolder().filePath(unused.first()));
    unused = folder.entryList({QStringLiteral("*.png")}, QDir::Files);
    QVERIFY(unused.size() >= 13);
    for (const QString& file : qAsConst(unused)) {
        QVERIFY2(QFileInfo(folder.filePath(file)).size() < 150000, qPrintable(file));
    }
    const QStringList pages = allPages();
    for (const QString& page : pages) {
        const QList<QTextImageFormat> pictures = partsOf(page).pictures;
        for (const QTextImageFormat& picture : pictures) {
            unused.removeAll(QFileInfo(picture.name()).fileName());
        }
    }
    QCOMPARE(unused, QStringList());
}

void tst_Manual::pageBeginsWithItsHeading()
{
    QFETCH(QString, page);
    QTextDocument document;
    document.setMarkdown(Manual::text(page));
    QCOMPARE(document.firstBlock().blockFormat().headingLevel(), 1);
    for (QTextBlock block = document.firstBlock().next(); block.isValid(); block = block.next()) {
        QVERIFY2(block.blockFormat().headingLevel() != 1, qPrintable(block.text()));
    }
}

void tst_Manual::onlyMarkdownThatIsShown()
{
    QFETCH(QString, page);
    const QString source = Manual::text(page);
    QVERIFY(!source.contains(QLatin1Char('<')));
    QTextDocument document;
    document.setMarkdown(source);
    // Marks that were not understood stand in the text.
    const QString shown = document.toPlainText();
    for (const char* mark : {"**", "](", "`", "|", "\n#", "\n- "}) {
        QVERIFY2(!shown.contains(QLatin1String(mark)), mark);
    }
}

void tst_Manual::pageFitsItsWindow_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<int>("points");
    QTest::addColumn<int>("width");
    const QStringList pages = allPages();
    for (const QString& page : pages) {
        QTest::addRow("%s, usual type", qPrintable(page)) << page << 9 << 680;
        QTest::addRow("%s, narrow", qPrintable(page)) << page << 9 << 440;
        QTest::addRow("%s, large type", qPrintable(page)) << page << 14 << 680;
    }
}

void tst_Manual::pageFitsItsWindow()
{
    QFETCH(QString, page);
    QFETCH(int, points);
    QFETCH(int, width);
    const QFont before = QApplication::font();
    QFont font(before);
    font.setPointSize(points);
    QApplication::setFont(font);
    QWidget owner;
    Help::show(&owner, page);
    const HelpWindow* const help = HelpBench<QWidget>::findHelp(owner);
    HelpBench<QWidget>::findHelp(owner)->resize(width, 500);
    const ManualBrowser* browser = HelpBench<QWidget>::browser(*help);
    QCOMPARE(browser->page(), page);
    // A long page is laid out bit by bit; asking for its size lays out the rest, and with it what is wide.
    QVERIFY(browser->document()->size().isValid());
    QTRY_COMPARE(browser->horizontalScrollBar()->maximum(), 0);
    QApplication::setFont(before);
}

void tst_Manual::linksCanBeRead()
{
    QFETCH(QString, page);
    QWidget owner;
    Help::show(&owner, page);
    ManualBrowser* browser = HelpBench<QWidget>::browser(*HelpBench<QWidget>::findHelp(owner));
    const QColor ground = browser->grab().toImage().pixelColor(browser->width() / 2, 6);
    for (QTextBlock block = browser->document()->begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QTextCharFormat format = part.fragment().charFormat();
            if (format.isAnchor()) {
                QVERIFY(contrast(format.foreground().color(), ground) >= 7.0);
                QVERIFY(format.fontUnderline());
            }
        }
    }
    QVERIFY(contrast(browser->palette().color(QPalette::Text), ground) >= 7.0);
}

void tst_Manual::styleIsTheSameOnReturning()
{
    QWidget owner;
    Help::show(&owner, QStringLiteral("main-window"));
    ManualBrowser* browser = HelpBench<QWidget>::browser(*HelpBench<QWidget>::findHelp(owner));
    const QString first = browser->document()->toHtml();
    browser->home();
    browser->backward();
    QCOMPARE(browser->document()->toHtml(), first);
    Help::show(&owner, QStringLiteral("main-window"));
    QCOMPARE(browser->document()->toHtml(), first);
}

void tst_Manual::codeIsOneBlock()
{
    QTextDocument page;
    page.setMarkdown(
        QStringLiteral("Before.\n\n    first\n\n    third\n\nAfter.\n\n```\nfenced\nagain\n```\n\nEnd.\n"));
    PageStyle::apply(page, QGuiApplication::palette());
    QMap<QString, QTextBlock> lines;
    for (QTextBlock block = page.begin(); block.isValid(); block = block.next()) {
        lines.insert(block.text(), block);
    }
    const auto top = [&page](const QTextBlock& block) {
        return page.documentLayout()->blockBoundingRect(block).top();
    };
    const auto distance = [&](const char* from, const char* to) {
        return top(lines.value(QLatin1String(to))) - top(lines.value(QLatin1String(from)));
    };
    const qreal line = distance("fenced", "again");
    QVERIFY(line > 0 && line < distance("again", "End."));
    QCOMPARE(lines.value(QStringLiteral("fenced")).blockFormat().bottomMargin(), 0.0);
    // A line left empty keeps its height.
    QVERIFY(qAbs(distance("first", "third") - 2 * line) <= 1);
    QVERIFY(distance("third", "After.") > line);
    for (const char* code : {"first", "third", "fenced", "again"}) {
        QVERIFY(lines.value(QLatin1String(code)).blockFormat().leftMargin() > 0);
    }
    QCOMPARE(lines.value(QStringLiteral("After.")).blockFormat().leftMargin(), 0.0);
}

void tst_Manual::formsNamePages()
{
    const QDir folder(QStringLiteral(VYR_FORMS_FOLDER));
    const QStringList forms = folder.entryList({QStringLiteral("*.ui")}, QDir::Files);
    int named = 0;
    for (const QString& form : forms) {
        const QStringList pages = helpPagesOf(folder.filePath(form));
        for (const QString& page : pages) {
            ++named;
            QVERIFY2(allPages().contains(page), qPrintable(form + QLatin1String(": ") + page));
        }
    }
    QVERIFY(named >= 8);
}

QTEST_MAIN(tst_Manual)
#include "tst_Manual.moc"
