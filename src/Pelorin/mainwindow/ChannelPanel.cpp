#include "mainwindow/ChannelPanel.h"

#include "Resources/Resources.h"
#include "forms/FormWidgets.h"
#include "mainwindow/ChannelTable.h"

#include <QFrame>
#include <QIntValidator>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSlider>

#include <algorithm>
#include <cmath>

namespace {
constexpr int collapsedColumnHeight = 100;
constexpr int expandedColumnHeight = 551;

constexpr char sliderStyle[] =
    "QSlider::add-page:vertical {background:#%1; border:1px solid #000;width:10px;border-radius:7px;}"
    "QSlider::groove:vertical {border:1px solid #000; background:#000; width:20px;border-radius: 7px; "
    "margin-top:10px; margin-bottom:10px;}"
    "QSlider::sub-page:vertical {background:#000;border:1px solid #000;width:10px;border-radius:7px;}"
    "QSlider::handle:vertical {background: qlineargradient(x1:0, y1:0, x2:0, y2:1,stop:0 #888, stop:1 #222);"
    "border:0px solid #000;width:50px;height:15px;margin:-10px;border-radius: 4px;}"
    "QSlider::handle:vertical:hover {background:qlineargradient(x1:0, y1:0, x2:0, y2:1,stop:0 #999, stop:1 "
    "#333);border: 0px solid #444;border-radius: 4px;}"
    "QSlider::sub-page:vertical:disabled {background: #bbb;border-color: #999;}"
    "QSlider::add-page:vertical:disabled {background: #eee;border-color: #999;}"
    "QSlider::handle:vertical:disabled {background: #eee;border: 1px solid #aaa;border-radius: 4px;}";

template<typename Widget>
Widget* find(const QWidget& window, const char* objectName, int number)
{
    return formWidget<Widget>(window, QString(QLatin1String(objectName) + QString::number(number)));
}

using ChannelParts = std::array<QWidget*, 4>;

/// A screen reader says only "Channel 3" of them, and no wavelength; the operator's name has it.
void tellName(const ChannelParts& parts, const QString& name)
{
    const QString told = name.isEmpty() ? name : QString(name + QLatin1String(". "));
    for (QWidget* part : parts) {
        part->setAccessibleDescription(told + part->toolTip());
    }
}
} // namespace

ChannelPanel::ChannelPanel(const QWidget& window)
{
    int number = 0;
    for (ChannelWidgets& channel : m_widgets) {
        ++number;
        channel.column = find<QFrame>(window, "frameChannel", number);
        channel.lowerPart = find<QFrame>(window, "frameChannelBottom", number);
        channel.name = find<QLineEdit>(window, "lineEditSliderName", number);
        channel.percentage = find<QLineEdit>(window, "lineEditSliderPercentage", number);
        channel.arrows = find<QLabel>(window, "labelSliderUpDownButtons", number);
        channel.slider = find<QSlider>(window, "verticalSliderChannel", number);
        channel.shutter = find<QPushButton>(window, "pushButtonChannelShutter", number);
        channel.arrows->setPixmap(loadPicture(QStringLiteral(":/Resources/buttons/up_down.png")));
        const ChannelParts parts{channel.percentage, channel.arrows, channel.slider, channel.shutter};
        tellName(parts, channel.name->text());
        QObject::connect(channel.name, &QLineEdit::textChanged, channel.name,
                         [parts](const QString& name) { tellName(parts, name); });
    }
}

void ChannelPanel::showIntensity(int number, float percent)
{
    if (std::isnan(percent)) {
        widgets(number).percentage->clear();
        return;
    }
    const float held =
        std::clamp(percent, static_cast<float>(minimumPercent), static_cast<float>(maximumPercent));
    showPercentage(number, qRound(held));
    moveSlider(number, qRound(held));
}

void ChannelPanel::showPercentage(int number, int percent)
{
    widgets(number).percentage->setText(QStringLiteral("%1").arg(percent));
}

void ChannelPanel::moveSlider(int number, int percent)
{
    const QScopedValueRollback<bool> guard(m_movingSlider, true);
    widgets(number).slider->setValue(percent);
}

void ChannelPanel::showShutter(int number, bool open)
{
    QPushButton* button = widgets(number).shutter;
    if (open != button->isChecked()) {
        widgets(number).opening = QDeadlineTimer();
    }
    if (!open) {
        widgets(number).closing = false;
    }
    button->setChecked(open);
    button->setText(open ? QStringLiteral("Shutter Open") : QStringLiteral("Shutter Closed"));
}

void ChannelPanel::showColour(int number, const QColor& colour)
{
    QSlider* const slider = widgets(number).slider;
    const QString style = QString::fromLatin1(sliderStyle).arg(ChannelTable::colourToText(colour));
    // A sheet is parsed and applied anew even where it is the same one.
    if (slider->styleSheet() != style) {
        slider->setStyleSheet(style);
    }
}

void ChannelPanel::showVisible(int number, bool visible)
{
    widgets(number).column->setVisible(visible);
}

void ChannelPanel::showName(int number, const QString& name)
{
    widgets(number).name->setText(name);
    // Of a name that is too long the beginning tells more.
    widgets(number).name->setCursorPosition(0);
}

QString ChannelPanel::percentageText(int number) const
{
    return widgets(number).percentage->text();
}

QString ChannelPanel::nameText(int number) const
{
    return widgets(number).name->text();
}

int ChannelPanel::sliderValue(int number) const
{
    return widgets(number).slider->value();
}

void ChannelPanel::showReportedIntensity(int number, float percent)
{
    widgets(number).reportedPercent = percent;
    showIntensity(number, percent);
}

void ChannelPanel::showReportedIntensity(int number)
{
    if (widgets(number).reportedPercent) {
        showIntensity(number, *widgets(number).reportedPercent);
    }
}

void ChannelPanel::forgetReportedIntensities()
{
    for (ChannelWidgets& channel : m_widgets) {
        channel.reportedPercent.reset();
    }
}

void ChannelPanel::noteShutterRequest(int number, bool open)
{
    widgets(number).opening = open ? QDeadlineTimer(reportTime) : QDeadlineTimer();
    widgets(number).closing = !open;
}

void ChannelPanel::forgetRequests()
{
    for (ChannelWidgets& channel : m_widgets) {
        channel.opening = QDeadlineTimer();
        channel.closing = false;
    }
}

int ChannelPanel::openShutterCountBeside(int number) const
{
    const ChannelWidgets* const self = &widgets(number);
    return static_cast<int>(
        std::count_if(m_widgets.begin(), m_widgets.end(), [self](const ChannelWidgets& channel) {
            return &channel != self && (channel.shutter->isChecked() || !channel.opening.hasExpired());
        }));
}

void ChannelPanel::takeBackRefusedPercentage(const QObject* edit)
{
    for (const ChannelWidgets& channel : m_widgets) {
        if (channel.percentage == edit && !channel.percentage->hasAcceptableInput()) {
            channel.percentage->setText(QString::number(channel.slider->value()));
        }
    }
}

int ChannelPanel::channelOfArrows(const QObject* object) const
{
    const auto found =
        std::find_if(m_widgets.begin(), m_widgets.end(),
                     [object](const ChannelWidgets& channel) { return channel.arrows == object; });
    return found == m_widgets.end() ? 0 : static_cast<int>(found - m_widgets.begin()) + 1;
}

int ChannelPanel::channelOfShutterButton(const QObject* object) const
{
    const auto found =
        std::find_if(m_widgets.begin(), m_widgets.end(),
                     [object](const ChannelWidgets& channel) { return channel.shutter == object; });
    return found == m_widgets.end() ? 0 : static_cast<int>(found - m_widgets.begin()) + 1;
}

void ChannelPanel::setCollapsed(bool collapsed)
{
    for (const ChannelWidgets& channel : m_widgets) {
        channel.column->setMinimumHeight(collapsed ? collapsedColumnHeight : expandedColumnHeight);
        // The eighth lower part keeps its state, so that one slider stays at hand in the small layout.
        if (&channel != &m_widgets.back()) {
            channel.lowerPart->setVisible(!collapsed);
        }
    }
}

int ChannelPanel::heightBeyondCollapsedMinimum() const
{
    int needed = collapsedColumnHeight;
    for (const ChannelWidgets& channel : m_widgets) {
        needed = std::max(needed, channel.column->layout()->minimumSize().height());
    }
    return needed - collapsedColumnHeight;
}

void ChannelPanel::installEventFilter(QObject* filter) const
{
    for (const ChannelWidgets& channel : m_widgets) {
        channel.arrows->installEventFilter(filter);
        channel.shutter->installEventFilter(filter);
        channel.percentage->installEventFilter(filter);
    }
}

void ChannelPanel::restrictPercentages(QObject* owner) const
{
    auto* validator = new QIntValidator(minimumPercent, maximumPercent, owner);
    // The text is read as plain digits, so that no other digits or separators may come in.
    QLocale plainDigits = QLocale::c();
    plainDigits.setNumberOptions(QLocale::RejectGroupSeparator | QLocale::OmitGroupSeparator);
    validator->setLocale(plainDigits);
    for (const ChannelWidgets& channel : m_widgets) {
        channel.percentage->setValidator(validator);
    }
}
