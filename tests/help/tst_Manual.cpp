#include "Resources/Resources.h"
#include "help/HelpBench.h"
#include "help/Manual.h"
#include "support/Contrast.h"

#include <QDir>
#include <QFile>
#include <QScrollBar>
#include <QTextBlock>
#include <QXmlStreamReader>

#include <algorithm>

namespace {
QString fileText(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QStringList linksOf(const QTextDocument& document)
{
    QStringList links;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QTextCharFormat format = part.fragment().charFormat();
            if (format.isAnchor()) {
                links.append(format.anchorHref());
            }
        }
    }
    return links;
}

QStringList linksOfPage(const QString& page)
{
    QTextDocument document;
    document.setMarkdown(Manual::text(page));
    return linksOf(document);
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
    void initTestCase() { applyLook(*qApp); }
    void allPagesAreThere();
    void resourceIsTheFolder();
    void contentsLinkToAll();
    void linksLeadToPages_data() { rowForEachPage(); }
    void linksLeadToPages();
    void linksResolve();
    void pageBeginsWithItsHeading_data() { rowForEachPage(); }
    void pageBeginsWithItsHeading();
    void onlyMarkdownThatIsShown_data() { rowForEachPage(); }
    void onlyMarkdownThatIsShown();
    void pageFitsItsWindow_data();
    void pageFitsItsWindow();
    void linksCanBeRead_data() { rowForEachPage(); }
    void linksCanBeRead();
    void styleIsTheSameOnReturning();
    void formsNamePages();

private:
    static void rowForEachPage()
    {
        QTest::addColumn<QString>("page");
        const QStringList pages = Manual::pages();
        for (const QString& page : pages) {
            QTest::newRow(qPrintable(page)) << page;
        }
    }
};

void tst_Manual::allPagesAreThere()
{
    QCOMPARE(Manual::pages(), QStringList({QStringLiteral("control-mode"), QStringLiteral("index"),
                                           QStringLiteral("main-window"), QStringLiteral("operating-info"),
                                           QStringLiteral("scenarios"), QStringLiteral("system-config"),
                                           QStringLiteral("system-info"), QStringLiteral("terminal"),
                                           QStringLiteral("ttl-configuration"), QStringLiteral("update")}));
}

void tst_Manual::resourceIsTheFolder()
{
    const QDir folder(QStringLiteral(VYR_MANUAL_FOLDER));
    const QStringList files = folder.entryList({QStringLiteral("*.md")}, QDir::Files, QDir::Name);
    QCOMPARE(files.size(), Manual::pages().size());
    for (const QString& file : files) {
        const QString text = fileText(folder.filePath(file));
        QVERIFY(!text.isEmpty());
        QCOMPARE(Manual::text(file.chopped(3)), text);
    }
}

void tst_Manual::contentsLinkToAll()
{
    QStringList missing = Manual::pages();
    missing.removeAll(Manual::indexPage());
    const QStringList links = linksOfPage(Manual::indexPage());
    for (const QString& link : links) {
        missing.removeAll(link.chopped(3));
    }
    QCOMPARE(missing, QStringList());
}

void tst_Manual::linksLeadToPages()
{
    QFETCH(QString, page);
    const QStringList links = linksOfPage(page);
    for (const QString& link : links) {
        // Beside the page itself: so it leads somewhere in the repository as well as in the program.
        const QUrl target = Manual::address(page).resolved(QUrl(link));
        QVERIFY2(!Manual::pageAt(target).isEmpty(), qPrintable(link));
        QVERIFY2(QFile::exists(QDir(QStringLiteral(VYR_MANUAL_FOLDER)).filePath(link)), qPrintable(link));
    }
}

void tst_Manual::linksResolve()
{
    // The counterpart: an address of no page is none.
    QCOMPARE(Manual::pageAt(Manual::address(QStringLiteral("update"))), QStringLiteral("update"));
    QCOMPARE(Manual::pageAt(QUrl(QStringLiteral("qrc:/manual/no-such-page.md"))), QString());
    QCOMPARE(Manual::pageAt(QUrl(QStringLiteral("file:///manual/update.md"))), QString());
    QCOMPARE(Manual::pageAt(QUrl(QStringLiteral("update.md"))), QString());
    QCOMPARE(Manual::pageAt(QUrl()), QString());
    QCOMPARE(Manual::text(QStringLiteral("no-such-page")), QString());
    QCOMPARE(Manual::address(QStringLiteral("no-such-page")), Manual::address(Manual::indexPage()));
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
    QVERIFY(!source.contains(QLatin1String("![")));
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
    const QStringList pages = Manual::pages();
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
    // A long page is laid out bit by bit.
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

void tst_Manual::formsNamePages()
{
    const QDir folder(QStringLiteral(VYR_FORMS_FOLDER));
    const QStringList forms = folder.entryList({QStringLiteral("*.ui")}, QDir::Files);
    int named = 0;
    for (const QString& form : forms) {
        const QStringList pages = helpPagesOf(folder.filePath(form));
        for (const QString& page : pages) {
            ++named;
            QVERIFY2(Manual::pages().contains(page), qPrintable(form + QLatin1String(": ") + page));
        }
    }
    QVERIFY(named >= 8);
}

QTEST_MAIN(tst_Manual)
#include "tst_Manual.moc"
