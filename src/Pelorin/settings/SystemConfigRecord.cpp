#include "settings/SystemConfigRecord.h"

#include <QtEndian>

#include <cstddef>
#include <cstring>

namespace {
using Record = SystemConfigField::RecordType;

constexpr int revisionOffset = 8;
constexpr quint32 revision = 8; // the layout that the editor's cells know

float realOf(const quint8* bytes)
{
    const auto bits = qFromLittleEndian<quint32>(bytes);
    float value = 0.0F;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

void storeReal(float value, quint8* bytes)
{
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    qToLittleEndian(bits, bytes);
}

QString textOf(Record type, const quint8* bytes)
{
    switch (type) {
    case Record::Real:
        return realText(static_cast<double>(realOf(bytes)));
    case Record::Unsigned8:
        return QString::number(*bytes);
    case Record::Unsigned16:
        return QString::number(qFromLittleEndian<quint16>(bytes));
    case Record::Signed16:
        return QString::number(qFromLittleEndian<qint16>(bytes));
    }
    return {};
}

void store(const QString& text, Record type, quint8* bytes)
{
    switch (type) {
    case Record::Real:
        storeReal(realOfText(text), bytes);
        break;
    case Record::Unsigned8:
        *bytes = static_cast<quint8>(text.toUShort() & 0xffU);
        break;
    case Record::Unsigned16:
        qToLittleEndian<quint16>(text.toUShort(), bytes);
        break;
    case Record::Signed16:
        qToLittleEndian<qint16>(text.toShort(), bytes);
        break;
    }
}
} // namespace

SystemConfigTexts SystemConfigRecord::toTexts(const SystemConfigBytes& record)
{
    SystemConfigTexts texts;
    std::size_t index = 0;
    for (const SystemConfigField& field : systemConfigFields())
        texts[index++] = textOf(field.type, record.data() + field.offset);
    return texts;
}

SystemConfigBytes SystemConfigRecord::fromTexts(const SystemConfigTexts& texts, const SystemConfigBytes& base)
{
    SystemConfigBytes record = base;
    qToLittleEndian(revision, record.data() + revisionOffset);
    std::size_t index = 0;
    for (const SystemConfigField& field : systemConfigFields())
        store(texts[index++], field.type, record.data() + field.offset);
    return record;
}
