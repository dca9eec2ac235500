#include "device/DeviceFixture.h"

#include <QTest>

using namespace DeviceTest;
using namespace std::chrono_literals;

/// Ticks are run by hand where their number matters. The last fault and warning messages and the countdown of
/// the warnings belong to the process: each test begins with a device that has no fault and no warning, told.
class tst_DevicePolling : public PollTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void tickAsksInOrder();
    void externalLevelsAreRead();
    void firstTickTellsEverything();
    void secondTickTellsNothing();
    void changesAreTold();
    void faultIsToldOnceAndAgainWithAnotherText();
    void activeFaultIsToldAfterReconnection();
    void absentFaultIsNotTold();
    void levelThatIsNoNumberIsToldEachTime();
    void warningsNeedTheNewerFirmware_data();
    void warningsNeedTheNewerFirmware();
    void warningIsToldOnceAndAgainAfterReconnection();
    void failedQueryLeavesTheOthers_data();
    void failedQueryLeavesTheOthers();
    void announcementWaitsForAKnownSource();
    void failedWarningKeepsTheAnnouncementDue();
};

void tst_DevicePolling::tickAsksInOrder()
{
    tick();
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"shutter?", "fault?", "f_mode?", "int_mode?"}));
}

void tst_DevicePolling::externalLevelsAreRead()
{
    m_bench->setAnswer("int_mode?", "int_mode=EXT\n");
    m_bench->setAnswer("set?", "set:405=12.5,445=1,470=2,520=3,528=4,555=5,640=6,730=7\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("levels 12.5 1 2 3 4 5 6 7")});
    QCOMPARE(m_bench->lines(), (QList<QByteArray>{"shutter?", "fault?", "f_mode?", "int_mode?", "set?"}));
    QCOMPARE(tick(), QStringList());
    m_bench->setAnswer("set?", "set:405=12.5,445=1,470=2,520=3,528=4,555=5,640=6,730=7.5\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("levels 12.5 1 2 3 4 5 6 7.5")});
    // A shorter list says nothing about the others.
    m_bench->setAnswer("set?", "set:405=13\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("levels 13 1 2 3 4 5 6 7.5")});
}

void tst_DevicePolling::firstTickTellsEverything()
{
    m_bench->setAnswer("int_mode?", "int_mode=EXT\n");
    m_bench->setAnswer("fault?", "FAULT: first tick\n");
    connectAnew();
    QCOMPARE(tick(),
             (QStringList{QStringLiteral("shutters 00000000"), QStringLiteral("fault true FAULT: first tick"),
                          QStringLiteral("mode 1"), QStringLiteral("levels 0 0 0 0 0 0 0 0")}));
    QVERIFY(m_device->faultState());
}

void tst_DevicePolling::secondTickTellsNothing()
{
    m_bench->setAnswer("int_mode?", "int_mode=EXT\n");
    connectAnew();
    QVERIFY(!tick().isEmpty());
    QCOMPARE(tick(), QStringList());
}

void tst_DevicePolling::changesAreTold()
{
    m_bench->setAnswer("shutter?", "shutter:open,closed,closed,closed,closed,closed,closed,open\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("shutters 10000001")});
    m_bench->setAnswer("shutter?", "shutter:closed\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("shutters 00000001")});
    m_bench->setAnswer("f_mode?", "f_mode=run\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("mode 2")});
    m_bench->setAnswer("f_mode?", "f_mode=warmup\n");
    m_bench->setAnswer("fault?", "FAULT: changes\n");
    tick(); // the fourth asks for warnings
    QCOMPARE(m_heard->all,
             (QStringList{QStringLiteral("fault true FAULT: changes"), QStringLiteral("mode 0")}));
    m_bench->setAnswer("fault?", "ok\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("fault false ok")});
    QVERIFY(!m_device->faultState());
}

void tst_DevicePolling::faultIsToldOnceAndAgainWithAnotherText()
{
    m_bench->setAnswer("fault?", "FAULT: over\ntemp\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("fault true FAULT: overtemp")});
    QCOMPARE(tick(), QStringList());
    m_bench->setAnswer("fault?", "FAULT: fan\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("fault true FAULT: fan")});
    QCOMPARE(tick(), QStringList());
    // No fault in another spelling is another text too.
    m_bench->setAnswer("fault?", "ok\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("fault false ok")});
    m_bench->setAnswer("fault?", "OK\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("fault false OK")});
}

void tst_DevicePolling::activeFaultIsToldAfterReconnection()
{
    m_bench->setAnswer("fault?", "FAULT: stays\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("fault true FAULT: stays")});
    connectAnew();
    QVERIFY(tick().contains(QStringLiteral("fault true FAULT: stays")));
    QCOMPARE(tick(), QStringList());
}

void tst_DevicePolling::absentFaultIsNotTold()
{
    connectAnew();
    QCOMPARE(tick(), (QStringList{QStringLiteral("shutters 00000000"), QStringLiteral("mode 1")}));
}

void tst_DevicePolling::levelThatIsNoNumberIsToldEachTime()
{
    m_bench->setAnswer("int_mode?", "int_mode=EXT\n");
    m_bench->setAnswer("set?", "set:405=nan,445=1\n");
    for (int i = 0; i < 3; ++i)
        QCOMPARE(tick(), QStringList{QStringLiteral("levels nan 1 0 0 0 0 0 0")});
    m_bench->setAnswer("set?", "set:405=5,445=1\n");
    QCOMPARE(tick(), QStringList{QStringLiteral("levels 5 1 0 0 0 0 0 0")});
    QCOMPARE(tick(), QStringList());
}

void tst_DevicePolling::warningsNeedTheNewerFirmware_data()
{
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<int>("asked");

    QTest::newRow("last without") << QByteArray("1.1.14") << 0;
    QTest::newRow("first with") << QByteArray("1.1.15") << 3;
    QTest::newRow("no version") << QByteArray("x") << 0;
}

void tst_DevicePolling::warningsNeedTheNewerFirmware()
{
    QFETCH(const QByteArray, version);
    QFETCH(const int, asked);
    answerAsApplication(*m_bench, version);
    connectAnew();
    QList<int> ticks;
    for (int i = 1; i <= 12; ++i) {
        const int before = m_bench->count("warn?");
        tick();
        if (m_bench->count("warn?") > before)
            ticks.append(i);
    }
    QCOMPARE(ticks, asked > 0 ? (QList<int>{4, 8, 12}) : QList<int>());
    QCOMPARE(m_bench->count("warn?"), asked);
}

void tst_DevicePolling::warningIsToldOnceAndAgainAfterReconnection()
{
    const auto fourTicks = [this] {
        QStringList told;
        for (int i = 0; i < 4; ++i)
            told += tick();
        return told.filter(QStringLiteral("warning"));
    };
    const QStringList warning{QStringLiteral("warning true WARN: 555")};
    m_bench->setAnswer("warn?", "WARN: 555\n");
    QCOMPARE(fourTicks(), warning);
    QVERIFY(m_device->warningState());
    QCOMPARE(fourTicks(), QStringList());
    connectAnew();
    QCOMPARE(fourTicks(), warning);
    QCOMPARE(fourTicks(), QStringList());
    m_bench->setAnswer("warn?", "WARN: 555 and Novalum\n");
    QCOMPARE(fourTicks(), QStringList{QStringLiteral("warning true WARN: 555 and Novalum")});
    m_bench->setAnswer("warn?", "ok\n");
    QCOMPARE(fourTicks(), QStringList{QStringLiteral("warning false ok")});
    connectAnew();
    QCOMPARE(fourTicks(), QStringList());
}

void tst_DevicePolling::failedQueryLeavesTheOthers_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QStringList>("told");

    const QString shutters = QStringLiteral("shutters 11111111");
    const QString fault = QStringLiteral("fault true FAULT: others");
    const QString mode = QStringLiteral("mode 2");
    const QString levels = QStringLiteral("levels 9 9 9 9 9 9 9 9");
    QTest::newRow("shutters") << QByteArray("shutter?") << QStringList{fault, mode, levels};
    QTest::newRow("fault") << QByteArray("fault?") << QStringList{shutters, mode, levels};
    QTest::newRow("mode") << QByteArray("f_mode?") << QStringList{shutters, fault, levels};
    QTest::newRow("source") << QByteArray("int_mode?") << QStringList{shutters, fault, mode};
    QTest::newRow("levels") << QByteArray("set?") << QStringList{shutters, fault, mode};
}

void tst_DevicePolling::failedQueryLeavesTheOthers()
{
    QFETCH(const QByteArray, line);
    QFETCH(const QStringList, told);
    m_bench->setAnswers({{"shutter?", "shutter:open,open,open,open,open,open,open,open\n"},
                         {"fault?", "FAULT: others\n"},
                         {"f_mode?", "f_mode=run\n"},
                         {"int_mode?", "int_mode=EXT\n"},
                         {"set?", "set:a=9,b=9,c=9,d=9,e=9,f=9,g=9,h=9\n"}});
    m_bench->setAnswer(line, "\x02garbage\n");
    QCOMPARE(tick(), told);
    QCOMPARE(m_bench->count(line), 1);
}

void tst_DevicePolling::announcementWaitsForAKnownSource()
{
    connectAnew();
    m_bench->setAnswer("int_mode?", "x\n");
    const QStringList both{QStringLiteral("shutters 00000000"), QStringLiteral("mode 1")};
    QCOMPARE(tick(), both);
    QCOMPARE(tick(), both);
    m_bench->setAnswer("int_mode?", "int_mode=PC\n");
    QCOMPARE(tick(), both);
    tick(); // with the warnings
    QCOMPARE(tick(), QStringList());
}

void tst_DevicePolling::failedWarningKeepsTheAnnouncementDue()
{
    for (int i = 0; i < 3; ++i)
        tick();
    connectAnew();
    m_bench->setAnswer("warn?", "x\n");
    const QStringList both{QStringLiteral("shutters 00000000"), QStringLiteral("mode 1")};
    QCOMPARE(tick(), both);
    QCOMPARE(m_bench->count("warn?"), 1);
    QCOMPARE(tick(), both); // the failed question left it due
    QCOMPARE(tick(), QStringList());
}

QTEST_GUILESS_MAIN(tst_DevicePolling)
#include "tst_DevicePolling.moc"
