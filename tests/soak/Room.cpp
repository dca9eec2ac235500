#include "Tasks.h"
#include "benchmark/BenchTools.h"
#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"

#include <utility>

namespace Soak {

Device& Room::device() const
{
    return *window.device();
}

void Room::fail(const QString& text)
{
    failure += failure.isEmpty() ? text : QStringLiteral("; ") + text;
}

bool Room::waitFor(const char* what, int seconds, const std::function<bool()>& holds)
{
    if (Bench::waitUntil(holds, std::chrono::seconds(seconds))) {
        return true;
    }
    fail(QStringLiteral("Waited in vain: ") + QLatin1String(what));
    return false;
}

void Room::onPage(const char* page, const std::function<void()>& act)
{
    person.openDialog();
    person.clickTabOf(page);
    act();
    person.closeDialog();
}

void Room::compare()
{
    constexpr std::chrono::seconds limit{30};
    QString difference;
    const bool same = Bench::waitUntil(
        [this, &difference] {
            difference = desk.difference(window);
            return difference.isEmpty();
        },
        limit);
    if (!same) {
        fail(difference);
    }
}

bool Room::isAtWork() const
{
    return device().isApplicationConnected();
}

void Room::waitForWork(const char* what)
{
    waitFor(what, restartSeconds, [this] { return isAtWork(); });
}

} // namespace Soak
