#include "Resources/Resources.h"
#include "help/HelpBench.h"
#include "help/Manual.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextBlock>

#include <memory>

namespace {
constexpr int pixelsPerMetreAtTwice = 7559;

QTextImageFormat firstPicture(const QTextDocument& document)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            if (part.fragment().charFormat().isImageFormat()) {
                return part.fragment().charFormat().toImageFormat();
            }
        }
    }
    return {};
}

QImage shownImage(const QTextDocument& document)
{
    return document.resource(QTextDocument::ImageResource, QUrl(firstPicture(document).name()))
        .value<QImage>();
}
} // namespace

/// The manual's files: what the help shows where they are, are damaged or are not there at all.
class tst_ManualFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        applyColours();
        applyStyleSheet(*qApp);
    }
    void init();
    void cleanup() { Manual::setFolder(QString()); }
    void addresses();
    void folderIsBesideThePrograms();
    void tellsThatTheFolderIsMissing();
    void namesOfFoldersAreNoMarkdown();
    void tellsWhichPageIsMissing_data();
    void tellsWhichPageIsMissing();
    void tellsWhichPageCannotBeRead_data();
    void tellsWhichPageCannotBeRead();
    void missingPageCanBeLeft();
    void pictureFitsThePage();
    void smallPictureKeepsItsSize();
    void pictureFollowsTheWindow();
    void missingPictureIsItsText_data();
    void missingPictureIsItsText();
    void picturesSideBySide();

private:
    void write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(m_folder->filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }
    void paint(const QString& name, const QSize& pixels) const
    {
        QImage image(pixels, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        image.setDotsPerMeterX(pixelsPerMetreAtTwice);
        image.setDotsPerMeterY(pixelsPerMetreAtTwice);
        QVERIFY(image.save(m_folder->filePath(name)));
    }
    ManualBrowser& show(const QString& page)
    {
        Help::show(&m_bench->window, page);
        return *HelpBench<QWidget>::browser(*m_bench->help());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<HelpBench<QWidget>> m_bench;
};

void tst_ManualFiles::init()
{
    m_bench.reset(); // the watch over the framework's warnings is one at a time
    m_bench = std::make_unique<HelpBench<QWidget>>();
    QVERIFY(m_bench->show());
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("pictures")));
    Manual::setFolder(m_folder->path());
}

void tst_ManualFiles::addresses()
{
    write(QStringLiteral("update.md"), "# Update\n");
    const auto pageAt = [](const char* address) { return Manual::pageAt(QUrl(QLatin1String(address))); };
    QCOMPARE(Manual::pageAt(Manual::address(QStringLiteral("update"))), QStringLiteral("update"));
    QCOMPARE(pageAt("manual:/vyr/no-such-page.md"), QStringLiteral("no-such-page"));
    for (const char* foreign :
         {"file:///update.md", "update.md", "", "manual:vyr/update.md", "manual:/update.md",
          "manual:/vyr/update.md#a", "manual:/vyr/update.md?a", "manual:/vyr//host/update.md",
          "manual:/vyr/a/update.md", "manual:/vyr/../update.md", "manual:/vyr/..%2fupdate.md",
          "manual:/vyr/update", "manual:/vyr/Update.md", "manual:/vyr/.md", "manual:/vyr/-.md",
          "manual:/vyr/update.md.md"}) {
        QVERIFY2(pageAt(foreign).isEmpty(), foreign);
    }
    for (const char* foreign :
         {"manual:/vyr/update.md", "manual:/vyr/pictures/../a.png", "manual:/vyr/pictures/a.svg",
          "manual:/vyr/pictures/a/b.png", "file:///pictures/a.png", "pictures/a.png"}) {
        QVERIFY2(Manual::pictureAt(QUrl(QLatin1String(foreign))).isEmpty(), foreign);
    }
    QCOMPARE(Manual::pictureAt(QUrl(QStringLiteral("manual:/vyr/pictures/a-1.png"))),
             m_folder->filePath(QStringLiteral("pictures/a-1.png")));
    QCOMPARE(Manual::text(QStringLiteral("update")), QStringLiteral("# Update\n"));
    for (const char* name : {"no-such-page", "../update", "", "./update"}) {
        QCOMPARE(Manual::text(QLatin1String(name)), QString());
    }
    QCOMPARE(Manual::address(QStringLiteral("../update")), Manual::address(Manual::indexPage()));
}

void tst_ManualFiles::folderIsBesideThePrograms()
{
    Manual::setFolder(QString());
    const QDir programs(QCoreApplication::applicationDirPath());
    QCOMPARE(Manual::folder(), QDir::cleanPath(programs.filePath(QStringLiteral("../share/vyr/manual"))));
}

void tst_ManualFiles::tellsThatTheFolderIsMissing()
{
    const QString folder = m_folder->filePath(QStringLiteral("gone"));
    Manual::setFolder(folder);
    const ManualBrowser& browser = show(QStringLiteral("scenarios"));
    QCOMPARE(browser.heading(), QStringLiteral("The manual is missing"));
    QVERIFY(browser.toPlainText().contains(folder));
    QCOMPARE(m_bench->help()->windowTitle(), QStringLiteral("The manual is missing - VYR Help"));
    QCOMPARE(WarningWatch::messages(), QStringList());
}

void tst_ManualFiles::namesOfFoldersAreNoMarkdown()
{
    const QString folder = m_folder->filePath(QStringLiteral("*a* [b](c) <b>d</b> `e` _f_ \\g &amp; |\n# h"));
    Manual::setFolder(folder);
    const QString text = show(QStringLiteral("index")).toPlainText();
    QVERIFY2(text.contains(QStringLiteral("*a* [b](c) <b>d</b> `e` _f_ \\g &amp; |")), qPrintable(text));
    QCOMPARE(text.count(QLatin1Char('\n')), 3); // heading, what, where, advice
}

void tst_ManualFiles::tellsWhichPageIsMissing_data()
{
    QTest::addColumn<QString>("page");
    QTest::newRow("contents") << QStringLiteral("index");
    QTest::newRow("another") << QStringLiteral("scenarios");
}

void tst_ManualFiles::tellsWhichPageIsMissing()
{
    QFETCH(QString, page);
    write(QStringLiteral("update.md"), "# Update\n");
    const ManualBrowser& browser = show(page);
    QCOMPARE(browser.heading(), QStringLiteral("This page is missing"));
    QVERIFY(browser.toPlainText().contains(m_folder->filePath(page + QLatin1String(".md"))));
    QCOMPARE(WarningWatch::messages(), QStringList());
}

void tst_ManualFiles::tellsWhichPageCannotBeRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("another encoding") << QByteArray("# Gr\xfc\xdf"
                                                    "e\n");
    QTest::newRow("cut in a letter") << QByteArray("# Gr\xc3");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("far too large") << QByteArray(1'000'001, 'a');
}

void tst_ManualFiles::tellsWhichPageCannotBeRead()
{
    QFETCH(QByteArray, bytes);
    write(QStringLiteral("update.md"), bytes);
    const ManualBrowser& browser = show(QStringLiteral("update"));
    QCOMPARE(browser.heading(), QStringLiteral("This page cannot be read"));
    QVERIFY(browser.toPlainText().contains(m_folder->filePath(QStringLiteral("update.md"))));
}

void tst_ManualFiles::missingPageCanBeLeft()
{
    write(QStringLiteral("index.md"), "# Contents\n\n[Gone](gone.md)\n");
    ManualBrowser& browser = show(QStringLiteral("index"));
    show(QStringLiteral("gone"));
    QCOMPARE(browser.heading(), QStringLiteral("This page is missing"));
    browser.backward();
    QCOMPARE(browser.heading(), QStringLiteral("Contents"));
}

void tst_ManualFiles::pictureFitsThePage()
{
    write(QStringLiteral("update.md"), "# Update\n\n![A wide one](pictures/wide.png)\n");
    paint(QStringLiteral("pictures/wide.png"), {4000, 1000});
    const ManualBrowser& browser = show(QStringLiteral("update"));
    const QTextImageFormat picture = firstPicture(*browser.document());
    QVERIFY(picture.width() > browser.width() * 0.8 && picture.width() < browser.width());
    QCOMPARE(qRound(picture.width() / picture.height()), 4);
    QCOMPARE(picture.toolTip(), QStringLiteral("A wide one"));
    // One pixel of it is one of the screen, so that nothing is scaled when it is drawn.
    const QImage image = shownImage(*browser.document());
    QCOMPARE(image.width(), qRound(picture.width() * browser.devicePixelRatioF()));
    QCOMPARE(image.devicePixelRatio(), browser.devicePixelRatioF());
    QCOMPARE(image.pixelColor(1, 1), QColor(Qt::darkCyan));
    QTRY_COMPARE(browser.horizontalScrollBar()->maximum(), 0);
}

void tst_ManualFiles::smallPictureKeepsItsSize()
{
    write(QStringLiteral("update.md"), "# Update\n\n![A small one](pictures/small.png)\n");
    paint(QStringLiteral("pictures/small.png"), {200, 80});
    const QTextImageFormat picture = firstPicture(*show(QStringLiteral("update")).document());
    QCOMPARE(qRound(picture.width()), 100);
    QCOMPARE(qRound(picture.height()), 40);
}

void tst_ManualFiles::pictureFollowsTheWindow()
{
    write(QStringLiteral("update.md"), "# Update\n\n![A wide one](pictures/wide.png)\n");
    paint(QStringLiteral("pictures/wide.png"), {4000, 1000});
    const ManualBrowser& browser = show(QStringLiteral("update"));
    const qreal before = firstPicture(*browser.document()).width();
    m_bench->help()->resize(m_bench->help()->width() - 200, 500);
    QTRY_COMPARE(firstPicture(*browser.document()).width(), before - 200);
    QCOMPARE(shownImage(*browser.document()).width(), qRound((before - 200) * browser.devicePixelRatioF()));
}

void tst_ManualFiles::missingPictureIsItsText_data()
{
    QTest::addColumn<QString>("name");
    const QString outside = QStringLiteral(VYR_MANUAL_FOLDER "/pictures/help.png");
    QTest::newRow("not there") << QStringLiteral("pictures/gone.png");
    QTest::newRow("no picture") << QStringLiteral("pictures/text.png");
    QTest::newRow("out of the manual") << QStringLiteral("../outside.png");
    QTest::newRow("file of the system") << outside;
    QTest::newRow("address of a file") << QString(QLatin1String("file:") + outside);
    QTest::newRow("network") << QStringLiteral("http://localhost/a.png");
    QTest::newRow("resource") << QStringLiteral("qrc:/Resources/buttons/settings.png");
    QTest::newRow("inside the page") << QStringLiteral(
        "data:image/png;base64,"
        "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==");
}

void tst_ManualFiles::missingPictureIsItsText()
{
    QFETCH(QString, name);
    write(QStringLiteral("update.md"), "# Update\n\n![A window](" + name.toUtf8() + ")\n\nAfter it.\n");
    write(QStringLiteral("pictures/text.png"), "no picture");
    ManualBrowser& browser = show(QStringLiteral("update"));
    QVERIFY(firstPicture(*browser.document()).name().isEmpty());
    QVERIFY2(browser.toPlainText().contains(QStringLiteral("[Picture missing: A window]\nAfter it.")),
             qPrintable(browser.toPlainText()));
    // Given nothing for a name, the framework would open the file of this name itself.
    QVERIFY(!browser.loadResource(QTextDocument::ImageResource, QUrl(name)).value<QImage>().isNull());
    QCOMPARE(WarningWatch::messages(), QStringList());
}

void tst_ManualFiles::picturesSideBySide()
{
    write(QStringLiteral("update.md"),
          "# Update\n\n![a](pictures/a.png)![a](pictures/a.png)![b](pictures/b.png)![c](pictures/a.png)\n");
    paint(QStringLiteral("pictures/a.png"), {40, 40});
    const QString text = show(QStringLiteral("update")).toPlainText();
    QCOMPARE(text.count(QChar(QChar::ObjectReplacementCharacter)), 3);
    QVERIFY(text.contains(QStringLiteral("[Picture missing: b]")));
}

QTEST_MAIN(tst_ManualFiles)
#include "tst_ManualFiles.moc"
