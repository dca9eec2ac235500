#include "settings/DialogBench.h"

#include "device/Device.h"

#include <QAbstractButton>
#include <QScrollArea>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

#include <algorithm>

namespace {
QTabWidget* tabsOf(const SettingsDialog& dialog)
{
    return dialog.findChild<QTabWidget*>(QStringLiteral("tabWidget"));
}
} // namespace

bool DialogHand::open() const
{
    QTest::mouseClick(m_window.findChild<QPushButton*>(QStringLiteral("pushButtonSettings")), Qt::LeftButton);
    return QTest::qWaitForWindowExposed(&dialog());
}

bool DialogHand::openAnew() const
{
    dialog().close();
    return open();
}

bool DialogHand::clickTab(const QString& caption) const
{
    QTabBar* const bar = tabsOf(dialog())->tabBar();
    for (int i = 0; i < bar->count(); ++i) {
        if (bar->tabText(i) == caption) {
            QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->tabRect(i).center());
            return bar->currentIndex() == i;
        }
    }
    return false;
}

QStringList DialogHand::captions() const
{
    QStringList captions;
    const QTabBar* const bar = tabsOf(dialog())->tabBar();
    for (int i = 0; i < bar->count(); ++i) {
        captions.append(bar->tabText(i));
    }
    return captions;
}

QString DialogHand::captionInFront() const
{
    const QTabWidget* const tabs = tabsOf(dialog());
    return tabs->tabText(tabs->currentIndex());
}

void DialogHand::bringIntoView(QWidget* widget) const
{
    QTabWidget* const tabs = tabsOf(dialog());
    for (int i = 0; i < tabs->count(); ++i) {
        if (tabs->widget(i)->isAncestorOf(widget) && tabs->currentIndex() != i) {
            tabs->setCurrentIndex(i);
        }
    }
    for (QWidget* above = widget->parentWidget(); above != nullptr; above = above->parentWidget()) {
        if (auto* const area = qobject_cast<QScrollArea*>(above)) {
            area->ensureWidgetVisible(widget);
        }
    }
    if (!widget->isVisible()) {
        qWarning("%s cannot be seen", qPrintable(widget->objectName()));
    }
}

QPoint DialogHand::placeToClick(const QWidget* widget) const
{
    // A choice is hit on its mark, not on the room to the right of its text.
    constexpr int markWidth = 10;
    const bool isChoice = widget->inherits("QRadioButton") || widget->inherits("QCheckBox");
    return {isChoice ? markWidth : widget->width() / 2, widget->height() / 2};
}

void DialogHand::click(const char* name) const
{
    auto* const widget = part<QWidget>(name);
    bringIntoView(widget);
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, placeToClick(widget));
}

QString DialogHand::text(const char* labelName) const
{
    return part<QLabel>(labelName)->text();
}

QString DialogHand::fieldText(const char* lineEditName) const
{
    return part<QLineEdit>(lineEditName)->text();
}

bool DialogHand::isChecked(const char* buttonName) const
{
    return part<QAbstractButton>(buttonName)->isChecked();
}

ChoiceSpy::ChoiceSpy(SettingsDialog& dialog)
{
    const auto number = [this](const char* signal) {
        return [this, signal](int value) {
            m_choices.append(QString(QLatin1String(signal) + QStringLiteral("(%1)").arg(value)));
        };
    };
    using Dialog = SettingsDialog;
    QObject::connect(&dialog, &Dialog::comPortChanged, &m_context, [this](const QString& portName) {
        m_choices.append(QString(QStringLiteral("comPortChanged(") + portName + QLatin1Char(')')));
    });
    QObject::connect(&dialog, &Dialog::shutterControlChanged, &m_context, number("shutterControlChanged"));
    QObject::connect(&dialog, &Dialog::intensityControlChanged, &m_context,
                     number("intensityControlChanged"));
    QObject::connect(&dialog, &Dialog::sleepTimerChanged, &m_context, number("sleepTimerChanged"));
    QObject::connect(&dialog, &Dialog::sleepTimerEnableChanged, &m_context,
                     number("sleepTimerEnableChanged"));
    QObject::connect(&dialog, &Dialog::speckleControlChanged, &m_context, number("speckleControlChanged"));
    QObject::connect(&dialog, &Dialog::enhancedDiagsChanged, &m_context, number("enhancedDiagsChanged"));
    QObject::connect(&dialog, &Dialog::invertTTLChanged, &m_context, [this](int index, bool inverted) {
        m_choices.append(QStringLiteral("invertTTLChanged(%1,%2)").arg(index).arg(inverted ? 1 : 0));
    });
}

LineRecorder::LineRecorder(Simulator::Wire& wire)
{
    m_clock.start();
    QObject::connect(&wire, &Simulator::Wire::lineReceived, &m_context, [this](const QByteArray& line) {
        m_lines.append({line, std::chrono::milliseconds(m_clock.elapsed())});
    });
}

int LineRecorder::count(const QByteArray& text) const
{
    return int(timesOf(text).size());
}

int LineRecorder::countBeginning(const QByteArray& beginning) const
{
    return int(std::count_if(m_lines.begin(), m_lines.end(),
                             [&beginning](const Line& line) { return line.text.startsWith(beginning); }));
}

QList<std::chrono::milliseconds> LineRecorder::timesOf(const QByteArray& text) const
{
    QList<std::chrono::milliseconds> times;
    for (const Line& line : m_lines) {
        if (line.text == text) {
            times.append(line.at);
        }
    }
    return times;
}

QList<QByteArray> LineRecorder::texts() const
{
    QList<QByteArray> texts;
    for (const Line& line : m_lines) {
        texts.append(line.text);
    }
    return texts;
}

bool AnsweringDialogTest::buildDialog(bool connected)
{
    m_bench = std::make_unique<WindowBench>();
    m_illuminator = std::make_unique<FakeIlluminator>();
    if (!connected) {
        m_illuminator->bench().wire().unplug();
    }
    m_window = m_bench->start(QStringLiteral("-diag"));
    m_hand = std::make_unique<DialogHand>(*m_window);
    if (connected && !m_illuminator->connectTo(*m_window)) {
        return false;
    }
    // The link tells an unchanged "ok" once per process only.
    m_window->onWarningStateChanged(false, QStringLiteral("ok"));
    if (!m_hand->open()) {
        return false;
    }
    m_illuminator->clearCommands();
    return true;
}

bool AnsweringDialogTest::plugIn()
{
    return m_illuminator->bench().wire().plug() && m_illuminator->connectTo(*m_window);
}

void AnsweringDialogTest::removeDialog()
{
    m_hand.reset();
    removeWindow();
}

QList<QByteArray> AnsweringDialogTest::newCommands()
{
    if (!m_illuminator->settle(*m_window)) {
        return {"the device did not settle"};
    }
    const QList<QByteArray> commands = m_illuminator->commands();
    m_illuminator->clearCommands();
    return commands;
}

bool SimulatedDialogTest::buildDialog()
{
    m_bench = std::make_unique<WindowBench>();
    m_device = std::make_unique<SimulatedBench>();
    m_lines = std::make_unique<LineRecorder>(m_device->wire());
    m_window = m_bench->start(QStringLiteral("-diag"));
    m_hand = std::make_unique<DialogHand>(*m_window);
    m_window->device()->checkConnectionStatus();
    if (!QTest::qWaitFor([this] { return modeWord() == QStringLiteral("Idle"); })) {
        return false;
    }
    // The link tells an unchanged "ok" once per process only.
    m_window->onWarningStateChanged(false, QStringLiteral("ok"));
    return m_hand->open();
}

void SimulatedDialogTest::removeDialog()
{
    m_hand.reset();
    m_window.reset();
    m_lines.reset();
    m_device.reset();
    m_bench.reset();
}
