#pragma once

#include <QByteArray>
#include <QList>
#include <QStringBuilder>
#include <QtGlobal>

#include <random>

// Where the records lie; older firmware has the system record elsewhere.
constexpr quint32 kSystem = 0x800064;
constexpr quint32 kOlderSystem = 0x800080;
constexpr quint32 kChannels = 0x800198;

/// One S-record line around the bytes, with an address of so many bytes.
inline QByteArray sRecord(char type, int addressBytes, quint32 address, const QByteArray& data)
{
    QByteArray bytes(1, static_cast<char>(addressBytes + data.size() + 1));
    for (int i = addressBytes - 1; i >= 0; --i) {
        bytes.append(static_cast<char>(address >> (8U * static_cast<quint32>(i))));
    }
    bytes.append(data);
    quint8 sum = 0;
    for (const char byte : bytes) {
        sum = static_cast<quint8>(sum + static_cast<quint8>(byte));
    }
    bytes.append(static_cast<char>(~sum));
    return 'S' + QByteArray(1, type) + bytes.toHex();
}

inline QByteArray s2(quint32 address, const QByteArray& data)
{
    return sRecord('2', 3, address, data);
}

/// The commands by which a host writes bytes, in the pieces in which it does so.
inline QList<QByteArray> writeCommands(quint32 address, const QByteArray& bytes)
{
    QList<QByteArray> commands;
    for (int offset = 0; offset < bytes.size(); offset += 64) {
        commands.append("wf:" + s2(address + static_cast<quint32>(offset), bytes.mid(offset, 64)));
    }
    return commands;
}

inline QByteArray readCommand(quint32 address, int count)
{
    return "rf: " + QByteArray::number(address) + ' ' + QByteArray::number(count);
}

/// What the system record's three pieces say. `ask` sends one line and gives the answer.
template<typename Ask>
QByteArray readSystem(quint32 address, Ask ask)
{
    QByteArray record;
    for (const int size : {128, 128, 52}) {
        QByteArray answer = ask(readCommand(address + static_cast<quint32>(record.size()), size)).trimmed();
        if (!answer.startsWith("rf:")) {
            return answer;
        }
        record += QByteArray::fromHex(answer.mid(3));
    }
    return record;
}

/// `count` bytes, each another than the one before it.
inline QByteArray countingBytes(int count, int first = 1)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i) {
        bytes.append(static_cast<char>(first + i));
    }
    return bytes;
}

/// Harms lines in ways that are the same in every run.
class LineSpoiler
{
public:
    explicit LineSpoiler(quint32 seed) : m_engine(seed) {}

    int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_engine); }

    /// The line with some of its bytes replaced, removed, doubled or cut off; sometimes just noise.
    QByteArray spoiled(QByteArray line)
    {
        if (line.isEmpty() || number(0, 9) == 0) {
            line = QByteArray(number(0, 600), '\0');
            for (char& byte : line) {
                byte = static_cast<char>(number(0, 255));
            }
            return line;
        }
        for (int harm = number(0, 3); harm > 0 && !line.isEmpty(); --harm) {
            const int at = number(0, int(line.size()) - 1);
            switch (number(0, 3)) {
            case 0:
                line[at] = static_cast<char>(number(0, 255));
                break;
            case 1:
                line.remove(at, number(1, 8));
                break;
            case 2:
                line.insert(at, line.mid(at, number(1, 8)));
                break;
            default:
                line.truncate(at);
            }
        }
        return line;
    }

private:
    std::mt19937 m_engine;
};
