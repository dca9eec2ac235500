// A megabyte of received text in the terminal, in the shapes that are hard on it: how long the event loop is
// held and how much the thread works in all, painting included, against a plain text field of the same size
// and the same hundred lines that gets the same chunks through appendPlainText. Prints figures, judges
// nothing.

#include "BenchTools.h"
#include "LoopWatch.h"
#include "Resources/Resources.h"
#include "settings/Console.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>

namespace {
constexpr int megabyte = 1'000'000;
constexpr int smallChunk = 64;
constexpr int keptLines = 100;
constexpr std::chrono::milliseconds settlesWithin{100};
constexpr std::chrono::minutes givesUpAfter{5};

using Chunks = QList<QByteArray>;
using Show = std::function<void(const QByteArray&)>;

struct Shape
{
    const char* name;
    Chunks chunks;
};

struct Figures
{
    double hold = 0.0;
    double work = 0.0;
    double total = 0.0;
    int paintings = 0;
    bool complete = false;
};

/// Counts how often the field's text is painted.
class PaintCounter : public QObject
{
public:
    int count() const { return m_count; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    int m_count = 0;
};

/// What a device of this kind says, again and again.
QByteArray replies()
{
    QByteArray text;
    text.reserve(megabyte);
    for (int i = 0; text.size() < megabyte; ++i) {
        text += "temps=necsel " + QByteArray::number(20 + i % 30) + ".5,novalum " + QByteArray::number(i) +
                "\r\n";
    }
    text.truncate(megabyte);
    return text;
}

/// The same bytes in every run; no zero among them, as the rest of a chunk would not be shown.
QByteArray randomBytes()
{
    std::mt19937 random(1);
    std::uniform_int_distribution<int> byte(1, 255);
    QByteArray bytes(megabyte, ' ');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(byte(random)); });
    return bytes;
}

Chunks inChunks(const QByteArray& bytes)
{
    Chunks chunks;
    for (int i = 0; i < bytes.size(); i += smallChunk) {
        chunks.append(bytes.mid(i, smallChunk));
    }
    return chunks;
}

QList<Shape> shapes()
{
    const QByteArray letters(megabyte, 'x');
    const QByteArray lineFeeds(megabyte, '\n');
    return {
        {"replies, one chunk", {replies()}},
        {"replies, chunks of 64", inChunks(replies())},
        {"no line feed, one chunk", {letters}},
        {"no line feed, chunks of 64", inChunks(letters)},
        {"nothing but line feeds, one chunk", {lineFeeds}},
        {"nothing but line feeds, chunks of 64", inChunks(lineFeeds)},
        {"random bytes, one chunk", {randomBytes()}},
        {"random bytes, chunks of 64", inChunks(randomBytes())},
    };
}

/// A chunk per turn of the event loop, as they come from a port.
Figures fed(QPlainTextEdit& field, const Chunks& chunks, const Show& show)
{
    PaintCounter paintings;
    field.viewport()->installEventFilter(&paintings);
    const Bench::Seconds before = Bench::threadProcessorTime();
    const Bench::LoopWatch watch;
    int next = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        show(chunks.at(next));
        if (++next == chunks.size()) {
            timer.stop();
        }
    });
    timer.start(0);
    const bool complete = Bench::waitUntil([&timer] { return !timer.isActive(); }, givesUpAfter);
    Bench::pause(settlesWithin); // the last paint belongs to it
    const std::chrono::duration<double, std::milli> total = Bench::threadProcessorTime() - before;
    return {watch.longestHold(), watch.longestWork(), total.count(), paintings.count(), complete};
}

/// @p field in a dialog of the size that the terminal has in the program.
std::unique_ptr<QDialog> shown(QWidget* field)
{
    auto dialog = std::make_unique<QDialog>();
    auto* layout = new QVBoxLayout(dialog.get());
    layout->addWidget(field);
    dialog->resize(1000, 620);
    dialog->show();
    Bench::waitUntil([&dialog] { return dialog->windowHandle()->isExposed(); });
    Bench::pause(settlesWithin);
    return dialog;
}

Figures console(const Chunks& chunks)
{
    auto* field = new Console;
    const auto dialog = shown(field);
    return fed(*field, chunks, [field](const QByteArray& bytes) { field->putData(bytes); });
}

Figures plainField(const Chunks& chunks)
{
    auto* field = new QPlainTextEdit;
    field->setMaximumBlockCount(keptLines);
    const auto dialog = shown(field);
    return fed(*field, chunks,
               [field](const QByteArray& bytes) { field->appendPlainText(QString::fromLocal8Bit(bytes)); });
}

void print(const QString& name, const Figures& measured, const Figures& baseline)
{
    Bench::Table::printRow(name + QLatin1String(": longest hold"), measured.hold, baseline.hold, "ms",
                           "<= 50 ms");
    Bench::Table::printRow(QStringLiteral("  of which the thread itself worked"), measured.work,
                           baseline.work, "ms", "<= 50 ms");
    Bench::Table::printRow(QStringLiteral("  the thread's work in all"), measured.total, baseline.total, "ms",
                           "-");
    Bench::Table::printNote(
        QStringLiteral("painted %1 and %2 times").arg(measured.paintings).arg(baseline.paintings));
}
} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    applyColours();
    applyStyleSheet(application);
    Bench::Table::printHead();
    const QList<Shape> all = shapes();
    for (const Shape& shape : all) {
        const Figures measured = console(shape.chunks);
        const Figures baseline = plainField(shape.chunks);
        if (!measured.complete || !baseline.complete) {
            return 1;
        }
        print(QString::fromLatin1(shape.name), measured, baseline);
    }
    return 0;
}
