#include "Person.h"

#include "benchmark/BenchTools.h"
#include "mainwindow/PelorinMainWindow.h"
#include "settings/SettingsDialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

namespace {
constexpr int mouseInterval = 16; // ms; a mouse reports about sixty times a second
constexpr int sliderEdge = 12;    // pixels; inside the handle when it stands at an end of its way

void sendMouse(QWidget& widget, QEvent::Type type, const QPoint& place)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, place, widget.mapTo(widget.window(), place), widget.mapToGlobal(place), button,
                      held, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

QTabWidget& tabsOf(const QWidget& dialog)
{
    return *dialog.findChild<QTabWidget*>(QStringLiteral("tabWidget"));
}
} // namespace

namespace Soak {

Person::Person(PelorinMainWindow& window, Chance& chance) : m_window(window), m_chance(chance)
{
    qApp->installEventFilter(this);
}

SettingsDialog& Person::dialog()
{
    return *m_window.settingsDialog();
}

QWidget* Person::find(const QString& name) const
{
    // The dialog is a child of the window.
    auto* const widget = m_window.findChild<QWidget*>(name);
    if (widget == nullptr) {
        std::printf("There is no %s\n", qPrintable(name));
        std::abort();
    }
    return widget;
}

void Person::click(const char* name)
{
    QWidget* const widget = find(QLatin1String(name));
    // A choice is hit on its mark, not on the room to the right of its text.
    constexpr int mark = 10;
    const bool isChoice = widget->inherits("QRadioButton") || widget->inherits("QCheckBox");
    const QPoint place(isChoice ? mark : widget->width() / 2, widget->height() / 2);
    if (widget->isEnabled() && widget->isVisible()) {
        QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, place);
    }
}

void Person::clickLeftHalf(const char* name, int number)
{
    QWidget* const widget = find(QLatin1String(name) + QString::number(number));
    if (widget->isVisible()) {
        QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier,
                          QPoint(widget->width() / 4, widget->height() / 2));
    }
}

void Person::drag(int channel, int moves)
{
    auto& slider = *find(QStringLiteral("verticalSliderChannel%1").arg(channel));
    const int last = slider.height() - 1 - sliderEdge;
    int y = m_chance.between(sliderEdge, last);
    int step = m_chance.percent(50) ? 2 : -2;
    const int x = slider.width() / 2;
    sendMouse(slider, QEvent::MouseButtonPress, {x, y});
    for (int i = 0; i < moves; ++i) {
        step = y + step < sliderEdge || y + step > last ? -step : step;
        y += step;
        sendMouse(slider, QEvent::MouseMove, {x, y});
        wait(mouseInterval);
    }
    sendMouse(slider, QEvent::MouseButtonRelease, {x, y});
}

void Person::typeInto(const char* name, int channel, const QString& text)
{
    auto* const edit = qobject_cast<QLineEdit*>(find(QLatin1String(name) + QString::number(channel)));
    if (edit == nullptr || !edit->isVisible() || !edit->isEnabled()) {
        return;
    }
    edit->setFocus();
    edit->selectAll();
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
}

void Person::openDialog()
{
    click("pushButtonSettings");
    wait(200);
}

void Person::closeDialog()
{
    click("pushButtonClose");
    wait(100);
}

void Person::clickTab(int index)
{
    QTabBar* const bar = tabsOf(dialog()).tabBar();
    QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->tabRect(index).center());
    wait(100);
}

void Person::clickTabOf(const char* page)
{
    clickTab(tabsOf(dialog()).indexOf(find(QLatin1String(page))));
}

int Person::tabCount()
{
    return tabsOf(dialog()).count();
}

void Person::wait(int milliseconds)
{
    Bench::pause(std::chrono::milliseconds(milliseconds));
}

bool Person::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && watched->isWidgetType()) {
        auto* const dialog = qobject_cast<QDialog*>(watched);
        if (dialog != nullptr && dialog->isModal()) {
            // Later, in the loop of the dialog itself.
            QTimer::singleShot(m_chance.between(50, 400), dialog, [this, dialog] {
                if (dialog->isVisible()) {
                    answer(*dialog);
                }
            });
        }
    }
    return QObject::eventFilter(watched, event);
}

void Person::answer(QDialog& dialog)
{
    if (auto* const box = qobject_cast<QMessageBox*>(&dialog)) {
        answerBox(*box);
    } else if (auto* const chooser = qobject_cast<QFileDialog*>(&dialog)) {
        if (m_file.isEmpty()) {
            chooser->reject();
            return;
        }
        chooser->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(m_file);
        QMetaObject::invokeMethod(chooser, "accept");
    } else if (dialog.objectName() == QLatin1String("ScenarioDialog")) {
        dialog.findChild<QLineEdit*>(QStringLiteral("lineEditScenarioName"))->setText(m_scenarioName);
        auto* const buttons = dialog.findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
        buttons->button(m_scenarioName.isEmpty() ? QDialogButtonBox::Cancel : QDialogButtonBox::Ok)->click();
    }
    // What is left is the progress of an update, which goes by itself.
}

void Person::answerBox(QMessageBox& box)
{
    m_lastBox = box.text();
    QAbstractButton* const yes = box.button(QMessageBox::Yes);
    QAbstractButton* const button = yes != nullptr ? yes : box.button(QMessageBox::Ok);
    if (button != nullptr) {
        button->click();
    } else {
        box.reject();
    }
}

} // namespace Soak
