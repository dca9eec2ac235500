#include "device/Device.h"
#include "settings/Console.h"
#include "settings/DialogBench.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

/// The settings dialog without the mouse: every control is reached, and works.
class tst_DialogKeyboard : public AnsweringDialogTest
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(buildDialog()); }
    void cleanup() { removeDialog(); }
    void everyControlIsReached_data();
    void everyControlIsReached();
    void controlsWork_data();
    void controlsWork();
    void sleepMinutesAreTyped();
    void portIsChosen();
    void terminalIsLeft();
    void returnPressesNothing_data();
    void returnPressesNothing();

private:
    bool tabTo(const QString& caption);
    bool walkTo(QWidget* widget);
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
};

void tst_DialogKeyboard::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QWidget* const focused = m_hand->dialog().focusWidget();
    QTest::keyClick(focused == nullptr ? &m_hand->dialog() : focused, key, modifiers);
}

bool tst_DialogKeyboard::tabTo(const QString& caption)
{
    auto* const tabs = m_hand->part<QTabWidget>("tabWidget");
    tabs->setFocus();
    for (int i = 0; i < tabs->count() && m_hand->captionInFront() != caption; ++i) {
        press(Qt::Key_Tab, Qt::ControlModifier);
    }
    return m_hand->captionInFront() == caption;
}

/// With Tab alone; of a group of radio buttons the Tab key reaches one.
bool tst_DialogKeyboard::walkTo(QWidget* widget)
{
    constexpr int moreThanThereAre = 60;
    for (int i = 0; i < moreThanThereAre && m_hand->dialog().focusWidget() != widget; ++i) {
        press(Qt::Key_Tab);
    }
    return m_hand->dialog().focusWidget() == widget;
}

void tst_DialogKeyboard::everyControlIsReached_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("page");
    QTest::newRow("System Info") << QStringLiteral("System Info") << QStringLiteral("tabSystemInfo");
    QTest::newRow("System Config") << QStringLiteral("System Config") << QStringLiteral("tabSystemConfig");
    QTest::newRow("Control Mode") << QStringLiteral("Control Mode") << QStringLiteral("tabControlMode");
    QTest::newRow("TTL") << QStringLiteral("TTL Configuration") << QStringLiteral("tabTTLConfiguration");
    QTest::newRow("Update") << QStringLiteral("Update") << QStringLiteral("tabUpdate");
}

void tst_DialogKeyboard::everyControlIsReached()
{
    QFETCH(QString, caption);
    QFETCH(QString, page);
    QVERIFY(tabTo(caption));
    QSet<QWidget*> seen;
    for (int i = 0; i < 80; ++i) {
        press(Qt::Key_Tab);
        seen.insert(m_hand->dialog().focusWidget());
    }
    const QList<QWidget*> parts = m_hand->part<QWidget>(qPrintable(page))->findChildren<QWidget*>();
    int expected = 0;
    for (QWidget* part : parts) {
        const auto* const button = qobject_cast<QAbstractButton*>(part);
        const bool reachedByArrows = button != nullptr && button->autoExclusive() && !button->isChecked();
        if ((part->focusPolicy() & Qt::TabFocus) == 0 || !part->isVisible() || !part->isEnabled() ||
            part->focusProxy() != nullptr || reachedByArrows) {
            continue;
        }
        ++expected;
        QVERIFY2(seen.contains(part), qPrintable(part->objectName()));
    }
    QVERIFY(expected > 0);
    QVERIFY(seen.contains(m_hand->part<QWidget>("comboBoxComPort")));
    QVERIFY(seen.contains(m_hand->part<QWidget>("pushButtonClose")));
}

void tst_DialogKeyboard::controlsWork_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QByteArray>("command");
    const QString mode = QStringLiteral("Control Mode");
    QTest::newRow("intensity") << mode << QByteArray("radioButtonIntensityControlUSB") << Qt::Key_Down
                               << QByteArray("int_mode=ext");
    QTest::newRow("shutter") << mode << QByteArray("radioButtonShutterControlUSB") << Qt::Key_Down
                             << QByteArray("sh_mode=ext");
    QTest::newRow("despeckler") << mode << QByteArray("radioButtonDespecklerOn") << Qt::Key_Down
                                << QByteArray("speckle=off");
    QTest::newRow("sleep timer") << mode << QByteArray("checkBoxSleepTimer") << Qt::Key_Space
                                 << QByteArray("sleep=0");
    QTest::newRow("defaults") << mode << QByteArray("pushButtonRestoreDefaults") << Qt::Key_Space
                              << QByteArray("defaults");
    QTest::newRow("polarity") << QStringLiteral("TTL Configuration")
                              << QByteArray("radioButtonTTLShutterOpen528") << Qt::Key_Right
                              << QByteArray("ttl_invert:528=1");
    QTest::newRow("reset") << QStringLiteral("Update") << QByteArray("pushButtonSystemReset") << Qt::Key_Space
                           << QByteArray("reset");
}

void tst_DialogKeyboard::controlsWork()
{
    QFETCH(QString, caption);
    QFETCH(QByteArray, from);
    QFETCH(Qt::Key, key);
    QFETCH(QByteArray, command);
    QVERIFY(tabTo(caption));
    QVERIFY(walkTo(m_hand->part<QWidget>(from.constData())));
    newCommands();
    press(key);
    QTRY_VERIFY(m_illuminator->commands().contains(command));
}

void tst_DialogKeyboard::sleepMinutesAreTyped()
{
    QVERIFY(tabTo(QStringLiteral("Control Mode")));
    auto* const minutes = m_hand->part<QSpinBox>("spinBoxSleepTimer");
    QVERIFY(walkTo(minutes));
    newCommands();
    minutes->selectAll();
    press(Qt::Key_4);
    press(Qt::Key_5);
    press(Qt::Key_Tab);
    // The finished number alone: a device that was to sleep after 4 minutes would be another surprise.
    QTRY_COMPARE(m_illuminator->commands(), QList<QByteArray>{"sleep=45"});
}

void tst_DialogKeyboard::portIsChosen()
{
    const QSignalSpy chosen(&m_hand->dialog(), &SettingsDialog::comPortChanged);
    auto* const ports = m_hand->part<QComboBox>("comboBoxComPort");
    ports->addItem(QStringLiteral("another"));
    QVERIFY(walkTo(ports));
    press(Qt::Key_Down);
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen.first().first().toString(), QStringLiteral("another"));
}

void tst_DialogKeyboard::terminalIsLeft()
{
    QVERIFY(tabTo(QStringLiteral("Service && Development")));
    auto* const console = m_hand->part<Console>("consoleWindow");
    QVERIFY(walkTo(console));
    newCommands();
    press(Qt::Key_V);
    press(Qt::Key_Return);
    QVERIFY(console->hasFocus());
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    QVERIFY(!console->hasFocus());
    QVERIFY(walkTo(console));
    press(Qt::Key_Tab, Qt::ControlModifier);
    QVERIFY(m_hand->captionInFront() != QStringLiteral("Service && Development"));
}

void tst_DialogKeyboard::returnPressesNothing_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QByteArray>("field");
    QTest::newRow("spin box") << QStringLiteral("Control Mode") << QByteArray("spinBoxSleepTimer");
    QTest::newRow("serial number") << QStringLiteral("System Info") << QByteArray("lineEditVYRSerialNumber");
    QTest::newRow("check box") << QStringLiteral("Control Mode") << QByteArray("checkBoxSleepTimer");
}

void tst_DialogKeyboard::returnPressesNothing()
{
    QFETCH(QString, caption);
    QFETCH(QByteArray, field);
    QVERIFY(tabTo(caption));
    QVERIFY(walkTo(m_hand->part<QWidget>(field.constData())));
    newCommands();
    press(Qt::Key_Return);
    QVERIFY(m_hand->dialog().isVisible());
    QCOMPARE(newCommands(), QList<QByteArray>());
}

QTEST_MAIN(tst_DialogKeyboard)
#include "tst_DialogKeyboard.moc"
