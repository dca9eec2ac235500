#include "QsLog2_1_0/DebugOutputDestination.h"
#include "QsLog2_1_0/FunctorDestination.h"
#include "QsLog2_1_0/QsLog.h"
#include "StderrCapture.h"
#include "support/WarningWatch.h"

#include <QSignalSpy>
#include <QtTest>

#include <thread>

using namespace QsLogging;

namespace {

struct Call
{
    QString message;
    LogLevel level;
};

QList<Call>& calls()
{
    static QList<Call> list;
    return list;
}

void record(const QString& message, LogLevel level)
{
    calls().append({message, level});
}

} // namespace

/// Somebody with a slot for lines.
class Listener : public QObject
{
    Q_OBJECT

public:
    QStringList lines;
    QList<int> levels;

public Q_SLOTS:
    void listen(const QString& message, int level)
    {
        lines.append(message);
        levels.append(level);
    }
};

class TestOtherDestinations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void debugOutput_data();
    void debugOutput();
    void debugOutputDescribesItself();
    void functionGetsEveryLevel();
    void signalComesAboveTrace_data();
    void signalComesAboveTrace();
    void functorDescribesItself();
    void slotIsCalledQueued();
    void slotIsCalledFromAnotherThread();
    void receiverMayGo();
    void slotThatIsNone();
    void logsThroughBoth();

private:
    QScopedPointer<WarningWatch> m_watch;
    QStringList m_expectedWarnings;
};

void TestOtherDestinations::init()
{
    calls().clear();
    m_expectedWarnings.clear();
    m_watch.reset(new WarningWatch);
}

void TestOtherDestinations::cleanup()
{
    const QStringList warnings = WarningWatch::messages();
    m_watch.reset();
    QCOMPARE(warnings.size(), m_expectedWarnings.size());
    for (int i = 0; i < warnings.size(); ++i) {
        QVERIFY2(warnings.at(i).contains(m_expectedWarnings.at(i)), qPrintable(warnings.at(i)));
    }
}

void TestOtherDestinations::debugOutput_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("line") << QStringLiteral("INFO  2024-03-05T14:07:09.031 Start programming FLASH");
    QTest::newRow("empty") << QString();
    QTest::newRow("percent signs") << QStringLiteral("100 %s %n %1");
    QTest::newRow("beyond ASCII") << QStringLiteral("38 \u00b0C");
    QTest::newRow("long") << QString(100'000, QLatin1Char('x'));
}

void TestOtherDestinations::debugOutput()
{
    QFETCH(QString, message);
    DebugOutputDestination destination;
    StderrCapture errors;
    destination.write(message, LogLevel::Trace);
    QCOMPARE(errors.take(), message.toLocal8Bit() + '\n');
}

void TestOtherDestinations::debugOutputDescribesItself()
{
    const DestinationPtr destination = makeDebugOutputDestination();
    QVERIFY(destination->isValid());
    QCOMPARE(destination->type(), QStringLiteral("console"));
    QVERIFY(dynamic_cast<DebugOutputDestination*>(destination.data()) != nullptr);
}

void TestOtherDestinations::functionGetsEveryLevel()
{
    const DestinationPtr destination = makeFunctorDestination(&record);
    for (int level = 0; level <= 6; ++level) {
        destination->write(QString::number(level), static_cast<LogLevel>(level));
    }
    QCOMPARE(calls().size(), 7);
    for (int level = 0; level <= 6; ++level) {
        QCOMPARE(calls().at(level).message, QString::number(level));
        QCOMPARE(static_cast<int>(calls().at(level).level), level);
    }
}

void TestOtherDestinations::signalComesAboveTrace_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("count");
    for (int level = 0; level <= 6; ++level) {
        QTest::addRow("%d", level) << level << (level > 0 ? 1 : 0);
    }
}

void TestOtherDestinations::signalComesAboveTrace()
{
    QFETCH(int, level);
    QFETCH(int, count);
    FunctorDestination destination; // without a function
    const QSignalSpy spy(&destination, &FunctorDestination::logMessageReady);
    QVERIFY(spy.isValid());
    destination.write(QStringLiteral("line"), static_cast<LogLevel>(level));
    QCOMPARE(spy.count(), count);
    if (count > 0) {
        QCOMPARE(spy.first(), QVariantList({QStringLiteral("line"), level}));
    }
}

void TestOtherDestinations::functorDescribesItself()
{
    const DestinationPtr destination = makeFunctorDestination(nullptr);
    QVERIFY(destination->isValid());
    QCOMPARE(destination->type(), QStringLiteral("functor"));
    destination->write(QStringLiteral("to nobody"), LogLevel::Info);
}

void TestOtherDestinations::slotIsCalledQueued()
{
    Listener listener;
    const DestinationPtr destination = makeFunctorDestination(&listener, SLOT(listen(QString, int)));
    destination->write(QStringLiteral("trace"), LogLevel::Trace);
    destination->write(QStringLiteral("debug"), LogLevel::Debug);
    destination->write(QStringLiteral("fatal"), LogLevel::Fatal);
    QCOMPARE(listener.lines, QStringList()); // nothing yet, the event loop has not run

    QCoreApplication::processEvents();
    QCOMPARE(listener.lines, QStringList({QStringLiteral("debug"), QStringLiteral("fatal")}));
    QCOMPARE(listener.levels, QList<int>({1, 5}));
}

void TestOtherDestinations::slotIsCalledFromAnotherThread()
{
    Listener listener;
    const DestinationPtr destination = makeFunctorDestination(&listener, SLOT(listen(QString, int)));
    Logger::instance().addDestination(destination);
    std::thread([] { QS_WARN() << "from afar"; }).join();
    Logger::instance().removeDestination(destination);
    QCoreApplication::processEvents();
    QCOMPARE(listener.lines.size(), 1);
    QVERIFY(listener.lines.first().endsWith(QLatin1String(" from afar")));
}

void TestOtherDestinations::receiverMayGo()
{
    DestinationPtr destination;
    {
        Listener listener;
        destination = makeFunctorDestination(&listener, SLOT(listen(QString, int)));
        destination->write(QStringLiteral("on its way"), LogLevel::Info);
    }
    destination->write(QStringLiteral("too late"), LogLevel::Info);
    QCoreApplication::processEvents();
    QVERIFY(destination->isValid());
}

void TestOtherDestinations::slotThatIsNone()
{
    m_expectedWarnings = QStringList{QStringLiteral("No such slot Listener::"),
                                     QStringLiteral("Cannot connect QsLogging::FunctorDestination::")};
    Listener listener;
    const DestinationPtr wrong = makeFunctorDestination(&listener, SLOT(missing(QString, int)));
    wrong->write(QStringLiteral("line"), LogLevel::Info);
    const DestinationPtr nobody = makeFunctorDestination(nullptr, SLOT(listen(QString, int)));
    nobody->write(QStringLiteral("line"), LogLevel::Info);
    QCoreApplication::processEvents();
    QCOMPARE(listener.lines, QStringList());
}

void TestOtherDestinations::logsThroughBoth()
{
    Listener listener;
    const QSharedPointer<FunctorDestination> both = QSharedPointer<FunctorDestination>::create(&record);
    connect(both.data(), &FunctorDestination::logMessageReady, &listener, &Listener::listen);
    Logger::instance().addDestination(both);
    QS_ERROR() << "to both";
    Logger::instance().removeDestination(both);
    QCOMPARE(calls().size(), 1);
    QCOMPARE(listener.lines, QStringList(calls().first().message));
    QCOMPARE(listener.levels, QList<int>{4});
}

QTEST_GUILESS_MAIN(TestOtherDestinations)

#include "tst_OtherDestinations.moc"
