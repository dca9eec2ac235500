#include "mainwindow/WindowBench.h"
#include "scenario/Scenario.h"
#include "settings/SettingsDialog.h"

#include <QTest>
#include <QWheelEvent>

#include <memory>

/// Colours, visibility, TTL polarity, the two layouts and the wheel.
class tst_WindowLayout : public ConnectedWindowTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void ttlInversion_data();
    void ttlInversion();
    void sliderColour();
    void visibility();
    void collapseAndExpand();
    void wheelNeedsFocus();
};

void tst_WindowLayout::init()
{
    QVERIFY(buildConnectedWindow());
    m_illuminator->clearCommands();
}

void tst_WindowLayout::cleanup()
{
    removeWindow();
}

void tst_WindowLayout::ttlInversion_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("inverted");
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("first") << 0 << true << QByteArray("ttl_invert:405=1");
    QTest::newRow("528") << 4 << true << QByteArray("ttl_invert:528=1");
    QTest::newRow("back") << 4 << false << QByteArray("ttl_invert:528=0");
    QTest::newRow("last") << 7 << true << QByteArray("ttl_invert:730=1");
    QTest::newRow("beyond the list") << 8 << true << QByteArray();
    QTest::newRow("far beyond the list") << 255 << true << QByteArray();
}

void tst_WindowLayout::ttlInversion()
{
    QFETCH(int, index);
    QFETCH(bool, inverted);
    QFETCH(QByteArray, command);
    emit m_window->settingsDialog()->invertTTLChanged(static_cast<quint8>(index), inverted);
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), command.isEmpty() ? QList<QByteArray>() : QList<QByteArray>{command});
    for (int i = 0; i < 8; ++i) {
        QCOMPARE(m_window->scenario()->channels().at(i)->isTtlInverted(), inverted && i == index);
    }
}

void tst_WindowLayout::sliderColour()
{
    m_bench->store(QStringLiteral("Channel1/Channel Color"), QStringLiteral("0A00fF"));
    m_window->loadSettings();
    const QString style = Column(*m_window, 1).slider->styleSheet();
    const char* const expected =
        "QSlider::add-page:vertical {background:#0a00ff; border:1px solid #000;width:10px;border-ra"
        "dius:7px;}QSlider::groove:vertical {border:1px solid #000; background:#000; width:20px;bor"
        "der-radius: 7px; margin-top:10px; margin-bottom:10px;}QSlider::sub-page:vertical {backgrou"
        "nd:#000;border:1px solid #000;width:10px;border-radius:7px;}QSlider::handle:vertical {back"
        "ground: qlineargradient(x1:0, y1:0, x2:0, y2:1,stop:0 #888, stop:1 #222);border:0px solid "
        "#000;width:50px;height:15px;margin:-10px;border-radius: 4px;}QSlider::handle:vertical:hove"
        "r {background:qlineargradient(x1:0, y1:0, x2:0, y2:1,stop:0 #999, stop:1 #333);border: 0px"
        " solid #444;border-radius: 4px;}QSlider::sub-page:vertical:disabled {background: #bbb;bord"
        "er-color: #999;}QSlider::add-page:vertical:disabled {background: #eee;border-color: #999;}"
        "QSlider::handle:vertical:disabled {background: #eee;border: 1px solid #aaa;border-radius: "
        "4px;}";
    QCOMPARE(style, QString::fromLatin1(expected));
    QVERIFY(Column(*m_window, 8).slider->styleSheet().contains(QStringLiteral("background:#bc0000;")));
}

void tst_WindowLayout::visibility()
{
    m_bench->store(QStringLiteral("Channel3/Channel Visible"), false);
    m_window->loadSettings();
    for (int number = 1; number <= 8; ++number) {
        QCOMPARE(Column(*m_window, number).frame->isVisible(), number != 3);
    }
}

void tst_WindowLayout::collapseAndExpand()
{
    auto* button = m_window->findChild<QPushButton*>(QStringLiteral("pushButtonExpandCollapseWindow"));
    QTest::mouseClick(button, Qt::LeftButton);
    for (int number = 1; number <= 8; ++number) {
        const Column column(*m_window, number);
        QCOMPARE(column.frame->minimumHeight(), 100);
        QCOMPARE(column.lowerPart->isHidden(), number != 8);
    }
    QCOMPARE(m_window->size(), QSize(800, 400));
    QCOMPARE(button->text(), QStringLiteral("Expand"));
    QTest::mouseClick(button, Qt::LeftButton);
    for (int number = 1; number <= 8; ++number) {
        const Column column(*m_window, number);
        QCOMPARE(column.frame->minimumHeight(), 551);
        QVERIFY(!column.lowerPart->isHidden());
    }
    QCOMPARE(m_window->size(), QSize(1024, 775));
    QCOMPARE(button->text(), QStringLiteral("Collapse"));
    QVERIFY(m_illuminator->settle(*m_window));
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
}

void tst_WindowLayout::wheelNeedsFocus()
{
    const Column column(*m_window, 6);
    const auto turn = [&column] {
        const QPointF position = column.slider->rect().center();
        QWheelEvent event(position, column.slider->mapToGlobal(position.toPoint()), QPoint(), QPoint(0, 120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(column.slider, &event);
    };
    m_window->findChild<QPushButton*>(QStringLiteral("pushButtonSettings"))->setFocus();
    turn();
    QCOMPARE(column.slider->value(), 0);
    QCOMPARE(m_illuminator->commands(), QList<QByteArray>());
    column.slider->setFocus();
    QTRY_VERIFY(column.slider->hasFocus());
    turn();
    QVERIFY(column.slider->value() > 0);
}

QTEST_MAIN(tst_WindowLayout)
#include "tst_WindowLayout.moc"
