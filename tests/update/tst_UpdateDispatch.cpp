// What is asked, switched and programmed in which order, and what the user is told.

#include "update/Update.h"
#include "update/UpdateDispatchRows.h"

#include <QApplication>
#include <QTest>

class tst_UpdateDispatch : public DispatchTest
{
    Q_OBJECT

private slots:
    void cleanup() { removeUpdate(); }
    void run_data();
    void run();
};

void tst_UpdateDispatch::run_data()
{
    QTest::addColumn<int>("number");
    int number = 0;
    for (const Row& row : rows()) {
        QTest::newRow(row.name) << number++;
    }
}

void tst_UpdateDispatch::run()
{
    QFETCH(int, number);
    const Row row = rows().at(std::size_t(number));
    m_imageDuringBackup.clear();
    QVERIFY(buildUpdate([&row](UpdatableDevice& device) { device.running = row.running; }));
    connect(m_window->update(), &Update::saveSettingsInfo, m_window.get(), [this] {
        if (!m_imageDuringBackup.isEmpty()) {
            reconnectAs(m_imageDuringBackup);
        }
    });
    for (const Plan& plan : row.plans) {
        plan(*this);
    }
    QCOMPARE(update(), row.expected);
    QVERIFY(!m_window->update()->isInProgress());
    QCOMPARE(UpdateTrace::statusBox(), nullptr);
    QCOMPARE(UpdateTrace::progressDialog(), nullptr);
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
    QCOMPARE(m_bench->log().count(QStringLiteral("End programming FLASH"), QsLogging::LogLevel::Info), 1);
    QCOMPARE(m_bench->log().count(QStringLiteral("Start programming FLASH"), QsLogging::LogLevel::Info),
             row.expected.filter(QStringLiteral("progress: ")).size());
}

QTEST_MAIN(tst_UpdateDispatch)
#include "tst_UpdateDispatch.moc"
