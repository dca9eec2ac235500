#include "device/Replies.h"

#include <QTest>

#include <cmath>

class tst_Replies : public QObject
{
    Q_OBJECT

private slots:
    void functionalMode_data();
    void functionalMode();
    void sleepTime_data();
    void sleepTime();
    void intensitySource_data();
    void intensitySource();
    void flags_data();
    void flags();
    void numberLists_data();
    void numberLists();
    void wordLists_data();
    void wordLists();
    void levelThatIsNoNumber();
    void missingPrefixesAreToldDifferently();
    void imageVersion_data();
    void imageVersion();
    void isYes_data();
    void isYes();
    void tellsFirmwareUpdate();
};

void tst_Replies::functionalMode_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("mode");

    QTest::newRow("idle") << "f_mode=idle\n" << 0 << 1;
    QTest::newRow("run") << "f_mode=run\n" << 0 << 2;
    QTest::newRow("warmup") << "f_mode=warmup\n" << 0 << 0;
    QTest::newRow("any case") << "f_mode=RUN" << 0 << 2;
    QTest::newRow("key in any case") << "F_Mode=Idle\n" << 0 << 1;
    QTest::newRow("no key") << "run\n" << 0 << 2;
    QTest::newRow("more equal signs") << "f_mode==run=\n" << 0 << 2;
    QTest::newRow("key twice") << "f_mode=f_mode=run\n" << 0 << 2;
    QTest::newRow("standby") << "f_mode=standby\n" << -40015 << -1;
    QTest::newRow("blank") << "f_mode= run\n" << -40015 << -1;
    QTest::newRow("carriage return") << "f_mode=run\r\n" << -40015 << -1;
    QTest::newRow("empty") << "" << -40015 << -1;
    QTest::newRow("ok") << "ok\n" << -40015 << -1;
}

void tst_Replies::functionalMode()
{
    QFETCH(const QString, reply);
    QFETCH(const int, code);
    QFETCH(const int, mode);
    auto result = static_cast<FunctionalMode_t>(-1);
    QCOMPARE(Replies::functionalMode(reply, result), code);
    QCOMPARE(int(result), mode);
}

void tst_Replies::sleepTime_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("minutes");

    QTest::newRow("none") << "sleep=0\n" << 0 << 0;
    QTest::newRow("largest") << "sleep=99\n" << 0 << 99;
    QTest::newRow("too large") << "sleep=100\n" << -40015 << 200;
    QTest::newRow("any case") << "SLEEP=15\n" << 0 << 15;
    QTest::newRow("without key") << "15" << 0 << 15;
    QTest::newRow("negative") << "sleep=-1\n" << -40015 << 200;
    QTest::newRow("word") << "sleep=off\n" << -40015 << 200;
    QTest::newRow("nothing") << "sleep=\n" << -40015 << 200;
    QTest::newRow("other key") << "sleeping=5\n" << -40015 << 200;
    QTest::newRow("huge") << "sleep=4294967297\n" << -40015 << 200;
    QTest::newRow("fraction") << "sleep=1.5\n" << -40015 << 200;
}

void tst_Replies::sleepTime()
{
    QFETCH(const QString, reply);
    QFETCH(const int, code);
    QFETCH(const int, minutes);
    quint8 result = 200;
    QCOMPARE(Replies::sleepTime(reply, result), code);
    QCOMPARE(int(result), minutes);
}

void tst_Replies::intensitySource_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("source");

    QTest::newRow("external") << "int_mode=EXT\n" << 0 << 0;
    QTest::newRow("host") << "int_mode=PC\n" << 0 << 1;
    QTest::newRow("small letters") << "int_mode=pc\n" << 0 << 1;
    QTest::newRow("key in capitals") << "INT_MODE=ext\n" << 0 << 0;
    QTest::newRow("other word") << "int_mode=USB\n" << -40015 << 9;
    QTest::newRow("number") << "int_mode=1\n" << -40015 << 9;
    QTest::newRow("other key") << "f_mode=run\n" << -40015 << 9;
    QTest::newRow("empty") << "" << -40015 << 9;
}

void tst_Replies::intensitySource()
{
    QFETCH(const QString, reply);
    QFETCH(const int, code);
    QFETCH(const int, source);
    auto result = static_cast<ControlSource>(9);
    QCOMPARE(Replies::intensitySource(reply, result), code);
    QCOMPARE(int(result), source);
}

void tst_Replies::flags_data()
{
    QTest::addColumn<bool>("isFault");
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("before");
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("active");
    QTest::addColumn<QString>("message");

    QTest::newRow("no fault") << true << "ok\n" << true << 0 << false << "ok";
    QTest::newRow("no fault in capitals") << true << "OK" << true << 0 << false << "OK";
    QTest::newRow("fault") << true << "FAULT: over temp\n" << false << 0 << true << "FAULT: over temp";
    QTest::newRow("fault inside") << true << "1 FAULT:\nx" << false << 0 << true << "1 FAULT:x";
    QTest::newRow("marker in other case") << true << "Fault: x\n" << false << -40009 << false << "Fault: x";
    QTest::newRow("state stays") << true << "Fault: x\n" << true << -40009 << true << "Fault: x";
    QTest::newRow("warning is no fault") << true << "WARN: x\n" << false << -40009 << false << "WARN: x";
    QTest::newRow("empty") << true << "" << true << -40009 << true << "";
    QTest::newRow("no warning") << false << "Ok\n" << true << 0 << false << "Ok";
    QTest::newRow("warning") << false << "WARN: 555 fiber\n" << false << 0 << true << "WARN: 555 fiber";
    QTest::newRow("warning in other case") << false << "warn: x\n" << true << -40009 << true << "warn: x";
    QTest::newRow("fault is no warning") << false << "FAULT: x\n" << false << -40009 << false << "FAULT: x";
}

void tst_Replies::flags()
{
    QFETCH(const bool, isFault);
    QFETCH(const QString, reply);
    QFETCH(const bool, before);
    StateReport report{before, QStringLiteral("before")};
    QTEST(isFault ? Replies::fault(reply, report) : Replies::warning(reply, report), "code");
    QTEST(report.active, "active");
    QTEST(report.message, "message");
}

using Numbers = std::array<float, channelCount>;
Q_DECLARE_METATYPE(Numbers)

void tst_Replies::numberLists_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("isHours");
    QTest::addColumn<int>("code");
    QTest::addColumn<Numbers>("numbers");

    const Numbers untouched{-1, -1, -1, -1, -1, -1, -1, -1};
    QTest::newRow("levels") << "set:405=0.00,445=1.5,470=2,520=3,528=4,555=5,640=6,730=100.00\n"
                            << false << 0 << Numbers{0, 1.5F, 2, 3, 4, 5, 6, 100};
    QTest::newRow("fewer") << "set:405=7,445=8\n" << false << 0 << Numbers{7, 8, -1, -1, -1, -1, -1, -1};
    QTest::newRow("more than eight") << "set:a=1,b=2,c=3,d=4,e=5,f=6,g=7,h=8,i=9,j=10\n"
                                     << false << 0 << Numbers{1, 2, 3, 4, 5, 6, 7, 8};
    QTest::newRow("empty items") << "set:,a=2,,b=4\n" << false << 0 << Numbers{0, 2, 0, 4, -1, -1, -1, -1};
    QTest::newRow("no numbers") << "set:a=x,b,c=1e99,=5\n"
                                << false << 0 << Numbers{0, 0, 0, 5, -1, -1, -1, -1};
    QTest::newRow("any case") << "SET:405=7\n" << false << 0 << Numbers{7, -1, -1, -1, -1, -1, -1, -1};
    QTest::newRow("levels without marker") << "405=7\n" << false << -40009 << untouched;
    QTest::newRow("hours") << "hours:405=12.5,445=0\n"
                           << true << 0 << Numbers{12.5F, 0, -1, -1, -1, -1, -1, -1};
    QTest::newRow("hours, second equal sign") << "hours:a=1=2\n"
                                              << true << 0 << Numbers{0, -1, -1, -1, -1, -1, -1, -1};
    QTest::newRow("hours without marker") << "ok\n" << true << -40009 << untouched;
}

void tst_Replies::numberLists()
{
    QFETCH(const QString, reply);
    QFETCH(const bool, isHours);
    Numbers result{-1, -1, -1, -1, -1, -1, -1, -1};
    QTEST(isHours ? Replies::hours(reply, result) : Replies::intensityLevels(reply, result), "code");
    QTEST(result, "numbers");
}

void tst_Replies::levelThatIsNoNumber()
{
    IntensityLevels levels{};
    QCOMPARE(Replies::intensityLevels(QStringLiteral("set:405=nan,445=5\n"), levels), 0);
    QVERIFY(std::isnan(levels[0]));
    QCOMPARE(levels[1], 5.0F);
}

using Flags = std::array<bool, channelCount>;
Q_DECLARE_METATYPE(Flags)

void tst_Replies::wordLists_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("isShutter");
    QTest::addColumn<int>("code");
    QTest::addColumn<Flags>("flags");

    const bool kept = true; // what stood there before
    const Flags untouched{kept, kept, kept, kept, kept, kept, kept, kept};
    QTest::newRow("three") << "shutter:open,closed,open\n"
                           << true << 0 << Flags{true, false, true, kept, kept, kept, kept, kept};
    QTest::newRow("named items") << "shutter:405=OPEN,445=closed\n"
                                 << true << 0 << Flags{true, false, kept, kept, kept, kept, kept, kept};
    QTest::newRow("more than eight")
        << "shutter:closed,closed,closed,closed,closed,closed,closed,closed,open\n"
        << true << 0 << Flags{};
    QTest::newRow("empty list") << "shutter:\n"
                                << true << 0 << Flags{false, kept, kept, kept, kept, kept, kept, kept};
    QTest::newRow("shutters without prefix") << "open,open\n" << true << -40015 << untouched;
    QTest::newRow("inverted") << "ttl_invert:off,on,ON\n"
                              << false << 0 << Flags{false, true, true, kept, kept, kept, kept, kept};
    QTest::newRow("inverted without prefix") << "off,on\n" << false << -40015 << untouched;
}

void tst_Replies::wordLists()
{
    QFETCH(const QString, reply);
    QFETCH(const bool, isShutter);
    Flags result{true, true, true, true, true, true, true, true};
    QTEST(isShutter ? Replies::shutterStates(reply, result) : Replies::ttlInvertStates(reply, result),
          "code");
    QTEST(result, "flags");
}

void tst_Replies::missingPrefixesAreToldDifferently()
{
    TtlInvertStates inverted{};
    IntensityLevels levels{};
    QCOMPARE(Replies::ttlInvertStates(QStringLiteral("405=on\n"), inverted), -40015);
    QCOMPARE(Replies::intensityLevels(QStringLiteral("405=1\n"), levels), -40009);
}

void tst_Replies::imageVersion_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("version");

    QTest::newRow("application") << "VYRApp V2.7.0\n"
                                 << 0 << "VYRApp"
                                 << "2.7.0";
    QTest::newRow("loader") << "Loader V1.4.7\n"
                            << 0 << "Loader"
                            << "1.4.7";
    QTest::newRow("loader updater") << "LoaderUpdater V1.0.255" << 0 << "LoaderUpdater"
                                    << "1.0.255";
    QTest::newRow("unknown") << "Unknown V1.2.3\n"
                             << 0 << "Unknown"
                             << "0.0.0";
    QTest::newRow("some other image") << "SelfTest V1.2.3\n"
                                      << 0 << "SelfTest"
                                      << "1.2.3";
    QTest::newRow("two numbers") << "VYRApp V2.7\n"
                                 << 0 << "VYRApp"
                                 << "0.0.0";
    QTest::newRow("four numbers") << "VYRApp V2.7.0.1\n"
                                  << 0 << "VYRApp"
                                  << "0.0.0";
    QTest::newRow("a part above 255") << "VYRApp V2.256.0\n"
                                      << 0 << "VYRApp"
                                      << "0.0.0";
    QTest::newRow("a part below 0") << "VYRApp V2.-1.0\n"
                                    << 0 << "VYRApp"
                                    << "0.0.0";
    QTest::newRow("a word") << "VYRApp V2.x.0\n"
                            << 0 << "VYRApp"
                            << "0.0.0";
    QTest::newRow("another answer") << "reset_cause=power on\n"
                                    << -40015 << "before"
                                    << "9.9.9";
    QTest::newRow("two blanks alone") << " \n"
                                      << -40015 << "before"
                                      << "9.9.9";
    QTest::newRow("no blank") << "VYRApp\n"
                              << -40015 << "before"
                              << "9.9.9";
    QTest::newRow("two blanks") << "VYRApp  V2.7.0\n"
                                << -40015 << "before"
                                << "9.9.9";
    QTest::newRow("three parts") << "VYRApp V2.7.0 beta\n"
                                 << -40015 << "before"
                                 << "9.9.9";
    QTest::newRow("empty") << "" << -40015 << "before"
                           << "9.9.9";
}

void tst_Replies::imageVersion()
{
    QFETCH(const QString, reply);
    ImageVersion image{QStringLiteral("before"), {9, 9, 9}};
    QTEST(Replies::imageVersion(reply, image), "code");
    QTEST(image.kind, "kind");
    QTEST(image.version.toString(), "version");
}

void tst_Replies::isYes_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("yes");

    QTest::newRow("yes") << "Yes\n" << true;
    QTest::newRow("any case") << "yES" << true;
    QTest::newRow("no") << "No\n" << false;
    QTest::newRow("longer") << "Yes!\n" << false;
    QTest::newRow("blank") << "Yes \n" << false;
    QTest::newRow("empty") << "" << false;
}

void tst_Replies::isYes()
{
    QFETCH(const QString, reply);
    QTEST(Replies::isYes(reply), "yes");
}

void tst_Replies::tellsFirmwareUpdate()
{
    QVERIFY(Replies::tellsFirmwareUpdate(QStringLiteral("Necsel Firmware Update 12 %\n")));
    QVERIFY(!Replies::tellsFirmwareUpdate(QStringLiteral("necsel_controller_ver=3.1\n")));
}

QTEST_GUILESS_MAIN(tst_Replies)
#include "tst_Replies.moc"
