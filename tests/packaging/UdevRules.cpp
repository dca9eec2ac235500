#include "UdevRules.h"

#include <QRegularExpression>
#include <QStringList>

namespace UdevRules {

QList<Rule> parse(const QString& text)
{
    static const QString term = QStringLiteral(R"re(([A-Z]+(?:\{\w+\})?)(==|!=|\+=|=)"([^"]*)")re");
    static const QRegularExpression oneTerm(term);
    static const QRegularExpression wholeLine(QStringLiteral("^%1(, %1)*$").arg(term));
    QList<Rule> rules;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) {
            continue;
        }
        Rule rule;
        if (wholeLine.match(line).hasMatch()) {
            auto matches = oneTerm.globalMatch(line);
            while (matches.hasNext()) {
                const auto match = matches.next();
                rule.append({match.captured(1), match.captured(2), match.captured(3)});
            }
        }
        rules.append(rule);
    }
    return rules;
}

QMap<QString, QString> apply(const QList<Rule>& rules, const QMap<QString, QString>& device)
{
    QMap<QString, QString> set;
    QString label;
    for (const Rule& rule : rules) {
        bool holds = true;
        QMap<QString, QString> assigned;
        for (const Term& term : rule) {
            if (term.op == QLatin1String("==") || term.op == QLatin1String("!=")) {
                holds = holds && (device.value(term.key) == term.value) == (term.op == QLatin1String("=="));
            } else {
                assigned.insert(term.key, term.value);
            }
        }
        if (!label.isEmpty() && assigned.value(QStringLiteral("LABEL")) != label) {
            continue;
        }
        label.clear();
        if (holds) {
            label = assigned.take(QStringLiteral("GOTO"));
            assigned.remove(QStringLiteral("LABEL"));
            for (auto it = assigned.cbegin(); it != assigned.cend(); ++it) {
                set.insert(it.key(), it.value());
            }
        }
    }
    return set;
}

} // namespace UdevRules
