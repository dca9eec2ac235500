#include "support/FirmwareImages.h"
#include "support/WarningWatch.h"
#include "update/FirmwareImage.h"
#include "update/SRecordReaders.h"

#include <QTest>

#include <random>

namespace {
constexpr quint32 randomSeed = 20240305;
constexpr int randomTexts = 20000;

/// Images that were damaged in a few places, and texts of pieces that records are made of.
class ImageMaker
{
public:
    QByteArray next() { return number(0, 1) == 0 ? damagedImage() : pieces(); }
    QString name() { return FirmwareImages::fileName(role()); }

private:
    int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_engine); }
    char byte() { return static_cast<char>(number(0, 255)); }
    FirmwareImages::Role role() { return static_cast<FirmwareImages::Role>(number(0, 2)); }

    QByteArray damagedImage()
    {
        FirmwareImages::Image image;
        image.role = role();
        image.dataSize = number(0, 300);
        image.addressWidth = number(3, 4);
        image.bytesPerLine = number(1, 45);
        image.product = static_cast<quint32>(number(0, 3) == 0 ? 2 : 1);
        image.lineEnd = number(0, 1) == 0 ? "\n" : "\r\n";
        QByteArray text = FirmwareImages::text(image);
        for (int left = number(0, 3); left > 0; --left) {
            const int place = number(0, int(text.size()) - 1);
            switch (number(0, 3)) {
            case 0:
                text[place] = byte();
                break;
            case 1:
                text.remove(place, number(1, 40));
                break;
            case 2:
                text.insert(place, pieces());
                break;
            default:
                text.truncate(place + 1);
            }
        }
        return text;
    }

    QByteArray pieces()
    {
        const QList<QByteArray> fragments = {"S",
                                             "S0",
                                             "S1",
                                             "S3",
                                             "S5",
                                             "S7",
                                             "S9",
                                             "S1FF",
                                             "S300",
                                             "S333",
                                             "FFFFFFFF",
                                             "00011FC0",
                                             "\n",
                                             "\r",
                                             "\r\n",
                                             "\x1a",
                                             " ",
                                             "S00600004844521B\n",
                                             "S107FFF00001020303\r\n",
                                             QByteArray(150, 'S'),
                                             QByteArray(1, '\0'),
                                             "S9030000FC\n",
                                             "S30500039FC0F8"};
        QByteArray text;
        for (int left = number(0, 12); left > 0; --left) {
            text += number(0, 3) == 0 ? QByteArray(1, byte())
                                      : fragments.at(number(0, int(fragments.size()) - 1));
        }
        return text;
    }

    std::mt19937 m_engine{randomSeed}; // the same every time: a failure can be repeated
};

/// What holds of one line, whatever it is.
bool isSound(const ReadLine& line)
{
    if (line.status != SRecordStatus::Parsed) {
        return line.status <= SRecordStatus::NothingRead && line.status >= SRecordStatus::UnknownType &&
               line.record.lineLength == 0 && line.record.dataLength == 0 && line.record.address == 0;
    }
    const SRecord& record = line.record;
    return record.type <= 9 && record.type != 4 && record.type != 6 &&
           record.dataLength <= SRecord::maximumDataLength && record.lineLength <= 200 &&
           record.lineLength >= 4 + 2 * record.dataLength;
}

int leadingRecords(const QList<ReadLine>& lines)
{
    int count = 0;
    while (lines.at(count).status == SRecordStatus::Parsed) {
        ++count;
    }
    return count;
}

/// The outcome of a check agrees with the lines by themselves.
bool isSound(const FirmwareCheck& check, const QList<ReadLine>& lines)
{
    const int records = leadingRecords(lines);
    switch (check.fault) {
    case FirmwareFault::FirstLine:
        return records == 0 && check.lineCount == 0 && !check.version;
    case FirmwareFault::None:
        return check.lineCount == records - 1;
    case FirmwareFault::HeaderTooLarge:
    case FirmwareFault::WrongProduct:
        return records > 1 && check.lineCount == 0 && !check.version;
    case FirmwareFault::UnknownName:
        break;
    }
    return false;
}
} // namespace

class tst_FirmwareImageNoise : public QObject
{
    Q_OBJECT

private slots:
    void anyBytesGiveAnOutcome();
    void anyCutGivesAnOutcome();
};

void tst_FirmwareImageNoise::anyBytesGiveAnOutcome()
{
    qInfo("seed %u, %d texts", randomSeed, randomTexts);
    const WarningWatch watch;
    ImageMaker maker;
    QMap<int, int> statuses;
    QMap<FirmwareFault, int> faults;
    int versions = 0;
    for (int i = 0; i < randomTexts; ++i) {
        const QByteArray text = maker.next();
        const QList<ReadLine> lines = readBytes(text);
        QVERIFY2(readStream(text) == lines, text.toHex());
        for (const ReadLine& line : lines) {
            QVERIFY2(isSound(line), text.toHex());
            ++statuses[line.status];
        }
        const FirmwareCheck check = checkFirmwareText(text, maker.name());
        QVERIFY2(isSound(check, lines), text.toHex());
        ++faults[check.fault];
        versions += check.version ? 1 : 0;
    }
    // Texts that never get to one of the outcomes would try less than they seem to.
    QCOMPARE(statuses.size(), 7);
    for (const int times : qAsConst(statuses)) {
        QVERIFY(times > 50);
    }
    QVERIFY(faults[FirmwareFault::None] > 1000 && faults[FirmwareFault::FirstLine] > 1000);
    QVERIFY(faults[FirmwareFault::WrongProduct] > 50 && versions > 1000);
    QCOMPARE(WarningWatch::messages(), QStringList());
}

/// Power and disks fail anywhere: a file may end after every one of its bytes.
void tst_FirmwareImageNoise::anyCutGivesAnOutcome()
{
    FirmwareImages::Image image;
    image.dataSize = 100;
    const QByteArray text = FirmwareImages::text(image);
    const int whole = checkFirmwareText(text, QStringLiteral("VYR-AppOut.srec")).lineCount;
    QCOMPARE(whole, 10);
    int last = 0;
    for (int size = 0; size <= text.size(); ++size) {
        const QByteArray cut = text.left(size);
        const FirmwareCheck check = checkFirmwareText(cut, QStringLiteral("VYR-AppOut.srec"));
        QVERIFY(isSound(check, readBytes(cut)));
        if (check.fault == FirmwareFault::None) {
            QVERIFY(check.lineCount == last || check.lineCount == last + 1 || check.version);
            last = check.lineCount;
        }
    }
    QCOMPARE(last, whole);
}

QTEST_GUILESS_MAIN(tst_FirmwareImageNoise)
#include "tst_FirmwareImageNoise.moc"
