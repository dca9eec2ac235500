#include "update/UpdatableDevice.h"

#include <algorithm>

namespace {
constexpr const char* updaterName = "55504441544552"; // as a line of an image has it
constexpr const char* applicationName = "565952415050";

bool isOfEveryIdentification(const QByteArray& line)
{
    static const QList<QByteArray> lines{"v",   "reset_cause",           "v?a",
                                         "v?l", "necsel_controller_ver", "necsel_controller_sn"};
    return lines.contains(line);
}
} // namespace

UpdatableDevice::UpdatableDevice(FakeIlluminator& illuminator) : m_illuminator(illuminator)
{
    illuminator.bench().setResponder([this](const QByteArray& line) { return respond(line); });
}

void UpdatableDevice::answer(const QByteArray& beginning, int number, const QByteArray& text)
{
    m_plans.append({beginning, number, text, {}, {}});
}

void UpdatableDevice::start(const QByteArray& command, int number, const QByteArray& image)
{
    m_plans.append({command, number, QByteArrayLiteral("ok"), image, {}});
}

void UpdatableDevice::when(const QByteArray& beginning, int number, const std::function<void()>& what)
{
    m_plans.append({beginning, number, std::nullopt, {}, what});
}

int UpdatableDevice::count(const QByteArray& beginning) const
{
    return int(std::count_if(m_lines.begin(), m_lines.end(),
                             [&beginning](const QByteArray& line) { return line.startsWith(beginning); }));
}

/// An identification asks for both validities behind the version of the loader; a run asks for them, too.
bool UpdatableDevice::noteIdentification(const QByteArray& line)
{
    if (line == "v") {
        m_expected.clear();
    }
    if (line == "v?l") {
        m_expected = {{"isloadervalid", 1}, {"isappvalid", 1}};
    }
    return isOfEveryIdentification(line) || m_expected.remove(line) > 0;
}

std::optional<Simulator::Answer> UpdatableDevice::respond(const QByteArray& line)
{
    if (line.isEmpty()) {
        return std::nullopt; // the second end of a line
    }
    if (noteIdentification(line)) {
        const std::optional<QByteArray> text = identityAnswer(line);
        return text ? Simulator::Answer{*text + '\n', {}} : m_illuminator.answerTo(line);
    }
    m_lines.append(line);
    if (m_listener) {
        m_listener(line);
    }
    std::optional<QByteArray> text = followPlans(line);
    if (!text) {
        text = ownAnswer(line);
    }
    if (!text) {
        return m_illuminator.answerTo(line);
    }
    return Simulator::Answer{text->isEmpty() ? QByteArray() : QByteArray(*text + '\n'),
                             line.startsWith("wf:") ? lineTime : std::chrono::milliseconds(0)};
}

std::optional<QByteArray> UpdatableDevice::identityAnswer(const QByteArray& line) const
{
    if (line == "v") {
        return running;
    }
    if (line == "v?a") {
        return application;
    }
    if (line == "v?l") {
        return loader;
    }
    if (line == "necsel_controller_ver") {
        return "necsel_controller_ver=" + controller;
    }
    return std::nullopt;
}

std::optional<QByteArray> UpdatableDevice::ownAnswer(const QByteArray& line)
{
    if (line == "goloader") {
        running = loader;
        return QByteArrayLiteral("ok");
    }
    if (line == "goapp") {
        running = application;
        return QByteArrayLiteral("ok");
    }
    if (line.startsWith("wf:")) {
        return write(line);
    }
    return std::nullopt;
}

/// What lies where the application was is told by the header of what was written there last.
QByteArray UpdatableDevice::write(const QByteArray& line)
{
    if (line.contains(updaterName)) {
        application = "LoaderUpdater V1.0.0";
    } else if (line.contains(applicationName)) {
        application = "VYRApp V3.0.0";
    }
    return lineAnswer;
}

std::optional<QByteArray> UpdatableDevice::followPlans(const QByteArray& line)
{
    std::optional<QByteArray> text;
    const QList<Plan> plans = m_plans; // an action may plan something itself
    for (const Plan& plan : plans) {
        if (!line.startsWith(plan.beginning) || count(plan.beginning) != plan.number) {
            continue;
        }
        if (!plan.image.isEmpty()) {
            running = plan.image;
        }
        if (plan.text) {
            text = plan.text;
        }
        if (plan.action) {
            plan.action();
        }
    }
    return text;
}
