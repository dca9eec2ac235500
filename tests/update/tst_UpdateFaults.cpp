// Whatever goes wrong at whichever step of an update: the program is as before, and the next update brings
// the device to the new application. Most of the time is spent waiting for answers that do not come, so the
// points are shared out to copies of this program that run side by side.

#include "update/ReleaseBench.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMap>
#include <QProcess>
#include <QTest>
#include <QTimer>

#include <array>
#include <cstdio>

namespace {
using namespace std::chrono_literals;
using Simulator::Trap;

constexpr int everyNthLine = 50;
constexpr int fastParts = 4;
constexpr std::chrono::milliseconds cableComesBackAfter{150};
constexpr int limitOfPartMs = 900'000;

/// One thing that goes wrong once.
struct Point
{
    QString name;
    Trap trap;              ///< unless it is the user who cancels
    int cancelAt = 0;       ///< line of an image, over all images
    bool staysAway = false; ///< cable and power come back only when the run is over
    bool isSlow() const     ///< the link waits for 45 s
    {
        return trap.match == "go" && (staysAway || trap.action == Trap::Action::NoReply);
    }
};

struct Kind
{
    const char* name;
    Trap::Action action;
    bool carriesOut;
    bool staysAway;
    bool isForSwitchesOnly;
};

constexpr std::array<Kind, 10> kinds{{
    {"no answer", Trap::Action::NoReply, false, false, false},
    {"done, no answer", Trap::Action::NoReply, true, false, false},
    {"refused", Trap::Action::Refuse, false, false, false},
    {"garbage", Trap::Action::Garbage, false, false, false},
    {"power cut", Trap::Action::CutPower, false, false, false},
    {"done, power cut", Trap::Action::CutPower, true, false, true},
    {"unplugged", Trap::Action::Unplug, false, false, false},
    {"done, unplugged", Trap::Action::Unplug, true, false, true},
    {"power cut for long", Trap::Action::CutPower, false, true, true},
    {"unplugged for long", Trap::Action::Unplug, true, true, true},
}};

/// The beginnings of all lines that a run sends, the poll's apart.
constexpr std::array<const char*, 7> steps{"v", "reset_cause", "isl", "isa", "necsel", "go", "wf:"};

/// How many lines of each step a run without a fault sends; empty when it fails.
QMap<QByteArray, int> countSteps()
{
    QMap<QByteArray, int> counts;
    ReleaseBench bench;
    if (!bench.build()) {
        return counts;
    }
    bench.lines().clear();
    if (bench.update() != QStringList{QStringLiteral("Update complete!")} || !bench.isUpdated()) {
        return counts;
    }
    const QList<QByteArray> lines = bench.lines().texts();
    for (const char* step : steps) {
        counts[step] = int(std::count_if(lines.begin(), lines.end(),
                                         [step](const QByteArray& line) { return line.startsWith(step); }));
    }
    return counts;
}

QList<Point> pointsOf(const QMap<QByteArray, int>& counts)
{
    QList<Point> points;
    for (auto step = counts.begin(); step != counts.end(); ++step) {
        const bool isLine = step.key() == "wf:";
        for (int number = 1; number <= step.value(); number += isLine ? everyNthLine : 1) {
            const QString where =
                QString::fromLatin1(step.key()) + QLatin1Char(' ') + QString::number(number);
            for (const Kind& kind : kinds) {
                if (!kind.isForSwitchesOnly || step.key() == "go") {
                    points.append({where + QStringLiteral(": ") + QLatin1String(kind.name),
                                   {step.key(), number, kind.action, kind.carriesOut},
                                   0,
                                   kind.staysAway});
                }
            }
            if (isLine) {
                points.append({where + QStringLiteral(": canceled"), {}, number, false});
            }
        }
    }
    return points;
}

/// Puts the cable and the power back.
void mend(Simulator::SimulatedIlluminator& illuminator)
{
    illuminator.restorePower();
    if (!illuminator.isPlugged()) {
        illuminator.plug();
    }
}

/// What was wrong; empty when all was well.
QString tryPoint(const Point& point)
{
    ReleaseBench bench;
    if (!bench.build()) {
        return QStringLiteral("the bench was not built");
    }
    Simulator::SimulatedIlluminator& illuminator = bench.illuminator();
    if (point.cancelAt > 0) {
        bench.cancelAtLine(point.cancelAt);
    } else {
        illuminator.setTrap(point.trap);
    }
    if (!point.staysAway) {
        QObject::connect(
            &illuminator, &Simulator::SimulatedIlluminator::trapSprung, &illuminator, [&illuminator] {
                QTimer::singleShot(cableComesBackAfter, &illuminator, [&illuminator] { mend(illuminator); });
            });
    }
    const QStringList first = bench.update();
    if (illuminator.isTrapSet()) {
        return QStringLiteral("the run did not come this far but to ") + first.join(QStringLiteral(" / ")) +
               QStringLiteral(" | ") + bench.errors().join(QStringLiteral(" | "));
    }
    if (first.isEmpty()) {
        return QStringLiteral("the run ended without a word");
    }
    if (point.cancelAt > 0 && first.last() == QLatin1String("Update complete!")) {
        return QStringLiteral("the run was not canceled");
    }
    mend(illuminator);
    QString wrong = bench.leftOver();
    if (!wrong.isEmpty()) {
        return wrong + QStringLiteral(" after ") + first.join(QStringLiteral(" / "));
    }
    const QStringList second = bench.update();
    if (second != QStringList{QStringLiteral("Update complete!")} || !bench.isUpdated()) {
        return QStringLiteral("the second run ended in: ") + second.join(QStringLiteral(" / ")) +
               QStringLiteral(" | ") + bench.errors().join(QStringLiteral(" | "));
    }
    wrong = bench.leftOver();
    return wrong.isEmpty() ? wrong : wrong + QStringLiteral(" after the second run");
}

/// A copy of the program: tries every @p parts -th point of the slow or of the fast ones from @p part on.
int runPart(bool slow, int part, int parts)
{
    QList<Point> points = pointsOf(countSteps());
    points.erase(std::remove_if(points.begin(), points.end(),
                                [slow](const Point& point) { return point.isSlow() != slow; }),
                 points.end());
    int tried = 0;
    for (int i = part; i < points.size(); i += parts) {
        const QString wrong = tryPoint(points.at(i));
        ++tried;
        if (!wrong.isEmpty()) {
            std::printf("%s: %s\n", qPrintable(points.at(i).name), qPrintable(wrong));
        }
    }
    std::printf("tried %d\n", tried);
    return 0;
}

std::vector<std::unique_ptr<QProcess>> startCopies(int slowPoints)
{
    std::vector<std::unique_ptr<QProcess>> copies;
    const auto start = [&copies](const char* what, int part, int parts) {
        copies.push_back(std::make_unique<QProcess>());
        copies.back()->setStandardErrorFile(QProcess::nullDevice());
        copies.back()->start(QCoreApplication::applicationFilePath(),
                             {QLatin1String(what), QString::number(part), QString::number(parts)});
    };
    // A slow point does nothing but wait, so that each can have a copy for itself.
    for (int part = 0; part < slowPoints; ++part) {
        start("--slow", part, slowPoints);
    }
    for (int part = 0; part < fastParts; ++part) {
        start("--fast", part, fastParts);
    }
    return copies;
}
} // namespace

class tst_UpdateFaults : public QObject
{
    Q_OBJECT

private slots:
    void everyPoint();
};

void tst_UpdateFaults::everyPoint()
{
    const QList<Point> points = pointsOf(countSteps());
    QVERIFY(!points.isEmpty());
    const int slowPoints =
        int(std::count_if(points.begin(), points.end(), [](const Point& point) { return point.isSlow(); }));
    QVERIFY(slowPoints > 0);
    QElapsedTimer clock;
    clock.start();
    const auto copies = startCopies(slowPoints);
    int tried = 0;
    QStringList wrong;
    for (const auto& copy : copies) {
        QVERIFY(copy->waitForFinished(limitOfPartMs));
        QCOMPARE(copy->exitStatus(), QProcess::NormalExit);
        QCOMPARE(copy->exitCode(), 0);
        const QStringList lines =
            QString::fromUtf8(copy->readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (const QString& line : lines) {
            if (line.startsWith(QLatin1String("tried "))) {
                tried += line.mid(6).toInt();
            } else {
                wrong.append(line);
            }
        }
    }
    qInfo("%d points tried in %lld s, %d of them with a wait of 45 s", tried, clock.elapsed() / 1000,
          slowPoints);
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
    QCOMPARE(tried, points.size());
}

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments.at(1).startsWith(QLatin1String("--"))) {
        return runPart(arguments.at(1) == QLatin1String("--slow"), arguments.at(2).toInt(),
                       arguments.at(3).toInt());
    }
    tst_UpdateFaults test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_UpdateFaults.moc"
