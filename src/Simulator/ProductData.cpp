#include "Simulator/ProductData.h"

#include <QList>
#include <QStringBuilder>

#include <algorithm>

namespace Simulator {

QByteArray ProductData::text() const
{
    QList<QByteArray> items;
    for (const Field& field : m_fields) {
        items.append(field.key + QByteArray("=") + field.value);
    }
    return items.join(',');
}

bool ProductData::assign(const QByteArray& items)
{
    auto fields = m_fields;
    const QList<QByteArray> parts = items.split(',');
    for (const QByteArray& item : parts) {
        const auto equals = item.indexOf('=');
        const QByteArray key = item.left(equals);
        const auto field = std::find_if(fields.begin(), fields.end(),
                                        [&key](const Field& candidate) { return key == candidate.key; });
        if (equals < 0 || field == fields.end()) {
            return false;
        }
        field->value = item.mid(equals + 1);
    }
    m_fields = fields;
    return true;
}

} // namespace Simulator
