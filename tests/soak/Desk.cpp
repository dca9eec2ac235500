#include "Desk.h"

#include "mainwindow/PelorinMainWindow.h"
#include "mainwindow/channel.h"
#include "scenario/Scenario.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {
constexpr std::chrono::seconds warmUp{20}; // shorter than the device's own, for more of the day to be of use

QString inBrackets(const QString& shown, const QString& expected)
{
    return QStringLiteral(" shown as \"%1\", is \"%2\"").arg(shown, expected);
}

template<typename Widget>
Widget& widget(const PelorinMainWindow& window, const char* name, int number)
{
    auto* const found = window.findChild<Widget*>(QLatin1String(name) + QString::number(number));
    Q_ASSERT(found != nullptr);
    return *found;
}
} // namespace

namespace Soak {

Desk::Desk()
{
    m_illuminator.model().lasers().setWarmupDuration(warmUp);
    QObject::connect(&m_illuminator.wire(), &Simulator::Wire::lineReceived, &m_illuminator,
                     [this](const QByteArray& line) {
                         m_polls += line == "f_mode?" ? 1 : 0;
                         noteLine("> ", line);
                     });
    QObject::connect(&m_illuminator.wire(), &Simulator::Wire::bytesSent, &m_illuminator,
                     [this](const QByteArray& bytes) { noteLine("< ", bytes); });
    m_illuminator.plug();
}

void Desk::noteLine(const char* arrow, const QByteArray& bytes)
{
    constexpr int kept = 200;
    constexpr int shown = 80; // of one line
    if (m_lastLines.size() == kept) {
        m_lastLines.removeFirst();
    }
    m_lastLines.append({QTime::currentTime(), arrow + bytes.left(shown)});
}

QStringList Desk::lastLines() const
{
    QStringList texts;
    for (const auto& [time, bytes] : m_lastLines) {
        texts.append(time.toString(QStringLiteral("hh:mm:ss.zzz ")) +
                     QString::fromLatin1(bytes.toPercentEncoding("<> ?=:,.;~")));
    }
    return texts;
}

QString Desk::expectedWord() const
{
    const Simulator::IlluminatorState state = m_illuminator.state();
    if (!state.plugged) {
        return QStringLiteral("Disconnected");
    }
    if (state.image == Simulator::Image::Loader) {
        return QStringLiteral("Loader");
    }
    if (!state.fault.isEmpty()) {
        return QStringLiteral("Fault");
    }
    switch (state.mode) {
    case Simulator::Mode::Warmup:
        return QStringLiteral("Warm-up");
    case Simulator::Mode::Idle:
        return QStringLiteral("Idle");
    case Simulator::Mode::Run:
        return QStringLiteral("Run");
    case Simulator::Mode::Off:
        break;
    }
    return QStringLiteral("something of a device that is off");
}

QString Desk::difference(PelorinMainWindow& window)
{
    const QString word = window.findChild<QLabel*>(QStringLiteral("labelLaserStatusText"))->text();
    if (word != expectedWord()) {
        return QStringLiteral("Mode") + inBrackets(word, expectedWord());
    }
    if (!m_illuminator.isPlugged() || m_illuminator.state().image != Simulator::Image::Application) {
        return {};
    }
    for (int channel = 0; channel < Simulator::kChannelCount; ++channel) {
        const QString text = channelDifference(window, channel);
        if (!text.isEmpty()) {
            return QStringLiteral("Channel %1: ").arg(channel + 1) + text;
        }
    }
    return {};
}

QString Desk::channelDifference(PelorinMainWindow& window, int channel)
{
    const bool open = lasers().isShutterOpen(channel);
    const auto& button = widget<QPushButton>(window, "pushButtonChannelShutter", channel + 1);
    const QString buttonText = open ? QStringLiteral("Shutter Open") : QStringLiteral("Shutter Closed");
    const auto& laser = *window.scenario()->channels().at(channel);
    if (button.isChecked() != open || button.text() != buttonText || laser.isShutterOpen() != open) {
        return QStringLiteral("shutter") + inBrackets(button.text(), buttonText);
    }
    const QString level = QString::number(qRound(lasers().level(channel)));
    const QString percentage = widget<QLineEdit>(window, "lineEditSliderPercentage", channel + 1).text();
    if (percentage != level) {
        const bool isHost = lasers().intensitySource() == Simulator::Source::Host;
        return QStringLiteral("level") + inBrackets(percentage, level) +
               QStringLiteral(", set from %1, kept as %2")
                   .arg(isHost ? QStringLiteral("here") : QStringLiteral("outside"))
                   .arg(static_cast<double>(laser.intensity()));
    }
    if (lasers().isTtlInverted(channel) != laser.isTtlInverted()) {
        return QStringLiteral("polarity of its input differs");
    }
    return {};
}

} // namespace Soak
