#include "scenario/Scenario.h"
#include "scenario/ScenarioDialog.h"
#include "scenario/ScenarioStoreTest.h"
#include "support/BoxAnswerer.h"

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QSettings>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

/// The scenario dialog as it is run by its caller: by keyboard alone, and with windows that go too early.
class tst_ScenarioDialogUse : public ScenarioStoreTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void enterSavesWhatWasTyped();
    void enterInTheListLoads_data();
    void enterInTheListLoads();
    void arrowsFromTheFieldOnward();
    void enterWithoutSelectionIsRefused();
    void escapeCancels_data();
    void escapeCancels();
    void enterOnDeleteOnlyReadsAgain();
    void tabOrder();
    void overwritingByKey_data();
    void overwritingByKey();
    void goesBehindItsBox_data();
    void goesBehindItsBox();

private:
    struct Answer
    {
        int result = -1;
        QString name;
    };
    /// Runs the dialog; @p keys is called once it is active.
    Answer run(int mode, const std::function<void(ScenarioDialog&)>& keys);
    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(QApplication::focusWidget(), which, modifiers);
    }

    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<Scenario> m_scenario;
};

void tst_ScenarioDialogUse::init()
{
    buildStore();
    m_store = openStore();
    m_scenario = std::make_unique<Scenario>(nullptr, m_store.get());
}

void tst_ScenarioDialogUse::cleanup()
{
    m_scenario.reset();
    m_store.reset();
    removeStore();
}

tst_ScenarioDialogUse::Answer tst_ScenarioDialogUse::run(int mode,
                                                         const std::function<void(ScenarioDialog&)>& keys)
{
    ScenarioDialog dialog(nullptr, mode, m_scenario.get());
    QTimer::singleShot(0, &dialog, [&] {
        if (QTest::qWaitForWindowActive(&dialog)) {
            keys(dialog);
        }
        // Left by nobody: the test ends instead of hanging.
        if (dialog.isVisible()) {
            dialog.done(-1);
        }
    });
    const int result = dialog.exec();
    return {result, dialog.scenarioName()};
}

void tst_ScenarioDialogUse::enterSavesWhatWasTyped()
{
    const Answer answer = run(ScenarioDialog::SaveMode, [this](ScenarioDialog&) {
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("Night"));
        key(Qt::Key_Return);
    });
    QCOMPARE(answer.result, int(QDialog::Accepted));
    QCOMPARE(answer.name, QStringLiteral("Night"));
}

void tst_ScenarioDialogUse::enterInTheListLoads_data()
{
    QTest::addColumn<int>("names");
    QTest::addColumn<QVector<int>>("keys");
    QTest::addColumn<QString>("loaded");
    const auto row = [](const char* name, int names, const QVector<int>& keys, const char* loaded) {
        QTest::newRow(name) << names << keys << QString::fromLatin1(loaded);
    };
    row("down to the only one", 1, {Qt::Key_Down, Qt::Key_Return}, "0");
    row("up to the only one", 1, {Qt::Key_Up, Qt::Key_Return}, "0");
    row("first", 3, {Qt::Key_Down, Qt::Key_Return}, "0");
    row("second", 3, {Qt::Key_Down, Qt::Key_Down, Qt::Key_Enter}, "1");
    row("last", 3, {Qt::Key_End, Qt::Key_Return}, "2");
    row("first by home", 3, {Qt::Key_Home, Qt::Key_Return}, "0");
    row("back up", 3, {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_Return}, "0");
    row("by its letter", 3, {Qt::Key_2, Qt::Key_Return}, "2");
}

void tst_ScenarioDialogUse::enterInTheListLoads()
{
    QFETCH(int, names);
    QFETCH(QVector<int>, keys);
    QFETCH(QString, loaded);
    for (int i = 0; i < names; ++i) {
        m_scenario->addName(QString::number(i));
    }
    const BoxAnswerer boxes;
    const Answer answer = run(ScenarioDialog::LoadMode, [&](ScenarioDialog&) {
        for (const int which : keys) {
            key(static_cast<Qt::Key>(which));
        }
    });
    QVERIFY(boxes.boxes().isEmpty());
    QCOMPARE(answer.result, int(QDialog::Accepted));
    QCOMPARE(answer.name, loaded);
}

void tst_ScenarioDialogUse::arrowsFromTheFieldOnward()
{
    m_scenario->addName(QStringLiteral("A"));
    m_scenario->addName(QStringLiteral("B"));
    BoxAnswerer boxes(QMessageBox::Yes);
    const Answer answer = run(ScenarioDialog::SaveMode, [this](ScenarioDialog&) {
        key(Qt::Key_Backtab, Qt::ShiftModifier);
        key(Qt::Key_Down);
        key(Qt::Key_Down);
        key(Qt::Key_Return);
    });
    QCOMPARE(boxes.boxes().size(), 1);
    QCOMPARE(answer.result, int(QDialog::Accepted));
    QCOMPARE(answer.name, QStringLiteral("B"));
}

void tst_ScenarioDialogUse::enterWithoutSelectionIsRefused()
{
    m_scenario->addName(QStringLiteral("A"));
    BoxAnswerer boxes;
    bool staysOpen = false;
    const Answer answer = run(ScenarioDialog::LoadMode, [&](ScenarioDialog& dialog) {
        key(Qt::Key_Return);
        staysOpen = dialog.isVisible();
    });
    QVERIFY(staysOpen);
    QVERIFY(boxes.sawOneWarning(QStringLiteral("Please select a scenario from the list")));
    QCOMPARE(answer.result, -1);
}

void tst_ScenarioDialogUse::escapeCancels_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("names");
    QTest::newRow("saving") << ScenarioDialog::SaveMode << 1;
    QTest::newRow("loading") << ScenarioDialog::LoadMode << 1;
    QTest::newRow("loading from nothing") << ScenarioDialog::LoadMode << 0;
}

void tst_ScenarioDialogUse::escapeCancels()
{
    QFETCH(int, mode);
    QFETCH(int, names);
    if (names > 0) {
        m_scenario->addName(QStringLiteral("A"));
    }
    const Answer answer = run(mode, [this](ScenarioDialog& dialog) {
        QVERIFY(QApplication::focusWidget() != nullptr);
        dialog.findChild<QListWidget*>()->setCurrentRow(0);
        key(Qt::Key_Escape);
    });
    QCOMPARE(answer.result, int(QDialog::Rejected));
}

void tst_ScenarioDialogUse::enterOnDeleteOnlyReadsAgain()
{
    m_scenario->addName(QStringLiteral("A"));
    bool staysOpen = false;
    const Answer answer = run(ScenarioDialog::LoadMode, [&](ScenarioDialog& dialog) {
        auto* const list = dialog.findChild<QListWidget*>();
        list->setCurrentRow(0);
        dialog.findChild<QWidget*>(QStringLiteral("pushButtonDelete"))->setFocus();
        key(Qt::Key_Space);
        staysOpen = dialog.isVisible() && list->count() == 1 && list->selectedItems().isEmpty();
    });
    QVERIFY(staysOpen);
    QCOMPARE(m_scenario->names(), QStringList{QStringLiteral("A")});
}

void tst_ScenarioDialogUse::tabOrder()
{
    m_scenario->addName(QStringLiteral("A"));
    QStringList order;
    run(ScenarioDialog::SaveMode, [&](ScenarioDialog& dialog) {
        dialog.findChild<QListWidget*>()->setFocus();
        for (int i = 0; i < 5; ++i) {
            const auto* button = qobject_cast<QAbstractButton*>(QApplication::focusWidget());
            order.append(button != nullptr ? button->text() : QApplication::focusWidget()->objectName());
            key(Qt::Key_Tab);
        }
        QCOMPARE(QApplication::focusWidget()->objectName(), QStringLiteral("listWidgetSavedScenarios"));
    });
    // Round to the button above the list.
    QCOMPARE(order.mid(0, 2), QStringList({QStringLiteral("listWidgetSavedScenarios"),
                                           QStringLiteral("lineEditScenarioName")}));
    QVERIFY(order.contains(QStringLiteral("Save")));
    QCOMPARE(order.last(), QStringLiteral("Delete"));
}

void tst_ScenarioDialogUse::overwritingByKey_data()
{
    QTest::addColumn<int>("pressed");
    QTest::addColumn<bool>("isOverwriting");
    QTest::newRow("return takes the default") << int(Qt::Key_Return) << true;
    QTest::newRow("escape") << int(Qt::Key_Escape) << false;
    QTest::newRow("Y") << int(Qt::Key_Y) << true;
    QTest::newRow("N") << int(Qt::Key_N) << false;
}

void tst_ScenarioDialogUse::overwritingByKey()
{
    QFETCH(int, pressed);
    QFETCH(bool, isOverwriting);
    m_scenario->addName(QStringLiteral("A"));
    QStringList texts;
    QTimer look;
    connect(&look, &QTimer::timeout, this, [&] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box != nullptr && box->isActiveWindow()) {
            look.stop();
            texts << box->button(QMessageBox::Yes)->text() << box->button(QMessageBox::No)->text();
            const bool isLetter = pressed == Qt::Key_Y || pressed == Qt::Key_N;
            key(static_cast<Qt::Key>(pressed), isLetter ? Qt::AltModifier : Qt::NoModifier);
        }
    });
    look.start(5);
    const Answer answer = run(ScenarioDialog::SaveMode, [this](ScenarioDialog&) {
        qobject_cast<QLineEdit*>(QApplication::focusWidget())->setText(QStringLiteral("A"));
        key(Qt::Key_Return);
    });
    QCOMPARE(texts, QStringList({QStringLiteral("&Yes"), QStringLiteral("&No")}));
    // -1: the dialog was still open afterwards.
    QCOMPARE(answer.result, isOverwriting ? int(QDialog::Accepted) : -1);
    QCOMPARE(answer.name, QStringLiteral("A"));
}

void tst_ScenarioDialogUse::goesBehindItsBox_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("withParent");
    QTest::newRow("warning") << ScenarioDialog::LoadMode << QString() << false;
    QTest::newRow("warning, with the parent") << ScenarioDialog::LoadMode << QString() << true;
    QTest::newRow("question") << ScenarioDialog::SaveMode << QStringLiteral("A") << false;
    QTest::newRow("question, with the parent") << ScenarioDialog::SaveMode << QStringLiteral("A") << true;
}

void tst_ScenarioDialogUse::goesBehindItsBox()
{
    QFETCH(int, mode);
    QFETCH(QString, typed);
    QFETCH(bool, withParent);
    m_scenario->addName(QStringLiteral("A"));
    auto parent = std::make_unique<QWidget>();
    const QPointer<ScenarioDialog> dialog(new ScenarioDialog(parent.get(), mode, m_scenario.get()));
    dialog->findChild<QLineEdit*>()->setText(typed);
    QPointer<QMessageBox> box;
    QTimer look;
    connect(&look, &QTimer::timeout, this, [&] {
        box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box) {
            look.stop();
            if (withParent) {
                parent.reset();
            } else {
                delete dialog;
            }
        }
    });
    look.start(5);
    dialog->open();
    QTest::keyClick(dialog, Qt::Key_Return);
    QVERIFY(!look.isActive());
    QVERIFY(!dialog);
    QVERIFY(!box);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

QTEST_MAIN(tst_ScenarioDialogUse)
#include "tst_ScenarioDialogUse.moc"
