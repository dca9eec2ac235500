#include "Resources/Resources.h"
#include "settings/ChannelBench.h"

#include <QAbstractItemView>
#include <QWheelEvent>

#include <algorithm>
#include <array>

namespace {
/// The types that bring a name and a colour of their own, in the drop-down's order.
QStringList types()
{
    return QStringLiteral("405 445 470 520 528 555 640 730").split(QLatin1Char(' '));
}

QString usualColour(const QString& type)
{
    const QStringList colours =
        QStringLiteral("4900bc 0019ff 0099ff 24ff00 41ff00 a3ff00 ff1300 bc0000").split(QLatin1Char(' '));
    return colours.value(types().indexOf(type));
}

/// What the mouse does to a drop-down: the list opens, the entry is clicked, and it counts as chosen even
/// when it is the one that was.
void choose(QComboBox* box, int index)
{
    box->setFocus();
    box->showPopup();
    QVERIFY(QTest::qWaitForWindowExposed(box->view()->window()));
    box->view()->setCurrentIndex(box->model()->index(index, 0));
    QTest::keyClick(box->view(), Qt::Key_Return);
    QTRY_VERIFY(!box->view()->isVisible());
}
} // namespace

/// The cells of the channel table and the rules among them.
class tst_ChannelConfigTable : public ChannelDialogTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        applyColours();
        applyStyleSheet(*qApp);
    }
    void init() { buildDialog(); }
    void cleanup() { removeRoom(); }
    void freshColumn_data();
    void freshColumn();
    void cellsAreBuilt();
    void cellsAreToldApart();
    void typeFillsIn_data();
    void typeFillsIn();
    void customLeavesAlone();
    void sameTypeOnceMore();
    void enabledRule_data();
    void enabledRule();
    void secondaryRule();
    void primaryChangesNothing();
    void limitsOfTheFields_data();
    void limitsOfTheFields();
    void keyboardAlone();
    void keyboardOrder();
    void wheelNeedsTheFocus();
    void largeType();

private:
    /// The cells that go with the first one alone; the last one has a rule of its own.
    bool areUsable(int column, bool usable) const;
};

bool tst_ChannelConfigTable::areUsable(int column, bool usable) const
{
    const std::array<QWidget*, 4> cells{laser(column), name(column), color(column), secondary(column)};
    return std::all_of(cells.begin(), cells.end(),
                       [usable](const QWidget* cell) { return cell->isEnabled() == usable; });
}

void tst_ChannelConfigTable::freshColumn_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("type");
    int column = 0;
    for (const char* type : {"445", "520", "730", "640", "405", "470", "528", "555"}) {
        QTest::addRow("%d", column + 1) << column << QString::fromLatin1(type);
        ++column;
    }
}

void tst_ChannelConfigTable::freshColumn()
{
    QFETCH(int, column);
    QFETCH(QString, type);
    QCOMPARE(table()->horizontalHeaderItem(column)->text(), QString::number(column + 1));
    QCOMPARE(texts(column), QStringList({QStringLiteral("1"), type, type, usualColour(type),
                                         QStringLiteral("0"), QStringLiteral("1")}));
    QVERIFY(areUsable(column, true) && !primary(column)->isEnabled());
    QStringList offered;
    for (int i = 0; i < laser(column)->count(); ++i) {
        offered.append(laser(column)->itemText(i));
    }
    QCOMPARE(offered, types() << QStringLiteral("custom"));
    QCOMPARE(primary(column)->count(), 8);
    QCOMPARE(primary(column)->itemText(7), QStringLiteral("8"));
    QVERIFY(!name(column)->hasFrame() && !color(column)->hasFrame());
    QCOMPARE(name(column)->maxLength(), 4);
    QCOMPARE(color(column)->maxLength(), 6);
}

void tst_ChannelConfigTable::cellsAreBuilt()
{
    for (int row = 0; row < table()->rowCount(); ++row) {
        for (int column = 0; column < table()->columnCount(); ++column) {
            QWidget* const frame = table()->cellWidget(row, column);
            QCOMPARE(frame->layout()->contentsMargins(), QMargins());
            const auto* const widget = cell<QWidget>(row, column);
            QCOMPARE(widget->property("column"), QVariant(column));
            const QPoint off = widget->geometry().center() - frame->rect().center();
            QVERIFY(qAbs(off.x()) <= 1 && qAbs(off.y()) <= 1);
            QVERIFY(frame->rect().contains(widget->geometry()));
        }
    }
    QCOMPARE(table()->viewport()->width(), table()->horizontalHeader()->length());
    QCOMPARE(table()->viewport()->height(), table()->verticalHeader()->length());
}

void tst_ChannelConfigTable::cellsAreToldApart()
{
    QSet<QString> names;
    QSet<QString> spoken;
    for (int row = 0; row < table()->rowCount(); ++row) {
        for (int column = 0; column < table()->columnCount(); ++column) {
            const auto* const widget = cell<QWidget>(row, column);
            names.insert(widget->objectName());
            spoken.insert(widget->accessibleName());
            QVERIFY(!widget->toolTip().isEmpty());
        }
    }
    QCOMPARE(names.size(), 48);
    QCOMPARE(spoken.size(), 48);
    QCOMPARE(primary(7)->accessibleName(), QStringLiteral("Channel 8: Primary Channel"));
}

void tst_ChannelConfigTable::typeFillsIn_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("type");
    for (int i = 0; i < types().size(); ++i) {
        QTest::newRow(qPrintable(types().at(i))) << i << types().at(i);
    }
}

void tst_ChannelConfigTable::typeFillsIn()
{
    QFETCH(int, index);
    QFETCH(QString, type);
    const QStringList others = texts(2);
    choose(laser(1), 8);
    name(1)->setText(QStringLiteral("mine"));
    color(1)->setText(QStringLiteral("123456"));
    choose(laser(1), index);
    QCOMPARE(name(1)->text(), type);
    QCOMPARE(color(1)->text(), usualColour(type));
    QCOMPARE(texts(2), others);
}

void tst_ChannelConfigTable::customLeavesAlone()
{
    choose(laser(0), 8);
    QCOMPARE(laser(0)->currentText(), QStringLiteral("custom"));
    QCOMPARE(name(0)->text(), QStringLiteral("445"));
    QCOMPARE(color(0)->text(), QStringLiteral("0019ff"));
    choose(laser(0), 6);
    QCOMPARE(name(0)->text(), QStringLiteral("640"));
    QCOMPARE(color(0)->text(), QStringLiteral("ff1300"));
}

void tst_ChannelConfigTable::sameTypeOnceMore()
{
    name(0)->setText(QStringLiteral("x"));
    choose(laser(0), laser(0)->currentIndex());
    QCOMPARE(name(0)->text(), QStringLiteral("445"));
}

void tst_ChannelConfigTable::enabledRule_data()
{
    QTest::addColumn<bool>("isSecondary");
    QTest::newRow("by itself") << false;
    QTest::newRow("secondary") << true;
}

void tst_ChannelConfigTable::enabledRule()
{
    QFETCH(bool, isSecondary);
    if (isSecondary) {
        secondary(3)->click();
    }
    const QStringList before = texts(3);
    enabled(3)->click();
    QVERIFY(areUsable(3, false) && !primary(3)->isEnabled());
    QVERIFY(enabled(3)->isEnabled() && laser(2)->isEnabled() && laser(4)->isEnabled());
    enabled(3)->click();
    QVERIFY(areUsable(3, true));
    QCOMPARE(primary(3)->isEnabled(), isSecondary);
    QCOMPARE(texts(3), before);
}

void tst_ChannelConfigTable::secondaryRule()
{
    secondary(5)->click();
    QVERIFY(primary(5)->isEnabled() && !primary(4)->isEnabled());
    choose(primary(5), 6);
    secondary(5)->click();
    QVERIFY(!primary(5)->isEnabled());
    QCOMPARE(primary(5)->currentText(), QStringLiteral("7"));
}

void tst_ChannelConfigTable::primaryChangesNothing()
{
    secondary(5)->click();
    QStringList before = texts(5);
    choose(primary(5), 3);
    before.last() = QStringLiteral("4");
    QCOMPARE(texts(5), before);
    QVERIFY(primary(5)->isEnabled());
}

void tst_ChannelConfigTable::limitsOfTheFields_data()
{
    QTest::addColumn<bool>("isName");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept");
    QTest::newRow("name") << true << QStringLiteral("12345") << QStringLiteral("1234");
    QTest::newRow("name, all Latin-1") << true << QStringLiteral("µ,=ÿ") << QStringLiteral("µ,=ÿ");
    QTest::newRow("name, beyond") << true << QStringLiteral("λ1€2") << QStringLiteral("12");
    QTest::newRow("name, control") << true << QStringLiteral("a\x07") << QStringLiteral("a");
    QTest::newRow("colour") << false << QStringLiteral("a1B2c3d") << QStringLiteral("a1B2c3");
    QTest::newRow("colour, no number") << false << QStringLiteral("zz00ff") << QStringLiteral("zz00ff");
}

void tst_ChannelConfigTable::limitsOfTheFields()
{
    QFETCH(bool, isName);
    QFETCH(QString, typed);
    QFETCH(QString, kept);
    QLineEdit* const field = isName ? name(6) : color(6);
    field->setFocus();
    field->clear();
    for (const QChar character : typed) {
        field->insert(character);
    }
    QCOMPARE(field->text(), kept);
}

void tst_ChannelConfigTable::keyboardAlone()
{
    part<QLineEdit>("lineEditVYRHardwareRev")->setFocus();
    const auto press = [this](Qt::Key key) { QTest::keyClick(m_dialog->focusWidget(), key); };
    const auto write = [this](const QString& text) { QTest::keyClicks(m_dialog->focusWidget(), text); };
    press(Qt::Key_Tab);
    press(Qt::Key_Space); // disabled, and enabled again
    QVERIFY(!laser(0)->isEnabled());
    press(Qt::Key_Space);
    press(Qt::Key_Tab);
    press(Qt::Key_End);
    press(Qt::Key_Tab);
    write(QStringLiteral("abc"));
    press(Qt::Key_Tab);
    write(QStringLiteral("102030"));
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    press(Qt::Key_Tab);
    press(Qt::Key_Down);
    QCOMPARE(texts(0), QStringList({QStringLiteral("1"), QStringLiteral("custom"), QStringLiteral("abc"),
                                    QStringLiteral("102030"), QStringLiteral("1"), QStringLiteral("2")}));
    press(Qt::Key_Tab);
    QVERIFY(enabled(1)->hasFocus());
    press(Qt::Key_Space);
    press(Qt::Key_Tab);
    // What is disabled is passed over.
    QVERIFY(enabled(2)->hasFocus());
}

void tst_ChannelConfigTable::keyboardOrder()
{
    QWidget* widget = part<QLineEdit>("lineEditVYRHardwareRev");
    const auto next = [&widget] {
        do {
            widget = widget->nextInFocusChain();
        } while ((widget->focusPolicy() & Qt::TabFocus) == 0 || widget->focusProxy() != nullptr);
        return widget;
    };
    for (int column = 0; column < 8; ++column) {
        for (int row = 0; row < 6; ++row) {
            QCOMPARE(next(), cell<QWidget>(row, column));
        }
    }
    QCOMPARE(next(), part<QWidget>("pushButtonSetProductConfigData"));
}

void tst_ChannelConfigTable::wheelNeedsTheFocus()
{
    secondary(0)->click();
    for (QComboBox* box : {laser(0), primary(0)}) {
        QCOMPARE(box->focusPolicy(), Qt::StrongFocus);
        box->setCurrentIndex(3);
        const auto turn = [box] {
            const QPointF place = QRectF(box->rect()).center();
            QWheelEvent event(place, box->mapToGlobal(place.toPoint()), {}, {0, -120}, Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(box, &event);
        };
        turn();
        QCOMPARE(box->currentIndex(), 3);
        box->setFocus();
        turn();
        QCOMPARE(box->currentIndex(), 4);
    }
}

void tst_ChannelConfigTable::largeType()
{
    const QFont before = QApplication::font();
    QFont large(before);
    large.setPointSize(18);
    m_dialog.reset();
    QApplication::setFont(large);
    make(true);
    QApplication::setFont(before);
    for (int column = 0; column < 8; ++column) {
        for (int row = 1; row < 6; ++row) {
            QVERIFY(
                table()->cellWidget(row, column)->rect().contains(cell<QWidget>(row, column)->geometry()));
        }
        QVERIFY(laser(column)->width() >= laser(column)->sizeHint().width());
        QVERIFY(laser(column)->height() >= laser(column)->sizeHint().height());
        QVERIFY(name(column)->width() >
                name(column)->fontMetrics().horizontalAdvance(QStringLiteral("WWWW")) + 4);
    }
    QCOMPARE(table()->viewport()->width(), table()->horizontalHeader()->length());
}

QTEST_MAIN(tst_ChannelConfigTable)
#include "tst_ChannelConfigTable.moc"
