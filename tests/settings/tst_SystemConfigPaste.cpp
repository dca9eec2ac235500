#include "settings/ConfigSamples.h"
#include "settings/Console.h"
#include "settings/NovalumBlock.h"
#include "settings/SystemConfigBench.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSpinBox>

namespace {
constexpr int rounds = 400;
const QString invalid = QStringLiteral("Data is invalid");

QString rowText(int row)
{
    QStringList fields;
    for (int column = 0; column < novalumChannelCount; ++column) {
        fields.append(QString::number(1000 * row - 100 * column - 3));
    }
    return fields.join(QLatin1Char('\t'));
}

/// Rows as a spreadsheet copies them, each with its line end.
QString block(int rows = novalumRowCount, const QString& lineEnd = QStringLiteral("\n"))
{
    QString text;
    for (int row = 0; row < rows; ++row) {
        text += rowText(row) + lineEnd;
    }
    return text;
}
} // namespace

/// Ctrl+V on every tab of the settings dialog.
class tst_SystemConfigPaste : public SystemConfigTest
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(buildEditor()); }
    void cleanupTestCase() { removeDialog(); }
    void init();
    void blockFillsTheTable_data();
    void blockFillsTheTable();
    void invalidBlockChangesNothing_data();
    void invalidBlockChangesNothing();
    void randomTextChangesNothing();
    void otherTabsIgnoreIt_data();
    void otherTabsIgnoreIt();
    void fieldsTakeTheirOwnPaste_data();
    void fieldsTakeTheirOwnPaste();
    void terminalTakesItsOwnPaste();
    void openCellTakesItsOwnPaste();
    void blockEndsTyping();
    void pasteCountsAsChange();

private:
    void activate() const;
    void paste(const QString& text) const;
    SystemConfigTexts m_before;
};

void tst_SystemConfigPaste::init()
{
    activate();
    QVERIFY(m_hand->clickTab(QStringLiteral("System Config")));
    m_hand->part<QTabWidget>("tabWidget")->setFocus();
    enter(likelyTexts());
    m_before = texts();
}

/// Where no window manager does it, a closed box leaves no window active, and shortcuts need one.
void tst_SystemConfigPaste::activate() const
{
    m_hand->dialog().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&m_hand->dialog()));
}

/// With the keyboard where it is.
void tst_SystemConfigPaste::paste(const QString& text) const
{
    QGuiApplication::clipboard()->setText(text);
    QWidget* const focused = m_hand->dialog().focusWidget();
    QTest::keyClick(focused == nullptr ? &m_hand->dialog() : focused, Qt::Key_V, Qt::ControlModifier);
}

void tst_SystemConfigPaste::blockFillsTheTable_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("focus");
    QTest::newRow("on the tabs") << block() << QByteArray("tabWidget");
    QTest::newRow("in the table") << block() << QByteArray("tableWidgetNovalumParams");
    QTest::newRow("in another table") << block() << QByteArray("tableWidgetHeaterParams");
    QTest::newRow("on a button") << block() << QByteArray("pushButtonSetSystemConfigData");
    QTest::newRow("on the port") << block() << QByteArray("comboBoxComPort");
    QTest::newRow("foreign line ends")
        << block(novalumRowCount, QStringLiteral("\r\n")) << QByteArray("tabWidget");
    QTest::newRow("text behind it") << block() + QStringLiteral("abc\t1") << QByteArray("tabWidget");
    QTest::newRow("blanks") << block().replace(QLatin1Char('\t'), QLatin1String(" \t "))
                            << QByteArray("tabWidget");
}

void tst_SystemConfigPaste::blockFillsTheTable()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, focus);
    const BoxAnswerer boxes;
    m_hand->part<QWidget>(focus.constData())->setFocus();
    m_lines->clear();
    paste(text);
    for (std::size_t i = 0; i < m_before.size(); ++i) {
        const ConfigCell& cell = systemConfigFields().at(i).cell;
        const QString expected = cell.table == ConfigTable::Novalum
                                     ? rowText(cell.row).section(QLatin1Char('\t'), cell.column, cell.column)
                                     : m_before.at(i);
        QCOMPARE(item(cell)->text(), expected);
    }
    QVERIFY(boxes.boxes().isEmpty());
    QCOMPARE(countBeginning("wf:"), 0);
}

void tst_SystemConfigPaste::invalidBlockChangesNothing_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QString();
    QTest::newRow("a row too few") << block(novalumRowCount - 1);
    QTest::newRow("a row too many") << block(novalumRowCount + 1);
    QTest::newRow("no last line end") << block().chopped(1);
    QTest::newRow("an eighth column") << block().replace(QLatin1Char('\n'), QLatin1String("\t8\n"));
    QTest::newRow("a real") << block().replace(QLatin1String("-603\n"), QLatin1String("1.5\n"));
    QTest::newRow("a word in the last cell")
        << block().left(block().lastIndexOf(QLatin1Char('\t'))) + QStringLiteral("\tabc\n");
    QTest::newRow("an empty cell") << block().replace(QLatin1String("-3\t"), QLatin1String("\t"));
}

void tst_SystemConfigPaste::invalidBlockChangesNothing()
{
    QFETCH(QString, text);
    const BoxAnswerer boxes;
    paste(text);
    QVERIFY(boxes.sawOneWarning(invalid));
    QCOMPARE(boxes.boxes().first().parent, &m_hand->dialog());
    QVERIFY(texts() == m_before);
}

void tst_SystemConfigPaste::randomTextChangesNothing()
{
    const QString alphabet = QStringLiteral("0123456789-+.e \t\t\n\n\rx%1<");
    Chance chance(8);
    const BoxAnswerer boxes;
    int refused = 0;
    for (int round = 0; round < rounds; ++round) {
        QString text = chance.once(2) ? block() : QString();
        // One character too many, too few or wrong makes a block no block, or another one.
        for (int i = chance.number(1, 40); i > 0; --i) {
            text.insert(chance.number(0, int(text.size())),
                        alphabet.at(chance.number(0, int(alphabet.size()) - 1)));
        }
        const bool valid = parseNovalumBlock(text).has_value();
        if (!valid) {
            activate();
            paste(text);
            ++refused;
            QVERIFY(texts() == m_before);
        }
    }
    QVERIFY(refused > rounds / 2);
    QCOMPARE(boxes.boxes().size(), refused);
}

void tst_SystemConfigPaste::otherTabsIgnoreIt_data()
{
    QTest::addColumn<QString>("caption");
    for (const char* caption :
         {"System Info", "Operating Info", "Control Mode", "TTL Configuration", "Update"}) {
        QTest::newRow(caption) << QString::fromLatin1(caption);
    }
}

void tst_SystemConfigPaste::otherTabsIgnoreIt()
{
    QFETCH(QString, caption);
    const BoxAnswerer boxes;
    QVERIFY(m_hand->clickTab(caption));
    for (const QString& text : {block(), QStringLiteral("abc")}) {
        paste(text);
        QVERIFY(texts() == m_before);
    }
    QVERIFY(boxes.boxes().isEmpty());
}

void tst_SystemConfigPaste::fieldsTakeTheirOwnPaste_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QByteArray>("field");
    QTest::newRow("serial number") << QStringLiteral("System Info") << QByteArray("lineEditVYRSerialNumber");
    QTest::newRow("minutes") << QStringLiteral("Control Mode") << QByteArray("spinBoxSleepTimer");
}

void tst_SystemConfigPaste::fieldsTakeTheirOwnPaste()
{
    QFETCH(QString, caption);
    QFETCH(QByteArray, field);
    const BoxAnswerer boxes;
    QVERIFY(m_hand->clickTab(caption));
    auto* const widget = m_hand->part<QWidget>(field.constData());
    auto* edit = qobject_cast<QLineEdit*>(widget);
    edit = edit == nullptr ? widget->findChild<QLineEdit*>() : edit;
    widget->setEnabled(true);
    widget->setFocus();
    edit->selectAll();
    paste(QStringLiteral("42"));
    QVERIFY2(edit->text().startsWith(QLatin1String("42")), qPrintable(edit->text()));
    QVERIFY(texts() == m_before);
    QVERIFY(boxes.boxes().isEmpty());
}

void tst_SystemConfigPaste::terminalTakesItsOwnPaste()
{
    const BoxAnswerer boxes;
    QVERIFY(m_hand->clickTab(QStringLiteral("Service && Development")));
    auto* const console = m_hand->part<Console>("consoleWindow");
    console->setLocalEchoEnabled(true);
    console->setFocus();
    const QSignalSpy typed(console, &Console::getData);
    paste(QStringLiteral("pasted words"));
    QVERIFY(!typed.isEmpty());
    QVERIFY(console->toPlainText().contains(QLatin1String("pasted words")));
    QVERIFY(texts() == m_before);
    QVERIFY(boxes.boxes().isEmpty());
    console->setLocalEchoEnabled(false);
}

void tst_SystemConfigPaste::openCellTakesItsOwnPaste()
{
    const BoxAnswerer boxes;
    beginTyping({ConfigTable::Novalum, 2, 3}, QStringLiteral("1"));
    paste(QStringLiteral("23"));
    QTest::keyClick(m_hand->dialog().focusWidget(), Qt::Key_Return);
    QTRY_COMPARE(item({ConfigTable::Novalum, 2, 3})->text(), QStringLiteral("123"));
    QVERIFY(boxes.boxes().isEmpty());
}

void tst_SystemConfigPaste::blockEndsTyping()
{
    const BoxAnswerer boxes;
    beginTyping({ConfigTable::Novalum, 0, 0}, QStringLiteral("99"));
    m_hand->part<QWidget>("comboBoxComPort")->setFocus();
    paste(block());
    QCOMPARE(item({ConfigTable::Novalum, 0, 0})->text(), QStringLiteral("-3"));
    QVERIFY(boxes.boxes().isEmpty());
}

void tst_SystemConfigPaste::pasteCountsAsChange()
{
    get();
    QVERIFY(texts() == deviceTexts());
    m_hand->part<QTabWidget>("tabWidget")->setFocus();
    paste(block());
    QVERIFY(switchTo(DeviceMode::Loader));
    QCOMPARE(item({ConfigTable::Novalum, 0, 0})->text(), QStringLiteral("-3"));
    QVERIFY(switchTo(DeviceMode::Application));
}

QTEST_MAIN(tst_SystemConfigPaste)
#include "tst_SystemConfigPaste.moc"
