#include "scenario/ScenarioDialogBench.h"

#include <QTest>

/// How the scenario dialog is left: what it accepts, refuses and asks.
class tst_ScenarioDialogAnswers : public ScenarioDialogTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void saveWithoutName();
    void saveNewName_data();
    void saveNewName();
    void saveKnownName_data();
    void saveKnownName();
    void loadWithoutScenarios();
    void loadWithoutSelection();
    void loadSelected();
    void doubleClick_data();
    void doubleClick();
    void doubleClickAsks();
    void leaving_data();
    void leaving();
};

void tst_ScenarioDialogAnswers::saveWithoutName()
{
    QVERIFY(build(ScenarioDialog::SaveMode, {QStringLiteral("A")}));
    press(QDialogButtonBox::Ok);
    QVERIFY(m_boxes->sawOneWarning(QStringLiteral("Please enter a scenario name")));
    QCOMPARE(m_boxes->boxes().first().parent, m_dialog.get());
    QVERIFY(isOpen());
    QVERIFY(m_dialog->findChildren<QMessageBox*>().isEmpty());
}

void tst_ScenarioDialogAnswers::saveNewName_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::newRow("the first one") << QStringList();
    QTest::newRow("another one") << QStringList{QStringLiteral("day")};
    QTest::newRow("differs in case") << QStringList{QStringLiteral("Night")};
    QTest::newRow("differs in a blank") << QStringList{QStringLiteral("night ")};
}

void tst_ScenarioDialogAnswers::saveNewName()
{
    QFETCH(QStringList, names);
    QVERIFY(build(ScenarioDialog::SaveMode, names));
    QTest::keyClicks(field(), QStringLiteral("night"));
    press(QDialogButtonBox::Ok);
    QVERIFY(m_boxes->boxes().isEmpty());
    QVERIFY(isLeft(QDialog::Accepted));
    QCOMPARE(m_dialog->scenarioName(), QStringLiteral("night"));
    // Writing is the caller's business.
    QCOMPARE(m_scenario->names(), names);
}

void tst_ScenarioDialogAnswers::saveKnownName_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("isOverwriting");
    QTest::newRow("yes") << int(QMessageBox::Yes) << true;
    QTest::newRow("no") << int(QMessageBox::No) << false;
    // There is no such button: the box is left by Escape.
    QTest::newRow("escape") << int(QMessageBox::Retry) << false;
}

void tst_ScenarioDialogAnswers::saveKnownName()
{
    QFETCH(int, answer);
    QFETCH(bool, isOverwriting);
    m_boxes = std::make_unique<BoxAnswerer>(QMessageBox::StandardButton(answer));
    QVERIFY(build(ScenarioDialog::SaveMode, {QStringLiteral("A"), QStringLiteral("B")}));
    field()->setText(QStringLiteral("B"));
    press(QDialogButtonBox::Ok);
    QCOMPARE(m_boxes->boxes().size(), 1);
    const BoxAnswerer::Box& box = m_boxes->boxes().first();
    QCOMPARE(box.text, QStringLiteral("Scenario exists. Overwrite?"));
    QCOMPARE(box.title, QString());
    QCOMPARE(box.icon, QMessageBox::Question);
    QCOMPARE(box.spokenName, QStringLiteral("Question"));
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Yes | QMessageBox::No));
    QCOMPARE(box.defaultButton, QMessageBox::Yes);
    QCOMPARE(box.textFormat, Qt::PlainText);
    QCOMPARE(m_dialog->scenarioName(), QStringLiteral("B"));
    QCOMPARE(isLeft(QDialog::Accepted), isOverwriting);
    QCOMPARE(isOpen(), !isOverwriting);
    QVERIFY(m_dialog->findChildren<QMessageBox*>().isEmpty());
}

void tst_ScenarioDialogAnswers::loadWithoutScenarios()
{
    QVERIFY(build(ScenarioDialog::LoadMode));
    for (const QString& typed : {QString(), QStringLiteral("anything")}) {
        m_boxes->clear();
        field()->setText(typed);
        press(QDialogButtonBox::Ok);
        QVERIFY(m_boxes->sawOneWarning(QStringLiteral("No saved scenarios to load")));
        QVERIFY(isOpen());
    }
}

void tst_ScenarioDialogAnswers::loadWithoutSelection()
{
    QVERIFY(build(ScenarioDialog::LoadMode, {QStringLiteral("A")}));
    press(QDialogButtonBox::Ok);
    QVERIFY(m_boxes->sawOneWarning(QStringLiteral("Please select a scenario from the list")));
    QVERIFY(isOpen());
}

void tst_ScenarioDialogAnswers::loadSelected()
{
    QVERIFY(build(ScenarioDialog::LoadMode, {QStringLiteral("A"), QStringLiteral("B")}));
    list()->setCurrentRow(1);
    press(QDialogButtonBox::Ok);
    QVERIFY(m_boxes->boxes().isEmpty());
    QVERIFY(isLeft(QDialog::Accepted));
    QCOMPARE(m_dialog->scenarioName(), QStringLiteral("B"));
}

void tst_ScenarioDialogAnswers::doubleClick_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("boxes");
    QTest::newRow("loading") << ScenarioDialog::LoadMode << 0;
    QTest::newRow("saving") << ScenarioDialog::SaveMode << 1;
}

void tst_ScenarioDialogAnswers::doubleClick()
{
    QFETCH(int, mode);
    QFETCH(int, boxes);
    m_boxes = std::make_unique<BoxAnswerer>(QMessageBox::Yes);
    QVERIFY(build(mode, {QStringLiteral("A"), QStringLiteral("B")}));
    doubleClickRow(1);
    QCOMPARE(m_boxes->boxes().size(), boxes);
    QVERIFY(isLeft(QDialog::Accepted));
    QCOMPARE(m_dialog->scenarioName(), QStringLiteral("B"));
}

void tst_ScenarioDialogAnswers::doubleClickAsks()
{
    m_boxes = std::make_unique<BoxAnswerer>(QMessageBox::No);
    QVERIFY(build(ScenarioDialog::SaveMode, {QStringLiteral("A"), QStringLiteral("B")}));
    doubleClickRow(0);
    QCOMPARE(m_boxes->boxes().size(), 1);
    QVERIFY(isOpen());
    QCOMPARE(m_dialog->scenarioName(), QStringLiteral("A"));
}

void tst_ScenarioDialogAnswers::leaving_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("saving") << ScenarioDialog::SaveMode;
    QTest::newRow("loading") << ScenarioDialog::LoadMode;
}

void tst_ScenarioDialogAnswers::leaving()
{
    QFETCH(int, mode);
    QVERIFY(build(mode, {QStringLiteral("A")}));
    list()->setCurrentRow(0);
    press(QDialogButtonBox::Cancel);
    QVERIFY(isLeft(QDialog::Rejected));
    QVERIFY(build(mode));
    m_dialog->close();
    QVERIFY(isLeft(QDialog::Rejected));
    QVERIFY(m_boxes->boxes().isEmpty());
}

QTEST_MAIN(tst_ScenarioDialogAnswers)
#include "tst_ScenarioDialogAnswers.moc"
