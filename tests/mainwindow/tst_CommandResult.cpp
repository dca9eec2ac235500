#include "mainwindow/CommandResult.h"
#include "support/LogCapture.h"

#include <QTest>

/// What the log is told of a command's result.
class tst_CommandResult : public QObject
{
    Q_OBJECT

private slots:
    void tells_data();
    void tells();
};

void tst_CommandResult::tells_data()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("warnings");
    QTest::addColumn<QString>("error");
    QTest::newRow("success") << 0 << 0 << QString();
    QTest::newRow("busy") << -40013 << 1 << QString();
    QTest::newRow("not open") << -40010 << 0 << QStringLiteral("Set x error -40010");
    QTest::newRow("no reply") << -40007 << 0 << QStringLiteral("Set x error -40007");
    QTest::newRow("positive") << 1 << 0 << QStringLiteral("Set x error 1");
}

void tst_CommandResult::tells()
{
    QFETCH(int, result);
    QFETCH(QString, error);
    const LogCapture log;
    logCommandResult(result, "Update x BUSY", "Set x error");
    QTEST(log.count(QStringLiteral("Update x BUSY"), QsLogging::LogLevel::Warn), "warnings");
    const QStringList errors = log.lines(QsLogging::LogLevel::Error);
    QCOMPARE(errors.size(), error.isEmpty() ? 0 : 1);
    QVERIFY(error.isEmpty() || errors.first().endsWith(error));
}

QTEST_APPLESS_MAIN(tst_CommandResult)
#include "tst_CommandResult.moc"
