#include "Demo/DemoPanel.h"

#include "Simulator/SimulatedIlluminator.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <chrono>

namespace {
constexpr int gapToWindow = 8;
// The window manager needs a moment to decide where the window stands.
constexpr std::chrono::milliseconds placingTime{300};
const char* const kFaults[] = {"Interlock open", "Necsel over temperature", "Laser fan stalled",
                               "Power supply out of range"};

struct Warning
{
    const char* caption;
    const char* text;
};
const Warning kWarnings[] = {
    {"No warning", ""},
    {"555 fiber open", "555 fiber interlock"},
    {"Novalum fiber open", "Novalum fiber interlock"},
    {"Both fibers open", "555 and Novalum fiber interlock"},
};

QString modeInWords(const Simulator::IlluminatorState& state)
{
    if (!state.image) {
        return DemoPanel::tr("restarting");
    }
    switch (state.mode) {
    case Simulator::Mode::Warmup:
        return DemoPanel::tr("warming up");
    case Simulator::Mode::Idle:
        return DemoPanel::tr("idle");
    case Simulator::Mode::Run:
        return DemoPanel::tr("run");
    case Simulator::Mode::Off:
        break;
    }
    return DemoPanel::tr("no application running");
}
} // namespace

DemoPanel::DemoPanel(Simulator::SimulatedIlluminator& illuminator, QWidget& window)
    : QWidget(&window, Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint), m_illuminator(illuminator)
{
    setWindowTitle(tr("Simulated Illuminator"));
    window.installEventFilter(this);
    m_showSoon.setSingleShot(true);
    connect(&m_showSoon, &QTimer::timeout, this, &DemoPanel::showBesideWindow);
    // The panel belongs to the window and must not keep the program running when that is closed.
    setAttribute(Qt::WA_QuitOnClose, false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(createDeviceGroup());
    layout->addWidget(createFaultGroup());
    layout->addWidget(createWarningGroup());
    layout->addWidget(createInputsGroup());
    connect(&m_illuminator, &Simulator::SimulatedIlluminator::stateChanged, this, &DemoPanel::showState);
    showState();
}

QWidget* DemoPanel::createDeviceGroup()
{
    auto* group = new QGroupBox(tr("Device"));
    auto* layout = new QVBoxLayout(group);
    m_state = new QLabel;
    m_state->setTextFormat(Qt::PlainText);
    m_state->setWordWrap(true);
    layout->addWidget(m_state);
    auto* buttons = new QHBoxLayout;
    layout->addLayout(buttons);
    m_plug = new QPushButton;
    m_plug->setToolTip(tr("Pulls or plugs the USB cable; the device stays switched on"));
    connect(m_plug, &QPushButton::clicked, this, &DemoPanel::togglePlugged);
    buttons->addWidget(m_plug);
    auto* power = new QPushButton(tr("Power Cycle"));
    power->setToolTip(tr("Switches the device off and on again; it warms up anew"));
    connect(power, &QPushButton::clicked, this, [this] { m_illuminator.powerCycle(); });
    buttons->addWidget(power);
    auto* warm = new QPushButton(tr("End Warm-up"));
    warm->setToolTip(tr("Lets the device be warm at once"));
    connect(warm, &QPushButton::clicked, this,
            [this] { m_illuminator.model().lasers().setWarmupDuration(std::chrono::milliseconds(1)); });
    buttons->addWidget(warm);
    return group;
}

QWidget* DemoPanel::createFaultGroup()
{
    auto* group = new QGroupBox(tr("Fault"));
    auto* layout = new QHBoxLayout(group);
    m_faults = new QComboBox;
    m_faults->setAccessibleName(tr("Fault to cause"));
    for (const char* fault : kFaults) {
        m_faults->addItem(QString::fromLatin1(fault));
    }
    layout->addWidget(m_faults, 1);
    auto* cause = new QPushButton(tr("Cause Fault"));
    cause->setToolTip(tr("The device drops to idle and closes its shutters; clearing is the window's"));
    connect(cause, &QPushButton::clicked, this, [this] { m_illuminator.setFault(m_faults->currentText()); });
    layout->addWidget(cause);
    return group;
}

QWidget* DemoPanel::createWarningGroup()
{
    auto* group = new QGroupBox(tr("Warning"));
    auto* layout = new QHBoxLayout(group);
    auto* warnings = new QComboBox;
    warnings->setAccessibleName(tr("Warning the device reports"));
    for (const Warning& warning : kWarnings) {
        warnings->addItem(tr(warning.caption), QString::fromLatin1(warning.text));
    }
    connect(warnings, QOverload<int>::of(&QComboBox::activated), this,
            [this, warnings] { m_illuminator.setWarning(warnings->currentData().toString()); });
    layout->addWidget(warnings);
    return group;
}

QWidget* DemoPanel::createInputsGroup()
{
    auto* group = new QGroupBox(tr("External inputs"));
    auto* grid = new QGridLayout(group);
    const QStringList captions{tr("Channel"), tr("TTL"), tr("Analog")};
    for (int column = 0; column < captions.size(); ++column) {
        grid->addWidget(new QLabel(captions.at(column)), 0, column);
    }
    for (int channel = 0; channel < Simulator::kChannelCount; ++channel) {
        addInputRow(*grid, channel);
    }
    grid->setColumnStretch(2, 1);
    return group;
}

void DemoPanel::addInputRow(QGridLayout& grid, int channel)
{
    const int row = channel + 1;
    const QString name = QString::fromLatin1(Simulator::kChannelNames.at(static_cast<std::size_t>(channel)));
    grid.addWidget(new QLabel(name + tr(" nm")), row, 0);
    auto* ttl = new QCheckBox(tr("High"));
    ttl->setAccessibleName(tr("TTL input of %1").arg(name));
    ttl->setToolTip(tr("Moves the shutter while shutter control is external"));
    connect(ttl, &QCheckBox::toggled, this,
            [this, channel](bool high) { m_illuminator.setTtlInput(channel, high); });
    grid.addWidget(ttl, row, 1);
    auto* analog = new QSpinBox;
    analog->setRange(0, 100);
    analog->setSuffix(QStringLiteral(" %"));
    analog->setAccessibleName(tr("Analog input of %1").arg(name));
    analog->setToolTip(tr("Sets the intensity while intensity control is external"));
    connect(analog, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this, channel](int percent) { m_illuminator.setExternalIntensity(channel, percent); });
    grid.addWidget(analog, row, 2);
}

bool DemoPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && !event->spontaneous()) {
        m_showSoon.start(placingTime);
    }
    return QWidget::eventFilter(watched, event);
}

void DemoPanel::closeEvent(QCloseEvent* event)
{
    // It could not be brought back while the window is there. With that closed it must not be in the way of
    // the end: the application asks every window that is left, in the system's name.
    if (event->spontaneous() && parentWidget()->isVisible()) {
        event->ignore();
    }
}

void DemoPanel::showBesideWindow()
{
    adjustSize();
    QRect window = parentWidget()->frameGeometry();
    const QRect screen = parentWidget()->screen()->availableGeometry();
    // Not known before it is shown; a tool's frame is no larger than that of a window.
    const QSize whole = size() + (window.size() - parentWidget()->size());
    const QPoint moved = placeWithRoom(window, whole, screen);
    if (moved != window.topLeft()) {
        parentWidget()->move(moved);
        window.moveTopLeft(moved);
    }
    move(placeBeside(window, whole, screen));
    show();
}

QPoint DemoPanel::placeWithRoom(const QRect& window, const QSize& panel, const QRect& screen)
{
    const QRect place(placeBeside(window, panel, screen), panel);
    const int left = screen.right() + 1 - panel.width() - gapToWindow - window.width();
    return place.intersects(window) && left >= screen.left() ? QPoint(left, window.top()) : window.topLeft();
}

QPoint DemoPanel::placeBeside(const QRect& window, const QSize& panel, const QRect& screen)
{
    const auto onScreen = [&](int left, int top) {
        return QPoint(std::max(screen.left(), std::min(left, screen.right() + 1 - panel.width())),
                      std::max(screen.top(), std::min(top, screen.bottom() + 1 - panel.height())));
    };
    const auto covered = [&](const QPoint& corner) {
        const QRect both = QRect(corner, panel).intersected(window);
        return both.isEmpty() ? 0 : both.width() * both.height();
    };
    const std::array<QPoint, 3> places{onScreen(window.right() + 1 + gapToWindow, window.top()),
                                       onScreen(window.left() - gapToWindow - panel.width(), window.top()),
                                       onScreen(window.left(), window.bottom() + 1 + gapToWindow)};
    return *std::min_element(places.begin(), places.end(), [&](const QPoint& one, const QPoint& other) {
        return covered(one) < covered(other);
    });
}

void DemoPanel::togglePlugged()
{
    if (m_illuminator.isPlugged()) {
        m_illuminator.unplug();
    } else {
        m_illuminator.plug();
    }
    showState();
}

void DemoPanel::showState()
{
    const Simulator::IlluminatorState state = m_illuminator.state();
    m_plug->setText(state.plugged ? tr("Unplug") : tr("Plug In"));
    QString text = (state.plugged ? tr("Plugged in, %1") : tr("Not plugged in, %1")).arg(modeInWords(state));
    if (!state.fault.isEmpty()) {
        text += QStringLiteral("\n") + tr("Fault: ") + QString::fromUtf8(state.fault);
    }
    if (!state.warning.isEmpty()) {
        text += QStringLiteral("\n") + tr("Warning: ") + QString::fromUtf8(state.warning);
    }
    m_state->setText(text);
}
