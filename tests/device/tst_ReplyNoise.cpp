#include "device/Replies.h"

#include <QTest>

#include <algorithm>
#include <random>

namespace {
constexpr quint32 randomSeed = 20240305;
constexpr int randomReplies = 10000;

/// Pieces that replies are made of, so that random texts get past the first test of a parser.
const char* const fragments[] = {"f_mode=", "sleep=", "int_mode=", "hours:", "shutter:",     "ttl_invert:",
                                 "set:",    "temps:", "FAULT:",    "WARN:",  "prod_config:", "Necsel=",
                                 "vyr_sn=", ",",      "=",         ".",      " V",           "VYRApp V",
                                 "open",    "on",     "nan",       "1e99",   "-1",           "99",
                                 "\n",      "\r",     ":",         " ",      "ok",           "idle"};

class ReplyMaker
{
public:
    QString next()
    {
        QByteArray bytes;
        const int pieces = number(0, 24);
        for (int i = 0; i < pieces; ++i) {
            if (number(0, 1) == 0)
                bytes += static_cast<char>(number(0, 255));
            else
                bytes += fragments[number(0, int(std::size(fragments)) - 1)];
        }
        return number(0, 1) == 0 ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
    }

private:
    int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_engine); }

    std::mt19937 m_engine{randomSeed}; // the same every time: a failure can be repeated
};

bool isOneOf(int code, std::initializer_list<int> codes)
{
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}
} // namespace

class tst_ReplyNoise : public QObject
{
    Q_OBJECT

private slots:
    void anyBytesGiveACode();
};

/// Whatever comes in, each parser answers with one of its codes and leaves a value of its range.
void tst_ReplyNoise::anyBytesGiveACode()
{
    qInfo("seed %u, %d replies", randomSeed, randomReplies);
    ReplyMaker maker;
    int understood = 0;
    for (int i = 0; i < randomReplies; ++i) {
        const QString reply = maker.next();
        FunctionalMode_t mode = FunctionalModeIdle;
        quint8 minutes = 0;
        ControlSource source{};
        StateReport report;
        OperatingHours numbers{};
        ShutterStates flags{};
        Temperatures readings;
        ImageVersion image;
        ProductConfig record;
        QString text;
        const std::array<int, 12> codes{
            Replies::functionalMode(reply, mode),     Replies::sleepTime(reply, minutes),
            Replies::intensitySource(reply, source),  Replies::fault(reply, report),
            Replies::warning(reply, report),          Replies::hours(reply, numbers),
            Replies::intensityLevels(reply, numbers), Replies::shutterStates(reply, flags),
            Replies::ttlInvertStates(reply, flags),   Replies::temperatures(reply, readings),
            Replies::imageVersion(reply, image),      Replies::productConfig(reply, record)};
        for (const int code : codes) {
            QVERIFY2(isOneOf(code, {0, -40009, -40015}), qPrintable(reply));
            understood += code == 0 ? 1 : 0;
        }
        QVERIFY(isOneOf(mode, {0, 1, 2}));
        QVERIFY(minutes <= 99);
        QVERIFY(isOneOf(int(source), {0, 1}));
        QVERIFY(!report.message.contains(QLatin1Char('\n')));
        QVERIFY(image.version.major <= 255);
        Replies::isYes(reply);
        Replies::tellsFirmwareUpdate(reply);
        Replies::keyedText(reply, QStringLiteral("sleep"), text);
    }
    // Texts that no parser takes would try nothing.
    QVERIFY(understood > randomReplies / 10);
}

QTEST_GUILESS_MAIN(tst_ReplyNoise)
#include "tst_ReplyNoise.moc"
