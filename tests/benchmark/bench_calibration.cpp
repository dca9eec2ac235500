// How long a calibration file of a megabyte takes to load and to write, against the library's parser and
// against plain writing. Prints figures, judges nothing.

#include "BenchTools.h"
#include "settings/CalibrationFile.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <vector>

namespace {
constexpr int rounds = 41;
constexpr int size = 1'000'000; // bytes

QStringList headers()
{
    return QStringLiteral("1,2,3,4,5,6,7").split(QLatin1Char(','));
}

SystemConfigTexts numberedTexts()
{
    SystemConfigTexts texts;
    for (std::size_t i = 0; i < texts.size(); ++i)
        texts[i] = QString::number(i);
    return texts;
}

/// A file as the program writes it, with members of others in front of its own.
QByteArray largeFile()
{
    QByteArray others;
    for (int number = 0; others.size() < size; ++number)
        others +=
            R"("Other )" + QByteArray::number(number) + R"(": {"Gain": 0.30000001192092896, "Shift": 7},)";
    return CalibrationFile::toJson(numberedTexts(), headers()).insert(1, others);
}

struct Times
{
    std::vector<double> measured; // milliseconds
    std::vector<double> baseline;
};

double milliseconds(const std::function<void()>& work)
{
    return Bench::timed(work).count() * 1e3;
}

void print(const QString& name, const Times& times, const char* goal)
{
    Bench::Table::printRow(name, Bench::median(times.measured), Bench::median(times.baseline), "ms", goal);
}

bool measureLoading(const QString& name, const QByteArray& json, const char* goal)
{
    Times times;
    bool isRight = true;
    Bench::interleave(
        rounds,
        [&] {
            SystemConfigTexts texts;
            times.measured.push_back(milliseconds(
                [&] { isRight = CalibrationFile::fromJson(json, headers(), texts) && isRight; }));
            isRight = isRight && texts == numberedTexts();
        },
        [&] {
            times.baseline.push_back(
                milliseconds([&] { isRight = QJsonDocument::fromJson(json).isObject() && isRight; }));
        });
    print(name, times, goal);
    return isRight;
}

bool measureSaving()
{
    const QTemporaryDir folder;
    const QByteArray json = CalibrationFile::toJson(numberedTexts(), headers());
    Times times;
    bool isRight = folder.isValid();
    Bench::interleave(
        rounds,
        [&] {
            times.measured.push_back(milliseconds([&] {
                const QByteArray made = CalibrationFile::toJson(numberedTexts(), headers());
                isRight = CalibrationFile::write(folder.filePath(QStringLiteral("a.json")), made) && isRight;
            }));
        },
        [&] {
            times.baseline.push_back(milliseconds([&] {
                QFile file(folder.filePath(QStringLiteral("b.json")));
                isRight = file.open(QIODevice::WriteOnly) && file.write(json) == json.size() && isRight;
            }));
        });
    print(QStringLiteral("save the cells, write the same bytes without care"), times, "-");
    return isRight;
}
} // namespace

int main()
{
    Bench::Table::printHead();
    const QByteArray own = CalibrationFile::toJson(numberedTexts(), headers());
    const QByteArray large = largeFile();
    Bench::Table::printNote(
        QStringLiteral("own file %1 bytes, large file %2 bytes").arg(own.size()).arg(large.size()));
    bool isRight = measureLoading(QStringLiteral("load a file of our own, parse it alone"), own, "-");
    isRight = measureLoading(QStringLiteral("load 1 MB, parse it alone"), large, "at most 200 ms") && isRight;
    isRight = measureSaving() && isRight;
    return isRight ? 0 : 1;
}
