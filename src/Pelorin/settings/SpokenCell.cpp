#include "settings/SpokenCell.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>

namespace {
QString shownBy(const QWidget& widget)
{
    if (const auto* box = qobject_cast<const QCheckBox*>(&widget)) {
        return box->isChecked() ? QCoreApplication::translate("SpokenCell", "checked")
                                : QCoreApplication::translate("SpokenCell", "not checked");
    }
    if (const auto* box = qobject_cast<const QComboBox*>(&widget)) {
        return box->currentText();
    }
    const auto* field = qobject_cast<const QLineEdit*>(&widget);
    return field == nullptr ? QString() : field->text();
}
} // namespace

QVariant SpokenCell::data(int role) const
{
    if (role != Qt::AccessibleTextRole) {
        return QTableWidgetItem::data(role);
    }
    const QString shown = shownBy(m_widget);
    return shown.isEmpty() ? m_widget.accessibleName()
                           : QString(m_widget.accessibleName() + QLatin1String(", ") + shown);
}
