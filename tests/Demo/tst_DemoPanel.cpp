#include "Demo/DemoPanel.h"

#include <QTest>

/// Where the panel opens: it is there to be used together with the window beside it.
class tst_DemoPanel : public QObject
{
    Q_OBJECT

private slots:
    void place_data();
    void place();
    void room_data();
    void room();
};

void tst_DemoPanel::place_data()
{
    QTest::addColumn<QRect>("window");
    QTest::addColumn<QRect>("screen");
    QTest::addColumn<QRect>("panel"); // its size is asked with, its place expected
    const QRect wide(0, 0, 1920, 1080);
    const QRect narrow(0, 0, 1600, 1200);
    QTest::newRow("right") << QRect(100, 50, 1024, 775) << wide << QRect(1132, 50, 400, 500);
    QTest::newRow("right, pushed up by the edge below")
        << QRect(100, 300, 1024, 775) << wide << QRect(1132, 180, 400, 900);
    QTest::newRow("left") << QRect(800, 50, 1024, 775) << wide << QRect(392, 50, 400, 500);
    QTest::newRow("below") << QRect(288, 100, 1024, 300) << narrow << QRect(288, 408, 400, 500);
    QTest::newRow("below, pushed off the right edge")
        << QRect(500, 0, 1100, 300) << QRect(480, 0, 1120, 1200) << QRect(500, 308, 1000, 500);
    QTest::newRow("on a second screen")
        << QRect(2000, 50, 1024, 775) << QRect(1920, 0, 1920, 1080) << QRect(3032, 50, 400, 500);
    QTest::newRow("room nowhere: right edge")
        << QRect(250, 220, 1024, 775) << narrow << QRect(1200, 220, 400, 500);
    QTest::newRow("room nowhere: less is covered at the left")
        << QRect(388, 220, 1024, 775) << narrow << QRect(0, 220, 400, 500);
    QTest::newRow("room nowhere: less is covered at the bottom")
        << QRect(100, 0, 1400, 750) << narrow << QRect(100, 700, 400, 500);
}

void tst_DemoPanel::place()
{
    QFETCH(QRect, window);
    QFETCH(QRect, screen);
    QFETCH(QRect, panel);
    QCOMPARE(DemoPanel::placeBeside(window, panel.size(), screen), panel.topLeft());
    QVERIFY(screen.contains(panel));
}

void tst_DemoPanel::room_data()
{
    QTest::addColumn<QRect>("window");
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QPoint>("moved");
    const QSize narrow(1600, 1200);
    QTest::newRow("room at the right") << QRect(100, 50, 1024, 775) << narrow << QPoint(100, 50);
    QTest::newRow("room at the left") << QRect(450, 50, 1024, 775) << narrow << QPoint(450, 50);
    QTest::newRow("room below") << QRect(288, 50, 1024, 300) << narrow << QPoint(288, 50);
    QTest::newRow("in the middle") << QRect(288, 220, 1024, 775) << narrow << QPoint(168, 220);
    QTest::newRow("no room at all") << QRect(100, 50, 1024, 775) << QSize(1280, 900) << QPoint(100, 50);
    QTest::newRow("maximized") << QRect(0, 0, 1600, 1200) << narrow << QPoint(0, 0);
}

void tst_DemoPanel::room()
{
    QFETCH(QRect, window);
    QFETCH(QSize, screen);
    QFETCH(QPoint, moved);
    const QSize panel(400, 612);
    const QRect whole(QPoint(0, 0), screen);
    QCOMPARE(DemoPanel::placeWithRoom(window, panel, whole), moved);
    const QRect place(DemoPanel::placeBeside(QRect(moved, window.size()), panel, whole), panel);
    const bool isFree = !place.intersects(QRect(moved, window.size()));
    QCOMPARE(isFree, screen.width() == 1600 && window.width() < 1600);
}

QTEST_MAIN(tst_DemoPanel)
#include "tst_DemoPanel.moc"
