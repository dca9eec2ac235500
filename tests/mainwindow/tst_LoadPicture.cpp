// Pictures where a unit has one and a half pixels: neither the coarse nor the dense file fits as it is.

#include "Resources/Resources.h"

#include <QApplication>
#include <QDir>
#include <QObject>
#include <QtTest>

namespace {
constexpr double scale = 1.5;
// Read when the application object is made.
const bool isScaled = qputenv("QT_SCALE_FACTOR", QByteArray::number(scale));
} // namespace

class tst_LoadPicture : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void picture_data();
    void picture();
    void pictureWithoutDenseSibling();
};

void tst_LoadPicture::initTestCase()
{
    QVERIFY(isScaled);
    QCOMPARE(qApp->devicePixelRatio(), scale);
    initResources();
}

void tst_LoadPicture::picture_data()
{
    QTest::addColumn<QString>("fileName");
    const QDir area(QStringLiteral(":/Resources/laser_output_area"));
    const QStringList names = area.entryList({QStringLiteral("*.png")});
    for (const QString& name : names) {
        if (!name.contains(QLatin1String("@2x")))
            QTest::newRow(qPrintable(name)) << area.filePath(name);
    }
    QTest::newRow("arrows") << QStringLiteral(":/Resources/buttons/up_down.png");
}

void tst_LoadPicture::picture()
{
    QFETCH(const QString, fileName);
    const QSize coarse = QPixmap(fileName).size();
    const QPixmap shown = loadPicture(fileName);

    QCOMPARE(shown.devicePixelRatio(), scale);
    QCOMPARE(shown.size(), coarse * scale);
    // Made of the dense one, not of the coarse one blown up.
    QString denseName = fileName;
    denseName.replace(QLatin1String(".png"), QLatin1String("@2x.png"));
    QPixmap expected =
        QPixmap(denseName).scaled(shown.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    expected.setDevicePixelRatio(scale);
    QCOMPARE(shown.toImage(), expected.toImage());
}

void tst_LoadPicture::pictureWithoutDenseSibling()
{
    const QString fileName = QStringLiteral(":/Resources/buttons/vyr_16.png");
    const QPixmap shown = loadPicture(fileName);
    QCOMPARE(shown.size(), QSize(16, 16));
    QCOMPARE(shown.devicePixelRatio(), 1.0);
}

QTEST_MAIN(tst_LoadPicture)
#include "tst_LoadPicture.moc"
