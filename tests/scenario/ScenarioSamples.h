#pragma once

#include "scenario/ScenarioValues.h"

#include <QRandomGenerator>
#include <QString>
#include <QVector>

#include <utility>

/// Names that a file, a settings key or a line on the screen could trip over; no two are equal.
inline QVector<std::pair<const char*, QString>> hostileNames()
{
    const QString highSurrogate(QChar(0xD83D));
    const QString lowSurrogate(QChar(0xDE00));
    return {{"slashes", QStringLiteral("a/b\\c")},
            {"leading slash", QStringLiteral("/a/b")},
            {"two slashes", QStringLiteral("a//b")},
            {"one slash", QStringLiteral("/")},
            {"parent", QStringLiteral("..")},
            {"parents", QStringLiteral("../../Channel1")},
            {"dot", QStringLiteral(".")},
            {"percent", QStringLiteral("100 %1 %L2 %n")},
            {"encoded slash", QStringLiteral("a%2Fb")},
            {"plain of it", QStringLiteral("a/b")},
            {"quotes", QStringLiteral("\"'`\"")},
            {"line feeds", QStringLiteral("one\ntwo\r\nthree\u2028four")},
            {"line feed alone", QStringLiteral("\n")},
            {"tabulator", QStringLiteral("one\ttwo")},
            {"blanks around", QStringLiteral("  padded  ")},
            {"without them", QStringLiteral("padded")},
            {"blank", QStringLiteral(" ")},
            {"stored value", QStringLiteral("@Invalid()")},
            {"stored text", QStringLiteral("@String(x)")},
            {"at", QStringLiteral("@")},
            {"commas", QStringLiteral("a, b,c")},
            {"section", QStringLiteral("[General]")},
            {"assignment", QStringLiteral("x=1;#comment")},
            {"general", QStringLiteral("General")},
            {"channel", QStringLiteral("Channel1")},
            {"size", QStringLiteral("size")},
            {"markup", QStringLiteral("<b>&amp;</b>")},
            {"small", QStringLiteral("night")},
            {"capital", QStringLiteral("Night")},
            {"all capital", QStringLiteral("NIGHT")},
            {"long", QString(1000, QLatin1Char('x'))},
            {"long with another end", QString(999, QLatin1Char('x')) + QLatin1Char('y')},
            {"scripts", QString::fromUtf8("Größe Ω 光 नमस्ते שלום مرحبا")},
            {"emoji", QString::fromUtf8("🔬👩‍🔬")},
            {"composed", QString::fromUtf8("\xC3\xA9")},
            {"decomposed", QString::fromUtf8("e\xCC\x81")},
            {"NUL", QString(QChar(0))},
            {"NUL inside", QStringLiteral("a") + QChar(0) + QStringLiteral("b")},
            {"byte order mark", QString(QChar(0xFEFF)) + QStringLiteral("a")},
            {"without it", QStringLiteral("a")},
            {"replacement character", QString(QChar(0xFFFD))},
            {"question mark", QStringLiteral("?")},
            {"high surrogate", highSurrogate},
            {"low surrogate", lowSurrogate},
            {"wrong order", lowSurrogate + highSurrogate},
            {"units as text", QStringLiteral("+d83d")},
            {"plus", QStringLiteral("+")}};
}

inline ScenarioValues randomValues(QRandomGenerator& random)
{
    ScenarioValues values;
    for (ScenarioChannel& channel : values) {
        QString name;
        for (int length = random.bounded(12); length > 0; --length) {
            name.append(QChar(static_cast<ushort>(random.bounded(0x10000))));
        }
        channel.settings.name = name;
        channel.settings.intensity = static_cast<float>(random.bounded(100.0));
        channel.settings.visible = random.bounded(2) == 1;
        channel.settings.ttlInverted = random.bounded(2) == 1;
        channel.settings.colour = QColor(random.bounded(256), random.bounded(256), random.bounded(256));
        channel.shutterOpen = random.bounded(2) == 1;
    }
    return values;
}
