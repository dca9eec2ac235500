#include "Demo/DemoHands.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QShortcut>
#include <QSlider>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTabBar>
#include <QTabWidget>

namespace {
/// The handle may stand still for some pixels of the mouse's way.
constexpr int furthestStep = 5;

void sendMouse(QWidget& widget, QEvent::Type type, QPoint at)
{
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, at, widget.mapToGlobal(at), button, held, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

void clickAt(QWidget& widget, QPoint at)
{
    sendMouse(widget, QEvent::MouseButtonPress, at);
    sendMouse(widget, QEvent::MouseButtonRelease, at);
}

QPoint handleCentre(const QSlider& slider, int value)
{
    QStyleOptionSlider option;
    option.initFrom(&slider);
    option.orientation = slider.orientation();
    option.minimum = slider.minimum();
    option.maximum = slider.maximum();
    option.sliderPosition = value;
    option.sliderValue = value;
    option.upsideDown = slider.orientation() == Qt::Vertical;
    return slider.style()
        ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider)
        .center();
}
} // namespace

QWidget* DemoHands::find(const QString& objectName) const
{
    return m_window.findChild<QWidget*>(objectName);
}

QWidget* DemoHands::box()
{
    return QApplication::activeModalWidget();
}

void DemoHands::click(const QString& objectName) const
{
    if (QWidget* widget = find(objectName)) {
        clickAt(*widget, widget->rect().center());
    }
}

void DemoHands::dragSlider(const QString& objectName, int value) const
{
    auto* slider = m_window.findChild<QSlider*>(objectName);
    if (!slider) {
        return;
    }
    sendMouse(*slider, QEvent::MouseButtonPress, handleCentre(*slider, slider->value()));
    const int step = value > slider->value() ? 1 : -1;
    while (slider->value() != value) {
        const int before = slider->value();
        for (int target = before; slider->value() == before && qAbs(target - before) <= furthestStep;
             target += step) {
            sendMouse(*slider, QEvent::MouseMove, handleCentre(*slider, target));
        }
        if (slider->value() == before) {
            break; // the slider is switched off
        }
    }
    sendMouse(*slider, QEvent::MouseButtonRelease, handleCentre(*slider, slider->value()));
}

void DemoHands::clickTab(const QString& pageName) const
{
    const auto* tabs = m_window.findChild<QTabWidget*>(QStringLiteral("tabWidget"));
    QWidget* page = find(pageName);
    if (tabs && page) {
        clickAt(*tabs->tabBar(), tabs->tabBar()->tabRect(tabs->indexOf(page)).center());
    }
}

void DemoHands::answerBox(const QString& buttonText)
{
    const QList<QAbstractButton*> buttons =
        box() ? box()->findChildren<QAbstractButton*>() : QList<QAbstractButton*>();
    for (QAbstractButton* button : buttons) {
        if (button->text().remove(QLatin1Char('&')) == buttonText) {
            clickAt(*button, button->rect().center());
            return;
        }
    }
}

void DemoHands::type(const QString& objectName, const QString& text) const
{
    QWidget* widget = find(objectName);
    if (!widget) {
        return;
    }
    widget->setFocus();
    for (const QChar character : text) {
        const bool isReturn = character == QLatin1Char('\n');
        const int key = isReturn ? int(Qt::Key_Return) : 0;
        const QString typed = isReturn ? QStringLiteral("\r") : QString(character);
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, typed);
        QApplication::sendEvent(widget, &press);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, typed);
        QApplication::sendEvent(widget, &release);
    }
}

void DemoHands::askForHelp() const
{
    if (auto* key =
            m_window.findChild<QShortcut*>(QStringLiteral("helpShortcut"), Qt::FindDirectChildrenOnly)) {
        emit key->activated();
    }
}

bool DemoHands::labelShows(const QString& objectName, const QString& text) const
{
    const auto* label = m_window.findChild<QLabel*>(objectName);
    return label && label->text() == text;
}

bool DemoHands::buttonShows(const QString& objectName, const QString& text) const
{
    const auto* button = m_window.findChild<QAbstractButton*>(objectName);
    return button && button->text() == text;
}

bool DemoHands::isFilled(const QString& objectName) const
{
    const QWidget* widget = find(objectName);
    if (const auto* line = qobject_cast<const QLineEdit*>(widget)) {
        return !line->text().isEmpty();
    }
    if (const auto* console = qobject_cast<const QPlainTextEdit*>(widget)) {
        return !console->toPlainText().isEmpty();
    }
    const auto* label = qobject_cast<const QLabel*>(widget);
    return label && label->text().contains(QLatin1Char(':'));
}

bool DemoHands::isInFront(const QString& pageName) const
{
    const auto* tabs = m_window.findChild<QTabWidget*>(QStringLiteral("tabWidget"));
    return tabs && tabs->currentWidget() && tabs->currentWidget()->objectName() == pageName;
}

bool DemoHands::isShown(const QString& objectName) const
{
    const QWidget* widget = find(objectName);
    return widget && widget->isVisible();
}
