#include "scenario/ScenarioDialogBench.h"
#include "scenario/ScenarioSamples.h"

#include <QElapsedTimer>
#include <QFrame>
#include <QHash>
#include <QLabel>
#include <QScrollBar>
#include <QTest>

/// What the scenario dialog shows of the stored names, and what it copies from them.
class tst_ScenarioDialog : public ScenarioDialogTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void modes_data();
    void modes();
    void everyControlIsNamed();
    void buddies();
    void namesInOrder();
    void enabledWithNames_data();
    void enabledWithNames();
    void deleteOnlyReadsAgain();
    void selectingCopies();
    void selectingCopiesInLoadMode();
    void hostileNamesComeBack_data();
    void hostileNamesComeBack();
    void longNamesStayOneLine();
    void manyNamesOpenAtOnce();
    void withoutStore();
};

void tst_ScenarioDialog::modes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("isSaving");
    QTest::newRow("1 saves") << 1 << true;
    QTest::newRow("0 loads") << 0 << false;
    QTest::newRow("2 loads") << 2 << false;
    QTest::newRow("-1 loads") << -1 << false;
}

void tst_ScenarioDialog::modes()
{
    QFETCH(int, mode);
    QFETCH(bool, isSaving);
    QVERIFY(build(mode, {QStringLiteral("A")}));
    const QString caption = isSaving ? QStringLiteral("Save Scenario") : QStringLiteral("Load Scenario");
    QCOMPARE(find<QLabel>("labelLoadSaveScenario")->text(), caption);
    QCOMPARE(m_dialog->windowTitle(), caption);
    QCOMPARE(find<QFrame>("frameEditScenarioName")->isVisible(), isSaving);
    QCOMPARE(field()->isVisible(), isSaving);
    QCOMPARE(button(QDialogButtonBox::Ok)->text(),
             isSaving ? QStringLiteral("Save") : QStringLiteral("Load"));
    QVERIFY(button(QDialogButtonBox::Ok)->isDefault());
    QVERIFY(m_dialog->isModal());
    QCOMPARE(m_dialog->property("helpPage").toString(), QStringLiteral("scenarios"));
    QCOMPARE(m_dialog->focusWidget(), isSaving ? static_cast<QWidget*>(field()) : list());
    QVERIFY(field()->text().isEmpty());
    QVERIFY(list()->selectedItems().isEmpty());
}

void tst_ScenarioDialog::everyControlIsNamed()
{
    QVERIFY(build(ScenarioDialog::SaveMode, {QStringLiteral("A")}));
    int controls = 0;
    const auto widgets = m_dialog->findChildren<QWidget*>();
    for (const QWidget* widget : widgets) {
        const bool isControl = qobject_cast<const QAbstractButton*>(widget) != nullptr ||
                               qobject_cast<const QLineEdit*>(widget) != nullptr || widget == list();
        if (!isControl) {
            continue;
        }
        ++controls;
        const auto* pushButton = qobject_cast<const QAbstractButton*>(widget);
        QVERIFY2(!widget->toolTip().isEmpty(), qPrintable(widget->objectName()));
        QVERIFY2(!widget->accessibleName().isEmpty() ||
                     (pushButton != nullptr && !pushButton->text().isEmpty()),
                 qPrintable(widget->objectName()));
        QVERIFY(widget->focusPolicy() & Qt::TabFocus);
    }
    QCOMPARE(controls, 5);
}

void tst_ScenarioDialog::buddies()
{
    QVERIFY(build(ScenarioDialog::SaveMode));
    QHash<QString, QWidget*> found;
    const auto labels = m_dialog->findChildren<QLabel*>();
    for (const QLabel* label : labels) {
        found.insert(label->text(), label->buddy());
    }
    QCOMPARE(found.value(QStringLiteral("Scenarios:")), list());
    QCOMPARE(found.value(QStringLiteral("Enter Scenario Name:")), field());
}

void tst_ScenarioDialog::namesInOrder()
{
    const QStringList names{QStringLiteral("zebra"), QStringLiteral("Ape"), QStringLiteral("ape"),
                            QStringLiteral("12"), QStringLiteral("2")};
    QVERIFY(build(ScenarioDialog::LoadMode, names));
    QCOMPARE(shownNames(), names);
}

void tst_ScenarioDialog::enabledWithNames_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("saving") << ScenarioDialog::SaveMode;
    QTest::newRow("loading") << ScenarioDialog::LoadMode;
}

void tst_ScenarioDialog::enabledWithNames()
{
    QFETCH(int, mode);
    QVERIFY(build(mode));
    auto* const deleteButton = find<QPushButton>("pushButtonDelete");
    QVERIFY(!deleteButton->isEnabled());
    QVERIFY(!list()->isEnabled());
    QVERIFY(button(QDialogButtonBox::Ok)->isEnabled());
    QVERIFY(button(QDialogButtonBox::Cancel)->isEnabled());
    QVERIFY(build(mode, {QStringLiteral("A")}));
    QVERIFY(find<QPushButton>("pushButtonDelete")->isEnabled());
    QVERIFY(list()->isEnabled());
}

void tst_ScenarioDialog::deleteOnlyReadsAgain()
{
    QVERIFY(build(ScenarioDialog::SaveMode, {QStringLiteral("A"), QStringLiteral("B")}));
    list()->setCurrentRow(1);
    const QStringList keys = m_store->allKeys();
    QTest::mouseClick(find<QPushButton>("pushButtonDelete"), Qt::LeftButton);
    QCOMPARE(shownNames(), QStringList({QStringLiteral("A"), QStringLiteral("B")}));
    QVERIFY(list()->selectedItems().isEmpty());
    QCOMPARE(field()->text(), QStringLiteral("B"));
    QCOMPARE(m_store->allKeys(), keys);
    QCOMPARE(m_scenario->names(), QStringList({QStringLiteral("A"), QStringLiteral("B")}));
    QVERIFY(isOpen());
    // What came in behind the dialog's back is there afterwards.
    m_scenario->addName(QStringLiteral("C"));
    QTest::mouseClick(find<QPushButton>("pushButtonDelete"), Qt::LeftButton);
    QCOMPARE(shownNames().constLast(), QStringLiteral("C"));
    QVERIFY(m_boxes->boxes().isEmpty());
}

void tst_ScenarioDialog::selectingCopies()
{
    QVERIFY(build(ScenarioDialog::SaveMode, {QStringLiteral("A"), QStringLiteral("B")}));
    list()->setCurrentRow(1);
    QCOMPARE(field()->text(), QStringLiteral("B"));
    list()->setCurrentRow(0);
    QCOMPARE(field()->text(), QStringLiteral("A"));
    field()->setText(QStringLiteral("typed"));
    list()->clearSelection();
    QCOMPARE(field()->text(), QStringLiteral("typed"));
    QCOMPARE(m_dialog->scenarioName(), QStringLiteral("typed"));
}

void tst_ScenarioDialog::selectingCopiesInLoadMode()
{
    QVERIFY(build(ScenarioDialog::LoadMode, {QStringLiteral("A"), QStringLiteral("B")}));
    const QRect second = list()->visualItemRect(list()->item(1));
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, second.center());
    QCOMPARE(field()->text(), QStringLiteral("B"));
    QCOMPARE(m_dialog->scenarioName(), QStringLiteral("B"));
    QVERIFY(isOpen());
}

void tst_ScenarioDialog::hostileNamesComeBack_data()
{
    QTest::addColumn<QString>("name");
    const auto names = hostileNames();
    for (const auto& name : names) {
        QTest::newRow(name.first) << name.second;
    }
    QTest::newRow("100000 characters") << QString(100'000, QLatin1Char('x'));
}

void tst_ScenarioDialog::hostileNamesComeBack()
{
    QFETCH(QString, name);
    for (const int mode : {ScenarioDialog::LoadMode, ScenarioDialog::SaveMode}) {
        m_boxes = std::make_unique<BoxAnswerer>(QMessageBox::Yes);
        QVERIFY(build(mode, {QStringLiteral("before"), name}));
        QCOMPARE(list()->item(1)->text().size(), name.size());
        QVERIFY(!list()->item(1)->text().contains(QLatin1Char('\n')));
        list()->setCurrentRow(1);
        press(QDialogButtonBox::Ok);
        // Known under exactly this name, so that saving asks.
        QCOMPARE(m_boxes->boxes().size(), mode == ScenarioDialog::SaveMode ? 1 : 0);
        QVERIFY(isLeft(QDialog::Accepted));
        QCOMPARE(m_dialog->scenarioName(), name);
    }
}

void tst_ScenarioDialog::longNamesStayOneLine()
{
    QVERIFY(build(ScenarioDialog::LoadMode, {QStringLiteral("plain")}));
    const int oneLine = list()->visualItemRect(list()->item(0)).height();
    const QSize size = m_dialog->size();
    const QSize minimum = m_dialog->minimumSizeHint();
    QVERIFY(build(ScenarioDialog::LoadMode,
                  {QString(1000, QLatin1Char('W')), QStringLiteral("one\ntwo\u2028three\nfour")}));
    for (int row = 0; row < list()->count(); ++row) {
        QCOMPARE(list()->visualItemRect(list()->item(row)).height(), oneLine);
    }
    QVERIFY(!list()->horizontalScrollBar()->isVisible());
    QCOMPARE(list()->textElideMode(), Qt::ElideRight);
    QCOMPARE(m_dialog->size(), size);
    QCOMPARE(m_dialog->minimumSizeHint(), minimum);
}

void tst_ScenarioDialog::manyNamesOpenAtOnce()
{
    QStringList names;
    for (int i = 0; i < 500; ++i) {
        names.append(QStringLiteral("Setup %1").arg(i));
        m_scenario->addName(names.last());
    }
    QElapsedTimer clock;
    clock.start();
    QVERIFY(build(ScenarioDialog::LoadMode));
    QVERIFY(clock.elapsed() < 1000);
    QCOMPARE(shownNames(), names);
}

void tst_ScenarioDialog::withoutStore()
{
    QVERIFY(build(ScenarioDialog::LoadMode, {QStringLiteral("A")}));
    m_scenario.reset();
    find<QPushButton>("pushButtonDelete")->click();
    QCOMPARE(list()->count(), 0);
    ScenarioDialog homeless(nullptr, ScenarioDialog::SaveMode, nullptr);
    QCOMPARE(homeless.findChild<QListWidget*>()->count(), 0);
}

QTEST_MAIN(tst_ScenarioDialog)
#include "tst_ScenarioDialog.moc"
