#include "LogRecorder.h"
#include "QsLog2_1_0/QsLog.h"

#include <QtTest>

#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

using QsLogging::DestinationPtr;
using QsLogging::Logger;
using QsLogging::LogLevel;

namespace {

/// Notes in a list shared by several destinations who was written to.
class Witness : public LogRecorder
{
public:
    Witness(QString name, QStringList* order) : m_name(std::move(name)), m_order(order) {}
    void write(const QString& message, LogLevel level) override
    {
        LogRecorder::write(message, level);
        m_order->append(m_name);
    }

private:
    QString m_name;
    QStringList* m_order;
};

class Chatterbox : public LogRecorder
{
public:
    void write(const QString& message, LogLevel level) override
    {
        LogRecorder::write(message, level);
        QS_FATAL() << "from inside write";
    }
    ~Chatterbox() override { QS_INFO() << "last words"; }
};

class Broken : public LogRecorder
{
public:
    void write(const QString& /*message*/, LogLevel /*level*/) override
    {
        throw std::runtime_error("broken");
    }
};

} // namespace

class TestLogger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsAtInfo(); // first, as it looks at what the process began with
    void isOneForAllThreads();
    void keepsItsLevel_data();
    void keepsItsLevel();
    void writesInTheOrderOfAdding();
    void handsOverEveryLevel();
    void removesTheFirstEntryOnly();
    void removesNothingForAStranger();
    void knowsTypes();
    void sharesOwnership();
    void dropsWhatADestinationLogs();
    void letsADestinationLogItsEnd();
    void survivesAThrowingDestination();
    void takesDestinationsWhileOthersLog();
};

void TestLogger::startsAtInfo()
{
    QVERIFY(QsLogging::isLogged(LogLevel::Info)); // before the logger exists
    QVERIFY(!QsLogging::isLogged(LogLevel::Debug));
    QVERIFY(Logger::instance().level() == LogLevel::Info);
}

void TestLogger::isOneForAllThreads()
{
    std::vector<Logger*> seen(8, nullptr);
    std::vector<std::thread> threads;
    threads.reserve(seen.size());
    for (Logger*& entry : seen) {
        threads.emplace_back([&entry] { entry = &Logger::instance(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (Logger* entry : seen) {
        QCOMPARE(entry, &Logger::instance());
    }
}

void TestLogger::keepsItsLevel_data()
{
    QTest::addColumn<int>("level");
    for (int level = 0; level <= 6; ++level) {
        QTest::addRow("%d", level) << level;
    }
}

void TestLogger::keepsItsLevel()
{
    QFETCH(int, level);

    Logger::instance().setLevel(static_cast<LogLevel>(level));
    const int stored = static_cast<int>(Logger::instance().level());
    QList<bool> logged;
    for (int asked = 0; asked <= 6; ++asked) {
        logged.append(QsLogging::isLogged(static_cast<LogLevel>(asked)));
    }
    Logger::instance().setLevel(LogLevel::Info);

    QCOMPARE(stored, level);
    for (int asked = 0; asked <= 6; ++asked) {
        QCOMPARE(logged.at(asked), level <= asked);
    }
}

void TestLogger::writesInTheOrderOfAdding()
{
    QStringList order;
    const QStringList names = {QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")};
    QList<DestinationPtr> witnesses;
    for (const QString& name : names) {
        witnesses.append(QSharedPointer<Witness>::create(name, &order));
        Logger::instance().addDestination(witnesses.last());
    }
    Logger::instance().write(QStringLiteral("line"), LogLevel::Warn);
    for (const DestinationPtr& witness : qAsConst(witnesses)) {
        Logger::instance().removeDestination(witness);
    }
    QCOMPARE(order, names);
}

void TestLogger::handsOverEveryLevel()
{
    const auto recorder = QSharedPointer<LogRecorder>::create();
    Logger::instance().addDestination(recorder);
    Logger::instance().setLevel(LogLevel::Off);
    for (int level = 0; level <= 6; ++level) {
        Logger::instance().write(QString::number(level), static_cast<LogLevel>(level));
    }
    Logger::instance().setLevel(LogLevel::Info);
    Logger::instance().removeDestination(recorder);

    QCOMPARE(recorder->lines.join(QLatin1Char(' ')), QStringLiteral("0 1 2 3 4 5 6"));
    QVERIFY(recorder->levels.first() == LogLevel::Trace && recorder->levels.last() == LogLevel::Off);
}

void TestLogger::removesTheFirstEntryOnly()
{
    QStringList order;
    const auto twice = QSharedPointer<Witness>::create(QStringLiteral("twice"), &order);
    const auto other = QSharedPointer<Witness>::create(QStringLiteral("other"), &order);
    Logger::instance().addDestination(twice);
    Logger::instance().addDestination(other);
    Logger::instance().addDestination(twice);
    Logger::instance().removeDestination(twice);
    Logger::instance().write(QStringLiteral("line"), LogLevel::Info);
    Logger::instance().removeDestination(twice);
    Logger::instance().removeDestination(other);

    QCOMPARE(order, QStringList({QStringLiteral("other"), QStringLiteral("twice")}));
}

void TestLogger::removesNothingForAStranger()
{
    const auto recorder = QSharedPointer<LogRecorder>::create();
    Logger::instance().addDestination(recorder);
    Logger::instance().removeDestination(QSharedPointer<LogRecorder>::create());
    Logger::instance().removeDestination(DestinationPtr());
    Logger::instance().write(QStringLiteral("line"), LogLevel::Info);
    Logger::instance().removeDestination(recorder);
    Logger::instance().write(QStringLiteral("line"), LogLevel::Info);
    QCOMPARE(recorder->lines.size(), 1);
}

void TestLogger::knowsTypes()
{
    const auto recorder = QSharedPointer<LogRecorder>::create(QStringLiteral("paper"));
    QVERIFY(!Logger::instance().hasDestinationOfType(QStringLiteral("paper")));
    Logger::instance().addDestination(recorder);
    QVERIFY(Logger::instance().hasDestinationOfType(QStringLiteral("paper")));
    QVERIFY(!Logger::instance().hasDestinationOfType(QStringLiteral("Paper")));
    QVERIFY(!Logger::instance().hasDestinationOfType(QString()));
    Logger::instance().removeDestination(recorder);
    QVERIFY(!Logger::instance().hasDestinationOfType(QStringLiteral("paper")));
}

void TestLogger::sharesOwnership()
{
    auto recorder = QSharedPointer<LogRecorder>::create();
    const QWeakPointer<LogRecorder> watch = recorder;
    Logger::instance().addDestination(recorder);
    recorder.clear();
    QVERIFY(!watch.isNull()); // the logger holds it
    Logger::instance().removeDestination(watch.toStrongRef());
    QVERIFY(watch.isNull());
}

void TestLogger::dropsWhatADestinationLogs()
{
    const auto chatterbox = QSharedPointer<Chatterbox>::create();
    Logger::instance().addDestination(chatterbox);
    QS_INFO() << "one";
    QS_INFO() << "two";
    Logger::instance().removeDestination(chatterbox);
    QCOMPARE(chatterbox->lines.size(), 2);
    QVERIFY(chatterbox->lines.last().endsWith(QLatin1String(" two")));
}

void TestLogger::letsADestinationLogItsEnd()
{
    const auto recorder = QSharedPointer<LogRecorder>::create();
    auto chatterbox = QSharedPointer<Chatterbox>::create();
    const QWeakPointer<Chatterbox> watch = chatterbox;
    Logger::instance().addDestination(recorder);
    Logger::instance().addDestination(chatterbox);
    chatterbox.clear();
    Logger::instance().removeDestination(watch.toStrongRef());
    Logger::instance().removeDestination(recorder);
    QCOMPARE(recorder->lines.size(), 1);
    QVERIFY(recorder->lines.first().endsWith(QLatin1String(" last words")));
}

void TestLogger::survivesAThrowingDestination()
{
    const auto broken = QSharedPointer<Broken>::create();
    const auto recorder = QSharedPointer<LogRecorder>::create();
    Logger::instance().addDestination(broken);
    Logger::instance().addDestination(recorder);
    QVERIFY_EXCEPTION_THROWN(Logger::instance().write(QStringLiteral("line"), LogLevel::Info),
                             std::runtime_error);
    Logger::instance().removeDestination(broken); // would wait for ever if the mutex were still held
    QS_INFO() << "again";
    Logger::instance().removeDestination(recorder);
    QCOMPARE(recorder->lines.size(), 1);
}

void TestLogger::takesDestinationsWhileOthersLog()
{
    std::atomic<bool> stop{false};
    std::thread writer([&stop] {
        while (!stop) {
            QS_INFO() << "line";
        }
    });
    for (int i = 0; i < 200; ++i) {
        const auto recorder = QSharedPointer<LogRecorder>::create();
        Logger::instance().addDestination(recorder);
        Logger::instance().write(QStringLiteral("own"), LogLevel::Info);
        Logger::instance().removeDestination(recorder);
        QVERIFY(recorder->lines.contains(QStringLiteral("own")));
    }
    stop = true;
    writer.join();
    QVERIFY(!Logger::instance().hasDestinationOfType(QStringLiteral("recorder")));
}

QTEST_APPLESS_MAIN(TestLogger)

#include "tst_Logger.moc"
