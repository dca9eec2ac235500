#pragma once

#include <QList>
#include <QMap>
#include <QString>

/// As much of the language of udev's rules as ours needs: enough to ask what becomes of a device.
namespace UdevRules {

/// One `key op "value"` of a rule, for example `ENV{DEVTYPE}`, `==` and `usb_device`.
struct Term
{
    QString key;
    QString op;
    QString value;
};
using Rule = QList<Term>;

/// The rules of a file, one for each line that is neither empty nor a comment. A line with anything in it
/// that is no term comes out as a rule without terms.
QList<Rule> parse(const QString& text);

/// What the rules set on a device, by key, for example "MODE" and "0660". `device` has the values that the
/// rules may compare, by key; what it has not compares as empty. "GOTO" leads behind the rule with that
/// "LABEL".
QMap<QString, QString> apply(const QList<Rule>& rules, const QMap<QString, QString>& device);

} // namespace UdevRules
