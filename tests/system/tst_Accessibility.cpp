#include "Demo/DemoPanel.h"
#include "help/Help.h"
#include "help/HelpWindow.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioDialog.h"
#include "settings/DialogBench.h"

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollArea>
#include <QTableWidget>
#include <QTest>

#include <algorithm>
#include <vector>

namespace {
/// One place at which Tab stops: what has the focus there and where the eye finds it.
struct Stop
{
    QWidget* widget;
    const QScrollArea* page; ///< that it lies on, or null
    QRect placeOnPage;
    QRect place; ///< of what is seen of it, in the coordinates of the window
};

QString describe(const QWidget& widget)
{
    return QLatin1String(widget.metaObject()->className()) + QLatin1Char(' ') + widget.objectName();
}

QRect placeIn(const QWidget& window, const QWidget& widget)
{
    return {widget.mapTo(&window, QPoint()), widget.size()};
}

Stop stopAt(const QWidget& window, QWidget& widget)
{
    const QScrollArea* page = nullptr;
    for (const QWidget* above = widget.parentWidget(); above != nullptr && page == nullptr;
         above = above->parentWidget()) {
        page = qobject_cast<const QScrollArea*>(above);
    }
    const QRect whole = placeIn(window, widget);
    return page == nullptr ? Stop{&widget, page, QRect(), whole}
                           : Stop{&widget, page, placeIn(*page->widget(), widget),
                                  whole.intersected(placeIn(window, *page->viewport()))};
}

/// The round that Tab makes from where the focus is. It is walked by Shift+Tab, as the terminal keeps Tab for
/// the device; empty where it never comes back.
std::vector<Stop> walk(const QWidget& window)
{
    constexpr int tooMany = 300;
    std::vector<Stop> stops;
    const QWidget* const first = QApplication::focusWidget();
    int keys = 0;
    for (; keys < tooMany; ++keys) {
        QWidget* const widget = QApplication::focusWidget();
        if (widget == nullptr || (keys > 0 && widget == first)) {
            break;
        }
        // Inside a page of the manual it goes from link to link.
        if (stops.empty() || stops.back().widget != widget) {
            stops.push_back(stopAt(window, *widget));
        }
        QTest::keyClick(widget, Qt::Key_Backtab);
    }
    if (keys == tooMany || QApplication::focusWidget() != first) {
        return {};
    }
    std::reverse(stops.begin() + 1, stops.end());
    return stops;
}

/// True where the eye goes on from @p before to @p next: down the column, or to the right, wherever that
/// begins.
bool goesOn(const Stop& before, const Stop& next)
{
    // A page scrolls with the focus: where both lie on one, it tells what is above what.
    const bool onePage = before.page != nullptr && before.page == next.page;
    const QRect from = onePage ? before.placeOnPage : before.place;
    const QRect to = onePage ? next.placeOnPage : next.place;
    return to.top() >= from.bottom() || to.center().x() > from.center().x();
}

QString spokenName(QWidget& widget)
{
    const QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&widget);
    return interface == nullptr ? QString() : interface->text(QAccessible::Name);
}

/// What a person works with and sees now.
QList<QWidget*> controlsIn(const QWidget& window)
{
    QList<QWidget*> found;
    const QList<QWidget*> all = window.findChildren<QWidget*>();
    for (QWidget* widget : all) {
        const bool isPart = widget->objectName().startsWith(QLatin1String("qt_")) ||
                            widget->parentWidget()->inherits("QComboBox") ||
                            widget->parentWidget()->inherits("QAbstractSpinBox");
        if (!isPart && widget->window() == &window && widget->isVisible() && widget->isEnabled() &&
            widget->focusPolicy() != Qt::NoFocus) {
            found.append(widget);
        }
    }
    return found;
}
} // namespace

/// Every window of the program as somebody meets it who has no mouse or cannot see it.
class tst_Accessibility : public SimulatedDialogTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void mainWindow_data();
    void mainWindow();
    void settingsTabs();
    void cellsOfTheChannelTable();
    void scenarioDialogs_data();
    void scenarioDialogs();
    void helpWindow();
    void demoPanel();

private:
    void checkWalk(QWidget& window, QWidget* start);
};

void tst_Accessibility::init()
{
    QVERIFY(buildDialog());
}

void tst_Accessibility::cleanup()
{
    removeDialog();
}

/// Each stop has a name of its own, each control is a stop (or one of a group of radio buttons, where the
/// arrow keys go on), and the way from stop to stop is that of the eye.
void tst_Accessibility::checkWalk(QWidget& window, QWidget* start)
{
    // The framework's own function also counts a window as active whose owner is.
    window.activateWindow();
    QTRY_COMPARE(QApplication::activeWindow(), &window);
    start->setFocus();
    QTRY_COMPARE(QApplication::focusWidget(), start);
    const std::vector<Stop> stops = walk(window);
    QVERIFY2(stops.size() > 1, "the focus does not come round");
    QStringList names;
    QList<QWidget*> reached;
    for (std::size_t i = 0; i < stops.size(); ++i) {
        const Stop& stop = stops[i];
        names.append(spokenName(*stop.widget));
        reached.append(stop.widget);
        QVERIFY2(!names.last().isEmpty(), qPrintable(describe(*stop.widget)));
        QVERIFY2(!stop.place.isEmpty(),
                 qPrintable(describe(*stop.widget) + QLatin1String(" is out of sight")));
        if (i > 0) {
            const QString step =
                describe(*stops[i - 1].widget) + QLatin1String(" -> ") + describe(*stop.widget);
            QVERIFY2(goesOn(stops[i - 1], stop), qPrintable(step));
        }
    }
    for (const QString& name : qAsConst(names)) {
        QVERIFY2(names.count(name) == 1, qPrintable(name));
    }
    const QList<QWidget*> controls = controlsIn(window);
    for (QWidget* control : controls) {
        QWidget* const stop = control->focusProxy() == nullptr ? control : control->focusProxy();
        QVERIFY2(reached.contains(stop) || control->inherits("QRadioButton"), qPrintable(describe(*control)));
        QVERIFY2(!spokenName(*control).isEmpty(), qPrintable(describe(*control)));
    }
}

void tst_Accessibility::mainWindow_data()
{
    QTest::addColumn<bool>("expanded");
    QTest::newRow("all channels, expanded") << true;
    QTest::newRow("compact") << false;
}

void tst_Accessibility::mainWindow()
{
    QFETCH(bool, expanded);
    m_hand->dialog().close();
    if (!expanded) {
        QTest::mouseClick(m_window->findChild<QWidget*>(QStringLiteral("pushButtonExpandCollapseWindow")),
                          Qt::LeftButton);
    }
    checkWalk(*m_window, m_window->findChild<QWidget*>(QStringLiteral("labelLaserOnOff")));
}

void tst_Accessibility::settingsTabs()
{
    const QStringList captions = m_hand->captions();
    QCOMPARE(captions.size(), 7);
    for (const QString& caption : captions) {
        QVERIFY(m_hand->clickTab(caption));
        checkWalk(m_hand->dialog(), m_hand->part<QWidget>("comboBoxComPort"));
        if (QTest::currentTestFailed()) {
            qInfo("on the tab %s", qPrintable(caption));
            return;
        }
    }
}

void tst_Accessibility::cellsOfTheChannelTable()
{
    auto* const view = m_hand->part<QTableWidget>("tableWidgetChannelConfig");
    QAccessibleTableInterface* const table = QAccessible::queryAccessibleInterface(view)->tableInterface();
    if (table == nullptr) {
        QFAIL("no table to a screen reader");
    }
    QStringList names;
    for (int row = 0; row < view->rowCount(); ++row) {
        for (int column = 0; column < view->columnCount(); ++column) {
            const QWidget* const widget = view->cellWidget(row, column)->findChild<QWidget*>();
            QVERIFY(widget != nullptr);
            names.append(table->cellAt(row, column)->text(QAccessible::Name));
            QVERIFY2(names.last().startsWith(widget->accessibleName()), qPrintable(names.last()));
        }
    }
    names.removeDuplicates();
    QCOMPARE(names.size(), view->rowCount() * view->columnCount());
    // They tell what their widgets show now.
    const auto cell = [table](int row) { return table->cellAt(row, 2)->text(QAccessible::Name); };
    m_hand->part<QComboBox>("comboBoxChannelType3")->setCurrentText(QStringLiteral("640"));
    QCOMPARE(cell(1), QStringLiteral("Channel 3: Type, 640"));
    m_hand->part<QLineEdit>("lineEditChannelName3")->clear();
    QCOMPARE(cell(2), QStringLiteral("Channel 3: Name"));
    QCOMPARE(cell(0), QStringLiteral("Channel 3: Enabled, checked"));
    m_hand->part<QCheckBox>("checkBoxChannelEnabled3")->setChecked(false);
    QCOMPARE(cell(0), QStringLiteral("Channel 3: Enabled, not checked"));
}

void tst_Accessibility::scenarioDialogs_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("save") << int(ScenarioDialog::SaveMode);
    QTest::newRow("load") << int(ScenarioDialog::LoadMode);
}

void tst_Accessibility::scenarioDialogs()
{
    QFETCH(int, mode);
    m_hand->dialog().close();
    // With one in the list, which is a control then.
    QVERIFY(m_window->scenario()->save(QStringLiteral("Live cells"), ScenarioValues()));
    ScenarioDialog dialog(m_window.get(), mode, m_window->scenario());
    dialog.show();
    checkWalk(dialog, dialog.findChild<QWidget*>(QStringLiteral("pushButtonDelete")));
}

void tst_Accessibility::helpWindow()
{
    Help::show(&m_hand->dialog(), QStringLiteral("update"));
    auto* help = m_hand->dialog().findChild<HelpWindow*>();
    QVERIFY(help != nullptr);
    QTest::mouseClick(help->findChild<QWidget*>(QStringLiteral("pushButtonContents")), Qt::LeftButton);
    auto* back = help->findChild<QWidget*>(QStringLiteral("pushButtonBack"));
    QVERIFY(back != nullptr && back->isEnabled());
    checkWalk(*help, back);
}

void tst_Accessibility::demoPanel()
{
    m_hand->dialog().close();
    DemoPanel panel(illuminator(), *m_window);
    panel.show();
    checkWalk(panel, panel.findChild<QPushButton*>());
}

QTEST_MAIN(tst_Accessibility)
#include "tst_Accessibility.moc"
