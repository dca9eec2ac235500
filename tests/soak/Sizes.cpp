#include "Sizes.h"

#include "device/Device.h"
#include "mainwindow/PelorinMainWindow.h"
#include "mainwindow/SettingsStore.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPixmapCache>
#include <QStringList>
#include <QWidget>

#include <malloc.h>

// Only a build with the address sanitizer has it; the header is not there for every compiler.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((weak)) std::size_t __sanitizer_get_current_allocated_bytes();

namespace {
constexpr double bytesPerKib = 1024.0;
constexpr std::size_t residentColumn = 0;

bool isSanitized()
{
    return __sanitizer_get_current_allocated_bytes != nullptr;
}

double heapBytes()
{
    if (isSanitized()) {
        return static_cast<double>(__sanitizer_get_current_allocated_bytes());
    }
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

/// What the framework keeps to draw faster the next time: pictures, and how a widget looks in each state that
/// it was ever shown in. Both are bounded; but pictures go by what was shown last, and some states are so
/// rare that a day sees new ones to its end.
void forgetDrawing()
{
    QPixmapCache::clear();
    qApp->setStyleSheet(qApp->styleSheet());
}

/// Memory that is the process's alone, without what it has of files.
double residentKib()
{
    ::malloc_trim(0); // what the allocator only holds in reserve
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("RssAnon:")) {
            return line.simplified().split(' ').value(1).toDouble();
        }
    }
    return 0;
}

double openHandles()
{
    const QDir folder(QStringLiteral("/proc/self/fd"));
    return static_cast<double>(
        folder.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

/// The link is no child of the window, windows that were lost are children of nothing.
double objects(const PelorinMainWindow& window)
{
    auto count = static_cast<double>(window.device()->findChildren<QObject*>().size() +
                                     qApp->findChildren<QObject*>().size());
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget* widget : windows) {
        if (widget->parent() == nullptr) {
            count += 1 + static_cast<double>(widget->findChildren<QObject*>().size());
        }
    }
    return count;
}

QFileInfoList logs()
{
    return QDir(dataFolder()).entryInfoList({QStringLiteral("VYR_Log*")}, QDir::Files);
}

double logKib()
{
    double bytes = 0;
    const QFileInfoList files = logs();
    for (const QFileInfo& file : files) {
        bytes += static_cast<double>(file.size());
    }
    return bytes / bytesPerKib;
}

double settingsKib()
{
    const QString folder = qEnvironmentVariable("XDG_CONFIG_HOME");
    return static_cast<double>(QFileInfo(folder + QStringLiteral("/Tarnwick/VYR.conf")).size()) / bytesPerKib;
}

/// Of the straight line that fits the values best, from its first point to its last.
double fittedGrowth(const QVector<Soak::Sizes>& samples, std::size_t column)
{
    const auto count = static_cast<double>(samples.size());
    const double middle = (count - 1) / 2;
    double above = 0;
    double below = 0;
    for (int i = 0; i < samples.size(); ++i) {
        above += (i - middle) * samples.at(i).at(column);
        below += (i - middle) * (i - middle);
    }
    return above / below * (count - 1);
}

/// Empty when none of the values is too large.
QString excess(const QVector<Soak::Sizes>& samples, std::size_t column)
{
    const double most = Soak::measures().at(column).most;
    for (const Soak::Sizes& sample : samples) {
        if (sample.at(column) > most) {
            return QStringLiteral(": %1 are more than %2").arg(sample.at(column)).arg(most);
        }
    }
    return {};
}

/// Empty when the last value and the straight line do not both tell of growth.
QString growth(const QVector<Soak::Sizes>& samples, std::size_t column, double hoursBetween)
{
    const Soak::Measure& measure = Soak::measures().at(column);
    const double hours = static_cast<double>(samples.size() - 1) * hoursBetween;
    const double allowed = measure.allowed + measure.allowedPerHour * hours;
    const double fitted = fittedGrowth(samples, column);
    const double more = samples.last().at(column) - samples.first().at(column);
    if (fitted <= allowed || more <= allowed) {
        return {};
    }
    return QStringLiteral(": %1 more at the end, %2 by the straight line, allowed are %3")
        .arg(more)
        .arg(fitted)
        .arg(allowed);
}
} // namespace

namespace Soak {

const std::array<Measure, measureCount>& measures()
{
    static const std::array<Measure, measureCount> all{{
        // What is in use does not lie side by side, so that its pages change more than its bytes.
        {"resident KiB", 1024, 8, 0},
        // What comes and goes: the terminal's lines, what can be undone in a field, bytes on their way.
        {"heap KiB", 96, 2, 0},
        {"handles", 0, 0, 0},
        {"objects", 0, 0, 0},
        {"widgets", 0, 0, 0},
        // The log and ten older ones of 2,000,000 characters and a line; some characters are several bytes.
        {"log KiB", 0, 0, 11 * 2000.0},
        {"logs", 0, 0, 11},
        {"settings KiB", 2, 0, 0},
    }};
    return all;
}

Sizes sizesNow(const PelorinMainWindow& window)
{
    forgetDrawing();
    return {residentKib(),
            heapBytes() / bytesPerKib,
            openHandles(),
            objects(window),
            static_cast<double>(QApplication::allWidgets().size()),
            logKib(),
            static_cast<double>(logs().size()),
            settingsKib()};
}

QStringList growths(const QVector<Sizes>& samples, double hoursBetween)
{
    QStringList found;
    for (std::size_t column = 0; samples.size() > 1 && column < measureCount; ++column) {
        const QString text =
            measures().at(column).most > 0 ? excess(samples, column) : growth(samples, column, hoursBetween);
        // A sanitizer keeps back what was freed, to find whoever uses it all the same.
        const bool isJudged = column != residentColumn || !isSanitized();
        if (!text.isEmpty() && isJudged) {
            found.append(QString::fromLatin1(measures().at(column).name) + text);
        }
    }
    return found;
}

} // namespace Soak
