#include "Demo/DemoScene.h"

#include "Simulator/SimulatedIlluminator.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QMouseEvent>
#include <QPixmap>
#include <QSlider>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTextStream>

#include <chrono>
#include <utility>

namespace {
constexpr std::chrono::milliseconds kCheckInterval{50};
constexpr std::chrono::seconds kPatience{15};
// Long enough for what follows a change, a status line or a second report, to be in the picture too.
constexpr std::chrono::milliseconds kSettleTime{600};

void sendMouse(QWidget& widget, QEvent::Type type, QPoint at)
{
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, at, widget.mapToGlobal(at), button, held, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
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

DemoScene::DemoScene(QWidget& window, Simulator::SimulatedIlluminator& illuminator, QString folder)
    : QObject(&window), m_window(window), m_illuminator(illuminator), m_folder(std::move(folder))
{
    m_timer.setInterval(kCheckInterval);
    connect(&m_timer, &QTimer::timeout, this, &DemoScene::check);
    addStations();
}

void DemoScene::addStations()
{
    const auto status = [this](const char* text) {
        return [this, text] { return labelShows(QStringLiteral("labelLaserStatusText"), tr(text)); };
    };
    const auto shutter = [this](int number) {
        const QString name = QStringLiteral("pushButtonChannelShutter%1").arg(number);
        return Station{QStringLiteral("shutter-%1-open").arg(number), [this, name] { click(name); },
                       [this, name] { return buttonShows(name, QStringLiteral("Shutter Open")); }};
    };
    const auto slider = [this](int number, int percent) {
        return Station{QStringLiteral("slider-%1").arg(number),
                       [this, number, percent] {
                           dragSlider(QStringLiteral("verticalSliderChannel%1").arg(number), percent);
                       },
                       [this, number, percent] {
                           const auto channel = static_cast<std::size_t>(number - 1);
                           return m_illuminator.state().level.at(channel).toDouble() == percent;
                       }};
    };
    m_stations = {
        {QStringLiteral("warm-up"), [] {}, status("Warm-up")},
        {QStringLiteral("idle"), [] {}, status("Idle")},
        {QStringLiteral("run"), [this] { click(QStringLiteral("labelLaserOnOff")); }, status("Run")},
        slider(2, 75),
        slider(6, 40),
        shutter(2),
        shutter(6),
        {QStringLiteral("fault"), [this] { m_illuminator.setFault(QStringLiteral("Interlock open")); },
         status("Fault")},
        {QStringLiteral("fault-cleared"), [this] { click(QStringLiteral("labelLaserStatus")); },
         status("Idle")},
        {QStringLiteral("collapsed"), [this] { click(QStringLiteral("pushButtonExpandCollapseWindow")); },
         [] { return true; }},
    };
}

void DemoScene::start()
{
    beginStation();
    m_timer.start();
}

void DemoScene::beginStation()
{
    m_waiting.start();
    m_settled.invalidate();
    m_stations.at(m_current).act();
}

void DemoScene::check()
{
    const Station& station = m_stations.at(m_current);
    if (!station.reached()) {
        m_settled.invalidate();
        if (m_waiting.hasExpired(std::chrono::milliseconds(kPatience).count())) {
            QTextStream(stderr) << "The demo did not get to \"" << station.name << "\".\n";
            m_timer.stop();
            emit finished(false);
        }
        return;
    }
    if (!m_settled.isValid()) {
        m_settled.start();
        return;
    }
    if (!m_settled.hasExpired(kSettleTime.count())) {
        return;
    }
    const bool taken = takeScreenshot(station.name);
    if (taken && ++m_current < m_stations.size()) {
        beginStation();
        return;
    }
    m_timer.stop();
    emit finished(taken);
}

bool DemoScene::takeScreenshot(const QString& name) const
{
    const QString file = QStringLiteral("%1-%2.png").arg(m_current + 1, 2, 10, QLatin1Char('0')).arg(name);
    if (m_window.grab().save(QDir(m_folder).filePath(file))) {
        return true;
    }
    QTextStream(stderr) << "Cannot write " << QDir(m_folder).filePath(file) << '\n';
    return false;
}

void DemoScene::click(const QString& objectName) const
{
    auto* widget = m_window.findChild<QWidget*>(objectName);
    if (!widget) {
        return;
    }
    const QPoint centre = widget->rect().center();
    sendMouse(*widget, QEvent::MouseButtonPress, centre);
    sendMouse(*widget, QEvent::MouseButtonRelease, centre);
}

void DemoScene::dragSlider(const QString& objectName, int value) const
{
    auto* slider = m_window.findChild<QSlider*>(objectName);
    if (!slider) {
        return;
    }
    sendMouse(*slider, QEvent::MouseButtonPress, handleCentre(*slider, slider->value()));
    const int step = value > slider->value() ? 1 : -1;
    while (slider->value() != value) {
        const int before = slider->value();
        for (int target = before; slider->value() == before && qAbs(target - before) <= 5; target += step) {
            sendMouse(*slider, QEvent::MouseMove, handleCentre(*slider, target));
        }
        if (slider->value() == before) {
            break; // the slider is switched off
        }
    }
    sendMouse(*slider, QEvent::MouseButtonRelease, handleCentre(*slider, slider->value()));
}

bool DemoScene::labelShows(const QString& objectName, const QString& text) const
{
    const auto* label = m_window.findChild<QLabel*>(objectName);
    return label && label->text() == text;
}

bool DemoScene::buttonShows(const QString& objectName, const QString& text) const
{
    const auto* button = m_window.findChild<QAbstractButton*>(objectName);
    return button && button->text() == text;
}
