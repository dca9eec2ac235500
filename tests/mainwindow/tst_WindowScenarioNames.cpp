#include "device/Device.h"
#include "mainwindow/ScenarioBench.h"
#include "scenario/Scenario.h"
#include "support/FileSizeLimit.h"

#include <QTest>

/// Saving scenarios: what is kept, how it is named, and how the window tells that something changed since.
class tst_WindowScenarioNames : public ScenarioWindowTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildScenarioWindow()); }
    void cleanup() { removeScenarioWindow(); }
    void savingKeepsThePanel();
    void keys_data();
    void keys();
    void changesAreMarked_data();
    void changesAreMarked();
    void changedAtTheDeviceIsMarked();
    void namesSurviveARestart_data();
    void namesSurviveARestart();
    void longNameLeavesTheWindowItsSize();
    void refusedDiskIsTold();
    void leavingTheDialogChangesNothing();
    void windowGoesBehindTheDialog();

private:
    void change(const QString& what, bool back);
};

void tst_WindowScenarioNames::savingKeepsThePanel()
{
    Column(*m_window, 4).slider->setValue(55);
    QVERIFY(reportShutters({false, false, false, true, false, false, false, false}));
    save(QStringLiteral("Evening"));
    const auto values = m_window->scenario()->values(QStringLiteral("Evening"));
    QVERIFY(values);
    for (int number = 1; number <= 8; ++number) {
        const ScenarioChannel& kept = values->at(static_cast<std::size_t>(number - 1));
        QCOMPARE(kept.settings.name, laser(number).name());
        QCOMPARE(kept.settings.intensity, number == 4 ? 55.0F : 0.0F);
        QCOMPARE(kept.settings.colour, laser(number).colour());
        QCOMPARE(kept.shutterOpen, number == 4);
    }
    QCOMPARE(scenarioText(), QStringLiteral("Scenario: Evening"));
    QVERIFY(!isModifiedShown());
    // On the disk at once: a crash must not lose what the operator was told is saved.
    QVERIFY(m_bench->settingsFileContent().contains("Evening"));
}

void tst_WindowScenarioNames::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("caption");
    QTest::newRow("save") << int(Qt::Key_S) << QStringLiteral("Save Scenario");
    QTest::newRow("load") << int(Qt::Key_O) << QStringLiteral("Load Scenario");
}

void tst_WindowScenarioNames::keys()
{
    QFETCH(int, key);
    QFETCH(QString, caption);
    QString seen;
    runLater(m_window.get(), std::chrono::milliseconds(300), [&seen] {
        if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            seen = dialog->findChild<QLabel*>(QStringLiteral("labelLoadSaveScenario"))->text();
            dialog->reject();
        }
    });
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    Column(*m_window, 3).name->setFocus();
    QTest::keyClick(Column(*m_window, 3).name, static_cast<Qt::Key>(key), Qt::ControlModifier);
    QTRY_COMPARE(seen, caption);
}

void tst_WindowScenarioNames::changesAreMarked_data()
{
    QTest::addColumn<QString>("what");
    for (const char* what : {"name", "intensity", "polarity"}) {
        QTest::newRow(what) << QString::fromLatin1(what);
    }
}

void tst_WindowScenarioNames::change(const QString& what, bool back)
{
    const Column column(*m_window, 2);
    if (what == QLatin1String("name")) {
        column.name->setText(back ? QStringLiteral("445nm") : QStringLiteral("blue"));
        emit column.name->editingFinished();
    } else if (what == QLatin1String("intensity")) {
        column.slider->setValue(back ? 0 : 20);
    } else {
        m_window->onInvertTTLChanged(1, !back);
    }
}

void tst_WindowScenarioNames::changesAreMarked()
{
    QFETCH(QString, what);
    save(QStringLiteral("A"));
    QVERIFY(!isModifiedShown());
    change(what, false);
    QTRY_VERIFY(isModifiedShown());
    QCOMPARE(label(*m_window, "labelScenarioModified")->text(), QStringLiteral("(modified)"));
    change(what, true);
    QTRY_VERIFY(!isModifiedShown());
}

void tst_WindowScenarioNames::changedAtTheDeviceIsMarked()
{
    save(QStringLiteral("A"));
    QVERIFY(reportShutters({true, false, false, false, false, false, false, false}));
    QTRY_VERIFY(isModifiedShown());
    QVERIFY(reportShutters({}));
    QTRY_VERIFY(!isModifiedShown());
}

void tst_WindowScenarioNames::namesSurviveARestart_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("slashes") << QStringLiteral("a/b\\c/../d");
    QTest::newRow("percent") << QStringLiteral("100 %1 %2F%");
    QTest::newRow("quotes") << QStringLiteral("\"'`\"");
    QTest::newRow("line feeds") << QStringLiteral("one\ntwo\r\nthree");
    QTest::newRow("markup") << QStringLiteral("<b>&amp;</b>");
    QTest::newRow("1000 characters") << QString(1000, QLatin1Char('x'));
    QTest::newRow("scripts") << QString::fromUtf8("Größe Ω 光 नमस्ते שלום 🔬");
    QTest::newRow("like a stored value") << QStringLiteral("@Invalid()");
}

void tst_WindowScenarioNames::namesSurviveARestart()
{
    QFETCH(QString, name);
    Column(*m_window, 5).slider->setValue(31);
    save(name);
    QVERIFY(m_boxes->boxes().isEmpty());
    m_window->close();
    m_window->saveSettings();
    m_window = m_bench->start();
    QVERIFY(m_illuminator->connectTo(*m_window));
    QCOMPARE(m_window->scenario()->names(), QStringList{name});
    Column(*m_window, 5).slider->setValue(0);
    QVERIFY(loadWhole(name));
    QCOMPARE(laser(5).intensity(), 31.0F);
    QVERIFY(m_boxes->boxes().isEmpty());
}

void tst_WindowScenarioNames::longNameLeavesTheWindowItsSize()
{
    const QSize before = m_window->size();
    const QSize minimumBefore = m_window->minimumSizeHint();
    save(QString(1000, QLatin1Char('W')) + QLatin1Char('\n') + QString(20, QLatin1Char('\n')));
    Column(*m_window, 1).slider->setValue(3);
    QTRY_VERIFY(isModifiedShown());
    QCoreApplication::processEvents();
    QCOMPARE(m_window->size(), before);
    QCOMPARE(m_window->minimumSizeHint().height(), minimumBefore.height());
    // The mark stays legible beside the longest name.
    const QLabel* mark = label(*m_window, "labelScenarioModified");
    QVERIFY(mark->width() >= mark->sizeHint().width());
    QVERIFY(label(*m_window, "labelSleepTimer")->width() >=
            label(*m_window, "labelSleepTimer")->sizeHint().width());
}

void tst_WindowScenarioNames::refusedDiskIsTold()
{
    save(QStringLiteral("first"));
    const QByteArray content = m_bench->settingsFileContent();
    {
        const FileSizeLimit limit(static_cast<rlim_t>(content.size() + 10));
        save(QStringLiteral("second"));
    }
    QTRY_VERIFY(m_boxes->sawOneWarning(QStringLiteral("The scenario could not be saved.")));
    QCOMPARE(m_window->scenario()->names(), QStringList{QStringLiteral("first")});
    QVERIFY(!m_window->scenario()->values(QStringLiteral("second")));
    QCOMPARE(scenarioText(), QStringLiteral("Scenario: first"));
    QCOMPARE(m_bench->settingsFileContent(), content);
    // Nothing of it stays behind in memory, to be written by the next save.
    save(QStringLiteral("third"));
    QVERIFY(!m_bench->settingsFileContent().contains("second"));
}

void tst_WindowScenarioNames::leavingTheDialogChangesNothing()
{
    const QByteArray before = m_bench->settingsFileContent();
    for (const char* button : {"pushButtonSaveScenario", "pushButtonLoadScenario"}) {
        runLater(m_window.get(), std::chrono::milliseconds(100), [] {
            if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
                QTest::keyClick(dialog, Qt::Key_Escape);
            }
        });
        QTest::mouseClick(m_window->findChild<QPushButton*>(QLatin1String(button)), Qt::LeftButton);
    }
    QVERIFY(scenarioText().isEmpty());
    QVERIFY(m_window->scenario()->names().isEmpty());
    QCOMPARE(m_bench->settingsFileContent(), before);
    QVERIFY(m_illuminator->commands().isEmpty());
}

void tst_WindowScenarioNames::windowGoesBehindTheDialog()
{
    bool gone = false;
    runLater(QCoreApplication::instance(), std::chrono::milliseconds(100), [this, &gone] {
        m_window.reset();
        gone = true;
    });
    m_window->findChild<QPushButton*>(QStringLiteral("pushButtonSaveScenario"))->click();
    QVERIFY(gone);
}

QTEST_MAIN(tst_WindowScenarioNames)
#include "tst_WindowScenarioNames.moc"
