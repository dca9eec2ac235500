#include "Simulator/CommandInterpreter.h"
#include "Simulator/Commands.h"
#include "device/Commands.h"
#include "device/Records.h"
#include "device/Replies.h"
#include "device/ResultCodes.h"
#include "settings/CalibrationFile.h"
#include "settings/ChannelConfigRecord.h"
#include "settings/SystemConfigFields.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <algorithm>
#include <utility>

using Parse = int (*)(const QString& reply);
Q_DECLARE_METATYPE(Parse)

namespace {
/// One of the parsers without what it stores.
template<typename Value, int (*parser)(const QString&, Value&)>
int parsed(const QString& reply)
{
    Value value{};
    return parser(reply, value);
}

int isYes(const QString& reply)
{
    return Replies::isYes(reply) ? DeviceResult::Ok : DeviceResult::NotUnderstood;
}

int tellsWrote(const QString& reply)
{
    return Records::tellsWrote(reply) ? DeviceResult::Ok : DeviceResult::MarkerMissing;
}

QString page(const char* name)
{
    QFile file(QDir(QStringLiteral(VYR_MANUAL_FOLDER)).filePath(QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The indented block of a page that begins with this line, its further lines joined to one.
QString exampleReply(const QString& text, const QString& firstLine)
{
    const QString indent = QStringLiteral("    ");
    const QString start = QStringLiteral("\n\n") + indent + firstLine + QLatin1Char('\n');
    const auto at = text.indexOf(start);
    if (at < 0) {
        return {};
    }
    QStringList reply;
    const QStringList lines = text.mid(at + start.size()).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (!line.startsWith(indent)) {
            break;
        }
        reply.append(line.mid(indent.size()));
    }
    return reply.isEmpty() ? QString() : QString(reply.join(QString()) + QLatin1Char('\n'));
}

void addKeys(const QJsonValue& value, QSet<QString>& keys)
{
    const QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        keys.insert(member.key());
        addKeys(member.value(), keys);
    }
    const QJsonArray array = value.toArray();
    std::for_each(array.begin(), array.end(), [&keys](const QJsonValue& element) { addKeys(element, keys); });
}

QString typeInWords(const SystemConfigField& field)
{
    switch (field.type) {
    case SystemConfigField::RecordType::Real:
        return QStringLiteral("real");
    case SystemConfigField::RecordType::Unsigned8:
        return QStringLiteral("unsigned 8 bits");
    case SystemConfigField::RecordType::Unsigned16:
        return QStringLiteral("unsigned 16 bits");
    case SystemConfigField::RecordType::Signed16:
        return QStringLiteral("signed 16 bits");
    }
    return {};
}

/// The keys up to "=" or ":", as the pages show them with an example behind.
QString keyOf(const QByteArray& command)
{
    const QString line = QString::fromUtf8(command).trimmed();
    static const QRegularExpression key(QStringLiteral("^[a-z_]+[=:!]?"));
    return key.match(line).captured();
}
} // namespace

/// The reference pages against the code: what is added there must be told here, and examples must be true.
class tst_ManualCoversProtocol : public QObject
{
    Q_OBJECT

private slots:
    void commandIsTold_data();
    void commandIsTold();
    void exampleIsUnderstood_data();
    void exampleIsUnderstood();
    void recordExamplesAreTrue();
    void resultCodeIsTold_data();
    void resultCodeIsTold();
    void fieldHasItsPlace_data();
    void fieldHasItsPlace();
    void calibrationKeyIsTold();
    void simulatorCommandIsTold_data();
    void simulatorCommandIsTold();
};

void tst_ManualCoversProtocol::commandIsTold_data()
{
    QTest::addColumn<QString>("key");
    const QString channel = QStringLiteral("405");
    const quint8 byte = 0;
    const QList<QByteArray> built{Commands::setIntensity(channel, 1),
                                  Commands::setShutter(channel, true),
                                  Commands::setTtlInvert(channel, true),
                                  Commands::setIntensityMode(0),
                                  Commands::setShutterMode(0),
                                  Commands::setSpeckle(true),
                                  Commands::setFunctionalMode(FunctionalModeIdle),
                                  Commands::setFunctionalMode(FunctionalModeRun),
                                  Commands::setSleepTime(1),
                                  Commands::clearFaults(),
                                  Commands::resetDevice(),
                                  Commands::restoreDefaults(),
                                  Records::readCommand(0, 1),
                                  Records::writeCommands(0, &byte, 1).constFirst(),
                                  Records::writeProductConfig({})};
    for (const QByteArray& command : built) {
        QTest::addRow("built %s", command.trimmed().constData()) << keyOf(command);
    }
    for (const auto* commands :
         {&Simulator::identityCommands(), &Simulator::statusCommands(), &Simulator::settingCommands(),
          &Simulator::recordCommands(), &Simulator::memoryCommands()}) {
        for (const Simulator::Command& command : *commands) {
            QTest::addRow("known %s", command.key) << QString::fromLatin1(command.key);
        }
    }
}

void tst_ManualCoversProtocol::commandIsTold()
{
    QFETCH(QString, key);
    QVERIFY(!key.isEmpty());
    // In a sentence or a table, in a heading, or at the beginning of an example; "v" is a letter elsewhere.
    const QString end = key.endsWith(QLatin1Char('=')) || key.endsWith(QLatin1Char(':'))
                            ? QString()
                            : QStringLiteral("(?=[`\\s,])");
    const QRegularExpression told(QStringLiteral("(`|\n    |\n### |, )") + QRegularExpression::escape(key) +
                                  end);
    QVERIFY2(told.match(page("protocol.md")).hasMatch(), qPrintable(key));
}

void tst_ManualCoversProtocol::exampleIsUnderstood_data()
{
    QTest::addColumn<Parse>("parse");
    QTest::newRow("v") << Parse(parsed<ImageVersion, Replies::imageVersion>);
    QTest::newRow("f_mode?") << Parse(parsed<FunctionalMode_t, Replies::functionalMode>);
    QTest::newRow("fault?") << Parse(parsed<StateReport, Replies::fault>);
    QTest::newRow("warn?") << Parse(parsed<StateReport, Replies::warning>);
    QTest::newRow("shutter?") << Parse(parsed<ShutterStates, Replies::shutterStates>);
    QTest::newRow("int_mode?") << Parse(parsed<ControlSource, Replies::intensitySource>);
    QTest::newRow("set?") << Parse(parsed<IntensityLevels, Replies::intensityLevels>);
    QTest::newRow("hours?") << Parse(parsed<OperatingHours, Replies::hours>);
    QTest::newRow("temps") << Parse(parsed<Temperatures, Replies::temperatures>);
    QTest::newRow("sleep?") << Parse(parsed<quint8, Replies::sleepTime>);
    QTest::newRow("ttl_invert?") << Parse(parsed<TtlInvertStates, Replies::ttlInvertStates>);
    QTest::newRow("prod_config") << Parse(parsed<ProductConfig, Replies::productConfig>);
    QTest::newRow("isappvalid") << Parse(isYes);
    QTest::newRow("issysconfigvalid") << Parse(isYes);
    QTest::newRow("wf:S804012000DA") << Parse(tellsWrote);
}

void tst_ManualCoversProtocol::exampleIsUnderstood()
{
    QFETCH(Parse, parse);
    const QString command = QString::fromLatin1(QTest::currentDataTag());
    const QString reply = exampleReply(page("protocol.md"), command);
    QVERIFY2(!reply.isEmpty(), "no such example");
    QCOMPARE(parse(reply), 0);
    // The counterpart: what is no answer is not understood.
    QVERIFY(parse(QStringLiteral("nonsense\n")) != 0);
}

void tst_ManualCoversProtocol::recordExamplesAreTrue()
{
    const QString text = page("protocol.md");
    const quint8 bytes[] = {1, 2};
    const QByteArray line = Records::writeCommands(Records::systemConfigAddress, bytes, 2).constFirst();
    QVERIFY(text.contains(QStringLiteral("\n    ") + QString::fromLatin1(line)));
    const QByteArray read = Records::readCommand(Records::systemConfigAddress, Records::readChunkSize);
    QVERIFY(text.contains(QStringLiteral("\n    ") + QString::fromLatin1(read)));
    for (const quint32 address :
         {Records::systemConfigAddress, Records::olderSystemConfigAddress, Records::channelConfigAddress}) {
        QVERIFY(text.contains(QStringLiteral("0x") + QString::number(address, 16)));
    }
    ChannelConfigEntries entries;
    entries[0] = {true, 1, QStringLiteral("445"), 0x00, 0x19, 0xff, false, 0};
    const ChannelConfigBytes record = ChannelConfigRecord::encode(entries, {});
    const QByteArray entry(reinterpret_cast<const char*>(record.data()) + 4, 12);
    QVERIFY(text.contains(QString::fromLatin1(entry.toHex(' '))));
}

void tst_ManualCoversProtocol::resultCodeIsTold_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {DeviceResult::RecordNotValid, DeviceResult::WrongLength, DeviceResult::WriteFailed,
                           DeviceResult::NoReply, DeviceResult::MarkerMissing, DeviceResult::NotOpen,
                           DeviceResult::NoReplyToSwitch, DeviceResult::Busy, DeviceResult::BadArgument,
                           DeviceResult::NotUnderstood}) {
        QTest::addRow("%d", code) << code;
    }
}

void tst_ManualCoversProtocol::resultCodeIsTold()
{
    QFETCH(int, code);
    QVERIFY(page("protocol.md").contains(QStringLiteral("\n| %1 | ").arg(code)));
}

void tst_ManualCoversProtocol::fieldHasItsPlace_data()
{
    QTest::addColumn<QString>("row");
    int index = 0;
    for (const SystemConfigField& field : systemConfigFields()) {
        const bool isOfChannel = field.cell.table == ConfigTable::Novalum;
        if (isOfChannel && field.cell.column > 0) {
            continue; // the blocks are alike
        }
        const bool isSigned = field.type == SystemConfigField::RecordType::Signed16;
        const QString row = isOfChannel
                                ? QStringLiteral("\n| %1 | %2 | ")
                                      .arg(field.offset - systemConfigFields().at(firstNovalumField).offset)
                                      .arg(isSigned ? QStringLiteral("signed") : QStringLiteral("unsigned"))
                                : QStringLiteral("\n| %1 | %2 | ").arg(field.offset).arg(typeInWords(field));
        QTest::addRow("%d %s", index++, field.member) << row;
    }
}

void tst_ManualCoversProtocol::fieldHasItsPlace()
{
    QFETCH(QString, row);
    QVERIFY2(page("protocol.md").contains(row), qPrintable(row));
}

void tst_ManualCoversProtocol::calibrationKeyIsTold()
{
    const QStringList headers{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
                              QStringLiteral("4"), QStringLiteral("5"), QStringLiteral("6"),
                              QStringLiteral("7")};
    QSet<QString> keys;
    addKeys(QJsonDocument::fromJson(CalibrationFile::toJson({}, headers)).object(), keys);
    QVERIFY(keys.size() > systemConfigFieldCount - (novalumChannelCount - 1) * novalumRowCount);
    const QString text = page("calibration.md");
    for (const QString& key : std::as_const(keys)) {
        QVERIFY2(text.contains(QStringLiteral("| \"%1\" |").arg(key)), qPrintable(key));
    }
}

void tst_ManualCoversProtocol::simulatorCommandIsTold_data()
{
    QTest::addColumn<QString>("name");
    for (const auto* commands :
         {&Simulator::sceneCommands(), &Simulator::deviceCommands(), &Simulator::cableCommands()}) {
        for (const Simulator::CommandInterpreter::Entry& entry : *commands) {
            QTest::newRow(entry.name) << QString::fromLatin1(entry.name);
        }
    }
}

void tst_ManualCoversProtocol::simulatorCommandIsTold()
{
    QFETCH(QString, name);
    const QRegularExpression told(QStringLiteral("\n\\| `") + QRegularExpression::escape(name) +
                                  QStringLiteral("[ `]"));
    QVERIFY2(told.match(page("simulator.md")).hasMatch(), qPrintable(name));
}

QTEST_GUILESS_MAIN(tst_ManualCoversProtocol)
#include "tst_ManualCoversProtocol.moc"
