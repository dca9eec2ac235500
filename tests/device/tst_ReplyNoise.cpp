#include "support/ReplyParsers.h"

#include <QTest>

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
} // namespace

class tst_ReplyNoise : public QObject
{
    Q_OBJECT

private slots:
    void anyBytesGiveACode();
};

void tst_ReplyNoise::anyBytesGiveACode()
{
    qInfo("seed %u, %d replies", randomSeed, randomReplies);
    ReplyMaker maker;
    qint64 understood = 0;
    for (int i = 0; i < randomReplies; ++i) {
        const QString reply = maker.next();
        const ReplyParsers parsers(reply);
        QVERIFY2(parsers.fault() == nullptr, qPrintable(QLatin1String(parsers.fault()) + ": " + reply));
        understood += parsers.takers();
    }
    // Texts that no parser takes would try nothing.
    QVERIFY(understood > randomReplies / 10);
}

QTEST_GUILESS_MAIN(tst_ReplyNoise)
#include "tst_ReplyNoise.moc"
