// What happens to callers who misuse the log, and to a log whose destinations throw. Where assertions are on
// they end the program, so that each case runs in a process of its own.

#include "LogRecorder.h"
#include "QsLog2_1_0/QsLog.h"

#include <QProcess>
#include <QtTest>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>

using namespace QsLogging;

namespace {

class Broken : public LogRecorder
{
public:
    void write(const QString& /*message*/, LogLevel /*level*/) override
    {
        throw std::runtime_error("broken");
    }
};

/// Throws what is no standard exception.
class Strange : public LogRecorder
{
public:
    void write(const QString& /*message*/, LogLevel /*level*/) override { throw 7; }
};

void say(const QString& text)
{
    std::printf("%s", qPrintable(text));
}

void badLevel()
{
    say(textForLevel(static_cast<LogLevel>(42)));
}

void badLevelOfAStatement()
{
    const auto recorder = QSharedPointer<LogRecorder>::create();
    Logger::instance().addDestination(recorder);
    QS_LOG(static_cast<LogLevel>(42)) << "odd";
    say(recorder->lines.value(0).left(6));
    Logger::instance().removeDestination(recorder);
}

void nullDestination()
{
    Logger::instance().addDestination(DestinationPtr());
    QS_INFO() << "line"; // would go through the null pointer
    say(Logger::instance().hasDestinationOfType(QString()) ? QStringLiteral("kept")
                                                           : QStringLiteral("ignored"));
}

void throwingDestination()
{
    const auto broken = QSharedPointer<Broken>::create();
    const auto recorder = QSharedPointer<LogRecorder>::create();
    Logger::instance().addDestination(broken);
    try {
        QS_INFO() << "line";
        say(QStringLiteral("not rethrown, "));
    } catch (const std::runtime_error& error) {
        say(QLatin1String("rethrown ") + QLatin1String(error.what()) + QLatin1String(", "));
    }
    Logger::instance().removeDestination(broken);
    Logger::instance().addDestination(recorder);
    QS_INFO() << "line";
    say(QStringLiteral("%1 line after that").arg(recorder->lines.size()));
    Logger::instance().removeDestination(recorder);
}

void throwingWhileAnotherIsOnItsWay()
{
    struct LogsAtItsEnd
    {
        ~LogsAtItsEnd() { QS_INFO() << "line"; }
    };
    const auto broken = QSharedPointer<Broken>::create();
    Logger::instance().addDestination(broken);
    try {
        const LogsAtItsEnd guard;
        throw std::logic_error("first");
    } catch (const std::logic_error& error) {
        say(QLatin1String(error.what()));
    }
    Logger::instance().removeDestination(broken);
}

void strangeException()
{
    const auto strange = QSharedPointer<Strange>::create();
    Logger::instance().addDestination(strange);
    try {
        QS_INFO() << "line";
    } catch (int number) {
        say(QString::number(number));
    }
    Logger::instance().removeDestination(strange);
}

/// Logs when static objects are torn down, after the logger itself.
struct LogsAtExit
{
    ~LogsAtExit()
    {
        QS_FATAL() << "line";
        say(isLogged(LogLevel::Off) ? QStringLiteral("still logging") : QStringLiteral("silent"));
    }
};

void loggingAtExit()
{
    static const LogsAtExit last;
    Logger::instance().addDestination(QSharedPointer<LogRecorder>::create());
}

using Cases = std::map<QByteArray, void (*)()>;

const Cases& cases()
{
    static const Cases all = {
        {"badLevel", badLevel},
        {"badLevelOfAStatement", badLevelOfAStatement},
        {"nullDestination", nullDestination},
        {"throwingDestination", throwingDestination},
        {"throwingWhileAnotherIsOnItsWay", throwingWhileAnotherIsOnItsWay},
        {"strangeException", strangeException},
        {"loggingAtExit", loggingAtExit},
    };
    return all;
}

} // namespace

class TestLogMistakes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void inAProcess_data();
    void inAProcess();
};

void TestLogMistakes::inAProcess_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("assertion"); // empty where none is due
    QTest::addColumn<QByteArray>("output");    // where assertions are off, or none is due

    const auto row = [](const char* name, const char* assertion, const char* output) {
        QTest::newRow(name) << QByteArray(name) << QByteArray(assertion) << QByteArray(output);
    };
    row("badLevel", "bad log level", "INFO ");
    row("badLevelOfAStatement", "bad log level", "INFO  ");
    row("nullDestination", "destination.data()", "ignored");
    row("throwingDestination", "exception in logger helper destructor", "rethrown broken, 1 line after that");
    row("throwingWhileAnotherIsOnItsWay", "exception in logger helper destructor", "first");
    row("strangeException", "", "7");
    row("loggingAtExit", "", "silent");
}

void TestLogMistakes::inAProcess()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, assertion);
    QFETCH(QByteArray, output);

    QProcess process;
    process.start(QCoreApplication::applicationFilePath(),
                  {QLatin1String("--case"), QString::fromLatin1(name)});
    QVERIFY2(process.waitForFinished(), qPrintable(process.errorString()));
    const QByteArray errors = process.readAllStandardError();
#ifdef QT_NO_DEBUG
    const bool asserts = false;
#else
    const bool asserts = !assertion.isEmpty();
#endif
    if (asserts) {
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        QVERIFY2(errors.contains(assertion), errors.constData());
    } else {
        QVERIFY2(process.exitStatus() == QProcess::NormalExit, errors.constData());
        QCOMPARE(process.exitCode(), EXIT_SUCCESS);
        QCOMPARE(process.readAllStandardOutput(), output);
        QCOMPARE(errors, QByteArray());
    }
}

int main(int argc, char** argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--case") == 0) {
        const auto found = cases().find(argv[2]);
        if (found == cases().end()) {
            return EXIT_FAILURE;
        }
        found->second();
        return EXIT_SUCCESS;
    }
    QCoreApplication application(argc, argv);
    TestLogMistakes test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_LogMistakes.moc"
